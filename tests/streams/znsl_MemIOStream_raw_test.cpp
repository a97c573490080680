// Raw records, and the memory stream through its interfaces.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/raw_source.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace {

using namespace test;
using znsl::MemIOStream;
using zntl::Exception;
using zntl::Integer;

// Raw records

TEST(MemIOStreamRawRecord, CannotBeReadFromAMemoryStream) {
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

TEST(MemIOStreamRawRecord, OfAnEmptySourceChangesNothing) {
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

TEST(MemIOStreamRawRecord, ThatTheSourceDoesNotSetChangesNothing) {
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

TEST(MemIOStreamRawRecord, OfAMemoryStreamIsNotImplemented) {
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

TEST(MemIOStreamRawRecord, IsReleasedOnAllocationFailure) {
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

TEST(MemIOStreamRawRecord, ThatTheSourceFailsToDeliverChangesNothing) {
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
