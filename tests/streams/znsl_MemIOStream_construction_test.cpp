// The memory stream as a class: its slots, construction, copying and assignment.

#include "misc/zntl_Exception.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/virtual_slot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using namespace test;
using znsl::MemIOStream;

// Layout and slots

TEST(MemIOStream, NamesItself) {
    MemIOStream const stream;
    EXPECT_EQ(stream.getTypeId(), 6U);
    EXPECT_EQ(stream.getTypeName(), "znsl_MemIOStream");
}

TEST(MemIOStream, IsFirstAValueThenASourceThenASink) {
    static_assert(std::is_base_of_v<znsl::IOStream, MemIOStream>);
    MemIOStream stream;
    auto const* const begin = reinterpret_cast<char const*>(&stream);
    auto const offset = [&](auto* base) { return reinterpret_cast<char const*>(base) - begin; };
    constexpr auto table = static_cast<std::ptrdiff_t>(sizeof(void*));
    EXPECT_EQ(offset(static_cast<znsl::Serializable*>(&stream)), 0);
    EXPECT_EQ(offset(static_cast<znsl::IStream*>(&stream)), table);
    EXPECT_EQ(offset(static_cast<znsl::OStream*>(&stream)), 2 * table);
}

TEST(MemIOStream, KeepsItsSlotOrder) {
    using PeekOne = unsigned int (MemIOStream::*)(znsl::Serializable&) const;
    using PeekMany = unsigned int (MemIOStream::*)(unsigned int, znsl::Serializable*, ...) const;
    using PlainXml = std::string (MemIOStream::*)() const;
    using NamedXml = std::string (MemIOStream::*)(char const*) const;
    using WriteObject = znsl::OStream& (MemIOStream::*)(znsl::Serializable const&);
    using WriteRecord = znsl::OStream& (MemIOStream::*)(znsl::IStream&);
    std::vector<std::ptrdiff_t> const slots = {
        virtualSlot(&MemIOStream::getTypeId),
        virtualSlot(&MemIOStream::getTypeName),
        virtualSlot(static_cast<PlainXml>(&MemIOStream::toXML)),
        virtualSlot(static_cast<NamedXml>(&MemIOStream::toXML)),
        virtualSlot(&MemIOStream::fromXML),
        virtualSlot(&MemIOStream::getBinLength),
        virtualSlot(&MemIOStream::toBin),
        virtualSlot(&MemIOStream::fromBin),
        virtualSlot(&MemIOStream::toFile),
        virtualSlot(&MemIOStream::fromFile),
        virtualSlot(&MemIOStream::flush),
        virtualSlot(&MemIOStream::close),
        virtualSlot(&MemIOStream::write),
        virtualSlot(static_cast<WriteObject>(&MemIOStream::operator<<)),
        virtualSlot(&MemIOStream::getNextType),
        virtualSlot(&MemIOStream::checkTypes),
        virtualSlot(&MemIOStream::isEmpty),
        virtualSlot(&MemIOStream::read),
        virtualSlot(static_cast<PeekOne>(&MemIOStream::peek)),
        virtualSlot(static_cast<PeekMany>(&MemIOStream::peek)),
        virtualSlot(&MemIOStream::count),
        virtualSlot(&MemIOStream::skip),
        virtualSlot(&MemIOStream::operator>>),
        virtualSlot(&MemIOStream::readNextObject),
        virtualSlot(static_cast<WriteRecord>(&MemIOStream::operator<<)),
    };
    for (std::size_t i = 0; i < slots.size(); ++i)
        EXPECT_EQ(slots[i], static_cast<std::ptrdiff_t>(i) + 2) << "the " << i << "th operation";
}

// Construction

TEST(MemIOStreamConstruction, WithoutACapacityMakesNoBuffer) {
    long const before = test::liveBlocks();
    MemIOStream byDefault;
    MemIOStream byNumber(0);
    EXPECT_EQ(test::liveBlocks(), before);
    expectWithoutBuffer(byDefault);
    expectWithoutBuffer(byNumber);
}

