// The buffer of the memory stream: its growth and compaction, copying, access to the bytes, the
// walk over the records, and the stream's own binary form.

#include "misc/zntl_Exception.h"
#include "streams/blob.h"
#include "streams/raw_source.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/temporary_directory.h"
#include "support/virtual_slot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using test::append;
using test::Blob;
using test::Bytes;
using test::concat;
using test::content;
using test::fault;
using test::fill;
using test::fromHex;
using test::readPosition;
using test::recordHeader;
using test::recordOfSize;
using test::toHex;
using test::View;
using test::virtualSlot;
using test::writePosition;
using znsl::MemIOStream;

std::string const invalidMemory = fault(643, "setBuffer() - resulting memory is not valid.");

unsigned int sizeOf(Bytes const& bytes) { return static_cast<unsigned int>(bytes.size()); }

// What a stream is

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

void expectWithoutBuffer(MemIOStream& stream) {
    EXPECT_EQ(stream.capacity(), 0U);
    EXPECT_EQ(stream.size(), 0U);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_TRUE(stream.validate());
    EXPECT_EQ(stream.count(), 0U);
    EXPECT_EQ(writePosition(stream), nullptr);
    unsigned char const byte = 0;
    unsigned char const* data = &byte;
    unsigned int length = 99;
    stream.getBuffer(data, length);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 0U);
}

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

