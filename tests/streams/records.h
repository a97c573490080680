#pragma once

#include "streams/znsl_MemIOStream.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>

// Functions that build object records byte by byte, and that inspect memory streams.

namespace test {

/// Returns the 8-byte record header for a payload of `length` bytes.
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
    return concat(recordHeader(type, static_cast<std::uint32_t>(payload.size())), payload);
}

/// Returns a record of `size` bytes whose payload is 8, 9, 10 …
inline Bytes recordOfSize(unsigned int type, std::size_t size) {
    Bytes payload;
    for (std::size_t i = 8; i < size; ++i)
        payload.push_back(static_cast<unsigned char>(i));
    return record(type, payload);
}

inline Bytes endOfFileRecord() { return fromHex("01 00 00 00 00 00 00 00"); }

inline unsigned int sizeOf(Bytes const& bytes) { return static_cast<unsigned int>(bytes.size()); }

/// Returns the unread bytes.
inline Bytes content(znsl::MemIOStream const& stream) {
    unsigned char const* data;
    unsigned int length;
    stream.getBuffer(data, length);
    return data ? Bytes(data, data + length) : Bytes();
}

/// Returns the address of the unread bytes; null if there are none.
inline unsigned char const* readPosition(znsl::MemIOStream const& stream) {
    unsigned char const* data;
    unsigned int length;
    stream.getBuffer(data, length);
    return data;
}

/// Returns the address at which the next byte will be written; null without a buffer.
inline unsigned char* writePosition(znsl::MemIOStream& stream) {
    unsigned char* position;
    stream.getWriteBuffer(position, 0);
    return position;
}

/// The observable state of a stream, for asserting that nothing has changed.
struct View {
    explicit View(znsl::MemIOStream const& stream)
        : capacity(stream.capacity()), position(readPosition(stream)), bytes(content(stream)) {}

    unsigned int capacity;
    unsigned char const* position;
    Bytes bytes;

    friend bool operator==(View const& a, View const& b) {
        return a.capacity == b.capacity && a.position == b.position && a.bytes == b.bytes;
    }
    friend std::ostream& operator<<(std::ostream& out, View const& view) {
        return out << "capacity " << view.capacity << ", at "
                   << static_cast<void const*>(view.position) << ": " << toHex(view.bytes);
    }
};

/// Appends any bytes, which need not be whole records.
inline void append(znsl::MemIOStream& stream, Bytes const& bytes) {
    unsigned char* out;
    stream.getWriteBuffer(out, static_cast<unsigned int>(bytes.size()));
    if (!bytes.empty())
        std::memcpy(out, bytes.data(), bytes.size());
}

/// Gives an empty stream `consumed` bytes that have been read, followed by `unread` bytes that have
/// not. Each number is 0 or the size of a record, at least 8.
inline void fill(znsl::MemIOStream& stream, unsigned int consumed, unsigned int unread) {
    if (consumed > 0) {
        append(stream, recordOfSize(504, consumed));
        stream.skip();
    }
    if (unread > 0)
        append(stream, recordOfSize(505, unread));
}

inline void expectWithoutBuffer(znsl::MemIOStream& stream) {
    EXPECT_EQ(stream.capacity(), 0U);
    EXPECT_EQ(stream.size(), 0U);
    EXPECT_TRUE(stream.isEmpty());
    EXPECT_TRUE(stream.validate());
    EXPECT_EQ(stream.count(), 0U);
    EXPECT_EQ(writePosition(stream), nullptr);
    unsigned char const byte = 0;
    unsigned char const* data = &byte;
    unsigned int length = 99;
    stream.getBuffer(data, length);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 0U);
}

/// Returns the message of a memory stream's exception with this line number.
inline std::string fault(int line, std::string const& text) {
    return "../../../../../libraries/src/streams/znsl_MemIOStream (" + std::to_string(line) +
           "): znsl::MemIOStream::" + text;
}

/// The message of the exception for content that is not whole records.
inline std::string const invalidMemory = fault(643, "setBuffer() - resulting memory is not valid.");

} // namespace test
