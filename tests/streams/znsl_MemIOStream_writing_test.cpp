// Writing objects to the memory stream, streams among them.

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

using namespace test;
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

TEST(MemIOStreamWrite, MakesRoomBeforeItAsksForTheType) {
    MemIOStream stream;
    Blob object(9, fromHex("01 02"));
    unsigned int capacity = 0;
    object.onGetTypeId = [&] { capacity = stream.capacity(); };
    stream.write(object);
    EXPECT_EQ(capacity, 10U);
}

TEST(MemIOStreamWrite, StoresTheContentFromBeforeTheCallEvenIfTheTypeIdAppends) {
    MemIOStream stream;
    append(stream, record(504, fromHex("07 00 00 00")));
    Blob object(9, {});
    object.announced = stream.getBinLength();
    object.onGetTypeId = [&] { append(stream, recordOfSize(505, 2000)); };
    object.onToBin = [&](unsigned char* out) { stream.toBin(out); };
    stream.write(object);
    EXPECT_EQ(stream.size(), 12U + 2000U + 24U);
    EXPECT_TRUE(stream.validate());
    Bytes const bytes = content(stream);
    EXPECT_EQ(toHex(Bytes(bytes.end() - 24, bytes.end())),
              "09 00 00 00 10 00 00 00 0c 00 00 00 f8 01 00 00 04 00 00 00 07 00 00 00");
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

TEST(MemIOStreamWrite, UsesTheAnnouncedLengthAndNotTheWrittenOne) {
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
            out[0] = 0xEE; // this byte must not become content, because toBin fails
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

TEST(MemIOStreamWrite, LeavesTheHeaderEvenIfItsExceptionCannotBeAllocated) {
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

TEST(MemIOStreamWrite, NeverAsksForTheBytesOnAllocationFailure) {
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

TEST(MemIOStreamClose, ChangesNothingOnAllocationFailure) {
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

    friend std::ostream& operator<<(std::ostream& out, Use const& row) { return out << row.name; }
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
         } catch (Exception const&) { // NOLINT(bugprone-empty-catch): both outcomes are right
         }
     }},
};

class UseWhileWriting : public testing::TestWithParam<Use> {};

/// Expects that the positions are in the buffer, that the unread bytes can be read, and that the
/// stream still works.
void expectUsable(MemIOStream& stream) {
    EXPECT_LE(stream.size(), stream.capacity());
    Bytes const bytes = content(stream);
    EXPECT_EQ(bytes.size(), stream.size());
    stream << Integer(1);
    EXPECT_EQ(stream.size(), bytes.size() + 12);
    stream.purge();
    EXPECT_EQ(stream.capacity(), 0U);
}

// Sanitizers would detect out-of-bounds accesses.
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

constexpr char const* refused =
    "znsl::MemIOStream - an object replaces the buffer it is written to";

TEST(MemIOStreamWrite, LetsNoObjectReplaceTheBuffer) {
    MemIOStream stream(100);
    Blob object(9, fromHex("01 02"));
    object.onToBin = [&](unsigned char*) {
        EXPECT_TRUE(throws<Exception>(refused, [&] { stream.purge(); }));
        EXPECT_TRUE(throws<Exception>(refused, [&] { stream.reserve(101); }));
        EXPECT_TRUE(throws<Exception>(refused, [&] { appendMuch(stream); }));
        EXPECT_FALSE(stream.load("/proc/self/exe"));
    };
    EXPECT_EQ(stream.write(object), 10U);
    EXPECT_EQ(content(stream), record(9, fromHex("01 02")));
    stream.purge();
}

TEST(MemIOStreamWrite, LetsNoObjectSetALargerContent) {
    MemIOStream stream(100);
    Bytes const large = recordOfSize(7, 101);
    Blob object(9);
    object.onToBin = [&](unsigned char*) {
        EXPECT_TRUE(throws<Exception>(refused, [&] { stream.setBuffer(large.data(), 101); }));
    };
    stream.write(object);
    EXPECT_EQ(stream.capacity(), 100U);
}

// A stream in a stream

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
    // The buffer has enough room, has it after compaction, or must grow.
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
    // The record's content replaces the stream's. Then the record's size, which is larger, is
    // consumed.
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
    EXPECT_EQ(many.peek(2, &many, any), 0U) << "reading the first record replaced the second";
    EXPECT_EQ(content(many), content(inner));
}

template <class Left, class Right, class = void>
struct CanShift : std::false_type {};
template <class Left, class Right>
struct CanShift<Left, Right, std::void_t<decltype(std::declval<Left>() << std::declval<Right>())>>
    : std::true_type {};

TEST(MemIOStreamNested, DoesNotCompileWithAnAmbiguousOperator) {
    // A stream is both an object to be stored and a source of raw records.
    static_assert(!CanShift<MemIOStream&, MemIOStream&>::value);
    static_assert(CanShift<MemIOStream&, MemIOStream const&>::value);
    static_assert(CanShift<MemIOStream&, znsl::Serializable&>::value);
    static_assert(CanShift<MemIOStream&, znsl::IStream&>::value);
}

} // namespace
