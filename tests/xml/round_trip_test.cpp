// The storable values round-trip through XML.

#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Set.h"
#include "support/print_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <list>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using zntl::Integer;
using zntl::String;

namespace {

std::mt19937& generator() {
    static std::mt19937 engine(20240229);
    return engine;
}

std::size_t randomBelow(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(generator());
}

/// Returns random text of characters that XML can represent, much of it markup.
String randomText() {
    static std::vector<std::string> const pieces{"&",
                                                 "<",
                                                 ">",
                                                 "'",
                                                 "\"",
                                                 "]]>",
                                                 "&amp;",
                                                 "&lt;",
                                                 "&#65",
                                                 "<a>",
                                                 "</a>",
                                                 "<!--",
                                                 "-->",
                                                 "<![CDATA[",
                                                 "<?",
                                                 "?>",
                                                 " ",
                                                 "\t",
                                                 "\n",
                                                 "x",
                                                 "zntl_String",
                                                 "\x7F",
                                                 "%d",
                                                 "\\",
                                                 "\xC3\xA9",
                                                 "\xE2\x82\xAC",
                                                 "\xEF\xBF\xBD",
                                                 "\xF0\x9F\x98\x80"};
    String text;
    for (std::size_t count = randomBelow(12); count != 0; --count)
        text += pieces[randomBelow(pieces.size())];
    return text;
}

int randomInt() {
    static std::vector<int> const edges{0, 1, -1, INT_MAX, INT_MIN};
    if (randomBelow(4) == 0)
        return edges[randomBelow(edges.size())];
    return std::uniform_int_distribution<int>(INT_MIN, INT_MAX)(generator());
}

/// An Integer with an order, for sets.
class Number : public Integer {
public:
    using Integer::Integer;
    Number() : Integer(0) {}
    bool operator<(Number const& other) const { return getValue() < other.getValue(); }
};

/// A class with a number, a string and a set as members.
class Thing : public znsl::Serializable {
public:
    Integer id{0};
    String label;
    znsl::Set<String> tags;

    bool operator<(Thing const& other) const {
        return id.getValue() != other.id.getValue() ? id.getValue() < other.id.getValue()
                                                    : label < other.label;
    }

    void fillSerializable(std::list<Serializable*>& list,
                          std::map<std::string, Serializable*>& table) const {
        auto* const self = const_cast<Thing*>(this);
        list = {&self->id, &self->label, &self->tags};
        table = {{"id", &self->id}, {"label", &self->label}, {"tags", &self->tags}};
    }

