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
        if (at_ == end())
            flush();
        *at_++ = c;
    }

    template <class Number>
    void appendNumber(Number value) {
        if (end() - at_ < static_cast<std::ptrdiff_t>(maxDecimalLength))
            flush();
        at_ = std::to_chars(at_, end(), value).ptr;
    }

    void append(std::string_view piece) {
        if (piece.size() > static_cast<std::size_t>(end() - at_)) {
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

    std::string& text_;
    char buffer_[64];
    char* at_ = buffer_;
};

/// Formats strings and integers faster than printf. Most formats consist of them. Returns false if
/// the format has anything else.
bool appendPlain(std::string& text, char const* format, std::va_list args) {
    Output out(text);
    for (; *format != '\0'; ++format) {
        if (*format != '%') {
            out.append(*format);
            continue;
        }
        switch (*++format) {
        case '%':
            out.append('%');
            break;
        case 'd':
        case 'i':
            out.appendNumber(va_arg(args, int));
            break;
        case 'u':
            out.appendNumber(va_arg(args, unsigned int));
            break;
        case 's':
            if (char const* const piece = va_arg(args, char const*)) {
                out.append(std::string_view(piece));
                break;
            }
            return false;
        default:
            return false;
        }
    }
    out.flush();
    return true;
}

int print(char* out, std::size_t size, char const* format, void* args) {
    std::va_list copy;
    va_copy(copy, *static_cast<std::va_list*>(args));
    int const length = std::vsnprintf(out, size, format, copy);
    va_end(copy);
    return length;
}

/// Formats with printf. A result that does not fit in the buffer is formatted twice.
void assignPrinted(std::string& text, char const* format, void* args) {
    char buffer[4096];
    int const length = print(buffer, sizeof buffer, format, args);
    auto const size = static_cast<std::size_t>(std::max(length, 0));
    if (size < sizeof buffer) {
        text.assign(buffer, size);
    } else {
        text.resize(size);
        print(text.data(), size + 1, format, args);
    }
    text.resize(std::strlen(text.c_str()));
}

} // namespace

// NOLINTNEXTLINE(misc-no-recursion): one step
String String::fromVAList(char const* format, void* args) {
    String text;
    if (!format)
        return text;
    if (!args) {
        text = fromFormat(format, nullptr); // with an empty list
        return text;
    }
    std::va_list copy;
    va_copy(copy, *static_cast<std::va_list*>(args));
    bool const isPlain = appendPlain(text, format, copy);
    va_end(copy);
    if (!isPlain)
        assignPrinted(text, format, args);
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
