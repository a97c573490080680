// The string's construction, comparison, conversion and stored forms. Other files test its
// formatting and text operations.

#include "misc/zntl_String.h"

#include "support/bytes.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"
#include "support/segmentation_fault.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using namespace test;
using zntl::String;

static_assert(std::is_convertible_v<String*, std::string*>, "a public base");
static_assert(std::is_convertible_v<String*, znsl::Serializable*>, "a public base");
static_assert(sizeof(String) == sizeof(std::string) + sizeof(void*), "it adds no data");
static_assert(std::is_convertible_v<char const*, String>);
static_assert(std::is_convertible_v<std::string, String>);

namespace {

char const* const noText = nullptr;
std::string const longText(1000, 'l'); // more than a string holds without an allocation

std::string withNuls(std::string text) {
    for (char& c : text) {
        if (c == '0')
            c = '\0';
    }
    return text;
}

// Construction and assignment

TEST(String, DefaultIsEmpty) { EXPECT_EQ(String(), ""); }

TEST(String, IsAStandardString) {
    String text("abc");
    text += "def";
    std::string const& standard = text;
    EXPECT_EQ(standard, "abcdef");
    EXPECT_EQ(text.substr(1, 2), "bc");
    EXPECT_EQ(String(3, 'x'), "xxx");
}

TEST(String, ConstructionFromCharactersEndsAtTheFirstNul) {
    char const text[] = "ab\0cd";
    EXPECT_EQ(String(text), "ab");
    EXPECT_EQ(String(""), "");
    EXPECT_EQ(String(longText.c_str()), longText);
}

TEST(String, ConstructionFromNullIsEmpty) {
    EXPECT_EQ(String(noText), "");
    EXPECT_EQ(String(nullptr), "");
}

TEST(String, ConstructionFromStringsCopiesEveryCharacter) {
    for (std::string const& text : {std::string(), std::string("a\0b", 3), longText}) {
        String const fromStandard(text);
        EXPECT_EQ(fromStandard, text);
        String const copy(fromStandard);
        EXPECT_EQ(copy, text);
        EXPECT_EQ(fromStandard, text);
        String const moved(String{copy});
        EXPECT_EQ(moved, text);
        EXPECT_EQ(String(std::string(text)), text);
    }
}

TEST(String, AssignmentReplacesTheContentAndReturnsTheObject) {
    for (std::string const& content : {std::string("before"), longText}) {
        for (std::string const& text : {std::string(), std::string("a\0b", 3), longText}) {
            String const other(text);
            String assigned(content);
            EXPECT_EQ(&(assigned = text), &assigned);
            EXPECT_EQ(assigned, text);

            assigned = content;
            EXPECT_EQ(&(assigned = other), &assigned);
            EXPECT_EQ(assigned, text);
            EXPECT_EQ(other, text);

            assigned = content;
            EXPECT_EQ(&(assigned = text.c_str()), &assigned);
            EXPECT_EQ(assigned, text.c_str());

            assigned = content;
            EXPECT_EQ(&(assigned = String(text)), &assigned);
            EXPECT_EQ(assigned, text);

            assigned = content;
            EXPECT_EQ(&(assigned = std::string(text)), &assigned);
            EXPECT_EQ(assigned, text);
        }
    }
}

TEST(String, AssignmentOfNullEmpties) {
    String text("before");
    EXPECT_EQ(&(text = noText), &text);
    EXPECT_EQ(text, "");
    text = "before";
    text = nullptr;
    EXPECT_EQ(text, "");
}

TEST(String, AssignmentOfItsOwnCharacters) {
    String text("abcdef");
    String const& same = text;
    text = same;
    EXPECT_EQ(text, "abcdef");
    text = text.c_str() + 2;
    EXPECT_EQ(text, "cdef");
    text = longText;
    text = text.c_str() + 1;
    EXPECT_EQ(text, longText.substr(1));
}

// Text from the environment

TEST(StringFromEnvVarible, IsTheVariablesValue) {
    ASSERT_EQ(setenv("ZN_TEST_VARIABLE", "a value", 1), 0);
    EXPECT_EQ(String::fromEnvVarible("ZN_TEST_VARIABLE"), "a value");
    ASSERT_EQ(setenv("ZN_TEST_VARIABLE", "", 1), 0);
    EXPECT_EQ(String::fromEnvVarible("ZN_TEST_VARIABLE"), "");
    ASSERT_EQ(setenv("ZN_TEST_VARIABLE", longText.c_str(), 1), 0);
    EXPECT_EQ(String::fromEnvVarible("ZN_TEST_VARIABLE"), longText);
    ASSERT_EQ(unsetenv("ZN_TEST_VARIABLE"), 0);
    EXPECT_EQ(String::fromEnvVarible("ZN_TEST_VARIABLE"), "");
}

TEST(StringFromEnvVarible, NullNameReturnsTheEmptyString) {
    EXPECT_EQ(String::fromEnvVarible(noText), "");
}

// Comparison

int sign(int number) { return (number > 0) - (number < 0); }

TEST(StringICompare, IgnoresLetterCase) {
    struct {
        std::string left;
        std::string right;
        int order;
    } const rows[] = {
        {"", "", 0},
        {"abc", "abc", 0},
        {"abc", "ABC", 0},
        {"720P", "720p", 0},
        {"abc", "abd", -1},
        {"ABD", "abc", 1},
        {"", "a", -1},
        {"a", "", 1},
        {"ab", "abc", -1},
        {"Abc", "aB", 1},
        {"Z", "_", 1},
        {"_", "a", -1},                        // "_" is between the cases in ASCII
        {"\xE9", "z", 1},                      // bytes count as unsigned, on every machine
        {withNuls("a0x"), withNuls("A0y"), 0}, // compared up to the first NUL
        {withNuls("0a"), "", 0},
    };
    for (auto const& row : rows)
        EXPECT_EQ(sign(String(row.left).iCompare(row.right)), row.order)
            << row.left << " and " << row.right;
}

TEST(StringHasPrefix, OnlyAtTheStart) {
    struct {
        std::string text;
        std::string prefix;
        bool result;
    } const rows[] = {
        {"", "", true},
        {"abc", "", true},
        {"abc", "a", true},
        {"abc", "abc", true},
        {"abcabc", "abc", true},
        {"abc", "abcd", false},
        {"", "a", false},
        {"xabc", "abc", false},
        {"aab", "ab", false},
        {"abc", "A", false},
        {withNuls("a0b"), withNuls("a0"), true},
        {withNuls("a0b"), withNuls("a0c"), false},
        {"a", withNuls("a0"), false},
    };
    for (auto const& row : rows)
        EXPECT_EQ(String(row.text).hasPrefix(row.prefix), row.result)
            << row.text << " and " << row.prefix;
    EXPECT_TRUE(String("abc").hasPrefix(noText));
}

// Conversion

TEST(StringToUnsignedInt, ReadsTheNumberAtTheStart) {
    struct {
        std::string text;
        unsigned int value;
    } const rows[] = {
        {"", 0},
        {"0", 0},
        {"12", 12},
        {"12abc", 12},
        {" \t\n+12", 12},
        {"012", 12},
        {"0x12", 0},
        {"1.9", 1},
        {"abc", 0},
        {"-5", 0},
        {"-0", 0},
        {"- 5", 0},
        {"2147483646", 2147483646},
        {"2147483647", 2147483647},
        {"2147483648", 2147483647},
        {"4294967295", 2147483647},
        {"4294967296", 2147483647},
        {"99999999999999999999999", 2147483647},
        {"-2147483648", 0},
        {"-99999999999999999999999", 0},
        {std::string("1\0002", 3), 1},
    };
    for (auto const& row : rows)
        EXPECT_EQ(String(row.text).toUnsignedInt(), row.value) << row.text;
}

TEST(StringToUnsignedInt, AgreesWithStrtoll) {
    std::string const alphabet = "0123456789\t\n\v\f\r -+x";
    std::mt19937 random(20240304);
    unsigned int saturated = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        std::size_t const letters = random() % 2 == 0 ? 10 : alphabet.size();
        for (auto length = random() % 24; length > 0; --length)
            text += alphabet[random() % letters];
        long long const number = std::strtoll(text.c_str(), nullptr, 10);
        auto const expected = std::clamp<long long>(number, 0, INT_MAX);
        ASSERT_EQ(String(text).toUnsignedInt(), expected) << '"' << text << '"';
        saturated += number > INT_MAX;
    }
    EXPECT_GT(saturated, 1000U) << "too few texts contain a number that saturates";
}

