#include "misc/zntl_SmartArray.h"

#include "misc/zntl_String.h"
#include "support/exception_text.h"
#include "support/failing_allocation.h"
#include "support/sample_texts.h"
#include "support/virtual_slot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using zntl::ConstSmartArray;
using zntl::SmartArray;
using zntl::String;
using namespace std::string_literals;

static_assert(std::is_base_of_v<ConstSmartArray<char>, SmartArray<char>>);
static_assert(sizeof(SmartArray<char>) == sizeof(ConstSmartArray<char>), "it adds no data");
static_assert(sizeof(ConstSmartArray<char>) == 4 * sizeof(void*),
              "the virtual table, the buffer, the size, the count");
static_assert(std::is_nothrow_copy_constructible_v<SmartArray<char>>);
static_assert(std::is_nothrow_copy_assignable_v<SmartArray<char>>);
static_assert(!std::is_convertible_v<ConstSmartArray<char>, SmartArray<char>>,
              "a read-only handle does not convert to a writable one");

namespace {

constexpr char const* firstOfNull = "../../../../../libraries/src/misc/zntl_SmartArray (260): "
                                    "zntl::SmartArray::operator*() - pointer is NULL!";
constexpr char const* elementOfNull = "../../../../../libraries/src/misc/zntl_SmartArray (272): "
                                      "zntl::SmartArray::operator[]() - pointer is NULL!";
constexpr char const* outOfRange = "../../../../../libraries/src/misc/zntl_SmartArray (273): "
                                   "zntl::SmartArray::operator[]() - index out of range!";

template <class Operation>
testing::AssertionResult raises(char const* text, Operation operation) {
    return test::throws<zntl::Exception>(text, operation);
}

/// An element type that counts the living elements.
struct Element {
    static inline int alive = 0;
    int value = 0;

