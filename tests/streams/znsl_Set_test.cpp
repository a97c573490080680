// The serializable set. Reading its XML form needs a parser; xml/values_test.cpp tests it.

#include "streams/znsl_Set.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_String.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/bytes.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"
#include "support/temporary_directory.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace test;
using znsl::MemIOStream;
using znvl::Resolution;
using Resolutions = znsl::Set<Resolution>;

static_assert(std::is_convertible_v<Resolutions*, std::set<Resolution>*>, "a public base");
static_assert(std::is_convertible_v<Resolutions*, znsl::Serializable*>, "a public base");
static_assert(std::is_same_v<Resolutions::key_compare, std::less<Resolution>>);
static_assert(sizeof(Resolutions) == sizeof(std::set<Resolution>) + sizeof(void*),
              "no data of its own");

namespace {

char const* const cannotBeRead = "znsl::Serializable::fromBin() - Failed!";

/// An element with an XML form. It counts how often it is read, and throws for some keys.
class Item : public znsl::Serializable {
public:
    static constexpr unsigned int typeId = 300;
    static constexpr int unwritable = 13; // toBin throws
    static constexpr int unreadable = 14; // fromBin throws

    inline static int defaultConstructed = 0;

    Item() { ++defaultConstructed; }
    explicit Item(int number) : key(number) {}

    int key = 0;
    int readings = 0;

    bool operator<(Item const& other) const { return key < other.key; }

    unsigned int getTypeId() const override { return typeId; }
    std::string getTypeName() const override { return "Item"; }
    std::string toXML() const override { return "[" + std::to_string(key) + "]"; }
    std::string toXML(char const* name) const override { return (name ? name : "null") + toXML(); }
    bool fromXML(char const* /*xml*/) override { return false; }
    unsigned int getBinLength() const override { return 1; }
    unsigned int toBin(unsigned char* out) const override {
        if (key == unwritable)
            throw std::runtime_error("unwritable");
        *out = static_cast<unsigned char>(key);
        return 1;
    }
    /// An empty payload leaves the key unchanged.
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        ++readings;
        if (length > 0)
            key = *data;
        if (key == unreadable)
            throw std::runtime_error("unreadable");
        return length;
    }
};

using Items = znsl::Set<Item>;

template <class Set>
std::vector<int> keys(Set const& items) {
    std::vector<int> all;
    for (Item const& item : items)
        all.push_back(item.key);
    return all;
}

Items itemsOf(std::vector<int> const& all) {
    Items items;
    for (int const key : all)
        items.insert(Item(key));
    return items;
}

// The container

TEST(Set, HoldsUniqueElementsInAscendingOrder) {
    Resolutions set;
    set.insert(Resolution(640, 480));
    set.insert(Resolution(320, 240));
    set.insert(Resolution(320, 180));
    EXPECT_FALSE(set.insert(Resolution(320, 240)).second);
    EXPECT_EQ(std::vector<Resolution>(set.begin(), set.end()),
              (std::vector<Resolution>{{320, 180}, {320, 240}, {640, 480}}));
}

TEST(Set, OrdersNegativeWidthsFirst) {
    Resolutions set;
    for (int const width : {0, 1, INT_MAX, -1, INT_MIN})
        set.insert(Resolution(width, 0));
    std::vector<int> widths;
    for (Resolution const& resolution : set)
        widths.push_back(resolution.width.getValue());
    EXPECT_EQ(widths, (std::vector<int>{INT_MIN, -1, 0, 1, INT_MAX}));
}

TEST(Set, KeepsTheFirstOfElementsThatDifferInNameOnly) {
    Resolutions set;
    for (char const* const name : {"first", "second"}) {
        Resolution resolution(320, 240);
        resolution.name = name;
        set.insert(resolution);
    }
    ASSERT_EQ(set.size(), 1U);
    EXPECT_EQ(set.begin()->name, "first");
}

