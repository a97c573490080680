// Compares formatted text with that of the C library's printf. Input: a byte that chooses the
// conversions, an integer, a float, its number of decimals; then, with unit separators (0x1F)
// between them, a string and the literal parts before, between and after the conversions.

#include "fuzz.h"

#include "misc/zntl_String.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

using fuzz::require;
using zntl::String;

namespace {

constexpr char const* numberConversions[] = {"%d", "%i", "%7d", "%-7d", "%+d", "%x", "%.3d", "%c"};
constexpr char const* textConversions[] = {"%s", "%9s", "%-9s", "%.3s"};

std::string printed(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    char text[16384]; // longer than any input
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

template <class Value>
Value take(fuzz::Input& input) {
    std::string bytes = input.takeBytes(sizeof(Value));
    bytes.resize(sizeof(Value));
    Value value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

/// Returns the text as a literal part of a format.
std::string literal(std::string const& text) {
    std::string escaped;
    for (char const c : text)
        escaped += c == '%' ? std::string("%%") : std::string(1, c);
    return escaped;
}

} // namespace

void fuzz::run(Input& input) {
    unsigned int const conversions = input.takeByte();
    int const number = take<int>(input);
    auto const value = take<float>(input);
    int const decimals = static_cast<signed char>(input.takeByte());
    std::string const text = input.takeField();

    std::string format = literal(input.takeField());
    format += numberConversions[conversions % 8];
    format += literal(input.takeField());
    format += textConversions[conversions / 8 % 4];
    format += literal(input.takeField());
    format += numberConversions[conversions / 32];
    format += literal(input.takeRest());

    require(String::fromFormat(format.c_str(), number, text.c_str(), ~number) ==
                printed(format.c_str(), number, text.c_str(), ~number),
            "fromFormat");
    require(String::fromInteger(number) == printed("%d", number), "fromInteger");
    require(String::fromFloat(value, decimals) ==
                printed("%.*f", decimals, static_cast<double>(value)),
            "fromFloat");
}
