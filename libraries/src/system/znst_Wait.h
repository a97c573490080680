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

    /// Waits at most `timeout` milliseconds (0 only looks, 0xFFFFFFFF means without limit) for the
    /// object to become ready; non-zero when it is.
    virtual unsigned int wait(unsigned int timeout) const = 0;

    /// As `wait`, for subclasses that tell exclusive waiting apart; here it is the same.
    virtual unsigned int waitExclusive(unsigned int timeout) const;
};

/// Sleeps for the given milliseconds. Times a thousand the number wraps at 32 bits, so that waits
/// of 4294968 ms (about 72 minutes) and more come out short; that is kept.
void Wait(unsigned int milliseconds);

/// Polls `objects` until one is ready or `timeout` milliseconds have passed (0xFFFFFFFF: without
/// limit). Returns the result of the first ready one in the vector's order, and stores its position
/// in `index`; returns 0 when the time passed first, and leaves `index` as it was. Null entries are
/// skipped.
///
/// Every entry before the ready one is polled, also with a `timeout` of 0; a pass of polls without
/// a ready object is followed by a sleep of a millisecond. The objects must stay alive, and their
/// number is taken once, at entry. Without any object and without limit it never returns.
unsigned int Wait(std::vector<WaitObject*> const& objects, unsigned int timeout,
                  unsigned int& index);

} // namespace znst