TEST(StringCopyString, CopiesAtMostMaxCharactersAndEndsThem) {
    struct {
        std::string text;
        unsigned int max;
        std::string copied;
    } const rows[] = {
        {"abc", 0, ""},
        {"abc", 1, "a"},
        {"abc", 2, "ab"},
        {"abc", 3, "abc"},
        {"abc", 4, "abc"},
        {"abc", 0xFFFFFFFF, "abc"},
        {"", 0, ""},
        {"", 5, ""},
        {longText, 2, "ll"},
        {withNuls("a0b"), 3, withNuls("a0b")},
        {longText, 1000, longText},
    };
    for (auto const& row : rows) {
        Bytes out(row.copied.size() + 2, 0xEE);
        EXPECT_EQ(String(row.text).copyString(reinterpret_cast<char*>(out.data()), row.max),
                  row.copied.size());
        EXPECT_EQ(toHex(out), toHex(concat(bytesOf(row.copied), fromHex("00 ee"))));
    }
}

TEST(StringToLower, LowersTheTextUpToItsFirstNul) {
    struct {
        std::string text;
        std::string lower;
    } const rows[] = {
        {"", ""},
        {"AbC-09_[Z]", "abc-09_[z]"},
        {"@[`{", "@[`{"}, // the neighbours of the letters
        {"\xC4\xD6\xE4", "\xC4\xD6\xE4"},
        {withNuls("AB0CD"), "ab"},
        {withNuls("0CD"), ""},
        {std::string(1000, 'L'), longText},
    };
    for (auto const& row : rows) {
        String const text(row.text);
        EXPECT_EQ(text.toLower(), row.lower);
        EXPECT_EQ(text, row.text) << "unchanged";
    }
}

