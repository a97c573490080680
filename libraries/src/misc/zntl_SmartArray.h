#pragma once

#include "misc/zntl_Exception.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace zntl {

/// A read-only handle on a heap array that several handles share; the last one to let go frees it.
///
/// A handle is empty (no buffer) or shares a buffer with its copies. Copies may be held and
/// released in different threads, because the count is changed atomically; one handle is used by
/// one thread at a time, and the elements are not locked.
template <class T>
class ConstSmartArray {
public:
    /// An empty handle.
    ConstSmartArray() noexcept = default;

    /// Takes ownership of `buffer`, an array-new allocation of `size` elements, with a count of 1.
    /// A null buffer makes an empty handle, whatever size is named. When there is no memory for
    /// the count, the buffer is released and std::bad_alloc thrown.
    ConstSmartArray(T* buffer, unsigned int size) {
        std::unique_ptr<T[]> owned(buffer);
        if (!owned)
            return;
        count_ = new std::atomic<std::int32_t>(1);
        buffer_ = owned.release();
        size_ = size;
    }

    /// Shares the other handle's buffer.
    ConstSmartArray(ConstSmartArray const& other) noexcept
        : buffer_(other.buffer_), size_(other.size_), count_(other.count_) {
        if (buffer_)
            count_->fetch_add(1, std::memory_order_relaxed);
    }

    /// Drops this handle's reference and shares the other handle's buffer. Self-assignment is safe.
    ConstSmartArray& operator=(ConstSmartArray const& other) noexcept {
        ConstSmartArray shared(other);
        std::swap(buffer_, shared.buffer_);
        std::swap(size_, shared.size_);
        std::swap(count_, shared.count_);
        return *this;
    }

    /// Drops this handle's reference.
    virtual ~ConstSmartArray() { release(); }

    /// The first element. Throws zntl::Exception (line 260) when the handle is empty.
    virtual T const& operator*() const { return first(); }

    /// The element at position `i` of the buffer, for an `i` at or beyond the size.
    ///
    /// The range test is the reverse of the usual one: an index below the size throws
    /// zntl::Exception (line 273). An index at or past the size returns the address that far into
    /// the buffer, which must not be read or written. An empty handle throws (line 272). To reach
    /// the elements, index a pointer to the first one: `(&*array)[i]`.
    virtual T const& operator[](unsigned int i) const { return at(i); }

    /// Drops this handle's reference and leaves it empty. A no-op on an empty handle.
    virtual void removeReference() { release(); }

    /// The number of elements; 0 for an empty handle.
    unsigned int getSize() const noexcept { return size_; }

    /// The number of handles that share the buffer at this moment; 0 for an empty handle.
    int getReferenceCount() const noexcept {
        return buffer_ ? count_->load(std::memory_order_relaxed) : 0;
    }

protected:
    /// The result of `operator*`, writable.
    T& first() const {
        if (!buffer_)
            raise(260, "operator*() - pointer is NULL!");
        return *buffer_;
    }

    /// The result of `operator[]`, writable.
    T& at(unsigned int i) const {
        if (!buffer_)
            raise(272, "operator[]() - pointer is NULL!");
        // Contract: the range test is reversed, see operator[].
        if (size_ > i)
            raise(273, "operator[]() - index out of range!");
        // Integer arithmetic, because pointer arithmetic past the buffer is undefined.
        auto const address = reinterpret_cast<std::uintptr_t>(buffer_);
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        return *reinterpret_cast<T*>(address + std::uintptr_t{i} * sizeof(T));
    }

private:
    void release() noexcept {
        if (!buffer_)
            return;
        if (count_->fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete count_;
            delete[] buffer_;
        }
        buffer_ = nullptr;
        count_ = nullptr;
        size_ = 0;
    }

    // Both classes report themselves as "zntl::SmartArray".
    [[noreturn]] static void raise(int line, char const* text) {
        throw Exception(locatedMessage("../../../../../libraries/src/misc/zntl_SmartArray", line,
                                       "zntl::SmartArray", text));
    }

    T* buffer_ = nullptr;
    std::uint32_t size_ = 0;
    std::atomic<std::int32_t>* count_ = nullptr; // one per buffer, shared like it
};

/// A handle whose elements can be changed through it; everything else is as in ConstSmartArray.
template <class T>
class SmartArray : public ConstSmartArray<T> {
public:
    using ConstSmartArray<T>::ConstSmartArray;
    SmartArray() noexcept = default;
    SmartArray(SmartArray const&) noexcept = default;
    SmartArray& operator=(SmartArray const&) noexcept = default;
    ~SmartArray() override = default;

    using ConstSmartArray<T>::operator*;
    using ConstSmartArray<T>::operator[];

    /// As the const form, writable.
    T& operator*() { return this->first(); }
    /// As the const form, with the same reversed range test, writable.
    T& operator[](unsigned int i) { return this->at(i); }
};

} // namespace zntl
