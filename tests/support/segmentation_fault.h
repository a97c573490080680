#pragma once

#include <csignal>
#include <sys/wait.h>

// There when a sanitizer is linked in.
extern "C" void __asan_init() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)
extern "C" void __tsan_init() __attribute__((weak)); // NOLINT(bugprone-reserved-identifier)

namespace test {

/// Whether a process ended by a segmentation fault, for EXPECT_EXIT. Sanitizers catch the signal
/// and end the process in their own way.
inline bool diedOfASegmentationFault(int status) {
    if (__asan_init || __tsan_init)
        return status != 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

} // namespace test
