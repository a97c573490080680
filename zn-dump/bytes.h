#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace dump {

/// A part of a file and its offset in the file. Does not own the bytes.
class Bytes {
public:
    Bytes(unsigned char const* data, std::size_t size, std::size_t offset = 0)
        : data_(data), size_(size), offset_(offset) {}

    unsigned char const* data() const { return data_; }
    std::size_t size() const { return size_; }
    std::size_t offset() const { return offset_; }

    /// At most `size` bytes from `position` on. Precondition: `position` is at most `size()`.
    Bytes part(std::size_t position, std::size_t size = SIZE_MAX) const {
        std::size_t const rest = size_ - position;
        return {data_ + position, size < rest ? size : rest, offset_ + position};
    }

    /// The number at `position`, in the machine's byte order. Precondition: all its bytes are in
    /// the part.
    template <class Number>
    Number numberAt(std::size_t position) const {
        Number number;
        std::memcpy(&number, data_ + position, sizeof number);
        return number;
    }

private:
    unsigned char const* data_;
    std::size_t size_;
    std::size_t offset_;
};

} // namespace dump
