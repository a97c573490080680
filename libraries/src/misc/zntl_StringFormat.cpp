#include "misc/zntl_String.h"

#include "misc/internal/zntl_decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace zntl {

namespace {

/// A copy of the list that a pointer leads to, so that the list can be used again.
class Arguments {
public:
    explicit Arguments(void* list) { va_copy(copy, *static_cast<std::va_list*>(list)); }
    Arguments(Arguments const&) = delete;
    Arguments& operator=(Arguments const&) = delete;
    ~Arguments() { va_end(copy); }

    std::va_list copy;
};

/// Appends pieces to a text, the short ones of them together: the last ones with `flush`.
class PieceAppender {
public:
    // What is collected is written before it is read.
    // cppcheck-suppress uninitMemberVar
    explicit PieceAppender(std::string& text) : text_(text) {}

    void append(std::string_view piece) {
        if (piece.size() > sizeof pending_ - count_) {
            text_.reserve(text_.size() + count_ + piece.size() + sizeof pending_);
            flush();
            text_ += piece;
        } else if (!piece.empty()) {
            std::memcpy(pending_ + count_, piece.data(), piece.size());
            count_ += piece.size();
        }
    }

    template <class Number>
    void appendNumber(Number value) {
        if (sizeof pending_ - count_ < maxDecimalLength)
            flush();
        count_ += writeDecimal(pending_ + count_, value);
    }

    void flush() {
        text_.append(pending_, count_);
        count_ = 0;
    }

private:
    std::string& text_;
    char pending_[64];
    std::size_t count_ = 0;
};

/// Formats what most formats are made of, texts and whole numbers as they are, at a fraction of
/// printf's cost. False when there is more in it; what was appended until then is of no use.
bool appendPlain(std::string& text, char const* format, void* list) {
    Arguments args(list);
    PieceAppender out(text);
    while (true) {
        char const* const literal = format;
        while (*format != '%' && *format != '\0')
            ++format;
        out.append({literal, static_cast<std::size_t>(format - literal)});
        if (*format == '\0') {
            out.flush();
            return true;
        }
        switch (format[1]) {
        case '%':
            out.append("%");
            break;
        case 'd':
        case 'i':
            out.appendNumber(va_arg(args.copy, int));
            break;
        case 'u':
            out.appendNumber(va_arg(args.copy, unsigned int));
            break;
        case 's':
            if (char const* const string = va_arg(args.copy, char const*)) {
                out.append(std::string_view(string));
                break;
            }
            return false;
        default:
            return false;
        }
        format += 2;
    }
}

int print(char* out, std::size_t size, char const* format, void* list) {
    Arguments args(list);
    return std::vsnprintf(out, size, format, args.copy);
}

/// Formats whatever printf can.
void assignPrinted(std::string& text, char const* format, void* list) {
    // Most texts fit here, and then one formatting pass measures and delivers.
    char brief[4096];
    int const length = print(brief, sizeof brief, format, list);
    auto const size = static_cast<std::size_t>(std::max(length, 0));
    if (size < sizeof brief) {
        text = length < 0 ? "" : brief;
        return;
    }
    text.resize(size);
    print(text.data(), size + 1, format, list);
    text.resize(std::strlen(text.c_str()));
}

/// Appends a number as printf does for "%.*f"; false when it is too large for that, is no number,
/// or has too many decimals.
bool appendFixed(std::string& text, float value, int decimals) {
    // Up to here a product with a float's 24 bits is exact, so its rounding is that of the value.
    constexpr std::array powers{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    constexpr double limit = 1e15;
    if (decimals < 0 || static_cast<std::size_t>(decimals) >= powers.size())
        return false;
    auto const places = static_cast<std::size_t>(decimals);
    double const scaled = std::abs(static_cast<double>(value)) * powers[places];
    if (!(scaled < limit))
        return false;
    auto whole = static_cast<std::uint64_t>(scaled);
    double const rest = scaled - static_cast<double>(whole);
    if (rest > 0.5 || (rest == 0.5 && whole % 2 == 1))
        ++whole;
    char digits[sizeof "1000000000000000"];
    auto const count =
        static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, whole).ptr - digits);
    if (std::signbit(value))
        text += '-';
    if (count <= places)
        text.append(places + 1 - count, '0');
    text.append(digits, count);
    if (places > 0)
        text.insert(text.size() - places, std::localeconv()->decimal_point);
    return true;
}

} // namespace

String String::fromVAList(char const* format, void* args) {
    String text;
    if (format && !appendPlain(text, format, args))
        assignPrinted(text, format, args);
    return text;
}

String String::fromFormat(char const* format, ...) {
    std::va_list args;
    va_start(args, format);
    String text = fromVAList(format, &args);
    va_end(args);
    return text;
}

String String::fromInteger(int value) {
    char digits[maxDecimalLength];
    return {digits, writeDecimal(digits, value)};
}

String String::fromFloat(float value, int decimals) {
    String text;
    if (!appendFixed(text, value, decimals))
        text = fromFormat("%.*f", decimals, static_cast<double>(value));
    return text;
}

} // namespace zntl
