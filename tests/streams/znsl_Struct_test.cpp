// A class derived from Struct gets all operations of the contract from the description of its
// members. Reading the XML form needs a parser; xml/values_test.cpp tests it. tests/mistakes tests
// descriptions that must not compile.

#include "streams/znsl_Struct.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Set.h"
#include "support/bytes.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"
#include "support/temporary_directory.h"
#include "support/virtual_slot.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace test;
using znsl::member;
using znsl::Serializable;
using znsl::xmlMember;
using zntl::Integer;
using zntl::String;

namespace {

class Place : public znsl::Struct<Place> {
public:
    Integer floor = 0;
    String name;

    Place() = default;
    Place(int number, char const* text) : floor(number), name(text) {}

    bool operator<(Place const& other) const { return name < other.name; }

    static constexpr auto schema =
        znsl::schema(2001, "Place", member(&Place::floor, "floor"), member(&Place::name, "name"));
};

/// Has members of the library's classes, another struct, and sets of both.
class Site : public znsl::Struct<Site> {
public:
    Place gate;
    znvl::Resolution size;
    znsl::Set<znvl::Resolution> sizes;
    znsl::Set<Place> places;
    znsl::MemIOStream queue;
    String note;

    static constexpr auto schema =
        znsl::schema(2002, "Site", member(&Site::gate), member(&Site::size), member(&Site::sizes),
                     member(&Site::places), member(&Site::queue), member(&Site::note));
};

/// Its members have no names, so it has no XML form.
class Pair : public znsl::Struct<Pair> {
public:
    Integer first = 98;
    Integer second = 99;

