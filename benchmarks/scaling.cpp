// Measures how time and memory grow with the input: text operations with their worst inputs,
// streams, sets and files.
//
// Prints for each operation the processor time for n and for 2n (the best of several runs), their
// ratio, the time for one byte or object, and the peak of the allocated memory. 2n is 64 MB or a
// million objects. Every run has a stack of 64 KB and starts with cold caches. The exit status is 1
// if a time or the memory grows more than its limit.

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
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

// The memory that is allocated now, and its peak.
std::size_t inUse = 0;
std::size_t peak = 0;

} // namespace

// The operators for arrays call these.
void* operator new(std::size_t size) {
    void* const block = std::malloc(size);
    if (!block)
        throw std::bad_alloc();
    inUse += malloc_usable_size(block);
    peak = std::max(peak, inUse);
    return block;
}

void operator delete(void* block) noexcept {
    inUse -= malloc_usable_size(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace {

using test::repeated;
using znsl::MemIOStream;
using zntl::Integer;
using zntl::String;
using Resolutions = znsl::Set<znvl::Resolution>;

/// One run. It returns a number that depends on the whole result, so the compiler removes nothing.
using Work = std::function<std::size_t()>;

// Limits of growth.
constexpr double constant = 1;
constexpr double linear = 2.5;
// Trees take n log n steps, and each step takes longer if the elements do not fit in the caches.
constexpr double tree = 3.5;

struct Case {
    std::string name;
    std::size_t most; // 2n
    std::function<Work(std::size_t n)> prepare;
    double timeLimit = linear; // of the growth from n to 2n
    double memoryLimit = linear;
};

std::vector<Case> cases;
test::TemporaryDirectory const folder;

// --- texts ---

constexpr std::size_t megabytes64 = std::size_t{64} << 20;

/// Builds a text of about the given size: `before`, `piece` repeated, `second` repeated as often,
/// `after`.
struct Input {
    std::string name;
    std::string piece;
    std::string second = "";
    std::string before = "";
    std::string after = "";

    std::string make(std::size_t bytes) const {
        std::size_t const count = bytes / (piece.size() + second.size());
        return before + repeated(piece, count) + repeated(second, count) + after;
    }
};

/// Adds a case for each input. `run`, which can be a member function, receives the text and the
/// arguments, and returns a string or a list.
template <class Run, class... Arguments>
void onTexts(std::string const& operation, std::vector<Input> const& inputs, Run run,
             Arguments... arguments) {
    for (Input const& input : inputs) {
        auto const prepare = [=](std::size_t n) {
            return [=, text = std::make_shared<String const>(input.make(n))] {
                return std::invoke(run, *text, arguments...).size();
            };
        };
        cases.push_back({operation + ", " + input.name, megabytes64, prepare});
    }
}

/// Returns the text up to the end of the element "a" that starts at its beginning.
std::string_view element(String const& text) {
    unsigned int start = 0;
    unsigned int end = 0;
    zntl::findCloseTag(text, 3, "a", start, end);
    return std::string_view(text).substr(0, end);
}

String throughFile(String const& text) {
    std::string const path = folder / "text";
    String read;
    return text.toFile(path.c_str()) && read.fromFile(path.c_str()) ? read : String();
}

void addTextCases() {
    std::string all;
    for (int c = 1; c < 256; ++c)
        all += static_cast<char>(c);
    static std::string const longAlphabet = repeated(all, 4096);
    std::string const as = repeated("a", 200);
    onTexts("encodeHtml", {{"a rare one last", "&<>'", "\""}}, String::encodeHtml);
    onTexts("decodeHtml",
            {{"nothing but entities", "&amp;&lt;&gt;&apos;&quot;"},
             {"one ampersand, many rests", "amp;", "", "&"},
             {"broken entities", "&quot&apo"}},
            String::decodeHtml);
    onTexts("trim", {{"blanks around", " ", "", " ", "x "}}, &String::trim);
    onTexts("sanitize", {{"every other, alphabet of 1 MB", std::string("\0\xff", 2)}},
            String::sanitize, longAlphabet.c_str());
    onTexts("fromFormat", {{"one text", "x"}},
            [](String const& text) { return String::fromFormat("%s", text.c_str()); });
    onTexts("file", {{"a text, written and read", "x"}}, throughFile);
    onTexts("extract", {{"half a marker of 64", "a"}}, &String::extract,
            repeated("a", 32) + repeated("b", 32), "x");
    onTexts("extract", {{"all but a marker of 100001", "a"}}, &String::extract,
            repeated("a", 100'000) + "b", "x");
    onTexts("findAll",
            {{"nothing but separators", ","},
             {"one section, never closed", ",", "", "'"},
             {"one section of backslashes", "\\\\\\", "", "'", "',"}},
            &String::findAll, ",", "'");
    onTexts("findAll", {{"backslashes that are quotes", "\\", "", "", ","}}, &String::findAll, ",",
            "\\");
    onTexts("tokenize", {{"quoted pieces", "'a, b; c \\' d',"}},
            [](String const& text) { return text.tokenize(",", "'"); });
    onTexts("findCloseTag",
            {{"nested", "<a>", "</a>"},
             {"self-closing", "<a/>", "", "<a>", "</a>"},
             {"attributes without an end", "<a ", "", "<a>", "</a>"},
             {"tags that straddle", "<a </a>", "", "<a><a><a>"}},
            element);
    onTexts("replaceElement",
            {{"nested", "<a>", "</a>"},
             {"never closed", "<a>"},
             {"one closed in each", "<a><a></a>"},
             {"longer names", "<ab>"},
             {"attributes without an end", "<a "},
             {"closings in attributes", "<a </a>"}},
            &String::replaceElement, "a", "x");
    onTexts("replaceElement", {{"half a name of 400", "<" + as}}, &String::replaceElement, as + as,
            "x");
    onTexts("replaceElement", {{"empty name, never closed", "<>"}}, &String::replaceElement, "",
            "x");
}

// --- objects ---

constexpr std::size_t million = 1'000'000;
constexpr unsigned int recordSize = 12; // of an Integer

MemIOStream filled(std::size_t objects) {
    MemIOStream stream;
    for (std::size_t i = 0; i < objects; ++i)
        stream << Integer(static_cast<int>(i));
    return stream;
}

Work writingAndReading(std::size_t n) {
    return [=] {
        MemIOStream stream = filled(n);
        std::size_t sum = stream.count();
        for (Integer integer; !stream.isEmpty(); sum += stream.skip())
            stream >> integer;
        return sum;
    };
}

/// Copies and assigns a stream, writes it to another stream and reads it back.
Work copying(std::size_t n) {
    return [content = filled(n / recordSize)] {
        MemIOStream copy(content);
        MemIOStream outer;
        outer << static_cast<znsl::Serializable const&>(copy);
        copy = outer;
        MemIOStream inner;
        static_cast<znsl::IStream&>(outer).read(inner);
        return std::size_t{inner.size()} + copy.size();
    };
}

Work saving(std::size_t n) {
    return [content = filled(n / recordSize)] {
        std::string const path = folder / "stream";
        MemIOStream read;
        bool const isGood = content.save(path.c_str()) && read.load(path.c_str()) &&
                            read.toFile(path.c_str()) && read.fromFile(path.c_str());
        return std::size_t{isGood} + read.size();
    };
}

/// Writes and reads `n` objects in a queue of 1000. `room` is the initial capacity in records; with
/// 0 the queue chooses its capacity.
auto passing(unsigned int room) {
    return [=](std::size_t n) {
        return [=] {
            MemIOStream queue(room * recordSize);
            for (int i = 0; i < 1000; ++i)
                queue << Integer(i);
            Integer integer;
            for (std::size_t i = 0; i < n; ++i) {
                queue << integer;
                queue >> integer;
            }
            return std::size_t{queue.size()};
        };
    };
}

Work insertingAndStoring(std::size_t n) {
    std::vector<znvl::Resolution> sizes;
    std::mt19937 random(1);
    while (sizes.size() < n)
        sizes.emplace_back(static_cast<int>(random()), static_cast<int>(random()));
    return [=] {
        Resolutions const set(sizes.begin(), sizes.end());
        std::vector<unsigned char> bytes(set.getBinLength());
        set.toBin(bytes.data());
        Resolutions read;
        return std::size_t{read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()))};
    };
}

void addObjectCases() {
    cases.insert(cases.end(),
                 {{"stream, write, read and skip", million, writingAndReading},
                  {"stream, copy, nest and assign", megabytes64, copying},
                  {"stream, save and load, as both kinds of file", megabytes64, saving},
                  {"set, insert, toBin, fromBin", million, insertingAndStoring, tree}});
    for (unsigned int const room : {0U, 1001U})
        cases.push_back({"steady queue, room for " + std::to_string(room) + " at first", million,
                         passing(room), linear, constant});
}

// --- measuring ---

/// Fills the processor's caches with other data, so every run starts with cold caches. Otherwise an
/// operation would appear to grow faster if n fits in the caches and 2n does not.
void leaveCaches() {
    static std::vector<unsigned char> other(std::size_t{96} << 20);
    for (std::size_t i = 0; i < other.size(); i += 64)
        ++other[i];
}

double processorSeconds() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Cost {
    double seconds = 1e9; // the best of several runs
    double memory = 0;
};

Cost measure(Case const& c, std::size_t n) {
    Work const work = c.prepare(n);
    Cost cost;
    for (int run = 0; run < 3; ++run) {
        leaveCaches();
        std::size_t const before = peak = inUse;
        double const seconds = test::onSmallStack([&] {
            double const start = processorSeconds();
            [[maybe_unused]] static std::size_t volatile sink;
            sink = work();
            return processorSeconds() - start;
        });
        cost = {std::min(cost.seconds, seconds), static_cast<double>(peak - before)};
    }
    return cost;
}

/// Prints a line; returns whether the costs grow as they should.
bool report(Case const& c) {
    Cost once;
    Cost twice;
    bool isSlow = true;
    // Repeats both measurements if they are bad, because the speed of a busy machine varies.
    for (int attempt = 0; isSlow && attempt < 4; ++attempt) {
        once = measure(c, c.most / 2);
        twice = measure(c, c.most);
        isSlow = twice.seconds > c.timeLimit * once.seconds;
    }
    constexpr double someMemory = 4096;
    bool const isLarge = twice.memory > c.memoryLimit * once.memory + someMemory;
    std::printf("%-50s %9.2f %9.2f %6.2f %8.2f %9.2f %9.2f%s%s\n", c.name.c_str(),
                once.seconds * 1e3, twice.seconds * 1e3, twice.seconds / once.seconds,
                twice.seconds * 1e9 / static_cast<double>(c.most), once.memory / 1e6,
                twice.memory / 1e6, isSlow ? "  TOO SLOW" : "", isLarge ? "  TOO LARGE" : "");
    std::fflush(stdout);
    return !isSlow && !isLarge;
}

} // namespace

int main() {
    // The process keeps memory that it frees, so later runs need no new pages. Otherwise the times
    // would include the kernel's clearing of new pages.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
    addTextCases();
    addObjectCases();
    std::printf("%-50s %9s %9s %6s %8s %9s %9s\n", "operation", "n, ms", "2n, ms", "ratio",
                "ns each", "n, MB", "2n, MB");
    bool isGood = true;
    for (Case const& c : cases)
        isGood = report(c) && isGood;
    return isGood ? 0 : 1;
}
