#pragma once

// Replaces read() and write() in the executable, so that tests can have them interrupted, cut short
// or failing. Include it in ONE source of an executable. Without a test::InterruptedIo, both do
// what the system does.

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <sys/syscall.h>
#include <unistd.h>

namespace test {

/// While it lives, reading and writing is this bad. One at a time, in one thread.
class InterruptedIo {
public:
    InterruptedIo() { current() = this; }
    InterruptedIo(InterruptedIo const&) = delete;
    InterruptedIo& operator=(InterruptedIo const&) = delete;
    ~InterruptedIo() { current() = nullptr; }

    /// Every call is interrupted by this many signals before it does something.
    int interruptions = 0;
    /// No call moves more bytes than this.
    std::size_t atMost = std::numeric_limits<std::size_t>::max();
    /// After this many calls that were not interrupted, all fail with an input/output error.
    int callsUntilFailure = std::numeric_limits<int>::max();

    /// The calls so far, interrupted ones included.
    int calls = 0;

    // What the replaced functions use.

    static InterruptedIo*& current() {
        static InterruptedIo* io = nullptr;
        return io;
    }

    /// Whether a call of `count` bytes is carried out, and with how many bytes; sets errno if not.
    bool admits(std::size_t& count) {
        ++calls;
        if (interrupted_ < interruptions) {
            ++interrupted_;
            errno = EINTR;
            return false;
        }
        interrupted_ = 0;
        if (callsUntilFailure == 0) {
            errno = EIO;
            return false;
        }
        --callsUntilFailure;
        count = std::min(count, atMost);
        return true;
    }

private:
    int interrupted_ = 0;
};

} // namespace test

extern "C" ssize_t read(int descriptor, void* bytes, size_t count) {
    if (test::InterruptedIo::current() && !test::InterruptedIo::current()->admits(count))
        return -1;
    return syscall(SYS_read, descriptor, bytes, count);
}

extern "C" ssize_t write(int descriptor, void const* bytes, size_t count) {
    if (test::InterruptedIo::current() && !test::InterruptedIo::current()->admits(count))
        return -1;
    return syscall(SYS_write, descriptor, bytes, count);
}
