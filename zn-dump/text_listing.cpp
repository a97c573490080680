#include "text_listing.h"

#include "utf8.h"

namespace dump {

namespace {

constexpr std::size_t maxHexBytes = 32; // in one line

bool isControl(std::string_view character) {
    auto const first = static_cast<unsigned char>(character[0]);
    bool const isC1 = first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    return first < 0x20 || first == 0x7F || isC1;
}

} // namespace

void TextListing::beginFile(char const* name, Form form, std::size_t size) {
    printEscaped(out_, name);
    std::fprintf(out_, ": %s, %zu bytes\n", form == Form::stream ? "object stream" : "typed file",
                 size);
}

void TextListing::endFile() {}

void TextListing::unreadableFile(char const* /*name*/, char const* /*reason*/) {}

void TextListing::marker(Entry const& entry) {
    begin(entry, "");
    std::fputc('\n', out_);
}

void TextListing::integer(Entry const& entry, int value) {
    begin(entry, "");
    std::fprintf(out_, "  %d\n", value);
}

void TextListing::string(Entry const& entry, std::string const& value, std::uint32_t storedLength) {
    begin(entry, "");
    std::fputs("  \"", out_);
    printEscaped(out_, value);
    std::fputc('"', out_);
    if (value.size() != storedLength)
        std::fprintf(out_, " (its stored length is %u)", storedLength);
    std::fputc('\n', out_);
}

void TextListing::resolution(Entry const& entry, int width, int height) {
    begin(entry, "");
    std::fprintf(out_, "  %dx%d\n", width, height);
}

void TextListing::bytes(Entry const& entry, Bytes const& payload) {
    begin(entry, "-");
    Bytes const shown = payload.part(0, maxHexBytes);
    std::fputc(' ', out_);
    for (std::size_t i = 0; i < shown.size(); ++i)
        std::fprintf(out_, " %02x", shown.data()[i]);
    std::fputs(shown.size() < payload.size() ? " ...\n" : "\n", out_);
}

void TextListing::tooDeep(Entry const& entry) {
    begin(entry, "set");
    std::fputs("  (nested too deeply to be shown)\n", out_);
}

void TextListing::beginStream(Entry const& entry) {
    begin(entry, "");
    std::fputc('\n', out_);
    ++depth_;
}

void TextListing::beginSet(Entry const& entry, unsigned int elementType, int count) {
    begin(entry, "set");
    std::fprintf(out_, "  %d of type %u\n", count, elementType);
    ++depth_;
}

void TextListing::end() { --depth_; }

void TextListing::damage(std::size_t offset, std::string const& what) {
    std::fprintf(out_, "%10zu damaged: %s\n", offset, what.c_str());
}

/// Prints the columns that all values have. `otherName` replaces a missing type name.
void TextListing::begin(Entry const& entry, char const* otherName) {
    std::string name(2 * depth_, ' ');
    name += entry.typeName.empty() ? std::string(otherName) : entry.typeName;
    std::fprintf(out_, "%10zu %5u %-20s %10zu", entry.offset, entry.typeId, name.c_str(),
                 entry.length);
}

/// Prints a string on one line of a terminal: control characters and bytes that are not UTF-8
/// become escapes.
void printEscaped(std::FILE* out, std::string_view text) {
    while (!text.empty()) {
        std::size_t const length = characterLength(text);
        std::string_view const character = text.substr(0, length > 0 ? length : 1);
        if (character == "\"" || character == "\\") {
            std::fprintf(out, "\\%c", character[0]);
        } else if (character == "\n") {
            std::fputs("\\n", out);
        } else if (length == 0 || isControl(character)) {
            for (char const c : character)
                std::fprintf(out, "\\x%02x", static_cast<unsigned char>(c));
        } else {
            std::fwrite(character.data(), 1, character.size(), out);
        }
        text.remove_prefix(character.size());
    }
}

} // namespace dump
