#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zntl {

/// A string to search for. Searching takes linear time for every pattern.
class SearchPattern {
public:
    /// Refers to the characters, which must outlive the pattern.
    explicit SearchPattern(std::string_view pattern) : pattern_(pattern) {
        // Equivalent: the borders of a short pattern are only not needed
        if (!isShort())
            findBorders();
    }

    std::size_t size() const { return pattern_.size(); }

    /// Returns the position of the first occurrence at or after `from`, or npos, as
    /// std::string_view::find does.
    std::size_t findIn(std::string_view text, std::size_t from = 0) const {
        if (from > text.size() || text.size() - from < pattern_.size())
            return std::string_view::npos;
        if (pattern_.empty())
            return from;
        return isShort() ? findShort(text, from) : findLong(text, from);
    }

private:
    // Comparing at every position is faster, and linear because the size is limited.
    // Equivalent: other limits are only slower
    bool isShort() const { return pattern_.size() <= 64; }
    std::size_t findShort(std::string_view text, std::size_t from) const;

    // The Knuth-Morris-Pratt algorithm.
    void findBorders();
    std::size_t advance(std::size_t matched, char next) const;
    std::size_t findLong(std::string_view text, std::size_t from) const;

    std::string_view pattern_;
    // Only of a long pattern. borders_[i] is the length of the longest border of pattern_[0..i]: of
    // the longest string, shorter than these characters, that they both start and end with.
    std::vector<std::size_t> borders_;
};

inline std::size_t SearchPattern::findShort(std::string_view text, std::size_t from) const {
    using traits = std::string_view::traits_type;
    std::size_t const tail = pattern_.size() - 1;
    char const* const end = text.data() + text.size() - tail;
    for (char const* at = text.data() + from;; ++at) {
        at = traits::find(at, static_cast<std::size_t>(end - at), pattern_.front());
        if (!at)
            return std::string_view::npos;
        // Comparing the last character first saves most calls of compare.
        if (at[tail] == pattern_.back() && traits::compare(at, pattern_.data(), tail) == 0)
            return static_cast<std::size_t>(at - text.data());
    }
}

} // namespace zntl
