#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zntl {

/// The first occurrence of `pattern` in `text` at or after `from`, as std::string_view::find, but
/// in linear time whatever the pattern is.
inline std::size_t findLinear(std::string_view text, std::string_view pattern,
                              std::size_t from = 0) {
    if (from > text.size())
        return std::string_view::npos;
    if (pattern.empty())
        return from;
    // Where a pattern's first character does not come again in it, no character of the text is
    // compared twice, and the plain search, which leaps to that first character, is linear too.
    if (pattern.find(pattern.front(), 1) == std::string_view::npos)
        return text.find(pattern, from);
    void const* const found =
        memmem(text.data() + from, text.size() - from, pattern.data(), pattern.size());
    if (!found)
        return std::string_view::npos;
    return static_cast<std::size_t>(static_cast<char const*>(found) - text.data());
}

} // namespace zntl
