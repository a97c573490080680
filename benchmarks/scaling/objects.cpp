// How time and memory grow with the work for everything that is not a text operation: streams,
// sets, files, arrays, and the conversions of long texts.
//
//     objects [--quick] [FILTER]
//
// For each operation: the processor time for n and for 2n (the best of several runs), their
// ratio, the time
// for one of the 2n, and the peak of the memory that the operation allocates, for n and 2n. 2n is
// a million objects or 64 MB, with --quick a sixteenth of that; FILTER picks the lines that contain
// it. Every run begins with cold caches. The exit status is 1 when a time ratio is 2.5 or more (3
// for sets), when memory grows faster than the work, or when a queue in steady state grows at all.

#include "cold_caches.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <malloc.h>
#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

// Memory in use, and the most that was, as the library asks for it.

std::size_t inUse = 0;
std::size_t peak = 0;

void* allocated(std::size_t size) {
    void* const block = std::malloc(size);
    if (!block)
        throw std::bad_alloc();
    inUse += malloc_usable_size(block);
    peak = std::max(peak, inUse);
    return block;
}

void released(void* block) {
    inUse -= malloc_usable_size(block);
    std::free(block);
}

} // namespace

void* operator new(std::size_t size) { return allocated(size); }
void* operator new[](std::size_t size) { return allocated(size); }
void operator delete(void* block) noexcept { released(block); }
void operator delete[](void* block) noexcept { released(block); }
void operator delete(void* block, std::size_t) noexcept { released(block); }
void operator delete[](void* block, std::size_t) noexcept { released(block); }

