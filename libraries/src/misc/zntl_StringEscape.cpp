#include "misc/zntl_String.h"

#include "misc/internal/zntl_escape.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace zntl {

namespace {

struct Escape {
    char character;
    std::string_view entity;
};

constexpr std::array<Escape, 5> escapes{
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\'', "&apos;"}, {'"', "&quot;"}}};

/// An entity without its "&".
constexpr std::string_view restOf(Escape const& escape) { return escape.entity.substr(1); }

bool startsWithRest(std::string_view text, Escape const& escape) {
    return text.substr(0, restOf(escape).size()) == restOf(escape);
}

} // namespace

// Each markup character is searched by itself, from one of its occurrences to the next, which leaps
// over text without markup at the speed of the C library.
void appendEncoded(std::string& encoded, std::string const& text) {
    std::array<std::size_t, escapes.size()> next;
    std::transform(escapes.begin(), escapes.end(), next.begin(),
                   [&](Escape const& escape) { return text.find(escape.character); });
    std::size_t copied = 0;
    while (true) {
        auto const first = std::min_element(next.begin(), next.end());
        if (*first == std::string::npos)
            break;
        Escape const& escape = escapes[static_cast<std::size_t>(first - next.begin())];
        encoded.append(text, copied, *first - copied);
        encoded += escape.entity;
        copied = *first + 1;
        *first = text.find(escape.character, copied);
    }
    encoded.append(text, copied);
}

String String::encodeHtml(String const& text) {
    String encoded;
    encoded.reserve(text.size());
    appendEncoded(encoded, text);
    return encoded;
}

// One pass with the result of five: "&amp;" first, and then, in the result, the others. An "&",
// decoded or not, begins another entity exactly when that entity's rest follows it in the text.
String String::decodeHtml(String const& text) {
    std::string_view const all = text;
    String result;
    result.reserve(text.size());
    std::size_t copied = 0;
    for (std::size_t at = all.find('&'); at != npos; at = all.find('&', copied)) {
        result.append(all, copied, at - copied);
        copied = at + 1;
        if (startsWithRest(all.substr(copied), escapes.front()))
            copied += restOf(escapes.front()).size();
        char decoded = '&';
        for (auto escape = escapes.begin() + 1; escape != escapes.end(); ++escape) {
            if (startsWithRest(all.substr(copied), *escape)) {
                decoded = escape->character;
                copied += restOf(*escape).size();
                break;
            }
        }
        result.push_back(decoded);
    }
    result.append(all, copied);
    return result;
}

} // namespace zntl