    static constexpr auto schema =
        znsl::schema(2003, "Pair", member(&Pair::first), member(&Pair::second));
};

Bytes bytesOf(Serializable const& object) {
    Bytes bytes(object.getBinLength());
    EXPECT_EQ(object.toBin(bytes.data()), bytes.size());
    return bytes;
}

/// Reads the bytes from a block of exactly their size, so sanitizers detect out-of-bounds reads.
unsigned int read(Serializable& object, Bytes const& bytes) {
    std::unique_ptr<unsigned char[]> const block(new unsigned char[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), block.get());
    return object.fromBin(block.get(), static_cast<unsigned int>(bytes.size()));
}

Site sampleSite() {
    Site site;
    site.gate = {1, "gate"};
    site.size = {640, 480};
    site.sizes = {{320, 240}, {640, 480}};
    site.places = {{2, "hall"}, {3, "roof"}};
    site.queue << Place(4, "yard") << Integer(5);
    site.note = "a note";
    return site;
}

// Identity

TEST(Struct, HasTheTypeIdAndTheNameOfItsSchema) {
    Place const place;
    EXPECT_EQ(place.getTypeId(), 2001U);
    EXPECT_EQ(place.getTypeName(), "Place");
}

TEST(Struct, AddsNothingToItsMembers) {
    struct Plain : Serializable {
        Integer floor;
        String name;
    };
    EXPECT_EQ(sizeof(Place), sizeof(Plain));
}

TEST(Struct, KeepsTheSlotsOfTheContract) {
    struct Subclass : Place {
        virtual void next() {}
    };
    EXPECT_EQ(test::virtualSlot(&Place::getTypeId), 2);
    EXPECT_EQ(test::virtualSlot(&Place::getTypeName), 3);
    EXPECT_EQ(test::virtualSlot(static_cast<std::string (Place::*)() const>(&Place::toXML)), 4);
    EXPECT_EQ(
        test::virtualSlot(static_cast<std::string (Place::*)(char const*) const>(&Place::toXML)),
        5);
    EXPECT_EQ(test::virtualSlot(&Place::fromXML), 6);
    EXPECT_EQ(test::virtualSlot(&Place::getBinLength), 7);
    EXPECT_EQ(test::virtualSlot(&Place::toBin), 8);
    EXPECT_EQ(test::virtualSlot(&Place::fromBin), 9);
    EXPECT_EQ(test::virtualSlot(&Place::toFile), 10);
    EXPECT_EQ(test::virtualSlot(&Place::fromFile), 11);
    EXPECT_EQ(test::virtualSlot(&Subclass::next), 12);
}

// Values

TEST(StructCopies, HaveTheirOwnMembers) {
    Place const original(1, "gate");
    Place copy = original;
    copy.floor = 2;
    copy.name = "hall";
    EXPECT_EQ(original.toXML(), "<Place><floor>1</floor><name>gate</name></Place>");
    EXPECT_EQ(copy.toXML(), "<Place><floor>2</floor><name>hall</name></Place>");
    EXPECT_EQ(toHex(bytesOf(copy)), "02 00 00 00 04 00 00 00 68 61 6c 6c 00");
}

TEST(StructCopies, OutliveTheOriginal) {
    std::vector<Place> places;
    for (int i = 0; i < 20; ++i) // moves them around
        places.emplace_back(i, "a name that is too long to be kept inside a string object");
    places.erase(places.begin(), places.begin() + 19);
    EXPECT_EQ(places[0].floor.getValue(), 19);
    EXPECT_EQ(bytesOf(places[0])[0], 19);
}

TEST(Struct, IsMovedAndAssignedAsItsMembersAre) {
    static_assert(std::is_nothrow_move_constructible_v<Place>);
    Place place(1, "a name that is too long to be kept inside a string object");
    char const* const characters = place.name.c_str();
    Place const moved = std::move(place);
    EXPECT_EQ(moved.name.c_str(), characters);
    Place assigned(7, "before");
    assigned = moved;
    EXPECT_EQ(assigned.toXML(), moved.toXML());
    assigned = Place(8, "after");
    EXPECT_EQ(assigned.toXML(), "<Place><floor>8</floor><name>after</name></Place>");
}

// Binary form

TEST(StructBinaryForm, IsOneMemberAfterTheOtherInTheOrderOfTheSchema) {
    Place const place(-2, "a<b");
    EXPECT_EQ(place.getBinLength(), 12U);
    Bytes out(13, 0xEE);
    EXPECT_EQ(place.toBin(out.data()), 12U);
    EXPECT_EQ(toHex(out), "fe ff ff ff 03 00 00 00 61 3c 62 00 ee");
}

TEST(StructFromBin, ReadsWhatToBinWroteAndIgnoresTheRest) {
    Place place(9, "before");
    EXPECT_EQ(read(place, fromHex("fe ff ff ff 03 00 00 00 61 3c 62 00 01 02")), 12U);
    EXPECT_EQ(place.floor.getValue(), -2);
    EXPECT_EQ(place.name, "a<b");
}

TEST(StructFromBin, KeepsTheMembersBeforeTheOneThatThrows) {
    Bytes const data = fromHex("01 00 00 00 02 00 00 00");
    for (unsigned int length = 0; length < 8; ++length) {
        Pair pair;
        EXPECT_TRUE(test::throws<zntl::Exception>("znsl::Serializable::fromBin() - Failed!", [&] {
            read(pair, Bytes(data.begin(), data.begin() + length));
        }));
        EXPECT_EQ(pair.first.getValue(), length < 4 ? 98 : 1);
        EXPECT_EQ(pair.second.getValue(), 99);
    }
}

/// Reports that it consumed one byte more than it received.
class Greedy : public Integer {
public:
    unsigned int fromBin(unsigned char const* /*data*/, unsigned int length) override {
        return length + 1;
    }
};

class TwoGreedy : public znsl::Struct<TwoGreedy> {
public:
    Greedy first;
    Pair second;

