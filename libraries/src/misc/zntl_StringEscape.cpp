#include "misc/zntl_String.h"

#include "misc/internal/zntl_escape.h"

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

/// What a character is encoded as, in a size that is copied in one step.
struct Encoded {
    char text[7];
    unsigned char length;
};

constexpr std::array<Encoded, UCHAR_MAX + 1> encodeAll() {
    std::array<Encoded, UCHAR_MAX + 1> all{};
    for (std::size_t c = 0; c < all.size(); ++c)
        all[c] = {{static_cast<char>(c)}, 1};
    for (Escape const& escape : escapes) {
        Encoded& encoded = all[static_cast<unsigned char>(escape.character)];
        encoded.length = 0;
        for (char const c : escape.entity)
            encoded.text[encoded.length++] = c;
    }
    return all;
}

constexpr auto encodedCharacters = encodeAll();

Encoded const& encodedCharacter(char c) { return encodedCharacters[static_cast<unsigned char>(c)]; }

bool isMarkup(char c) { return encodedCharacter(c).length > 1; }

/// Finds the markup characters of a text, one after another.
class MarkupSearch {
public:
    explicit MarkupSearch(std::string_view text) : text_(text) {}

    /// The first markup character at or behind `from`, or the text's end; `from` never decreases.
    std::size_t next(std::size_t from) {
        // Where markup is dense it is near. Where it is rare, a search for each character leaps
        // over the text at the speed of the C library.
        constexpr std::size_t near = 32;
        std::size_t const end = std::min(text_.size(), from + near);
        for (; from < end; ++from) {
            if (isMarkup(text_[from]))
                return from;
        }
        return from < text_.size() ? leap(from) : from;
    }

private:
    std::size_t leap(std::size_t from) {
        for (std::size_t i = 0; i < escapes.size(); ++i) {
            if (found_[i] < from)
                found_[i] = std::min(text_.find(escapes[i].character, from), text_.size());
        }
        return *std::min_element(found_.begin(), found_.end());
    }

    std::string_view text_;
    std::array<std::size_t, escapes.size()> found_{}; // of each character
};

// How many characters are encoded together: where one is markup, others are near.
constexpr std::size_t blockSize = 64;

/// Encodes up to `blockSize` characters, whatever they are: each takes one copy of a fixed size,
/// and nothing depends on which are markup.
void appendBlock(std::string& encoded, std::string_view text) {
    char block[blockSize * sizeof(Encoded)];
    char* out = block;
    for (char const c : text) {
        Encoded const& character = encodedCharacter(c);
        std::memcpy(out, &character, sizeof character);
        out += character.length;
    }
    encoded.append(block, static_cast<std::size_t>(out - block));
}

/// An entity without its "&".
constexpr std::string_view restOf(Escape const& escape) { return escape.entity.substr(1); }

bool startsWithRest(std::string_view text, Escape const& escape) {
    std::string_view const rest = restOf(escape);
    if (text.size() < rest.size())
        return false;
    // Character by character, because a call would cost more than so few of them.
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (text[i] != rest[i])
            return false;
    }
    return true;
}

/// Copies what stands from `at` up to the next "&", or to the text's end, and moves `at` there;
/// returns the end of the copy. `out` may be a place in the text that has been read.
char* copyToAmpersand(std::string_view text, std::size_t& at, char* out) {
    // Where entities are dense the next one is near. One that is far is found, and what comes
    // before it is copied, at the speed of the C library.
    constexpr std::size_t near = 16;
    for (std::size_t const end = std::min(text.size(), at + near); at < end; ++at) {
        if (text[at] == '&')
            return out;
        *out++ = text[at];
    }
    std::string_view const far = text.substr(at, text.find('&', at) - at);
    at += far.size();
    return std::copy(far.begin(), far.end(), out);
}

} // namespace

void appendEncoded(std::string& encoded, std::string const& text) {
    MarkupSearch search(text);
    std::size_t copied = 0;
    std::size_t at = search.next(0);
    // With entities it becomes longer than the text, so it would grow to twice of that anyway.
    if (at < text.size())
        encoded.reserve(encoded.size() + 2 * text.size());
    for (; at < text.size(); at = search.next(copied)) {
        encoded.append(text, copied, at - copied);
        copied = std::min(at + blockSize, text.size());
        appendBlock(encoded, std::string_view(text).substr(at, copied - at));
    }
    encoded.append(text, copied);
}

String String::encodeHtml(String const& text) {
    String encoded;
    appendEncoded(encoded, text);
    return encoded;
}

// One pass with the result of five: "&amp;" first, and then, in the result, the others. An "&",
// decoded or not, begins another entity exactly when that entity's rest follows it in the text.
String String::decodeHtml(String const& text) {
    String result(text);
    // What is decoded is written over what has been read, which it never overtakes.
    std::string_view const all = result;
    std::size_t at = std::min(all.find('&'), all.size());
    char* out = result.data() + at;
    while (at < all.size()) {
        ++at;
        if (startsWithRest(all.substr(at), escapes.front()))
            at += restOf(escapes.front()).size();
        char decoded = '&';
        for (auto escape = escapes.begin() + 1; escape != escapes.end(); ++escape) {
            if (startsWithRest(all.substr(at), *escape)) {
                decoded = escape->character;
                at += restOf(*escape).size();
                break;
            }
        }
        *out++ = decoded;
        out = copyToAmpersand(all, at, out);
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

} // namespace zntl
