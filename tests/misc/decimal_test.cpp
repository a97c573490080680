// The library reads decimal numbers as strtol does, with any character before, inside and after the
// number.

#include "misc/zntl_String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

/// Returns the number that strtol reads, saturated to 32 bits; 0 for a negative number.
unsigned int expected(std::string const& text) {
    long const number = std::strtol(text.c_str(), nullptr, 10);
    return static_cast<unsigned int>(std::clamp<long>(number, 0, INT_MAX));
}

void expectLikeTheCLibrary(std::string const& text) {
    EXPECT_EQ(zntl::String(text).toUnsignedInt(), expected(text)) << testing::PrintToString(text);
}

TEST(Decimal, IsReadAroundEveryCharacter) {
    for (int value = 0; value <= UCHAR_MAX; ++value) {
        char const c = static_cast<char>(value);
        expectLikeTheCLibrary({c, '7'});
        expectLikeTheCLibrary({'7', c});
        expectLikeTheCLibrary({'7', c, '8'});
        expectLikeTheCLibrary({' ', c, '+', '7'});
        expectLikeTheCLibrary({'+', c, '7'});
    }
}

TEST(Decimal, SaturatesAtThirtyTwoBits) {
    std::vector<std::string> const magnitudes{
        "2147483646",           "2147483647",
        "2147483648",           "2147483649",
        "4294967295",           "4294967296",
        "4294967297",           "42949672960",
        "9223372036854775807",  "9223372036854775808",
        "18446744073709551615", "18446744073709551616",
        "99999999999999999999", "100000000000000000000000000000000000000000007"};
    for (std::string const& magnitude : magnitudes) {
        for (char const* const sign : {"", "+", "-", "000"})
            expectLikeTheCLibrary(sign + magnitude);
    }
}

} // namespace
