// Measures how time and memory grow with the input: text operations with their worst inputs,
// streams, sets and files.
//
//     scaling [--quick] [FILTER]
//
// Prints for each operation the processor time for n and for 2n (the best of several runs), their
// ratio, the time for one byte or object, and the peak of the allocated memory. 2n is 64 MB or a
// million objects, with --quick a sixteenth of that. FILTER selects the lines that contain it.
// Every run has a stack of 64 KB and starts with cold caches. The exit status is 1 if a time ratio
// is 2.5 or more (3.5 for sets), if memory grows faster than that, or if a queue in a steady state
// grows.

#include "misc/zntl_Integer.h"
#include "misc/zntl_Markup.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "support/sample_texts.h"
#include "support/small_stack.h"
#include "support/temporary_directory.h"
#include "video/znvl_Resolution.h"

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

// The memory that is allocated now, and its peak.

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

/// One run. It returns a number that depends on the whole result, so the compiler removes nothing.
using Work = std::function<std::size_t()>;

struct Case {
    char const* operation;
    char const* kind;
    std::size_t most; // 2n
    std::function<Work(std::size_t n)> prepare;
    double tooMuch = 2.5;
};

// --- texts ---

constexpr std::size_t megabytes64 = std::size_t{64} << 20;

/// Builds a text of about the given size: `before`, `piece` repeated, `second` repeated as often,
/// `behind`.
struct Text {
    Text(char const* only) : piece(only) {}
    Text(std::string only) : piece(std::move(only)) {}
    Text(std::string b, std::string p, std::string e, std::string s = "")
        : before(std::move(b)), piece(std::move(p)), behind(std::move(e)), second(std::move(s)) {}

    std::string make(std::size_t bytes) const {
        std::size_t const count = bytes / (piece.size() + second.size());
        return before + test::repeated(piece, count) + test::repeated(second, count) + behind;
    }

    std::string before, piece, behind, second;
};

Case onText(char const* operation, char const* kind, Text const& text,
            std::function<std::size_t(String const&)> const& run) {
    return {operation, kind, megabytes64, [=](std::size_t n) {
                return [=, made = std::make_shared<String>(text.make(n))] { return run(*made); };
            }};
}

std::size_t encode(String const& text) { return String::encodeHtml(text).size(); }
std::size_t decode(String const& text) { return String::decodeHtml(text).size(); }
std::size_t trim(String const& text) { return text.trim().size(); }
std::size_t xml(String const& text) { return text.toXML("text").size(); }
std::size_t format(String const& text) {
    return String::fromFormat("%s (%d)", text.c_str(), 1).size();
}
auto sanitize(std::string const& allowed) {
    return [=](String const& text) { return String::sanitize(text, allowed.c_str()).size(); };
}
auto extract(std::string const& begin, std::string const& end) {
    return [=](String const& text) { return text.extract(begin, end).size(); };
}
auto findAll(std::string const& chars, std::string const& quotes) {
    return [=](String const& text) { return text.findAll(chars, quotes).size(); };
}
auto tokenize(std::string const& separators, std::string const& quotes) {
    return [=](String const& text) { return text.tokenize(separators, quotes).size(); };
}
auto openTag(std::string const& name) {
    return [=](String const& text) {
        unsigned int start = 0;
        unsigned int end = 0;
        bool selfClosing = false;
        return std::size_t{zntl::findOpenTag(text, 0, name, start, end, selfClosing)} + end;
    };
}
/// Finds the closing tag of the element "a" that starts at the beginning of the text.
std::size_t closeTag(String const& text) {
    unsigned int start = 0;
    unsigned int end = 0;
    return std::size_t{zntl::findCloseTag(text, 3, "a", start, end)} + end;
}
auto replace(std::string const& name) {
    return [=](String const& text) { return text.replaceElement(name, "x").size(); };
}

std::string temporary(char const* name) {
    static test::TemporaryDirectory const folder;
    return folder / name;
}

std::size_t file(String const& text) {
    std::string const path = temporary("text");
    String read;
    return std::size_t{text.toFile(path.c_str()) && read.fromFile(path.c_str())} + read.size();
}

