#include "support/failing_allocation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <sanitizer/asan_interface.h>

namespace {

// Called through pointers, because compilers reject mismatched pairs of new and delete.
using Allocate = void* (*)(std::size_t);
using Release = void (*)(void*);
Allocate volatile const newObject = &operator new;
Allocate volatile const newArray = &operator new[];
Release volatile const deleteObject = &operator delete;
Release volatile const deleteArray = &operator delete[];

TEST(FailingAllocation, AcceptsADeleteThatMatchesTheNew) {
    long const before = test::liveBlocks();
    void* const object = newObject(0);
    void* const array = newArray(1000);
    EXPECT_EQ(test::liveBlocks(), before + 2);
    std::memset(array, 0xFF, 1000);
    deleteObject(object);
    deleteArray(array);
    deleteObject(nullptr);
    deleteArray(nullptr);
    EXPECT_EQ(test::liveBlocks(), before);
}

TEST(FailingAllocationDeathTest, EndsATestThatMixesObjectsAndArrays) {
    EXPECT_DEATH(deleteObject(newArray(1)), "delete of what new\\[\\] made");
    EXPECT_DEATH(deleteArray(newObject(1)), "delete\\[\\] of what new made");
}

TEST(FailingAllocation, AlignsBlocksForEveryType) {
    for (std::size_t size = 1; size < 100; ++size) {
        void* const block = newObject(size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U);
        deleteObject(block);
    }
}

TEST(FailingAllocation, HasNoRoomForWhatNoMachineHas) {
    for (std::size_t const size : {SIZE_MAX, SIZE_MAX - 8, std::size_t{PTRDIFF_MAX}})
        EXPECT_THROW(newObject(size), std::bad_alloc) << size;
}

#ifdef __SANITIZE_ADDRESS__
TEST(FailingAllocation, LeavesTheBytesAroundABlockToTheSanitizer) {
    auto* const block = static_cast<char*>(newArray(32));
    EXPECT_TRUE(__asan_address_is_poisoned(block - 1));
    EXPECT_FALSE(__asan_address_is_poisoned(block));
    EXPECT_FALSE(__asan_address_is_poisoned(block + 31));
    EXPECT_TRUE(__asan_address_is_poisoned(block + 32));
    deleteArray(block);
}
#endif

} // namespace
