// The buffer of the memory stream: writing into it, walking over its records, replacing its content
// and compacting it.

#include "misc/zntl_Exception.h"
#include "streams/blob.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

using namespace test;
using znsl::MemIOStream;

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

TEST(MemIOStreamWriteBuffer, OfNoBytesReturnsTheWritePosition) {
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

TEST(MemIOStreamFinalize, ReturnsTheUnfilledBytes) {
    struct Case {
        unsigned int reserved;
        unsigned int filled;
        unsigned int expectedSize;
    };
    constexpr Case cases[] = {
        {20, 12, 22},         {20, 19, 29},
        {20, 0, 10},          {20, 20, 30}, // all of it: nothing to release
        {20, 21, 30},                       // more than reserved: a no-op
        {20, 0xFFFFFFFF, 30},               // so far past the end that a 32-bit address wraps
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

TEST(MemIOStreamFinalize, CountsFromTheGivenAddress) {
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

TEST(MemIOStreamFinalize, IgnoresAddressesAfterTheContent) {
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

TEST(MemIOStreamFinalize, NeverReleasesReadBytes) {
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
        // These sizes wrap to small or negative 32-bit numbers. A walk that wrapped would not
        // advance, or would go back.
        {"a record size of 4 GiB", recordHeader(9, 0xFFFFFFF8), false, 1},
        {"a record size of 4 GiB and 7 bytes", recordHeader(9, 0xFFFFFFFF), false, 1},
        {"back to the start", concat(integer, recordHeader(9, 0xFFFFFFEC)), false, 2},
        {"back to the start, with more after it",
         concat(integer, recordHeader(9, 0xFFFFFFEC), integer), false, 2},
        {"the length of the rest, by wrapping", concat(recordHeader(9, 0xFFFFFFFF), Bytes(7, 0)),
         false, 1},
    };
}

TEST(MemIOStreamWalk, ReportsWholeRecordsAndCountsThem) {
    for (WalkCase const& c : walkCases()) {
        for (unsigned int const consumed : {0U, 20U}) {
            SCOPED_TRACE(testing::Message() << c.what << " after " << consumed << " bytes");
            // The buffer has exactly the size of the content, so sanitizers detect out-of-bounds
            // reads.
            MemIOStream stream(consumed + sizeOf(c.bytes));
            fill(stream, consumed, 0);
            append(stream, c.bytes);
            EXPECT_EQ(stream.validate(), c.whole);
            EXPECT_EQ(stream.count(), c.records);
            EXPECT_EQ(content(stream), c.bytes);
        }
    }
}

TEST(MemIOStreamWalk, IgnoresBytesAfterTheContent) {
    MemIOStream stream(100);
    Bytes const records = concat(recordOfSize(504, 12), recordOfSize(505, 20));
    append(stream, records);
    unsigned char* p = writePosition(stream) - records.size();
    stream.finalizeBuffer(p, 12 + 4); // truncates the second record
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
    // In some cases the old and the new position of the remaining bytes overlap.
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

TEST(MemIOStreamSetBuffer, LeavesTheStreamEmptyOnAllocationFailure) {
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

TEST(MemIOStreamSetBuffer, KeepsTheBytesEvenIfItsExceptionCannotBeAllocated) {
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
    // The consumed bytes are fewer than the unread ones, more, or as many.
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

TEST(MemIOStreamDefrag, MovesBackAfterAReadOfContentShorterThanAHeader) {
    /// Reports a record of type 7 even if the content is shorter than a header.
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

} // namespace
