#pragma once

#include <cstring>

namespace zntl {

/// Stores a number in the machine's byte order at any address; returns the address after it.
template <class Number>
unsigned char* storeNative(unsigned char* out, Number value) {
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
}

/// Reads a number in the machine's byte order from any address.
template <class Number>
Number loadNative(void const* data) {
    Number value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

} // namespace zntl
