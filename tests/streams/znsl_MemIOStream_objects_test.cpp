// Objects in the memory stream: writing, asking for types, reading, peeking, skipping, and moving
// raw records.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/blob.h"
#include "streams/raw_source.h"
#include "streams/records.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/virtual_time.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using test::append;
using test::Blob;
using test::Bytes;
using test::concat;
using test::content;
using test::endOfFileRecord;
using test::fault;
using test::fill;
using test::fromHex;
using test::record;
using test::recordHeader;
using test::recordOfSize;
using test::throws;
using test::toHex;
using test::View;
using test::writePosition;
using znsl::EndOfFile;
using znsl::MemIOStream;
using zntl::Exception;
using zntl::Integer;

// Writing

TEST(MemIOStreamWrite, AppendsARecord) {
    MemIOStream stream;
    EXPECT_EQ(stream.write(Integer(-2)), 12U);
    EXPECT_EQ(stream.write(zntl::String("abc")), 16U);
    EXPECT_EQ(toHex(content(stream)), "f8 01 00 00 04 00 00 00 fe ff ff ff "
                                      "f5 01 00 00 08 00 00 00 03 00 00 00 61 62 63 00");
    EXPECT_TRUE(stream.validate());
}

TEST(MemIOStreamWrite, OfAnObjectWithoutPayloadAppendsItsHeader) {
    MemIOStream stream;
    EXPECT_EQ(stream.write(Blob(0x1234)), 8U);
    EXPECT_EQ(toHex(content(stream)), "34 12 00 00 00 00 00 00");
}

TEST(MemIOStreamWrite, KeepsTheLow16BitsOfATypeId) {
    MemIOStream stream;
    stream.write(Blob(0xFFFF));
    stream.write(Blob(0x10000));
    stream.write(Blob(0xABCD1234));
    EXPECT_EQ(toHex(content(stream)), "ff ff 00 00 00 00 00 00 "
                                      "00 00 00 00 00 00 00 00 "
                                      "34 12 00 00 00 00 00 00");
}

TEST(MemIOStreamWrite, SetsTheReservedBytesToZeroInAUsedBuffer) {
    MemIOStream stream(12);
    append(stream, record(504, fromHex("ff ff ff ff")));
    stream.skip();
    append(stream, recordHeader(0xFFFF, 0xFFFFFFFF));
    stream.clear();
    stream.write(Blob(9));
    EXPECT_EQ(toHex(content(stream)), "09 00 00 00 00 00 00 00");
}

TEST(MemIOStreamWrite, AsksForTheLengthThenTheTypeThenTheBytes) {
    MemIOStream stream;
    Blob object(9, fromHex("01 02"));
    std::vector<std::string> calls;
    object.onGetBinLength = [&] { calls.emplace_back("getBinLength"); };
    object.onGetTypeId = [&] { calls.emplace_back("getTypeId"); };
    object.onToBin = [&](unsigned char*) { calls.emplace_back("toBin"); };
    stream.write(object);
    EXPECT_EQ(calls, (std::vector<std::string>{"getBinLength", "getTypeId", "toBin"}));
}

TEST(MemIOStreamWrite, LetsTheObjectWriteStraightIntoTheBuffer) {
    MemIOStream stream(100);
    fill(stream, 20, 10);
    Blob object(9, fromHex("01 02"));
    unsigned char* payload = nullptr;
    object.onToBin = [&](unsigned char* out) { payload = out; };
    stream.write(object);
    EXPECT_EQ(payload, writePosition(stream) - 2);
}

TEST(MemIOStreamWrite, GoesByTheAnnouncedLengthAndNotByWhatWasWritten) {
    MemIOStream stream(30);
    Blob object(9, fromHex("01 02"));
    object.announced = 5;
    for (unsigned int const reported : {0U, 2U, 99U}) {
        object.reported = reported;
        EXPECT_EQ(stream.write(object), 13U);
        EXPECT_EQ(stream.size(), 13U);
        EXPECT_TRUE(stream.validate());
        Bytes bytes = content(stream);
        bytes.resize(10);
        EXPECT_EQ(toHex(bytes), "09 00 00 00 05 00 00 00 01 02");
        stream.clear();
    }
}

