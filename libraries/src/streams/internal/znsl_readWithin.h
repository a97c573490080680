#pragma once

#include "misc/internal/zntl_bytes.h"
#include "streams/znsl_Serializable.h"

#include <atomic>
#include <cstdint>
#include <typeinfo>

// Hidden, because exports.map exports every visible name of this namespace from the shared library.
#pragma GCC visibility push(hidden)

namespace znsl {

// The `fromBin` of String, of MemIOStream and of classes derived from them trusts its bytes. The
// library calls it only after these checks.

/// Contract: the message of every `fromBin` that refuses its bytes, because programs may compare
/// it.
constexpr char const* unreadable = "znsl::Serializable::fromBin() - Failed!";

/// The number of zero bytes after every payload that the library reads an object from. A class's
/// `fromBin` may call String::fromBin, which needs a NUL after a 4-byte length, even if the payload
/// is empty.
// Equivalent: more zeros only take memory
constexpr unsigned int zerosAfterPayload = sizeof(std::uint32_t) + 1;

/// The entry for a class in a cache of classes that are neither a String nor a MemIOStream. The
/// cache saves two dynamic casts, which take longer than reading a small object. It assumes that no
/// plugin is unloaded and replaced by another one with a class at the same address.
inline std::atomic<std::type_info const*>& cautiousClass(std::type_info const& type) {
    static std::atomic<std::type_info const*> cache[16];
    // Equivalent: another entry only takes time
    return cache[reinterpret_cast<std::uintptr_t>(&type) / alignof(std::type_info) % 16];
}

inline bool isKnownCautious(Serializable const& object) {
    std::type_info const& type = typeid(object);
    return cautiousClass(type).load(std::memory_order_relaxed) == &type;
}

/// Whether the bytes are safe for String and for MemIOStream: they end in a NUL, and their length
/// prefix fits. Bytes that String::toBin wrote always are.
inline bool isCertainlyWithin(unsigned char const* data, unsigned int length) {
    return length > sizeof(std::uint32_t) && data[length - 1] == 0 &&
           zntl::loadNative<std::uint32_t>(data) <= length - sizeof(std::uint32_t);
}

/// Throws zntl::Exception if `object` is a String or a MemIOStream whose `fromBin` would read past
/// the `length` bytes at `data`.
void requireWithin(Serializable const& object, unsigned char const* data, unsigned int length);

/// Calls `object.fromBin` if it stays within the `length` bytes at `data`; throws otherwise.
unsigned int readWithin(Serializable& object, unsigned char const* data, unsigned int length);

} // namespace znsl

#pragma GCC visibility pop
