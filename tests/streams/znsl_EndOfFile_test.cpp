#include "streams/znsl_EndOfFile.h"

#include "support/bytes.h"
#include "support/temporary_directory.h"
#include "support/virtual_slot.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using test::fromHex;
using test::toHex;
using znsl::EndOfFile;

TEST(EndOfFile, HasTypeOne) {
    EXPECT_EQ(EndOfFile().getTypeId(), 1U);
    EXPECT_EQ(EndOfFile::typeId, 1U);
}

TEST(EndOfFile, HasATypeName) { EXPECT_EQ(EndOfFile().getTypeName(), "znsl_EndOfFile"); }

TEST(EndOfFile, RendersAsAnEmptyElement) {
    EXPECT_EQ(EndOfFile().toXML(), "<znsl_EndOfFile/>");
    EXPECT_EQ(EndOfFile().toXML("end"), "<end/>");
    EXPECT_EQ(EndOfFile().toXML(""), "</>");
}

TEST(EndOfFile, DoesNotEncodeTheElementName) {
    EXPECT_EQ(EndOfFile().toXML("100%s%n"), "<100%s%n/>");
    EXPECT_EQ(EndOfFile().toXML("a&b"), "<a&b/>");
}

TEST(EndOfFile, HasNoXmlUnderANullName) { EXPECT_EQ(EndOfFile().toXML(nullptr), ""); }

TEST(EndOfFile, RendersThroughTheFormWithAName) {
    class Renamed : public EndOfFile {
    public:
        using EndOfFile::toXML;
        std::string toXML(char const* name) const override { return std::string(name) + "!"; }
    };
    EXPECT_EQ(Renamed().toXML(), "znsl_EndOfFile!");
}

TEST(EndOfFile, AcceptsAnyXml) {
    EndOfFile marker;
    EXPECT_TRUE(marker.fromXML("<znsl_EndOfFile/>"));
    EXPECT_TRUE(marker.fromXML("no markup"));
    EXPECT_TRUE(marker.fromXML(""));
    EXPECT_TRUE(marker.fromXML(nullptr));
}

TEST(EndOfFile, HasNoPayload) {
    EndOfFile marker;
    EXPECT_EQ(marker.getBinLength(), 0U);

    test::Bytes bytes = fromHex("aa bb");
    EXPECT_EQ(marker.toBin(bytes.data()), 0U);
    EXPECT_EQ(toHex(bytes), "aa bb");
    EXPECT_EQ(marker.fromBin(bytes.data(), 2), 0U);

    EXPECT_EQ(marker.toBin(nullptr), 0U);
    EXPECT_EQ(marker.fromBin(nullptr, 0), 0U);
}

TEST(EndOfFile, IsATypedFileWithoutPayload) {
    test::TemporaryDirectory const directory;
    EndOfFile marker;
    ASSERT_TRUE(marker.toFile((directory / "end").c_str()));
    EXPECT_EQ(toHex(test::readFile(directory / "end")), "01 00 00 00 00 00");
    EXPECT_TRUE(marker.fromFile((directory / "end").c_str()));

    test::writeFile(directory / "other", fromHex("02 00 00 00 00 00"));
    EXPECT_FALSE(marker.fromFile((directory / "other").c_str()));
    // An end-of-file marker ignores its payload.
    test::writeFile(directory / "payload", fromHex("01 00 01 00 00 00 ff"));
    EXPECT_FALSE(marker.fromFile((directory / "payload").c_str()));
}

TEST(EndOfFile, AddsNothingToTheContract) {
    static_assert(std::is_base_of_v<znsl::Serializable, EndOfFile>);
    static_assert(sizeof(EndOfFile) == sizeof(znsl::Serializable));
    static_assert(std::is_default_constructible_v<EndOfFile>);
    static_assert(std::is_copy_constructible_v<EndOfFile>);
    EXPECT_EQ(test::virtualSlot(&EndOfFile::getTypeId), 2);
    EXPECT_EQ(test::virtualSlot(&EndOfFile::fromBin), 9);
    EXPECT_EQ(test::virtualSlot(&EndOfFile::fromFile), 11);
}

} // namespace
