// The stored forms of a resolution.

#include "video/znvl_Resolution.h"

#include "misc/zntl_Exception.h"
#include "support/bytes.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <climits>
#include <list>
#include <map>
#include <string>

using namespace test;
using znsl::Serializable;
using znvl::Resolution;

namespace {

using List = std::list<Serializable*>;
using Table = std::map<std::string, Serializable*>;

std::string const noWriting = "../../../../../libraries/src/video/znvl_Resolution (26): "
                              "znvl::Resolution::toXML() - Not implemented";
std::string const noReading = "../../../../../libraries/src/video/znvl_Resolution (26): "
                              "znvl::Resolution::fromXML() - Not implemented";

char const* const noText = nullptr;

TEST(ResolutionMembers, AreWidthAndHeightAfterTheListedOnes) {
    Resolution const resolution(640, 480);
    zntl::Integer other(7);
    List list{&other};
    Table table{{"other", &other}};
    resolution.fillSerializable(list, table);
    EXPECT_EQ(list, (List{&other, const_cast<zntl::Integer*>(&resolution.width),
                          const_cast<zntl::Integer*>(&resolution.height)}));
    EXPECT_EQ(table, (Table{{"other", &other}})) << "no member has a name for XML";
}

// Binary form

struct BinaryForm {
    int width;
    int height;
    char const* bytes;
};

BinaryForm const forms[] = {
    {640, 480, "80 02 00 00 e0 01 00 00"},
    {0, 0, "00 00 00 00 00 00 00 00"},
    {-1, 5, "ff ff ff ff 05 00 00 00"},
    {INT_MIN, INT_MAX, "00 00 00 80 ff ff ff 7f"},
    {0x01020304, 0x05060708, "04 03 02 01 08 07 06 05"},
};

TEST(ResolutionBinaryForm, IsWidthAndHeight) {
    for (BinaryForm const& row : forms) {
        for (std::string const& name : {std::string(), std::string(100, 'n')}) {
            Resolution resolution(row.width, row.height);
            resolution.name = name;
            EXPECT_EQ(resolution.getBinLength(), 8U);
            Bytes out(10, 0xEE);
            EXPECT_EQ(resolution.toBin(out.data() + 1), 8U) << "unaligned";
            EXPECT_EQ(toHex(out), std::string("ee ") + row.bytes + " ee");
        }
    }
}

TEST(ResolutionFromBin, ReadsEightBytesAndKeepsTheName) {
    for (BinaryForm const& row : forms) {
        Bytes const data = fromHex(std::string("ee ") + row.bytes + " 01 02 03 04");
        for (unsigned int const length : {8U, 9U, 12U}) {
            Resolution resolution(1, 2);
            resolution.name = "kept";
            EXPECT_EQ(resolution.fromBin(data.data() + 1, length), 8U) << "unaligned";
            EXPECT_EQ(resolution, Resolution(row.width, row.height));
            EXPECT_EQ(resolution.name, "kept");
        }
    }
}

// Contract: a failure does not restore the width, which is read before the height.
TEST(ResolutionFromBin, OfTooFewBytesThrowsAndKeepsWhatItRead) {
    Bytes const data = fromHex("80 02 00 00 e0 01 00 00");
    for (unsigned int length = 0; length < 8; ++length) {
        Bytes const exact(data.begin(),
                          data.begin() + length); // sanitizers detect out-of-bounds reads
        Resolution resolution(1, 2);
        resolution.name = "kept";
        EXPECT_TRUE(test::throws<zntl::Exception>("znsl::Serializable::fromBin() - Failed!", [&] {
            resolution.fromBin(exact.data(), length);
        })) << length;
        EXPECT_EQ(resolution, length < 4 ? Resolution(1, 2) : Resolution(640, 2)) << length;
        EXPECT_EQ(resolution.name, "kept");
    }
}

TEST(ResolutionBinaryForm, HasATypedFile) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "resolution";
    ASSERT_TRUE(Resolution(640, 480).toFile(path.c_str()));
    EXPECT_EQ(toHex(test::readFile(path)), "2f 03 08 00 00 00 80 02 00 00 e0 01 00 00");
    Resolution read;
    EXPECT_TRUE(read.fromFile(path.c_str()));
    EXPECT_EQ(read, Resolution(640, 480));
}

TEST(ResolutionBinaryForm, DoesNotAllocate) {
    EXPECT_EQ(test::failEachAllocationOf([] {
                  unsigned char bytes[8];
                  Resolution resolution(640, 480);
                  resolution.getBinLength();
                  resolution.toBin(bytes);
                  resolution.fromBin(bytes, sizeof bytes);
              }),
              0);
}

// XML form

TEST(ResolutionXml, CannotBeWritten) {
    Resolution const resolution(640, 480);
    EXPECT_TRUE(test::throws<zntl::Exception>(noWriting, [&] { resolution.toXML(); }));
    for (char const* const element : {"Resolution", "", noText})
        EXPECT_TRUE(test::throws<zntl::Exception>(noWriting, [&] { resolution.toXML(element); }));
}

