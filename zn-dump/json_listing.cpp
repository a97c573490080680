#include "json_listing.h"

#include "utf8.h"

namespace dump {

JsonListing::JsonListing(std::FILE* out) : out_(out) { std::fputc('[', out_); }

JsonListing::~JsonListing() { std::fputs("\n]\n", out_); }

void JsonListing::beginFile(char const* name, Form form, std::size_t size) {
    next();
    std::fputs("{\"file\": ", out_);
    quote(name);
    std::fprintf(out_, ", \"form\": \"%s\", \"size\": %zu",
                 form == Form::stream ? "stream" : "typed", size);
    isDamaged_ = false;
    beginValues();
}

void JsonListing::endFile() {
    std::fprintf(out_, "], \"damaged\": %s}", isDamaged_ ? "true" : "false");
    isFirst_ = false;
}

void JsonListing::unreadableFile(char const* name, char const* reason) {
    next();
    std::fputs("{\"file\": ", out_);
    quote(name);
    std::fputs(", \"error\": ", out_);
    quote(reason);
    std::fputc('}', out_);
}

void JsonListing::marker(Entry const& entry) {
    begin(entry);
    std::fputc('}', out_);
}

void JsonListing::integer(Entry const& entry, int value) {
    begin(entry);
    std::fprintf(out_, ", \"value\": %d}", value);
}

void JsonListing::string(Entry const& entry, std::string const& value, std::uint32_t storedLength) {
    begin(entry);
    if (isUtf8(value)) {
        std::fputs(", \"value\": ", out_);
        quote(value);
    } else {
        std::fputs(", \"valueHex\": ", out_);
        hex(reinterpret_cast<unsigned char const*>(value.data()), value.size());
    }
    if (value.size() != storedLength)
        std::fprintf(out_, ", \"storedLength\": %u", storedLength);
    std::fputc('}', out_);
}

void JsonListing::resolution(Entry const& entry, int width, int height) {
    begin(entry);
    std::fprintf(out_, ", \"value\": {\"width\": %d, \"height\": %d}}", width, height);
}

void JsonListing::bytes(Entry const& entry, Bytes const& payload) {
    begin(entry);
    std::fputs(", \"hex\": ", out_);
    hex(payload.data(), payload.size());
    std::fputc('}', out_);
}

void JsonListing::tooDeep(Entry const& entry) {
    begin(entry);
    std::fputs(", \"tooDeep\": true}", out_);
}

void JsonListing::beginStream(Entry const& entry) {
    begin(entry);
    beginValues();
}

void JsonListing::beginSet(Entry const& entry, unsigned int elementType, int count) {
    begin(entry);
    std::fprintf(out_, ", \"elementType\": %u, \"count\": %d", elementType, count);
    beginValues();
}

void JsonListing::end() {
    std::fputs("]}", out_);
    isFirst_ = false;
}

void JsonListing::damage(std::size_t offset, std::string const& what) {
    isDamaged_ = true;
    next();
    std::fprintf(out_, "{\"offset\": %zu, \"damage\": ", offset);
    quote(what);
    std::fputc('}', out_);
}

/// Begins the next element of an array.
void JsonListing::next() {
    std::fputs(isFirst_ ? "\n" : ",\n", out_);
    isFirst_ = false;
}

/// Begins the JSON object of a value and prints the members that all values have.
void JsonListing::begin(Entry const& entry) {
    next();
    std::fprintf(out_, "{\"offset\": %zu, \"type\": %u, \"name\": ", entry.offset, entry.typeId);
    if (entry.typeName.empty())
        std::fputs("null", out_);
    else
        quote(entry.typeName);
    std::fprintf(out_, ", \"length\": %zu", entry.length);
}

void JsonListing::beginValues() {
    std::fputs(", \"values\": [", out_);
    isFirst_ = true;
}

/// Prints a JSON string. Bytes that are not UTF-8 become U+FFFD.
void JsonListing::quote(std::string_view text) {
    std::fputc('"', out_);
    while (!text.empty()) {
        std::size_t const length = characterLength(text);
        std::string_view const character = text.substr(0, length > 0 ? length : 1);
        auto const first = static_cast<unsigned char>(character[0]);
        if (length == 0)
            std::fputs("\\ufffd", out_);
        else if (character == "\"" || character == "\\")
            std::fprintf(out_, "\\%c", first);
        else if (first < 0x20 || first == 0x7F)
            std::fprintf(out_, "\\u%04x", first);
        else
            std::fwrite(character.data(), 1, character.size(), out_);
        text.remove_prefix(character.size());
    }
    std::fputc('"', out_);
}

void JsonListing::hex(unsigned char const* data, std::size_t size) {
    std::fputc('"', out_);
    for (std::size_t i = 0; i < size; ++i)
        std::fprintf(out_, "%02x", data[i]);
    std::fputc('"', out_);
}

} // namespace dump