TEST(MemIOStreamConstruction, MakesABufferOfExactlyTheCapacity) {
    for (unsigned int const capacity : {1U, 7U, 8U, 100U, 65537U}) {
        MemIOStream stream(capacity);
        EXPECT_EQ(stream.capacity(), capacity);
        EXPECT_EQ(stream.size(), 0U);
        EXPECT_TRUE(stream.isEmpty());
        EXPECT_EQ(readPosition(stream), nullptr);
        EXPECT_NE(writePosition(stream), nullptr);
    }
}

TEST(MemIOStreamConstruction, FromANumberIsNotAConversion) {
    static_assert(!std::is_convertible_v<unsigned int, MemIOStream>);
}

TEST(MemIOStreamConstruction, CopiesRecordsIntoABufferOfTheirSize) {
    Bytes bytes = concat(recordOfSize(504, 12), recordOfSize(501, 20));
    MemIOStream const stream(bytes.data(), sizeOf(bytes));
    EXPECT_EQ(stream.capacity(), 32U);
    EXPECT_EQ(content(stream), bytes);
    EXPECT_NE(readPosition(stream), bytes.data());
}

TEST(MemIOStreamConstruction, FromNoBytesMakesNoBuffer) {
    unsigned char const byte = 0;
    MemIOStream fromNull(nullptr, 12);
    MemIOStream fromNothing(&byte, 0);
    expectWithoutBuffer(fromNull);
    expectWithoutBuffer(fromNothing);
}

TEST(MemIOStreamConstruction, RefusesBytesThatAreNotWholeRecordsAndLeaksNothing) {
    Bytes const bytes = fromHex("01 02 03 04 05");
    long const before = test::liveBlocks();
    EXPECT_TRUE(
        test::throws<zntl::Exception>(invalidMemory, [&] { MemIOStream(bytes.data(), 5); }));
    EXPECT_EQ(test::liveBlocks(), before);
}

TEST(MemIOStreamConstruction, LeaksNothingOnAllocationFailure) {
    Bytes const bytes = recordOfSize(504, 12);
    MemIOStream source(100);
    append(source, bytes);
    EXPECT_EQ(test::failEachAllocation([](test::FailingRun& run) {
                  run.runsOutOfMemory([] { MemIOStream const stream(100); });
              }),
              1);
    EXPECT_EQ(test::failEachAllocation([&](test::FailingRun& run) {
                  run.runsOutOfMemory([&] { MemIOStream const stream(bytes.data(), 12); });
              }),
              1);
    EXPECT_EQ(test::failEachAllocation([&](test::FailingRun& run) {
                  run.runsOutOfMemory([&] { MemIOStream const stream(source); });
              }),
              1);
    EXPECT_EQ(content(source), bytes);
}

TEST(MemIOStreamConstruction, ReleasesItsBuffer) {
    long const before = test::liveBlocks();
    {
        MemIOStream const stream(100);
        EXPECT_EQ(test::liveBlocks(), before + 1);
    }
    EXPECT_EQ(test::liveBlocks(), before);
}

// Copying

TEST(MemIOStreamCopy, OfAStreamWithoutABufferHasNone) {
    MemIOStream const source;
    MemIOStream copy(source);
    expectWithoutBuffer(copy);
}

TEST(MemIOStreamCopy, TakesTheCapacityAndPutsTheUnreadBytesAtTheStart) {
    MemIOStream source(100);
    fill(source, 60, 10);
    View const before(source);
    MemIOStream copy(source);
    EXPECT_EQ(copy.capacity(), 100U);
    EXPECT_EQ(content(copy), recordOfSize(505, 10));
    EXPECT_EQ(View(source), before);

    auto const* const start = readPosition(copy);
    copy.clear();
    EXPECT_EQ(writePosition(copy), start);
}