namespace {

using znsl::MemIOStream;
using zntl::Integer;
using zntl::String;
using znvl::Resolution;
using Resolutions = znsl::Set<Resolution>;

/// One run; gives something that depends on the result, so that nothing is optimised away.
using Work = std::function<std::size_t()>;

struct Case {
    char const* operation;
    char const* kind;
    std::size_t most; // 2n
    std::function<Work(std::size_t n)> prepare;
    double tooMuch = 2.5;
};

/// Ordered sets take n log n steps, and each step longer as the elements leave the caches; a
/// std::set of numbers stands beside them to show it.
constexpr double tooMuchOrdered = 3.5;

constexpr std::size_t million = 1'000'000;
constexpr std::size_t megabytes64 = std::size_t{64} << 20;

class Folder {
public:
    Folder() {
        std::string name = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
        name += "/zn-scaling-XXXXXX";
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no folder for temporary files");
        path_ = name;
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    ~Folder() { std::filesystem::remove_all(path_); }

    std::string file(char const* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

std::string temporary(char const* name) {
    static Folder const folder;
    return folder.file(name);
}

// --- streams ---

std::shared_ptr<MemIOStream> filled(std::size_t objects) {
    auto stream = std::make_shared<MemIOStream>();
    for (std::size_t i = 0; i < objects; ++i)
        *stream << Integer(static_cast<int>(i));
    return stream;
}

/// 64 MB as few or as many objects.
std::shared_ptr<MemIOStream> filledBytes(std::size_t bytes) { return filled(bytes / 12); }

Work writing(std::size_t n) {
    return [=] { return std::size_t{filled(n)->size()}; };
}

Work writingTexts(std::size_t n) {
    return [n, text = String(std::string(50, 'x'))] {
        MemIOStream stream;
        for (std::size_t i = 0; i < n; ++i)
            stream << text;
        return std::size_t{stream.size()};
    };
}

Work writingOneText(std::size_t n) {
    return [text = std::make_shared<String>(std::string(n, 'x'))] {
        MemIOStream stream;
        stream << *text;
        String read;
        stream >> read;
        return read.size();
    };
}

Work reading(std::size_t n) {
    return [content = filled(n)] {
        MemIOStream stream(*content);
        std::size_t sum = 0;
        Integer integer;
        while (!stream.isEmpty()) {
            stream >> integer;
            sum += static_cast<unsigned int>(integer.getValue());
        }
        return sum;
    };
}

Work skipping(std::size_t n) {
    return [content = filled(n)] {
        MemIOStream stream(*content);
        std::size_t sum = 0;
        while (!stream.isEmpty())
            sum += stream.skip();
        return sum;
    };
}

Work counting(std::size_t n) {
    return [content = filled(n)] { return std::size_t{content->count()} + content->validate(); };
}

Work copying(std::size_t n) {
    return [content = filledBytes(n)] {
        MemIOStream copy(*content);
        MemIOStream assigned;
        assigned = copy;
        return std::size_t{assigned.size()};
    };
}

Work nesting(std::size_t n) {
    return [content = filledBytes(n)] {
        MemIOStream outer;
        outer << static_cast<znsl::Serializable const&>(*content);
        MemIOStream inner;
        static_cast<znsl::IStream&>(outer).read(inner);
        return std::size_t{inner.size()};
    };
}

Work settingBuffer(std::size_t n) {
    return [content = filledBytes(n)] {
        unsigned char const* data;
        unsigned int length;
        content->getBuffer(data, length);
        MemIOStream stream;
        stream.setBuffer(data, length);
        return std::size_t{stream.size()};
    };
}

Work appendingBytes(std::size_t n) {
    return [=] {
        MemIOStream stream;
        for (std::size_t i = 0; i < n; i += 1024) {
            unsigned char* out;
            stream.getWriteBuffer(out, 1024);
            std::memset(out, 0, 1024);
        }
        return std::size_t{stream.size()};
    };
}

bool grew = false;

/// `n` objects through a queue of 1000, which must not grow once it is warm. `room` is the capacity
/// in records; without one the queue finds its own.
std::function<Work(std::size_t)> passing(unsigned int room) {
    return [=](std::size_t n) {
        return [=] {
            constexpr std::size_t depth = 1000;
            constexpr unsigned int record = 12;
            MemIOStream queue(room * record);
            for (std::size_t i = 0; i < depth; ++i)
                queue << Integer(1);
            std::size_t sum = 0;
            Integer integer;
            unsigned int warm = 0;
            for (std::size_t i = 0; i < n; ++i) {
                queue << integer;
                queue >> integer;
                sum += static_cast<unsigned int>(integer.getValue());
                if (i == 2 * depth)
                    warm = queue.capacity();
            }
            grew = grew || queue.capacity() != warm;
            return sum;
        };
    };
}

// --- sets ---

std::shared_ptr<std::vector<Resolution>> randomSizes(std::size_t n) {
    std::mt19937 random(1);
    auto sizes = std::make_shared<std::vector<Resolution>>();
    for (std::size_t i = 0; i < n; ++i)
        sizes->emplace_back(static_cast<int>(random()), static_cast<int>(random()));
    return sizes;
}

Work inserting(std::size_t n) {
    return [sizes = randomSizes(n)] {
        Resolutions set;
        for (Resolution const& size : *sizes)
            set.insert(size);
        return set.size();
    };
}

std::shared_ptr<Resolutions> randomSet(std::size_t n) {
    auto const sizes = randomSizes(n);
    return std::make_shared<Resolutions>(sizes->begin(), sizes->end());
}

Work insertingNumbers(std::size_t n) {
    return [sizes = randomSizes(n)] {
        std::set<int> set;
        for (Resolution const& size : *sizes)
            set.insert(size.width.getValue());
        return set.size();
    };
}

Work insertingInOrder(std::size_t n) {
    return
        [ordered = randomSet(n)] { return Resolutions(ordered->begin(), ordered->end()).size(); };
}

Work settingBytes(std::size_t n) {
    return [set = randomSet(n)] {
        std::vector<unsigned char> bytes(set->getBinLength());
        set->toBin(bytes.data());
        Resolutions read;
        return std::size_t{read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()))};
    };
}

// --- files ---

Work savingStream(std::size_t n) {
    return [content = filledBytes(n)] {
        std::string const path = temporary("stream");
        MemIOStream loaded;
        return std::size_t{content->save(path.c_str()) && loaded.load(path.c_str())} +
               loaded.size();
    };
}

Work filingStream(std::size_t n) {
    return [content = filledBytes(n)] {
        std::string const path = temporary("typed");
        MemIOStream read;
        return std::size_t{content->toFile(path.c_str()) && read.fromFile(path.c_str())} +
               read.size();
    };
}

Work filingText(std::size_t n) {
    return [text = std::make_shared<String>(std::string(n, 'x'))] {
        std::string const path = temporary("text");
        String read;
        return std::size_t{text->toFile(path.c_str()) && read.fromFile(path.c_str())} + read.size();
    };
}

// --- arrays ---

Work sharing(std::size_t n) {
    return [=] {
        zntl::SmartArray<char> const array(new char[64](), 64);
        std::vector<zntl::SmartArray<char>> const handles(n, array);
        return static_cast<std::size_t>(array.getReferenceCount());
    };
}

Work making(std::size_t n) {
    return [=] {
        std::vector<zntl::SmartArray<char>> handles;
        handles.reserve(n);
        for (std::size_t i = 0; i < n; ++i)
            handles.emplace_back(new char[16], 16U);
        return handles.size();
    };
}

// --- long texts ---

std::function<Work(std::size_t)>
onText(char character, std::function<std::size_t(String const&)> const& operation) {
    return [=](std::size_t n) {
        return [=, text = std::make_shared<String>(std::string(n, character))] {
            return operation(*text);
        };
    };
}

std::size_t formatted(String const& text) {
    return String::fromFormat("%s (%d)", text.c_str(), 1).size();
}
std::size_t lowered(String const& text) { return text.toLower().size(); }
std::size_t numeric(String const& text) {
    bool isInteger;
    return std::size_t{text.isNumeric(isInteger)};
}
std::size_t number(String const& text) { return text.toUnsignedInt(); }
std::size_t compared(String const& text) {
    return static_cast<std::size_t>(text.iCompare(String(text)));
}
std::size_t prefixed(String const& text) { return std::size_t{text.hasPrefix(String(text))}; }
std::size_t padded(String const& text) {
    return text.padEnd(static_cast<unsigned int>(2 * text.size()), ' ').size();
}
std::size_t xml(String const& text) { return text.toXML("text").size(); }
std::size_t parsed(String const& text) {
    Resolution size;
    return std::size_t{size.fromString(text)};
}

std::vector<Case> cases() {
    return {
        {"stream write", "integers", million, writing},
        {"stream write", "texts of 50", million, writingTexts},
        {"stream write", "pieces of 1 KB", megabytes64, appendingBytes},
        {"stream write", "one text, and read", megabytes64, writingOneText},
        {"stream write", "a stream, and read", megabytes64, nesting},
        {"stream read", "integers", million, reading},
        {"stream skip", "integers", million, skipping},
        {"stream count", "and validate", million, counting},
        {"stream copy", "and assign", megabytes64, copying},
        {"stream setBuffer", "integers", megabytes64, settingBuffer},
        {"steady queue", "1000 deep", million, passing(0)},
        {"steady queue", "1000 deep, full to the last record", million, passing(1001)},
        {"set insert", "in random order", million, inserting, tooMuchOrdered},
        {"std::set insert", "numbers, for comparison", million, insertingNumbers, tooMuchOrdered},
        {"set insert", "in ascending order", million, insertingInOrder, tooMuchOrdered},
        {"set toBin", "and fromBin", million, settingBytes, tooMuchOrdered},
        {"file save", "a stream, and load", megabytes64, savingStream},
        {"file toFile", "a stream, and fromFile", megabytes64, filingStream},
        {"file toFile", "a text, and fromFile", megabytes64, filingText},
        {"array share", "one array", million, sharing},
        {"array make", "arrays of 16", million, making},
        {"fromFormat", "one text", megabytes64, onText('x', formatted)},
        {"toLower", "capitals", megabytes64, onText('X', lowered)},
        {"isNumeric", "digits", megabytes64, onText('1', numeric)},
        {"isNumeric", "blanks", megabytes64, onText(' ', numeric)},
        {"toUnsignedInt", "digits", megabytes64, onText('1', number)},
        {"iCompare", "equal texts", megabytes64, onText('x', compared)},
        {"hasPrefix", "itself", megabytes64, onText('x', prefixed)},
        {"padEnd", "to twice the length", megabytes64, onText('x', padded)},
        {"toXML", "without markup", megabytes64, onText('x', xml)},
        {"toXML", "nothing but markup", megabytes64, onText('&', xml)},
        {"fromString", "a resolution's digits", megabytes64, onText('1', parsed)},
    };
}

struct Cost {
    double seconds; // the best of several runs
    std::size_t memory;