    Element() { ++alive; }
    Element(Element const&) = delete;
    Element& operator=(Element const&) = delete;
    ~Element() { --alive; }
};

template <class Array>
Array abc() {
    return {new char[4]{'a', 'b', 'c', '\0'}, 4};
}

template <class Handle>
class Handles : public testing::Test {};

/// The tests run for both classes, which differ only in write access.
using HandleTypes = testing::Types<ConstSmartArray<char>, SmartArray<char>>;

struct HandleNames {
    template <class Handle>
    static std::string GetName(int /*index*/) {
        return std::is_same_v<Handle, SmartArray<char>> ? "SmartArray" : "ConstSmartArray";
    }
};

TYPED_TEST_SUITE(Handles, HandleTypes, HandleNames);

// --- empty handles ---

TYPED_TEST(Handles, AreEmptyByDefault) {
    TypeParam const handle;
    EXPECT_EQ(handle.getSize(), 0U);
    EXPECT_EQ(handle.getReferenceCount(), 0);
}

TYPED_TEST(Handles, AreEmptyOverANullBufferOfAnySize) {
    for (unsigned int const size : {0U, 1U, UINT_MAX}) {
        long const before = test::liveBlocks();
        TypeParam const handle(nullptr, size);
        EXPECT_EQ(handle.getSize(), 0U);
        EXPECT_EQ(handle.getReferenceCount(), 0);
        EXPECT_EQ(test::liveBlocks(), before) << "an empty handle allocates no count";
    }
}

TYPED_TEST(Handles, ThrowForAnElementOfAnEmptyHandle) {
    TypeParam handle;
    EXPECT_TRUE(raises(firstOfNull, [&] { *handle; }));
    EXPECT_TRUE(raises(firstOfNull, [&] { *std::as_const(handle); }));
    for (unsigned int const i : {0U, 1U, UINT_MAX}) {
        EXPECT_TRUE(raises(elementOfNull, [&] { handle[i]; })) << i;
        EXPECT_TRUE(raises(elementOfNull, [&] { std::as_const(handle)[i]; })) << i;
    }
}

TYPED_TEST(Handles, ReleaseNothingWhenTheyAreEmpty) {
    TypeParam handle;
    handle.removeReference();
    handle.removeReference();
    EXPECT_EQ(handle.getSize(), 0U);
    EXPECT_EQ(handle.getReferenceCount(), 0);
}

TYPED_TEST(Handles, AreEmptyAsCopiesOfEmptyHandles) {
    TypeParam const nothing;
    TypeParam copy(nothing);
    EXPECT_EQ(copy.getReferenceCount(), 0);
    copy = abc<TypeParam>();
    EXPECT_EQ(copy.getReferenceCount(), 1);
    copy = nothing;
    EXPECT_EQ(copy.getReferenceCount(), 0);
    EXPECT_EQ(copy.getSize(), 0U);
}

// --- elements ---

TYPED_TEST(Handles, ReturnTheFirstElement) {
    TypeParam handle = abc<TypeParam>();
    EXPECT_EQ(*handle, 'a');
    EXPECT_EQ(*std::as_const(handle), 'a');
    EXPECT_EQ(&*handle, &*std::as_const(handle));
    EXPECT_STREQ(&*handle, "abc");
}

TYPED_TEST(Handles, ThrowForAnIndexBelowTheSize) {
    TypeParam handle = abc<TypeParam>();
    for (unsigned int i = 0; i < 4; ++i) {
        EXPECT_TRUE(raises(outOfRange, [&] { handle[i]; })) << i;
        EXPECT_TRUE(raises(outOfRange, [&] { std::as_const(handle)[i]; })) << i;
    }
}

TYPED_TEST(Handles, ReturnTheAddressOfAnIndexAtOrPastTheSize) {
    TypeParam handle = abc<TypeParam>();
    auto const address = [](auto& element) {
        return reinterpret_cast<std::uintptr_t>(std::addressof(element));
    };
    std::uintptr_t const first = address(*handle);
    for (unsigned int const i : {4U, 5U, 1000U, 0x7FFFFFFFU, 0x80000000U, UINT_MAX}) {
        // On 32-bit machines this sum may wrap, as the address does.
        EXPECT_EQ(address(handle[i]), first + i) << i;
        EXPECT_EQ(address(std::as_const(handle)[i]), first + i) << i;
    }
}

TYPED_TEST(Handles, HaveNoElementsInAnEmptyBuffer) {
    TypeParam handle(new char[1], 0);
    EXPECT_EQ(handle.getSize(), 0U);
    EXPECT_EQ(handle.getReferenceCount(), 1);
    EXPECT_EQ(&handle[0], &*handle) << "index 0 is not below the size";
}

TEST(SmartArray, CountsPositionsInElements) {
    SmartArray<int> handle(new int[2]{1, 2}, 2);
    auto const place = [](int const& element) {
        return reinterpret_cast<std::uintptr_t>(&element);
    };
    EXPECT_EQ(place(handle[3]) - place(*handle), 3 * sizeof(int));
    EXPECT_TRUE(raises(outOfRange, [&] { handle[1]; }));
}

TEST(SmartArray, IsWritable) {
    SmartArray<char> handle = abc<SmartArray<char>>();
    SmartArray<char> const copy(handle);
    *handle = 'X';
    (&*handle)[1] = 'Y';
    EXPECT_STREQ(&*copy, "XYc") << "one buffer";
    static_assert(std::is_same_v<decltype(*handle), char&>);
    static_assert(std::is_same_v<decltype(handle[0]), char&>);
    static_assert(std::is_same_v<decltype(*copy), char const&>);
    static_assert(std::is_same_v<decltype(copy[0]), char const&>);
}

TEST(ConstSmartArray, IsReadOnly) {
    using Handle = ConstSmartArray<char>;
    static_assert(std::is_same_v<decltype(*std::declval<Handle&>()), char const&>);
    static_assert(std::is_same_v<decltype(std::declval<Handle&>()[0]), char const&>);
}

// --- sharing ---

TYPED_TEST(Handles, StartWithACountOfOne) {
    TypeParam const handle = abc<TypeParam>();
    EXPECT_EQ(handle.getSize(), 4U);
    EXPECT_EQ(handle.getReferenceCount(), 1);
}

TYPED_TEST(Handles, ShareTheBufferWithCopies) {
    TypeParam const first = abc<TypeParam>();
    TypeParam second(first);
    EXPECT_EQ(&*second, &*first);
    EXPECT_EQ(second.getSize(), 4U);
    EXPECT_EQ(first.getReferenceCount(), 2);
    EXPECT_EQ(second.getReferenceCount(), 2);
    TypeParam third;
    third = second;
    EXPECT_EQ(first.getReferenceCount(), 3);
    {
        TypeParam const fourth = third;
        EXPECT_EQ(first.getReferenceCount(), 4);
    }
    EXPECT_EQ(first.getReferenceCount(), 3);
}

TYPED_TEST(Handles, ShareABufferWithoutElementsToo) {
    long const before = test::liveBlocks();
    {
        TypeParam const first(new char[0], 0);
        TypeParam const second(first);
        EXPECT_EQ(second.getSize(), 0U);
        EXPECT_EQ(&*second, &*first);
        EXPECT_EQ(first.getReferenceCount(), 2);
    }
    EXPECT_EQ(test::liveBlocks(), before);
}

TYPED_TEST(Handles, AreEmptyAfterARelease) {
    TypeParam handle = abc<TypeParam>();
    handle.removeReference();
    EXPECT_EQ(handle.getSize(), 0U);
    EXPECT_EQ(handle.getReferenceCount(), 0);
    EXPECT_TRUE(raises(firstOfNull, [&] { *handle; }));
    handle.removeReference();
    EXPECT_EQ(handle.getReferenceCount(), 0);
}

TYPED_TEST(Handles, DropOnlyTheirOwnReference) {
    TypeParam first = abc<TypeParam>();
    TypeParam second(first);
    first.removeReference();
    first.removeReference();
    EXPECT_EQ(second.getReferenceCount(), 1);
    EXPECT_STREQ(&*second, "abc");
}

TYPED_TEST(Handles, FreeTheBufferAndTheCountWithTheLastReference) {
    long const before = test::liveBlocks();
    TypeParam first = abc<TypeParam>();
    TypeParam second(first);
    EXPECT_EQ(test::liveBlocks() - before, 2);
    first.removeReference();
    EXPECT_EQ(test::liveBlocks() - before, 2);
    second.removeReference();
    EXPECT_EQ(test::liveBlocks() - before, 0);
}

TYPED_TEST(Handles, DropTheirReferenceWhenAssignedTo) {
    long const before = test::liveBlocks();
    {
        TypeParam handle = abc<TypeParam>();
        TypeParam const other(new char[2]{'x', '\0'}, 2);
        handle = other;
        EXPECT_EQ(test::liveBlocks() - before, 2) << "the first buffer is freed";
        EXPECT_STREQ(&*handle, "x");
        EXPECT_EQ(handle.getSize(), 2U);
        EXPECT_EQ(other.getReferenceCount(), 2);
    }
    EXPECT_EQ(test::liveBlocks() - before, 0);
}

TYPED_TEST(Handles, SurviveSelfAssignment) {
    TypeParam handle = abc<TypeParam>();
    TypeParam& same = handle;
    handle = same;
    EXPECT_EQ(handle.getReferenceCount(), 1);
    EXPECT_STREQ(&*handle, "abc");
    TypeParam const copy(handle);
    handle = copy;
    EXPECT_EQ(handle.getReferenceCount(), 2) << "assigned what it shared already";
    handle.removeReference();
    same = handle;
    EXPECT_EQ(copy.getReferenceCount(), 1);
}

TEST(SmartArray, SharesItsBufferWithReadOnlyHandles) {
    SmartArray<char> writable = abc<SmartArray<char>>();
    ConstSmartArray<char> const readOnly(writable);
    EXPECT_EQ(readOnly.getReferenceCount(), 2);
    writable.removeReference();
    EXPECT_STREQ(&*readOnly, "abc");
}

TEST(SmartArray, DestroysEachElementOnceInAnyOrderOfRelease) {
    for (int const last : {0, 1, 2}) {
        SmartArray<Element> handles[3];
        handles[0] = SmartArray<Element>(new Element[5], 5);
        handles[1] = handles[0];
        handles[2] = handles[1];
        ASSERT_EQ(Element::alive, 5);
        for (int i = 0; i < 3; ++i) {
            if (i != last)
                handles[i].removeReference();
        }
        EXPECT_EQ(Element::alive, 5) << "handle " << last << " is left";
        EXPECT_EQ(handles[last].getReferenceCount(), 1);
        handles[last].removeReference();
        EXPECT_EQ(Element::alive, 0);
    }
}

TEST(SmartArray, FreesTheBufferWhenTheCountCannotBeAllocated) {
    auto* const elements = new Element[3];
    bool thrown = false;
    {
        auto const failure = test::failAllocation(1);
        try {
            SmartArray<Element> const handle(elements, 3);
        } catch (std::bad_alloc const&) {
            thrown = true;
        }
    }
    EXPECT_TRUE(thrown);
    EXPECT_EQ(Element::alive, 0);
}

TYPED_TEST(Handles, AreCopiedWithoutAnAllocation) {
    TypeParam const handle = abc<TypeParam>();
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        EXPECT_FALSE(run.runsOutOfMemory([&] {
            TypeParam copy(handle);
            TypeParam assigned;
            assigned = copy;
            copy.removeReference();
        }));
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(handle.getReferenceCount(), 1);
}

// --- virtual operations ---

TEST(SmartArray, HasItsVirtualOperationsInOrder) {
    using Handle = ConstSmartArray<char>;
    char const& (Handle::*const first)() const = &Handle::operator*;
    char const& (Handle::*const element)(unsigned int) const = &Handle::operator[];
    EXPECT_EQ(test::virtualSlot(first), 2);
    EXPECT_EQ(test::virtualSlot(element), 3);
    EXPECT_EQ(test::virtualSlot(&Handle::removeReference), 4);
    static_assert(std::has_virtual_destructor_v<Handle>);

    char& (SmartArray<char>::*const writableFirst)() = &SmartArray<char>::operator*;
    char& (SmartArray<char>::*const writableElement)(unsigned int) = &SmartArray<char>::operator[];
    EXPECT_EQ(test::virtualSlot(writableFirst), -1) << "not virtual";
    EXPECT_EQ(test::virtualSlot(writableElement), -1) << "not virtual";
}

TEST(SmartArray, MayContainAHandleOfItself) {
    struct Node {
        Node() = default;
        Node(Node const&) = delete;
        Node& operator=(Node const&) = delete;
        ~Node() { ++*destroyed; }
        SmartArray<Node> self;
        int* destroyed = nullptr;
    };
    int destroyed = 0;
    SmartArray<Node> array(new Node[1], 1);
    Node& node = *array;
    node.destroyed = &destroyed;
    node.self = array;
    array.removeReference();
    EXPECT_EQ(destroyed, 0);
    node.self.removeReference();
    EXPECT_EQ(destroyed, 1);
}

TEST(SmartArray, IsUsedThroughItsBase) {
    long const before = test::liveBlocks();
    std::unique_ptr<ConstSmartArray<char>> const handle(
        new SmartArray<char>(abc<SmartArray<char>>()));
    EXPECT_EQ(**handle, 'a');
    EXPECT_TRUE(raises(outOfRange, [&] { (*handle)[0]; }));
    handle->removeReference();
    EXPECT_TRUE(raises(firstOfNull, [&] { **handle; }));
    EXPECT_EQ(test::liveBlocks() - before, 1) << "the handle itself";
}

TEST(SmartArray, IsDestroyedThroughItsBase) {
    long const before = test::liveBlocks();
    { std::unique_ptr<ConstSmartArray<char>> const handle(new SmartArray<char>(new char[1], 1)); }
    EXPECT_EQ(test::liveBlocks(), before);
}

TEST(SmartArray, CallsTheOverridesOfASubclass) {
    struct Subclass : SmartArray<char> {
        char const& operator*() const override { return own; }
        char const& operator[](unsigned int) const override { return own; }
        void removeReference() override { ++calls; }
        char own = 'S';
        int calls = 0;
    } subclass;
    ConstSmartArray<char>& handle = subclass;
    EXPECT_EQ(*handle, 'S');
    EXPECT_EQ(handle[0], 'S');
    handle.removeReference();
    EXPECT_EQ(subclass.calls, 1);
}

// --- the array of a string's characters ---

SmartArray<char> arrayOf(String const& text) { return text; }

TEST(ArrayOfString, HoldsTheTextAndItsNul) {
    SmartArray<char> const array = arrayOf("abc");
    EXPECT_EQ(array.getSize(), 4U);
    EXPECT_EQ(array.getReferenceCount(), 1);
    EXPECT_EQ(std::memcmp(&*array, "abc", 4), 0);
    EXPECT_EQ(&array[4], &*array + 4) << "one past the NUL";
    EXPECT_TRUE(raises(outOfRange, [&] { array[0]; }));
    EXPECT_TRUE(raises(outOfRange, [&] { array[3]; }));
}

TEST(ArrayOfString, HoldsOneNulForTheEmptyString) {
    SmartArray<char> const array = arrayOf("");
    EXPECT_EQ(array.getSize(), 1U);
    EXPECT_EQ(*array, '\0');
}

TEST(ArrayOfString, HasTheWholeSizeButEndsAtTheFirstNul) {
    SmartArray<char> const array = arrayOf("ab\0cd"s);
    EXPECT_EQ(array.getSize(), 6U);
    EXPECT_STREQ(&*array, "ab");
}

TEST(ArrayOfString, IsIndependentOfTheString) {
    String text("abc");
    SmartArray<char> const array = text;
    text = "x";
    EXPECT_STREQ(&*array, "abc");
    *arrayOf(text) = 'y';
    EXPECT_EQ(text, "x"s);
}

TEST(ArrayOfString, TakesTextsOfAnyLength) {
    std::string const text = test::repeated("0123456789", 100000);
    SmartArray<char> const array = arrayOf(text);
    EXPECT_EQ(array.getSize(), text.size() + 1);
    EXPECT_EQ(std::memcmp(&*array, text.c_str(), text.size() + 1), 0);
}

TEST(ArrayOfString, LeaksNothingOnAllocationFailure) {
    String const text("abc");
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        run.runsOutOfMemory([&] { EXPECT_EQ(*arrayOf(text), 'a'); });
    });
    EXPECT_EQ(failures, 2) << "the buffer and the count";
}

