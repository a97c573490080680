#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zntl {

/// Returns the position of the first `pattern` at or after `from`, or npos, like
/// std::string_view::find, but takes linear time for every pattern.
inline std::size_t findPattern(std::string_view text, std::string_view pattern,
                               std::size_t from = 0) {
    constexpr std::size_t npos = std::string_view::npos;
    if (from > text.size() || text.size() - from < pattern.size())
        return npos;
    char const* at = text.data() + from;
    std::size_t const size = text.size() - from;
    // Comparing at every position takes time proportional to the size of the pattern, so memmem
    // searches for long ones. It also finds the empty one.
    // Equivalent: other limits are only slower
    if (pattern.empty() || pattern.size() > 64) {
        at = static_cast<char const*>(memmem(at, size, pattern.data(), pattern.size()));
        return at ? static_cast<std::size_t>(at - text.data()) : npos;
    }
    // Comparing the last character before all others saves most calls of memcmp.
    std::size_t const tail = pattern.size() - 1;
    for (char const* const end = at + size - tail;; ++at) {
        at = static_cast<char const*>(
            std::memchr(at, pattern.front(), static_cast<std::size_t>(end - at)));
        if (!at)
            return npos;
        if (at[tail] == pattern.back() && std::memcmp(at, pattern.data(), tail) == 0)
            return static_cast<std::size_t>(at - text.data());
    }
}

} // namespace zntl
