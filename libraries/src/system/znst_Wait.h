#pragma once

#include <vector>

namespace znst {

/// Something that can become ready. Subclasses say what ready means.
class WaitObject {
public:
    WaitObject() = default;
    WaitObject(WaitObject const&) = default;
    WaitObject& operator=(WaitObject const&) = default;
    virtual ~WaitObject() = default;

    /// Waits at most `timeout` milliseconds (0 only checks, 0xFFFFFFFF means no limit) for the
    /// object to become ready; non-zero when it is.
    virtual unsigned int wait(unsigned int timeout) const = 0;

    /// Calls `wait`. Subclasses may distinguish exclusive waiting.
    virtual unsigned int waitExclusive(unsigned int timeout) const;
};

/// Sleeps for the given milliseconds. The number of microseconds wraps at 32 bits, so waits of
/// 4294968 ms (about 72 minutes) and more are too short.
void Wait(unsigned int milliseconds);

/// Polls `objects` until one is ready or `timeout` milliseconds have passed (0xFFFFFFFF: no
/// limit). Returns the result of the first ready one in the vector's order, and stores its position
/// in `index`; returns 0 when the time passed first, and leaves `index` as it was. Null entries are
/// skipped.
///
/// Polls every entry before the ready one, even with a `timeout` of 0, and sleeps a millisecond
/// after each pass that found none. The objects must stay alive; entries added during the call are
/// not polled. Without any object and without a limit it never returns.
unsigned int Wait(std::vector<WaitObject*> const& objects, unsigned int timeout,
                  unsigned int& index);

} // namespace znst