TEST(Set, CopiesAssignsAndMovesItsElements) {
    Items items = itemsOf({2, 1});
    Items const copy(items);
    EXPECT_EQ(keys(copy), (std::vector<int>{1, 2}));
    Items assigned = itemsOf({9});
    assigned = items;
    EXPECT_EQ(keys(assigned), (std::vector<int>{1, 2}));
    Items const moved(std::move(items));
    EXPECT_EQ(keys(moved), (std::vector<int>{1, 2}));
    Items moveAssigned = itemsOf({9});
    moveAssigned = Items(moved);
    EXPECT_EQ(keys(moveAssigned), (std::vector<int>{1, 2}));
    assigned.clear();
    EXPECT_TRUE(assigned.empty());
}

TEST(Set, HasTheTypeIdOfItsElementsPlusTenThousand) {
    EXPECT_EQ(Resolutions().getTypeId(), 10815U);
    EXPECT_EQ(Items().getTypeId(), 10300U);
    EXPECT_EQ(znsl::Set<zntl::String>().getTypeId(), 10501U);
}

TEST(Set, IsNamedAfterItsElements) {
    EXPECT_EQ(Resolutions().getTypeName(), "ResolutionSet");
    EXPECT_EQ(Items().getTypeName(), "ItemSet");
    EXPECT_EQ(znsl::Set<zntl::String>().getTypeName(), "zntl_StringSet");

    zntl::String const name = Resolutions().internalTypeName();
    EXPECT_EQ(name, "ResolutionSet");
}

// Writing XML

TEST(SetToXml, RendersTheElementsOwnXmlInAscendingOrder) {
    Items const items = itemsOf({3, 1, 2});
    EXPECT_EQ(items.toXML(), "<ItemSet>[1][2][3]</ItemSet>");
    EXPECT_EQ(items.toXML("n"), "<n>[1][2][3]</n>");
    EXPECT_EQ(items.toXML(""), "<>[1][2][3]</>");
}

TEST(SetToXml, RendersTheElementsUnderANameAndEndsTheLine) {
    Items const items = itemsOf({3, 1, 2});
    EXPECT_EQ(items.toXML("n", "e"), "<n>e[1]e[2]e[3]</n>\n");
    EXPECT_EQ(items.toXML("", ""), "<>[1][2][3]</>\n");
    EXPECT_EQ(items.toXML("n", nullptr), "<n>null[1]null[2]null[3]</n>\n")
        << "the elements choose the element name";
}

TEST(SetToXml, RendersAnEmptySetAsTwoTags) {
    EXPECT_EQ(Resolutions().toXML(), "<ResolutionSet></ResolutionSet>");
    EXPECT_EQ(Resolutions().toXML("n"), "<n></n>");
    EXPECT_EQ(Resolutions().toXML("n", "e"), "<n></n>\n");
}

TEST(SetToXml, IsEmptyUnderANullName) {
    for (Items const& items : {Items(), itemsOf({1})}) {
        EXPECT_EQ(items.toXML(nullptr), "");
        EXPECT_EQ(items.toXML(nullptr, "e"), "");
        EXPECT_EQ(items.toXML(nullptr, nullptr), "");
    }
}

TEST(SetToXml, RendersStrings) {
    znsl::Set<zntl::String> texts;
    texts.insert("b<");
    texts.insert("");
    EXPECT_EQ(texts.toXML(),
              "<zntl_StringSet><zntl_String/><zntl_String>b&lt;</zntl_String></zntl_StringSet>");
    EXPECT_EQ(texts.toXML("n", "e"), "<n><e/><e>b&lt;</e></n>\n");
}

TEST(SetToXml, WithoutANameUsesTheFormWithANameOfASubclass) {
    class Subclass : public Items {
    public:
        std::string getTypeName() const override { return "Subclass"; }
        using Items::toXML;
        std::string toXML(char const* name) const override {
            return std::string("override of ") + name;
        }
    };
    EXPECT_EQ(Subclass().toXML(), "override of ItemSet");
}

TEST(SetToXml, ThrowsWhatAnElementThrows) {
    Resolutions set;
    set.insert(Resolution(320, 240));
    std::string const fault = "../../../../../libraries/src/video/znvl_Resolution (26): "
                              "znvl::Resolution::toXML() - Not implemented";
    EXPECT_TRUE(test::throws<zntl::Exception>(fault, [&] { set.toXML(); }));
    EXPECT_TRUE(test::throws<zntl::Exception>(fault, [&] { set.toXML("n"); }));
    EXPECT_TRUE(test::throws<zntl::Exception>(fault, [&] { set.toXML("n", "e"); }));
    EXPECT_EQ(set.toXML(nullptr), "") << "toXML of the elements, which throws, is not called";
}