    unsigned int getTypeId() const override { return 302; }
    std::string getTypeName() const override { return "Thing"; }
    std::string toXML() const override { return toXML("Thing"); }
    std::string toXML(char const* name) const override {
        return znsl::Members(*this).toXML(name, place);
    }
    bool fromXML(char const* xml) override { return znsl::Members(*this).fromXML(xml, place); }
    unsigned int getBinLength() const override { return znsl::Members(*this).getBinLength(); }
    unsigned int toBin(unsigned char* out) const override {
        return znsl::Members(*this).toBin(out);
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        return znsl::Members(*this).fromBin(data, length);
    }

private:
    static constexpr znsl::Members::Place place{"tests/Thing", 1, "test::Thing"};
};

Thing randomThing() {
    Thing thing;
    thing.id.setValue(randomInt());
    thing.label = randomText();
    // The set must not be empty: an empty set has no children, so fromXML would return false.
    do {
        thing.tags.insert(randomText());
    } while (randomBelow(3) != 0);
    return thing;
}

template <class Value>
void expectSame(Value const& read, Value const& written) {
    EXPECT_EQ(read.toXML(), written.toXML());
}

void expectSame(String const& read, String const& written) { EXPECT_EQ(read, written); }

template <class Value>
void expectRoundTrip(Value const& written, Value read) {
    for (std::string const& xml : {written.toXML(), written.toXML("other.name-1")}) {
        ASSERT_TRUE(read.fromXML(xml.c_str())) << xml;
        expectSame(read, written);
    }
}

TEST(RoundTrip, OfStringsIsExact) {
    for (int i = 0; i < 2000; ++i)
        expectRoundTrip(randomText(), String("before"));
}

TEST(RoundTrip, OfEveryCharacterThatXmlHoldsIsExact) {
    for (unsigned int code = 1; code <= 0x10FFFF; code += code < 0x10100 ? 1 : 997) {
        bool const isHeld = (code >= 0x20 && (code < 0xD800 || code > 0xDFFF) && code != 0xFFFE &&
                             code != 0xFFFF) ||
                            code == '\t' || code == '\n';
        auto const byte = [](unsigned int bits) { return static_cast<char>(bits); };
        String text;
        if (code < 0x80)
            text = {byte(code)};
        else if (code < 0x800)
            text = {byte(0xC0 | code >> 6), byte(0x80 | (code & 0x3F))};
        else if (code < 0x10000)
            text = {byte(0xE0 | code >> 12), byte(0x80 | (code >> 6 & 0x3F)),
                    byte(0x80 | (code & 0x3F))};
        else
            text = {byte(0xF0 | code >> 18), byte(0x80 | (code >> 12 & 0x3F)),
                    byte(0x80 | (code >> 6 & 0x3F)), byte(0x80 | (code & 0x3F))};
        String read("before");
        bool const isRead = read.fromXML(text.toXML().c_str());
        if (code == '\r') {
            EXPECT_TRUE(isRead);
            EXPECT_EQ(read, "\n") << "XML has only one line end";
        } else {
            ASSERT_EQ(isRead, isHeld) << code;
            ASSERT_EQ(read, isHeld ? text : String("before")) << code;
        }
    }
}

TEST(RoundTrip, OfBytesThatXmlCannotHoldIsRefused) {
    using namespace std::string_literals;
    for (std::string const& bytes : {"a\0b"s, "\0"s, "\x01"s, "\x1F"s, "\x80"s, "\xFF"s, "\xC3"s}) {
        String read("before");
        EXPECT_FALSE(read.fromXML(String(bytes).toXML().c_str()));
        EXPECT_EQ(read, "before");
    }
    String read("before");
    EXPECT_TRUE(read.fromXML(String("a\r\nb\rc").toXML().c_str()));
    EXPECT_EQ(read, "a\nb\nc");
}

TEST(RoundTrip, OfIntegersIsExact) {
    for (int i = 0; i < 500; ++i)
        expectRoundTrip(Integer(randomInt()), Integer(99));
}

TEST(RoundTrip, OfSetsIsExact) {
    for (int i = 0; i < 100; ++i) {
        znsl::Set<Number> numbers;
        znsl::Set<String> texts;
        do {
            numbers.insert(randomInt());
            texts.insert(randomText());
        } while (randomBelow(20) != 0);
        expectRoundTrip(numbers, znsl::Set<Number>());
        expectRoundTrip(texts, znsl::Set<String>());
        znsl::Set<String> read;
        EXPECT_TRUE(read.fromXML(texts.toXML("set", "element").c_str()));
        EXPECT_EQ(std::vector<std::string>(read.begin(), read.end()),
                  std::vector<std::string>(texts.begin(), texts.end()));
    }
}

TEST(RoundTrip, OfClassesWithMembersIsExact) {
    for (int i = 0; i < 500; ++i)
        expectRoundTrip(randomThing(), randomThing());
}

TEST(RoundTrip, OfSetsOfClassesIsExact) {
    for (int i = 0; i < 50; ++i) {
        znsl::Set<Thing> things;
        do {
            things.insert(randomThing());
        } while (randomBelow(10) != 0);
        expectRoundTrip(things, znsl::Set<Thing>());
    }
}

TEST(RoundTrip, OfLongValuesIsExact) {
    String text;
    while (text.size() < 1'000'000)
        text += randomText();
    expectRoundTrip(text, String("before"));

    znsl::Set<String> texts;
    for (int i = 0; i < 20'000; ++i)
        texts.insert(String::fromInteger(i) + randomText());
    expectRoundTrip(texts, znsl::Set<String>());
}

TEST(RoundTrip, OfAnEmptySetLeavesTheOtherAsItWas) {
    znsl::Set<String> read;
    read.insert("before");
    EXPECT_FALSE(read.fromXML(znsl::Set<String>().toXML().c_str()));
    EXPECT_EQ(read.size(), 1U);
}

} // namespace
