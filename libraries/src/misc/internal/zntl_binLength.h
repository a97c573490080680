#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace zntl {

/// `length` as getBinLength returns it. Throws std::length_error when it does not fit 32 bits.
inline unsigned int binLength(std::uint64_t length) {
    if (length > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("znsl::Serializable: binary form beyond 32 bits");
    return static_cast<unsigned int>(length);
}

} // namespace zntl
