#include "streams/znsl_IOStream.h"

#include "support/virtual_slot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <type_traits>

namespace {

using znsl::IOStream;
using znsl::IStream;
using znsl::OStream;

/// Records its destruction.
class Stream : public IOStream {
public:
    explicit Stream(bool& gone) : gone_(gone) {}
    Stream(Stream const&) = delete;
    Stream& operator=(Stream const&) = delete;
    ~Stream() override { gone_ = true; }

    unsigned int getNextType() const override { return 1; }
    bool isEmpty() const override { return false; }
    unsigned int read(znsl::Serializable& /*object*/) override { return 0; }
    unsigned int skip() override { return 0; }
    IStream& operator>>(znsl::Serializable& /*object*/) override { return *this; }
    bool readNextObject(unsigned char*& /*data*/, unsigned int& /*length*/) override {
        return true;
    }
    void flush() override {}
    void close() override {}
    unsigned int write(znsl::Serializable const& /*object*/) override { return 0; }
    OStream& operator<<(znsl::Serializable const& /*object*/) override { return *this; }
    OStream& operator<<(IStream& /*source*/) override { return *this; }

private:
    bool& gone_;
};

TEST(IOStream, IsItsTwoHalvesAndNothingElse) {
    static_assert(sizeof(IOStream) == 2 * sizeof(void*));
    static_assert(std::is_abstract_v<IOStream>);
    static_assert(std::has_virtual_destructor_v<IOStream>);
}

TEST(IOStream, IsFirstASourceAndThenASink) {
    bool gone;
    Stream stream(gone);
    auto const* const begin = reinterpret_cast<char const*>(static_cast<IOStream*>(&stream));
    auto const* const source = reinterpret_cast<char const*>(static_cast<IStream*>(&stream));
    auto const* const sink = reinterpret_cast<char const*>(static_cast<OStream*>(&stream));
    EXPECT_EQ(source - begin, 0);
    EXPECT_EQ(sink - begin, static_cast<std::ptrdiff_t>(sizeof(void*)));
}

TEST(IOStream, AddsNoOperation) {
    // The first operation that IOStream adds has the slot after those of IStream.
    class Extended : public IOStream {
    public:
        virtual void added() {}
    };
    EXPECT_EQ(test::virtualSlot(&Extended::added), 10);
}

TEST(IOStream, IsDestroyedThroughEitherHalf) {
    bool gone = false;
    std::unique_ptr<IOStream>(new Stream(gone)).reset();
    EXPECT_TRUE(gone);
    gone = false;
    std::unique_ptr<IStream>(new Stream(gone)).reset();
    EXPECT_TRUE(gone);
    gone = false;
    std::unique_ptr<OStream>(new Stream(gone)).reset();
    EXPECT_TRUE(gone);
}

TEST(IOStream, RecognisesTheEndThroughItsOwnOperations) {
    bool gone;
    Stream const stream(gone);
    EXPECT_TRUE(stream.isEOF());
    EXPECT_TRUE(static_cast<IStream const&>(stream).wait(0xFFFFFFFF));
}

} // namespace
