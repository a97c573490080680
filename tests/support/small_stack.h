#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>
#include <pthread.h>
#include <stdexcept>
#include <type_traits>

namespace test {

/// Runs `operation` in a thread with a stack of this size, or of the machine's minimum if that is
/// larger, and returns its result. An operation whose recursion depth grows with its input
/// overflows the stack and crashes. The operation must not throw.
template <class Operation>
auto onSmallStack(Operation operation, std::size_t stackSize = std::size_t{64} * 1024) {
    struct Work {
        Operation& operation;
        std::invoke_result_t<Operation> result;
    } work{operation, {}};
    auto const run = [](void* argument) -> void* {
        auto* const own = static_cast<Work*>(argument);
        own->result = own->operation();
        return nullptr;
    };

    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    auto const smallest = static_cast<std::size_t>(PTHREAD_STACK_MIN);
    bool const started =
        pthread_attr_setstacksize(&attributes, std::max(stackSize, smallest)) == 0 &&
        pthread_create(&thread, &attributes, run, &work) == 0;
    pthread_attr_destroy(&attributes);
    if (!started)
        throw std::runtime_error("cannot start a thread with a small stack");
    pthread_join(thread, nullptr);
    return work.result;
}

} // namespace test