TEST(MemIOStreamConstruction, LeaksNothingWithoutMemory) {
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

TEST(MemIOStreamCopy, TakesBytesThatAreNotWholeRecordsAsTheyAre) {
    MemIOStream source;
    append(source, fromHex("01 02 03"));
    EXPECT_EQ(content(MemIOStream(source)), fromHex("01 02 03"));
}

TEST(MemIOStreamAssignment, OfAStreamWithoutABufferReleasesTheOwnOne) {
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

TEST(MemIOStreamAssignment, WithoutMemoryLeavesNoBuffer) {
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

// Reserving

TEST(MemIOStreamReserve, MakesTheCapacityExactlyTheNumberAndMovesTheUnreadBytesToTheStart) {
    MemIOStream stream(100);
    fill(stream, 60, 10);
    stream.reserve(101);
    EXPECT_EQ(stream.capacity(), 101U);
    EXPECT_EQ(content(stream), recordOfSize(505, 10));
    auto const* const start = readPosition(stream);
    stream.clear();
    EXPECT_EQ(writePosition(stream), start);
}

TEST(MemIOStreamReserve, MakesTheFirstBuffer) {
    MemIOStream stream;
    stream.reserve(5);
    EXPECT_EQ(stream.capacity(), 5U);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(MemIOStreamReserve, NeverShrinksAndNeverMoves) {
    MemIOStream stream(100);
    fill(stream, 60, 10);
    View const before(stream);
    for (unsigned int const n : {0U, 10U, 99U, 100U}) {
        stream.reserve(n);
        EXPECT_EQ(View(stream), before) << n;
    }
    MemIOStream none;
    none.reserve(0);
    expectWithoutBuffer(none);
}

TEST(MemIOStreamReserve, WithoutMemoryChangesNothing) {
    MemIOStream stream(100);
    fill(stream, 60, 10);
    View const before(stream);
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        if (run.runsOutOfMemory([&] { stream.reserve(101); })) {
            EXPECT_EQ(View(stream), before);
        }
    });
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(stream.capacity(), 101U);
}

// Growth and compaction: one rule behind four operations

enum class Room {
    there,    // nothing happens
    compacts, // the unread bytes move to the start
    grows,    // a new buffer
};

struct GrowthCase {
    unsigned int capacity;
    unsigned int consumed;
    unsigned int unread;
    unsigned int appended;
    unsigned int expectedCapacity;
    Room expected;
};

std::ostream& operator<<(std::ostream& out, GrowthCase const& c) {
    return out << "capacity " << c.capacity << ", " << c.consumed << " consumed, " << c.unread
               << " unread, " << c.appended << " appended";
}

constexpr GrowthCase growthCases[] = {
    // The first buffer is of exactly the size asked for.
    {0, 0, 0, 0, 0, Room::there},
    {0, 0, 0, 1, 1, Room::grows},
    {0, 0, 0, 12, 12, Room::grows},
    // Then twice the capacity and the size asked for.
    {12, 0, 12, 12, 36, Room::grows},
    {12, 0, 12, 1, 25, Room::grows},
    {12, 0, 12, 0, 12, Room::there},
    {100, 0, 70, 30, 100, Room::there},
    {100, 0, 70, 31, 231, Room::grows},
    {100, 0, 0, 100, 100, Room::there},
    {100, 0, 0, 101, 301, Room::grows},
    // Consumed bytes are reclaimed when the room behind the unread ones is too small.
    {100, 60, 10, 30, 100, Room::there},
    {100, 60, 10, 31, 100, Room::compacts},
    {100, 60, 10, 40, 100, Room::compacts},
    {100, 60, 10, 90, 100, Room::compacts},
    {100, 60, 10, 91, 291, Room::grows},
    {100, 60, 10, 95, 295, Room::grows},
    {100, 20, 70, 10, 100, Room::there},
    {100, 20, 70, 11, 100, Room::compacts},
    {100, 20, 70, 30, 100, Room::compacts},
    {100, 20, 70, 31, 231, Room::grows},
    {100, 8, 92, 0, 100, Room::there},
    {100, 8, 92, 8, 100, Room::compacts},
    {100, 8, 92, 9, 209, Room::grows},
    {100, 92, 8, 92, 100, Room::compacts},
    {100, 100, 0, 0, 100, Room::there},
    {100, 100, 0, 100, 100, Room::compacts},
    {100, 100, 0, 101, 301, Room::grows},
};

/// An operation that makes room for `n` bytes, and how many of them it then appends.
struct Appender {
    char const* name;
    unsigned int least;
    std::function<unsigned int(MemIOStream&, unsigned int n)> append;
};

std::vector<Appender> appenders() {
    return {
        {"checkBuff", 0,
         [](MemIOStream& stream, unsigned int n) {
             stream.checkBuff(n);
             return 0U;
         }},
        {"getWriteBuffer", 0,
         [](MemIOStream& stream, unsigned int n) {
             unsigned char* out;
             stream.getWriteBuffer(out, n);
             if (n > 0)
                 std::memset(out, 0xEE, n);
             return n;
         }},
        {"write", 8,
         [](MemIOStream& stream, unsigned int n) {
             return stream.write(Blob(7, Bytes(n - 8, 0xEE)));
         }},
        {"operator<< from a source", 0,
         [](MemIOStream& stream, unsigned int n) {
             test::RawSource source({Bytes(n, 0xEE)});
             stream << source;
             return n;
         }},
    };
}

TEST(MemIOStreamGrowth, FollowsOneRule) {
    for (Appender const& appender : appenders()) {
        for (GrowthCase const& c : growthCases) {
            if (c.appended < appender.least)
                continue;
            SCOPED_TRACE(testing::Message() << appender.name << ": " << c);
            MemIOStream stream(c.capacity);
            auto const* const begin = writePosition(stream);
            fill(stream, c.consumed, c.unread);
            ASSERT_EQ(stream.capacity(), c.capacity) << "the case begins as it says";

            unsigned int const appended = appender.append(stream, c.appended);
            EXPECT_EQ(stream.capacity(), c.expectedCapacity);
            EXPECT_EQ(stream.size(), c.unread + appended);
            Bytes unread = content(stream);
            unread.resize(c.unread);
            EXPECT_EQ(unread, c.unread > 0 ? recordOfSize(505, c.unread) : Bytes());

            auto const* const end = writePosition(stream);
            if (c.expected == Room::grows) {
                EXPECT_NE(end - stream.size(), begin) << "the buffer is a new one";
                stream.clear();
                EXPECT_EQ(writePosition(stream) + c.unread + appended, end);
            } else {
                unsigned int const offset = c.expected == Room::there ? c.consumed : 0;
                EXPECT_EQ(end, begin + offset + c.unread + appended);
            }
        }
    }
}

TEST(MemIOStreamGrowth, DoublesAndAdds) {
    MemIOStream stream;
    std::vector<unsigned int> capacities;
    for (int i = 0; i < 9; ++i) {
        append(stream, recordOfSize(504, 12));
        capacities.push_back(stream.capacity());
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{12, 36, 36, 84, 84, 84, 84, 180, 180}));
}

TEST(MemIOStreamGrowth, EndsForAQueueInSteadyState) {
    MemIOStream stream;
    Bytes const record = recordOfSize(504, 12);
    for (int i = 0; i < 3; ++i)
        append(stream, record);
    unsigned int const capacity = stream.capacity();
    for (int i = 0; i < 1000; ++i) {
        append(stream, record);
        stream.skip();
        ASSERT_LE(stream.capacity(), capacity * 3);
    }
    unsigned int const settled = stream.capacity();
    test::FailingRun noMemory(1);
    EXPECT_FALSE(noMemory.runsOutOfMemory([&] {
        for (int i = 0; i < 1000; ++i) {
            append(stream, record);
            stream.skip();
        }
    }));
    EXPECT_EQ(stream.capacity(), settled);
    EXPECT_EQ(content(stream), concat(record, record, record));
}

TEST(MemIOStreamGrowth, WithoutMemoryChangesNothing) {
    for (Appender const& appender : appenders()) {
        SCOPED_TRACE(appender.name);
        long const failures = test::failEachAllocation([&](test::FailingRun& run) {
            MemIOStream stream(100);
            fill(stream, 60, 10);
            View const before(stream);
            if (run.runsOutOfMemory([&] { appender.append(stream, 95); })) {
                EXPECT_EQ(View(stream), before);
            } else {
                EXPECT_EQ(stream.capacity(), 295U);
            }
        });
        EXPECT_GE(failures, 1);
    }
}

TEST(MemIOStreamGrowth, OfTheFirstBufferWithoutMemoryLeavesNone) {
    MemIOStream stream;
    test::FailingRun run(1);
    EXPECT_TRUE(run.runsOutOfMemory([&] { stream.checkBuff(12); }));
    expectWithoutBuffer(stream);
}

// Sizes that 32 bits do not hold

/// Whether the operation asks for memory, of which there is none here.
template <class Operation>
bool asksForMemory(Operation operation) {
    test::FailingRun noMemory(1);
    return noMemory.runsOutOfMemory(operation);
}

/// That it asks for a buffer of at least the largest size. 32-bit machines refuse that before any
/// memory is asked for.
template <class Operation>
void expectAsksForTheLargestBuffer(Operation operation) {
    std::size_t const asked =
        test::largestAllocation([&] { EXPECT_TRUE(asksForMemory(operation)); });
    if (sizeof(void*) > 4) {
        EXPECT_GE(asked, 0xFFFFFFFFU);
    }
}

TEST(MemIOStreamOverflow, OfCheckBuffWrapsAt32Bits) {
    struct Case {
        char const* what;
        unsigned int capacity, consumed, unread, n, expectedCapacity, expectedOffset;
    };
    for (Case const& c : {
             Case{"twice the capacity and n wrap to more", 10, 0, 0, 0xFFFFFFFF, 19, 0},
             Case{"they wrap to the capacity", 100, 20, 70, 0xFFFFFF9C, 100, 20},
             Case{"they wrap to one more", 100, 20, 20, 0xFFFFFF9D, 101, 0},
             Case{"they wrap to less", 100, 20, 20, 0xFFFFFF38, 100, 20},
             Case{"the unread bytes and n wrap, so compaction seems enough", 100, 20, 70,
                  0xFFFFFFFF, 100, 0},
             Case{"they wrap exactly", 100, 20, 70, 0xFFFFFFBA, 100, 0},
         }) {
        SCOPED_TRACE(c.what);
        MemIOStream stream(c.capacity);
        fill(stream, c.consumed, c.unread);
        Bytes const before = content(stream);
        stream.checkBuff(c.n);
        EXPECT_EQ(stream.capacity(), c.expectedCapacity);
        EXPECT_EQ(content(stream), before);
        // What compaction or growth leaves free after the unread bytes can be appended in place.
        unsigned int const room = stream.capacity() - c.expectedOffset - c.unread;
        unsigned char const* const position = readPosition(stream);
        unsigned char* out;
        stream.getWriteBuffer(out, room);
        EXPECT_EQ(stream.capacity(), c.expectedCapacity);
        if (c.unread > 0) {
            EXPECT_EQ(readPosition(stream), position);
        }
    }
}

#if SIZE_MAX > 0xFFFFFFFF // the content does not fit a smaller address space
TEST(MemIOStreamOverflow, OfTheBinaryFormIsALengthErrorAndChangesNothing) {
    MemIOStream large(0xFFFFFFFF); // never touched, so that it takes no memory
    unsigned char* out = nullptr;
    large.getWriteBuffer(out, 0xFFFFFFFB);
    EXPECT_EQ(large.getBinLength(), 0xFFFFFFFFU);
    large.getWriteBuffer(out, 1);
    EXPECT_TRUE(test::throws<std::length_error>("znsl::Serializable: binary form beyond 32 bits",
                                                [&] { large.getBinLength(); }));
    MemIOStream outer(10);
    View const before(outer);
    EXPECT_THROW(outer.write(large), std::length_error);
    EXPECT_EQ(View(outer), before);
    test::TemporaryDirectory const directory;
    EXPECT_FALSE(large.toFile((directory / "file").c_str()));
}
#endif

TEST(MemIOStreamOverflow, BeginsBehindTheLargestCapacity) {
    MemIOStream stream(100);
    fill(stream, 20, 70);
    View const before(stream);
    // 2 * 100 + 0xFFFFFF37 is 0xFFFFFFFF.
    expectAsksForTheLargestBuffer([&] { stream.checkBuff(0xFFFFFF37); });
    unsigned char* out = nullptr;
    expectAsksForTheLargestBuffer([&] { stream.getWriteBuffer(out, 0xFFFFFF37); });
    Blob object(7);
    object.announced = 0xFFFFFF37 - 8;
    expectAsksForTheLargestBuffer([&] { stream.write(object); });
    EXPECT_EQ(View(stream), before);
    EXPECT_EQ(out, nullptr);
}

TEST(MemIOStreamOverflow, IsNoMatterOfTheFirstBuffer) {
    MemIOStream stream;
    unsigned char* out = nullptr;
    expectAsksForTheLargestBuffer([&] { stream.getWriteBuffer(out, 0xFFFFFFFF); });
    expectWithoutBuffer(stream);
}

TEST(MemIOStreamOverflow, OfALargeFullBufferIsALengthError) {
    constexpr unsigned int capacity = 0x44000000; // never touched, so that it takes no memory
    MemIOStream stream(capacity);
    unsigned char* out = nullptr;
    stream.getWriteBuffer(out, capacity);
    EXPECT_THROW(stream.getWriteBuffer(out, 2 * capacity), std::length_error);
    EXPECT_EQ(stream.size(), capacity);
}

TEST(MemIOStreamOverflow, SaysWhatIsTooLarge) {
    MemIOStream stream(1);
    unsigned char* out = nullptr;
    EXPECT_TRUE(test::throws<std::length_error>("znsl::MemIOStream: content beyond 32 bits",
                                                [&] { stream.getWriteBuffer(out, 0xFFFFFFFF); }));
}

TEST(MemIOStreamOverflow, OfAWriteBufferIsALengthErrorAndChangesNothing) {
    MemIOStream stream(100);
    fill(stream, 20, 70);
    View const before(stream);
    for (unsigned int const n : {0xFFFFFFFFU, 0xFFFFFFF0U, 0xFFFFFFBAU, 0xFFFFFF38U}) {
        unsigned char byte = 0;
        unsigned char* out = &byte;
        EXPECT_THROW(stream.getWriteBuffer(out, n), std::length_error) << n;
        EXPECT_EQ(out, &byte) << n;
        EXPECT_EQ(View(stream), before) << n;
    }
}

TEST(MemIOStreamOverflow, OfARecordIsALengthErrorAndChangesNothing) {
    MemIOStream filled(100);
    fill(filled, 20, 70);
    View const before(filled);
    MemIOStream empty;
    Blob object(7);
    bool written = false;
    object.onToBin = [&](unsigned char*) { written = true; };
    // A payload of 0xFFFFFFF8 bytes and more has no record size in 32 bits.
    for (unsigned int const n : {0xFFFFFFFFU, 0xFFFFFFFEU, 0xFFFFFFF9U, 0xFFFFFFF8U}) {
        object.announced = n;
        EXPECT_THROW(filled.write(object), std::length_error) << n;
        EXPECT_THROW(empty.write(object), std::length_error) << n;
    }
    // Smaller ones have, but not behind these unread bytes, or not with this capacity doubled.
    for (unsigned int const n : {0xFFFFFFF7U, 0xFFFFFFB2U, 0xFFFFFF30U}) {
        object.announced = n;
        EXPECT_THROW(filled.write(object), std::length_error) << n;
    }
    EXPECT_FALSE(written);
    EXPECT_EQ(View(filled), before);
    expectWithoutBuffer(empty);
}

TEST(MemIOStreamOverflow, OfARawRecordIsALengthErrorAndReleasesIt) {
    class Boaster : public test::RawSource {
    public:
        Boaster() : RawSource({recordOfSize(7, 12)}) {}
        bool readNextObject(unsigned char*& data, unsigned int& length) override {
            bool const found = RawSource::readNextObject(data, length);
            length = 0xFFFFFFF0;
            return found;
        }
    };
    MemIOStream stream(100);
    fill(stream, 20, 70);
    View const before(stream);
    Boaster source;
    long const blocks = test::liveBlocks();
    EXPECT_THROW(stream << source, std::length_error);
    EXPECT_EQ(test::liveBlocks(), blocks);
    EXPECT_EQ(View(stream), before);
}

// Writing into the buffer

TEST(MemIOStreamWriteBuffer, AppendsBytesForTheCallerToFill) {
    MemIOStream stream(100);
    fill(stream, 20, 10);
    unsigned char* out = nullptr;
    stream.getWriteBuffer(out, 12);
    EXPECT_EQ(out, readPosition(stream) + 10);
    EXPECT_EQ(stream.size(), 22U);
    Bytes const record = recordOfSize(504, 12);
    std::memcpy(out, record.data(), record.size());
    EXPECT_EQ(content(stream), concat(recordOfSize(505, 10), record));
}

TEST(MemIOStreamWriteBuffer, OfNoBytesGivesTheWritePosition) {
    MemIOStream none;
    unsigned char byte = 0;
    unsigned char* out = &byte;
    none.getWriteBuffer(out, 0);
    EXPECT_EQ(out, nullptr);

    MemIOStream stream(20);
    fill(stream, 0, 20);
    stream.getWriteBuffer(out, 0);
    EXPECT_EQ(out, readPosition(stream) + 20);
    EXPECT_EQ(stream.capacity(), 20U);
}

TEST(MemIOStreamFinalize, GivesBackWhatWasNotFilled) {
    struct Case {
        unsigned int reserved;
        unsigned int filled;
        unsigned int expectedSize;
    };
    constexpr Case cases[] = {
        {20, 12, 22},         {20, 19, 29},
        {20, 0, 10},          {20, 20, 30}, // all of it: nothing to give back
        {20, 21, 30},                       // more than reserved: nothing happens
        {20, 0xFFFFFFFF, 30},               // so far behind that a 32-bit address wraps
        {20, 0xFFFFFFF0, 30}, {0, 0, 10},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(testing::Message() << c.filled << " of " << c.reserved);
        MemIOStream stream(100);
        fill(stream, 20, 10);
        unsigned char* p = nullptr;
        stream.getWriteBuffer(p, c.reserved);
        unsigned char* const given = p;
        stream.finalizeBuffer(p, c.filled);
        EXPECT_EQ(stream.size(), c.expectedSize);
        EXPECT_EQ(stream.capacity(), 100U);
        EXPECT_EQ(p, given);
    }
}

TEST(MemIOStreamFinalize, CountsFromTheAddressThatItIsGiven) {
    MemIOStream stream(100);
    unsigned char* first = nullptr;
    unsigned char* second = nullptr;
    stream.getWriteBuffer(first, 20);
    stream.getWriteBuffer(second, 20);
    stream.finalizeBuffer(second, 5);
    EXPECT_EQ(stream.size(), 25U);
    stream.finalizeBuffer(first, 8);
    EXPECT_EQ(stream.size(), 8U);
}

TEST(MemIOStreamFinalize, IgnoresAddressesBehindTheContent) {
    MemIOStream stream(100);
    fill(stream, 0, 10);
    for (std::ptrdiff_t const offset : {0, 1, 90}) {
        unsigned char* p = writePosition(stream) + offset;
        stream.finalizeBuffer(p, 0);
        EXPECT_EQ(stream.size(), 10U) << offset;
    }
}

TEST(MemIOStreamFinalize, IgnoresANullAddress) {
    unsigned char* null = nullptr;
    MemIOStream none;
    none.finalizeBuffer(null, 0);
    expectWithoutBuffer(none);

    MemIOStream stream(100);
    fill(stream, 0, 10);
    stream.finalizeBuffer(null, 0);
    EXPECT_EQ(stream.size(), 10U);
}

TEST(MemIOStreamFinalize, NeverGivesBackWhatWasRead) {
    MemIOStream stream(100);
    unsigned char* p = writePosition(stream);
    fill(stream, 20, 10);
    stream.finalizeBuffer(p, 4);
    EXPECT_EQ(stream.size(), 0U);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(writePosition(stream), p + 20);
}

TEST(MemIOStreamGetBuffer, ShowsTheUnreadBytesInPlace) {
    MemIOStream stream(100);
    auto const* const begin = writePosition(stream);
    fill(stream, 60, 10);
    unsigned char const* data = nullptr;
    unsigned int length = 0;
    stream.getBuffer(data, length);
    EXPECT_EQ(data, begin + 60);
    EXPECT_EQ(length, 10U);
}

TEST(MemIOStreamGetBuffer, ShowsNothingOfAnEmptyStream) {
    MemIOStream stream(100);
    fill(stream, 60, 0);
    unsigned char const byte = 0;
    unsigned char const* data = &byte;
    unsigned int length = 99;
    stream.getBuffer(data, length);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 0U);
}

