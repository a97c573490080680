#include "misc/zntl_String.h"

#include "misc/internal/zntl_blank.h"
#include "misc/internal/zntl_findPattern.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace zntl {

namespace {

/// A value for each character.
template <class Value>
class CharacterTable {
public:
    Value& operator[](char c) { return values_[static_cast<unsigned char>(c)]; }

private:
    // Equivalent: a larger array only takes memory
    std::array<Value, UCHAR_MAX + 1> values_{};
};

/// The closing quote of the section that opens at `open`, or the size if it is not closed.
std::size_t findClosingQuote(std::string const& text, std::size_t open) {
    char const quote = text[open];
    for (std::size_t at = open + 1; at != text.size(); ++at) {
        if (text[at] == quote)
            return at;
        if (text[at] == '\\') {
            // Contract: a backslash skips one character. The character after that one closes the
            // section or is skipped as well, but is never an escape.
            at += 2;
            if (text.at(at) == quote)
                return at;
        }
    }
    return text.size();
}

} // namespace

String String::trim() const {
    std::string_view text = *this;
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return {text.data(), text.size()};
}

String String::sanitize(String const& text, char const* allowed) {
    CharacterTable<bool> isAllowed;
    for (char const c : std::string_view(allowed ? allowed : ""))
        isAllowed[c] = true;
    String result(text);
    char* out = result.data();
    for (char const c : text) {
        *out = c;
        out += isAllowed[c] ? 1 : 0;
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result.trim();
}

String String::extract(String const& begin, String const& end) const {
    std::size_t const opening = findPattern(*this, begin);
    if (opening == npos)
        return {};
    std::size_t const start = opening + begin.size();
    std::size_t const closing = findPattern(*this, end, start);
    if (closing == npos)
        return {};
    return substr(start, closing - start);
}

std::vector<unsigned int> String::findAll(String const& chars, String const& quotes) const {
    struct Role {
        bool isWanted;
        bool isQuote;
    };
    CharacterTable<Role> roles;
    for (char const c : chars)
        roles[c].isWanted = true;
    for (char const c : quotes)
        roles[c].isQuote = true;

    // Contract: scanning stops at the last wanted character, so a backslash at the end of the
    // string is not an error if its section opens after that character.
    std::size_t end = size();
    while (end > 0 && !roles[(*this)[end - 1]].isWanted)
        --end;
    std::vector<unsigned int> positions;
    // Most lists have no more entries, so this saves growing step by step.
    // Equivalent: this is only faster
    positions.reserve(std::min<std::size_t>(end, 16));
    for (std::size_t i = 0; i < end; ++i) {
        Role const role = roles[(*this)[i]];
        if (role.isQuote) {
            i = findClosingQuote(*this, i);
        } else if (role.isWanted) {
            positions.push_back(static_cast<unsigned int>(i));
        }
    }
    return positions;
}

std::vector<String> String::tokenize(String const& separators, String const& quotes) const {
    std::vector<unsigned int> const cuts = findAll(separators, quotes);
    // A piece ends at its first NUL. Most strings have none, and then no piece is searched for one.
    bool const hasNul = find('\0') != npos;
    std::vector<String> pieces;
    // Equivalent: growing later is only slower
    pieces.reserve(cuts.size() + 1);
    std::size_t start = 0;
    for (std::size_t i = 0; i <= cuts.size(); ++i) {
        std::size_t const end = i < cuts.size() ? cuts[i] : size();
        if (start < end) {
            char const* const piece = data() + start;
            pieces.emplace_back(piece, hasNul ? strnlen(piece, end - start) : end - start);
        }
        start = end + 1;
    }
    return pieces;
}

String String::abbreviate(unsigned int length) const {
    constexpr std::string_view ellipsis = "...";
    if (length < ellipsis.size())
        return {};
    if (length >= size())
        return *this;
    String text = substr(0, length - ellipsis.size());
    text += ellipsis;
    return text;
}

} // namespace zntl
