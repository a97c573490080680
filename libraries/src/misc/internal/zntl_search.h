#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zntl {

/// A text that is searched for in others, in linear time whatever it is.
class SearchPattern {
public:
    /// The characters stay where they are, and are good for as long as the pattern is used.
    explicit SearchPattern(std::string_view pattern)
        : pattern_(pattern), isPlain_(pattern.size() <= brief ||
                                      pattern.find(pattern.front(), 1) == std::string_view::npos) {}

    std::size_t size() const { return pattern_.size(); }

    /// The first occurrence in `text` at or after `from`, as std::string_view::find.
    std::size_t findIn(std::string_view text, std::size_t from = 0) const {
        if (from > text.size() || text.size() - from < pattern_.size())
            return std::string_view::npos;
        if (pattern_.empty())
            return from;
        return isPlain_ ? findPlain(text, from) : findAny(text, from);
    }

private:
    using traits = std::string_view::traits_type;
    static constexpr std::size_t brief = 16;

    std::size_t findPlain(std::string_view text, std::size_t from) const {
        std::size_t const tail = pattern_.size() - 1;
        char const* const end = text.data() + text.size() - tail;
        for (char const* at = text.data() + from;; ++at) {
            at = traits::find(at, static_cast<std::size_t>(end - at), pattern_.front());
            if (!at)
                return std::string_view::npos;
            // Most places that begin like the pattern end otherwise, which spares them a call.
            if (at[tail] == pattern_.back() && traits::compare(at, pattern_.data(), tail) == 0)
                return static_cast<std::size_t>(at - text.data());
        }
    }

    std::size_t findAny(std::string_view text, std::size_t from) const {
        void const* const found =
            memmem(text.data() + from, text.size() - from, pattern_.data(), pattern_.size());
        if (!found)
            return std::string_view::npos;
        return static_cast<std::size_t>(static_cast<char const*>(found) - text.data());
    }

    std::string_view pattern_;
    // The plain search leaps to the first character. It is linear too where that does not come
    // again, because no character of the text is then compared twice, and where few are compared at
    // all.
    bool isPlain_;
};

} // namespace zntl
