// Reading objects from the memory stream.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/blob.h"
#include "streams/records.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/virtual_time.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace test;
using znsl::EndOfFile;
using znsl::MemIOStream;
using zntl::Exception;
using zntl::Integer;

// The next type

TEST(MemIOStreamGetNextType, IsThatOfTheRecordAtTheReadPosition) {
    MemIOStream stream;
    stream << Integer(1) << Blob(0xFFFE) << EndOfFile();
    EXPECT_EQ(stream.getNextType(), 504U);
    stream.skip();
    EXPECT_EQ(stream.getNextType(), 0xFFFEU);
    stream.skip();
    EXPECT_EQ(stream.getNextType(), 1U);
}

TEST(MemIOStreamGetNextType, IsOneForAnEmptyStream) {
    EXPECT_EQ(MemIOStream().getNextType(), 1U);
    MemIOStream consumed(100);
    fill(consumed, 60, 0);
    EXPECT_EQ(consumed.getNextType(), 1U);
}

TEST(MemIOStreamGetNextType, NeedsAWholeHeader) {
    for (unsigned int n = 1; n < 8; ++n) {
        MemIOStream stream(n);
        append(stream, Bytes(n, 1));
        View const before(stream);
        EXPECT_TRUE(throws<Exception>(fault(294, "getNextType() - no data"),
                                      [&] { stream.getNextType(); }));
        EXPECT_EQ(View(stream), before);
    }
    MemIOStream stream(8);
    append(stream, recordHeader(504, 4));
    EXPECT_EQ(stream.getNextType(), 504U);
}

TEST(MemIOStreamIsEOF, IsTrueForAMarkerAndFalseWithoutData) {
    MemIOStream stream;
    EXPECT_FALSE(stream.isEOF());
    stream.close();
    EXPECT_TRUE(stream.isEOF());
    stream.skip();
    EXPECT_FALSE(stream.isEOF());
    stream << Integer(1);
    EXPECT_FALSE(stream.isEOF());
}

TEST(MemIOStreamIsEOF, AsksTheStreamForItsStateAndItsNextType) {
    class Liar : public MemIOStream {
    public:
        bool isEmpty() const override { return false; }
        unsigned int getNextType() const override { return 1; }
    };
    EXPECT_TRUE(Liar().isEOF());
}

TEST(MemIOStreamWait, AsksTheStreamWhetherItIsEmpty) {
    class Filling : public MemIOStream {
    public:
        mutable int asked = 0;
        bool isEmpty() const override { return ++asked < 3; }
    };
    test::VirtualTime const time;
    Filling const stream;
    EXPECT_TRUE(stream.wait(10));
    EXPECT_EQ(stream.asked, 3);
    EXPECT_EQ(time.sleeps().size(), 2U);
    EXPECT_FALSE(MemIOStream().wait(3));
}

// Reading

