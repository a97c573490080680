// Operations whose instructions are counted: "operations NAME" carries one out, a hundred times.

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "video/znvl_Resolution.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

using znsl::MemIOStream;
using zntl::Integer;
using zntl::String;
using znvl::Resolution;

String const markup("<a href=\"x\">Tom & Jerry's</a> <b>text</b>");

MemIOStream integers() {
    MemIOStream stream;
    for (int i = 0; i < 50; ++i)
        stream << Integer(i);
    return stream;
}

std::size_t readIntegers() {
    static MemIOStream const written = integers();
    MemIOStream stream(written);
    Integer integer;
    while (!stream.isEmpty())
        stream >> integer;
    return static_cast<std::size_t>(integer.getValue());
}

std::size_t passStrings() {
    MemIOStream stream;
    String read;
    for (int i = 0; i < 50; ++i) {
        stream << markup;
        stream >> read;
    }
    return read.size();
}

std::size_t passSet() {
    static znsl::Set<Resolution> const set = [] {
        znsl::Set<Resolution> filled;
        for (int i = 0; i < 50; ++i)
            filled.emplace((i * 37) % 50, 100);
        return filled;
    }();
    std::vector<unsigned char> bytes(set.getBinLength());
    set.toBin(bytes.data());
    znsl::Set<Resolution> read;
    return std::size_t{read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()))};
}

std::size_t parseResolution() {
    Resolution size;
    return std::size_t{size.fromString("640 x 480")} + std::size_t{size.fromString("1080P")};
}

std::size_t tokenize() {
    static String const list("one,two;'three, four',five,,six");
    return list.tokenize(",;", "'").size();
}

struct Operation {
    char const* name;
    std::size_t (*run)();
};

constexpr Operation operations[] = {
    {"nothing", [] { return std::size_t{0}; }},
    {"write-integers", [] { return std::size_t{integers().size()}; }},
    {"read-integers", readIntegers},
    {"pass-strings", passStrings},
    {"pass-set", passSet},
    {"encode", [] { return String::encodeHtml(markup).size(); }},
    {"tokenize", tokenize},
    {"format-size", [] { return String::fromFormat("%dx%d", 1920, 1080).size(); }},
    {"parse-resolution", parseResolution},
};

} // namespace

int main(int count, char** arguments) {
    std::size_t volatile sink = 0;
    for (Operation const& operation : operations) {
        if (count == 2 && std::strcmp(arguments[1], operation.name) == 0) {
            for (int i = 0; i < 100; ++i)
                sink = sink + operation.run();
            return 0;
        }
    }
    return 2;
}