    static constexpr auto schema =
        znsl::schema(2004, "TwoGreedy", member(&TwoGreedy::first), member(&TwoGreedy::second));
};

TEST(StructFromBin, StopsAtAMemberThatConsumesMoreThanThereIs) {
    TwoGreedy object;
    EXPECT_TRUE(test::throws<zntl::Exception>("znsl::Serializable::fromBin() - Failed!",
                                              [&] { read(object, Bytes(20)); }));
    EXPECT_EQ(object.second.first.getValue(), 98);
}

/// Two members of this class have lengths whose sum does not fit 32 bits.
class Huge : public Integer {
public:
    unsigned int getBinLength() const override { return 0x80000000U; }
};

class TwoHuge : public znsl::Struct<TwoHuge> {
public:
    Huge first;
    Huge second;

    static constexpr auto schema =
        znsl::schema(2005, "TwoHuge", member(&TwoHuge::first), member(&TwoHuge::second));
};

TEST(StructGetBinLength, RefusesMoreThan32Bits) {
    EXPECT_THROW(TwoHuge().getBinLength(), std::length_error);
}

TEST(Struct, NeedsNoAllocationForTheBinaryForm) {
    Place place(1, "gate");
    Bytes bytes = bytesOf(place);
    EXPECT_EQ(test::largestAllocation([&] {
                  place.getBinLength();
                  place.toBin(bytes.data());
                  place.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size()));
              }),
              0U);
}

// The same forms as Members

/// Lists the members of a site for Members.
struct SiteListing {
    Site& site;
    void fillSerializable(std::list<Serializable*>& list,
                          std::map<std::string, Serializable*>& /*table*/) const {
        list = {&site.gate, &site.size, &site.sizes, &site.places, &site.queue, &site.note};
    }
};

struct PlaceListing {
    Place& place;
    void fillSerializable(std::list<Serializable*>& list,
                          std::map<std::string, Serializable*>& table) const {
        list = {&place.floor, &place.name};
        table = {{"name", &place.name}, {"floor", &place.floor}};
    }
};

/// Random values. Strings contain no NUL, because reading stops at the first one.
class RandomValues {
public:
    int number() { return std::uniform_int_distribution<int>(INT_MIN, INT_MAX)(generator_); }
    std::string text() {
        std::string characters(std::uniform_int_distribution<std::size_t>(0, 40)(generator_), ' ');
        for (char& c : characters)
            c = static_cast<char>(std::uniform_int_distribution<int>(1, 255)(generator_));
        return characters;
    }
    Place place() { return {number(), text().c_str()}; }
    Site site() {
        Site site;
        site.gate = place();
        site.size = {number(), number()};
        for (int i = number() & 3; i > 0; --i) {
            site.sizes.insert({number(), number()});
            site.places.insert(place());
            site.queue << place() << Integer(number());
        }
        site.note = text();
        return site;
    }

private:
    std::mt19937 generator_{5};
};

TEST(StructBinaryForm, IsThatOfMembersForAnyValues) {
    RandomValues random;
    for (int i = 0; i < 200; ++i) {
        Site site = random.site();
        znsl::Members const members(SiteListing{site});
        Bytes expected(members.getBinLength());
        members.toBin(expected.data());
        Bytes const bytes = bytesOf(site);
        ASSERT_EQ(toHex(bytes), toHex(expected));

        Site again;
        ASSERT_EQ(read(again, bytes), bytes.size());
        ASSERT_EQ(toHex(bytesOf(again)), toHex(bytes));
    }
}

TEST(StructToXml, IsThatOfMembersForAnyValues) {
    RandomValues random;
    for (int i = 0; i < 200; ++i) {
        Place place = random.place();
        EXPECT_EQ(place.toXML("p"),
                  znsl::Members(PlaceListing{place}).toXML("p", {"unused", 0, "unused"}));
    }
}

// Any bytes

TEST(StructFromBin, StaysWithinAnyBytes) {
    Bytes const whole = bytesOf(sampleSite());
    auto const tryToRead = [](Bytes const& bytes) {
        Site site;
        try {
            EXPECT_LE(read(site, bytes), bytes.size());
        } catch (zntl::Exception const&) {
        }
    };
    for (std::size_t size = 0; size < whole.size(); ++size)
        tryToRead(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (int const change : {0x01, 0x80, 0xFF}) {
            Bytes damaged = whole;
            damaged[at] = static_cast<unsigned char>(damaged[at] ^ change);
            tryToRead(damaged);
        }
    }
}

