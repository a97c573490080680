#include "misc/zntl_String.h"

#include "misc/internal/zntl_decimal.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace zntl {

namespace {

/// Formats with printf. A result that does not fit in the buffer is formatted twice.
void assignPrinted(String& text, char const* format, void* args) {
    std::va_list values;
    va_copy(values, *static_cast<std::va_list*>(args));
    // Equivalent: other sizes are only slower
    char buffer[4096];
    int const length = std::vsnprintf(buffer, sizeof buffer, format, values);
    va_end(values);
    // Equivalent: formatting twice is only slower
    if (length < static_cast<int>(sizeof buffer)) {
        text = length > 0 ? buffer : "";
        return;
    }
    text.resize(static_cast<std::size_t>(length));
    va_copy(values, *static_cast<std::va_list*>(args));
    // Equivalent: a larger limit is not reached
    std::vsnprintf(text.data(), text.size() + 1, format, values);
    va_end(values);
    text.resize(std::strlen(text.c_str()));
}

/// Formats strings and integers faster than printf, and everything else with printf. Most formats
/// consist of strings and integers. An allocation failure skips va_end, which does nothing on the
/// machines that the library supports.
String formatArguments(char const* format, void* args) {
    std::va_list values;
    va_copy(values, *static_cast<std::va_list*>(args));
    String text;
    // Equivalent: other sizes are only slower
    char buffer[64];
    char* const end = buffer + sizeof buffer;
    char* out = buffer;
    for (char const* at = format ? format : ""; *at != '\0'; ++at) {
        // Equivalent: flushing earlier is only slower
        if (end - out < static_cast<std::ptrdiff_t>(maxDecimalLength)) {
            text.append(buffer, static_cast<std::size_t>(out - buffer));
            out = buffer;
        }
        if (*at != '%') {
            *out++ = *at;
            continue;
        }
        switch (*++at) {
        case '%':
            *out++ = '%';
            break;
        case 'd':
        case 'i':
            out = std::to_chars(out, end, va_arg(values, int)).ptr;
            break;
        case 'u':
            out = std::to_chars(out, end, va_arg(values, unsigned int)).ptr;
            break;
        case 's': {
            char const* const argument = va_arg(values, char const*);
            std::string_view const piece = argument ? argument : "(null)";
            // Equivalent: pieces of any length can be appended directly
            if (piece.size() <= static_cast<std::size_t>(end - out)) {
                out = std::copy(piece.begin(), piece.end(), out);
                break;
            }
            // Room for one more buffer, so appending the rest does not copy a long piece again.
            // Equivalent: growing later is only slower
            text.reserve(text.size() + piece.size() + 2 * sizeof buffer);
            text.append(buffer, static_cast<std::size_t>(out - buffer));
            text += piece;
            out = buffer;
            break;
        }
        default:
            va_end(values);
            assignPrinted(text, format, args);
            return text;
        }
    }
    va_end(values);
    text.append(buffer, static_cast<std::size_t>(out - buffer));
    return text;
}

} // namespace

String String::fromVAList(char const* format, void* args) {
    // Without a list, the format takes no arguments. The null only prevents a compiler warning.
    return args ? formatArguments(format, args) : fromFormat(format, nullptr);
}

String String::fromFormat(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    String text = formatArguments(format, &args);
    va_end(args);
    return text;
}

String String::fromInteger(int value) {
    char digits[maxDecimalLength];
    char const* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return {digits, static_cast<std::size_t>(end - digits)};
}

String String::fromFloat(float value, int decimals) {
    return fromFormat("%.*f", decimals, static_cast<double>(value));
}

} // namespace zntl