std::vector<Case> textCases() {
    std::string characters;
    for (int c = 1; c <= UCHAR_MAX; ++c)
        characters += static_cast<char>(c);
    std::string const longAlphabet = test::repeated(characters, 4096);
    std::string const as(200, 'a');
    std::string const manyAs(100000, 'a');
    return {
        onText("encodeHtml", "nothing but markup", "&<>'\"", encode),
        onText("encodeHtml", "no markup", "x", encode),
        onText("encodeHtml", "markup, a rare one last", {"", "&<>'", "\""}, encode),
        onText("decodeHtml", "nothing but entities", "&amp;&lt;&gt;&apos;&quot;", decode),
        onText("decodeHtml", "ampersands of ampersands", "&amp;amp;", decode),
        onText("decodeHtml", "nothing but ampersands", "&", decode),
        onText("decodeHtml", "one ampersand, many rests", {"&", "amp;", ""}, decode),
        onText("decodeHtml", "broken entities", "&quot&apo", decode),
        onText("toXML", "nothing but markup", "&", xml),
        onText("trim", "nothing but blanks", " \t\n\r", trim),
        onText("trim", "blanks around", {"", " ", "", " x "}, trim),
        onText("sanitize", "all allowed, long alphabet", characters, sanitize(characters)),
        onText("sanitize", "every other, alphabet of 1 MB", std::string("\0\xff", 2),
               sanitize(longAlphabet)),
        onText("sanitize", "nothing allowed", "ab", sanitize("")),
        onText("fromFormat", "one text", "x", format),
        onText("file", "a text, written and read", "x", file),
        onText("extract", "no marker", "x", extract("[", "]")),
        onText("extract", "all but a marker of 3", "a", extract("aab", "x")),
        onText("extract", "all but a marker of 201", "a", extract(as + "b", "x")),
        onText("extract", "all but a marker of 201, reversed", "a", extract("b" + as, "x")),
        onText("extract", "many times half a marker", as + "c", extract(as + as, "x")),
        onText("extract", "all but a marker of 100001", "a", extract(manyAs + "b", "x")),
        onText("extract", "all but an end of 201", {"[", "a", ""}, extract("[", as + "b")),
        onText("findAll", "nothing but separators", ",", findAll(",", "'")),
        onText("findAll", "nothing but quotes, one open", {"", "''", "',"}, findAll(",", "'")),
        onText("findAll", "two kinds of quotes", {"", "'\"'\"", ","}, findAll(",", "'\"")),
        onText("findAll", "one section of separators", {"'", ",", "',"}, findAll(",", "'")),
        onText("findAll", "one section, never closed", {"'", ",", ""}, findAll(",", "'")),
        onText("findAll", "one section of escapes", {"'", "\\'x", "',"}, findAll(",", "'")),
        onText("findAll", "one section of backslashes", {"'", "\\\\\\", "',"}, findAll(",", "'")),
        onText("findAll", "backslashes that are quotes", {"", "\\", ","}, findAll(",", "\\")),
        onText("findAll", "separators of every kind", characters, findAll(longAlphabet, "")),
        onText("tokenize", "nothing but separators", ",", tokenize(",", "'")),
        onText("tokenize", "nothing but quotes", "'", tokenize(",", "'")),
        onText("tokenize", "many short pieces", "x,", tokenize(",", "'")),
        onText("tokenize", "many quoted pieces", "'a, b; c \\' d',", tokenize(",", "'")),
        onText("findOpenTag", "longer names", "<ab>", openTag("a")),
        onText("findOpenTag", "names without an end", "<a", openTag("a")),
        onText("findOpenTag", "slashes within", "<a/", openTag("a")),
        onText("findOpenTag", "attributes without an end", "<a ", openTag("a")),
        onText("findOpenTag", "half a name of 200", "<" + as, openTag(as + as)),
        onText("findCloseTag", "nested", {"", "<a>", "", "</a>"}, closeTag),
        onText("findCloseTag", "never closed", "<a>", closeTag),
        onText("findCloseTag", "one closed in each", "<a><a></a>", closeTag),
        onText("findCloseTag", "self-closing", {"<a>", "<a/>", "</a>"}, closeTag),
        onText("findCloseTag", "attributes without an end", {"<a>", "<a ", "</a>"}, closeTag),
        onText("findCloseTag", "tags that straddle", {"<a><a><a>", "<a </a>", ""}, closeTag),
        onText("replaceElement", "nested", {"", "<a>", "", "</a>"}, replace("a")),
        onText("replaceElement", "siblings", "<a></a>", replace("a")),
        onText("replaceElement", "never closed", "<a>", replace("a")),
        onText("replaceElement", "half of them closed", {"", "<a><a>", "", "</a>"}, replace("a")),
        onText("replaceElement", "one closed in each", "<a><a></a>", replace("a")),
        onText("replaceElement", "closed but never opened", "</a>", replace("a")),
        onText("replaceElement", "self-closing", "<a/>", replace("a")),
        onText("replaceElement", "attributes without an end", "<a ", replace("a")),
        onText("replaceElement", "closings in attributes", "<a </a>", replace("a")),
        onText("replaceElement", "half a name of 200", "<" + as, replace(as + as)),
        onText("replaceElement", "empty name, never closed", "<>", replace("")),
    };
}