TEST(MemIOStreamCopy, OfAnEmptyStreamHasABufferOfItsCapacity) {
    MemIOStream source(40);
    fill(source, 12, 0);
    MemIOStream const copy(source);
    EXPECT_EQ(copy.capacity(), 40U);
    EXPECT_TRUE(copy.isEmpty());
}

TEST(MemIOStreamCopy, IsIndependent) {
    MemIOStream source(100);
    fill(source, 0, 10);
    MemIOStream copy(source);
    append(copy, recordOfSize(1, 8));
    source.skip();
    EXPECT_TRUE(source.isEmpty());
    EXPECT_EQ(content(copy), concat(recordOfSize(505, 10), recordOfSize(1, 8)));
}

TEST(MemIOStreamCopy, CopiesBytesThatAreNotWholeRecords) {
    MemIOStream source;
    append(source, fromHex("01 02 03"));
    EXPECT_EQ(content(MemIOStream(source)), fromHex("01 02 03"));
}

TEST(MemIOStreamAssignment, OfAStreamWithoutABufferReleasesItsOwnBuffer) {
    long const before = test::liveBlocks();
    MemIOStream stream(100);
    fill(stream, 12, 12);
    MemIOStream const source;
    EXPECT_EQ(&(stream = source), &stream);
    EXPECT_EQ(test::liveBlocks(), before);
    expectWithoutBuffer(stream);
}

TEST(MemIOStreamAssignment, OfEqualCapacityReusesTheBuffer) {
    MemIOStream stream(100);
    auto const* const begin = writePosition(stream);
    fill(stream, 12, 20);
    MemIOStream source(100);
    fill(source, 60, 10);
    View const before(source);

    test::FailingRun noMemory(1);
    EXPECT_FALSE(noMemory.runsOutOfMemory([&] { stream = source; }));
    EXPECT_EQ(stream.capacity(), 100U);
    EXPECT_EQ(readPosition(stream), begin);
    EXPECT_EQ(content(stream), recordOfSize(505, 10));
    EXPECT_EQ(View(source), before);
}

TEST(MemIOStreamAssignment, TakesOnASmallerOrLargerCapacity) {
    for (unsigned int const capacity : {16U, 99U, 101U, 1000U}) {
        MemIOStream stream(100);
        fill(stream, 12, 20);
        MemIOStream source(capacity);
        fill(source, 0, 10);
        stream = source;
        EXPECT_EQ(stream.capacity(), capacity);
        EXPECT_EQ(content(stream), recordOfSize(505, 10));
    }
}

TEST(MemIOStreamAssignment, OfAnEmptyStreamEmptiesAndTakesOnTheCapacity) {
    MemIOStream stream(100);
    fill(stream, 12, 20);
    stream = MemIOStream(30);
    EXPECT_EQ(stream.capacity(), 30U);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(MemIOStreamAssignment, ToItselfEmptiesAndKeepsTheBuffer) {
    MemIOStream stream(100);
    auto const* const begin = writePosition(stream);
    fill(stream, 12, 20);
    MemIOStream const& alias = stream;
    stream = alias;
    EXPECT_EQ(stream.capacity(), 100U);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(writePosition(stream), begin);
}

TEST(MemIOStreamAssignment, ToItselfWithoutABufferChangesNothing) {
    MemIOStream stream;
    MemIOStream const& alias = stream;
    stream = alias;
    expectWithoutBuffer(stream);
}

TEST(MemIOStreamAssignment, LeavesNoBufferOnAllocationFailure) {
    MemIOStream source(50);
    fill(source, 0, 10);
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        MemIOStream stream(100);
        fill(stream, 12, 20);
        if (run.runsOutOfMemory([&] { stream = source; }))
            expectWithoutBuffer(stream);
        else
            EXPECT_EQ(content(stream), recordOfSize(505, 10));
    });
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(content(source), recordOfSize(505, 10));
}

} // namespace