TEST(StringToUpperDeathTest, FaultsOnEveryCall) {
    EXPECT_EXIT(String("abc").toUpper(), test::diedOfASegmentationFault, "");
    EXPECT_EXIT(String().toUpper(), test::diedOfASegmentationFault, "");
}

TEST(StringIsNumeric, TakesOneNumberWithBlanksAroundIt) {
    struct {
        char const* text;
        bool numeric;
        bool integer;
    } const rows[] = {
        {"", false, true},        {"0", true, true},
        {"12", true, true},       {"+12", true, true},
        {"-12", true, true},      {" 12 ", true, true},
        {"\t 12\t ", true, true}, {"   ", false, true},
        {"\t", false, true},      {"+", true, true},
        {"-", true, true},        {".", true, false},
        {"-.", true, false},      {"-.5", true, false},
        {"1.5", true, false},     {"1.", true, false},
        {".5", true, false},      {" 1.5 ", true, false},
        {"1 2", false, true},     {"1. 2", false, false},
        {"1 .", false, true}, // the point is not read, because a blank precedes it
        {"1.2.3", false, false},  {"..", false, false},
        {"+-1", false, true},     {"1-", false, true},
        {"1+2", false, true},     {".-1", false, false},
        {"- 1", false, true},     {"1e5", false, true},
        {"1.5e5", false, false},  {"0x10", false, true},
        {"abc", false, true},     {"1\n", false, true}, // a line end is not skipped
        {"1,5", false, true},     {"\xB2", false, true},
    };
    for (auto const& row : rows) {
        for (bool const before : {false, true}) {
            bool isInteger = before;
            EXPECT_EQ(String(row.text).isNumeric(isInteger), row.numeric) << row.text;
            EXPECT_EQ(isInteger, row.integer) << row.text;
        }
    }
    bool isInteger;
    EXPECT_FALSE(String(std::string("1\0", 2)).isNumeric(isInteger)) << "a NUL is no blank";
}

/// Whether the text is: blanks, [sign] digits [. digits] with at least one character, blanks.
bool isOneNumber(std::string const& text) {
    std::size_t const first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return false;
    std::size_t const last = text.find_last_not_of(" \t");
    std::string number = text.substr(first, last - first + 1);
    if (number[0] == '+' || number[0] == '-')
        number.erase(0, 1);
    if (std::size_t const point = number.find('.'); point != std::string::npos)
        number.erase(point, 1);
    return number.find_first_not_of("0123456789") == std::string::npos;
}

TEST(StringIsNumeric, AgreesWithItsGrammarOnEveryShortText) {
    std::string const alphabet = "07+-. \te";
    std::vector<std::string> texts{""};
    unsigned int numeric = 0;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        std::string const text = texts[i];
        bool isInteger = false;
        ASSERT_EQ(String(text).isNumeric(isInteger), isOneNumber(text)) << '"' << text << '"';
        if (isOneNumber(text)) {
            ++numeric;
            ASSERT_EQ(isInteger, text.find('.') == std::string::npos) << '"' << text << '"';
        }
        if (text.size() == 5)
            continue;
        for (char const c : alphabet)
            texts.push_back(text + c);
    }
    EXPECT_EQ(texts.size(), 37449U);
    EXPECT_GT(numeric, 100U);
}

