// A class that lists its members gets its stored forms from Members. Reading the XML form needs a
// parser; xml/values_test.cpp tests it.

#include "streams/znsl_Members.h"

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/blob.h"
#include "support/bytes.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"

#include <gtest/gtest.h>

#include <list>
#include <map>
#include <string>

using namespace test;
using znsl::Members;
using znsl::Serializable;
using zntl::Integer;
using zntl::String;

namespace {

using List = std::list<Serializable*>;
using Table = std::map<std::string, Serializable*>;

constexpr Members::Place here{"tests/Point", 12, "test::Point"};

/// A class with three members. The test chooses which of them have names.
class Point {
public:
    Integer x{1};
    Integer y{-2};
    String label{"a<b"};
    Table names{{"y", &y}, {"label", &label}, {"x", &x}};
    mutable int listings = 0;

    void fillSerializable(List& list, Table& table) const {
        ++listings;
        list.push_back(const_cast<Integer*>(&x));
        list.push_back(const_cast<Integer*>(&y));
        list.push_back(const_cast<String*>(&label));
        table = names;
    }
};

char const* const pointBytes = "01 00 00 00 fe ff ff ff 03 00 00 00 61 3c 62 00";

TEST(Members, AreListedOnceForEachObject) {
    Point const point;
    Members const members(point);
    EXPECT_EQ(point.listings, 1);
    members.getBinLength();
    EXPECT_EQ(point.listings, 1);
}

TEST(MembersBinaryForm, IsOneMemberAfterTheOtherInListOrder) {
    Point const point;
    EXPECT_EQ(Members(point).getBinLength(), 16U);
    Bytes out(17, 0xEE);
    EXPECT_EQ(Members(point).toBin(out.data()), 16U);
    EXPECT_EQ(toHex(out), std::string(pointBytes) + " ee");
}

TEST(MembersBinaryForm, FollowsTheLengthsOfTheMembers) {
    Point point;
    point.label = "";
    EXPECT_EQ(Members(point).getBinLength(), 13U);
    point.label = std::string(100, 'x');
    EXPECT_EQ(Members(point).getBinLength(), 113U);
}

TEST(MembersFromBin, ReadsOneMemberAfterTheOther) {
    Point point;
    point.x = point.y = 99;
    point.label = "before";
    Bytes const data = fromHex(pointBytes + std::string(" 01 02 03"));
    EXPECT_EQ(Members(point).fromBin(data.data(), static_cast<unsigned int>(data.size())), 16U);
    EXPECT_EQ(point.x.getValue(), 1);
    EXPECT_EQ(point.y.getValue(), -2);
    EXPECT_EQ(point.label, "a<b");
}

TEST(MembersFromBin, KeepsTheMembersBeforeTheOneThatThrows) {
    Bytes const data = fromHex(pointBytes);
    for (unsigned int length = 0; length < 8; ++length) {
        Point point;
        point.x = point.y = 99;
        Bytes const exact(data.begin(), data.begin() + length);
        EXPECT_TRUE(test::throws<zntl::Exception>("znsl::Serializable::fromBin() - Failed!", [&] {
            Members(point).fromBin(exact.data(), length);
        })) << length;
        EXPECT_EQ(point.x.getValue(), length < 4 ? 99 : 1);
        EXPECT_EQ(point.y.getValue(), 99);
    }
}

/// Records the length that it receives, and reports that it consumed all of it.
class Greedy : public Integer {
public:
    unsigned int fromBin(unsigned char const* /*data*/, unsigned int length) override {
        given = length;
        return length;
    }
    unsigned int given = 0;
};

TEST(MembersFromBin, PassesEachMemberTheRemainingLength) {
    struct Pair {
        Greedy first;
        Greedy second;
        void fillSerializable(List& list, Table& /*table*/) const {
            list.push_back(const_cast<Greedy*>(&first));
            list.push_back(const_cast<Greedy*>(&second));
        }
    } pair;
    Bytes const data(7);
    EXPECT_EQ(Members(pair).fromBin(data.data(), 7), 7U);
    EXPECT_EQ(pair.first.given, 7U);
    EXPECT_EQ(pair.second.given, 0U);
}

TEST(MembersFromBin, StopAtAMemberThatReportsMoreThanWasLeft) {
    struct Pair {
        Integer first{0};
        test::Blob second{7};
        Integer third{3};

        void fillSerializable(List& list, Table& /*table*/) const {
            auto& self = const_cast<Pair&>(*this);
            list.assign({&self.first, &self.second, &self.third});
        }
    };
    Pair pair;
    pair.second.reported = 5; // only 4 bytes are left
    Bytes const bytes = fromHex("01 00 00 00 02 00 00 00");
    EXPECT_TRUE(test::throws<zntl::Exception>("znsl::Serializable::fromBin() - Failed!",
                                              [&] { Members(pair).fromBin(bytes.data(), 8); }));
    EXPECT_EQ(pair.first.getValue(), 1);
    EXPECT_EQ(pair.third.getValue(), 3);
}

TEST(Members, OfAnEmptyListHaveEmptyForms) {
    struct Nothing {
        void fillSerializable(List& /*list*/, Table& /*table*/) const {}
    } const nothing;
    EXPECT_EQ(Members(nothing).getBinLength(), 0U);
    EXPECT_EQ(Members(nothing).toBin(nullptr), 0U);
    EXPECT_EQ(Members(nothing).fromBin(nullptr, 0), 0U);
    EXPECT_EQ(Members(nothing).toXML("n", here), "<n></n>");
}

TEST(MembersToXml, RendersTheMembersInTheOrderOfTheirNames) {
    Point const point;
    EXPECT_EQ(Members(point).toXML("p", here), "<p><label>a&lt;b</label><x>1</x><y>-2</y></p>");
}

TEST(MembersToXml, UsesTheTablesNames) {
    Point point;
    point.names = {{"B", &point.x}, {"a", &point.y}, {"", &point.x}};
    EXPECT_EQ(Members(point).toXML("p", here), "<p><>1</><B>1</B><a>-2</a></p>");
}

TEST(MembersToXml, LeavesOutNullPointers) {
    Point point;
    point.names = {{"x", &point.x}, {"y", nullptr}, {"z", nullptr}};
    EXPECT_EQ(Members(point).toXML("p", here), "<p><x>1</x></p>");
    EXPECT_EQ(Members(point).toXML("", here), "<><x>1</x></>");
}

TEST(MembersToXml, IsEmptyUnderANullName) { EXPECT_EQ(Members(Point()).toXML(nullptr, here), ""); }

TEST(MembersXml, NeedsAsManyNamesAsListedMembers) {
    Point point;
    Table const fewer{{"x", &point.x}, {"y", &point.y}};
    Table const more{{"a", nullptr}, {"b", nullptr}, {"c", nullptr}, {"d", nullptr}};
    for (Table const& names : {Table(), fewer, more}) {
        point.names = names;
        for (char const* const text : {"p", "", static_cast<char const*>(nullptr)}) {
            EXPECT_TRUE(test::throws<zntl::Exception>(
                "tests/Point (12): test::Point::toXML() - Not implemented",
                [&] { Members(point).toXML(text, here); }));
            EXPECT_TRUE(test::throws<zntl::Exception>(
                "tests/Point (12): test::Point::fromXML() - Not implemented",
                [&] { Members(point).fromXML(text, here); }));
        }
    }
    EXPECT_EQ(point.x.getValue(), 1);
}

// Without a parser, the DOM iterator has no children.
TEST(MembersFromXml, WithoutAParserIsFalseAndLeavesTheMembers) {
    Point point;
    EXPECT_FALSE(Members(point).fromXML("<p><x>7</x></p>", here));
    EXPECT_FALSE(Members(point).fromXML("", here));
    EXPECT_FALSE(Members(point).fromXML(nullptr, here));
    EXPECT_EQ(point.x.getValue(), 1);
}

TEST(Members, LeakNothingOnAllocationFailure) {
    Point point;
    std::string const longName(100, 'n');
    Bytes out(16);
    EXPECT_GT(test::failEachAllocationOf([&] { Members(point).getBinLength(); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { Members(point).toBin(out.data()); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { Members(point).fromBin(out.data(), 16); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { Members(point).toXML(longName.c_str(), here); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { Members(point).fromXML(longName.c_str(), here); }),
              0);
    point.names.clear();
    EXPECT_GT(test::failEachAllocation([&](test::FailingRun& run) {
                  bool refused = false;
                  bool const outOfMemory = run.runsOutOfMemory([&] {
                      try {
                          Members(point).toXML("p", here);
                      } catch (zntl::Exception const&) {
                          refused = true;
                      }
                  });
                  EXPECT_NE(refused, outOfMemory);
              }),
              0);
    EXPECT_EQ(point.x.getValue(), 1);
}

} // namespace
