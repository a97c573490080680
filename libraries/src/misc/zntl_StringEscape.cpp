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
    char text[7];
    unsigned char length;
};
static_assert(sizeof(Encoding) == sizeof(std::uint64_t));

/// The encoding of every character. Filled at the first use, because in a program file it would
/// take more room than the functions that use it.
struct EncodingTable {
    EncodingTable() {
        for (std::size_t i = 0; i < of.size(); ++i)
            of[i] = {{static_cast<char>(i)}, 1};
        for (Escape const& escape : escapes) {
            Encoding& encoding = of[static_cast<unsigned char>(escape.character)];
            encoding.length =
                static_cast<unsigned char>(escape.entity.copy(encoding.text, sizeof encoding.text));
        }
    }

    // Equivalent: a larger array only takes memory
    std::array<Encoding, UCHAR_MAX + 1> of;
};

// Equivalent: other sizes are only slower
constexpr std::size_t blockSize = 128;
// Equivalent: other sizes are only slower
constexpr std::size_t searchRange = 32 * blockSize;

/// Encodes the next block and removes it from the text. Returns whether it has markup. Each
/// character takes the same few steps, with one store and no branch.
bool encodeBlock(std::string_view& text, std::string& encoded) {
    static EncodingTable const encodings;
    std::size_t const size = std::min(text.size(), blockSize);
    char block[blockSize * sizeof(Encoding)];
    char* out = block;
    for (char const c : text.substr(0, size)) {
        Encoding const& encoding = encodings.of[static_cast<unsigned char>(c)];
        std::memcpy(out, &encoding, sizeof encoding);
        out += encoding.length;
    }
    text.remove_prefix(size);
    encoded.append(block, static_cast<std::size_t>(out - block));
    // Equivalent: false only causes another search
    return out > block + size;
}

} // namespace

// A search finds the next markup character, and the text before it is copied. More are usually
// near, so whole blocks then go through the table until one has no markup. The range of the search
// is limited, because a character that does not occur would be searched for up to the end each
// time.
String String::encodeHtml(String const& text) {
    String encoded;
    std::string_view rest = text;
    while (!rest.empty()) {
        // One search of the C library for each of the five, up to the first one found so far.
        std::string_view clean = rest.substr(0, searchRange);
        for (Escape const& escape : escapes)
            clean = clean.substr(0, clean.find(escape.character));
        // Equivalent: reserving again is only slower
        if (encoded.empty())
            encoded.reserve(clean.size() == text.size() ? text.size() : 2 * text.size());
        encoded += clean;
        rest.remove_prefix(clean.size());
        while (!rest.empty() && encodeBlock(rest, encoded)) {
        }
    }
    return encoded;
}

// The result is that of five passes, the first one for "&amp;". One pass is enough: a "&", whether
// decoded or not, starts another entity if the rest of that entity follows it.
String String::decodeHtml(String const& text) {
    // Equivalent: copying is only faster than filling a new string
    if (text.find('&') == npos)
        return text;
    String decoded(text.size(), '\0');
    char* out = decoded.data();
    std::string_view rest = text;
    auto const take = [&rest](std::string_view part) {
        bool const isNext = rest.substr(0, part.size()) == part;
        if (isNext)
            rest.remove_prefix(part.size());
        return isNext;
    };
    while (!rest.empty()) {
        if (rest.front() == '&') {
            if (!take("&amp;"))
                rest.remove_prefix(1);
            auto const escape =
                std::find_if(escapes.begin() + 1, escapes.end(),
                             [&](Escape const& e) { return take(e.entity.substr(1)); });
            *out++ = escape == escapes.end() ? '&' : escape->character;
        } else {
            std::string_view const clean = rest.substr(0, rest.find('&'));
            out = std::copy(clean.begin(), clean.end(), out);
            rest.remove_prefix(clean.size());
        }
    }
    decoded.resize(static_cast<std::size_t>(out - decoded.data()));
    return decoded;
}

} // namespace zntl