// Reading XML. Without a parser, the DOM iterator has no children.

TEST(SetFromXml, WithoutAParserIsFalseAndLeavesTheSet) {
    for (char const* const xml :
         {"<ItemSet><Item>1</Item></ItemSet>", "", static_cast<char const*>(nullptr)}) {
        Items items = itemsOf({1, 2});
        EXPECT_FALSE(items.fromXML(xml));
        EXPECT_EQ(keys(items), (std::vector<int>{1, 2}));
    }
}

// Binary form

Bytes integerRecord(int value) {
    auto const bits = static_cast<unsigned int>(value);
    Bytes payload;
    for (int shift = 0; shift < 32; shift += 8)
        payload.push_back(static_cast<unsigned char>(bits >> shift));
    return record(504, payload);
}

Bytes itemRecord(int key) { return record(Item::typeId, {static_cast<unsigned char>(key)}); }

/// Returns the binary form of a stream with these records.
template <class... Records>
Bytes streamOf(Records const&... records) {
    Bytes const content = concat(records...);
    Bytes prefix;
    for (int shift = 0; shift < 32; shift += 8)
        prefix.push_back(static_cast<unsigned char>(content.size() >> shift));
    return concat(prefix, content);
}

/// Returns the two records that precede the elements of a set of items: element type and `count`.
Bytes itemsHeader(int count) { return concat(integerRecord(Item::typeId), integerRecord(count)); }

template <class Set>
unsigned int load(Set& set, Bytes const& data) {
    Bytes const exact(data); // of exactly this size, so that sanitizers detect out-of-bounds reads
    return set.fromBin(exact.data(), static_cast<unsigned int>(exact.size()));
}

template <class Set>
std::string binaryForm(Set const& set) {
    Bytes out(set.getBinLength() + 1, 0xEE);
    EXPECT_EQ(set.toBin(out.data()), out.size() - 1);
    EXPECT_EQ(out.back(), 0xEE);
    out.pop_back();
    return toHex(out);
}

TEST(SetBinaryForm, IsAStreamOfElementTypeCountAndElements) {
    Resolutions set;
    set.insert(Resolution(640, 480));
    set.insert(Resolution(320, 240));
    EXPECT_EQ(set.getBinLength(), 60U);
    EXPECT_EQ(binaryForm(set), "38 00 00 00 "
                               "f8 01 00 00 04 00 00 00 2f 03 00 00 "
                               "f8 01 00 00 04 00 00 00 02 00 00 00 "
                               "2f 03 00 00 08 00 00 00 40 01 00 00 f0 00 00 00 "
                               "2f 03 00 00 08 00 00 00 80 02 00 00 e0 01 00 00");
}

TEST(SetBinaryForm, OfAnEmptySetIsTypeAndZero) {
    EXPECT_EQ(Resolutions().getBinLength(), 28U);
    EXPECT_EQ(binaryForm(Resolutions()), "18 00 00 00 "
                                         "f8 01 00 00 04 00 00 00 2f 03 00 00 "
                                         "f8 01 00 00 04 00 00 00 00 00 00 00");
}

TEST(SetBinaryForm, OfElementsThatCannotBeWrittenHasNoLength) {
    EXPECT_EQ(itemsOf({1, Item::unwritable}).getBinLength(), 0U);
}

// Contract: the message names fromBin although toBin failed, because callers may compare it.
TEST(SetBinaryForm, OfElementsThatCannotBeWrittenThrows) {
    Items const items = itemsOf({1, Item::unwritable});
    Bytes out(100, 0xEE);
    EXPECT_TRUE(test::throws<zntl::Exception>(cannotBeRead, [&] { items.toBin(out.data()); }));
    EXPECT_EQ(out, Bytes(100, 0xEE)) << "nothing was written";
}

