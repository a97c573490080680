// The formatting operations produce the same text as the C library's printf.

#include "misc/zntl_String.h"

#include "support/failing_allocation.h"
#include "support/print_string.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using zntl::String;

namespace {

char const* const noText = nullptr;
std::string const longText(1000, 'l'); // more than a string holds without an allocation

[[gnu::format(printf, 1, 2)]] std::vector<String> formatTwice(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    std::vector<String> texts{String::fromVAList(format, &args), String::fromVAList(format, &args)};
    va_end(args);
    return texts;
}

TEST(StringFromVAList, LeavesTheCallersArgumentsAsTheyWere) {
    std::vector<String> texts =
        formatTwice("%d %s %.2f %lld", -7, "text", 2.5, static_cast<long long>(LLONG_MIN));
    EXPECT_EQ(texts[0], "-7 text 2.50 -9223372036854775808");
    EXPECT_EQ(texts[1], texts[0]);

    std::string const veryLong(100000, 'x');
    texts = formatTwice("%s|%d", veryLong.c_str(), 640);
    EXPECT_EQ(texts[0], veryLong + "|640");
    EXPECT_EQ(texts[1], texts[0]);
}

TEST(StringFromVAList, FormatsTextsOfAnyLength) {
    for (std::size_t power = 1; power <= 1 << 20; power *= 2) {
        for (std::size_t length = power - 1; length <= power + 1; ++length) {
            std::string const text(length, 'x');
            EXPECT_EQ(String::fromFormat("%s", text.c_str()), text);
            EXPECT_EQ(String::fromFormat("%.9999999s", text.c_str()), text)
                << "printf formats this";
        }
    }
}

TEST(StringFromVAList, StopsAtTheFirstNulThatTheFormattingProduced) {
    EXPECT_EQ(String::fromFormat("ab%ccd", 0), "ab");
    EXPECT_EQ(String::fromFormat("%c", 0), "");
    std::string const veryLong(100000, 'x');
    EXPECT_EQ(String::fromFormat("%s%ccd", veryLong.c_str(), 0), veryLong);
    EXPECT_EQ(String::fromFormat("ab%c%s", 0, veryLong.c_str()), "ab");
}

TEST(StringFromVAList, NeedsNoArgumentsForAFormatThatNamesNone) {
    EXPECT_EQ(String::fromVAList("text", nullptr), "text");
    EXPECT_EQ(String::fromVAList("100 %%", nullptr), "100 %");
    EXPECT_EQ(String::fromVAList(longText.c_str(), nullptr), longText);
    EXPECT_EQ(String::fromVAList("", nullptr), "");
    EXPECT_EQ(String::fromVAList(nullptr, nullptr), "");
}

TEST(StringFromVAList, NullFormatReturnsTheEmptyString) {
    for (String const& text : formatTwice(noText))
        EXPECT_EQ(text, "");
    EXPECT_EQ(String::fromFormat(noText), "");
}

TEST(StringFromVAList, FormatThatTheCLibraryRejectsReturnsTheEmptyString) {
    wchar_t const noCharacter[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_EQ(String::fromFormat("ab%lscd", noCharacter), "");
    EXPECT_EQ(String::fromFormat("%s%ls", longText.c_str(), noCharacter), "");
}

TEST(StringFromFormat, FormatsLikePrintf) {
    EXPECT_EQ(String::fromFormat("%dx%d", 640, 480), "640x480");
    EXPECT_EQ(String::fromFormat("no arguments"), "no arguments");
    EXPECT_EQ(String::fromFormat("%5.1f|%-4s|%04x|%c|%%", 2.25, "ab", 0x1FU, 'z'),
              "  2.2|ab  |001f|z|%");
}

TEST(StringFromFormat, FormatsPlainTextsAndNumbersInAnyOrder) {
    EXPECT_EQ(String::fromFormat("%s", ""), "");
    EXPECT_EQ(String::fromFormat("%d%d%d", INT_MIN, 0, INT_MAX), "-214748364802147483647");
    EXPECT_EQ(String::fromFormat("%u|%u|%u", 0U, 1U + INT_MAX, UINT_MAX),
              "0|2147483648|4294967295");
    EXPECT_EQ(String::fromFormat("%i|%i", INT_MIN, INT_MAX), "-2147483648|2147483647");
    EXPECT_EQ(String::fromFormat("%%%s%%%d%%", "%d", 7), "%%d%7%");
    EXPECT_EQ(String::fromFormat("%s%s%s", longText.c_str(), "", longText.c_str()),
              longText + longText);
    EXPECT_EQ(String::fromFormat((longText + "%d" + longText).c_str(), 1),
              longText + "1" + longText);
}

TEST(StringFromFormat, FormatsPiecesOfAnyLength) {
    for (std::size_t length = 0; length < 150; ++length) {
        std::string const first(length, 'f');
        for (unsigned int const further : {0U, 1U, 40U, 63U, 64U, 65U, 149U}) {
            std::string const second(further, 's');
            EXPECT_EQ(String::fromFormat("%s%s%%%d%d", first.c_str(), second.c_str(), INT_MIN, 1),
                      first + second + "%-21474836481");
            EXPECT_EQ(String::fromFormat("%s%d%s%d", first.c_str(), INT_MIN, second.c_str(), -1),
                      first + "-2147483648" + second + "-1");
            EXPECT_EQ(String::fromFormat(("%s" + second + "%d").c_str(), first.c_str(), INT_MIN),
                      first + second + "-2147483648");
        }
    }
}

TEST(StringFromFormat, LeavesToPrintfWhatOnlyLooksPlain) {
    EXPECT_EQ(String::fromFormat("%e", 1.5), "1.500000e+00");
    EXPECT_EQ(String::fromFormat("%td", std::ptrdiff_t{7}), "7");
    EXPECT_EQ(String::fromFormat("%jd", std::intmax_t{7}), "7");
}

TEST(StringFromFormat, EndsWithItsFormat) {
    std::string const format("%d\0dx", 5); // a literal would cause a warning
    EXPECT_EQ(String::fromFormat(format.c_str(), 1), "1");
    std::string const exact(100, 'x'); // sanitizers detect reads past its end
    EXPECT_EQ(String::fromFormat(exact.c_str(), 1), exact);
}

TEST(StringFromFormat, FormatsAgainFromTheStartWhenALaterPartIsNotPlain) {
    EXPECT_EQ(String::fromFormat("%d %s %%|%5d", 1, "text", 2), "1 text %|    2");
    EXPECT_EQ(String::fromFormat("%s|%-3d|%s", longText.c_str(), 4, "end"), longText + "|4  |end");
}

std::string printed(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    char text[1000];
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

TEST(StringFromFormat, NullArgumentFormatsLikePrintf) {
    std::string format = "%d%s"; // a literal would cause a warning
    EXPECT_EQ(String::fromFormat(format.c_str(), 1, noText), printed(format.c_str(), 1, noText));
}

TEST(StringFromFormat, AgreesWithPrintfOnAnyMixtureOfConversions) {
    std::mt19937 random(15);
    // A format has three of these conversions, for the arguments int, string, int.
    char const* const ofInt[] = {"%d", "%i", "%5d", "%-5d", "%+d", "%x", "%c", "%.3d", "%u"};
    char const* const ofText[] = {"%s", "%8s", "%-8s", "%.2s"};
    char const* const between[] = {"", "x", "%%", " and ", "\xC3\xA4", "\n"};
    auto const oneOf = [&](auto const& all) { return all[random() % std::size(all)]; };
    for (int i = 0; i < 2000; ++i) {
        std::string const format = std::string(oneOf(between)) + oneOf(ofInt) + oneOf(between) +
                                   oneOf(ofText) + oneOf(between) + oneOf(ofInt) + oneOf(between);
        int const first = static_cast<int>(random()) >> (random() % 32);
        int const last = static_cast<int>(random()) >> (random() % 32);
        std::string const text(random() % 40, 't');
        EXPECT_EQ(String::fromFormat(format.c_str(), first, text.c_str(), last),
                  printed(format.c_str(), first, text.c_str(), last))
            << format;
    }
}

TEST(StringFromInteger, IsDecimal) {
    EXPECT_EQ(String::fromInteger(0), "0");
    EXPECT_EQ(String::fromInteger(-7), "-7");
    EXPECT_EQ(String::fromInteger(1920), "1920");
    EXPECT_EQ(String::fromInteger(INT_MAX), "2147483647");
    EXPECT_EQ(String::fromInteger(INT_MIN), "-2147483648");
}

TEST(StringFromFloat, HasTheDecimalsAskedFor) {
    struct {
        float value;
        int decimals;
        char const* text;
    } const rows[] = {
        {2.5F, 2, "2.50"},
        {-2.5F, 2, "-2.50"},
        {0.0F, 0, "0"},
        {-0.0F, 1, "-0.0"},
        {1.0F / 3.0F, 6, "0.333333"},
        {0.1F, 10, "0.1000000015"}, // the float's exact value, widened to double
        {0.125F, 3, "0.125"},
        {16777216.0F, 0, "16777216"},
        {FLT_MAX, 0, "340282346638528859811704183484516925440"},
        {2.5F, -1, "2.500000"}, // printf ignores a negative precision
        {INFINITY, 2, "inf"},
        {-INFINITY, 2, "-inf"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(String::fromFloat(row.value, row.decimals), row.text);
    EXPECT_EQ(String::fromFloat(2.5F, 300), "2.5" + std::string(299, '0'));
}

TEST(StringFromFloat, RoundsTheExactValueAndHalvesToEven) {
    struct {
        float value;
        int decimals;
        char const* text;
    } const rows[] = {
        {0.5F, 0, "0"},
        {1.5F, 0, "2"},
        {2.5F, 0, "2"},
        {-0.5F, 0, "-0"},
        {-1.5F, 0, "-2"},
        {0.125F, 2, "0.12"},
        {0.375F, 2, "0.38"},
        {0.49999997F, 0, "0"},
        {0.50000006F, 0, "1"},
        {9.96F, 1, "10.0"},
        {0.95F, 1, "0.9"}, // which is 0.949999988...
        {0.05F, 1, "0.1"}, // which is 0.050000000745...
        {FLT_MIN, 9, "0.000000000"},
        {-FLT_MIN, 3, "-0.000"},
        {8388607.5F, 0, "8388608"},
        {8388606.5F, 0, "8388606"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(String::fromFloat(row.value, row.decimals), row.text);
}

/// Returns a float with random bits: infinities, NaNs and extreme values occur.
float anyFloat(std::mt19937& random) {
    auto const bits = static_cast<std::uint32_t>(random());
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// Returns a float near a value at which rounding changes a digit.
float nearHalf(std::mt19937& random) {
    float const value = static_cast<float>(static_cast<int>(random() % 200001) - 100000) / 2000.0F;
    return random() % 2 == 0 ? value : std::nextafter(value, random() % 2 == 0 ? 100.0F : -100.0F);
}

TEST(StringFromFloat, AgreesWithPrintf) {
    std::mt19937 random(16);
    for (int i = 0; i < 20000; ++i) {
        float const value = i % 2 == 0 ? anyFloat(random) : nearHalf(random);
        int const decimals = static_cast<int>(random() % 14) - 1;
        EXPECT_EQ(String::fromFloat(value, decimals),
                  printed("%.*f", decimals, static_cast<double>(value)))
            << value << " with " << decimals;
    }
}

/// Returns the rounding directions of the machine; soft float has only one.
std::vector<int> const roundings{
    FE_TONEAREST,
#ifdef FE_UPWARD
    FE_UPWARD,
    FE_DOWNWARD,
    FE_TOWARDZERO,
#endif
};

TEST(StringFromFloat, RoundsAsTheProgramAskedFor) {
    for (int const rounding : roundings) {
        std::fesetround(rounding);
        std::string const text = String::fromFloat(0.375F, 2);
        std::string const negative = String::fromFloat(-2.5F, 0);
        std::string const expected = printed("%.*f", 2, 0.375);
        std::string const expectedNegative = printed("%.*f", 0, -2.5);
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(text, expected) << rounding;
        EXPECT_EQ(negative, expectedNegative) << rounding;
    }
}

TEST(StringFromFloat, RaisesNoFloatingPointException) {
    for (float const value : {0.1F, 2.5F, -1234.567F, FLT_MAX, FLT_MIN, INFINITY}) {
        std::feclearexcept(FE_ALL_EXCEPT);
        std::string const text = String::fromFloat(value, 2);
        EXPECT_EQ(std::fetestexcept(FE_ALL_EXCEPT), 0) << text;
    }
}

TEST(StringFromFormat, LeaksNothingOnAllocationFailure) {
    char const* const characters = longText.c_str();
    EXPECT_GT(test::failEachAllocationOf([&] { String::fromFormat("%s", characters); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { String::fromFormat("%99d", 1); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { String::fromFormat("%s%99d", characters, 1); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { String::fromFloat(FLT_MAX, 3); }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { String::fromFloat(1e6F, 9); }), 0);
}

} // namespace