// --- objects ---

constexpr std::size_t million = 1'000'000;

std::shared_ptr<MemIOStream> filled(std::size_t objects) {
    auto stream = std::make_shared<MemIOStream>();
    for (std::size_t i = 0; i < objects; ++i)
        *stream << Integer(static_cast<int>(i));
    return stream;
}

Work writing(std::size_t n) {
    return [=] { return std::size_t{filled(n)->size()}; };
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
        std::size_t sum = stream.count();
        Integer integer;
        while (!stream.isEmpty()) {
            stream >> integer;
            sum += stream.skip();
            sum += static_cast<unsigned int>(integer.getValue());
        }
        return sum;
    };
}

/// Copies and assigns a stream, writes it to another stream and reads it back.
Work copying(std::size_t n) {
    return [content = filled(n / 12)] {
        MemIOStream copy(*content);
        MemIOStream outer;
        outer << static_cast<znsl::Serializable const&>(copy);
        copy = outer;
        MemIOStream inner;
        static_cast<znsl::IStream&>(outer).read(inner);
        return std::size_t{inner.size()} + copy.size();
    };
}

Work saving(std::size_t n) {
    return [content = filled(n / 12)] {
        std::string const path = temporary("stream");
        MemIOStream read;
        bool const isGood = content->save(path.c_str()) && read.load(path.c_str()) &&
                            read.toFile(path.c_str()) && read.fromFile(path.c_str());
        return std::size_t{isGood} + read.size();
    };
}

bool grew = false;

/// Writes and reads `n` objects in a queue of 1000, whose buffer must not grow after the start.
/// `room` is the initial capacity in records; with 0 the queue chooses its capacity.
std::function<Work(std::size_t)> passing(unsigned int room) {
    return [=](std::size_t n) {
        return [=] {
            constexpr std::size_t depth = 1000;
            MemIOStream queue(room * 12); // a record of an Integer has 12 bytes
            for (std::size_t i = 0; i < depth; ++i)
                queue << Integer(1);
            Integer integer;
            unsigned int warm = 0;
            for (std::size_t i = 0; i < n; ++i) {
                queue << integer;
                queue >> integer;
                if (i == 2 * depth)
                    warm = queue.capacity();
            }
            grew = grew || queue.capacity() != warm;
            return std::size_t{queue.size()};
        };
    };
}

/// Trees take n log n steps, and each step takes longer if the elements do not fit in the caches.
constexpr double tooMuchOrdered = 3.5;

std::vector<Resolution> randomSizes(std::size_t n) {
    std::mt19937 random(1);
    std::vector<Resolution> sizes;
    for (std::size_t i = 0; i < n; ++i)
        sizes.emplace_back(static_cast<int>(random()), static_cast<int>(random()));
    return sizes;
}

Work inserting(std::size_t n) {
    return [sizes = randomSizes(n)] { return Resolutions(sizes.begin(), sizes.end()).size(); };
}

