#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>

namespace zntl {

/// The length of the longest 32-bit number: ten digits and a sign.
// Equivalent: a larger number only takes memory
constexpr std::size_t maxDecimalLength = sizeof "-2147483648" - 1;

/// Whether a character is white space in the C locale.
inline bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

struct Decimal {
    int value;
    char const* end; // after the last digit; the start of the text if there was none
};

/// Reads a base-10 integer from the start of `text` as strtol does in the C locale (leading white
/// space and a sign are accepted, parsing stops at the first non-digit, no digits give 0),
/// saturated to 32 bits on every machine. Uses neither errno nor a locale.
inline Decimal parseDecimal(char const* text) {
    char const* number = text;
    while (isSpace(*number))
        ++number;
    bool const negative = *number == '-';
    if (negative || *number == '+')
        ++number;
    char const* end = number;
    std::int64_t magnitude = 0;
    for (; *end >= '0' && *end <= '9'; ++end) {
        // Stops above every 32-bit number, long before 64 bits overflow.
        // Equivalent: a limit of 33 bits would do
        if (magnitude < std::int64_t{1} << 32)
            magnitude = magnitude * 10 + (*end - '0');
    }
    std::int64_t const value = negative ? -magnitude : magnitude;
    return {static_cast<int>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX)),
            end == number ? text : end};
}

} // namespace zntl