TEST(ResolutionXml, CannotBeRead) {
    Resolution resolution(640, 480);
    for (char const* const xml :
         {"<Resolution><width>1</width><height>2</height></Resolution>", "", noText})
        EXPECT_TRUE(test::throws<zntl::Exception>(noReading, [&] { resolution.fromXML(xml); }));
    EXPECT_EQ(resolution, Resolution(640, 480));
}

/// Expects the operation to throw std::bad_alloc or zntl::Exception, and to leak nothing.
template <class Operation>
void expectRefusalWithoutLeaks(Operation operation) {
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        bool refused = false;
        bool const outOfMemory = run.runsOutOfMemory([&] {
            try {
                operation();
            } catch (zntl::Exception const&) {
                refused = true;
            }
        });
        EXPECT_EQ(outOfMemory, run.happened());
        EXPECT_NE(refused, outOfMemory);
    });
    EXPECT_GT(failures, 0);
}

TEST(ResolutionXml, RefusesWithoutLeaks) {
    Resolution resolution(640, 480);
    expectRefusalWithoutLeaks([&] { resolution.toXML(); });
    expectRefusalWithoutLeaks([&] { resolution.fromXML(""); });
    EXPECT_EQ(resolution, Resolution(640, 480));
}

TEST(ResolutionXml, WithoutANameUsesTheFormWithAName) {
    class Subclass : public Resolution {
    public:
        std::string getTypeName() const override { return "Subclass"; }
        using Resolution::toXML;
        std::string toXML(char const* element) const override {
            return std::string("override of ") + element;
        }
    };
    EXPECT_EQ(Subclass().toXML(), "override of Resolution");
}

// Subclasses with other members

/// Lists the resolution's name as a third member, and defines XML names for all members.
class Labelled : public Resolution {
public:
    using Resolution::Resolution;
    void fillSerializable(List& list, Table& table) const override {
        Resolution::fillSerializable(list, table);
        list.push_back(const_cast<zntl::String*>(&name));
        table["w"] = const_cast<zntl::Integer*>(&width);
        table["h"] = const_cast<zntl::Integer*>(&height);
        table["n"] = const_cast<zntl::String*>(&name);
    }
};

TEST(ResolutionSubclass, HasTheBinaryFormOfItsOwnListing) {
    Labelled resolution(640, 480);
    resolution.name = "VGA";
    EXPECT_EQ(resolution.getBinLength(), 16U);
    Bytes out(16);
    EXPECT_EQ(resolution.toBin(out.data()), 16U);
    EXPECT_EQ(toHex(out), "80 02 00 00 e0 01 00 00 03 00 00 00 56 47 41 00");

    Labelled read;
    EXPECT_EQ(read.fromBin(out.data(), 16), 16U);
    EXPECT_EQ(read, Resolution(640, 480));
    EXPECT_EQ(read.name, "VGA");
}

TEST(ResolutionSubclass, HasTheXmlFormOfItsNames) {
    Labelled resolution(640, 480);
    resolution.name = "V<A";
    EXPECT_EQ(resolution.toXML(), "<Resolution><h>480</h><n>V&lt;A</n><w>640</w></Resolution>");
    EXPECT_EQ(resolution.toXML("r"), "<r><h>480</h><n>V&lt;A</n><w>640</w></r>");
    EXPECT_EQ(resolution.toXML(noText), "");
    EXPECT_FALSE(resolution.fromXML("<r><w>1</w></r>")) << "needs a parser";
    EXPECT_EQ(resolution, Resolution(640, 480));
}

TEST(ResolutionSubclass, WithTheSameListingHasTheSameForms) {
    class Subclass : public Resolution {
    public:
        using Resolution::Resolution;
    };
    Subclass resolution(640, 480);
    EXPECT_EQ(resolution.getBinLength(), 8U);
    Bytes out(8);
    EXPECT_EQ(resolution.toBin(out.data()), 8U);
    EXPECT_EQ(toHex(out), "80 02 00 00 e0 01 00 00");
    Subclass read;
    EXPECT_EQ(read.fromBin(out.data(), 8), 8U);
    EXPECT_EQ(read, Resolution(640, 480));
    EXPECT_TRUE(test::throws<zntl::Exception>(noWriting, [&] { resolution.toXML(); }));
}

TEST(ResolutionSubclass, WithFewerNamesThanMembersHasNoXmlForm) {
    class Subclass : public Resolution {
    public:
        void fillSerializable(List& list, Table& table) const override {
            Resolution::fillSerializable(list, table);
            table["w"] = list.front();
        }
    };
    EXPECT_TRUE(test::throws<zntl::Exception>(noWriting, [] { Subclass().toXML("r"); }));
    EXPECT_TRUE(test::throws<zntl::Exception>(noReading, [] { Subclass().fromXML("<r/>"); }));
}

} // namespace
