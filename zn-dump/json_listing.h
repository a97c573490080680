#pragma once

#include "listing.h"

#include <cstdio>
#include <string_view>

namespace dump {

/// Prints a JSON array with an object for each file. The destructor prints the end of the array.
class JsonListing : public Listing {
public:
    /// Prints to `out`, which must outlive the listing.
    explicit JsonListing(std::FILE* out);
    JsonListing(JsonListing const&) = delete;
    JsonListing& operator=(JsonListing const&) = delete;
    ~JsonListing() override;

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
    void next();
    void begin(Entry const& entry);
    void beginValues();
    void quote(std::string_view text);
    void hex(unsigned char const* data, std::size_t size);

    std::FILE* out_;
    bool isFirst_ = true; // whether the next element is the first of its array
    bool isDamaged_ = false;
};

} // namespace dump
