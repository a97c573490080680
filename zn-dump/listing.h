#pragma once

#include "bytes.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace dump {

enum class Form { stream, typed };

/// A stored value without its payload.
struct Entry {
    std::size_t offset;   ///< of the record in the file
    unsigned int typeId;  ///< the stored type id
    std::string typeName; ///< empty for a class that is not part of the library
    std::size_t length;   ///< of the payload
};

/// Receives the values in a file, in the order of the file.
class Listing {
public:
    Listing() = default;
    Listing(Listing const&) = delete;
    Listing& operator=(Listing const&) = delete;
    virtual ~Listing() = default;

    virtual void beginFile(char const* name, Form form, std::size_t size) = 0;
    virtual void endFile() = 0;
    /// For a file that cannot be read. No other function is called for it.
    virtual void unreadableFile(char const* name, char const* reason) = 0;

    // Simple values.

    virtual void marker(Entry const& entry) = 0;
    virtual void integer(Entry const& entry, int value) = 0;
    /// `storedLength` differs from the length of `value` if the stored string contains a NUL, where
    /// `value` is truncated.
    virtual void string(Entry const& entry, std::string const& value,
                        std::uint32_t storedLength) = 0;
    virtual void resolution(Entry const& entry, int width, int height) = 0;
    /// A value of an unknown class, or one whose payload is invalid for its class.
    virtual void bytes(Entry const& entry, Bytes const& payload) = 0;
    /// A stream or set that is nested too deeply. Its values are skipped.
    virtual void tooDeep(Entry const& entry) = 0;

    // Values that contain values. After the call of a begin function, the contained values follow,
    // and then a call of `end`.

    virtual void beginStream(Entry const& entry) = 0;
    virtual void beginSet(Entry const& entry, unsigned int elementType, int count) = 0;
    virtual void end() = 0;

    /// Invalid bytes at this offset in the file. `what` is a message.
    virtual void damage(std::size_t offset, std::string const& what) = 0;
};

} // namespace dump
