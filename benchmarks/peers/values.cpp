// Copying strings, sharing arrays, XML forms, resolutions, classes with members.

#include "support/data.h"
#include "support/row.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_SmartArray.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Struct.h"
#include "video/znvl_Resolution.h"

#include <absl/strings/str_cat.h>
#include <boost/make_shared.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <fmt/format.h>

#include <charconv>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

namespace bench {

namespace {

/// `make` returns an array of 64 characters, which the work releases.
template <class Make>
auto making(Make make) {
    return [=] {
        auto array = make();
        benchmark::DoNotOptimize(array);
        return 0;
    };
}

void addArrayRows() {
    // A second thread, because std::shared_ptr uses atomic counts only in programs with threads.
    std::thread([] { pause(); }).detach();
    auto const zn = [] { return zntl::SmartArray<char>(new char[64], 64); };
    auto const std = [] { return std::shared_ptr<char[]>(new char[64]); };
    auto const boost = [] { return boost::make_shared_noinit<char[]>(64); };
    Row("array: make and release")
        .library(making(zn))
        .peer("std::shared_ptr", making(std))
        .peer("boost::make_shared", making(boost));
    Row("array: copy a handle and release it")
        .library(making([array = zn()] { return array; }))
        .peer("std::shared_ptr", making([array = std()] { return array; }))
        .peer("boost::make_shared", making([array = boost()] { return array; }));
}

// Resolutions

template <class Format>
auto naming(Format format) {
    using Names = std::map<std::pair<int, int>, std::string>;
    static Names const names = {{{176, 144}, "QCIF"},
                                {{352, 288}, "CIF"},
                                {{704, 576}, "4CIF"},
                                {{1280, 720}, "720p"},
                                {{1920, 1080}, "1080p"}};
    return [=](znvl::Resolution const& size) {
        int const width = size.width.getValue();
        int const height = size.height.getValue();
        auto const name = names.find({width, height});
        return name != names.end() ? name->second : format(width, height);
    };
}

void addNameRow(std::string const& name, znvl::Resolution const& size) {
    Row("resolution: name of " + name, size)
        .library([](znvl::Resolution const& own) { return own.toNameString(); })
        .peer("std::map, fmt", naming([](int w, int h) { return fmt::format("{}x{}", w, h); }))
        .peer("std::map, absl", naming([](int w, int h) { return absl::StrCat(w, "x", h); }));
}

int stdParse(std::string const& text) {
    char const* const end = text.data() + text.size();
    int width = 0;
    int height = 0;
    auto const [separator, error] = std::from_chars(text.data(), end, width);
    if (error == std::errc() && separator != end && *separator == 'x')
        std::from_chars(separator + 1, end, height);
    return width + height;
}

// A class that consists of members

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

} // namespace

void addRows() {
    Row("string: copy 12 characters", zntl::String(randomWord(12)))
        .library([](zntl::String const& text) { return text; })
        .peer("std::string", [](std::string const& text) { return text; });
    Row("xml: an integer", -1234567)
        .library([integer = zntl::Integer(-1234567)](int) { return integer.toXML("width"); })
        .peer("std::to_string",
              [](int number) { return "<width>" + std::to_string(number) + "</width>"; })
        .peer("fmt", [](int number) { return fmt::format("<{0}>{1}</{0}>", "width", number); })
        .peer("absl", [](int number) { return absl::StrCat("<width>", number, "</width>"); });
    Row("three members: to bytes and back")
        .library([place = Place()]() mutable { return throughBytes(place); })
        .peer("znsl::Members", [place = ListedPlace()]() mutable { return throughBytes(place); });
    addNameRow("a named size", {1920, 1080});
    addNameRow("another size", {640, 480});
    Row("resolution: parse 640x480", zntl::String("640x480"))
        .library([](zntl::String const& text) {
            znvl::Resolution size;
            size.fromString(text);
            return size.width.getValue() + size.height.getValue();
        })
        .peer("std::from_chars", stdParse);
    addArrayRows();
}

} // namespace bench
