// Each library reads values from XML that it has written itself.

#include "support/row.h"

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Set.h"
#include "streams/znsl_Struct.h"

#include <cereal/archives/xml.hpp>
#include <cereal/types/set.hpp>
#include <cereal/types/string.hpp>

#include <set>
#include <sstream>
#include <string>
#include <utility>

namespace bench {

namespace {

struct ZnNumber : zntl::Integer {
    ZnNumber(int value = 0) : Integer(value) {}
    bool operator<(ZnNumber const& other) const { return getValue() < other.getValue(); }
};

struct ZnPlace : znsl::Struct<ZnPlace> {
    ZnNumber floor;
    zntl::String name;
    ZnPlace() = default;
    ZnPlace(int number, std::string text) : floor(number), name(std::move(text)) {}
    bool operator<(ZnPlace const& other) const { return floor < other.floor; }
    static constexpr auto schema =
        znsl::schema(2001, "Place", znsl::member(&ZnPlace::floor, "floor"),
                     znsl::member(&ZnPlace::name, "name"));
};

struct Place {
    int floor = 0;
    std::string name;
    Place() = default;
    Place(int number, std::string text) : floor(number), name(std::move(text)) {}
    bool operator<(Place const& other) const { return floor < other.floor; }
    template <class Archive>
    void serialize(Archive& archive) {
        archive(::cereal::make_nvp("floor", floor), ::cereal::make_nvp("name", name));
    }
};

std::string textOf(int i) { return "Room " + std::to_string(i * 7919 % 100'000) + " & hall"; }

std::string printed(ZnNumber const& value) { return std::to_string(value.getValue()); }
std::string printed(ZnPlace const& value) { return printed(value.floor) + value.name; }
std::string printed(Place const& value) { return std::to_string(value.floor) + value.name; }
using bench::printed;

template <class Set>
std::string summary(Set const& set) {
    return std::to_string(set.size()) + printed(*set.begin()) + printed(*set.rbegin());
}

template <class Element, class Make>
auto zn(int count, Make make) {
    znsl::Set<Element> set;
    for (int i = 0; i < count; ++i)
        set.insert(make(i));
    return [xml = set.toXML()] {
        znsl::Set<Element> read;
        read.fromXML(xml.c_str());
        return summary(read);
    };
}

template <class Element, class Make>
auto cereal(int count, Make make) {
    std::set<Element> set;
    for (int i = 0; i < count; ++i)
        set.insert(make(i));
    std::ostringstream out;
    ::cereal::XMLOutputArchive{out}(set);
    return [xml = out.str()] {
        std::set<Element> read;
        std::istringstream in(xml);
        ::cereal::XMLInputArchive{in}(read);
        return summary(read);
    };
}

template <class ZnElement, class Element, class Make>
void addRow(std::string const& what, Make make) {
    constexpr int count = 1000;
    Row("xml: read " + std::to_string(count) + " " + what)
        .library(zn<ZnElement>(count, [&](int i) { return ZnElement(make(i)); }))
        .peer("cereal", cereal<Element>(count, [&](int i) { return Element(make(i)); }));
}

[[maybe_unused]] bool const added = [] {
    addRow<ZnNumber, int>("numbers", [](int i) { return i * 7919 - 1'000'000; });
    addRow<zntl::String, std::string>("strings", textOf);
    constexpr int count = 1000;
    Row("xml: read 1000 records of a number and a string")
        .library(zn<ZnPlace>(count, [](int i) { return ZnPlace(i, textOf(i)); }))
        .peer("cereal", cereal<Place>(count, [](int i) { return Place(i, textOf(i)); }));
    Row("xml: read one number")
        .library([xml = zntl::Integer(12345).toXML()] {
            zntl::Integer read;
            read.fromXML(xml.c_str());
            return read.getValue();
        })
        .peer("cereal", [] {
            static std::string const xml = [] {
                std::ostringstream out;
                ::cereal::XMLOutputArchive{out}(12345);
                return out.str();
            }();
            int read = 0;
            std::istringstream in(xml);
            ::cereal::XMLInputArchive{in}(read);
            return read;
        });
    return true;
}();

} // namespace

} // namespace bench
