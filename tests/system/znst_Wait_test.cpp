#include "system/znst_Wait.h"

#include "support/virtual_time.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using znst::Wait;
using znst::WaitObject;

static_assert(std::is_abstract_v<WaitObject>);
static_assert(std::has_virtual_destructor_v<WaitObject>);
static_assert(sizeof(WaitObject) == sizeof(void*), "no base and no data");

namespace {

constexpr unsigned int withoutLimit = 0xFFFFFFFF;
constexpr unsigned int untouched = 77;

using Log = std::vector<std::string>;

/// Records each poll. After `pollsBefore` polls it is ready and returns `result`.
class Object : public WaitObject {
public:
    Object(Log& log, std::string name, unsigned int result, unsigned int pollsBefore = 0)
        : log_(log), name_(std::move(name)), result_(result), pollsBefore_(pollsBefore) {}

    unsigned int wait(unsigned int timeout) const override {
        log_.push_back(name_ + "(" + std::to_string(timeout) + ")");
        if (onPoll)
            onPoll();
        return polls_++ < pollsBefore_ ? 0 : result_;
    }

    std::function<void()> onPoll;

private:
    Log& log_;
    std::string name_;
    unsigned int result_;
    unsigned int pollsBefore_;
    mutable unsigned int polls_ = 0;
};

/// Provides objects, a log of the calls, and a clock that only sleeps advance.
class WaitForObjects : public testing::Test {
protected:
    WaitForObjects() {
        time.onRead([this] { log.push_back("clock"); });
        time.onSleep([this] { log.push_back("sleep " + std::to_string(time.sleeps().back())); });
    }

    /// Returns an object that is never ready.
    Object idle(char const* name) { return {log, name, 0}; }
    Object ready(char const* name, unsigned int result) { return {log, name, result}; }
    /// Returns an object that is ready after `polls` polls.
    Object later(char const* name, unsigned int result, unsigned int polls) {
        return {log, name, result, polls};
    }

    unsigned int waitFor(std::vector<WaitObject*> const& objects, unsigned int timeout) {
        index = untouched;
        return Wait(objects, timeout, index);
    }

