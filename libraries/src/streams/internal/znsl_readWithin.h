#pragma once

#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_String.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Serializable.h"

namespace znsl {

// String and MemIOStream trust the bytes that they read. The library calls their `fromBin` only
// after one of these checks.

/// Whether records of this type need no check. Subclasses of the two classes have types of their
/// own, so any other type needs one; for the small and frequent Integer the casts cost more than
/// reading.
inline bool isAlwaysWithin(unsigned int type) { return type == zntl::Integer::typeId; }

/// Throws zntl::Exception when `object` is a String or a MemIOStream whose `fromBin` would leave
/// the `length` bytes at `data`. The bytes are checked first: a cast is slower.
inline void requireWithin(Serializable const& object, unsigned char const* data,
                          unsigned int length) {
    if ((!zntl::String::canReadBin(data, length) && dynamic_cast<zntl::String const*>(&object)) ||
        (!MemIOStream::canReadBin(data, length) && dynamic_cast<MemIOStream const*>(&object)))
        throw zntl::Exception("znsl::Serializable::fromBin() - Failed!");
}

/// Calls `object.fromBin` if it stays within the `length` bytes at `data`; throws otherwise.
inline unsigned int readWithin(Serializable& object, unsigned char const* data,
                               unsigned int length) {
    requireWithin(object, data, length);
    return object.fromBin(data, length);
}

} // namespace znsl
