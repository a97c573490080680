#pragma once

#include "misc/internal/zntl_binLength.h"
#include "misc/zntl_Exception.h"
#include "streams/internal/znsl_readWithin.h"
#include "streams/znsl_Serializable.h"

#include <cstdint>

// The binary form of an object that consists of members: any range of pointers to them, in the
// order in which they are written.

namespace znsl {

/// Throws std::length_error when the sum does not fit 32 bits.
template <class Members>
unsigned int lengthOfMembers(Members const& members) {
    std::uint64_t length = 0;
    for (Serializable const* const member : members)
        length += member->getBinLength();
    return zntl::binLength(length);
}

/// Returns the number of bytes written.
template <class Members>
unsigned int writeMembers(Members const& members, unsigned char* out) {
    unsigned int offset = 0;
    for (Serializable const* const member : members)
        offset += member->toBin(out + offset);
    return offset;
}

/// Returns the number of bytes consumed. Throws when a member would leave the bytes, or reports
/// that it did.
template <class Members>
unsigned int readMembers(Members const& members, unsigned char const* data, unsigned int length) {
    unsigned int offset = 0;
    for (Serializable* const member : members) {
        unsigned int const consumed = readWithin(*member, data + offset, length - offset);
        if (consumed > length - offset)
            throw zntl::Exception("znsl::Serializable::fromBin() - Failed!");
        offset += consumed;
    }
    return offset;
}

} // namespace znsl