    Log log;
    test::VirtualTime time;
    unsigned int index = untouched;
};

TEST_F(WaitForObjects, ReturnsTheFirstReadyInOrderAndPollsNoneAfterIt) {
    Object a = idle("a");
    Object b = ready("b", 5);
    Object c = ready("c", 6);
    EXPECT_EQ(waitFor({&a, &b, &c}, 1000), 5U);
    EXPECT_EQ(index, 1U);
    EXPECT_EQ(log, (Log{"clock", "a(0)", "b(0)", "clock"})) << "it does not sleep";
}

TEST_F(WaitForObjects, SleepsAMillisecondAfterEachPassWithoutAReadyObject) {
    Object a = idle("a");
    Object b = later("b", 5, 2);
    EXPECT_EQ(waitFor({&a, &b}, 1000), 5U);
    EXPECT_EQ(index, 1U);
    EXPECT_EQ(log, (Log{"clock",                               //
                        "a(0)", "b(0)", "sleep 1000", "clock", //
                        "a(0)", "b(0)", "sleep 1000", "clock", //
                        "a(0)", "b(0)", "clock"}));
}

TEST_F(WaitForObjects, ReturnsZeroWhenTheTimePassedAndLeavesTheIndex) {
    Object a = idle("a");
    Object b = idle("b");
    EXPECT_EQ(waitFor({&a, &b}, 2), 0U);
    EXPECT_EQ(index, untouched);
    EXPECT_EQ(log, (Log{"clock",                               //
                        "a(0)", "b(0)", "sleep 1000", "clock", //
                        "a(0)", "b(0)", "sleep 1000", "clock"}));
}

TEST_F(WaitForObjects, WithATimeoutOfZeroPollsEveryObjectOnce) {
    Object a = idle("a");
    Object b = idle("b");
    EXPECT_EQ(waitFor({&a, &b}, 0), 0U);
    EXPECT_EQ(index, untouched);
    EXPECT_EQ(log, (Log{"clock", "a(0)", "b(0)", "sleep 1000", "clock"}));
}

TEST_F(WaitForObjects, WithATimeoutOfZeroReturnsAReadyObject) {
    Object a = ready("a", 5);
    EXPECT_EQ(waitFor({&a}, 0), 5U);
    EXPECT_EQ(index, 0U);
    EXPECT_EQ(log, (Log{"clock", "a(0)", "clock"}));
}

TEST_F(WaitForObjects, ReturnsAReadyObjectThoughTheTimePassedMeanwhile) {
    Object a = idle("a");
    Object b = ready("b", 0xFFFFFFFF);
    a.onPoll = [this] { time.advance(100000); };
    EXPECT_EQ(waitFor({&a, &b}, 10), 0xFFFFFFFFU);
    EXPECT_EQ(index, 1U);
}

TEST_F(WaitForObjects, WithoutLimitReadsTheClockOnlyAtTheStart) {
    Object a = later("a", 5, 2);
    EXPECT_EQ(waitFor({&a}, withoutLimit), 5U);
    EXPECT_EQ(index, 0U);
    EXPECT_EQ(log, (Log{"clock", "a(0)", "sleep 1000", "a(0)", "sleep 1000", "a(0)"}));
}

TEST_F(WaitForObjects, WithoutLimitIsNotALimitOfThatManyMilliseconds) {
    Object a = later("a", 5, 2);
    time.onSleep([this] { time.advance(withoutLimit - 1); });
    EXPECT_EQ(waitFor({&a}, withoutLimit), 5U);
}

TEST_F(WaitForObjects, TheLargestTimeoutWithALimitEnds) {
    Object a = idle("a");
    a.onPoll = [this] { time.advance(0x7FFFFFFE); }; // two polls and two sleeps reach the timeout
    EXPECT_EQ(waitFor({&a}, withoutLimit - 1), 0U);
    EXPECT_EQ(time.sleeps().size(), 2U);
}

TEST_F(WaitForObjects, SkipsNullEntriesButCountsThem) {
    Object a = idle("a");
    Object b = ready("b", 5);
    EXPECT_EQ(waitFor({nullptr, &a, nullptr, &b}, 10), 5U);
    EXPECT_EQ(index, 3U);
    EXPECT_EQ(log, (Log{"clock", "a(0)", "b(0)", "clock"}));
    EXPECT_EQ(waitFor({nullptr, nullptr}, 1), 0U);
    EXPECT_EQ(index, untouched);
}

TEST_F(WaitForObjects, PollsAnObjectAsOftenAsItIsNamed) {
    Object a = later("a", 5, 1);
    EXPECT_EQ(waitFor({&a, &a}, 10), 5U);
    EXPECT_EQ(index, 1U);
    EXPECT_EQ(time.sleeps().size(), 0U);
}

TEST_F(WaitForObjects, MeasuresTheTimeAcrossTheWrapOfTheTickCount) {
    time.set(4294967, 290000000); // six milliseconds before the wrap
    Object a = idle("a");
    EXPECT_EQ(waitFor({&a}, 10), 0U);
    EXPECT_EQ(time.sleeps().size(), 10U);
}

TEST_F(WaitForObjects, WithoutObjectsWaitsForTheTimeout) {
    EXPECT_EQ(waitFor({}, 3), 0U);
    EXPECT_EQ(index, untouched);
    EXPECT_EQ(time.sleeps(), (std::vector<unsigned int>{1000, 1000, 1000}));
}

TEST_F(WaitForObjects, WithoutObjectsAndWithoutLimitNeverReturns) {
    struct Enough {};
    time.onSleep([this] {
        if (time.sleeps().size() == 5000)
            throw Enough();
    });
    EXPECT_THROW(waitFor({}, withoutLimit), Enough);
    EXPECT_EQ(time.readings(), 1U);
}

TEST_F(WaitForObjects, TakesTheNumberOfEntriesAtTheStart) {
    Object a = idle("a");
    Object b = ready("b", 5);
    std::vector<WaitObject*> objects{&a};
    objects.reserve(2);
    a.onPoll = [&] {
        if (objects.size() == 1)
            objects.push_back(&b);
    };
    EXPECT_EQ(Wait(objects, 3, index), 0U);
    EXPECT_EQ(objects.size(), 2U);
    EXPECT_EQ(index, untouched);
}

TEST_F(WaitForObjects, PassesOnWhatAnObjectThrows) {
    struct Fault {};
    Object a = idle("a");
    a.onPoll = [] { throw Fault(); };
    EXPECT_THROW(waitFor({&a}, 10), Fault);
    EXPECT_EQ(index, untouched);
}

TEST(WaitForObjectsInRealTime, ReturnsAfterAboutTheTimeout) {
    Log log;
    Object a(log, "a", 0);
    Object b(log, "b", 0);
    unsigned int index = untouched;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(Wait({&a, &b}, 10, index), 0U);
    auto const elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::milliseconds(9)) << "Wait counts whole milliseconds";
    EXPECT_EQ(index, untouched);
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log.size() % 2, 0U) << "each pass polls both objects";
}

// Sleeping

TEST(WaitMilliseconds, SleepsAThousandTimesAsManyMicrosecondsIn32Bits) {
    struct {
        unsigned int milliseconds;
        unsigned int microseconds;
    } const rows[] = {
        {0, 0},         {1, 1000},       {1000, 1000000},          {4294967, 4294967000},
        {4294968, 704}, {0x80000000, 0}, {0xFFFFFFFF, 4294966296},
    };
    for (auto const& row : rows) {
        test::VirtualTime const time;
        Wait(row.milliseconds);
        EXPECT_EQ(time.sleeps(), (std::vector<unsigned int>{row.microseconds}));
        EXPECT_EQ(time.readings(), 0U);
    }
}

TEST(WaitMilliseconds, SleepsInRealTime) {
    auto const start = std::chrono::steady_clock::now();
    Wait(5);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5));
}

// Waiting for one object exclusively

TEST(WaitExclusive, IsWaitWithTheSameTimeout) {
    Log log;
    Object const object(log, "a", 5);
    WaitObject const& base = object;
    EXPECT_EQ(base.waitExclusive(12), 5U);
    EXPECT_EQ(base.waitExclusive(withoutLimit), 5U);
    EXPECT_EQ(log, (Log{"a(12)", "a(4294967295)"}));
}

/// An object whose waitExclusive differs from wait.
class Exclusive : public Object {
public:
    using Object::Object;
    unsigned int waitExclusive(unsigned int /*timeout*/) const override { return 9; }
};

TEST(WaitExclusive, CanBeOverridden) {
    Log log;
    Exclusive const object(log, "a", 5);
    WaitObject const& base = object;
    EXPECT_EQ(base.waitExclusive(1), 9U);
    EXPECT_EQ(base.wait(1), 5U);
}

TEST(WaitExclusive, IsNotHowSeveralObjectsArePolled) {
    Log log;
    Exclusive object(log, "a", 5);
    unsigned int index = 7;
    EXPECT_EQ(Wait({&object}, withoutLimit, index), 5U);
    EXPECT_EQ(index, 0U);
}

} // namespace