// --- threads ---

constexpr int threadCount = 4;

/// Threads that start their work at the same time, in join().
class Threads {
public:
    ~Threads() { join(); }

    template <class Work>
    void add(Work work) {
        threads_.emplace_back([this, work]() mutable {
            while (!started_)
                std::this_thread::yield();
            work();
        });
    }

    void join() {
        started_ = true;
        for (std::thread& thread : threads_)
            thread.join();
        threads_.clear();
    }

private:
    std::atomic<bool> started_{false};
    std::vector<std::thread> threads_;
};

TEST(SharedAcrossThreads, IsFreedOnceByTheLastThread) {
    long const before = test::liveBlocks();
    for (int round = 0; round < 300; ++round) {
        Threads threads;
        SmartArray<char> handle = abc<SmartArray<char>>();
        for (int i = 0; i < threadCount; ++i) {
            threads.add([own = handle]() mutable {
                if (*own == 'a')
                    own.removeReference();
            });
        }
        handle.removeReference();
    }
    EXPECT_EQ(test::liveBlocks(), before);
}

TEST(SharedAcrossThreads, CountsEveryCopyAndRelease) {
    SmartArray<char> const handle = abc<SmartArray<char>>();
    Threads threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.add([own = handle] {
            for (int round = 0; round < 200000; ++round) {
                SmartArray<char> copy(own);
                SmartArray<char> assigned;
                assigned = copy;
                copy.removeReference();
            }
        });
    }
    threads.join();
    EXPECT_EQ(handle.getReferenceCount(), 1);
    EXPECT_STREQ(&*handle, "abc");
}

TEST(SharedAcrossThreads, IsFreedAfterAllWritesOfOtherThreads) {
    // Each thread writes its own element without a lock. The last thread frees the elements, which
    // must happen after all writes; the thread sanitizer would detect a race.
    for (int round = 0; round < 300; ++round) {
        Threads threads;
        SmartArray<Element> handle(new Element[threadCount], threadCount);
        for (int i = 0; i < threadCount; ++i) {
            threads.add([own = handle, i]() mutable {
                (&*own)[i].value = i;
                own.removeReference();
            });
        }
        handle.removeReference();
    }
    EXPECT_EQ(Element::alive, 0);
}

} // namespace
