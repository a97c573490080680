#pragma once

#include <algorithm>
#include <cstddef>

namespace test {

/// A model of a memory stream's buffer, without its bytes: the capacity, the number of bytes that
/// have been read, and the number of unread bytes after them. Each operation corresponds to one of
/// the stream's.
struct BufferModel {
    std::size_t capacity = 0;
    std::size_t consumed = 0;
    std::size_t unread = 0;

    /// Makes room for `n` bytes and appends `staying` of them.
    void append(std::size_t n, std::size_t staying) {
        if (capacity < unread + n) {
            capacity = 2 * capacity + n;
            consumed = 0;
        } else if (capacity - consumed - unread < n) {
            consumed = 0;
        }
        unread += staying;
    }
    void append(std::size_t n) { append(n, n); }
    void makeRoom(std::size_t n) { append(n, 0); }

    void take(std::size_t n) {
        n = std::min(n, unread);
        consumed += n;
        unread -= n;
    }

    void reserve(std::size_t n) {
        if (n > capacity) {
            capacity = n;
            consumed = 0;
        }
    }

    void defrag() { consumed = 0; }

    void clear() { consumed = unread = 0; }

    void set(std::size_t n) {
        clear();
        capacity = std::max(capacity, n);
        unread = n;
    }

    void load(std::size_t n) {
        reserve(n);
        if (capacity - consumed < n)
            consumed = 0;
        unread = n;
    }

    void assign(BufferModel const& other) { *this = {other.capacity, 0, other.unread}; }
};

} // namespace test
