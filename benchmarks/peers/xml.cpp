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

namespace bench {

namespace {

std::string textOf(int i) { return "Room " + std::to_string(i * 7919 % 100'000) + " & hall"; }

struct ZnNumber : zntl::Integer {
    ZnNumber(int value = 0) : Integer(value) {}
    bool operator<(ZnNumber const& other) const { return getValue() < other.getValue(); }
};

struct ZnPlace : znsl::Struct<ZnPlace> {
    ZnNumber floor;
    zntl::String name;
    ZnPlace() = default;
    explicit ZnPlace(int i) : floor(i), name(textOf(i)) {}
    bool operator<(ZnPlace const& other) const { return floor < other.floor; }
    static constexpr auto schema =
        znsl::schema(2001, "Place", znsl::member(&ZnPlace::floor, "floor"),
                     znsl::member(&ZnPlace::name, "name"));
};

struct Place {
    int floor = 0;
    std::string name;
    Place() = default;
    explicit Place(int i) : floor(i), name(textOf(i)) {}
    bool operator<(Place const& other) const { return floor < other.floor; }
    template <class Archive>
    void serialize(Archive& archive) {
        archive(::cereal::make_nvp("floor", floor), ::cereal::make_nvp("name", name));
    }
};

std::string printed(ZnNumber const& value) { return std::to_string(value.getValue()); }
std::string printed(ZnPlace const& value) { return printed(value.floor) + value.name; }
std::string printed(Place const& value) { return std::to_string(value.floor) + value.name; }

template <class Value>
auto znReading(Value const& value) {
    return [xml = value.toXML()] {
        Value read;
        read.fromXML(xml.c_str());
        return read;
    };
}

template <class Value>
auto cerealReading(Value const& value) {
    std::ostringstream out;
    ::cereal::XMLOutputArchive{out}(value);
    return [xml = out.str()] {
        Value read{};
        std::istringstream in(xml);
        ::cereal::XMLInputArchive{in}(read);
        return read;
    };
}

/// Reads sets of a thousand elements, which `makeZn(i)` and `makePeer(i)` return.
template <class MakeZn, class MakePeer>
void addSetRow(std::string const& elements, MakeZn makeZn, MakePeer makePeer) {
    znsl::Set<decltype(makeZn(0))> zn;
    std::set<decltype(makePeer(0))> peer;
    for (int i = 0; i < 1000; ++i) {
        zn.insert(makeZn(i));
        peer.insert(makePeer(i));
    }
    Row("xml: read 1000 " + elements).library(znReading(zn)).peer("cereal", cerealReading(peer));
}

} // namespace

void addRows() {
    addSetRow(
        "numbers", [](int i) { return ZnNumber(i); }, [](int i) { return i; });
    addSetRow(
        "strings", [](int i) { return zntl::String(textOf(i)); }, textOf);
    addSetRow(
        "records of a number and a string", [](int i) { return ZnPlace(i); },
        [](int i) { return Place(i); });
    Row("xml: read one number")
        .library(znReading(ZnNumber(12345)))
        .peer("cereal", cerealReading(12345));
}

} // namespace bench