// The walk over the records

struct WalkCase {
    char const* what;
    Bytes bytes;
    bool whole;
    unsigned int records;
};

std::vector<WalkCase> walkCases() {
    Bytes const integer = recordOfSize(504, 12);
    Bytes const marker = test::endOfFileRecord();
    return {
        {"nothing", {}, true, 0},
        {"a byte", Bytes(1, 0), false, 0},
        {"five stray bytes", Bytes(5, 0), false, 0},
        {"a header less a byte", Bytes(7, 0), false, 0},
        {"a header without payload", marker, true, 1},
        {"a record", integer, true, 1},
        {"three records", concat(integer, marker, recordOfSize(9, 300)), true, 3},
        {"a record less a byte", Bytes(integer.begin(), integer.end() - 1), false, 1},
        {"a record and a byte", concat(integer, Bytes(1, 0)), false, 2},
        {"a record and a header less a byte", concat(integer, Bytes(7, 0)), false, 2},
        {"a record and a longer one announced", concat(integer, recordHeader(9, 1)), false, 2},
        {"a length of 2 GiB less a byte", recordHeader(9, 0x7FFFFFFF), false, 1},
        {"a length of 2 GiB", recordHeader(9, 0x80000000), false, 1},
        {"a record size of 4 GiB less a byte", recordHeader(9, 0xFFFFFFF7), false, 1},
        // Sizes that become small in 32 bits: a walk that wraps stays where it is, or goes back.
        {"a record size of 4 GiB", recordHeader(9, 0xFFFFFFF8), false, 1},
        {"a record size of 4 GiB and 7 bytes", recordHeader(9, 0xFFFFFFFF), false, 1},
        {"back to the start", concat(integer, recordHeader(9, 0xFFFFFFEC)), false, 2},
        {"back to the start, with more behind",
         concat(integer, recordHeader(9, 0xFFFFFFEC), integer), false, 2},
        {"the length of the rest, by wrapping", concat(recordHeader(9, 0xFFFFFFFF), Bytes(7, 0)),
         false, 1},
    };
}