TEST(MemIOStreamWrite, ReportsWhateverTheObjectThrowsAndLeavesItsHeader) {
    std::vector<std::function<void()>> const failures = {
        [] { throw Exception("deep trouble"); },
        [] { throw std::runtime_error("trouble"); },
        [] { throw 42; },
    };
    for (std::function<void()> const& fail : failures) {
        MemIOStream stream(100);
        fill(stream, 20, 10);
        Blob object(9, fromHex("01 02"));
        object.onToBin = [&](unsigned char* out) {
            out[0] = 0xEE; // what was written before the failure is not content
            fail();
        };
        EXPECT_TRUE(throws<Exception>(fault(262, "couldn't convert object to binary data"),
                                      [&] { stream.write(object); }));
        EXPECT_EQ(content(stream), concat(recordOfSize(505, 10), recordHeader(9, 2)));
        EXPECT_EQ(stream.capacity(), 100U);
        EXPECT_FALSE(stream.validate());
    }
}

TEST(MemIOStreamWrite, PassesOnWhatTheLengthAndTheTypeThrowWithTheContentUnchanged) {
    auto const fail = [] { throw std::runtime_error("trouble"); };
    Blob unmeasured(9);
    unmeasured.onGetBinLength = fail;
    Blob untyped(9);
    untyped.onGetTypeId = fail;
    for (Blob const* const object : {&unmeasured, &untyped}) {
        MemIOStream stream(100);
        fill(stream, 20, 10);
        View const before(stream);
        EXPECT_TRUE(throws<std::runtime_error>("trouble", [&] { stream.write(*object); }));
        EXPECT_EQ(View(stream), before);
    }
}

TEST(MemIOStreamWrite, WithoutMemoryForItsReportLeavesTheHeaderAllTheSame) {
    long const failures = test::failEachAllocation([](test::FailingRun& run) {
        MemIOStream stream(100);
        Blob object(9, fromHex("01 02"));
        object.onToBin = [](unsigned char*) { throw 42; };
        bool reported = false;
        bool const exhausted = run.runsOutOfMemory([&] {
            try {
                stream.write(object);
            } catch (Exception const&) {
                reported = true;
            }
        });
        EXPECT_NE(exhausted, reported);
        EXPECT_EQ(content(stream), recordHeader(9, 2));
    });
    EXPECT_GE(failures, 1);
}

TEST(MemIOStreamWrite, WithoutMemoryNeverAsksForTheBytes) {
    long const failures = test::failEachAllocation([](test::FailingRun& run) {
        MemIOStream stream(100);
        fill(stream, 20, 10);
        View const before(stream);
        Blob object(9, Bytes(90));
        bool written = false;
        object.onToBin = [&](unsigned char*) { written = true; };
        if (run.runsOutOfMemory([&] { stream.write(object); })) {
            EXPECT_FALSE(written);
            EXPECT_EQ(View(stream), before);
        }
    });
    EXPECT_EQ(failures, 1);
}

TEST(MemIOStreamWrite, CanBeChained) {
    MemIOStream stream;
    znsl::OStream& result = stream << Integer(1) << zntl::String("") << Integer(2);
    EXPECT_EQ(&result, static_cast<znsl::OStream*>(&stream));
    EXPECT_EQ(stream.count(), 3U);
    EXPECT_EQ(stream.size(), 12U + 13U + 12U);
}

TEST(MemIOStreamClose, AppendsAnEndOfFileRecord) {
    MemIOStream stream;
    stream.close();
    EXPECT_EQ(toHex(content(stream)), "01 00 00 00 00 00 00 00");
    stream.close();
    EXPECT_EQ(stream.count(), 2U);
    EXPECT_TRUE(stream.validate());
}

TEST(MemIOStreamClose, WithoutMemoryChangesNothing) {
    MemIOStream stream(12);
    fill(stream, 0, 12);
    View const before(stream);
    test::FailingRun run(1);
    EXPECT_TRUE(run.runsOutOfMemory([&] { stream.close(); }));
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamWrite, IsWhatTheOtherWritersCall) {
    class Watched : public MemIOStream {
    public:
        std::vector<unsigned int> written;
        unsigned int write(znsl::Serializable const& object) override {
            written.push_back(object.getTypeId());
            return MemIOStream::write(object);
        }
    };
    Watched stream;
    stream << Integer(1);
    stream.close();
    EXPECT_EQ(stream.written, (std::vector<unsigned int>{504, 1}));
    EXPECT_EQ(stream.size(), 20U);
}

// A stream in a stream