    bool operator<(Cost const& other) const { return seconds < other.seconds; }
};

double processorSeconds() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

Cost measure(Case const& c, std::size_t n) {
    Work const work = c.prepare(n);
    constexpr int runs = 3;
    [[maybe_unused]] static std::size_t volatile sink;
    Cost cost{0, 0};
    for (int i = 0; i < runs; ++i) {
        leaveCaches();
        std::size_t const before = inUse;
        peak = inUse;
        double const start = processorSeconds();
        sink = work();
        double const seconds = processorSeconds() - start;
        cost.seconds = i == 0 ? seconds : std::min(cost.seconds, seconds);
        cost.memory = peak - before;
    }
    return cost;
}

bool contains(Case const& c, char const* filter) {
    return (std::string(c.operation) + " " + c.kind).find(filter) != std::string::npos;
}

/// Keeps what is released with the process, so that a run after the first finds its memory there.
/// Otherwise malloc asks the system for every block beyond 32 MB, and the system's clearing of
/// pages is what would be seen between n and 2n.
void keepMemory() {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
}

} // namespace

int main(int count, char** arguments) {
    keepMemory();
    std::size_t divisor = 1;
    char const* filter = "";
    for (int i = 1; i < count; ++i) {
        if (std::strcmp(arguments[i], "--quick") == 0)
            divisor = 16;
        else
            filter = arguments[i];
    }

    constexpr std::size_t someMemory = 4096;
    bool good = true;
    std::printf("%-16s %-35s %9s %9s %6s %8s %9s %9s\n", "operation", "on", "n, ms", "2n, ms",
                "ratio", "ns each", "n, MB", "2n, MB");
    for (Case const& c : cases()) {
        if (!contains(c, filter))
            continue;
        std::size_t const most = c.most / divisor;
        Cost once = measure(c, most / 2);
        Cost twice = measure(c, most);
        // A busy machine is given another chance, for both, because its speed comes in phases.
        for (int again = 0; again < 3 && twice.seconds / once.seconds >= c.tooMuch; ++again) {
            once = measure(c, most / 2);
            twice = measure(c, most);
        }
        double const ratio = twice.seconds / once.seconds;
        bool const slow = ratio >= c.tooMuch;
        bool const large = static_cast<double>(twice.memory) >
                           c.tooMuch * static_cast<double>(once.memory) + someMemory;
        std::printf("%-16s %-35s %9.2f %9.2f %6.2f %8.2f %9.2f %9.2f%s%s%s\n", c.operation, c.kind,
                    once.seconds * 1e3, twice.seconds * 1e3, ratio,
                    twice.seconds * 1e9 / static_cast<double>(most),
                    static_cast<double>(once.memory) / 1e6, static_cast<double>(twice.memory) / 1e6,
                    slow ? "  TOO SLOW" : "", large ? "  TOO LARGE" : "",
                    grew ? "  THE QUEUE GREW" : "");
        std::fflush(stdout);
        good = good && !slow && !large && !grew;
        grew = false;
    }
    return good ? 0 : 1;
}