TEST(MemIOStreamWalk, TellsWholeRecordsAndCountsThem) {
    for (WalkCase const& c : walkCases()) {
        for (unsigned int const consumed : {0U, 20U}) {
            SCOPED_TRACE(testing::Message() << c.what << " behind " << consumed << " bytes");
            // A buffer that ends where the content ends, so that sanitizers see a step too far.
            MemIOStream stream(consumed + sizeOf(c.bytes));
            fill(stream, consumed, 0);
            append(stream, c.bytes);
            EXPECT_EQ(stream.validate(), c.whole);
            EXPECT_EQ(stream.count(), c.records);
            EXPECT_EQ(content(stream), c.bytes);
        }
    }
}

TEST(MemIOStreamWalk, DoesNotSeeWhatLiesBehindTheContent) {
    MemIOStream stream(100);
    Bytes const records = concat(recordOfSize(504, 12), recordOfSize(505, 20));
    append(stream, records);
    unsigned char* p = writePosition(stream) - records.size();
    stream.finalizeBuffer(p, 12 + 4); // cuts the second record short
    EXPECT_FALSE(stream.validate());
    EXPECT_EQ(stream.count(), 2U);
    stream.finalizeBuffer(p, 12);
    EXPECT_TRUE(stream.validate());
    EXPECT_EQ(stream.count(), 1U);
}

