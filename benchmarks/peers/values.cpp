// Constructing and copying strings, sharing arrays, XML forms, resolutions.

#include "support/data.h"
#include "support/objects.h"
#include "support/row.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_SmartArray.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Struct.h"
#include "video/znvl_Resolution.h"

#include <absl/strings/str_cat.h>
#include <absl/strings/str_replace.h>
#include <boost/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <strings.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace bench {

namespace {

void addStringRows(std::string const& name, std::string const& plain) {
    Row("string: make from " + name)
        .library([=] { return zntl::String(plain.c_str()); })
        .peer("std::string", [=] { return std::string(plain.c_str()); });
    Row("string: copy " + name)
        .library([text = zntl::String(plain)] { return text; })
        .peer("std::string", [=] { return plain; });
}

// Arrays

template <class Array>
auto copying(Array const& array) {
    return [=] {
        Array copy = array;
        benchmark::DoNotOptimize(copy);
        return 0;
    };
}

/// `make` returns an array of as many characters as its argument says.
template <class Make>
auto making(Make make) {
    return [=] {
        auto array = make(std::size_t{64});
        benchmark::DoNotOptimize(array);
        return 0;
    };
}

template <class Make>
auto filling(Make make, std::string const& text) {
    return [=] {
        auto array = make(text.size() + 1);
        std::memcpy(array.get(), text.c_str(), text.size() + 1);
        return array[0];
    };
}

void addArrayRows() {
    // A second thread, because std::shared_ptr uses atomic counts only in programs with threads.
    std::thread([] { pause(); }).detach();
    auto const zn = [](std::size_t size) {
        return zntl::SmartArray<char>(new char[size], static_cast<unsigned int>(size));
    };
    auto const std = [](std::size_t size) { return std::shared_ptr<char[]>(new char[size]); };
    auto const boost = [](std::size_t size) { return boost::make_shared_noinit<char[]>(size); };
    Row("array: make and release")
        .library(making(zn))
        .peer("std::shared_ptr", making(std))
        .peer("boost::make_shared", making(boost));
    Row("array: copy a handle and release it")
        .library(copying(zn(64)))
        .peer("std::shared_ptr", copying(std(64)))
        .peer("boost::make_shared", copying(boost(64)));
    std::string const plain = randomText(200);
    Row("array: from a string of 200 characters")
        .library([text = zntl::String(plain)] {
            zntl::SmartArray<char> array = text;
            return *array;
        })
        .peer("std::shared_ptr", filling(std, plain))
        .peer("boost::make_shared", filling(boost, plain));
}

// XML

std::string encoded(std::string const& text) {
    return absl::StrReplaceAll(
        text, {{"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"'", "&apos;"}, {"\"", "&quot;"}});
}

void addXmlTextRow(std::string const& name, std::string const& plain) {
    Row("xml: " + name)
        .library([text = zntl::String(plain)] { return text.toXML("title"); })
        .peer("fmt, absl", [=] { return fmt::format("<{0}>{1}</{0}>", "title", encoded(plain)); })
        .peer("absl", [=] { return absl::StrCat("<title>", encoded(plain), "</title>"); });
}

void addXmlRows() {
    int const number = -1234567;
    Row("xml: an integer")
        .library([integer = zntl::Integer(number)] { return integer.toXML("width"); })
        .peer("std::to_string", [=] { return "<width>" + std::to_string(number) + "</width>"; })
        .peer("fmt", [=] { return fmt::format("<{0}>{1}</{0}>", "width", number); })
        .peer("absl", [=] { return absl::StrCat("<width>", number, "</width>"); });
    addXmlTextRow("a string with markup", "Main entrance <left & right>");
    addXmlTextRow("a string without markup", randomText(100));
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

using Names = std::map<std::pair<int, int>, std::string>;
Names const names = {{{176, 144}, "QCIF"},
                     {{352, 288}, "CIF"},
                     {{704, 576}, "4CIF"},
                     {{1280, 720}, "720p"},
                     {{1920, 1080}, "1080p"}};

template <class Format>
auto naming(int width, int height, Format format) {
    return [=] {
        auto const name = names.find({width, height});
        return name != names.end() ? name->second : format(width, height);
    };
}

void addNameRow(std::string const& name, int width, int height) {
    Row("resolution: name of " + name)
        .library([size = znvl::Resolution(width, height)] { return size.toNameString(); })
        .peer("std::map, fmt",
              naming(width, height, [](int w, int h) { return fmt::format("{}x{}", w, h); }))
        .peer("std::map, absl",
              naming(width, height, [](int w, int h) { return absl::StrCat(w, "x", h); }));
}

int sizeOfName(std::string const& text) {
    for (auto const& [size, name] : names) {
        if (strcasecmp(text.c_str(), name.c_str()) == 0)
            return size.first + size.second;
    }
    return 0;
}

int stdParse(std::string const& text) {
    char const* const end = text.data() + text.size();
    int width;
    int height;
    auto const first = std::from_chars(text.data(), end, width);
    if (first.ec == std::errc() && first.ptr != end && *first.ptr == 'x' &&
        std::from_chars(first.ptr + 1, end, height).ec == std::errc())
        return width + height;
    return sizeOfName(text);
}

void addParseRow(std::string const& name, std::string const& text) {
    Row("resolution: parse " + name)
        .library([text = zntl::String(text)] {
            znvl::Resolution size;
            size.fromString(text);
            return size.width.getValue() + size.height.getValue();
        })
        .peer("std::from_chars", [=] { return stdParse(text); });
}

// Classes that consist of members

class Place : public znsl::Struct<Place> {
public:
    zntl::Integer floor = 3;
    zntl::Integer height = 280;
    zntl::String name = "Gate 3";

    static constexpr auto schema =
        znsl::schema(2001, "Place", znsl::member(&Place::floor, "floor"),
                     znsl::member(&Place::height, "height"), znsl::member(&Place::name, "name"));
};

/// The same class with Members, which list the members at each call.
class ListedPlace : public Place {
public:
    using Place::toXML;
    std::string toXML(char const* element) const override {
        return znsl::Members(*this).toXML(element, {"", 0, ""});
    }
    unsigned int getBinLength() const override { return znsl::Members(*this).getBinLength(); }
    unsigned int toBin(unsigned char* out) const override {
        return znsl::Members(*this).toBin(out);
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        return znsl::Members(*this).fromBin(data, length);
    }
    void fillSerializable(std::list<znsl::Serializable*>& list,
                          std::map<std::string, znsl::Serializable*>& table) const {
        auto& self = const_cast<ListedPlace&>(*this);
        list = {&self.floor, &self.height, &self.name};
        table = {{"floor", &self.floor}, {"height", &self.height}, {"name", &self.name}};
    }
};

unsigned int throughBytes(znsl::Serializable& object) {
    unsigned char bytes[64];
    return object.fromBin(bytes, object.toBin(bytes)) + object.getBinLength();
}

void addMemberRows() {
    Row("three members: to bytes and back")
        .library([place = Place()]() mutable { return throughBytes(place); })
        .peer("znsl::Members", [place = ListedPlace()]() mutable { return throughBytes(place); });
    Row("three members: XML form")
        .library([place = Place()] { return place.toXML(); })
        .peer("znsl::Members", [place = ListedPlace()] { return place.toXML(); });
}

[[maybe_unused]] bool const added = [] {
    generator().seed(13);
    addStringRows("12 characters", randomWord(12));
    addStringRows("100 characters", randomText(100));
    addXmlRows();
    addMemberRows();
    Row("resolution: scale")
        .library([size = znvl::Resolution(1920, 1080), bounds = znvl::Resolution(640, 640)] {
            return size.scale(bounds).height.getValue();
        })
        .peer("std", [size = Size(1920, 1080), bounds = Size(640, 640)] {
            return stdScale(size, bounds).height;
        });
    addNameRow("a named size", 1920, 1080);
    addNameRow("another size", 640, 480);
    addParseRow("640x480", "640x480");
    addParseRow("a name", "1080P");
    addArrayRows();
    return true;
}();

} // namespace

} // namespace bench
