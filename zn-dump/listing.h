#pragma once

#include "bytes.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace dump {

enum class Form { stream, typed };

/// The part of an entry that does not depend on its value.
struct Entry {
    std::size_t offset;   ///< of the record in the file
    unsigned int typeId;  ///< as stored
    std::string typeName; ///< empty for a type unknown to the library
    std::size_t length;   ///< of the payload
};

/// Receives the content of a file from first to last byte.
class Listing {
public:
    Listing() = default;
    Listing(Listing const&) = delete;
    Listing& operator=(Listing const&) = delete;
    virtual ~Listing() = default;

    virtual void beginFile(char const* name, Form form, std::size_t size) = 0;
    virtual void endFile() = 0;
    /// Called instead of the others for a file that cannot be read.
    virtual void unreadableFile(char const* name, char const* reason) = 0;

    // Simple values.

    virtual void marker(Entry const& entry) = 0;
    virtual void integer(Entry const& entry, int value) = 0;
    /// `storedLength` differs from the string's length when that has a NUL in it.
    virtual void string(Entry const& entry, std::string const& value,
                        std::uint32_t storedLength) = 0;
    virtual void resolution(Entry const& entry, int width, int height) = 0;
    /// A value of an unknown type, or with a payload that its type does not allow.
    virtual void bytes(Entry const& entry, Bytes const& payload) = 0;
    /// A stream or set that is nested too deeply; its values are not reported.
    virtual void tooDeep(Entry const& entry) = 0;

    // Values that contain values. The contained ones are reported before the call of `end`.

    virtual void beginStream(Entry const& entry) = 0;
    virtual void beginSet(Entry const& entry, unsigned int elementType, int count) = 0;
    virtual void end() = 0;

    /// Invalid bytes at this offset in the file.
    virtual void damage(std::size_t offset, std::string const& what) = 0;
};

} // namespace dump