TEST(SetSerialize, AppendsToWhatTheStreamHolds) {
    MemIOStream stream;
    stream.write(zntl::Integer(7));
    EXPECT_TRUE(itemsOf({2, 1}).serialize(stream));
    EXPECT_EQ(toHex(test::content(stream)),
              toHex(concat(integerRecord(7), itemsHeader(2), itemRecord(1), itemRecord(2))));
}

TEST(SetSerialize, IsFalseWhenAWriteThrows) {
    MemIOStream stream;
    EXPECT_FALSE(itemsOf({1, Item::unwritable, 20}).serialize(stream));
    EXPECT_EQ(toHex(test::content(stream)),
              toHex(concat(itemsHeader(3), itemRecord(1), test::recordHeader(Item::typeId, 1))))
        << "it stops at the element that cannot be written";
}

TEST(SetFromBin, ReplacesTheContentWithWhatToBinWrote) {
    Items const written = itemsOf({1, 2, 3});
    Bytes data(written.getBinLength());
    written.toBin(data.data());
    Items items = itemsOf({8, 9});
    EXPECT_EQ(load(items, data), data.size());
    EXPECT_EQ(keys(items), (std::vector<int>{1, 2, 3}));

    Items none = itemsOf({8, 9});
    EXPECT_EQ(load(none, fromHex(binaryForm(Items()))), 28U);
    EXPECT_TRUE(none.empty());
}

