#pragma once

namespace zntl {

/// The base of countdowns: polymorphic, without state, destroyed through a base pointer.
class Countdown {
public:
    Countdown() = default;
    Countdown(Countdown const&) = default;
    Countdown& operator=(Countdown const&) = default;
    virtual ~Countdown();
};

} // namespace zntl
