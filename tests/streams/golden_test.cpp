// Contract: every stored form stays the same, bit for bit. The library writes exactly the bytes of
// the files in tests/golden, and reads the values back from them, on every machine.

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/blob.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "support/bytes.h"
#include "support/temporary_directory.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace std::string_literals;

namespace {

using namespace test;
using znsl::EndOfFile;
using znsl::MemIOStream;
using zntl::Integer;
using zntl::String;
using znvl::Resolution;
using Resolutions = znsl::Set<Resolution>;

std::string goldenPath(std::string const& name) {
    static auto const folder =
        std::filesystem::path(__FILE__).parent_path().parent_path() / "golden";
    return (folder / name).string();
}

Bytes golden(std::string const& name) { return test::readFile(goldenPath(name)); }

Bytes binaryForm(znsl::Serializable const& value) {
    Bytes bytes(value.getBinLength());
    EXPECT_EQ(value.toBin(bytes.data()), bytes.size());
    return bytes;
}

/// The values in the golden files.
class Golden : public testing::Test {
protected:
    Golden() {
        sizes.insert({640, 480});
        sizes.insert({320, 240});
        stream << integer;
        stream.close();
    }

    Integer const integer{-7};
    String const string{"Gate 3"};
    Resolution const resolution{640, 480};
    Resolutions sizes;
    MemIOStream stream;
    Blob const foreign{900, {0x0A, 0x0B, 0x0C}};
    test::TemporaryDirectory directory;
};

class GoldenForm : public Golden {
protected:
    template <class Value>
    static void expectForm(std::string const& name, Value const& value) {
        SCOPED_TRACE(name);
        Bytes const bytes = golden(name);
        EXPECT_EQ(toHex(binaryForm(value)), toHex(bytes));

        Value read;
        EXPECT_EQ(read.fromBin(bytes.data(), static_cast<unsigned int>(bytes.size())),
                  bytes.size());
        EXPECT_EQ(toHex(binaryForm(read)), toHex(bytes));
    }
};

TEST_F(GoldenForm, IsWrittenAndReadBitForBit) {
    expectForm("integer.bin", integer);
    expectForm("string.bin", string);
    expectForm("resolution.bin", resolution);
    expectForm("stream.bin", stream);
    expectForm("set.bin", sizes);
}

class GoldenFile : public Golden {
protected:
    template <class Value>
    void expectFile(std::string const& name, Value const& value) {
        SCOPED_TRACE(name);
        std::string const path = directory / name;
        ASSERT_TRUE(value.toFile(path.c_str()));
        EXPECT_EQ(toHex(test::readFile(path)), toHex(golden(name)));

        Value read;
        ASSERT_TRUE(read.fromFile(goldenPath(name).c_str()));
        ASSERT_TRUE(read.toFile(path.c_str()));
        EXPECT_EQ(toHex(test::readFile(path)), toHex(golden(name)));
    }
};

TEST_F(GoldenFile, IsWrittenAndReadBitForBit) {
    expectFile("end_of_file.typed", EndOfFile());
    expectFile("integer.typed", integer);
    expectFile("resolution.typed", resolution);
    expectFile("stream.typed", stream);
    expectFile("set.typed", sizes);
    expectFile("string.text", String("Gate 3\r\nGr\xC3\xBC\xC3\x9F"
                                     "e\n\0end"s));
}

TEST_F(GoldenFile, OfOneTypeIsNotReadAsAnother) {
    Integer other;
    for (char const* const name : {"end_of_file.typed", "resolution.typed", "stream.typed",
                                   "set.typed", "mixed.stream", "string.text"})
        EXPECT_FALSE(other.fromFile(goldenPath(name).c_str())) << name;
}

class GoldenStream : public Golden {};

TEST_F(GoldenStream, IsSavedBitForBit) {
    MemIOStream mixed;
    mixed << integer << string << resolution << foreign
          << static_cast<znsl::Serializable const&>(stream) << sizes;
    mixed.close();
    ASSERT_TRUE(mixed.save((directory / "mixed").c_str()));
    EXPECT_EQ(toHex(test::readFile(directory / "mixed")), toHex(golden("mixed.stream")));
}

TEST_F(GoldenStream, ReturnsItsObjects) {
    MemIOStream mixed;
    ASSERT_TRUE(mixed.load(goldenPath("mixed.stream").c_str()));
    EXPECT_EQ(mixed.count(), 7U);

    Integer readInteger;
    String readString;
    Resolution readResolution;
    mixed >> readInteger >> readString >> readResolution;
    EXPECT_EQ(readInteger.getValue(), -7);
    EXPECT_EQ(readString, string);
    EXPECT_EQ(readResolution, resolution);

    Blob readForeign(900);
    mixed >> readForeign;
    EXPECT_EQ(readForeign.payload, foreign.payload);

    MemIOStream readStream;
    mixed >> readStream;
    EXPECT_EQ(binaryForm(readStream), binaryForm(stream));
    Integer nested;
    readStream >> nested;
    EXPECT_EQ(nested.getValue(), -7);
    EXPECT_TRUE(readStream.isEOF());

    Resolutions readSizes;
    mixed >> readSizes;
    EXPECT_EQ(readSizes, sizes);

    EXPECT_TRUE(mixed.isEOF());
    EXPECT_EQ(mixed.skip(), 8U);
    EXPECT_TRUE(mixed.isEmpty());
}

} // namespace
