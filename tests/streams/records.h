#pragma once

#include "streams/znsl_MemIOStream.h"
#include "support/bytes.h"

#include <cstdint>
#include <cstring>
#include <string>

// Object records made by hand, and a look into memory streams.

namespace test {

/// The 8 bytes that stand before a payload of `length` bytes.
inline Bytes recordHeader(unsigned int type, std::uint32_t length) {
    Bytes header;
    for (int shift = 0; shift < 16; shift += 8)
        header.push_back(static_cast<unsigned char>(type >> shift));
    header.insert(header.end(), {0, 0});
    for (int shift = 0; shift < 32; shift += 8)
        header.push_back(static_cast<unsigned char>(length >> shift));
    return header;
}

inline Bytes record(unsigned int type, Bytes const& payload) {
    return recordHeader(type, static_cast<std::uint32_t>(payload.size())) + payload;
}

/// A record of `size` bytes, its payload counted through.
inline Bytes recordOfSize(unsigned int type, std::size_t size) {
    Bytes payload;
    for (std::size_t i = 8; i < size; ++i)
        payload.push_back(static_cast<unsigned char>(i));
    return record(type, payload);
}

inline Bytes endOfFileRecord() { return fromHex("01 00 00 00 00 00 00 00"); }

/// The unread bytes.
inline Bytes content(znsl::MemIOStream const& stream) {
    unsigned char const* data;
    unsigned int length;
    stream.getBuffer(data, length);
    return data ? Bytes(data, data + length) : Bytes();
}

/// Where the unread bytes are; null when there are none.
inline unsigned char const* readPosition(znsl::MemIOStream const& stream) {
    unsigned char const* data;
    unsigned int length;
    stream.getBuffer(data, length);
    return data;
}

/// Where the next byte will be written; null when there is no buffer.
inline unsigned char* writePosition(znsl::MemIOStream& stream) {
    unsigned char* position;
    stream.getWriteBuffer(position, 0);
    return position;
}

/// Appends any bytes, whole records or not.
inline void append(znsl::MemIOStream& stream, Bytes const& bytes) {
    unsigned char* out;
    stream.getWriteBuffer(out, static_cast<unsigned int>(bytes.size()));
    if (!bytes.empty())
        std::memcpy(out, bytes.data(), bytes.size());
}

/// The message of a fault that a memory stream reports from this line.
inline std::string fault(int line, std::string const& text) {
    return "../../../../../libraries/src/streams/znsl_MemIOStream (" + std::to_string(line) +
           "): znsl::MemIOStream::" + text;
}

} // namespace test
