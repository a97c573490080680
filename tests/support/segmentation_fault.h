#pragma once

#include <csignal>
#include <sys/wait.h>

// Defined only when a sanitizer is linked.
extern "C" void __asan_init() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)
extern "C" void __tsan_init() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)

namespace test {

/// For EXPECT_EXIT: returns whether a segmentation fault ended a process. Sanitizers catch the
/// signal and exit with another status.
inline bool diedOfASegmentationFault(int status) {
    if (__asan_init || __tsan_init)
        return status != 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

} // namespace test