TEST(SetFromBin, OrdersElementsAndDropsDuplicates) {
    Items items;
    Bytes const data =
        streamOf(itemsHeader(4), itemRecord(3), itemRecord(1), itemRecord(3), itemRecord(2));
    EXPECT_EQ(load(items, data), data.size());
    EXPECT_EQ(keys(items), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(items.rbegin()->readings, 1) << "of equal elements, the set keeps the first";
}

TEST(SetFromBin, MakesItsScratchElementOnlyForACountAboveZero) {
    for (int const count : {-1, 0, 1, 2}) {
        MemIOStream record;
        record << zntl::Integer(Item::typeId) << zntl::Integer(count);
        for (int i = 0; i < count; ++i)
            record << Item(i);
        Bytes form(record.getBinLength());
        record.toBin(form.data());
        Items items;
        int const before = Item::defaultConstructed;
        items.fromBin(form.data(), static_cast<unsigned int>(form.size()));
        // Another element is always constructed, to ask for its type id.
        EXPECT_EQ(Item::defaultConstructed - before, count > 0 ? 2 : 1) << count;
    }
}

TEST(SetFromBin, ReadsEveryElementIntoTheSameScratchElement) {
    Items items;
    Bytes const withoutPayload = record(Item::typeId, {});
    load(items,
         streamOf(itemsHeader(4), itemRecord(5), withoutPayload, itemRecord(6), itemRecord(7)));
    ASSERT_EQ(keys(items), (std::vector<int>{5, 6, 7}));
    std::vector<int> readings;
    for (Item const& item : items)
        readings.push_back(item.readings);
    EXPECT_EQ(readings, (std::vector<int>{1, 3, 4}));
}

TEST(SetFromBin, IgnoresBytesAfterTheStream) {
    Items items;
    Bytes const data = streamOf(itemsHeader(1), itemRecord(1));
    EXPECT_EQ(load(items, concat(data, fromHex("01 02 03"))), data.size());
    EXPECT_EQ(keys(items), (std::vector<int>{1}));
}

TEST(SetFromBin, IgnoresRecordsAfterTheElements) {
    Items items;
    Bytes const data = streamOf(itemsHeader(1), itemRecord(1), itemRecord(2), integerRecord(7));
    EXPECT_EQ(load(items, data), data.size()) << "the records after the elements are consumed, too";
    EXPECT_EQ(keys(items), (std::vector<int>{1}));
}

TEST(SetFromBin, ReadsNoElementsForACountOfZeroOrLess) {
    for (int const count : {0, -1, INT_MIN}) {
        Items items = itemsOf({8, 9});
        Bytes const data = streamOf(itemsHeader(count), itemRecord(1));
        EXPECT_EQ(load(items, data), data.size());
        EXPECT_TRUE(items.empty()) << count;
    }
}

TEST(SetFromBin, OfAnotherElementTypeIsFalseAndEmptiesTheSet) {
    for (int const type : {0, 299, 815, -300, 300 + 65536}) {
        Items items = itemsOf({8, 9});
        EXPECT_EQ(load(items, streamOf(integerRecord(type), integerRecord(1), itemRecord(1))), 0U);
        EXPECT_TRUE(items.empty()) << type;
    }
    Items items = itemsOf({8, 9});
    EXPECT_EQ(load(items, fromHex(binaryForm(Resolutions()))), 0U);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(load(items, streamOf(integerRecord(7))), 0U) << "a missing count is no error then";
}

struct Unreadable {
    char const* what;
    Bytes data;
    std::vector<int> readBefore;
};

TEST(SetFromBin, ThatCannotBeReadThrowsAndKeepsTheElementsBeforeTheFailure) {
    Bytes const shortInteger = record(504, {1, 2, 3});
    Unreadable const rows[] = {
        {"no data", {}, {}},
        {"no whole length prefix", fromHex("00 00 00"), {}},
        {"a length prefix beyond the data", fromHex("01 00 00 00"), {}},
        {"the largest length prefix", fromHex("ff ff ff ff 00 00 00 00"), {}},
        {"a prefix that is one too large",
         concat(fromHex("0d 00 00 00"), integerRecord(Item::typeId)),
         {}},
        {"an empty stream", streamOf(Bytes()), {}},
        {"no count", streamOf(integerRecord(Item::typeId)), {}},
        {"an element for the type", streamOf(itemRecord(1), integerRecord(0)), {}},
        {"an element for the count", streamOf(integerRecord(Item::typeId), itemRecord(1)), {}},
        {"a type that is too short", streamOf(shortInteger, integerRecord(0)), {}},
        {"a count that is too short", streamOf(integerRecord(Item::typeId), shortInteger), {}},
        {"a marker for the type", streamOf(test::endOfFileRecord()), {}},
        {"one element too few", streamOf(itemsHeader(3), itemRecord(2), itemRecord(1)), {1, 2}},
        {"no elements of very many", streamOf(itemsHeader(INT_MAX)), {}},
        {"a marker between the elements",
         streamOf(itemsHeader(2), itemRecord(1), test::endOfFileRecord(), itemRecord(2)),
         {1}},
        {"an element of another type",
         streamOf(itemsHeader(2), itemRecord(1), integerRecord(2)),
         {1}},
        {"an element that throws",
         streamOf(itemsHeader(3), itemRecord(1), itemRecord(Item::unreadable), itemRecord(2)),
         {1}},
    };
    for (Unreadable const& row : rows) {
        Items items = itemsOf({8, 9});
        EXPECT_TRUE(test::throws<zntl::Exception>(cannotBeRead, [&] { load(items, row.data); }))
            << row.what;
        EXPECT_EQ(keys(items), row.readBefore) << row.what;
    }
}

TEST(SetFromBin, OfAShortResolutionThrows) {
    Resolutions set;
    EXPECT_TRUE(test::throws<zntl::Exception>(cannotBeRead, [&] {
        load(set, streamOf(integerRecord(815), integerRecord(1), record(815, {1, 2, 3, 4})));
    }));
    EXPECT_TRUE(set.empty());
}

TEST(SetFromBin, ThatIsNotWholeRecordsThrowsAsTheStreamDoesAndLeavesTheSet) {
    std::string const fault = "../../../../../libraries/src/streams/znsl_MemIOStream (643): "
                              "znsl::MemIOStream::setBuffer() - resulting memory is not valid.";
    for (char const* const data :
         {"01 00 00 00 05", "09 00 00 00 01 02 03 04 05 06 07 08 09",
          "08 00 00 00 f8 01 00 00 01 00 00 00", "08 00 00 00 f8 01 00 00 ff ff ff ff"}) {
        Items items = itemsOf({8, 9});
        EXPECT_TRUE(test::throws<zntl::Exception>(fault, [&] { load(items, fromHex(data)); }))
            << data;
        EXPECT_EQ(keys(items), (std::vector<int>{8, 9}));
    }
}

TEST(SetFromBin, AllocatesNoMoreThanTheDataJustifies) {
    Items items;
    Bytes const hostile[] = {fromHex("ff ff ff ff 00 00 00 00"), streamOf(itemsHeader(INT_MAX))};
    for (Bytes const& data : hostile) {
        EXPECT_LT(test::largestAllocation([&] {
                      EXPECT_THROW(items.fromBin(data.data(), static_cast<unsigned>(data.size())),
                                   zntl::Exception);
                  }),
                  1000U);
    }
}

// As an object in streams and files

TEST(Set, TravelsThroughAStream) {
    MemIOStream stream;
    stream.write(itemsOf({1, 2}));
    EXPECT_EQ(stream.getNextType(), 10300U);
    Items items;
    stream >> items;
    EXPECT_EQ(keys(items), (std::vector<int>{1, 2}));
    EXPECT_TRUE(stream.isEmpty());
}

TEST(Set, HasATypedFile) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "set";
    ASSERT_TRUE(itemsOf({1, 2}).toFile(path.c_str()));
    EXPECT_EQ(toHex(test::readFile(path)),
              toHex(concat(fromHex("3c 28 2e 00 00 00"),
                           streamOf(itemsHeader(2), itemRecord(1), itemRecord(2)))));
    Items items;
    EXPECT_TRUE(items.fromFile(path.c_str()));
    EXPECT_EQ(keys(items), (std::vector<int>{1, 2}));
    EXPECT_FALSE(Resolutions().fromFile(path.c_str()));
}

