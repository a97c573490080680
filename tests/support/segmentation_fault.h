#pragma once

#include <csignal>
#include <sys/wait.h>

// Defined only when a sanitizer is linked.
extern "C" void __asan_init() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)
extern "C" void __tsan_init() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)

namespace test {

/// Returns whether a segmentation fault ended a process, for EXPECT_EXIT. Sanitizers catch the
/// signal and exit with their own status.
inline bool diedOfASegmentationFault(int status) {
    if (__asan_init || __tsan_init)
        return status != 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

} // namespace test
