// Skipping records of the memory stream, and looking ahead at several.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/blob.h"
#include "streams/records.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using znsl::EndOfFile;
using znsl::MemIOStream;
using zntl::Exception;
using zntl::Integer;

// Skipping

TEST(MemIOStreamSkip, RemovesAnyRecord) {
    MemIOStream stream;
    append(stream, concat(recordOfSize(504, 12), endOfFileRecord(), recordOfSize(77, 300)));
    EXPECT_EQ(stream.skip(), 12U);
    EXPECT_EQ(stream.skip(), 8U);
    EXPECT_EQ(content(stream), recordOfSize(77, 300));
    EXPECT_EQ(stream.skip(), 300U);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(MemIOStreamSkip, NeedsAWholeHeader) {
    for (unsigned int n = 0; n < 8; ++n) {
        MemIOStream stream(n);
        append(stream, Bytes(n, 0));
        View const before(stream);
        EXPECT_TRUE(throws<Exception>(fault(485, "skip() - no data"), [&] { stream.skip(); }));
        EXPECT_EQ(View(stream), before);
    }
}

TEST(MemIOStreamSkip, ChangesNothingWhenItsExceptionCannotBeAllocated) {
    long const failures = test::failEachAllocation([](test::FailingRun& run) {
        MemIOStream stream(20);
        append(stream, Bytes(7, 0));
        View const before(stream);
        run.runsOutOfMemory([&] {
            try {
                stream.skip();
            } catch (Exception const&) {
            }
        });
        EXPECT_EQ(View(stream), before);
    });
    EXPECT_GE(failures, 1);
}

// Checking and peeking at several records

znsl::Serializable* const anyRecord = nullptr;

TEST(MemIOStreamCheckTypes, ComparesTheNextRecordsWithTheObjects) {
    MemIOStream stream;
    stream << Integer(1) << zntl::String("abc") << Integer(2);
    View const before(stream);
    Integer number(9);
    zntl::String text("kept");
    znsl::Serializable* const asNumber = &number;
    znsl::Serializable* const asText = &text;

    EXPECT_TRUE(stream.checkTypes(1, asNumber));
    EXPECT_TRUE(stream.checkTypes(2, asNumber, asText));
    EXPECT_TRUE(stream.checkTypes(3, asNumber, asText, asNumber));
    EXPECT_FALSE(stream.checkTypes(1, asText));
    EXPECT_FALSE(stream.checkTypes(2, asNumber, asNumber));
    EXPECT_FALSE(stream.checkTypes(3, asNumber, asText, asText));
    EXPECT_FALSE(stream.checkTypes(4, asNumber, asText, asNumber, asNumber));

    EXPECT_EQ(View(stream), before);
    EXPECT_EQ(number.getValue(), 9);
    EXPECT_EQ(text, "kept");
}

TEST(MemIOStreamCheckTypes, TakesANullPointerForARecordOfAnyType) {
    MemIOStream stream;
    stream << Integer(1) << zntl::String("abc") << Integer(2);
    Integer number;
    znsl::Serializable* const asNumber = &number;
    EXPECT_TRUE(stream.checkTypes(1, anyRecord));
    EXPECT_TRUE(stream.checkTypes(3, asNumber, anyRecord, asNumber));
    EXPECT_TRUE(stream.checkTypes(3, anyRecord, anyRecord, anyRecord));
    EXPECT_FALSE(stream.checkTypes(4, anyRecord, anyRecord, anyRecord, anyRecord));
}

TEST(MemIOStreamCheckTypes, FindsAMarkerLikeAnyRecord) {
    MemIOStream stream;
    stream << EndOfFile() << Integer(1);
    EndOfFile marker;
    znsl::Serializable* const asMarker = &marker;
    EXPECT_TRUE(stream.checkTypes(1, asMarker));
    EXPECT_TRUE(stream.checkTypes(2, asMarker, anyRecord));
}

TEST(MemIOStreamCheckTypes, ComparesWholeTypeIds) {
    MemIOStream stream;
    append(stream, record(9, fromHex("ff")));
    Blob wide(0x10009);
    EXPECT_FALSE(stream.checkTypes(1, &wide));
}

TEST(MemIOStreamCheckTypes, RethrowsWhatAnObjectThrows) {
    MemIOStream stream;
    stream << Integer(1);
    Blob thrower(504);
    thrower.onGetTypeId = [] { throw Exception("no type"); };
    EXPECT_TRUE(throws<Exception>("no type", [&] { stream.checkTypes(1, &thrower); }));
}

TEST(MemIOStreamCheckTypes, OfNoRecordsIsTrueOfAnyContentWithAHeader) {
    MemIOStream stream;
    append(stream, recordHeader(9, 0xFFFFFFFF));
    EXPECT_TRUE(stream.checkTypes(0, anyRecord));
}

TEST(MemIOStreamCheckTypes, NeedsAWholeHeaderEvenForNoRecords) {
    for (unsigned int n = 0; n < 8; ++n) {
        MemIOStream stream(n);
        append(stream, Bytes(n, 0));
        View const before(stream);
        for (unsigned int const records : {0U, 1U}) {
            EXPECT_TRUE(throws<Exception>(fault(313, "checkTypes() - no data"),
                                          [&] { stream.checkTypes(records, anyRecord); }));
        }
        EXPECT_EQ(View(stream), before);
    }
}

TEST(MemIOStreamCheckTypes, DoesNotReachALastRecordWithoutPayload) {
    Bytes const integer = recordOfSize(504, 12);
    MemIOStream stream;
    append(stream, endOfFileRecord());
    EXPECT_FALSE(stream.checkTypes(1, anyRecord));
    stream.setBuffer(record(9, fromHex("ff")).data(), 9);
    EXPECT_TRUE(stream.checkTypes(1, anyRecord));

    Bytes const ended = concat(integer, endOfFileRecord());
    stream.setBuffer(ended.data(), 20);
    EXPECT_TRUE(stream.checkTypes(1, anyRecord));
    EXPECT_FALSE(stream.checkTypes(2, anyRecord, anyRecord));

    // A record without payload counts if another record follows it.
    Bytes const continued = concat(endOfFileRecord(), integer);
    stream.setBuffer(continued.data(), 20);
    EXPECT_TRUE(stream.checkTypes(2, anyRecord, anyRecord));
}

TEST(MemIOStreamPeekMany, ReadsTheNextRecordsAndLeavesThem) {
    MemIOStream stream(100);
    fill(stream, 20, 0);
    stream << Integer(1) << zntl::String("abc") << Integer(2);
    View const before(stream);
    Integer first;
    zntl::String second;
    Integer third;
    znsl::Serializable* const a = &first;
    znsl::Serializable* const b = &second;
    znsl::Serializable* const c = &third;
    EXPECT_EQ(stream.peek(1, a), 12U);
    EXPECT_EQ(first.getValue(), 1);
    EXPECT_EQ(stream.peek(2, a, b), 28U);
    EXPECT_EQ(second, "abc");
    EXPECT_EQ(stream.peek(3, a, b, c), 40U);
    EXPECT_EQ(third.getValue(), 2);
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamPeekMany, SkipsRecordsForNullPointers) {
    MemIOStream stream;
    stream << Integer(1) << EndOfFile() << Integer(2);
    Integer number;
    znsl::Serializable* const asNumber = &number;
    EXPECT_EQ(stream.peek(3, anyRecord, anyRecord, asNumber), 32U);
    EXPECT_EQ(number.getValue(), 2);
    EXPECT_EQ(stream.peek(3, anyRecord, anyRecord, anyRecord), 32U);
}

TEST(MemIOStreamPeekMany, OfNoRecordsIsZero) {
    MemIOStream stream;
    EXPECT_EQ(stream.peek(0, anyRecord), 0U);
    stream << Integer(1);
    EXPECT_EQ(stream.peek(0, anyRecord), 0U);
}

TEST(MemIOStreamPeekMany, OfMoreRecordsThanThereAreIsZeroButFillsWhatItCan) {
    MemIOStream stream;
    stream << Integer(1);
    Integer first(8);
    Integer second(9);
    znsl::Serializable* const a = &first;
    znsl::Serializable* const b = &second;
    EXPECT_EQ(stream.peek(2, a, b), 0U);
    EXPECT_EQ(first.getValue(), 1);
    EXPECT_EQ(second.getValue(), 9);
    EXPECT_EQ(stream.size(), 12U);
}

TEST(MemIOStreamPeekMany, OfFragmentsIsZeroWithoutAnException) {
    for (unsigned int n = 0; n <= 8; ++n) {
        MemIOStream stream(n);
        append(stream, Bytes(n, 0));
        EXPECT_EQ(stream.peek(1, anyRecord), 0U) << n;
    }
}

TEST(MemIOStreamPeekMany, DoesNotReachALastRecordWithoutPayload) {
    MemIOStream stream;
    stream << Integer(1) << EndOfFile();
    EXPECT_EQ(stream.peek(2, anyRecord, anyRecord), 0U);
    stream << Integer(2);
    EXPECT_EQ(stream.peek(2, anyRecord, anyRecord), 20U);
    EXPECT_EQ(stream.peek(3, anyRecord, anyRecord, anyRecord), 32U);
}

TEST(MemIOStreamPeekMany, KeepsWhatWasReadBeforeAFailure) {
    MemIOStream stream;
    stream << Integer(1);
    append(stream, concat(record(504, fromHex("01 02 03")), recordOfSize(504, 12)));
    View const before(stream);
    Integer first(7);
    Integer second(8);
    Integer third(9);
    znsl::Serializable* const a = &first;
    znsl::Serializable* const b = &second;
    znsl::Serializable* const c = &third;
    EXPECT_TRUE(throws<Exception>(fault(433, "peek() - znsl::Serializable::fromBin() - Failed!"),
                                  [&] { stream.peek(3, a, b, c); }));
    EXPECT_EQ(first.getValue(), 1);
    EXPECT_EQ(second.getValue(), 8);
    EXPECT_EQ(third.getValue(), 9);

    EndOfFile marker;
    znsl::Serializable* const end = &marker;
    EXPECT_TRUE(throws<Exception>(fault(423, "peek() - trying to read EOF"),
                                  [&] { stream.peek(2, a, end); }));
    zntl::String text;
    znsl::Serializable* const asText = &text;
    EXPECT_TRUE(throws<Exception>(fault(424, "peek() - type mismatch"),
                                  [&] { stream.peek(2, a, asText); }));
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamPeekMany, RefusesAnObjectOnlyBeforeACompleteRecord) {
    MemIOStream stream;
    stream << Integer(1);
    append(stream, recordHeader(504, 5));
    EndOfFile marker;
    znsl::Serializable* const end = &marker;
    EXPECT_EQ(stream.peek(2, anyRecord, end), 0U);
}

TEST(MemIOStreamPeekMany, AndCheckTypesStopAtAnIncompleteRecord) {
    struct Case {
        char const* what;
        Bytes bytes;
    };
    Bytes const payload = fromHex("01 02 03 04");
    Case const cases[] = {
        {"a payload less a byte", concat(recordHeader(504, 5), payload)},
        {"2 GiB less a byte", concat(recordHeader(504, 0x7FFFFFFF), payload)},
        {"2 GiB", concat(recordHeader(504, 0x80000000), payload)},
        {"4 GiB with the header, less a byte", concat(recordHeader(504, 0xFFFFFFF7), payload)},
        {"4 GiB with the header", concat(recordHeader(504, 0xFFFFFFF8), payload)},
        {"back to the start of the content", concat(recordHeader(504, 0xFFFFFFEC), payload)},
        {"4 GiB less a byte", concat(recordHeader(504, 0xFFFFFFFF), payload)},
        {"a byte", Bytes(1, 0)},
        {"a header less a byte", Bytes(7, 0)},
        {"a header", recordHeader(504, 0)},
    };
    for (Case const& c : cases) {
        SCOPED_TRACE(c.what);
        // The buffer has exactly the size of the content, so sanitizers detect out-of-bounds reads.
        MemIOStream stream(static_cast<unsigned int>(12 + c.bytes.size()));
        append(stream, concat(recordOfSize(504, 12), c.bytes));
        View const before(stream);
        EXPECT_TRUE(stream.checkTypes(1, anyRecord));
        EXPECT_EQ(stream.peek(1, anyRecord), 12U);
        EXPECT_FALSE(stream.checkTypes(2, anyRecord, anyRecord));
        EXPECT_EQ(stream.peek(2, anyRecord, anyRecord), 0U);
        EXPECT_EQ(View(stream), before);
    }
}

TEST(MemIOStreamPeekMany, DoesNotAskForTheNextType) {
    class Renaming : public MemIOStream {
    public:
        unsigned int getNextType() const override { return 77; }
    };
    Renaming stream;
    stream << Integer(1);
    Integer number;
    EXPECT_EQ(stream.peek(1, &number), 12U);
    EXPECT_TRUE(stream.checkTypes(1, &number));
}

} // namespace
