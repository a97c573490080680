#include "misc/zntl_String.h"

#include "misc/internal/zntl_escape.h"

#include <algorithm>
#include <array>
#include <climits>
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

/// For each character the number of its escape, counted from 1; 0 for all that are no markup.
constexpr std::array<unsigned char, UCHAR_MAX + 1> numberEscapes() {
    std::array<unsigned char, UCHAR_MAX + 1> numbers{};
    unsigned char number = 0;
    for (Escape const& escape : escapes)
        numbers[static_cast<unsigned char>(escape.character)] = ++number;
    return numbers;
}

constexpr auto escapeNumbers = numberEscapes();

unsigned char escapeNumber(char c) { return escapeNumbers[static_cast<unsigned char>(c)]; }

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
            if (escapeNumber(text_[from]) != 0)
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

/// An entity without its "&".
constexpr std::string_view restOf(Escape const& escape) { return escape.entity.substr(1); }

bool startsWithRest(std::string_view text, Escape const& escape) {
    std::string_view const rest = restOf(escape);
    return !text.empty() && text.front() == rest.front() && text.substr(0, rest.size()) == rest;
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
        if (at > copied)
            encoded.append(text, copied, at - copied);
        encoded += escapes[escapeNumber(text[at]) - std::size_t{1}].entity;
        copied = at + 1;
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
