#pragma once

#include "misc/internal/zntl_bytes.h"
#include "streams/znsl_Serializable.h"

#include <atomic>
#include <cstdint>
#include <typeinfo>

// The shared library exports every other name of this namespace.
#pragma GCC visibility push(hidden)

namespace znsl {

// String and MemIOStream, and the classes derived from them, trust the bytes that they read. The
// library calls their `fromBin` only after these checks.

/// The class of the last object that was found not to trust its bytes. Caching it saves two casts,
/// which take longer than reading a small object.
inline std::atomic<std::type_info const*>& lastCautiousClass() {
    static std::atomic<std::type_info const*> type{nullptr};
    return type;
}

inline bool isKnownCautious(Serializable const& object) {
    return lastCautiousClass().load(std::memory_order_relaxed) == &typeid(object);
}

/// Whether the bytes satisfy both trusting readers, as every string that `toBin` wrote does.
inline bool isCertainlyWithin(unsigned char const* data, unsigned int length) {
    return length > sizeof(std::uint32_t) && data[length - 1] == 0 &&
           zntl::loadNative<std::uint32_t>(data) <= length - sizeof(std::uint32_t);
}

/// Throws zntl::Exception when `object` is a String or a MemIOStream whose `fromBin` would leave
/// the `length` bytes at `data`.
void requireWithin(Serializable const& object, unsigned char const* data, unsigned int length);

/// Calls `object.fromBin` if it stays within the `length` bytes at `data`; throws otherwise.
unsigned int readWithin(Serializable& object, unsigned char const* data, unsigned int length);

} // namespace znsl

#pragma GCC visibility pop
