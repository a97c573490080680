// The binary form of the memory stream.

#include "misc/zntl_Exception.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

using namespace test;
using znsl::MemIOStream;

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

TEST(MemIOStreamBinaryForm, IsReadWhateverTheGivenLength) {
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

TEST(MemIOStreamBinaryForm, IsRefusedWhenItsRecordsAreNotWhole) {
    MemIOStream stream;
    Bytes const bytes = fromHex("09 00 00 00 01 02 03 04 05 06 07 08 09");
    EXPECT_TRUE(
        test::throws<zntl::Exception>(invalidMemory, [&] { stream.fromBin(bytes.data(), 13); }));
    EXPECT_EQ(toHex(content(stream)), "01 02 03 04 05 06 07 08 09");
}

TEST(MemIOStreamBinaryForm, LeavesTheStreamEmptyOnAllocationFailure) {
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

TEST(MemIOStreamBinaryForm, ReportsTheLengthThatTheStreamReports) {
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
