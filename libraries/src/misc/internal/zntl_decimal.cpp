#include "misc/internal/zntl_decimal.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>

namespace zntl {

void appendDecimal(std::string& text, int value) {
    char digits[sizeof "-2147483648"];
    std::to_chars_result const written = std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, written.ptr);
}

int parseDecimal(char const* text, char** end) {
    // A `long` of 64 bits would hold what a camera's 32 bits cut off.
    long const value = std::strtol(text, end, 10);
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

} // namespace zntl
