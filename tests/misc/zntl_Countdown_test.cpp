#include "misc/zntl_Countdown.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using zntl::Countdown;

static_assert(std::is_polymorphic_v<Countdown>);
static_assert(std::has_virtual_destructor_v<Countdown>);
static_assert(sizeof(Countdown) == sizeof(void*), "no base and no data");

namespace {

TEST(Countdown, IsDestroyedThroughItsBase) {
    struct Subclass : Countdown {
        explicit Subclass(bool& destroyed) : destroyed_(destroyed) {}
        ~Subclass() override { destroyed_ = true; }
        bool& destroyed_;
    };
    bool destroyed = false;
    std::unique_ptr<Countdown>(std::make_unique<Subclass>(destroyed)).reset();
    EXPECT_TRUE(destroyed);
}

} // namespace
