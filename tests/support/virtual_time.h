#pragma once

// Replaces clock_gettime() and usleep() in the executable, so that tests can set the clock and
// record every sleep. Include it in only one source of an executable. While no test::VirtualTime
// object lives, both functions behave like those of the C library.

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace test {

/// While it lives, only sleeps and the test itself advance the monotonic clock, and sleeps return
/// at once. Use one object at a time, in one thread.
class VirtualTime {
public:
    explicit VirtualTime(std::int64_t seconds = 1000, long nanoseconds = 0) {
        set(seconds, nanoseconds);
        current() = this;
    }
    VirtualTime(VirtualTime const&) = delete;
    VirtualTime& operator=(VirtualTime const&) = delete;
    ~VirtualTime() { current() = nullptr; }

    void set(std::int64_t seconds, long nanoseconds) {
        nanoseconds_ = seconds * 1000000000 + nanoseconds;
    }
    void advance(std::int64_t milliseconds) { nanoseconds_ += milliseconds * 1000000; }

    /// Makes all later readings of the clock fail.
    void fail() { failing_ = true; }

    /// Sets a function that each sleep calls after it has advanced the clock.
    void onSleep(std::function<void()> action) { onSleep_ = std::move(action); }
    /// Sets a function that is called before each reading of the clock.
    void onRead(std::function<void()> action) { onRead_ = std::move(action); }

    /// The arguments of all calls of usleep() so far, in microseconds.
    std::vector<unsigned int> const& sleeps() const { return sleeps_; }
    /// The number of readings of the monotonic clock so far.
    unsigned int readings() const { return readings_; }

    // Used by the replaced functions.

    static VirtualTime*& current() {
        static VirtualTime* time = nullptr;
        return time;
    }

    int read(timespec& now) {
        if (onRead_)
            onRead_();
        ++readings_;
        if (failing_) {
            errno = EINVAL;
            return -1;
        }
        now.tv_sec = static_cast<time_t>(nanoseconds_ / 1000000000);
        now.tv_nsec = static_cast<long>(nanoseconds_ % 1000000000);
        return 0;
    }

    void sleep(unsigned int microseconds) {
        if (sleeps_.size() == endless)
            std::abort(); // the code under test waits for ever
        sleeps_.push_back(microseconds);
        nanoseconds_ += std::int64_t{microseconds} * 1000;
        if (onSleep_)
            onSleep_();
    }

private:
    static constexpr std::size_t endless = 100000;

    std::int64_t nanoseconds_ = 0;
    bool failing_ = false;
    unsigned int readings_ = 0;
    std::vector<unsigned int> sleeps_;
    std::function<void()> onSleep_;
    std::function<void()> onRead_;
};

} // namespace test

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
    if (clock == CLOCK_MONOTONIC && test::VirtualTime::current())
        return test::VirtualTime::current()->read(*now);
    return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
}

extern "C" int usleep(useconds_t microseconds) {
    if (test::VirtualTime::current()) {
        test::VirtualTime::current()->sleep(microseconds);
        return 0;
    }
    timespec const pause{static_cast<time_t>(microseconds / 1000000),
                         static_cast<long>(microseconds % 1000000) * 1000};
    return nanosleep(&pause, nullptr);
}
