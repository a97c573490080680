// How the buffer of the memory stream grows, and sizes beyond 32 bits.

#include "streams/blob.h"
#include "streams/raw_source.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <vector>

namespace {

using namespace test;
using znsl::MemIOStream;

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

TEST(MemIOStreamReserve, ChangesNothingOnAllocationFailure) {
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

// Growth and compaction: four operations follow the same rule

enum class Room {
    there,    // the room suffices, so nothing moves
    compacts, // the unread bytes move to the start
    grows,    // the stream gets a new buffer
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
    // The first buffer has exactly the requested size.
    {0, 0, 0, 0, 0, Room::there},
    {0, 0, 0, 1, 1, Room::grows},
    {0, 0, 0, 12, 12, Room::grows},
    // A later buffer has twice the previous capacity plus the requested size.
    {12, 0, 12, 12, 36, Room::grows},
    {12, 0, 12, 1, 25, Room::grows},
    {12, 0, 12, 0, 12, Room::there},
    {100, 0, 70, 30, 100, Room::there},
    {100, 0, 70, 31, 231, Room::grows},
    {100, 0, 0, 100, 100, Room::there},
    {100, 0, 0, 101, 301, Room::grows},
    // Compaction reclaims consumed bytes when the room after the unread ones is too small.
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

/// An operation that makes room for `n` bytes. `append` returns how many bytes it appends.
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
            ASSERT_EQ(stream.capacity(), c.capacity) << "the setup of the case is wrong";

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

TEST(MemIOStreamGrowth, ChangesNothingOnAllocationFailure) {
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

TEST(MemIOStreamGrowth, OfTheFirstBufferLeavesNoneOnAllocationFailure) {
    MemIOStream stream;
    test::FailingRun run(1);
    EXPECT_TRUE(run.runsOutOfMemory([&] { stream.checkBuff(12); }));
    expectWithoutBuffer(stream);
}

// Sizes beyond 32 bits

/// Expects that the operation fails to allocate a buffer of 4 GiB less one byte. On 32-bit machines
/// `new` fails before it asks the allocator.
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
        // All bytes after the unread ones are free: appending as many does not move anything.
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

#if SIZE_MAX > 0xFFFFFFFF // 32-bit machines cannot allocate the content
TEST(MemIOStreamOverflow, OfTheBinaryFormIsALengthErrorAndChangesNothing) {
    MemIOStream large(0xFFFFFFFF); // uses no physical memory, because nothing writes to it
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

TEST(MemIOStreamOverflow, BeginsAboveTheLargestCapacity) {
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

TEST(MemIOStreamOverflow, DoesNotHappenForTheFirstBuffer) {
    MemIOStream stream;
    unsigned char* out = nullptr;
    expectAsksForTheLargestBuffer([&] { stream.getWriteBuffer(out, 0xFFFFFFFF); });
    expectWithoutBuffer(stream);
}

TEST(MemIOStreamOverflow, OfALargeFullBufferIsALengthError) {
    constexpr unsigned int capacity = 0x44000000; // uses no physical memory: nothing writes to it
    MemIOStream stream(capacity);
    unsigned char* out = nullptr;
    stream.getWriteBuffer(out, capacity);
    EXPECT_THROW(stream.getWriteBuffer(out, 2 * capacity), std::length_error);
    EXPECT_EQ(stream.size(), capacity);
}

TEST(MemIOStreamOverflow, DoesNotHappenWhereTheReadBytesMakeRoom) {
    // Growing would exceed 32 bits.
    constexpr unsigned int capacity = 0x56000000; // uses no physical memory: nothing writes to it
    MemIOStream stream(capacity);
    fill(stream, 20, 0);
    unsigned char* out = nullptr;
    stream.getWriteBuffer(out, capacity);
    EXPECT_EQ(stream.size(), capacity);
    EXPECT_EQ(stream.capacity(), capacity);
}

TEST(MemIOStreamOverflow, NamesTheLimit) {
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
    // With a payload of 0xFFFFFFF8 bytes or more, the record's size does not fit 32 bits.
    for (unsigned int const n : {0xFFFFFFFFU, 0xFFFFFFFEU, 0xFFFFFFF9U, 0xFFFFFFF8U}) {
        object.announced = n;
        EXPECT_THROW(filled.write(object), std::length_error) << n;
        EXPECT_THROW(empty.write(object), std::length_error) << n;
    }
    // These records fit 32 bits, but not with the unread bytes or the doubled capacity added.
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

} // namespace
