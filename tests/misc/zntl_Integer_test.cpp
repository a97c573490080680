#include "misc/zntl_Integer.h"

#include "misc/zntl_Exception.h"
#include "support/bytes.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>
#include <string>
#include <type_traits>

using namespace test;
using zntl::Integer;

static_assert(std::is_base_of_v<znsl::Serializable, Integer>);
static_assert(std::is_convertible_v<int, Integer>);
static_assert(sizeof(Integer) <= 2 * sizeof(void*), "a table of operations and four bytes");

namespace {

struct Value {
    int value;
    char const* bytes;
    char const* decimal;
};

Value const values[] = {
    {0, "00 00 00 00", "0"},
    {1, "01 00 00 00", "1"},
    {-1, "ff ff ff ff", "-1"},
    {-7, "f9 ff ff ff", "-7"},
    {640, "80 02 00 00", "640"},
    {0x12345678, "78 56 34 12", "305419896"},
    {INT_MAX, "ff ff ff 7f", "2147483647"},
    {INT_MIN, "00 00 00 80", "-2147483648"},
};

/// Overrides operations, so that results show which operations call them.
class Subclass : public Integer {
public:
    using Integer::Integer;
    std::string getTypeName() const override { return "Subclass"; }
    using Integer::toXML;
    std::string toXML(char const* name) const override {
        return std::string("override of ") + name;
    }
};

TEST(Integer, IsOfType504) { EXPECT_EQ(Integer(1).getTypeId(), 504U); }

TEST(Integer, HasATypeNameWithoutPrefix) { EXPECT_EQ(Integer(1).getTypeName(), "Integer"); }

TEST(Integer, HoldsTheValueThatItIsGiven) {
    for (Value const& row : values) {
        EXPECT_EQ(Integer(row.value).getValue(), row.value);
        Integer set(99);
        set.setValue(row.value);
        EXPECT_EQ(set.getValue(), row.value);
        Integer assigned(99);
        assigned = row.value;
        EXPECT_EQ(assigned.getValue(), row.value);
        Integer const copy(assigned);
        EXPECT_EQ(copy.getValue(), row.value);
    }
}

/// Constructs an Integer in memory whose bytes are all A5; returns the bytes of its value.
template <class Construct>
std::string bytesAfter(Construct construct) {
    alignas(Integer) unsigned char memory[sizeof(Integer)];
    unsigned char* place = memory;
    std::memset(place, 0xA5, sizeof memory);
    // Prevents the compiler from removing the writes of A5 and from assuming the value read later.
    asm volatile("" : "+r"(place) : : "memory");
    Integer* const integer = construct(place);
    asm volatile("" : "+r"(place) : : "memory");
    unsigned char value[4];
    integer->toBin(value);
    return toHex(value, sizeof value);
}

TEST(Integer, DefaultConstructionDoesNotTouchTheValue) {
    EXPECT_EQ(bytesAfter([](void* place) { return new (place) Integer; }), "a5 a5 a5 a5");
    EXPECT_EQ(bytesAfter([](void* place) { return new (place) Integer(); }), "a5 a5 a5 a5");
    EXPECT_EQ(bytesAfter([](void* place) { return new (place) Integer{}; }), "a5 a5 a5 a5");
}

TEST(Integer, BinaryFormIsFourBytesInMachineOrder) {
    for (Value const& row : values) {
        Integer const integer(row.value);
        EXPECT_EQ(integer.getBinLength(), 4U);
        Bytes out(6, 0xEE);
        EXPECT_EQ(integer.toBin(out.data() + 1), 4U) << "unaligned";
        EXPECT_EQ(toHex(out), std::string("ee ") + row.bytes + " ee");
    }
}

TEST(Integer, FromBinReadsFourBytesAndIgnoresTheRest) {
    for (Value const& row : values) {
        Bytes const data = fromHex(std::string("ee ") + row.bytes + " 11 22 33 44");
        for (unsigned int const length : {4U, 5U, 8U}) {
            Integer integer(99);
            EXPECT_EQ(integer.fromBin(data.data() + 1, length), 4U) << "unaligned";
            EXPECT_EQ(integer.getValue(), row.value);
        }
    }
}

TEST(Integer, FromBinOfFewerThanFourBytesThrowsAndLeavesTheValue) {
    for (unsigned int length = 0; length < 4; ++length) {
        Bytes const data(
            length, 0x11); // exactly as long as announced: sanitizers detect out-of-bounds reads
        Integer integer(99);
        EXPECT_TRUE(test::throws<zntl::Exception>("znsl::Serializable::fromBin() - Failed!", [&] {
            integer.fromBin(data.data(), length);
        })) << length;
        EXPECT_EQ(integer.getValue(), 99);
    }
}

TEST(Integer, XmlFormIsTheDecimalValueInOneElement) {
    for (Value const& row : values) {
        std::string const decimal = row.decimal;
        EXPECT_EQ(Integer(row.value).toXML(), "<Integer>" + decimal + "</Integer>");
        EXPECT_EQ(Integer(row.value).toXML("w"), "<w>" + decimal + "</w>");
        EXPECT_EQ(Integer(row.value).toXML(""), "<>" + decimal + "</>");
    }
}

TEST(Integer, XmlFormOfANullNameHasAnEmptyName) {
    EXPECT_EQ(Integer(-7).toXML(nullptr), "<>-7</>");
}

TEST(Integer, XmlFormWithoutANameUsesTheOneWithANameAndItsOwnLiteral) {
    EXPECT_EQ(Subclass(1).toXML(), "override of Integer");
}

// Without a parser, the DOM iterator is never at its end, and every value is empty.
TEST(Integer, FromXmlTakesTheEmptyValueOfAnyDocument) {
    for (char const* const xml : {"<Integer>7</Integer>", "", static_cast<char const*>(nullptr)}) {
        Integer integer(99);
        EXPECT_TRUE(integer.fromXML(xml));
        EXPECT_EQ(integer.getValue(), 0);
    }
}

TEST(Integer, KeepsTheValueOnAllocationFailure) {
    std::string const longText(100, 'x');
    long const writing = test::failEachAllocation([&](test::FailingRun& run) {
        Integer const integer(99);
        run.runsOutOfMemory([&] { integer.toXML(longText.c_str()); });
        EXPECT_EQ(integer.getValue(), 99);
    });
    EXPECT_GT(writing, 0);

    long const reading = test::failEachAllocation([&](test::FailingRun& run) {
        Integer integer(99);
        if (run.runsOutOfMemory([&] { integer.fromXML(longText.c_str()); })) {
            EXPECT_EQ(integer.getValue(), 99);
        }
    });
    EXPECT_GT(reading, 0);
}

TEST(Integer, XmlFormAllocatesOnceForTheLongestNumber) {
    Integer const least(INT_MIN);
    auto const render = [&] { least.toXML("an-element-with-a-long-name"); };
    EXPECT_EQ(test::failEachAllocationOf(render), 1);
    EXPECT_EQ(test::largestAllocation(render),
              sizeof "<an-element-with-a-long-name>-2147483648</an-element-with-a-long-name>");
}

TEST(Integer, BinaryFormDoesNotAllocate) {
    long const failures = test::failEachAllocation([](test::FailingRun& run) {
        unsigned char bytes[4];
        Integer integer(7);
        EXPECT_FALSE(run.runsOutOfMemory([&] {
            integer.toBin(bytes);
            integer.fromBin(bytes, sizeof bytes);
        }));
    });
    EXPECT_EQ(failures, 0);
}

} // namespace
