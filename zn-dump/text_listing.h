#pragma once

#include "listing.h"

#include <cstdio>
#include <string_view>

namespace dump {

/// Prints a text with escapes for quotes, backslashes, control characters and invalid UTF-8.
void printEscaped(std::FILE* out, std::string_view text);

/// Prints one line per value: offset, type id, type name, length and value. The values in a stream
/// or set are indented below it.
class TextListing : public Listing {
public:
    /// Prints to `out`, which must outlive the listing.
    explicit TextListing(std::FILE* out) : out_(out) {}

    void beginFile(char const* name, Form form, std::size_t size) override;
    void endFile() override;
    void unreadableFile(char const* name, char const* reason) override;
    void marker(Entry const& entry) override;
    void integer(Entry const& entry, int value) override;
    void string(Entry const& entry, std::string const& value, std::uint32_t storedLength) override;
    void resolution(Entry const& entry, int width, int height) override;
    void bytes(Entry const& entry, Bytes const& payload) override;
    void tooDeep(Entry const& entry) override;
    void beginStream(Entry const& entry) override;
    void beginSet(Entry const& entry, unsigned int elementType, int count) override;
    void end() override;
    void damage(std::size_t offset, std::string const& what) override;

private:
    void begin(Entry const& entry, char const* otherName);

    std::FILE* out_;
    std::size_t depth_ = 0;
};

} // namespace dump