TEST(MemIOStreamRead, TakesRecordsInTheirOrder) {
    MemIOStream stream;
    stream << Integer(-7) << zntl::String("abc") << Blob(9) << Integer(8);
    Integer number;
    zntl::String text;
    Blob blob(9, fromHex("ff"));
    EXPECT_EQ(stream.read(number), 12U);
    EXPECT_EQ(number.getValue(), -7);
    EXPECT_EQ(stream.read(text), 16U);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(stream.read(blob), 8U);
    EXPECT_EQ(blob.payload, Bytes());
    EXPECT_EQ(stream.read(number), 12U);
    EXPECT_EQ(number.getValue(), 8);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(MemIOStreamRead, CanBeChained) {
    MemIOStream stream;
    stream << Integer(1) << Integer(2);
    Integer a;
    Integer b;
    znsl::IStream& result = stream >> a >> b;
    EXPECT_EQ(&result, static_cast<znsl::IStream*>(&stream));
    EXPECT_EQ(a.getValue(), 1);
    EXPECT_EQ(b.getValue(), 2);
}

TEST(MemIOStreamRead, IsWhatTheOperatorCalls) {
    class Watched : public MemIOStream {
    public:
        int reads = 0;
        unsigned int read(znsl::Serializable& object) override {
            ++reads;
            return MemIOStream::read(object);
        }
    };
    Watched stream;
    stream << Integer(1) << Integer(2);
    Integer number;
    stream >> number >> number;
    EXPECT_EQ(stream.reads, 2);
}

TEST(MemIOStreamRead, PassesThePayloadInPlace) {
    MemIOStream stream(100);
    fill(stream, 20, 0);
    append(stream, record(9, fromHex("0a 0b 0c")));
    Blob object(9);
    unsigned char const* payload = nullptr;
    unsigned int size = 0;
    object.onFromBin = [&](unsigned char const* data, unsigned int length) {
        payload = data;
        size = length;
    };
    stream.read(object);
    EXPECT_EQ(payload, writePosition(stream) - 3);
    EXPECT_EQ(size, 3U);
}

// A class may read a String even from an empty payload at the end of the buffer.
TEST(MemIOStreamRead, ProvidesANulAfterTheLengthOfAMissingString) {
    MemIOStream stream(8);
    append(stream, recordHeader(9, 0));
    Blob object(9);
    zntl::String text("before");
    object.onFromBin = [&](unsigned char const* data, unsigned int length) {
        text.fromBin(data, length);
    };
    stream.read(object);
    EXPECT_EQ(text, "");
}

TEST(MemIOStreamRead, RemovesTheRecordWhateverTheObjectConsumed) {
    for (unsigned int const reported : {0U, 1U, 99U}) {
        MemIOStream stream;
        append(stream, concat(record(9, fromHex("0a 0b")), endOfFileRecord()));
        Blob object(9);
        object.reported = reported;
        EXPECT_EQ(stream.read(object), 10U);
        EXPECT_EQ(content(stream), endOfFileRecord());
    }
}

TEST(MemIOStreamRead, IgnoresTheReservedBytes) {
    MemIOStream stream;
    append(stream, fromHex("f8 01 ff ff 04 00 00 00 07 00 00 00"));
    Integer number;
    EXPECT_EQ(stream.read(number), 12U);
    EXPECT_EQ(number.getValue(), 7);
}

TEST(MemIOStreamRead, NeverMovesTheBuffer) {
    MemIOStream stream(100);
    fill(stream, 20, 0);
    stream << Integer(1) << Integer(2);
    auto const* const second = test::readPosition(stream) + 12;
    Integer number;
    stream.read(number);
    EXPECT_EQ(test::readPosition(stream), second);
    EXPECT_EQ(stream.capacity(), 100U);
}

// Reading and peeking throw the same exceptions, each with its own line numbers.

struct Refusals {
    std::string endOfFile;
    std::string (*mismatch)(unsigned int found, unsigned int expected);
    std::string (*message)(std::string const& text);
    std::string other;
};

struct Reader {
    char const* name;
    std::function<unsigned int(MemIOStream&, znsl::Serializable&)> read;
    Refusals refusals;
    bool refusesMarkersUnseen; // refuses to read a marker without checking the stream's content
};

std::vector<Reader> readers() {
    return {
        {"read",
         [](MemIOStream& stream, znsl::Serializable& object) { return stream.read(object); },
         {fault(340, "read() - trying to read EOF"),
          [](unsigned int, unsigned int) { return fault(341, "read() - type mismatch"); },
          [](std::string const& text) { return fault(354, "read() - " + text); },
          fault(359, "read() - could not read object")},
         true},
        {"operator>>",
         [](MemIOStream& stream, znsl::Serializable& object) {
             unsigned int const before = stream.size();
             stream >> object;
             return before - stream.size();
         },
         {fault(340, "read() - trying to read EOF"),
          [](unsigned int, unsigned int) { return fault(341, "read() - type mismatch"); },
          [](std::string const& text) { return fault(354, "read() - " + text); },
          fault(359, "read() - could not read object")},
         true},
        {"peek",
         [](MemIOStream& stream, znsl::Serializable& object) { return stream.peek(object); },
         {fault(374, "peek() - trying to read EOF"),
          [](unsigned int found, unsigned int expected) {
              return fault(376, "peek() - type mismatch " + std::to_string(found) +
                                    " != " + std::to_string(expected));
          },
          [](std::string const& text) { return fault(389, "peek() - " + text); },
          fault(394, "peek() - could not read object")},
         true},
        {"peek for one of many",
         [](MemIOStream& stream, znsl::Serializable& object) { return stream.peek(1, &object); },
         {fault(423, "peek() - trying to read EOF"),
          [](unsigned int, unsigned int) { return fault(424, "peek() - type mismatch"); },
          [](std::string const& text) { return fault(433, "peek() - " + text); },
          fault(438, "peek() - could not read object")},
         false},
    };
}

TEST(MemIOStreamReaders, RefuseToReadAnEndOfFileMarker) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        EndOfFile marker;
        // The next record is a marker, or another object.
        for (Bytes const& bytes :
             {concat(endOfFileRecord(), recordOfSize(504, 12)), recordOfSize(504, 12)}) {
            MemIOStream stream;
            append(stream, bytes);
            View const before(stream);
            EXPECT_TRUE(
                throws<Exception>(reader.refusals.endOfFile, [&] { reader.read(stream, marker); }));
            EXPECT_EQ(View(stream), before);
        }
        if (reader.refusesMarkersUnseen) {
            MemIOStream empty;
            EXPECT_TRUE(
                throws<Exception>(reader.refusals.endOfFile, [&] { reader.read(empty, marker); }));
            MemIOStream fragment;
            append(fragment, Bytes(5, 0));
            EXPECT_TRUE(throws<Exception>(reader.refusals.endOfFile,
                                          [&] { reader.read(fragment, marker); }));
        }
    }
}