// Replacing the content

TEST(MemIOStreamSetBuffer, MakesABufferOfExactlyTheLength) {
    Bytes const records = concat(recordOfSize(504, 12), recordOfSize(505, 20));
    MemIOStream stream(31);
    fill(stream, 8, 10);
    stream.setBuffer(records.data(), 32);
    EXPECT_EQ(stream.capacity(), 32U);
    EXPECT_EQ(content(stream), records);
}

TEST(MemIOStreamSetBuffer, ReusesABufferThatIsLargeEnough) {
    Bytes const records = concat(recordOfSize(504, 12), recordOfSize(505, 20));
    for (unsigned int const capacity : {32U, 33U, 100U}) {
        MemIOStream stream(capacity);
        auto const* const begin = writePosition(stream);
        fill(stream, 12, 10);
        EXPECT_FALSE(asksForMemory([&] { stream.setBuffer(records.data(), 32); }));
        EXPECT_EQ(stream.capacity(), capacity);
        EXPECT_EQ(content(stream), records);
        EXPECT_EQ(readPosition(stream), begin);
    }
}

TEST(MemIOStreamSetBuffer, OfNoBytesEmptiesAndKeepsTheBuffer) {
    unsigned char const byte = 0;
    for (unsigned char const* const data : {static_cast<unsigned char const*>(nullptr), &byte}) {
        MemIOStream stream(100);
        auto const* const begin = writePosition(stream);
        fill(stream, 12, 20);
        stream.setBuffer(data, data ? 0 : 12);
        EXPECT_TRUE(stream.isEmpty());
        EXPECT_EQ(stream.capacity(), 100U);
        EXPECT_EQ(writePosition(stream), begin);

        MemIOStream none;
        none.setBuffer(data, data ? 0 : 12);
        expectWithoutBuffer(none);
    }
}

