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
        : pattern_(pattern),
          isPlain_(pattern.find(pattern.substr(0, 1), 1) == std::string_view::npos) {}

    std::size_t size() const { return pattern_.size(); }

    /// The first occurrence in `text` at or after `from`, as std::string_view::find.
    std::size_t findIn(std::string_view text, std::size_t from = 0) const {
        if (isPlain_)
            return text.find(pattern_, from);
        if (from > text.size())
            return std::string_view::npos;
        void const* const found =
            memmem(text.data() + from, text.size() - from, pattern_.data(), pattern_.size());
        if (!found)
            return std::string_view::npos;
        return static_cast<std::size_t>(static_cast<char const*>(found) - text.data());
    }

private:
    std::string_view pattern_;
    // Where its first character does not come again, no character of the text is compared twice,
    // and the plain search, which leaps to that first character, is linear too.
    bool isPlain_;
};

} // namespace zntl
