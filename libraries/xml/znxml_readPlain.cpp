#include "znxml_Builder.h"
#include "znxml_readers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace znxml {

namespace {

using Bytes = std::array<bool, 256>;

constexpr unsigned char byteOf(char character) { return static_cast<unsigned char>(character); }

constexpr Bytes nameBytes() {
    Bytes bytes{};
    for (char const c : std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                         "0123456789_-."))
        bytes[byteOf(c)] = true;
    return bytes;
}

/// The ASCII characters that text may contain unescaped, except two that have special rules and are
/// left to Expat: the carriage return, which is read as a line feed, and ">", which must not follow
/// "]]".
constexpr Bytes textBytes() {
    Bytes bytes{};
    for (unsigned int byte = ' '; byte <= 0x7F; ++byte)
        bytes[byte] = true;
    bytes['\t'] = bytes['\n'] = true;
    bytes['<'] = bytes['>'] = bytes['&'] = false;
    return bytes;
}

constexpr Bytes inNames = nameBytes();
constexpr Bytes inText = textBytes();

/// The length of the UTF-8 character at the start of `text` if it has two to four bytes and is
/// allowed in XML; otherwise 0.
std::size_t lengthOfCharacter(std::string_view text) {
    unsigned char const lead = byteOf(text.front());
    std::size_t const length = lead < 0xC0   ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF8 ? 4
                                             : 0;
    if (length == 0 || text.size() < length)
        return 0;
    unsigned int code = lead & (0x7FU >> length);
    for (char const c : text.substr(1, length - 1)) {
        if ((byteOf(c) & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (byteOf(c) & 0x3FU);
    }
    constexpr std::array<unsigned int, 5> least{0, 0, 0x80, 0x800, 0x10000};
    bool const isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    bool const isAllowed = code >= least[length] && code <= 0x10FFFF && !isSurrogate &&
                           code != 0xFFFE && code != 0xFFFF;
    return isAllowed ? length : 0;
}

class Reader {
public:
    Reader(std::string const& source, Document& document)
        : source_(source), builder_(document, source) {}

    bool read() {
        do {
            bool const isPlain = isAt('<') ? readTag() : builder_.isOpen() && readText();
            if (!isPlain)
                return false;
        } while (builder_.isOpen());
        if (source_.find_first_not_of(" \t\n", position_) != std::string_view::npos)
            return false;
        builder_.finish();
        return true;
    }

private:
    bool isAt(char character) const {
        return position_ < source_.size() && source_[position_] == character;
    }

    bool skip(std::string_view expected) {
        if (source_.compare(position_, expected.size(), expected) != 0)
            return false;
        position_ += expected.size();
        return true;
    }

    std::string_view take(Bytes const& bytes) {
        std::size_t const begin = position_;
        while (position_ < source_.size() && bytes[byteOf(source_[position_])])
            ++position_;
        return source_.substr(begin, position_ - begin);
    }

    bool readTag() {
        std::size_t const begin = position_;
        if (skip("</"))
            return builder_.isOpen() && skip(builder_.openName()) && skip(">") && end();
        skip("<");
        std::string_view const name = take(inNames);
        if (name.empty() ||
            std::string_view("-.0123456789").find(name.front()) != std::string_view::npos)
            return false;
        builder_.start(begin, name);
        return skip(">") || (skip("/>") && end());
    }

    bool end() {
        builder_.end(position_);
        return true;
    }

    /// Reads up to the next tag.
    bool readText() {
        while (!isAt('<')) {
            if (std::string_view const text = take(inText); !text.empty())
                builder_.addText(text);
            else if (position_ == source_.size() || !(isAt('&') ? readEntity() : readCharacter()))
                return false;
        }
        return true;
    }

    bool readEntity() {
        struct Entity {
            std::string_view reference;
            std::string_view text;
        };
        constexpr std::array<Entity, 5> entities{
            {{"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}, {"&apos;", "'"}, {"&quot;", "\""}}};
        return std::any_of(entities.begin(), entities.end(), [this](Entity const& entity) {
            bool const isThis = skip(entity.reference);
            if (isThis)
                builder_.addText(entity.text);
            return isThis;
        });
    }

    bool readCharacter() {
        std::string_view const text =
            source_.substr(position_, lengthOfCharacter(source_.substr(position_)));
        builder_.addText(text);
        position_ += text.size();
        return !text.empty();
    }

    std::string_view source_;
    Builder builder_;
    std::size_t position_ = 0;
};

} // namespace

std::unique_ptr<Document> readPlain(std::string const& source) {
    if (source.size() > maxDocumentSize)
        return nullptr;
    auto document = std::make_unique<Document>();
    return Reader(source, *document).read() ? std::move(document) : nullptr;
}

} // namespace znxml
