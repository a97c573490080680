#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zntl {

/// A string to search for, in linear time whatever it is.
class SearchPattern {
public:
    /// The characters stay where they are, and must outlive the pattern.
    explicit SearchPattern(std::string_view pattern) : pattern_(pattern) {
        if (!isShort())
            findBorders();
    }

    std::size_t size() const { return pattern_.size(); }

    /// The first occurrence in `text` at or after `from`, as std::string_view::find.
    std::size_t findIn(std::string_view text, std::size_t from = 0) const {
        if (from > text.size() || text.size() - from < pattern_.size())
            return std::string_view::npos;
        if (pattern_.empty())
            return from;
        return isShort() ? findShort(text, from) : findLong(text, from);
    }

private:
    // Compared at every position, a pattern this short is found in linear time, too, and faster.
    bool isShort() const { return pattern_.size() <= 64; }
    std::size_t findShort(std::string_view text, std::size_t from) const;

    // The search of Knuth, Morris and Pratt, which never goes back in the text.
    void findBorders();
    std::size_t advance(std::size_t matched, char next) const;
    std::size_t findLong(std::string_view text, std::size_t from) const;

    std::string_view pattern_;
    // Of a long pattern: for each of its characters, how much of the start of the pattern ends
    // there too, short of all that was read so far.
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
        // Most places that start like the pattern end otherwise, which saves a call.
        if (at[tail] == pattern_.back() && traits::compare(at, pattern_.data(), tail) == 0)
            return static_cast<std::size_t>(at - text.data());
    }
}

} // namespace zntl
