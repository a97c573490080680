#include "streams/znsl_OStream.h"

#include "streams/znsl_IStream.h"
#include "support/exception_text.h"
#include "support/virtual_slot.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

namespace {

using test::virtualSlot;
using znsl::IStream;
using znsl::OStream;

class Sink : public OStream {
public:
    void flush() override {}
    void close() override {}
    unsigned int write(znsl::Serializable const& /*object*/) override { return 0; }
    OStream& operator<<(znsl::Serializable const& /*object*/) override { return *this; }
    OStream& operator<<(IStream& /*source*/) override { return *this; }
};

/// A source of one raw record. It records the addresses of the arguments that it receives.
class Source : public IStream {
public:
    bool result = true;
    unsigned char** dataAsked = nullptr;
    unsigned int* lengthAsked = nullptr;
    unsigned char record[3] = {};

    unsigned int getNextType() const override { return 1; }
    bool isEmpty() const override { return true; }
    unsigned int read(znsl::Serializable& /*object*/) override { return 0; }
    unsigned int skip() override { return 0; }
    IStream& operator>>(znsl::Serializable& /*object*/) override { return *this; }
    bool readNextObject(unsigned char*& data, unsigned int& length) override {
        dataAsked = &data;
        lengthAsked = &length;
        data = record;
        length = sizeof record;
        return result;
    }
};

TEST(OStream, IsATableOfOperationsAndNothingElse) {
    static_assert(sizeof(OStream) == sizeof(void*));
    static_assert(std::is_abstract_v<OStream>);
    static_assert(std::has_virtual_destructor_v<OStream>);
}

TEST(OStream, KeepsItsSlotOrder) {
    using WriteObject = OStream& (OStream::*)(znsl::Serializable const&);
    using WriteRecord = OStream& (OStream::*)(IStream&);
    EXPECT_EQ(virtualSlot(&OStream::flush), 2);
    EXPECT_EQ(virtualSlot(&OStream::close), 3);
    EXPECT_EQ(virtualSlot(&OStream::write), 4);
    EXPECT_EQ(virtualSlot(static_cast<WriteObject>(&OStream::operator<<)), 5);
    EXPECT_EQ(virtualSlot(static_cast<WriteRecord>(&OStream::operator<<)), 6);
    EXPECT_EQ(virtualSlot(&OStream::getNextObject), 7);
}

TEST(OStreamGetNextObject, PassesItsArgumentsToTheSource) {
    Sink sink;
    Source source;
    for (bool const result : {true, false}) {
        source.result = result;
        unsigned char* data = nullptr;
        unsigned int length = 77;
        EXPECT_EQ(sink.getNextObject(source, data, length), result);
        EXPECT_EQ(source.dataAsked, &data);
        EXPECT_EQ(source.lengthAsked, &length);
        EXPECT_EQ(data, source.record);
        EXPECT_EQ(length, 3U);
    }
}

TEST(OStreamGetNextObject, PassesOnWhatTheSourceThrows) {
    class Broken : public Source {
    public:
        bool readNextObject(unsigned char*& /*data*/, unsigned int& /*length*/) override {
            throw std::out_of_range("worn out");
        }
    };
    Sink sink;
    Broken source;
    unsigned char* data = nullptr;
    unsigned int length = 0;
    EXPECT_TRUE(test::throws<std::out_of_range>("worn out",
                                                [&] { sink.getNextObject(source, data, length); }));
}

} // namespace