TEST(StringIsNumeric, TakesDigitsSignsAndAPointAlone) {
    for (int code = CHAR_MIN; code <= CHAR_MAX; ++code) {
        std::string const text(1, static_cast<char>(code));
        bool isInteger = false;
        EXPECT_EQ(String(text).isNumeric(isInteger),
                  std::string("0123456789+-.").find(text) != std::string::npos)
            << code;
    }
}

TEST(StringPadEnd, FillsUpAndNeverShortens) {
    struct {
        std::string text;
        unsigned int width;
        std::string padded;
    } const rows[] = {
        {"a", 3, "a**"},
        {"abcd", 3, "abcd"},
        {"abc", 3, "abc"},
        {"", 2, "**"},
        {"", 0, ""},
        {"a", 0, "a"},
        {"ab", 100, "ab" + std::string(98, '*')},
        {withNuls("a0"), 4, withNuls("a0**")},
    };
    for (auto const& row : rows) {
        String const text(row.text);
        EXPECT_EQ(text.padEnd(row.width, '*'), row.padded);
        EXPECT_EQ(text, row.text) << "unchanged";
    }
    EXPECT_EQ(String("a").padEnd(3, '\0'), withNuls("a00"));
}

// The storable value

/// Overrides operations, so that results show which operations call them.
class Subclass : public String {
public:
    using String::String;
    std::string getTypeName() const override { return "Subclass"; }
    using String::toXML;
    std::string toXML(char const* name) const override {
        return std::string("override of ") + name;
    }
    unsigned int getBinLength() const override { return 1000; }
};

#if SIZE_MAX <= 0xFFFFFFFF // a larger address space allows every width
TEST(String, PadEndRefusesAWidthThatNoStringCanHave) {
    EXPECT_THROW(String("a").padEnd(UINT_MAX, '*'), std::length_error);
}
#endif

TEST(String, IsOfType501) { EXPECT_EQ(String().getTypeId(), 501U); }

TEST(String, HasATypeNameWithPrefix) { EXPECT_EQ(String().getTypeName(), "zntl_String"); }

struct BinaryForm {
    std::string text;
    char const* bytes;
};

BinaryForm const binaryForms[] = {
    {"", "00 00 00 00 00"},
    {"a", "01 00 00 00 61 00"},
    {"abc", "03 00 00 00 61 62 63 00"},
    {"\xFF\x80", "02 00 00 00 ff 80 00"},
};

TEST(String, BinaryFormIsLengthCharactersAndNul) {
    for (BinaryForm const& row : binaryForms) {
        String const text(row.text);
        unsigned int const length = static_cast<unsigned int>(row.text.size()) + 5;
        EXPECT_EQ(text.getBinLength(), length);
        Bytes out(length + 2, 0xEE);
        EXPECT_EQ(text.toBin(out.data() + 1), length) << "unaligned";
        EXPECT_EQ(toHex(out), std::string("ee ") + row.bytes + " ee");
    }
}

TEST(String, BinaryFormKeepsEmbeddedNuls) {
    String const text(withNuls("a0b"));
    Bytes out(8);
    EXPECT_EQ(text.getBinLength(), 8U);
    EXPECT_EQ(text.toBin(out.data()), 8U);
    EXPECT_EQ(toHex(out), "03 00 00 00 61 00 62 00");

    String read("before");
    EXPECT_EQ(read.fromBin(out.data(), 8), 6U) << "fromBin stops at the first NUL";
    EXPECT_EQ(read, "a");
}

TEST(String, BinaryFormOfALongText) {
    Bytes out(longText.size() + 5);
    EXPECT_EQ(String(longText).toBin(out.data()), 1005U);
    EXPECT_EQ(toHex(out), toHex(concat(fromHex("e8 03 00 00"), bytesOf(longText), fromHex("00"))));
    String read;
    EXPECT_EQ(read.fromBin(out.data(), 1005), 1005U);
    EXPECT_EQ(read, longText);
}

TEST(String, FromBinReadsWhatToBinWrote) {
    for (BinaryForm const& row : binaryForms) {
        Bytes const data = fromHex(std::string("ee ") + row.bytes);
        String text("before");
        EXPECT_EQ(text.fromBin(data.data() + 1, static_cast<unsigned int>(data.size() - 1)),
                  row.text.size() + 5)
            << "unaligned";
        EXPECT_EQ(text, row.text);
    }
}

