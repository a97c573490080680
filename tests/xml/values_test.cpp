// Reading storable values from XML, in a program linked with zn::xml.

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Set.h"
#include "streams/znsl_Struct.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <climits>
#include <list>
#include <map>
#include <string>
#include <vector>

using znsl::Serializable;
using zntl::Integer;
using zntl::String;
using znvl::Resolution;

namespace {

char const* const noText = nullptr;

// Documents that contain no element.
char const* const noElements[] = {"",    "text", "<",       "<>",   "<a",
                                  "<a ", "<a>",  "<a></b>", "</a>", noText};

// Integer

TEST(IntegerFromXml, TakesTheValueOfTheRootElementWhateverItsName) {
    struct {
        char const* xml;
        int value;
    } const rows[] = {
        {"<Integer>-7</Integer>", -7},
        {"<other>42</other>", 42},
        {"<a> \t\n+12abc</a>", 12},
        {"<a>- 1</a>", 0},
        {"<a>0x10</a>", 0},
        {"<a>010</a>", 10},
        {"<a>abc</a>", 0},
        {"<a></a>", 0},
        {"<a/>", 0},
        {"<a>2147483647</a>", INT_MAX},
        {"<a>2147483648</a>", INT_MAX},
        {"<a>-2147483648</a>", INT_MIN},
        {"<a>-2147483649</a>", INT_MIN},
        {"<a>99999999999999999999</a>", INT_MAX},
        {"<a>-99999999999999999999</a>", INT_MIN},
    };
    for (auto const& row : rows) {
        Integer integer(99);
        EXPECT_TRUE(integer.fromXML(row.xml)) << row.xml;
        EXPECT_EQ(integer.getValue(), row.value) << row.xml;
    }
}

TEST(IntegerFromXml, WithoutAnElementIsFalseAndLeavesTheValue) {
    for (char const* const document : noElements) {
        Integer integer(99);
        EXPECT_FALSE(integer.fromXML(document));
        EXPECT_EQ(integer.getValue(), 99);
    }
}

TEST(IntegerFromXml, ReadsWhatToXmlWrote) {
    for (int const value : {0, 1, -1, INT_MAX, INT_MIN}) {
        Integer integer(99);
        EXPECT_TRUE(integer.fromXML(Integer(value).toXML().c_str()));
        EXPECT_EQ(integer.getValue(), value);
    }
}

// String

TEST(StringFromXml, TakesTheValueOfTheRootElementWhateverItsName) {
    struct {
        char const* xml;
        char const* value;
    } const rows[] = {
        {"<zntl_String>abc</zntl_String>", "abc"},
        {"<other> a b </other>", " a b "},
        {"<a>&lt;&amp;&gt;&apos;&quot;</a>", "<&>'\""},
        {"<a/>", ""},
        {"<a></a>", ""},
    };
    for (auto const& row : rows) {
        String text("before");
        EXPECT_TRUE(text.fromXML(row.xml)) << row.xml;
        EXPECT_EQ(text, row.value);
    }
}

TEST(StringFromXml, WithoutAnElementIsFalseAndLeavesTheText) {
    for (char const* const document : noElements) {
        String text("before");
        EXPECT_FALSE(text.fromXML(document));
        EXPECT_EQ(text, "before");
    }
}

TEST(StringFromXml, ReadsWhatToXmlWrote) {
    for (String const& text : {String(), String("abc"), String("a<b & 'c' > \"d\""),
                               String("&lt;&amp;lt;"), String(std::string(1000, '<'))}) {
        String read("before");
        EXPECT_TRUE(read.fromXML(text.toXML().c_str()));
        EXPECT_EQ(read, text);
    }
}

TEST(StringFromXml, MayReadItsOwnCharacters) {
    String text("<a>value</a>");
    EXPECT_TRUE(text.fromXML(text.c_str()));
    EXPECT_EQ(text, "value");
}

// A class with named members

constexpr znsl::Members::Place here{"tests/Size", 1, "test::Size"};

using List = std::list<Serializable*>;
using Table = std::map<std::string, Serializable*>;

/// An element for sets, with two numbers and a string. All members have XML names.
class Size : public Serializable {
public:
    Integer width{0};
    Integer height{0};
    String label;
    bool withoutLabel = false; // if true, the member "label" is a null pointer

    Size() = default;
    Size(int w, int h, char const* text) : width(w), height(h), label(text) {}

    bool operator<(Size const& other) const { return width.getValue() < other.width.getValue(); }

