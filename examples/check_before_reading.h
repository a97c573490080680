// What to ask about bytes from outside before objects that trust their input read them.

#pragma once

#include "streams/znsl_MemIOStream.h"

#include <cstdint>
#include <cstring>

/// Whether zntl::String::fromBin may have these bytes: it reads up to a NUL.
inline bool holdsString(unsigned char const* data, unsigned int length) {
    return length >= 5 && data[length - 1] == 0;
}

/// Whether znsl::MemIOStream::fromBin may have these bytes: it believes the length in front.
inline bool holdsStream(unsigned char const* data, unsigned int length) {
    std::uint32_t size;
    if (length < sizeof size)
        return false;
    std::memcpy(&size, data, sizeof size);
    return size <= length - sizeof size;
}

/// Whether read() and peek() may have the next record: it is complete, and what is in it does not
/// lead its type astray.
inline bool isSafeToRead(znsl::MemIOStream const& stream) {
    constexpr unsigned int headerSize = 8;
    unsigned char const* record;
    unsigned int size;
    stream.getBuffer(record, size);
    if (size < headerSize)
        return false;
    std::uint32_t length;
    std::memcpy(&length, record + 4, sizeof length);
    if (length > size - headerSize)
        return false;
    unsigned char const* const payload = record + headerSize;
    switch (stream.getNextType()) {
    case 6:
        return holdsStream(payload, length);
    case 501:
        return holdsString(payload, length);
    default:
        return true;
    }
}