TEST(MemIOStreamReaders, RefuseAnotherType) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        MemIOStream stream;
        append(stream, record(5, fromHex("ff")));
        View const before(stream);
        Blob object(6);
        bool touched = false;
        object.onFromBin = [&](unsigned char const*, unsigned int) { touched = true; };
        EXPECT_TRUE(throws<Exception>(reader.refusals.mismatch(5, 6),
                                      [&] { reader.read(stream, object); }));
        EXPECT_FALSE(touched);
        EXPECT_EQ(View(stream), before);
    }
}

TEST(MemIOStreamReaders, NeverFindATypeIdBeyond16Bits) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        MemIOStream stream;
        Blob object(0x10005, fromHex("ff"));
        stream.write(object);
        EXPECT_TRUE(throws<Exception>(reader.refusals.mismatch(5, 0x10005),
                                      [&] { reader.read(stream, object); }));
    }
}

TEST(MemIOStreamReaders, PassOnTheMessageOfALibraryException) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        for (std::string const text :
             {"znsl::Serializable::fromBin() - Failed!", "100% %s %n", ""}) {
            MemIOStream stream;
            append(stream, record(9, fromHex("ff")));
            View const before(stream);
            Blob object(9);
            object.onFromBin = [&](unsigned char const*, unsigned int) { throw Exception(text); };
            EXPECT_TRUE(throws<Exception>(reader.refusals.message(text),
                                          [&] { reader.read(stream, object); }));
            EXPECT_EQ(View(stream), before);
        }
    }
}

TEST(MemIOStreamReaders, ReportALibraryExceptionWithoutAMessage) {
    class Silent : public Exception {
    public:
        Silent() : Exception("unused") {}
        char const* what() const noexcept override { return nullptr; }
    };
    for (Reader const& reader : readers()) {
        MemIOStream stream;
        append(stream, record(9, fromHex("01 02")));
        Blob object(9);
        object.onFromBin = [](unsigned char const*, unsigned int) { throw Silent(); };
        EXPECT_TRUE(throws<Exception>(reader.refusals.message("(null)"),
                                      [&] { reader.read(stream, object); }));
    }
}