    void fillSerializable(List& list, Table& table) const {
        auto* const self = const_cast<Size*>(this);
        list = {&self->width, &self->height, &self->label};
        table = {{"w", &self->width}, {"h", &self->height}, {"label", &self->label}};
        if (withoutLabel)
            table["label"] = nullptr;
    }

    unsigned int getTypeId() const override { return 301; }
    std::string getTypeName() const override { return "Size"; }
    std::string toXML() const override { return toXML("Size"); }
    std::string toXML(char const* name) const override {
        return znsl::Members(*this).toXML(name, here);
    }
    bool fromXML(char const* xml) override { return znsl::Members(*this).fromXML(xml, here); }
    unsigned int getBinLength() const override { return znsl::Members(*this).getBinLength(); }
    unsigned int toBin(unsigned char* out) const override {
        return znsl::Members(*this).toBin(out);
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        return znsl::Members(*this).fromBin(data, length);
    }
};

template <class Object>
std::string describe(Object const& size) {
    return std::to_string(size.width.getValue()) + "x" + std::to_string(size.height.getValue()) +
           " " + size.label;
}

/// The same class, derived from Struct.
class DescribedSize : public znsl::Struct<DescribedSize> {
public:
    Integer width = 0;
    Integer height = 0;
    String label;

    DescribedSize() = default;
    DescribedSize(int w, int h, char const* text) : width(w), height(h), label(text) {}

