#include "misc/internal/zntl_decimal.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstddef>
#include <cstdint>

namespace zntl {

namespace {

/// What any 32-bit number is below; ten times of it are far from an overflow.
constexpr std::uint64_t beyondInt = std::uint64_t{1} << 32;

/// What a digit stands for; more than 9 for what is no digit.
unsigned int digitValue(char c) { return static_cast<unsigned int>(c - '0'); }

} // namespace

std::size_t writeDecimal(char* out, int value) {
    return static_cast<std::size_t>(std::to_chars(out, out + maxDecimalLength, value).ptr - out);
}

void appendDecimal(std::string& text, int value) {
    char digits[maxDecimalLength];
    text.append(digits, writeDecimal(digits, value));
}

Decimal parseDecimal(char const* text) {
    char const* number = text;
    while (isSpace(*number))
        ++number;
    bool const negative = *number == '-';
    if (negative || *number == '+')
        ++number;
    char const* behind = number;
    std::uint64_t magnitude = 0;
    for (unsigned int digit; (digit = digitValue(*behind)) <= 9; ++behind) {
        if (magnitude < beyondInt)
            magnitude = magnitude * 10 + digit;
    }
    auto const value = static_cast<std::int64_t>(negative ? -magnitude : magnitude);
    return {static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX)),
            behind == number ? text : behind};
}

} // namespace zntl
