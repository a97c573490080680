// A program that uses one feature of the library a hundred times. The build defines FEATURE as one
// of these functions. On ARM, the program's size shows the size of the feature; on this machine,
// its instructions are counted.

#include "misc/zntl_Integer.h"
#include "misc/zntl_SmartArray.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "system/znst_Wait.h"
#include "video/znvl_Resolution.h"

#include <string>
#include <vector>

namespace {

using zntl::String;

/// Uses the parts of the C++ runtime that all features need: strings, allocation and exceptions.
[[maybe_unused]] std::size_t runtime(char const* text) {
    std::string all(text);
    all += all;
    return std::string(all, 1).size();
}

[[maybe_unused]] std::size_t wait(char const* text) {
    znst::Wait(static_cast<unsigned int>(*text));
    return 0;
}

[[maybe_unused]] std::size_t string(char const* text) { return String(text).size(); }

[[maybe_unused]] std::size_t array(char const* text) {
    zntl::SmartArray<char> const array = String(text);
    zntl::SmartArray<char> const copy = array;
    return static_cast<std::size_t>(*array + copy.getReferenceCount());
}

[[maybe_unused]] std::size_t format(char const* text) {
    return String::fromFormat("%dx%d", *text, *text).size();
}

[[maybe_unused]] std::size_t text(char const* plain) {
    String const text(plain);
    bool isInteger;
    return text.trim().size() + text.tokenize(",", "'").size() +
           String::sanitize(text, "abc").size() + text.extract("<", ">").size() +
           text.isNumeric(isInteger);
}

[[maybe_unused]] std::size_t text_file(char const* path) {
    String text;
    return text.fromFile(path) && text.toFile(path);
}

[[maybe_unused]] std::size_t markup(char const* text) {
    return String::encodeHtml(text).size() + String::decodeHtml(text).size() +
           String(text).replaceElement("a", "b").size();
}

[[maybe_unused]] std::size_t resolution(char const* text) {
    znvl::Resolution size;
    size.fromString(text);
    return size.scale({*text, *text}).toNameString().size();
}

[[maybe_unused]] std::size_t stream(char const* text) {
    znsl::MemIOStream stream;
    for (; *text != 0; ++text)
        stream << zntl::Integer(*text);
    zntl::Integer read;
    while (!stream.isEmpty())
        stream >> read;
    return static_cast<std::size_t>(read.getValue());
}

[[maybe_unused]] std::size_t stream_file(char const* path) {
    znsl::MemIOStream stream;
    return stream.load(path) && stream.save(path);
}

[[maybe_unused]] std::size_t set(char const* text) {
    znsl::Set<znvl::Resolution> set;
    for (; *text != 0; ++text)
        set.emplace(*text, *text);
    std::vector<unsigned char> bytes(set.getBinLength());
    set.toBin(bytes.data());
    return set.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

} // namespace

int main() {
    std::size_t volatile sink = 0;
    for (int i = 0; i < 100; ++i)
        sink = sink + FEATURE("<a href='640 x 480'>Tom &amp; Jerry's</a>, <b>text</b>");
}