Work settingBytes(std::size_t n) {
    auto const sizes = randomSizes(n);
    return [set = Resolutions(sizes.begin(), sizes.end())] {
        std::vector<unsigned char> bytes(set.getBinLength());
        set.toBin(bytes.data());
        Resolutions read;
        return std::size_t{read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()))};
    };
}

std::vector<Case> objectCases() {
    return {
        {"stream write", "integers", million, writing},
        {"stream write", "one text, and read", megabytes64, writingOneText},
        {"stream read", "and skip, in turns", million, reading},
        {"stream copy", "and nest, and assign", megabytes64, copying},
        {"stream save", "and load, as both kinds of file", megabytes64, saving},
        {"steady queue", "1000 deep", million, passing(0)},
        {"steady queue", "1000 deep, full to the last record", million, passing(1001)},
        {"set insert", "in random order", million, inserting, tooMuchOrdered},
        {"set toBin", "and fromBin", million, settingBytes, tooMuchOrdered},
    };
}

// --- measuring ---

/// Fills the processor's caches with other data, so every run starts with cold caches. Otherwise an
/// operation would appear to grow faster if n fits in the caches and 2n does not.
void leaveCaches() {
    static std::vector<unsigned char> other(std::size_t{96} << 20);
    for (std::size_t i = 0; i < other.size(); i += 64)
        ++other[i];
}

/// Lets the process keep memory that it frees, so later runs need no new pages. Otherwise the times
/// would include the kernel's clearing of new pages.
void keepMemory() {
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
}

double processorSeconds() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Cost {
    double seconds; // the best of several runs
    double memory;
};

Cost measure(Case const& c, std::size_t n) {
    Work const work = c.prepare(n);
    constexpr int runs = 3;
    Cost cost{0, 0};
    for (int i = 0; i < runs; ++i) {
        leaveCaches();
        std::size_t const before = inUse;
        peak = inUse;
        double const seconds = test::onSmallStack([&] {
            double const start = processorSeconds();
            [[maybe_unused]] static std::size_t volatile sink;
            sink = work();
            return processorSeconds() - start;
        });
        cost.seconds = i == 0 ? seconds : std::min(cost.seconds, seconds);
        cost.memory = static_cast<double>(peak - before);
    }
    return cost;
}

/// Prints a line; returns whether the costs grow as they should.
bool report(Case const& c, std::size_t most) {
    constexpr double someMemory = 4096;
    Cost once{};
    Cost twice{};
    // Repeats both measurements if they are bad, because the speed of a busy machine varies.
    for (int attempt = 0;
         attempt == 0 || (attempt < 4 && twice.seconds >= c.tooMuch * once.seconds); ++attempt) {
        once = measure(c, most / 2);
        twice = measure(c, most);
    }
    bool const isSlow = twice.seconds >= c.tooMuch * once.seconds;
    bool const isLarge = twice.memory > c.tooMuch * once.memory + someMemory;
    std::printf("%-16s %-35s %9.2f %9.2f %6.2f %8.2f %9.2f %9.2f%s%s%s\n", c.operation, c.kind,
                once.seconds * 1e3, twice.seconds * 1e3, twice.seconds / once.seconds,
                twice.seconds * 1e9 / static_cast<double>(most), once.memory / 1e6,
                twice.memory / 1e6, isSlow ? "  TOO SLOW" : "", isLarge ? "  TOO LARGE" : "",
                grew ? "  THE QUEUE GREW" : "");
    std::fflush(stdout);
    return !isSlow && !isLarge && !std::exchange(grew, false);
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
    std::printf("%-16s %-35s %9s %9s %6s %8s %9s %9s\n", "operation", "on", "n, ms", "2n, ms",
                "ratio", "ns each", "n, MB", "2n, MB");
    bool isGood = true;
    for (auto const& cases : {textCases(), objectCases()}) {
        for (Case const& c : cases) {
            if ((std::string(c.operation) + ' ' + c.kind).find(filter) != std::string::npos)
                isGood = report(c, c.most / divisor) && isGood;
        }
    }
    return isGood ? 0 : 1;
}