TEST(MemIOStreamSetBuffer, RefusesWhatIsNotWholeRecordsButKeepsTheBytes) {
    for (WalkCase const& c : walkCases()) {
        SCOPED_TRACE(c.what);
        for (unsigned int const capacity : {0U, 12U, 1000U}) {
            MemIOStream stream(capacity);
            fill(stream, capacity > 0 ? 12 : 0, 0);
            auto const set = [&] { stream.setBuffer(c.bytes.data(), sizeOf(c.bytes)); };
            if (c.whole) {
                EXPECT_NO_THROW(set());
            } else {
                EXPECT_TRUE(test::throws<zntl::Exception>(invalidMemory, set));
            }
            EXPECT_EQ(content(stream), c.bytes);
        }
    }
}

TEST(MemIOStreamSetBuffer, TakesBytesOfItsOwnBuffer) {
    Bytes const first = recordOfSize(504, 12);
    Bytes const rest = concat(recordOfSize(505, 300), recordOfSize(1, 8));
    // The rest lies near its new place, so that the bytes overlap; or a part does not.
    for (unsigned int const capacity : {320U, 1000U}) {
        MemIOStream stream(capacity);
        append(stream, concat(first, rest));
        stream.setBuffer(readPosition(stream) + 12, 308);
        EXPECT_EQ(content(stream), rest);
        EXPECT_EQ(stream.capacity(), capacity);
        stream.setBuffer(readPosition(stream) + 300, 8);
        EXPECT_EQ(content(stream), test::endOfFileRecord());
    }
}

