// How the time of each text operation grows with its text, for the texts that are the worst for it.
//
//     scaling [--large | --megabytes=N] [FILTER]
//
// For each operation and kind of text: the processor time for n and for 2n bytes (the best of
// several runs), their ratio, and the time per byte. n is 4 MB, with --large 16 MB; FILTER picks
// the lines that contain it. Every operation has a stack of 64 KB and begins with cold caches. The
// exit status is 1 when a ratio is 2.5 or more.

#include "cold_caches.h"

#include "misc/zntl_Markup.h"
#include "misc/zntl_String.h"
#include "support/sample_texts.h"
#include "support/small_stack.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <malloc.h>
#include <string>
#include <vector>

namespace {

using zntl::String;

/// A text of about so many bytes.
using Text = std::function<std::string(std::size_t bytes)>;
/// Gives something that depends on all of the result, so that nothing is optimised away.
using Operation = std::function<std::size_t(String const& text)>;

struct Case {
    char const* operation;
    char const* kind; // of text
    Text text;
    Operation run;
};

// --- kinds of text ---

Text only(std::string const& piece) {
    return [=](std::size_t bytes) { return test::repeated(piece, bytes / piece.size()); };
}

Text framed(std::string const& before, Text const& text, std::string const& behind) {
    return [=](std::size_t bytes) { return before + text(bytes) + behind; };
}

/// Many of one piece, then as many of the other.
Text half(std::string const& first, std::string const& second) {
    return [=](std::size_t bytes) {
        std::size_t const count = bytes / (first.size() + second.size());
        return test::repeated(first, count) + test::repeated(second, count);
    };
}

std::string everyCharacterButNul() {
    std::string characters;
    for (int c = 1; c <= UCHAR_MAX; ++c)
        characters += static_cast<char>(c);
    return characters;
}

// --- operations ---

Operation sanitize(std::string const& allowed) {
    return [=](String const& text) { return String::sanitize(text, allowed.c_str()).size(); };
}

Operation extract(std::string const& begin, std::string const& end) {
    return [=](String const& text) { return text.extract(begin, end).size(); };
}

Operation findAll(std::string const& chars, std::string const& quotes) {
    return [=](String const& text) { return text.findAll(chars, quotes).size(); };
}

Operation tokenize(std::string const& separators, std::string const& quotes) {
    return [=](String const& text) { return text.tokenize(separators, quotes).size(); };
}

Operation findOpenTag(std::string const& name) {
    return [=](String const& text) {
        unsigned int start = 0;
        unsigned int end = 0;
        bool selfClosing = false;
        return std::size_t{zntl::findOpenTag(text, 0, name, start, end, selfClosing)} + end;
    };
}

Operation findCloseTag(std::string const& name, unsigned int from = 0) {
    return [=](String const& text) {
        unsigned int start = 0;
        unsigned int end = 0;
        return std::size_t{zntl::findCloseTag(text, from, name, start, end)} + end;
    };
}

Operation replaceElement(std::string const& name) {
    return [=](String const& text) { return text.replaceElement(name, "x").size(); };
}

std::size_t encodeHtml(String const& text) { return String::encodeHtml(text).size(); }
std::size_t decodeHtml(String const& text) { return String::decodeHtml(text).size(); }
std::size_t trim(String const& text) { return text.trim().size(); }
std::size_t toBool(String const& text) { return std::size_t{text.toBool()}; }

std::size_t abbreviate(String const& text) {
    return text.abbreviate(static_cast<unsigned int>(text.size() - 1)).size();
}

std::size_t array(String const& text) {
    zntl::SmartArray<char> const characters = text;
    return characters.getSize();
}

std::vector<Case> cases() {
    std::string const characters = everyCharacterButNul();
    std::string const longAlphabet = test::repeated(characters, 4096);
    std::string const as(200, 'a');
    std::string const manyAs(100000, 'a');
    return {
        {"encodeHtml", "nothing but markup", only("&<>'\""), encodeHtml},
        {"encodeHtml", "nothing but ampersands", only("&"), encodeHtml},
        {"encodeHtml", "no markup", only("x"), encodeHtml},
        {"encodeHtml", "markup, a rare one last", framed("", only("&<>'"), "\""), encodeHtml},
        {"decodeHtml", "nothing but entities", only("&amp;&lt;&gt;&apos;&quot;"), decodeHtml},
        {"decodeHtml", "encoded twice", only("&amp;lt;"), decodeHtml},
        {"decodeHtml", "ampersands of ampersands", only("&amp;amp;"), decodeHtml},
        {"decodeHtml", "nothing but ampersands", only("&"), decodeHtml},
        {"decodeHtml", "one ampersand, many rests", framed("&", only("amp;"), ""), decodeHtml},
        {"decodeHtml", "broken entities", only("&quot&apo"), decodeHtml},

        {"trim", "nothing but blanks", only(" \t\n\r"), trim},
        {"trim", "blanks around", framed("", half(" ", " x "), ""), trim},
        {"sanitize", "all allowed, long alphabet", only(characters), sanitize(characters)},
        {"sanitize", "none allowed, long alphabet", only(std::string(1, '\0')),
         sanitize(characters)},
        {"sanitize", "every other, alphabet of 1 MB", only(std::string("\0\xff", 2)),
         sanitize(longAlphabet)},
        {"sanitize", "every other, short alphabet", only("ab"), sanitize("a")},
        {"sanitize", "nothing allowed", only("ab"), sanitize("")},
        {"toBool", "nothing but zeros", only("0"), toBool},
        {"toBool", "nothing but blanks", only(" "), toBool},
        {"toBool", "nothing but nines", only("9"), toBool},
        {"abbreviate", "by one", only("x"), abbreviate},
        {"array", "any", only("x"), array},

        {"extract", "no marker", only("x"), extract("[", "]")},
        {"extract", "no end", framed("[", only("["), ""), extract("[", "]")},
        {"extract", "all but a marker of 3", only("a"), extract("aab", "x")},
        {"extract", "all but a marker of 201", only("a"), extract(as + "b", "x")},
        {"extract", "all but a marker of 201, reversed", only("a"), extract("b" + as, "x")},
        {"extract", "many times half a marker", only(as + "c"), extract(as + as, "x")},
        {"extract", "all but a marker of 100001", only("a"), extract(manyAs + "b", "x")},
        {"extract", "all but an end of 201", framed("[", only("a"), ""), extract("[", as + "b")},

        {"findAll", "nothing but separators", only(","), findAll(",", "'")},
        {"findAll", "nothing but quotes", only("'"), findAll(",'", "'")},
        {"findAll", "nothing but quotes, one open", framed("", only("''"), "',"),
         findAll(",", "'")},
        {"findAll", "nothing but two kinds of quotes", framed("", only("'\"'\""), ","),
         findAll(",", "'\"")},
        {"findAll", "many quoted sections", only("'x',"), findAll(",", "'")},
        {"findAll", "one section of separators", framed("'", only(","), "',"), findAll(",", "'")},
        {"findAll", "one section, never closed", framed("'", only(","), ""), findAll(",", "'")},
        {"findAll", "one section of escapes", framed("'", only("\\'x"), "',"), findAll(",", "'")},
        {"findAll", "one section of backslashes", framed("'", only("\\\\\\"), "',"),
         findAll(",", "'")},
        {"findAll", "backslashes that are quotes", framed("", only("\\"), ","), findAll(",", "\\")},
        {"findAll", "no separator", only("'x"), findAll(",", "'")},
        {"findAll", "separators of every kind", only(characters), findAll(longAlphabet, "")},
        {"tokenize", "nothing but separators", only(","), tokenize(",", "'")},
        {"tokenize", "nothing but quotes", only("'"), tokenize(",", "'")},
        {"tokenize", "many short pieces", only("x,"), tokenize(",", "'")},
        {"tokenize", "many pieces of 15", only("0123456789abcd,"), tokenize(",", "'")},
        {"tokenize", "many quoted pieces", only("'a, b; c \\' d',"), tokenize(",", "'")},
        {"tokenize", "one section, never closed", framed("'", only(","), ""), tokenize(",", "'")},
        {"tokenize", "no separators", only("x"), tokenize("", "")},

        {"findOpenTag", "longer names", only("<ab>"), findOpenTag("a")},
        {"findOpenTag", "names without an end", only("<a"), findOpenTag("a")},
        {"findOpenTag", "slashes within", only("<a/"), findOpenTag("a")},
        {"findOpenTag", "attributes without an end", only("<a "), findOpenTag("a")},
        {"findOpenTag", "half a name of 200", only("<" + as), findOpenTag(as + as)},
        {"findCloseTag", "nested", half("<a>", "</a>"), findCloseTag("a", 3)},
        {"findCloseTag", "siblings", framed("<a>", only("<a></a>"), "</a>"), findCloseTag("a", 3)},
        {"findCloseTag", "never closed", only("<a>"), findCloseTag("a", 3)},
        {"findCloseTag", "one closed in each", only("<a><a></a>"), findCloseTag("a", 3)},
        {"findCloseTag", "self-closing", framed("<a>", only("<a/>"), "</a>"), findCloseTag("a", 3)},
        {"findCloseTag", "attributes without an end", framed("<a>", only("<a "), "</a>"),
         findCloseTag("a", 3)},
        {"findCloseTag", "tags that straddle", framed("<a><a><a>", only("<a </a>"), ""),
         findCloseTag("a", 3)},
        {"replaceElement", "nested", half("<a>", "</a>"), replaceElement("a")},
        {"replaceElement", "siblings", only("<a></a>"), replaceElement("a")},
        {"replaceElement", "siblings with text", only("<a class='b'>text</a> text "),
         replaceElement("a")},
        {"replaceElement", "never closed", only("<a>"), replaceElement("a")},
        {"replaceElement", "half of them closed", framed("", half("<a><a>", "</a>"), ""),
         replaceElement("a")},
        {"replaceElement", "one closed in each", only("<a><a></a>"), replaceElement("a")},
        {"replaceElement", "closed but never opened", only("</a>"), replaceElement("a")},
        {"replaceElement", "self-closing", only("<a/>"), replaceElement("a")},
        {"replaceElement", "attributes without an end", only("<a "), replaceElement("a")},
        {"replaceElement", "closings in attributes", only("<a </a>"), replaceElement("a")},
        {"replaceElement", "half a name of 200", only("<" + as), replaceElement(as + as)},
        {"replaceElement", "empty name, never closed", only("<>"), replaceElement("")},
    };
}

// --- measuring ---

/// Memory stays with the process, so that from the second run on its pages are there. Otherwise
/// malloc would give large blocks back, from sizes on that it chooses as it goes, and the time of
/// the system for new pages would be measured with them.
void keepMemory() {
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
}

/// The seconds that this thread has computed for: others that share the processor do not count.
double computed() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Seconds for one run, the best of several: the shorter, the more.
double measure(Case const& c, std::size_t bytes) {
    String const text = c.text(bytes);
    constexpr int leastRuns = 3;
    constexpr double leastSeconds = 0.05;
    return test::onSmallStack([&] {
        std::size_t volatile result;
        double best = 0;
        double all = 0;
        for (int i = 0; i < leastRuns || all < leastSeconds; ++i) {
            leaveCaches();
            double const start = computed();
            result = c.run(text);
            double const seconds = computed() - start;
            all += seconds;
            best = i == 0 ? seconds : std::min(best, seconds);
        }
        static_cast<void>(result);
        return best;
    });
}

bool contains(Case const& c, char const* filter) {
    return (std::string(c.operation) + " " + c.kind).find(filter) != std::string::npos;
}

} // namespace

