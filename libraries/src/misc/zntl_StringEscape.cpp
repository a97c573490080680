#include "misc/internal/zntl_bytes.h"
#include "misc/zntl_String.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
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

/// How a character is encoded, in a size that is copied in one step.
struct Encoding {
    char text[7]; // the first byte is XORed with the character
    unsigned char length;
};
static_assert(sizeof(Encoding) == sizeof(std::uint64_t));

/// Encoding 0 is that of every character that stays as it is.
constexpr std::array<Encoding, 1 + escapes.size()> listEncodings() {
    std::array<Encoding, 1 + escapes.size()> all{{{{}, 1}}};
    for (std::size_t i = 0; i < escapes.size(); ++i) {
        Encoding& encoding = all[1 + i];
        for (char const c : escapes[i].entity)
            encoding.text[encoding.length++] = c;
        encoding.text[0] = static_cast<char>(encoding.text[0] ^ escapes[i].character);
    }
    return all;
}

/// The index of each character's encoding.
constexpr std::array<unsigned char, 1 + UCHAR_MAX> indexEncodings() {
    std::array<unsigned char, 1 + UCHAR_MAX> all{};
    for (std::size_t i = 0; i < escapes.size(); ++i)
        all[static_cast<unsigned char>(escapes[i].character)] = static_cast<unsigned char>(1 + i);
    return all;
}

constexpr auto encodings = listEncodings();
constexpr auto encodingIndexes = indexEncodings();

// Equivalent: other sizes are only slower
constexpr std::size_t blockSize = 128;
// Equivalent: other sizes are only slower
constexpr std::size_t searchRange = 32 * blockSize;

/// Appends up to `blockSize` characters encoded; returns whether one of them is markup. Each
/// character takes the same few steps, with one store and no branch.
bool appendEncoded(std::string& encoded, std::string_view text) {
    auto const firstByte = loadNative<std::uint64_t>("\1\0\0\0\0\0\0");
    char block[blockSize * sizeof(Encoding)];
    char* out = block;
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        Encoding const& encoding = encodings[encodingIndexes[byte]];
        std::uint64_t const characters = loadNative<std::uint64_t>(&encoding) ^ (firstByte * byte);
        std::memcpy(out, &characters, sizeof characters);
        out += encoding.length;
    }
    auto const length = static_cast<std::size_t>(out - block);
    encoded.append(block, length);
    // Equivalent: false only causes another search
    return length > text.size();
}

/// An entity without its "&".
constexpr std::string_view tailOf(Escape const& escape) { return escape.entity.substr(1); }

/// Removes `part` from the start of the text. Returns false if the text does not start with it.
bool take(std::string_view& text, std::string_view part) {
    if (text.size() < part.size())
        return false;
    // Character by character, because a call costs more than comparing these few.
    for (std::size_t i = 0; i < part.size(); ++i) {
        if (text[i] != part[i])
            return false;
    }
    text.remove_prefix(part.size());
    return true;
}

/// Moves the characters before the next "&" from the text to `out`. Returns the end of the copy.
char* moveToAmpersand(std::string_view& text, char* out) {
    // Entities come in groups, and a call costs more than copying the few characters between them.
    // Equivalent: other sizes are only slower
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

// A search finds the next markup character, in a limited range so that encoding stays linear.
// Others are usually near, so whole blocks go through the table until one has no markup.
String String::encodeHtml(String const& text) {
    String encoded;
    std::string_view rest = text;
    while (!rest.empty()) {
        std::string_view const range = rest.substr(0, searchRange);
        // The C library searches for each of the five, up to the first one found so far.
        std::string_view clean = range;
        for (Escape const& escape : escapes)
            clean = clean.substr(0, clean.find(escape.character));
        // Equivalent: reserving again is only slower
        if (encoded.empty())
            encoded.reserve(clean.size() == range.size() ? text.size() : 2 * text.size());
        encoded.append(clean);
        rest.remove_prefix(clean.size());
        for (bool hasMarkup = !rest.empty(); hasMarkup;) {
            std::string_view const block = rest.substr(0, blockSize);
            hasMarkup = appendEncoded(encoded, block);
            rest.remove_prefix(block.size());
        }
    }
    return encoded;
}

// The result is that of five passes, the first one for "&amp;". One pass is enough: a "&", whether
// decoded or not, starts another entity if the tail of that entity follows it.
String String::decodeHtml(String const& text) {
    // Equivalent: copying is only faster than filling a new string
    if (text.find('&') == npos)
        return text;
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