TEST(MemIOStreamSetBuffer, TakesItsWholeOwnContent) {
    MemIOStream stream(100);
    append(stream, recordOfSize(504, 12));
    View const before(stream);
    stream.setBuffer(readPosition(stream), stream.size());
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamSetBuffer, TakesBytesThatItHasReadAlready) {
    MemIOStream stream(100);
    auto const* const begin = writePosition(stream);
    fill(stream, 20, 30);
    stream.setBuffer(begin, 20);
    EXPECT_EQ(content(stream), recordOfSize(504, 20));
}

TEST(MemIOStreamSetBuffer, WithoutMemoryLeavesTheStreamEmpty) {
    Bytes const records = recordOfSize(504, 200);
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        MemIOStream stream(100);
        auto const* const begin = writePosition(stream);
        fill(stream, 12, 20);
        if (run.runsOutOfMemory([&] { stream.setBuffer(records.data(), 200); })) {
            EXPECT_TRUE(stream.isEmpty());
            EXPECT_EQ(stream.capacity(), 100U);
            EXPECT_EQ(writePosition(stream), begin);
        } else {
            EXPECT_EQ(content(stream), records);
        }
    });
    EXPECT_EQ(failures, 1);
}

TEST(MemIOStreamSetBuffer, WithoutMemoryForItsReportKeepsTheBytesAllTheSame) {
    Bytes const bytes = fromHex("01 02 03 04 05");
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        MemIOStream stream(100);
        bool reported = false;
        bool const exhausted = run.runsOutOfMemory([&] {
            try {
                stream.setBuffer(bytes.data(), 5);
            } catch (zntl::Exception const&) {
                reported = true;
            }
        });
        EXPECT_NE(exhausted, reported);
        EXPECT_EQ(content(stream), bytes);
    });
    EXPECT_GE(failures, 1);
}

// Compaction, emptying, releasing

TEST(MemIOStreamDefrag, MovesTheUnreadBytesToTheStart) {
    struct Case {
        unsigned int consumed;
        unsigned int unread;
    };
    // Gaps shorter and longer than the content, and of its length.
    for (Case const c : {Case{60, 10}, Case{10, 60}, Case{8, 92}, Case{50, 50}, Case{92, 8}}) {
        MemIOStream stream(100);
        auto const* const begin = writePosition(stream);
        fill(stream, c.consumed, c.unread);
        stream.defrag();
        EXPECT_EQ(readPosition(stream), begin);
        EXPECT_EQ(content(stream), recordOfSize(505, c.unread));
        EXPECT_EQ(stream.capacity(), 100U);
    }
}

TEST(MemIOStreamDefrag, OfAnEmptyStreamMovesItsPositionsToTheStart) {
    MemIOStream stream(100);
    auto const* const begin = writePosition(stream);
    fill(stream, 60, 0);
    stream.defrag();
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(writePosition(stream), begin);
}

TEST(MemIOStreamDefrag, MovesBackOverWhatWasLessThanARecord) {
    /// Finds a record of type 7 where the content is less than a header.
    class Finding : public MemIOStream {
    public:
        using MemIOStream::MemIOStream;
        unsigned int getNextType() const override { return 7; }
    };
    Finding stream(100);
    unsigned char* start = nullptr;
    stream.getWriteBuffer(start, 8);
    std::memset(start, 0, 8);
    stream.finalizeBuffer(start, 1);
    Blob object(7);
    stream.read(object);
    EXPECT_EQ(writePosition(stream), start + 1);
    stream.defrag();
    EXPECT_EQ(writePosition(stream), start);
}

TEST(MemIOStreamDefrag, DoesNothingAtTheStartOrWithoutABuffer) {
    MemIOStream stream(100);
    fill(stream, 0, 20);
    View const before(stream);
    stream.defrag();
    EXPECT_EQ(View(stream), before);

    MemIOStream none;
    none.defrag();
    expectWithoutBuffer(none);
}

TEST(MemIOStreamClear, EmptiesAndKeepsTheBuffer) {
    MemIOStream stream(100);
    auto const* const begin = writePosition(stream);
    fill(stream, 12, 20);
    stream.clear();
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(stream.size(), 0U);
    EXPECT_EQ(stream.capacity(), 100U);
    EXPECT_EQ(writePosition(stream), begin);

    MemIOStream none;
    none.clear();
    expectWithoutBuffer(none);
}

TEST(MemIOStreamPurge, EmptiesAndReleasesTheBuffer) {
    long const before = test::liveBlocks();
    MemIOStream stream(100);
    fill(stream, 12, 20);
    stream.purge();
    EXPECT_EQ(test::liveBlocks(), before);
    expectWithoutBuffer(stream);
    stream.purge();
    expectWithoutBuffer(stream);

    append(stream, recordOfSize(504, 12));
    EXPECT_EQ(stream.capacity(), 12U) << "the stream begins anew";
}

TEST(MemIOStreamFlush, DoesNothing) {
    MemIOStream stream(100);
    fill(stream, 12, 20);
    View const before(stream);
    stream.flush();
    EXPECT_EQ(View(stream), before);
}