// Contract: fromBin reads up to the NUL and ignores both the stored length and its length argument.
TEST(String, FromBinIgnoresBothLengths) {
    for (char const* const stored : {"00 00 00 00", "01 00 00 00", "ff ff ff ff"}) {
        Bytes const data = concat(fromHex(stored), fromHex("61 62 63 00 64"));
        for (unsigned int const length : {0U, 4U, 5U, 9U, 0xFFFFFFFFU}) {
            String text("before");
            EXPECT_EQ(text.fromBin(data.data(), length), 8U);
            EXPECT_EQ(text, "abc");
        }
    }
}

TEST(String, FromBinReturnsTheLengthThatTheSubclassReports) {
    Bytes const data = fromHex("01 00 00 00 61 00");
    Subclass text;
    EXPECT_EQ(text.fromBin(data.data(), 6), 1000U);
    EXPECT_EQ(text, "a");
}

TEST(String, XmlFormIsTheEncodedTextInOneElement) {
    EXPECT_EQ(String("abc").toXML(), "<zntl_String>abc</zntl_String>");
    EXPECT_EQ(String("abc").toXML("n"), "<n>abc</n>");
    EXPECT_EQ(String("abc").toXML(""), "<>abc</>");
    EXPECT_EQ(String("a<b & 'c' > \"d\"").toXML("n"),
              "<n>a&lt;b &amp; &apos;c&apos; &gt; &quot;d&quot;</n>");
    EXPECT_EQ(String("n").toXML("<&>"), "<<&>>n</<&>>") << "the name is not encoded";
    EXPECT_EQ(String(withNuls("a0b")).toXML("n"), withNuls("<n>a0b</n>"));
}

TEST(String, XmlFormOfTheEmptyStringIsAnEmptyElement) {
    EXPECT_EQ(String().toXML(), "<zntl_String/>");
    EXPECT_EQ(String().toXML("n"), "<n/>");
}

TEST(String, XmlFormOfANullNameIsEmpty) {
    EXPECT_EQ(String("abc").toXML(noText), "");
    EXPECT_EQ(String().toXML(noText), "");
}

TEST(String, XmlFormWithoutANameUsesTheOneWithANameAndItsOwnLiteral) {
    EXPECT_EQ(Subclass("abc").toXML(), "override of zntl_String");
}

// Without a parser, the DOM iterator is never at its end, and every value is empty.
TEST(String, FromXmlTakesTheEmptyValueOfAnyDocument) {
    for (char const* const xml : {"<zntl_String>abc</zntl_String>", "", noText}) {
        String text("before");
        EXPECT_TRUE(text.fromXML(xml));
        EXPECT_EQ(text, "");
    }
}

// Allocation failure

template <class Operation>
long failingAllocations(Operation operation) {
    return test::failEachAllocation([&](test::FailingRun& run) {
        String text("before");
        if (run.runsOutOfMemory([&] { operation(text); })) {
            EXPECT_EQ(text, "before");
        } else {
            EXPECT_FALSE(run.happened()) << "the operation ignored an allocation failure";
        }
    });
}

TEST(String, KeepsTheTextAndLeaksNothingOnAllocationFailure) {
    String const other(longText);
    char const* const characters = longText.c_str();
    Bytes const data = concat(fromHex("00 00 00 00"), bytesOf(longText), fromHex("00"));
    ASSERT_EQ(setenv("ZN_TEST_VARIABLE", characters, 1), 0);

    EXPECT_GT(failingAllocations([&](String& text) { text = longText; }), 0);
    EXPECT_GT(failingAllocations([&](String& text) { text = other; }), 0);
    EXPECT_GT(failingAllocations([&](String& text) { text = characters; }), 0);
    EXPECT_GT(failingAllocations([&](String& text) { text.fromXML(characters); }), 0);
    EXPECT_GT(failingAllocations([&](String& text) { text.fromBin(data.data(), 5); }), 0);
    EXPECT_GT(failingAllocations([&](String& text) { text.toXML(characters); }), 0);
    EXPECT_GT(failingAllocations([&](String& text) { text.padEnd(1000, '*'); }), 0);

    EXPECT_GT(test::failEachAllocationOf([&] { String{longText}; }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { String{other}; }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { String{characters}; }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { String::fromEnvVarible("ZN_TEST_VARIABLE"); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { other.toLower(); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { other.toXML(); }), 0);
    unsetenv("ZN_TEST_VARIABLE");
}

} // namespace
