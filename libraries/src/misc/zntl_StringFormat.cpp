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

/// Collects pieces in a buffer, so most results are copied to the string in one step.
class Output {
public:
    // cppcheck-suppress uninitMemberVar
    explicit Output(std::string& text) : text_(text) {}

    void append(char c) {
        makeRoom(sizeof c);
        *at_++ = c;
    }

    template <class Number>
    void appendNumber(Number value) {
        makeRoom(maxDecimalLength);
        at_ = std::to_chars(at_, end(), value).ptr;
    }

    void append(std::string_view piece) {
        // Equivalent: pieces of any length can be appended directly
        if (piece.size() > room()) {
            // Room for one more buffer, so appending the rest does not copy a long piece again.
            text_.reserve(text_.size() + piece.size() + 2 * sizeof buffer_);
            flush();
            text_ += piece;
        } else {
            std::memcpy(at_, piece.data(), piece.size());
            at_ += piece.size();
        }
    }

    void flush() {
        text_.append(buffer_, static_cast<std::size_t>(at_ - buffer_));
        at_ = buffer_;
    }

private:
    char* end() { return buffer_ + sizeof buffer_; }
    // Equivalent: flushing earlier is only slower
    std::size_t room() { return static_cast<std::size_t>(end() - at_); }

    void makeRoom(std::size_t count) {
        // Equivalent: flushing earlier is only slower
        if (room() < count)
            flush();
    }

    std::string& text_;
    // Equivalent: other sizes are only slower
    char buffer_[64];
    char* at_ = buffer_;
};

int print(char* out, std::size_t size, char const* format, void* args) {
    std::va_list copy;
    va_copy(copy, *static_cast<std::va_list*>(args));
    int const length = std::vsnprintf(out, size, format, copy);
    va_end(copy);
    return length;
}

/// Formats with printf. A result that does not fit in the buffer is formatted twice.
void assignPrinted(std::string& text, char const* format, void* args) {
    // Equivalent: other sizes are only slower
    char buffer[4096];
    int const length = print(buffer, sizeof buffer, format, args);
    auto const size = static_cast<std::size_t>(std::max(length, 0));
    // Equivalent: formatting twice is only slower
    if (size < sizeof buffer) {
        text.assign(buffer, size);
    } else {
        text.resize(size);
        // Equivalent: a larger limit is not reached
        print(text.data(), size + 1, format, args);
    }
    text.resize(std::strlen(text.c_str()));
}

/// Formats strings and integers faster than printf, and everything else with printf. Most formats
/// consist of strings and integers.
void assignFormatted(std::string& text, char const* format, void* args) {
    std::va_list values;
    va_copy(values, *static_cast<std::va_list*>(args));
    Output out(text);
    char const* at = format;
    while (*at != '\0') {
        if (*at != '%') {
            out.append(*at++);
            continue;
        }
        switch (*++at) {
        case '%':
            out.append('%');
            break;
        case 'd':
        case 'i':
            out.appendNumber(va_arg(values, int));
            break;
        case 'u':
            out.appendNumber(va_arg(values, unsigned int));
            break;
        case 's': {
            char const* const piece = va_arg(values, char const*);
            out.append(std::string_view(piece ? piece : "(null)"));
            break;
        }
        default:
            va_end(values);
            assignPrinted(text, format, args);
            return;
        }
        ++at;
    }
    va_end(values);
    out.flush();
}

} // namespace

// NOLINTNEXTLINE(misc-no-recursion): one step
String String::fromVAList(char const* format, void* args) {
    String text;
    if (format && args)
        assignFormatted(text, format, args);
    else if (format)
        text = fromFormat(format, nullptr); // with an empty list
    return text;
}

// NOLINTNEXTLINE(misc-no-recursion): one step
String String::fromFormat(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    String text = fromVAList(format, &args);
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