// The stream's own binary form

TEST(MemIOStreamBinaryForm, IsALengthAndTheUnreadBytes) {
    MemIOStream stream(100);
    fill(stream, 20, 10);
    EXPECT_EQ(stream.getBinLength(), 14U);
    View const before(stream);
    Bytes out(15, 0xEE);
    EXPECT_EQ(stream.toBin(out.data()), 14U);
    EXPECT_EQ(toHex(out), "0a 00 00 00 f9 01 00 00 02 00 00 00 08 09 ee");
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamBinaryForm, OfAnEmptyStreamIsALengthOfZero) {
    MemIOStream none;
    MemIOStream consumed(100);
    fill(consumed, 60, 0);
    for (MemIOStream const* const stream : {&none, &consumed}) {
        EXPECT_EQ(stream->getBinLength(), 4U);
        Bytes out(5, 0xEE);
        EXPECT_EQ(stream->toBin(out.data()), 4U);
        EXPECT_EQ(toHex(out), "00 00 00 00 ee");
    }
}

TEST(MemIOStreamBinaryForm, IsWrittenToAndReadFromAnyAddress) {
    MemIOStream stream;
    append(stream, recordOfSize(504, 12));
    for (std::size_t offset = 0; offset < 4; ++offset) {
        Bytes bytes(offset + 16);
        stream.toBin(bytes.data() + offset);
        MemIOStream other;
        EXPECT_EQ(other.fromBin(bytes.data() + offset, 16), 16U);
        EXPECT_EQ(content(other), content(stream));
    }
}

TEST(MemIOStreamBinaryForm, IsReadWithoutRegardToTheLengthGiven) {
    Bytes const bytes = fromHex("0c 00 00 00 f8 01 00 00 04 00 00 00 01 02 03 04 ff ff");
    for (unsigned int const available : {0U, 3U, 15U, 16U, 18U, 0xFFFFFFFFU}) {
        MemIOStream stream(30);
        fill(stream, 12, 12);
        EXPECT_EQ(stream.fromBin(bytes.data(), available), 16U);
        EXPECT_EQ(toHex(content(stream)), "f8 01 00 00 04 00 00 00 01 02 03 04");
        EXPECT_EQ(stream.capacity(), 30U);
    }
}

TEST(MemIOStreamBinaryForm, OfALengthOfZeroEmptiesTheStream) {
    MemIOStream stream(100);
    fill(stream, 12, 20);
    Bytes const bytes = fromHex("00 00 00 00");
    EXPECT_EQ(stream.fromBin(bytes.data(), 4), 4U);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(stream.capacity(), 100U);
}

TEST(MemIOStreamBinaryForm, IsRefusedWhenItHoldsNoWholeRecords) {
    MemIOStream stream;
    Bytes const bytes = fromHex("09 00 00 00 01 02 03 04 05 06 07 08 09");
    EXPECT_TRUE(
        test::throws<zntl::Exception>(invalidMemory, [&] { stream.fromBin(bytes.data(), 13); }));
    EXPECT_EQ(toHex(content(stream)), "01 02 03 04 05 06 07 08 09");
}

TEST(MemIOStreamBinaryForm, WithoutMemoryLeavesTheStreamEmpty) {
    Bytes const bytes = concat(fromHex("c8 00 00 00"), recordOfSize(504, 200));
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        MemIOStream stream(100);
        fill(stream, 12, 20);
        if (run.runsOutOfMemory([&] { stream.fromBin(bytes.data(), 204); })) {
            EXPECT_TRUE(stream.isEmpty());
            EXPECT_EQ(stream.capacity(), 100U);
        } else {
            EXPECT_EQ(stream.size(), 200U);
        }
    });
    EXPECT_EQ(failures, 1);
}

TEST(MemIOStreamBinaryForm, ReportsTheLengthThatTheStreamSaysItHas) {
    class Padded : public MemIOStream {
    public:
        unsigned int getBinLength() const override { return 4242; }
    };
    Padded stream;
    Bytes bytes = fromHex("00 00 00 00");
    EXPECT_EQ(stream.toBin(bytes.data()), 4242U);
    EXPECT_EQ(stream.fromBin(bytes.data(), 4), 4242U);
}

TEST(MemIOStreamBinaryForm, IsThePayloadOfATypedFile) {
    test::TemporaryDirectory const directory;
    MemIOStream stream;
    append(stream, recordOfSize(504, 12));
    ASSERT_TRUE(stream.toFile((directory / "stream").c_str()));
    EXPECT_EQ(toHex(test::readFile(directory / "stream")),
              "06 00 10 00 00 00 0c 00 00 00 f8 01 00 00 04 00 00 00 08 09 0a 0b");

    MemIOStream other(50);
    fill(other, 12, 12);
    EXPECT_TRUE(other.fromFile((directory / "stream").c_str()));
    EXPECT_EQ(content(other), content(stream));
}

} // namespace
