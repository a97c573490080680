#include "misc/zntl_String.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace zntl {

namespace {

struct Escape {
    char character;
    std::string_view entity;
};

constexpr std::array<Escape, 5> escapes{
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\'', "&apos;"}, {'"', "&quot;"}}};

/// The first markup character, or the end of the text. Each search stops where the one before it
/// found something, and runs at the speed of the C library.
std::size_t findMarkup(std::string_view text) {
    for (Escape const& escape : escapes)
        text = text.substr(0, text.find(escape.character));
    return text.size();
}

/// An entity without its "&".
constexpr std::string_view tailOf(Escape const& escape) { return escape.entity.substr(1); }

/// The rest of an encoded character, after the character itself or the "&" that replaces it. Its
/// fixed size is copied in one step.
struct Tail {
    char text[7];
    unsigned char length;
};

/// The tails of all entities; the first one is that of a character that stays.
constexpr std::array<Tail, 1 + escapes.size()> listTails() {
    std::array<Tail, 1 + escapes.size()> all{};
    for (std::size_t i = 0; i < escapes.size(); ++i) {
        for (char const c : tailOf(escapes[i]))
            all[1 + i].text[all[1 + i].length++] = c;
    }
    return all;
}

constexpr auto tails = listTails();

/// The index of each character's tail.
constexpr std::array<unsigned char, 1 + UCHAR_MAX> indexTails() {
    std::array<unsigned char, 1 + UCHAR_MAX> all{};
    for (std::size_t i = 0; i < escapes.size(); ++i)
        all[static_cast<unsigned char>(escapes[i].character)] = static_cast<unsigned char>(1 + i);
    return all;
}

constexpr auto tailIndexes = indexTails();

constexpr std::size_t blockSize = 256;

/// Appends up to `blockSize` characters encoded. Each is copied in one step of fixed size, and
/// no branch depends on whether it is markup.
void appendEncoded(std::string& encoded, std::string_view text) {
    char block[blockSize * (1 + sizeof(Tail))];
    char* out = block;
    for (char const c : text) {
        unsigned char const index = tailIndexes[static_cast<unsigned char>(c)];
        *out++ = index == 0 ? c : '&';
        Tail const& tail = tails[index];
        std::memcpy(out, &tail, sizeof tail);
        out += tail.length;
    }
    encoded.append(block, static_cast<std::size_t>(out - block));
}

/// Takes `part` off the start of the text; false when it does not start with it.
bool take(std::string_view& text, std::string_view part) {
    if (text.size() < part.size())
        return false;
    // Character by character, because a call would cost more than so few of them.
    for (std::size_t i = 0; i < part.size(); ++i) {
        if (text[i] != part[i])
            return false;
    }
    text.remove_prefix(part.size());
    return true;
}

/// Moves the characters before the next "&" from the text to `out`; returns the end of the copy.
char* moveToAmpersand(std::string_view& text, char* out) {
    // Where entities are dense the next one is near, and a call would cost more than the few
    // characters up to it.
    std::size_t const near = std::min<std::size_t>(text.size(), 16);
    std::size_t at = 0;
    for (; at < near && text[at] != '&'; ++at)
        out[at] = text[at];
    if (at == near) {
        at = std::min(text.find('&', near), text.size());
        std::copy(text.begin() + near, text.begin() + at, out + near);
    }
    text.remove_prefix(at);
    return out + at;
}

} // namespace

// Where one character is markup, others are near, and a block is encoded whole. Where a block has
// none, the next one may be far, and the text up to there is copied.
String String::encodeHtml(String const& text) {
    constexpr std::size_t farthest = 4 * blockSize;
    String encoded;
    std::string_view rest = text;
    while (!rest.empty()) {
        std::size_t const clean = findMarkup(rest.substr(0, farthest));
        if (clean >= blockSize || clean == rest.size()) {
            encoded.reserve(text.size());
            encoded.append(rest, 0, clean);
            rest.remove_prefix(clean);
        } else {
            encoded.reserve(2 * text.size());
            std::string_view const block = rest.substr(0, blockSize);
            appendEncoded(encoded, block);
            rest.remove_prefix(block.size());
        }
    }
    return encoded;
}

// One pass with the result of five, "&amp;" first: an "&", decoded or not, begins another entity
// exactly when what follows it in the text is that entity's tail.
String String::decodeHtml(String const& text) {
    if (text.find('&') == npos)
        return text; // spares the filling of a new one
    String decoded(text.size(), '\0');
    std::string_view rest = text;
    char* out = moveToAmpersand(rest, decoded.data());
    while (!rest.empty()) {
        rest.remove_prefix(1);
        take(rest, tailOf(escapes.front()));
        auto const escape = std::find_if(escapes.begin() + 1, escapes.end(),
                                         [&](Escape const& e) { return take(rest, tailOf(e)); });
        *out++ = escape == escapes.end() ? '&' : escape->character;
        out = moveToAmpersand(rest, out);
    }
    decoded.resize(static_cast<std::size_t>(out - decoded.data()));
    return decoded;
}

} // namespace zntl
