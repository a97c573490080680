#include "misc/internal/zntl_decimal.h"

#include <charconv>

namespace zntl {

std::size_t writeDecimal(char* out, unsigned int value) {
    return static_cast<std::size_t>(std::to_chars(out, out + maxDecimalLength, value).ptr - out);
}

std::size_t writeDecimal(char* out, int value) {
    auto const magnitude = static_cast<unsigned int>(value);
    if (value >= 0)
        return writeDecimal(out, magnitude);
    *out = '-';
    return 1 + writeDecimal(out + 1, 0 - magnitude);
}

void appendDecimal(std::string& text, int value) {
    char digits[maxDecimalLength];
    text.append(digits, writeDecimal(digits, value));
}

} // namespace zntl