TEST(MemIOStreamWrite, ReportsAnAllocationFailureOfTheObjectLikeAnyOther) {
    MemIOStream stream;
    Blob object(9, fromHex("01 02"));
    object.onToBin = [](unsigned char*) { throw std::bad_alloc(); };
    std::string message;
    try {
        stream.write(object);
    } catch (Exception const& exception) {
        message = exception.what();
    }
    EXPECT_EQ(message, fault(262, "couldn't convert object to binary data"));
    EXPECT_EQ(content(stream), recordHeader(9, 2));
}

TEST(MemIOStreamWrite, ShowsItsHeaderToTheObject) {
    MemIOStream stream;
    Blob object(9, fromHex("01 02"));
    object.onToBin = [&](unsigned char*) { EXPECT_EQ(content(stream), recordHeader(9, 2)); };
    EXPECT_EQ(stream.write(object), 10U);
}

// Objects that use the stream that they are written to

struct Use {
    char const* name;
    void (*use)(MemIOStream& stream);

    friend std::ostream& operator<<(std::ostream& out, Use const& use) { return out << use.name; }
};

void appendMuch(MemIOStream& stream) { stream << Blob(10, Bytes(1000, 0xAB)); }

Use const uses[] = {
    {"Appends", [](MemIOStream& stream) { stream << Integer(5); }},
    {"AppendsMuch", appendMuch},
    {"AppendsUntilItIsRefused",
     [](MemIOStream& stream) {
         for (int i = 0; i < 100; ++i)
             stream << Integer(i);
     }},
    {"AppendsRaw",
     [](MemIOStream& stream) {
         test::RawSource source({recordOfSize(7, 500)});
         stream << source;
     }},
    {"TakesAWriteBuffer",
     [](MemIOStream& stream) {
         unsigned char* out;
         stream.getWriteBuffer(out, 3);
     }},
    {"TakesALargeWriteBuffer",
     [](MemIOStream& stream) {
         unsigned char* out;
         stream.getWriteBuffer(out, 3000);
     }},
    {"GivesBackAWriteBuffer",
     [](MemIOStream& stream) {
         unsigned char const* data;
         unsigned int length;
         stream.getBuffer(data, length);
         auto* p = const_cast<unsigned char*>(data);
         stream.finalizeBuffer(p, 0);
     }},
    {"ChecksForRoom", [](MemIOStream& stream) { stream.checkBuff(5000); }},
    {"Reserves", [](MemIOStream& stream) { stream.reserve(5000); }},
    {"Purges", [](MemIOStream& stream) { stream.purge(); }},
    {"Clears", [](MemIOStream& stream) { stream.clear(); }},
    {"Defrags", [](MemIOStream& stream) { stream.defrag(); }},
    {"Skips", [](MemIOStream& stream) { stream.skip(); }},
    {"SkipsTwice",
     [](MemIOStream& stream) {
         stream.skip();
         stream.skip();
     }},
    {"SetsALargeBuffer",
     [](MemIOStream& stream) {
         Bytes const bytes = recordOfSize(9, 4000);
         stream.setBuffer(bytes.data(), 4000);
     }},
    {"SetsASmallBuffer",
     [](MemIOStream& stream) {
         Bytes const bytes = recordOfSize(9, 10);
         stream.setBuffer(bytes.data(), 10);
     }},
    {"AssignsAnEmptyStream", [](MemIOStream& stream) { stream = MemIOStream(); }},
    {"AssignsAnotherStream", [](MemIOStream& stream) { stream = MemIOStream(7); }},
    {"AssignsItToItself",
     [](MemIOStream& stream) {
         MemIOStream& self = stream;
         stream = self;
     }},
    {"WritesItIntoItself",
     [](MemIOStream& stream) { stream.write(static_cast<MemIOStream const&>(stream)); }},
    {"ReadsItIntoItself",
     [](MemIOStream& stream) {
         try {
             stream.read(stream);
         } catch (Exception const&) { // NOLINT(bugprone-empty-catch): any outcome is right
         }
     }},
};

class UseWhileWriting : public testing::TestWithParam<Use> {};

/// The positions are in the buffer and every byte between them can be read.
void expectUsable(MemIOStream& stream) {
    EXPECT_LE(stream.size(), stream.capacity());
    Bytes const bytes = content(stream);
    EXPECT_EQ(bytes.size(), stream.size());
    stream << Integer(1);
    EXPECT_EQ(stream.size(), bytes.size() + 12);
    stream.purge();
    EXPECT_EQ(stream.capacity(), 0U);
}

