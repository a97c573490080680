#pragma once

#include <cstddef>
#include <cstring>

namespace test {

/// The place of a virtual operation in its class's table of virtual operations, counted from 0,
/// with the destructor in the first two places; -1 for an operation that is not virtual. Reads the
/// pointer to the member as the C++ ABI of Linux lays it out.
template <class Member, class Class>
std::ptrdiff_t virtualSlot(Member Class::*member) {
    std::ptrdiff_t words[2];
    static_assert(sizeof words == sizeof member, "pointer and adjustment");
    std::memcpy(words, &member, sizeof words);
    constexpr std::ptrdiff_t slotSize = sizeof(void*);
#if defined(__arm__) || defined(__aarch64__)
    // The adjustment's lowest bit tells virtual operations: code addresses use their own.
    bool const isVirtual = (words[1] & 1) != 0;
    return isVirtual ? words[0] / slotSize : -1;
#else
    bool const isVirtual = (words[0] & 1) != 0;
    return isVirtual ? (words[0] - 1) / slotSize : -1;
#endif
}

} // namespace test
