// A fixed set of library operations, to be counted one at a time:
//
//     operations            names them
//     operations NAME       carries one out, a hundred times

#include "misc/zntl_Integer.h"
#include "misc/zntl_Markup.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using znsl::MemIOStream;
using zntl::Integer;
using zntl::String;
using znvl::Resolution;

struct Operation {
    char const* name;
    void (*run)();
};

/// Whatever is assigned to it has to be worked out.
std::size_t volatile sink;

String const plain(std::string(200, 'x') + ' ' + std::string(200, 'y'));
String const markup("<a href=\"x\">Tom & Jerry's</a> <b>text</b>");
String const list("one,two;'three, four',five,,six");

void writeIntegers() {
    MemIOStream stream;
    for (int i = 0; i < 50; ++i)
        stream << Integer(i);
    sink = stream.size();
}

MemIOStream const& integers() {
    static MemIOStream const stream = [] {
        MemIOStream filled;
        for (int i = 0; i < 50; ++i)
            filled << Integer(i);
        return filled;
    }();
    return stream;
}

void readIntegers() {
    MemIOStream stream(integers());
    Integer integer;
    while (!stream.isEmpty())
        stream >> integer;
    sink = static_cast<std::size_t>(integer.getValue());
}

void passStrings() {
    MemIOStream stream;
    String read;
    for (int i = 0; i < 50; ++i) {
        stream << markup;
        stream >> read;
    }
    sink = read.size();
}

void peekAndSkip() {
    MemIOStream stream(integers());
    Integer first;
    Integer second;
    sink = stream.peek(2, &first, &second);
    while (!stream.isEmpty())
        stream.skip();
    sink = stream.count();
}

znsl::Set<Resolution> sizes() {
    znsl::Set<Resolution> set;
    for (int i = 0; i < 50; ++i)
        set.emplace((i * 37) % 50, 100);
    return set;
}

void fillSet() { sink = sizes().size(); }

void passSet() {
    static znsl::Set<Resolution> const set = sizes();
    std::vector<unsigned char> bytes(set.getBinLength());
    set.toBin(bytes.data());
    znsl::Set<Resolution> read;
    sink = read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

void encodePlain() { sink = String::encodeHtml(plain).size(); }
void encodeMarkup() { sink = String::encodeHtml(markup).size(); }

void decodeMarkup() {
    static String const encoded = String::encodeHtml(markup);
    sink = String::decodeHtml(encoded).size();
}

void replaceElements() { sink = markup.replaceElement("b", "X").size(); }

void findTags() {
    unsigned int start;
    unsigned int end;
    bool selfClosing;
    sink = std::size_t{zntl::findOpenTag(markup, 0, "a", start, end, selfClosing)};
    sink = std::size_t{zntl::findCloseTag(markup, end + 1, "a", start, end)};
}

void trimText() { sink = String("  \t text \n").trim().size(); }
void sanitizeText() { sink = String::sanitize(markup, "abcdefghijklmnopqrstuvwxyz").size(); }
void lowerText() { sink = markup.toLower().size(); }
void extractText() { sink = markup.extract("<b>", "</b>").size(); }
void findSeparators() { sink = list.findAll(",;", "'").size(); }
void tokenizeText() { sink = list.tokenize(",;", "'").size(); }

void testNumber() {
    static String const number("-1234.5678");
    bool isInteger;
    sink = std::size_t{number.isNumeric(isInteger)} + number.toUnsignedInt();
}

void comparePrefix() {
    static String const prefix("<a href=");
    sink = std::size_t{markup.hasPrefix(prefix)} + std::size_t{markup.iCompare(prefix) == 0};
}

void formatSize() { sink = String::fromFormat("%dx%d", 1920, 1080).size(); }
void formatInteger() { sink = String::fromInteger(-1234567).size(); }

void copyString() {
    String const copy(plain);
    sink = copy.size();
}

void shareArray() {
    zntl::SmartArray<char> const array = markup;
    zntl::SmartArray<char> const copy = array;
    sink = static_cast<std::size_t>(copy.getReferenceCount());
}

void writeXml() { sink = Integer(-1234567).toXML("width").size() + markup.toXML("text").size(); }

void scaleResolution() {
    sink = static_cast<std::size_t>(
        Resolution(1920, 1080).scale(Resolution(640, 640)).height.getValue());
}

void nameResolution() {
    sink = Resolution(1920, 1080).toNameString().size() + Resolution(1, 2).toNameString().size();
}

void parseResolution() {
    Resolution size;
    sink = std::size_t{size.fromString("640 x 480")} + std::size_t{size.fromString("1080P")};
}

constexpr Operation operations[] = {
    {"nothing", [] {}},
    {"stream-write-integers", writeIntegers},
    {"stream-read-integers", readIntegers},
    {"stream-pass-strings", passStrings},
    {"stream-peek-skip", peekAndSkip},
    {"set-fill", fillSet},
    {"set-to-bytes-and-back", passSet},
    {"encode-plain", encodePlain},
    {"encode-markup", encodeMarkup},
    {"decode", decodeMarkup},
    {"replace-element", replaceElements},
    {"find-tags", findTags},
    {"trim", trimText},
    {"sanitize", sanitizeText},
    {"lower", lowerText},
    {"extract", extractText},
    {"find-all", findSeparators},
    {"tokenize", tokenizeText},
    {"number", testNumber},
    {"prefix-compare", comparePrefix},
    {"format-size", formatSize},
    {"format-integer", formatInteger},
    {"string-copy", copyString},
    {"array-share", shareArray},
    {"xml", writeXml},
    {"resolution-scale", scaleResolution},
    {"resolution-name", nameResolution},
    {"resolution-parse", parseResolution},
};

} // namespace

int main(int count, char** arguments) {
    for (Operation const& operation : operations) {
        if (count < 2) {
            std::puts(operation.name);
        } else if (std::strcmp(arguments[1], operation.name) == 0) {
            for (int i = 0; i < 100; ++i)
                operation.run();
            return 0;
        }
    }
    return count < 2 ? 0 : 1;
}