// XML form

/// Lists its members in another order than that of their names. Two members have only one form.
class Mixed : public znsl::Struct<Mixed> {
public:
    Integer z = 1;
    Integer binaryOnly = 2;
    Integer xmlOnly = 3;
    Integer a = 4;

    static constexpr auto schema =
        znsl::schema(2006, "Mixed", member(&Mixed::z, "z"), member(&Mixed::binaryOnly),
                     xmlMember(&Mixed::xmlOnly, "only"), member(&Mixed::a, "a"));
};

TEST(StructForms, HoldTheMembersThatAreListedForThem) {
    Mixed const mixed;
    EXPECT_EQ(toHex(bytesOf(mixed)), "01 00 00 00 02 00 00 00 04 00 00 00");
    EXPECT_EQ(mixed.toXML(), "<Mixed><a>4</a><only>3</only><z>1</z></Mixed>");
}

TEST(StructToXml, UsesTheNameOfTheElement) {
    Place const place(1, "a<b");
    EXPECT_EQ(place.toXML("p"), "<p><floor>1</floor><name>a&lt;b</name></p>");
    EXPECT_EQ(place.toXML(nullptr), "");
}

TEST(StructXml, IsNotImplementedWithoutNames) {
    Pair pair;
    for (char const* const text : {"p", "", static_cast<char const*>(nullptr)}) {
        EXPECT_TRUE(test::throws<zntl::Exception>("Pair::toXML() - Not implemented",
                                                  [&] { pair.toXML(text); }));
        EXPECT_TRUE(test::throws<zntl::Exception>("Pair::fromXML() - Not implemented",
                                                  [&] { pair.fromXML(text); }));
    }
    EXPECT_TRUE(
        test::throws<zntl::Exception>("Pair::toXML() - Not implemented", [&] { pair.toXML(); }));
}

// Without a parser, the DOM iterator has no children.
TEST(StructFromXml, WithoutAParserIsFalseAndLeavesTheMembers) {
    Place place(1, "gate");
    EXPECT_FALSE(place.fromXML("<Place><floor>7</floor></Place>"));
    EXPECT_FALSE(place.fromXML(nullptr));
    EXPECT_EQ(place.floor.getValue(), 1);
}

class Nothing : public znsl::Struct<Nothing> {
public:
    static constexpr auto schema = znsl::schema(2007, "Nothing");
};

TEST(StructWithoutMembers, HasEmptyForms) {
    Nothing nothing;
    EXPECT_EQ(nothing.getBinLength(), 0U);
    EXPECT_EQ(nothing.toBin(nullptr), 0U);
    EXPECT_EQ(nothing.fromBin(nullptr, 0), 0U);
    EXPECT_EQ(nothing.toXML(), "<Nothing></Nothing>");
}

// Compile-time checks

TEST(StructNames, AreThoseOfXmlElements) {
    for (char const* const name : {"a", "_", "A-1.b_c",
                                   "Stra\xC3\x9F"
                                   "e"})
        EXPECT_TRUE(znsl::structs::isXmlName(name)) << name;
    for (char const* const name : {"", "1st", "-a", ".a", "a b", "a<b", "a:b", "a/", "a\n"})
        EXPECT_FALSE(znsl::structs::isXmlName(name)) << name;
}

TEST(StructTypeIds, OfTheLibraryAreTaken) {
    unsigned int const ids[] = {znsl::EndOfFile().getTypeId(), znsl::MemIOStream().getTypeId(),
                                String().getTypeId(), Integer().getTypeId(),
                                znvl::Resolution().getTypeId()};
    for (unsigned int const id : ids) {
        EXPECT_TRUE(znsl::structs::isTaken(id)) << id;
        EXPECT_TRUE(znsl::structs::isTaken(10000 + id)) << id;
        EXPECT_FALSE(znsl::structs::isTaken(id + 1)) << id;
    }
}

