// Values: strings made and copied, arrays shared, XML forms, resolutions.

#include "support/array_rows.h"
#include "support/data.h"
#include "support/row.h"
#include "support/size.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "video/znvl_Resolution.h"

#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#include <boost/algorithm/string/predicate.hpp>
#include <cereal/archives/xml.hpp>
#include <cereal/types/string.hpp>
#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <strings.h>

namespace bench {

namespace {

// Strings

void addStringRows(std::string const& name, std::string const& plain) {
    Row("string: make from " + name)
        .library([=] { return zntl::String(plain.c_str()); })
        .peer("std::string", [=] { return std::string(plain.c_str()); });
    Row("string: copy " + name)
        .library([text = zntl::String(plain)] { return text; })
        .peer("std::string", [=] { return plain; });
}

// Arrays

void addTextArrayRow() {
    generator().seed(11);
    std::string const plain = randomText(200);
    Row("array: from a string of 200 characters")
        .library([text = zntl::String(plain)] {
            zntl::SmartArray<char> array = text;
            return *array;
        })
        .peer("std::shared_ptr",
              [=] {
                  std::shared_ptr<char[]> array(new char[plain.size() + 1]);
                  std::memcpy(array.get(), plain.c_str(), plain.size() + 1);
                  return array[0];
              })
        .peer("boost::make_shared", [=] {
            auto array = boost::make_shared_noinit<char[]>(plain.size() + 1);
            std::memcpy(array.get(), plain.c_str(), plain.size() + 1);
            return array[0];
        });
}

// XML

std::string encoded(std::string const& text) {
    return absl::StrReplaceAll(
        text, {{"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"'", "&apos;"}, {"\"", "&quot;"}});
}

void addXmlRows() {
    Row("xml: an integer")
        .library([integer = zntl::Integer(-1234567)] { return integer.toXML("width"); })
        .peer("std::ostringstream",
              [] {
                  std::ostringstream xml;
                  xml << "<width>" << -1234567 << "</width>";
                  return xml.str();
              })
        .peer("std::to_string",
              [value = -1234567] { return "<width>" + std::to_string(value) + "</width>"; })
        .peer("fmt", [value = -1234567] { return fmt::format("<{0}>{1}</{0}>", "width", value); })
        .peer("absl", [value = -1234567] {
            return absl::StrCat("<", "width", ">", value, "</", "width", ">");
        });

    std::string const plain = "Main entrance <left & right>";
    Row("xml: a string with markup")
        .library([text = zntl::String(plain)] { return text.toXML("title"); })
        .peer("fmt, absl", [=] { return fmt::format("<{0}>{1}</{0}>", "title", encoded(plain)); })
        .peer("absl", [=] { return absl::StrCat("<title>", encoded(plain), "</title>"); });
    generator().seed(12);
    std::string const word = randomText(100);
    Row("xml: a string without markup")
        .library([text = zntl::String(word)] { return text.toXML("title"); })
        .peer("fmt, absl", [=] { return fmt::format("<{0}>{1}</{0}>", "title", encoded(word)); })
        .peer("absl", [=] { return absl::StrCat("<title>", encoded(word), "</title>"); });

    // An archive writes a whole document, so what comes out is not compared.
    Row("xml: an integer, as an archive")
        .library([integer = zntl::Integer(-1234567)] { return !integer.toXML("width").empty(); })
        .peer("cereal", [] {
            std::ostringstream xml;
            cereal::XMLOutputArchive{xml}(cereal::make_nvp("width", -1234567));
            return !xml.str().empty();
        });
}

// Resolutions

Size stdScale(Size const& size, Size const& bounds) {
    if (bounds.width <= 0 || bounds.height <= 0)
        return size;
    float const aspect = static_cast<float>(size.width) / static_cast<float>(size.height);
    float const height = static_cast<float>(bounds.width) / aspect;
    if (height > static_cast<float>(bounds.height))
        return {static_cast<int>(std::lround(aspect * static_cast<float>(bounds.height))),
                bounds.height};
    return {bounds.width, static_cast<int>(std::lround(height))};
}

void addScaleRow() {
    Row("resolution: scale")
        .library([size = znvl::Resolution(1920, 1080), bounds = znvl::Resolution(640, 640)] {
            return size.scale(bounds).height.getValue();
        })
        .peer("std", [size = Size(1920, 1080), bounds = Size(640, 640)] {
            return stdScale(size, bounds).height;
        });
}

using Names = std::map<std::pair<int, int>, std::string>;
Names const names = {{{176, 144}, "QCIF"},
                     {{352, 288}, "CIF"},
                     {{704, 576}, "4CIF"},
                     {{1280, 720}, "720p"},
                     {{1920, 1080}, "1080p"}};

template <class Format>
std::string named(Size const& size, Format format) {
    auto const name = names.find({size.width, size.height});
    return name != names.end() ? name->second : format(size.width, size.height);
}

void addNameRow(std::string const& name, int width, int height) {
    Row("resolution: name of " + name)
        .library([size = znvl::Resolution(width, height)] { return size.toNameString(); })
        .peer("std::map, std::to_string",
              [size = Size(width, height)] {
                  return named(size, [](int w, int h) {
                      return std::to_string(w) + 'x' + std::to_string(h);
                  });
              })
        .peer("std::map, fmt",
              [size = Size(width, height)] {
                  return named(size, [](int w, int h) { return fmt::format("{}x{}", w, h); });
              })
        .peer("std::map, absl", [size = Size(width, height)] {
            return named(size, [](int w, int h) { return absl::StrCat(w, "x", h); });
        });
}

struct Equal {
    bool operator()(std::string_view one, std::string_view other) const {
        return strncasecmp(one.data(), other.data(), std::max(one.size(), other.size())) == 0;
    }
};

constexpr std::pair<char const*, std::pair<int, int>> sizes[] = {{"QCIF", {176, 144}},
                                                                 {"CIF", {352, 288}},
                                                                 {"4CIF", {704, 576}},
                                                                 {"720p", {1280, 720}},
                                                                 {"1080p", {1920, 1080}}};

/// The names, by each peer's comparison without case.
template <class Same>
int sizeOfName(std::string const& text, Same same) {
    for (auto const& [name, size] : sizes) {
        if (same(text, name))
            return size.first + size.second;
    }
    return 0;
}

int stdParse(std::string const& text) {
    char const* const end = text.data() + text.size();
    int width;
    int height;
    auto const first = std::from_chars(text.data(), end, width);
    if (first.ec == std::errc() && first.ptr != end && *first.ptr == 'x') {
        auto const second = std::from_chars(first.ptr + 1, end, height);
        if (second.ec == std::errc())
            return width + height;
    }
    return sizeOfName(text, [](std::string const& given, char const* name) {
        return strcasecmp(given.c_str(), name) == 0;
    });
}

int scanfParse(std::string const& text) {
    int width;
    int height;
    if (std::sscanf(text.c_str(), "%d x %d", &width, &height) == 2)
        return width + height;
    return sizeOfName(text, [](std::string const& given, char const* name) {
        return strcasecmp(given.c_str(), name) == 0;
    });
}

int abslParse(std::string const& text) {
    std::pair<absl::string_view, absl::string_view> const parts = absl::StrSplit(text, 'x');
    int width;
    int height;
    if (absl::SimpleAtoi(parts.first, &width) && absl::SimpleAtoi(parts.second, &height))
        return width + height;
    return sizeOfName(text, [](std::string const& given, char const* name) {
        return absl::EqualsIgnoreCase(given, name);
    });
}

int regexParse(std::string const& text) {
    static std::regex const pattern("\\s*([-+]?\\d+)\\s*x\\s*([-+]?\\d+).*");
    std::smatch match;
    if (std::regex_match(text, match, pattern))
        return std::stoi(match[1]) + std::stoi(match[2]);
    return sizeOfName(text, [](std::string const& given, char const* name) {
        return boost::iequals(given, name);
    });
}

void addParseRow(std::string const& name, std::string const& text) {
    Row("resolution: parse " + name)
        .library([text = zntl::String(text)] {
            znvl::Resolution size;
            size.fromString(text);
            return size.width.getValue() + size.height.getValue();
        })
        .peer("std::from_chars", [=] { return stdParse(text); })
        .peer("sscanf", [=] { return scanfParse(text); })
        .peer("absl", [=] { return abslParse(text); })
        .peer("std::regex, boost", [=] { return regexParse(text); });
}

[[maybe_unused]] bool const added = [] {
    generator().seed(13);
    addStringRows("12 characters", randomWord(12));
    addStringRows("100 characters", randomText(100));
    addArrayRows("");
    addTextArrayRow();
    addXmlRows();
    addScaleRow();
    addNameRow("a named size", 1920, 1080);
    addNameRow("another size", 640, 480);
    addParseRow("640x480", "640x480");
    addParseRow("a name", "1080P");
    return true;
}();

} // namespace

} // namespace bench
