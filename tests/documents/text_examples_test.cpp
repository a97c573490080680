// The examples of docs/text.md. Below "<!-- name -->", the page quotes the lines between "//
// [name]" and "// [/name]". The last tests compare the page with this file.

#include "misc/zntl_Markup.h"
#include "misc/zntl_SmartArray.h"
#include "misc/zntl_String.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <list>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

// The examples check their results in every kind of build.
#undef NDEBUG
#include <cassert>

namespace {

// [vformat]
zntl::String logLine(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    zntl::String line = zntl::String::fromVAList(format, &args);
    va_end(args);
    return "camera: " + line;
}
// [/vformat]

// [fromBin]
bool readText(zntl::String& text, unsigned char const* data, unsigned int length) {
    if (!zntl::String::canReadBin(data, length))
        return false; // no NUL after the length field
    text.fromBin(data, length);
    return true;
}
// [/fromBin]

TEST(TextExamples, Strings) {
    // [string]
    zntl::String text("lens");
    text += " cap"; // everything that a std::string can do
    std::string const& standard = text;
    assert(standard == "lens cap");

    char const* unset = nullptr;
    assert(zntl::String(unset).empty());
    // [/string]
}

TEST(TextExamples, FormattedText) {
    // [fromFormat]
    assert(zntl::String::fromFormat("%dx%d", 640, 480) == "640x480");
    // [/fromFormat]
    assert(logLine("%d frames", 25) == "camera: 25 frames");
    // [numbers]
    assert(zntl::String::fromInteger(-7) == "-7");
    assert(zntl::String::fromFloat(2.5F, 2) == "2.50");
    // [/numbers]
    ASSERT_EQ(setenv("QUERY_STRING", "size=small", 1), 0);
    ASSERT_EQ(unsetenv("NOT_SET"), 0);
    // [fromEnvVarible]
    // In a process started with QUERY_STRING=size=small:
    assert(zntl::String::fromEnvVarible("QUERY_STRING") == "size=small");
    assert(zntl::String::fromEnvVarible("NOT_SET").empty());
    // [/fromEnvVarible]
}

TEST(TextExamples, ComparingAndConverting) {
    // [iCompare]
    assert(zntl::String("Width").iCompare("WIDTH") == 0);
    assert(zntl::String("height").iCompare("WIDTH") < 0);
    // [/iCompare]
    // [hasPrefix]
    assert(zntl::String("image/jpeg").hasPrefix("image/"));
    assert(zntl::String("image/jpeg").hasPrefix(""));
    assert(!zntl::String("image/jpeg").hasPrefix("jpeg"));
    // [/hasPrefix]
    // [toLower]
    assert(zntl::String("Full HD").toLower() == "full hd");
    // [/toLower]
    // [padEnd]
    assert(zntl::String("a").padEnd(3, '*') == "a**");
    assert(zntl::String("abcd").padEnd(3, '*') == "abcd");
    // [/padEnd]
    // [copyString]
    char out[4]; // room for three characters and the NUL
    assert(zntl::String("abcdef").copyString(out, 3) == 3);
    assert(std::string(out) == "abc");
    // [/copyString]
}

TEST(TextExamples, ReadingValues) {
    // [toUnsignedInt]
    assert(zntl::String("320").toUnsignedInt() == 320);
    assert(zntl::String("320 pixels").toUnsignedInt() == 320);
    assert(zntl::String("-5").toUnsignedInt() == 0);
    assert(zntl::String("4294967295").toUnsignedInt() == 2147483647);
    // [/toUnsignedInt]
    // [isNumeric]
    bool isInteger;
    assert(zntl::String(" -12 ").isNumeric(isInteger) && isInteger);
    assert(zntl::String("-.5").isNumeric(isInteger) && !isInteger);
    assert(!zntl::String("1 2").isNumeric(isInteger));
    assert(!zntl::String("1e5").isNumeric(isInteger));
    // [/isNumeric]
    // [toBool]
    assert(zntl::String("Yes").toBool());
    assert(zntl::String("-3").toBool());
    assert(!zntl::String("no").toBool());
    assert(!zntl::String("0").toBool());
    // [/toBool]
}

TEST(TextExamples, TrimmingFilteringCutting) {
    // [trim]
    assert(zntl::String(" \t x y \r\n").trim() == "x y");
    // [/trim]
    // [sanitize]
    assert(zntl::String::sanitize("+1 (234) 567", "0123456789") == "1234567");
    assert(zntl::String::sanitize(" a b ", "ab ") == "a b"); // trimmed, although blanks are allowed
    // [/sanitize]
    // [extract]
    assert(zntl::String("x<a>v</a>").extract("<a>", "</a>") == "v");
    assert(zntl::String("x<a>v").extract("<a>", "</a>").empty());
    // [/extract]
    // [abbreviate]
    assert(zntl::String("abcdefgh").abbreviate(5) == "ab...");
    assert(zntl::String("abc").abbreviate(5) == "abc");
    assert(zntl::String("abc").abbreviate(2).empty());
    // [/abbreviate]
}

TEST(TextExamples, FindingAndTokenizing) {
    // [findAll]
    zntl::String const row("a,'b,c',d");
    assert(row.findAll(",", "'") == (std::vector<unsigned int>{1, 7}));
    assert(row.findAll(",", "") == (std::vector<unsigned int>{1, 4, 7}));
    // [/findAll]
    // [escapes]
    // The quote after the backslash does not close the section, so the first comma is quoted.
    assert(zntl::String(R"('it\'s, so',x)").findAll(",", "'") == std::vector<unsigned int>{11});

    bool unfinished = false;
    try {
        zntl::String(R"('a,\')").findAll(",", "'");
    } catch (std::out_of_range const&) {
        unfinished = true;
    }
    assert(unfinished);
    // [/escapes]
    // [tokenize]
    std::vector<zntl::String> const pieces = zntl::String(",a,,'b,c',d,").tokenize(",", "'");
    assert((pieces == std::vector<zntl::String>{"a", "'b,c'", "d"}));
    // [/tokenize]
    // [tokenizeInto]
    std::list<zntl::String> words{"zero"};
    zntl::String::tokenize("one two", " ", words, "");
    zntl::String::tokenize("three", " ", words, "");
    assert((words == std::list<zntl::String>{"zero", "one", "two", "three"}));
    // [/tokenizeInto]
}

TEST(TextExamples, Markup) {
    // [encodeHtml]
    assert(zntl::String::encodeHtml("a<b & 'c'") == "a&lt;b &amp; &apos;c&apos;");
    // [/encodeHtml]
    // [decodeHtml]
    assert(zntl::String::decodeHtml("a&lt;b &amp; &apos;c&apos;") == "a<b & 'c'");
    assert(zntl::String::decodeHtml("&amp;lt;") == "<"); // "&amp;" first, and then "&lt;"
    assert(zntl::String::decodeHtml("&amp;amp;") == "&amp;");
    // [/decodeHtml]
    // [renderElement]
    assert(zntl::renderElement("a", zntl::String::encodeHtml("1 < 2")) == "<a>1 &lt; 2</a>");
    assert(zntl::renderElement("a") == "<a/>");
    // [/renderElement]
    // [findOpenTag]
    zntl::String const list("<items><item id='1'/></items>");
    unsigned int start;
    unsigned int end;
    bool selfClosing;
    assert(zntl::findOpenTag(list, 0, "item", start, end, selfClosing));
    assert(list.substr(start, end - start + 1) == "<item id='1'/>");
    assert(selfClosing);
    assert(!zntl::findOpenTag(list, end + 1, "item", start, end, selfClosing));
    // [/findOpenTag]
    // [findCloseTag]
    zntl::String const nested("<a><a></a></a>");
    assert(zntl::findOpenTag(nested, 0, "a", start, end, selfClosing));
    assert(zntl::findCloseTag(nested, end + 1, "a", start, end));
    assert(start == 10 && end == 13); // the second "</a>"
    // [/findCloseTag]
    // [replaceElement]
    zntl::String const page("1<b>2<b>3</b></b>4<b/>5");
    assert(page.replaceElement("b", "X") == "1X4X5");
    assert(zntl::String("1<b>2").replaceElement("b", "X") == "1<b>2"); // never closed
    // [/replaceElement]
}

TEST(TextExamples, Files) {
    test::TemporaryDirectory const directory;
    std::string const file = directory / "note";
    char const* const path = file.c_str();
    // [files]
    zntl::String const note("two\r\nlines\n");
    assert(note.toFile(path)); // 11 bytes, and nothing else

    zntl::String copy("old content");
    assert(copy.fromFile(path));
    assert(copy == note);

    assert(!copy.fromFile("/no/such/file"));
    assert(copy.empty());
    // [/files]
    EXPECT_EQ(std::filesystem::file_size(file), 11U);
}

TEST(TextExamples, StoredForms) {
    // [toXML]
    assert(zntl::String("a<b").toXML("note") == "<note>a&lt;b</note>");
    assert(zntl::String("").toXML() == "<zntl_String/>");

    zntl::String read("before");
    assert(read.fromXML("<note>a</note>"));
    assert(read.empty());
    // [/toXML]
    // [toBin]
    zntl::String const text("abc");
    std::vector<unsigned char> bytes(text.getBinLength());
    assert(bytes.size() == 4 + 3 + 1); // the length, the characters, a NUL
    assert(text.toBin(bytes.data()) == bytes.size());

    zntl::String copy;
    assert(copy.fromBin(bytes.data(), 8) == 8);
    assert(copy == "abc");
    // [/toBin]
    assert(readText(copy, bytes.data(), 8));
    assert(!readText(copy, bytes.data(), 7));
    assert(!readText(copy, bytes.data(), 0));
}

TEST(TextExamples, SharedArrays) {
    // [array]
    zntl::SmartArray<char> array = zntl::String("abc");
    assert(array.getSize() == 4); // "a", "b", "c" and NUL
    assert(std::string(&*array) == "abc");

    zntl::ConstSmartArray<char> const shared(array);
    assert(shared.getReferenceCount() == 2);
    *array = 'X';
    assert(std::string(&*shared) == "Xbc"); // one buffer

    array.removeReference();
    assert(array.getReferenceCount() == 0); // empty from now on
    assert(shared.getReferenceCount() == 1);
    // [/array]
    // [range]
    std::string fault;
    try {
        shared[0];
    } catch (zntl::Exception const& exception) {
        fault = exception.what();
    }
    assert(fault == "../../../../../libraries/src/misc/zntl_SmartArray (273): "
                    "zntl::SmartArray::operator[]() - index out of range!");

    assert((&*shared)[0] == 'X');       // the way to read an element
    assert(&shared[4] == &*shared + 4); // at the size or above: an address past the last element
    // [/range]
}

// --- the page ---

using Examples = std::map<std::string, std::string>;

std::filesystem::path const sourceFile = __FILE__;
std::filesystem::path const page = sourceFile.parent_path() / "../../docs/text.md";

std::vector<std::string> linesOf(std::filesystem::path const& path) {
    std::ifstream file(path);
    if (!file)
        throw std::runtime_error("cannot read " + path.string());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

/// Returns the part of `line` between `opening` and `closing`; an empty string if the line does not
/// start and end with them.
std::string between(std::string const& line, std::string const& opening,
                    std::string const& closing) {
    bool const framed = line.size() > opening.size() + closing.size() &&
                        line.compare(0, opening.size(), opening) == 0 &&
                        line.compare(line.size() - closing.size(), closing.size(), closing) == 0;
    return framed ? line.substr(opening.size(), line.size() - opening.size() - closing.size()) : "";
}

/// Returns the examples of this file by name, each without the indentation of its first line.
Examples examplesOfFile() {
    Examples examples;
    std::string name;
    std::size_t indentation = 0;
    for (std::string const& line : linesOf(sourceFile)) {
        std::size_t const start = std::min(line.find_first_not_of(' '), line.size());
        std::string const text = line.substr(start);
        if (text == "// [/" + name + "]") {
            name.clear();
        } else if (!name.empty()) {
            examples[name] += line.substr(std::min(indentation, start)) + "\n";
        } else if (!between(text, "// [", "]").empty()) {
            name = between(text, "// [", "]");
            indentation = start;
        }
    }
    return examples;
}

/// Returns the page's blocks of code by the names above them.
Examples examplesOfPage() {
    Examples examples;
    std::string name = "(nameless)";
    bool inBlock = false;
    for (std::string const& line : linesOf(page)) {
        if (inBlock && line != "```")
            examples[name] += line + "\n";
        else if (!between(line, "<!-- ", " -->").empty())
            name = between(line, "<!-- ", " -->");
        else if (inBlock)
            name = "(nameless)";
        inBlock = line == "```cpp" || (inBlock && line != "```");
    }
    return examples;
}

TEST(TextPage, QuotesTheExamplesAndNoOtherCode) {
    Examples const quoted = examplesOfPage();
    Examples const compiled = examplesOfFile();
    EXPECT_GE(compiled.size(), 25U);
    for (auto const& [name, code] : compiled)
        EXPECT_EQ(quoted.count(name), 1U) << name << " is not quoted";
    for (auto const& [name, code] : quoted) {
        ASSERT_EQ(compiled.count(name), 1U) << name << " is not compiled:\n" << code;
        EXPECT_EQ(code, compiled.at(name)) << name;
    }
}

TEST(TextPage, HasAnExampleOfEveryOperation) {
    std::string all;
    for (auto const& [name, code] : examplesOfPage())
        all += code;
    for (char const* const operation : {"fromFormat",      "fromVAList",     "fromInteger",
                                        "fromFloat",       "fromEnvVarible", "iCompare",
                                        "hasPrefix",       "toLower",        "padEnd",
                                        "copyString",      "toUnsignedInt",  "isNumeric",
                                        "toBool",          "trim",           "sanitize",
                                        "extract",         "abbreviate",     "findAll",
                                        "tokenize",        "encodeHtml",     "decodeHtml",
                                        "findOpenTag",     "findCloseTag",   "replaceElement",
                                        "toFile",          "fromFile",       "toXML",
                                        "fromXML",         "toBin",          "fromBin",
                                        "getBinLength",    "getSize",        "getReferenceCount",
                                        "removeReference", "renderElement"})
        EXPECT_NE(all.find(std::string(operation) + "("), std::string::npos) << operation;
}

} // namespace
