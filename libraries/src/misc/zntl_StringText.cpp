#include "misc/zntl_String.h"

#include "misc/internal/zntl_CharacterSet.h"
#include "misc/internal/zntl_blank.h"
#include "misc/internal/zntl_decimal.h"
#include "misc/internal/zntl_search.h"
#include "system/zn_portability.h"

#include <algorithm>
#include <cstring>

namespace zntl {

namespace {

/// The closing quote of the section that opens at `open`, or npos when it is not closed.
std::size_t findClosingQuote(std::string const& text, std::size_t open) {
    char const quote = text[open];
    char const closers[] = {'\\', quote};
    std::string_view const closersView(closers, sizeof closers);
    std::size_t at = text.find_first_of(closersView, open + 1);
    // A backslash skips one character. The character behind that one closes the section or is
    // passed over, but is never taken as an escape; kept.
    while (at != std::string::npos && text[at] != quote) {
        if (text.at(at + 2) == quote)
            return at + 2;
        at = text.find_first_of(closersView, at + 3);
    }
    return at;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

String String::trim() const {
    std::string_view const text = trimmed(*this);
    return {text.data(), text.size()};
}

String String::sanitize(String const& text, char const* allowed) {
    CharacterSet const kept(allowed ? allowed : "");
    String result(text);
    result.erase(
        std::remove_if(result.begin(), result.end(), [&](char c) { return !kept.contains(c); }),
        result.end());
    std::string_view const content = trimmed(result);
    result.assign(content.data(), content.size());
    return result;
}

bool String::toBool() const {
    for (char const* const word : {"true", "t", "yes", "y", "on"}) {
        if (zn_stricmp(c_str(), word) == 0)
            return true;
    }
    return parseDecimal(c_str()).value != 0;
}

String String::extract(String const& begin, String const& end) const {
    std::size_t const opening = SearchPattern(begin).findIn(*this);
    if (opening == npos)
        return {};
    std::size_t const start = opening + begin.size();
    std::size_t const closing = SearchPattern(end).findIn(*this, start);
    if (closing == npos)
        return {};
    return substr(start, closing - start);
}

std::vector<unsigned int> String::findAll(String const& chars, String const& quotes) const {
    CharacterSet const wanted(chars);
    CharacterSet const quoting(quotes);
    std::vector<unsigned int> positions;
    // Behind the last wanted character the text is not looked at, so that what is wrong with its
    // quotes there goes unnoticed; kept.
    std::size_t end = size();
    while (end > 0 && !wanted.contains((*this)[end - 1]))
        --end;
    for (std::size_t i = 0; i < end; ++i) {
        char const c = (*this)[i];
        if (quoting.contains(c)) {
            i = findClosingQuote(*this, i);
            if (i == npos)
                break;
        } else if (wanted.contains(c)) {
            if (positions.empty())
                positions.reserve(16); // the usual list, without growing to it step by step
            positions.push_back(static_cast<unsigned int>(i));
        }
    }
    return positions;
}

std::vector<String> String::tokenize(String const& separators, String const& quotes) const {
    std::vector<unsigned int> const cuts = findAll(separators, quotes);
    std::size_t count = 0;
    visitPieces(cuts, [&](std::size_t, std::size_t) { ++count; });
    std::vector<String> pieces;
    pieces.reserve(count);
    visitPieces(cuts,
                [&](std::size_t start, std::size_t end) { pieces.push_back(piece(start, end)); });
    return pieces;
}

String String::piece(std::size_t start, std::size_t end) const {
    char const* const first = data() + start;
    return {first, strnlen(first, end - start)};
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