TEST(MemIOStreamReaders, ReportAnObjectThatDoesNotAcceptItsPayload) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        MemIOStream stream;
        append(stream, record(504, fromHex("01 02 03")));
        View const before(stream);
        Integer number(5);
        EXPECT_TRUE(
            throws<Exception>(reader.refusals.message("znsl::Serializable::fromBin() - Failed!"),
                              [&] { reader.read(stream, number); }));
        EXPECT_EQ(number.getValue(), 5);
        EXPECT_EQ(View(stream), before);
    }
}

TEST(MemIOStreamReaders, ReportAnyOtherExceptionWithoutItsMessage) {
    std::vector<std::function<void()>> const failures = {
        [] { throw std::runtime_error("trouble"); },
        [] { throw 42; },
    };
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        for (std::function<void()> const& fail : failures) {
            MemIOStream stream;
            append(stream, record(9, fromHex("ff")));
            View const before(stream);
            Blob object(9);
            object.onFromBin = [&](unsigned char const*, unsigned int) { fail(); };
            EXPECT_TRUE(
                throws<Exception>(reader.refusals.other, [&] { reader.read(stream, object); }));
            EXPECT_EQ(View(stream), before);
        }
    }
}

TEST(MemIOStreamReaders, KeepTheRecordForAnotherTry) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        MemIOStream stream;
        append(stream, record(9, fromHex("0a 0b")));
        Blob object(9);
        object.onFromBin = [](unsigned char const*, unsigned int) { throw 42; };
        EXPECT_THROW(reader.read(stream, object), Exception);
        object.onFromBin = [](unsigned char const*, unsigned int) {};
        EXPECT_EQ(reader.read(stream, object), 10U);
        EXPECT_EQ(object.payload, fromHex("0a 0b"));
    }
}

TEST(MemIOStreamReaders, ChangeNothingWhenTheirExceptionsCannotBeAllocated) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        for (unsigned int const typeId : {1U, 8U, 9U}) {
            long const failures = test::failEachAllocation([&](test::FailingRun& run) {
                MemIOStream stream;
                append(stream, record(9, fromHex("ff")));
                View const before(stream);
                Blob object(typeId);
                object.onFromBin = [](unsigned char const*, unsigned int) { throw 42; };
                bool reported = false;
                bool const exhausted = run.runsOutOfMemory([&] {
                    try {
                        reader.read(stream, object);
                    } catch (Exception const&) {
                        reported = true;
                    }
                });
                EXPECT_NE(exhausted, reported);
                EXPECT_EQ(View(stream), before);
            });
            EXPECT_GE(failures, 1);
        }
    }
}

TEST(MemIOStreamReaders, DoNotAllocate) {
    for (Reader const& reader : readers()) {
        SCOPED_TRACE(reader.name);
        MemIOStream stream;
        stream << Integer(7);
        Integer number;
        test::FailingRun noMemory(1);
        EXPECT_FALSE(noMemory.runsOutOfMemory([&] { reader.read(stream, number); }));
        EXPECT_EQ(number.getValue(), 7);
    }
}

TEST(MemIOStreamRead, OfAnEmptyStreamIsATypeMismatch) {
    MemIOStream stream;
    Integer number;
    EXPECT_TRUE(
        throws<Exception>(fault(341, "read() - type mismatch"), [&] { stream.read(number); }));
    EXPECT_TRUE(throws<Exception>(fault(376, "peek() - type mismatch 1 != 504"),
                                  [&] { stream.peek(number); }));
}

