#pragma once

// Replaces the global operators new and delete of the executable, so that tests can make any
// allocation fail and count the live blocks. Include it in only one source of an executable;
// otherwise it does not link. Sanitizers still work, because these operators call malloc() and
// free(). But sanitizers cannot detect a `delete` of a block from `new[]`, so this file does: it
// ends the test.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <sanitizer/asan_interface.h>

namespace test {

namespace heap {

inline std::atomic<long> liveBlocks{0};
inline std::atomic<std::size_t> liveBytes{0};
inline std::atomic<std::size_t> peakBytes{0};
inline thread_local std::size_t largest = 0;
// The number of this thread's allocations up to and including the one that fails; 0 if none fails.
inline thread_local long countdown = 0;

enum class Kind : std::uint32_t { object = 0xA110C1, array = 0xA110C2 };

// The header before each block, invisible to the block's owner.
struct alignas(std::max_align_t) Prefix {
    std::size_t size;
    Kind kind;
};

// Not inlined, because the compiler would warn of a mismatch of new and free().
[[gnu::noinline]] inline void* allocate(std::size_t size, Kind kind) noexcept {
    largest = std::max(largest, size);
    if (countdown > 0 && --countdown == 0)
        return nullptr;
    if (size > PTRDIFF_MAX - sizeof(Prefix))
        return nullptr;
    auto* const prefix = static_cast<Prefix*>(std::malloc(sizeof(Prefix) + size));
    if (!prefix)
        return nullptr;
    *prefix = {size, kind};
    ASAN_POISON_MEMORY_REGION(prefix, sizeof(Prefix));
    ++liveBlocks;
    peakBytes = std::max<std::size_t>(peakBytes, liveBytes += size);
    return prefix + 1;
}

[[gnu::noinline]] inline void release(void* block, Kind kind) noexcept {
    if (!block)
        return;
    auto* const prefix = static_cast<Prefix*>(block) - 1;
    ASAN_UNPOISON_MEMORY_REGION(prefix, sizeof(Prefix));
    if (prefix->kind != kind) {
        std::fputs(kind == Kind::array ? "delete[] of what new made\n"
                                       : "delete of what new[] made\n",
                   stderr);
        std::abort();
    }
    --liveBlocks;
    liveBytes -= prefix->size;
    std::free(prefix);
}

} // namespace heap

/// The number of blocks obtained from new and not yet deleted.
inline long liveBlocks() { return heap::liveBlocks; }

/// Runs the operation; returns the size of the largest block that it allocates, 0 if none.
template <class Operation>
std::size_t largestAllocation(Operation operation) {
    heap::largest = 0;
    operation();
    return heap::largest;
}

/// Runs the operation; returns the maximum of allocated bytes meanwhile, less those before it.
/// Includes the blocks of other threads.
template <class Operation>
std::size_t peakAllocation(Operation operation) {
    std::size_t const before = heap::liveBytes;
    heap::peakBytes = before;
    operation();
    return heap::peakBytes - before;
}

/// While it lives, makes the `k`-th allocation of this thread fail, counted from 1; none if `k` is
/// 0. All other allocations succeed.
class AllocationFailure {
public:
    explicit AllocationFailure(long k) { heap::countdown = k; }
    AllocationFailure(AllocationFailure const&) = delete;
    AllocationFailure& operator=(AllocationFailure const&) = delete;
    ~AllocationFailure() { heap::countdown = 0; }

    /// Whether the allocation that had to fail has happened.
    bool happened() const { return heap::countdown == 0; }
};

inline AllocationFailure failAllocation(long k) { return AllocationFailure(k); }

/// One run of a scenario, in which the `k`-th allocation of one operation fails.
class FailingRun {
public:
    explicit FailingRun(long k) : k_(k) {}

    /// Runs the operation and returns whether it threw std::bad_alloc. Allocations before and after
    /// this call succeed.
    template <class Operation>
    bool runsOutOfMemory(Operation operation) {
        AllocationFailure const failure(k_);
        try {
            operation();
            happened_ = failure.happened();
            return false;
        } catch (std::bad_alloc const&) {
            happened_ = failure.happened();
            return true;
        }
    }

    /// Whether the operation made at least `k` allocations, so that one failed.
    bool happened() const { return happened_; }

private:
    long k_;
    bool happened_ = false;
};

/// Runs `scenario` repeatedly: in run k, the k-th allocation of its operation fails. Stops when the
/// operation makes fewer than k allocations. Expects that each run frees all its blocks. Returns
/// the number of failed allocations; tests check that it is not 0.
///
///     long const failures = test::failEachAllocation([](test::FailingRun& run) {
///         zntl::String text("before");
///         if (run.runsOutOfMemory([&] { text.assign(100, 'x'); })) {
///             EXPECT_EQ(text, "before");
///         }
///     });
template <class Scenario>
long failEachAllocation(Scenario scenario) {
    constexpr long tooMany = 10000;
    for (long k = 1; k < tooMany; ++k) {
        SCOPED_TRACE(testing::Message() << "allocation " << k << " fails");
        FailingRun run(k);
        long const before = liveBlocks();
        scenario(run);
        EXPECT_EQ(liveBlocks() - before, 0) << "blocks were leaked";
        if (!run.happened())
            return k - 1;
    }
    ADD_FAILURE() << "the operation makes too many allocations";
    return tooMany;
}

/// Runs the operation with its first allocation failing; returns whether it threw std::bad_alloc.
template <class Operation>
bool asksForMemory(Operation operation) {
    FailingRun noMemory(1);
    return noMemory.runsOutOfMemory(operation);
}

/// As failEachAllocation, for an operation that can be repeated and must throw std::bad_alloc on
/// every failure.
template <class Operation>
long failEachAllocationOf(Operation operation) {
    return failEachAllocation([&](FailingRun& run) {
        bool const outOfMemory = run.runsOutOfMemory(operation);
        EXPECT_EQ(outOfMemory, run.happened()) << "std::bad_alloc exactly if an allocation failed";
    });
}

} // namespace test

namespace test::heap {

inline void* allocateOrThrow(std::size_t size, Kind kind) {
    void* const block = allocate(size, kind);
    if (!block)
        throw std::bad_alloc();
    return block;
}

} // namespace test::heap

void* operator new(std::size_t size) {
    return test::heap::allocateOrThrow(size, test::heap::Kind::object);
}
void* operator new[](std::size_t size) {
    return test::heap::allocateOrThrow(size, test::heap::Kind::array);
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return test::heap::allocate(size, test::heap::Kind::object);
}
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept {
    return test::heap::allocate(size, test::heap::Kind::array);
}
void operator delete(void* block) noexcept { test::heap::release(block, test::heap::Kind::object); }
void operator delete[](void* block) noexcept {
    test::heap::release(block, test::heap::Kind::array);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete[](block); }
void operator delete(void* block, std::nothrow_t const&) noexcept { operator delete(block); }
void operator delete[](void* block, std::nothrow_t const&) noexcept { operator delete[](block); }