int main(int count, char** arguments) {
    std::size_t megabytes = 4;
    char const* filter = "";
    for (int i = 1; i < count; ++i) {
        String const argument(arguments[i]);
        if (argument == "--large")
            megabytes = 16;
        else if (argument.hasPrefix("--megabytes="))
            megabytes = String(argument.substr(std::strlen("--megabytes="))).toUnsignedInt();
        else
            filter = arguments[i];
    }

    constexpr double tooMuch = 2.5;
    keepMemory();
    bool linear = true;
    std::printf("n = %zu MB, a stack of 64 KB\n\n", megabytes);
    std::printf("%-15s %-34s %9s %9s %6s %8s\n", "operation", "text", "n, ms", "2n, ms", "ratio",
                "ns/byte");
    for (Case const& c : cases()) {
        if (!contains(c, filter))
            continue;
        std::size_t const bytes = megabytes << 20;
        double once = measure(c, bytes);
        double twice = measure(c, 2 * bytes);
        // A busy machine is given another chance, for both, because its speed comes in phases.
        for (int again = 0; again < 3 && twice / once >= tooMuch; ++again) {
            once = measure(c, bytes);
            twice = measure(c, 2 * bytes);
        }
        double const ratio = twice / once;
        double const perByte = twice * 1e9 / static_cast<double>(2 * bytes);
        bool const slow = ratio >= tooMuch;
        linear = linear && !slow;
        std::printf("%-15s %-34s %9.2f %9.2f %6.2f %8.2f%s\n", c.operation, c.kind, once * 1e3,
                    twice * 1e3, ratio, perByte, slow ? "  NOT LINEAR" : "");
        std::fflush(stdout);
    }
    return linear ? 0 : 1;
}
