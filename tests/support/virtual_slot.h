#pragma once

#include <cstddef>
#include <cstring>

namespace test {

/// Returns the index of an operation in its class's virtual table, counted from 0; -1 if the
/// operation is not virtual. A virtual destructor has two slots. Relies on the layout of member
/// pointers in the C++ ABI of Linux.
template <class Member, class Class>
std::ptrdiff_t virtualSlot(Member Class::*member) {
    std::ptrdiff_t words[2];
    static_assert(sizeof words == sizeof member, "pointer and adjustment");
    std::memcpy(words, &member, sizeof words);
    constexpr std::ptrdiff_t slotSize = sizeof(void*);
#if defined(__arm__) || defined(__aarch64__)
    // On ARM the adjustment marks virtual operations, because code addresses use their lowest bit.
    bool const isVirtual = (words[1] & 1) != 0;
    return isVirtual ? words[0] / slotSize : -1;
#else
    bool const isVirtual = (words[0] & 1) != 0;
    return isVirtual ? (words[0] - 1) / slotSize : -1;
#endif
}

} // namespace test