    static constexpr auto schema = znsl::schema(
        302, "Size", znsl::member(&DescribedSize::width, "w"),
        znsl::member(&DescribedSize::height, "h"), znsl::member(&DescribedSize::label, "label"));
};

template <class Object>
class MembersFromXml : public testing::Test {};

using ListedAndDescribed = testing::Types<Size, DescribedSize>;
TYPED_TEST_SUITE(MembersFromXml, ListedAndDescribed);

TYPED_TEST(MembersFromXml, PassesEachChildToTheMemberOfItsName) {
    struct {
        char const* xml;
        char const* size;
    } const rows[] = {
        {"<Size><w>640</w><h>480</h><label>VGA</label></Size>", "640x480 VGA"},
        {"<other><label>VGA</label><h>480</h><w>640</w></other>", "640x480 VGA"},
        {"<Size> <w>640</w> and <h a='b'>480</h> </Size>", "640x480 before"},
        {"<Size><h>480</h></Size>", "1x480 before"},
        {"<Size><label/></Size>", "1x2 "},
        {"<Size><w>1</w><w>640</w></Size>", "640x2 before"},
        {"<Size><W>640</W><unknown><w>7</w></unknown><h>480</h></Size>", "1x480 before"},
        {"<Size><unknown/></Size>", "1x2 before"},
    };
    for (auto const& row : rows) {
        TypeParam size(1, 2, "before");
        EXPECT_TRUE(size.fromXML(row.xml)) << row.xml;
        EXPECT_EQ(describe(size), row.size) << row.xml;
    }
}

TEST(ListedMembersFromXml, SkipsNamesWithoutAMember) {
    Size size(1, 2, "before");
    size.withoutLabel = true;
    EXPECT_TRUE(size.fromXML("<Size><label>VGA</label><w>640</w></Size>"));
    EXPECT_EQ(describe(size), "640x2 before");
}

TYPED_TEST(MembersFromXml, WithoutChildrenIsFalseAndLeavesTheMembers) {
    for (char const* const xml : {"<Size/>", "<Size></Size>", "<Size>text</Size>"}) {
        TypeParam size(1, 2, "before");
        EXPECT_FALSE(size.fromXML(xml)) << xml;
        EXPECT_EQ(describe(size), "1x2 before");
    }
    for (char const* const document : noElements) {
        TypeParam size(1, 2, "before");
        EXPECT_FALSE(size.fromXML(document));
        EXPECT_EQ(describe(size), "1x2 before");
    }
}

TYPED_TEST(MembersFromXml, ReadsWhatToXmlWrote) {
    TypeParam const written(640, -480, "a<b & c");
    TypeParam read;
    EXPECT_TRUE(read.fromXML(written.toXML().c_str()));
    EXPECT_EQ(describe(read), describe(written));
}

TEST(ResolutionFromXml, IsRefusedWithAParserToo) {
    Resolution resolution(640, 480);
    EXPECT_THROW(resolution.fromXML("<Resolution><width>1</width></Resolution>"), zntl::Exception);
    EXPECT_EQ(resolution, Resolution(640, 480));
}

// Sets

using Sizes = znsl::Set<Size>;

std::vector<std::string> describe(Sizes const& sizes) {
    std::vector<std::string> all;
    for (Size const& size : sizes)
        all.push_back(describe(size));
    return all;
}

Sizes oldSizes() {
    Sizes sizes;
    sizes.insert(Size(8, 9, "old"));
    return sizes;
}

TEST(SetFromXml, ReplacesTheContentWithTheChildrenOfTheRootElement) {
    znsl::Set<String> texts;
    texts.insert("old");
    EXPECT_TRUE(texts.fromXML("<any><a>two</a> <b>one</b><c/></any>"));
    EXPECT_EQ(std::vector<std::string>(texts.begin(), texts.end()),
              (std::vector<std::string>{"", "one", "two"}));
}

TEST(SetFromXml, DropsDuplicates) {
    Sizes sizes = oldSizes();
    EXPECT_TRUE(sizes.fromXML("<SizeSet><Size><w>1</w><h>2</h></Size><Size><w>1</w><h>3</h></Size>"
                              "</SizeSet>"));
    EXPECT_EQ(describe(sizes), (std::vector<std::string>{"1x2 "}));
}

TEST(SetFromXml, ReadsEveryChildIntoTheSameScratchElement) {
    Sizes sizes;
    EXPECT_TRUE(sizes.fromXML("<s><e><w>1</w><h>2</h><label>x</label></e>"
                              "<e><w>3</w></e>"
                              "<e><w>2</w><label/></e></s>"));
    EXPECT_EQ(describe(sizes), (std::vector<std::string>{"1x2 x", "2x2 ", "3x2 x"}));
}

TEST(SetFromXml, SkipsUnknownChildren) {
    Sizes sizes = oldSizes();
    EXPECT_TRUE(sizes.fromXML("<s><e/><e><w>1</w></e><e>text</e><e><w>2</w></e></s>"));
    EXPECT_EQ(describe(sizes), (std::vector<std::string>{"1x0 ", "2x0 "}));

    sizes = oldSizes();
    EXPECT_TRUE(sizes.fromXML("<s><e/></s>")) << "even if all children are unknown";
    EXPECT_TRUE(sizes.empty());
}

TEST(SetFromXml, WithoutChildrenIsFalseAndLeavesTheSet) {
    for (char const* const xml : {"<s/>", "<s></s>", "<s>text</s>"}) {
        Sizes sizes = oldSizes();
        EXPECT_FALSE(sizes.fromXML(xml)) << xml;
        EXPECT_EQ(describe(sizes), (std::vector<std::string>{"8x9 old"}));
    }
    for (char const* const document : noElements) {
        Sizes sizes = oldSizes();
        EXPECT_FALSE(sizes.fromXML(document));
        EXPECT_EQ(describe(sizes), (std::vector<std::string>{"8x9 old"}));
    }
}

TEST(SetFromXml, ReadsWhatToXmlWrote) {
    Sizes written;
    written.insert(Size(640, 480, "a<b"));
    written.insert(Size(320, 240, ""));
    written.insert(Size(-1, INT_MIN, "c"));
    for (std::string const& xml : {written.toXML(), written.toXML("n"), written.toXML("n", "e")}) {
        Sizes read = oldSizes();
        EXPECT_TRUE(read.fromXML(xml.c_str()));
        EXPECT_EQ(describe(read), describe(written));
    }
}

TEST(SetFromXml, PassesOnWhatAnElementThrows) {
    znsl::Set<Resolution> set;
    set.insert(Resolution(1, 2));
    EXPECT_TRUE(
        test::throws<zntl::Exception>("../../../../../libraries/src/video/znvl_Resolution (26): "
                                      "znvl::Resolution::fromXML() - Not implemented",
                                      [&] { set.fromXML("<s><Resolution/></s>"); }));
    EXPECT_TRUE(set.empty()) << "the set is cleared before the first element is read";
    set.insert(Resolution(1, 2));
    EXPECT_FALSE(set.fromXML("<s/>")) << "fromXML of the elements, which throws, is not called";
    EXPECT_EQ(set.size(), 1U);
}

TEST(FromXml, LeaksNothingOnAllocationFailure) {
    std::string const text(100, 'x');
    std::string const document = "<s><e><w>1</w><label>" + text + "</label></e></s>";
    EXPECT_GT(test::failEachAllocationOf([&] { Sizes().fromXML(document.c_str()); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { Size().fromXML(document.c_str()); }), 0);
    EXPECT_GT(test::failEachAllocation([&](test::FailingRun& run) {
                  String value("before");
                  if (run.runsOutOfMemory([&] { value.fromXML(document.c_str()); })) {
                      EXPECT_EQ(value, "before");
                  }
              }),
              0);
}

} // namespace
