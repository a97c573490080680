#pragma once

#include <vector>

namespace znst {

/// An object that can become ready. Subclasses define when it is.
class WaitObject {
public:
    WaitObject() = default;
    WaitObject(WaitObject const&) = default;
    WaitObject& operator=(WaitObject const&) = default;
    virtual ~WaitObject() = default;

    /// Waits at most `timeout` milliseconds for the object to become ready: 0 means only check,
    /// 0xFFFFFFFF means no limit. Returns a number other than 0 if it is ready, otherwise 0.
    virtual unsigned int wait(unsigned int timeout) const = 0;

    /// Calls `wait`, so it is not exclusive unless a subclass overrides it.
    virtual unsigned int waitExclusive(unsigned int timeout) const;
};

/// Sleeps for the given number of milliseconds, or until a signal handler runs. The number of
/// microseconds wraps at 32 bits, so waits of 4294968 ms (about 72 minutes) or more are too short.
void Wait(unsigned int milliseconds);

/// Polls `objects` in order until one is ready or `timeout` milliseconds have passed (0xFFFFFFFF
/// means no limit). Returns the result of the ready object's `wait(0)` and stores its position in
/// `index`. Returns 0, with `index` unchanged, if the time passed first. Skips null entries.
///
/// Polls at least once, even with a `timeout` of 0, and sleeps for a millisecond after each pass
/// that found no ready object. The objects must stay alive, and no entry may be removed, during the
/// call. Entries that are added are not polled. Without objects and without a limit, it never
/// returns.
unsigned int Wait(std::vector<WaitObject*> const& objects, unsigned int timeout,
                  unsigned int& index);

} // namespace znst