// Subclasses

/// Adds a private member to those of its base.
class Tower : public znsl::Struct<Tower, Place> {
public:
    using Struct::Struct;

    int getHeight() const { return height_.getValue(); }

private:
    Integer height_ = 30;

public:
    static constexpr auto schema =
        znsl::schema(2008, "Tower", member(&Tower::floor, "floor"), member(&Tower::name, "name"),
                     member(&Tower::height_, "height"));
};

TEST(StructSubclass, ExtendsTheFormsOfAnotherStruct) {
    Tower const tower(1, "east");
    Place const& place = tower;
    EXPECT_EQ(place.getTypeId(), 2008U);
    EXPECT_EQ(place.getTypeName(), "Tower");
    EXPECT_EQ(place.toXML(), "<Tower><floor>1</floor><height>30</height><name>east</name></Tower>");
    EXPECT_EQ(toHex(bytesOf(place)), "01 00 00 00 04 00 00 00 65 61 73 74 00 1e 00 00 00");

    Tower again;
    read(again, fromHex("02 00 00 00 04 00 00 00 77 65 73 74 00 1f 00 00 00"));
    EXPECT_EQ(again.name, "west");
    EXPECT_EQ(again.getHeight(), 31);
}

class Remark : public Place {
public:
    using Place::toXML;
    std::string toXML(char const* element) const override {
        return "[" + Place::toXML(element) + "]";
    }
};

TEST(StructSubclass, OverridesOperationsAsOfAnyClass) {
    Remark const remark;
    EXPECT_EQ(remark.toXML(), "[<Place><floor>0</floor><name/></Place>]");
    EXPECT_EQ(remark.getTypeId(), 2001U);
}

// Streams, files, sets

TEST(Struct, TravelsThroughStreams) {
    znsl::MemIOStream stream;
    stream << sampleSite() << Place(7, "after");
    Site site;
    Place place;
    stream >> site >> place;
    EXPECT_EQ(toHex(bytesOf(site)), toHex(bytesOf(sampleSite())));
    EXPECT_EQ(place.name, "after");

    Pair pair;
    stream << Place();
    EXPECT_THROW(stream >> pair, zntl::Exception);
}

TEST(Struct, TravelsThroughFiles) {
    test::TemporaryDirectory const folder;
    std::string const path = folder / "place";
    ASSERT_TRUE(Place(1, "gate").toFile(path.c_str()));
    EXPECT_EQ(toHex(test::readFile(path)),
              "d1 07 0d 00 00 00 01 00 00 00 04 00 00 00 67 61 74 65 00");
    Place place;
    EXPECT_TRUE(place.fromFile(path.c_str()));
    EXPECT_EQ(place.name, "gate");
    EXPECT_FALSE(Pair().fromFile(path.c_str()));
}

TEST(Struct, LivesInSets) {
    znsl::Set<Place> places{{2, "hall"}, {1, "gate"}, {3, "hall"}};
    EXPECT_EQ(places.getTypeId(), 12001U);
    EXPECT_EQ(places.toXML(), "<PlaceSet><Place><floor>1</floor><name>gate</name></Place>"
                              "<Place><floor>2</floor><name>hall</name></Place></PlaceSet>");
    znsl::Set<Place> again;
    EXPECT_EQ(read(again, bytesOf(places)), places.getBinLength());
    EXPECT_EQ(again.toXML(), places.toXML());
}

TEST(Struct, LeaksNothingOnAllocationFailure) {
    Place place(1, "gate");
    std::string const longName(100, 'n');
    EXPECT_GT(test::failEachAllocationOf([&] { place.toXML(longName.c_str()); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { place.fromXML(longName.c_str()); }), 0);
    EXPECT_EQ(place.floor.getValue(), 1);
}

} // namespace
