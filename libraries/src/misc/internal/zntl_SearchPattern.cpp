#include "misc/internal/zntl_SearchPattern.h"

namespace zntl {

void SearchPattern::findBorders() {
    // Equivalent: this only saves allocations
    borders_.reserve(pattern_.size());
    borders_.push_back(0);
    for (std::size_t matched = 0; borders_.size() < pattern_.size(); borders_.push_back(matched))
        matched = advance(matched, pattern_[borders_.size()]);
}

/// Returns how many characters of the pattern match after the character `next`, if `matched` of
/// them matched before it.
std::size_t SearchPattern::advance(std::size_t matched, char next) const {
    while (matched > 0 && pattern_[matched] != next)
        matched = borders_[matched - 1];
    return pattern_[matched] == next ? matched + 1 : 0;
}

std::size_t SearchPattern::findLong(std::string_view text, std::size_t from) const {
    for (std::size_t matched = 0; from < text.size(); ++from) {
        // While nothing matches, the C library searches for the first character.
        // Equivalent: this is only faster
        if (matched == 0 && (from = text.find(pattern_.front(), from)) == std::string_view::npos)
            return std::string_view::npos;
        matched = advance(matched, text[from]);
        if (matched == pattern_.size())
            return from + 1 - matched;
    }
    return std::string_view::npos;
}

} // namespace zntl
