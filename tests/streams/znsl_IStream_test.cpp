#include "streams/znsl_IStream.h"

#include "support/virtual_slot.h"
#include "support/virtual_time.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>
#include <vector>

namespace {

using test::virtualSlot;
using znsl::IStream;

constexpr unsigned int withoutLimit = 0xFFFFFFFF;

/// A source whose results the test sets. It counts the calls.
class Source : public IStream {
public:
    bool empty = true;
    unsigned int nextType = 1;
    mutable int emptyAsked = 0;
    mutable int typeAsked = 0;

    unsigned int getNextType() const override {
        ++typeAsked;
        return nextType;
    }
    bool isEmpty() const override {
        ++emptyAsked;
        return empty;
    }
    unsigned int read(znsl::Serializable& /*object*/) override { return 0; }
    unsigned int skip() override { return 0; }
    IStream& operator>>(znsl::Serializable& /*object*/) override { return *this; }
    bool readNextObject(unsigned char*& /*data*/, unsigned int& /*length*/) override {
        return false;
    }
};

Source sourceWithData() {
    Source source;
    source.empty = false;
    return source;
}

TEST(IStream, IsATableOfOperationsAndNothingElse) {
    static_assert(sizeof(IStream) == sizeof(void*));
    static_assert(std::is_abstract_v<IStream>);
    static_assert(std::has_virtual_destructor_v<IStream>);
}

TEST(IStream, KeepsItsSlotOrder) {
    EXPECT_EQ(virtualSlot(&IStream::wait), 2);
    EXPECT_EQ(virtualSlot(&IStream::getNextType), 3);
    EXPECT_EQ(virtualSlot(&IStream::isEOF), 4);
    EXPECT_EQ(virtualSlot(&IStream::isEmpty), 5);
    EXPECT_EQ(virtualSlot(&IStream::read), 6);
    EXPECT_EQ(virtualSlot(&IStream::skip), 7);
    EXPECT_EQ(virtualSlot(&IStream::operator>>), 8);
    EXPECT_EQ(virtualSlot(&IStream::readNextObject), 9);
}

TEST(IStreamIsEOF, IsFalseWithoutDataWhateverTheNextTypeIs) {
    Source source;
    EXPECT_FALSE(source.isEOF());
    EXPECT_EQ(source.emptyAsked, 1);
    EXPECT_EQ(source.typeAsked, 0) << "an empty source has no next record to ask about";
}

TEST(IStreamIsEOF, IsTrueExactlyForARecordOfTypeOne) {
    Source source = sourceWithData();
    for (unsigned int const type : {0U, 2U, 6U, 504U, 0x10001U, 0xFFFFFFFFU}) {
        source.nextType = type;
        EXPECT_FALSE(source.isEOF()) << type;
    }
    source.nextType = 1;
    EXPECT_TRUE(source.isEOF());
    EXPECT_EQ(source.typeAsked, 7);
}

TEST(IStreamWait, WithATimeoutOfZeroIsFalseWithoutAskingTheStream) {
    test::VirtualTime const time;
    Source const source = sourceWithData();
    EXPECT_FALSE(source.wait(0));
    EXPECT_EQ(source.emptyAsked, 0);
    EXPECT_TRUE(time.sleeps().empty());
}

TEST(IStreamWait, IsTrueAtOnceWhenThereIsData) {
    test::VirtualTime const time;
    for (unsigned int const timeout : {1U, 5U, 0xFFFFFFFEU, withoutLimit}) {
        Source const source = sourceWithData();
        EXPECT_TRUE(source.wait(timeout)) << timeout;
        EXPECT_EQ(source.emptyAsked, 1) << timeout;
    }
    EXPECT_TRUE(time.sleeps().empty());
}

TEST(IStreamWait, AsksTheStreamEveryMillisecondUntilTheDeadline) {
    test::VirtualTime const time;
    Source const source;
    EXPECT_FALSE(source.wait(5));
    EXPECT_EQ(source.emptyAsked, 5);
    EXPECT_EQ(time.sleeps(), std::vector<unsigned int>(5, 1000));
}

TEST(IStreamWait, FindsDataThatArrivesBeforeTheDeadline) {
    test::VirtualTime time;
    Source source;
    time.onSleep([&] { source.empty = time.sleeps().size() < 4; });
    EXPECT_TRUE(source.wait(5));
    EXPECT_EQ(time.sleeps().size(), 4U);
}

TEST(IStreamWait, IsFalseForDataThatArrivesInTheMillisecondOfTheDeadline) {
    test::VirtualTime time;
    Source source;
    time.onSleep([&] { source.empty = time.sleeps().size() < 5; });
    EXPECT_FALSE(source.wait(5));
    EXPECT_FALSE(source.empty);
    EXPECT_EQ(source.emptyAsked, 5) << "Contract: wait checks the deadline before the stream";
}

TEST(IStreamWait, MeasuresWithTheClockAndNotWithItsPauses) {
    test::VirtualTime time;
    Source const source;
    // Each pause takes 10 ms instead of 1 ms.
    time.onSleep([&] { time.advance(9); });
    EXPECT_FALSE(source.wait(25));
    EXPECT_EQ(time.sleeps().size(), 3U);
}

TEST(IStreamWait, EndsWhenAPauseSkipsTheDeadline) {
    test::VirtualTime time;
    Source const source;
    time.onSleep([&] { time.advance(1000); });
    EXPECT_FALSE(source.wait(2));
    EXPECT_EQ(time.sleeps().size(), 1U);
}

TEST(IStreamWait, SurvivesAWrapOfTheTickCount) {
    // The tick count is 0xFFFFFFFE and becomes 0 two milliseconds later.
    constexpr std::int64_t beforeWrap = 0xFFFFFFFE;
    test::VirtualTime const time(beforeWrap / 1000, beforeWrap % 1000 * 1000000);
    Source const source;
    EXPECT_FALSE(source.wait(5));
    EXPECT_EQ(time.sleeps().size(), 5U);
}

TEST(IStreamWait, TakesEveryTimeoutButTheLargestAsALimit) {
    test::VirtualTime time;
    Source const source;
    time.onSleep([&] { time.advance(0x7FFFFFFE); });
    EXPECT_FALSE(source.wait(0xFFFFFFFE));
    EXPECT_EQ(time.sleeps().size(), 2U);
}

TEST(IStreamWait, WithoutLimitEndsOnlyWithData) {
    test::VirtualTime time;
    Source source;
    time.onSleep([&] {
        time.advance(0x7FFFFFFF);
        source.empty = time.sleeps().size() < 7;
    });
    EXPECT_TRUE(source.wait(withoutLimit));
    EXPECT_EQ(time.sleeps(), std::vector<unsigned int>(7, 1000));
    EXPECT_EQ(source.emptyAsked, 8);
}

TEST(IStreamWait, WithoutLimitIsNotALimitOfThatManyMilliseconds) {
    test::VirtualTime time;
    Source source;
    time.onSleep([&] {
        time.advance(withoutLimit - 1);
        source.empty = time.sleeps().size() < 2;
    });
    EXPECT_TRUE(source.wait(withoutLimit));
}

TEST(IStreamWait, CanBeReplaced) {
    class Impatient : public Source {
    public:
        bool wait(unsigned int timeout) const override { return timeout == 7; }
        bool isEOF() const override { return true; }
    };
    Impatient const source;
    IStream const& base = source;
    EXPECT_TRUE(base.wait(7));
    EXPECT_FALSE(base.wait(8));
    EXPECT_TRUE(base.isEOF());
}

} // namespace