// Sanitizers report any access outside the stream's memory.
TEST_P(UseWhileWriting, EndsWithAnExceptionOrAUsableStream) {
    for (bool const whenAsked : {false, true}) {
        for (unsigned int const capacity : {0U, 45U, 46U, 60U, 100U, 10000U}) {
            SCOPED_TRACE(testing::Message() << whenAsked << " at capacity " << capacity);
            MemIOStream stream(capacity);
            fill(stream, 12, 12);
            Blob object(9, Bytes(20, 0xEE));
            bool used = false;
            auto const use = [&] {
                if (!std::exchange(used, true))
                    GetParam().use(stream);
            };
            if (whenAsked)
                object.onGetTypeId = use;
            else
                object.onToBin = [&](unsigned char*) { use(); };
            try {
                EXPECT_EQ(stream.write(object), 28U);
            } catch (std::exception const& exception) {
                EXPECT_STRNE(exception.what(), "");
            }
            EXPECT_TRUE(used);
            expectUsable(stream);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Objects, UseWhileWriting, testing::ValuesIn(uses),
                         [](auto const& test) { return test.param.name; });

TEST(MemIOStreamWrite, LetsNoObjectReplaceTheBuffer) {
    MemIOStream stream(100);
    Blob object(9, fromHex("01 02"));
    object.onToBin = [&](unsigned char*) {
        std::string const refused =
            "znsl::MemIOStream - an object replaces the buffer it is written to";
        EXPECT_TRUE(throws<Exception>(refused, [&] { stream.purge(); }));
        EXPECT_TRUE(throws<Exception>(refused, [&] { stream.reserve(101); }));
        EXPECT_TRUE(throws<Exception>(refused, [&] { appendMuch(stream); }));
        EXPECT_FALSE(stream.load("/proc/self/exe"));
    };
    EXPECT_EQ(stream.write(object), 10U);
    EXPECT_EQ(content(stream), record(9, fromHex("01 02")));
    stream.purge();
}

TEST(MemIOStreamNested, IsAnObjectLikeAnyOther) {
    MemIOStream inner;
    inner << Integer(7);
    MemIOStream outer;
    EXPECT_EQ(outer.write(inner), 24U);
    EXPECT_EQ(toHex(content(outer)), "06 00 00 00 10 00 00 00 0c 00 00 00 "
                                     "f8 01 00 00 04 00 00 00 07 00 00 00");
    MemIOStream copy;
    EXPECT_EQ(outer.read(copy), 24U);
    EXPECT_EQ(content(copy), content(inner));
}

TEST(MemIOStreamNested, InItselfStoresTheContentThatItHadBefore) {
    // With room, with room after compaction, and without.
    for (unsigned int const capacity : {100U, 56U, 32U}) {
        MemIOStream stream(capacity);
        fill(stream, 20, 10);
        EXPECT_EQ(stream.write(stream), 22U);
        Bytes const inner = recordOfSize(505, 10);
        Bytes const expected = concat(inner, record(6, concat(fromHex("0a 00 00 00"), inner)));
        EXPECT_EQ(content(stream), expected) << capacity;
        EXPECT_TRUE(stream.validate());
    }
}

TEST(MemIOStreamNested, EmptyInItselfStoresALengthOfZero) {
    MemIOStream stream;
    EXPECT_EQ(stream.write(stream), 12U);
    EXPECT_EQ(toHex(content(stream)), "06 00 00 00 04 00 00 00 00 00 00 00");
}

TEST(MemIOStreamNested, ReadIntoItselfStaysWithinItsBuffer) {
    MemIOStream stream;
    MemIOStream inner;
    inner << Integer(7);
    stream << static_cast<znsl::Serializable const&>(inner) << Integer(8);
    // The content becomes that of the record, of which the record's size is then consumed.
    EXPECT_EQ(stream.read(stream), 24U);
    EXPECT_TRUE(stream.isEmpty());
}

TEST(MemIOStreamNested, PeekedIntoItselfBecomesTheRecordsContent) {
    MemIOStream stream;
    MemIOStream inner;
    inner << Integer(7);
    stream << static_cast<znsl::Serializable const&>(inner) << Integer(8);
    EXPECT_EQ(stream.peek(stream), 24U);
    EXPECT_EQ(content(stream), content(inner));

    MemIOStream many;
    many << static_cast<znsl::Serializable const&>(inner) << Integer(8);
    znsl::Serializable* const any = nullptr;
    EXPECT_EQ(many.peek(2, &many, any), 0U) << "the second record is gone";
    EXPECT_EQ(content(many), content(inner));
}

template <class Left, class Right, class = void>
struct CanShift : std::false_type {};
template <class Left, class Right>
struct CanShift<Left, Right, std::void_t<decltype(std::declval<Left>() << std::declval<Right>())>>
    : std::true_type {};

TEST(MemIOStreamNested, IsNotShiftedWithoutSayingWhichOperatorIsMeant) {
    // An object to be stored, or a source of raw records: both fit.
    static_assert(!CanShift<MemIOStream&, MemIOStream&>::value);
    static_assert(CanShift<MemIOStream&, MemIOStream const&>::value);
    static_assert(CanShift<MemIOStream&, znsl::Serializable&>::value);
    static_assert(CanShift<MemIOStream&, znsl::IStream&>::value);
}

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

TEST(MemIOStreamRead, HandsOverThePayloadInPlace) {
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

TEST(MemIOStreamRead, GoesByTheRecordAndNotByWhatTheObjectConsumed) {
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

// Reading and peeking share their refusals, each with its own lines.

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
    bool refusesMarkersUnseen; // whatever the stream holds
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
        // In front of a marker with something behind it, and in front of an object.
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

TEST(MemIOStreamReaders, WithoutMemoryForTheirReportsChangeNothing) {
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

TEST(MemIOStreamReaders, NeedNoMemoryOfTheirOwn) {
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

// Reading what is not whole records: trusted, but the positions stay in order.

TEST(MemIOStreamRead, OfARecordThatRunsPastTheContentStopsAtItsEnd) {
    struct Case {
        std::uint32_t length;
        unsigned int expectedResult; // the record's size, as far as 32 bits hold it
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

TEST(MemIOStreamSkip, WithoutMemoryForItsReportChangesNothing) {
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

    // In the middle it is reached.
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

TEST(MemIOStreamPeekMany, PassesOverRecordsForNullPointers) {
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

TEST(MemIOStreamPeekMany, OfFragmentsIsZeroWithoutAReport) {
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

TEST(MemIOStreamPeekMany, RefusesAnObjectOnlyInFrontOfACompleteRecord) {
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
        // A buffer that ends where the content ends, so that sanitizers see a step too far.
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

// Raw records

TEST(MemIOStreamRawRecord, IsNotGivenAway) {
    MemIOStream stream;
    stream << Integer(1);
    View const before(stream);
    unsigned char* data = nullptr;
    unsigned int length = 77;
    EXPECT_TRUE(throws<Exception>(fault(704, "readNextObject() - not implemented"),
                                  [&] { stream.readNextObject(data, length); }));
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 77U);
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamRawRecord, IsAppendedAsItComesAndReleased) {
    long const blocks = test::liveBlocks();
    {
        MemIOStream stream;
        test::RawSource source({recordOfSize(504, 12), fromHex("01 02 03")});
        znsl::OStream& result = stream << source << source;
        EXPECT_EQ(&result, static_cast<znsl::OStream*>(&stream));
        EXPECT_EQ(content(stream), concat(recordOfSize(504, 12), fromHex("01 02 03")));
        EXPECT_TRUE(source.isEmpty());
    }
    EXPECT_EQ(test::liveBlocks(), blocks);
}

TEST(MemIOStreamRawRecord, ThatIsNotThereChangesNothing) {
    MemIOStream stream(20);
    fill(stream, 0, 20);
    View const before(stream);
    test::RawSource none({});
    stream << none;
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamRawRecord, OfNoBytesChangesNothing) {
    MemIOStream stream(20);
    fill(stream, 0, 20);
    View const before(stream);
    long const blocks = test::liveBlocks();
    {
        test::RawSource source({Bytes()});
        stream << source;
    }
    EXPECT_EQ(test::liveBlocks(), blocks);
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamRawRecord, ThatIsOnlyPromisedIsOneOfNoBytes) {
    class Promising : public test::RawSource {
    public:
        Promising() : RawSource({}) {}
        bool readNextObject(unsigned char*& /*data*/, unsigned int& /*length*/) override {
            return true;
        }
    };
    MemIOStream stream(20);
    fill(stream, 0, 12);
    View const before(stream);
    Promising source;
    stream << source;
    EXPECT_EQ(View(stream), before);
}

TEST(MemIOStreamRawRecord, OfAMemoryStreamIsNotToBeHad) {
    MemIOStream stream;
    MemIOStream source;
    source << Integer(1);
    View const before(source);
    std::string const notImplemented = fault(704, "readNextObject() - not implemented");
    EXPECT_TRUE(
        throws<Exception>(notImplemented, [&] { stream << static_cast<znsl::IStream&>(source); }));
    EXPECT_TRUE(
        throws<Exception>(notImplemented, [&] { source << static_cast<znsl::IStream&>(source); }));
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_EQ(View(source), before);
}

TEST(MemIOStreamRawRecord, IsReleasedWhenThereIsNoMemoryForIt) {
    long const failures = test::failEachAllocation([](test::FailingRun& run) {
        MemIOStream stream(12);
        fill(stream, 0, 12);
        View const before(stream);
        test::RawSource source({recordOfSize(504, 12)});
        if (run.runsOutOfMemory([&] { stream << source; })) {
            EXPECT_EQ(View(stream), before);
        }
    });
    EXPECT_EQ(failures, 2) << "the record's own array, and the larger buffer";
}

TEST(MemIOStreamRawRecord, IsObtainedThroughTheStreamsOwnHook) {
    class Hooked : public MemIOStream {
    public:
        bool gives = true;
        znsl::IStream* asked = nullptr;
        bool getNextObject(znsl::IStream& source, unsigned char*& data,
                           unsigned int& length) override {
            asked = &source;
            data = new unsigned char[8]();
            length = 8;
            if (!gives)
                delete[] std::exchange(data, nullptr);
            return gives;
        }
    };
    long const blocks = test::liveBlocks();
    {
        Hooked stream;
        test::RawSource source({});
        stream << source;
        EXPECT_EQ(stream.asked, &source);
        EXPECT_EQ(content(stream), Bytes(8, 0));
        stream.gives = false;
        stream << source;
        EXPECT_EQ(stream.size(), 8U);
    }
    EXPECT_EQ(test::liveBlocks(), blocks);
}

TEST(MemIOStreamRawRecord, ThatTheSourceFailsToGiveChangesNothing) {
    class Broken : public test::RawSource {
    public:
        Broken() : RawSource({}) {}
        bool readNextObject(unsigned char*& /*data*/, unsigned int& /*length*/) override {
            throw std::runtime_error("worn out");
        }
    };
    MemIOStream stream(20);
    fill(stream, 0, 20);
    View const before(stream);
    Broken source;
    EXPECT_TRUE(throws<std::runtime_error>("worn out", [&] { stream << source; }));
    EXPECT_EQ(View(stream), before);
}

// The stream through its interfaces

TEST(MemIOStreamInterfaces, ReachTheSameOperations) {
    MemIOStream stream;
    znsl::OStream& sink = stream;
    znsl::IStream& source = stream;
    sink.write(Integer(1));
    sink << Integer(2);
    sink.flush();
    sink.close();
    EXPECT_FALSE(source.isEmpty());
    EXPECT_EQ(source.getNextType(), 504U);
    Integer number;
    EXPECT_EQ(source.read(number), 12U);
    EXPECT_EQ(number.getValue(), 1);
    source >> number;
    EXPECT_EQ(number.getValue(), 2);
    EXPECT_TRUE(source.isEOF());
    EXPECT_EQ(source.skip(), 8U);
    EXPECT_TRUE(source.isEmpty());
    unsigned char* data = nullptr;
    unsigned int length = 0;
    EXPECT_THROW(source.readNextObject(data, length), Exception);
    test::RawSource raw({endOfFileRecord()});
    sink << raw;
    EXPECT_TRUE(source.isEOF());
}

TEST(MemIOStreamInterfaces, CarryAnObjectOfEveryKind) {
    MemIOStream stream;
    int const numbers[] = {0, 1, -1, 2147483647, -2147483647 - 1};
    for (int const n : numbers)
        stream << Integer(n) << zntl::String(std::string(static_cast<unsigned char>(n), 'x'));
    stream.close();
    Integer number;
    zntl::String text;
    for (int const n : numbers) {
        stream >> number >> text;
        EXPECT_EQ(number.getValue(), n);
        EXPECT_EQ(text, std::string(static_cast<unsigned char>(n), 'x'));
    }
    EXPECT_TRUE(stream.isEOF());
}

} // namespace
