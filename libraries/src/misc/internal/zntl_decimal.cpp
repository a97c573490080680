#include "misc/internal/zntl_decimal.h"

#include <charconv>

namespace zntl {

std::size_t writeDecimal(char* out, int value) {
    return static_cast<std::size_t>(std::to_chars(out, out + maxDecimalLength, value).ptr - out);
}

void appendDecimal(std::string& text, int value) {
    char digits[maxDecimalLength];
    text.append(digits, writeDecimal(digits, value));
}

} // namespace zntl
