#pragma once

namespace zntl {

/// An empty base class for countdowns. Objects may be deleted through a pointer to it.
class Countdown {
public:
    Countdown() = default;
    Countdown(Countdown const&) = default;
    Countdown& operator=(Countdown const&) = default;
    virtual ~Countdown();
};

} // namespace zntl