TEST(Set, OfElementsThatCannotBeWrittenHasNoFile) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "set";
    EXPECT_FALSE(itemsOf({Item::unwritable}).toFile(path.c_str()));
    EXPECT_EQ(test::readFile(path).size(), 0U);
}

// Allocation failure

std::string const longName(100, 'n');

TEST(SetAllocationFailure, ConstOperationsLeakNothing) {
    Items const items = itemsOf({1, 2, 3});
    Bytes out(items.getBinLength());

    EXPECT_GT(test::failEachAllocationOf([&] { items.toXML(longName.c_str()); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { items.toXML(longName.c_str(), "e"); }), 0);
    EXPECT_GT(test::failEachAllocation([&](test::FailingRun& run) {
                  unsigned int length = 99;
                  EXPECT_FALSE(run.runsOutOfMemory([&] { length = items.getBinLength(); }));
                  EXPECT_EQ(length, out.size());
              }),
              0);
    EXPECT_GT(test::failEachAllocation([&](test::FailingRun& run) {
                  bool failed = false;
                  EXPECT_FALSE(run.runsOutOfMemory([&] {
                      try {
                          items.toBin(out.data());
                      } catch (zntl::Exception const&) {
                          failed = true;
                      }
                  }));
                  EXPECT_EQ(failed, run.happened());
              }),
              0);
}

TEST(SetAllocationFailure, FromBinLeavesTheSetOrWhatWasReadAndLeaksNothing) {
    std::vector<int> const before{7, 8};
    Bytes const data = streamOf(itemsHeader(3), itemRecord(1), itemRecord(2), itemRecord(3));
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        Items items = itemsOf(before);
        bool failed = false;
        bool const outOfMemory = run.runsOutOfMemory([&] {
            try {
                items.fromBin(data.data(), static_cast<unsigned int>(data.size()));
            } catch (zntl::Exception const&) {
                failed = true;
            }
        });
        EXPECT_EQ(failed || outOfMemory, run.happened());
        std::vector<int> const read{1, 2, 3};
        if (outOfMemory) {
            EXPECT_EQ(keys(items), before) << "std::bad_alloc is thrown before the set is cleared";
        } else {
            auto const size = static_cast<std::ptrdiff_t>(items.size());
            EXPECT_EQ(keys(items), std::vector<int>(read.begin(), read.begin() + size));
            EXPECT_EQ(items.size() == 3, !failed);
        }
    });
    EXPECT_GE(failures, 4) << "fromBin allocates the buffer and each element";
}

TEST(SetAllocationFailure, FromXmlLeavesTheSet) {
    Items items = itemsOf({7, 8});
    EXPECT_GT(test::failEachAllocationOf([&] { items.fromXML(longName.c_str()); }), 0);
    EXPECT_EQ(keys(items), (std::vector<int>{7, 8}));
}

} // namespace