TEST(MemIOStreamRead, OfAFragmentFindsNoType) {
    MemIOStream stream;
    append(stream, Bytes(7, 0));
    View const before(stream);
    Integer number;
    std::string const noData = fault(294, "getNextType() - no data");
    EXPECT_TRUE(throws<Exception>(noData, [&] { stream.read(number); }));
    EXPECT_TRUE(throws<Exception>(noData, [&] { stream.peek(number); }));
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamRead, ComparesWithTheTypeThatTheStreamNames) {
    class Renaming : public MemIOStream {
    public:
        unsigned int getNextType() const override { return 0x10009; }
    };
    Renaming stream;
    append(stream, record(9, fromHex("ff")));
    Blob narrow(9);
    EXPECT_TRUE(
        throws<Exception>(fault(341, "read() - type mismatch"), [&] { stream.read(narrow); }));
    EXPECT_TRUE(throws<Exception>(fault(376, "peek() - type mismatch 65545 != 9"),
                                  [&] { stream.peek(narrow); }));
    Blob wide(0x10009);
    EXPECT_EQ(stream.peek(wide), 9U);
    EXPECT_EQ(stream.read(wide), 9U);
}

TEST(MemIOStreamRead, PassesOnWhatTheNextTypeThrows) {
    class Failing : public MemIOStream {
    public:
        unsigned int getNextType() const override { throw std::runtime_error("trouble"); }
    };
    Failing stream;
    append(stream, record(504, Bytes(4, 0)));
    Integer number;
    EXPECT_TRUE(throws<std::runtime_error>("trouble", [&] { stream.read(number); }));
    EXPECT_TRUE(throws<std::runtime_error>("trouble", [&] { stream.peek(number); }));
}

// Reading a truncated record: the object reads the bytes that are present, and the read position
// stays within the content.

TEST(MemIOStreamRead, OfARecordThatRunsPastTheContentStopsAtItsEnd) {
    struct Case {
        std::uint32_t length;
        unsigned int expectedResult; // the record's size, truncated to 32 bits
    };
    for (Case const c :
         {Case{5, 13}, Case{1000, 1008}, Case{0x7FFFFFFF, 0x80000007}, Case{0xFFFFFFF7, 0xFFFFFFFF},
          Case{0xFFFFFFF8, 0}, Case{0xFFFFFFFB, 3}, Case{0xFFFFFFFF, 7}}) {
        SCOPED_TRACE(c.length);
        MemIOStream stream(32);
        fill(stream, 20, 0);
        append(stream, concat(recordHeader(504, c.length), fromHex("07 00 00 00")));
        Integer number;
        EXPECT_EQ(stream.peek(number), c.expectedResult);
        EXPECT_EQ(stream.size(), 12U);
        EXPECT_EQ(stream.read(number), c.expectedResult);
        EXPECT_EQ(number.getValue(), 7);
        EXPECT_TRUE(stream.isEmpty());
        EXPECT_EQ(stream.size(), 0U);
        EXPECT_EQ(stream.capacity(), 32U);
    }
}

TEST(MemIOStreamRead, OfARecordThatRunsPastTheContentPassesTheBytesThatArePresent) {
    MemIOStream stream(32);
    append(stream, concat(recordHeader(9, 5), fromHex("01 02 03 04")));
    Blob object(9);
    stream.read(object);
    EXPECT_EQ(object.payload, fromHex("01 02 03 04"));
}

TEST(MemIOStreamSkip, OfARecordThatRunsPastTheContentStopsAtItsEnd) {
    struct Case {
        std::uint32_t length;
        unsigned int expectedResult;
    };
    for (Case const c :
         {Case{5, 13}, Case{1000, 1008}, Case{0x7FFFFFFF, 0x80000007}, Case{0xFFFFFFF7, 0xFFFFFFFF},
          Case{0xFFFFFFF8, 0}, Case{0xFFFFFFFB, 3}, Case{0xFFFFFFFF, 7}}) {
        SCOPED_TRACE(c.length);
        MemIOStream stream(32);
        fill(stream, 20, 0);
        append(stream, concat(recordHeader(504, c.length), fromHex("07 00 00 00")));
        EXPECT_EQ(stream.skip(), c.expectedResult);
        EXPECT_TRUE(stream.isEmpty());
        EXPECT_EQ(stream.size(), 0U);
        EXPECT_EQ(stream.capacity(), 32U);
    }
}

} // namespace
