#pragma once

#include <cstddef>
#include <string_view>

namespace dump {

/// The length in bytes of the UTF-8 character at the start of the string; 0 if it is malformed or
/// the string is empty.
inline std::size_t characterLength(std::string_view text) {
    auto const byteAt = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    unsigned int const first = byteAt(0);
    if (first < 0x80)
        return text.empty() ? 0 : 1;
    std::size_t const length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80)
            return 0;
    }
    // Rejects overlong forms, surrogates, and numbers beyond U+10FFFF.
    unsigned int const second = byteAt(1);
    bool const isWrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ||
                         (first == 0xF0 && second < 0x90) || (first == 0xF4 && second >= 0x90);
    return isWrong ? 0 : length;
}

inline bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        std::size_t const length = characterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace dump
