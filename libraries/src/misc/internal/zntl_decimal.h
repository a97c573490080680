#pragma once

#include <cstddef>
#include <string>

namespace zntl {

/// The digits of any 32-bit number, and a sign.
constexpr std::size_t maxDecimalLength = sizeof "-2147483648" - 1;

/// Writes `value` in decimal to `out`, without a NUL, as appendDecimal does; returns the number of
/// characters. `out` has room for `maxDecimalLength`.
std::size_t writeDecimal(char* out, int value);

/// Appends `value` in decimal: a minus sign for negatives, no plus sign, no padding, whatever the
/// locale is.
void appendDecimal(std::string& text, int value);

/// Whether a character is white space in the C locale.
inline bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

struct Decimal {
    int value;
    char const* end; // behind the last digit; the start of the text when there was none
};

/// Reads a base-10 integer from the start of `text` as strtol does in the C locale (leading white
/// space and a sign are accepted, parsing stops at the first non-digit, no digits give 0),
/// saturated to 32 bits on every machine. No errno, no locale, nothing to bind when the program
/// starts.
Decimal parseDecimal(char const* text);

} // namespace zntl
