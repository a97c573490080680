#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Conversions between bytes and hexadecimal text such as "80 02 00 00 e0 01 00 00".

namespace test {

using Bytes = std::vector<unsigned char>;

inline std::string toHex(void const* data, std::size_t count) {
    auto const* const bytes = static_cast<unsigned char const*>(data);
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0)
            text += ' ';
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 0xF];
    }
    return text;
}

template <class Container>
std::string toHex(Container const& bytes) {
    static_assert(sizeof *bytes.data() == 1, "bytes");
    return toHex(bytes.data(), bytes.size());
}

/// Converts pairs of hexadecimal digits, in any letter case, to bytes. Ignores blanks and line
/// ends.
inline Bytes fromHex(std::string_view text) {
    std::string digits;
    for (char const c : text) {
        if (c != ' ' && c != '\n')
            digits += c;
    }
    if (digits.size() % 2 != 0 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        throw std::invalid_argument("not a sequence of hexadecimal bytes");
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

/// Returns the characters of a string as bytes.
inline Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

/// Returns the parts one after another.
template <class... Parts>
Bytes concat(Parts const&... parts) {
    Bytes all;
    (all.insert(all.end(), parts.begin(), parts.end()), ...);
    return all;
}

} // namespace test
