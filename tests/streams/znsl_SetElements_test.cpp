// The calls that a set makes to its elements, and elements that throw other types than the
// library's exception.

#include "misc/zntl_Exception.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "support/bytes.h"
#include "support/exception_text.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace test;

namespace {

char const* const cannotBeRead = "znsl::Serializable::fromBin() - Failed!";

/// An element whose type id can differ from that of a default-constructed element.
class Element : public znsl::Serializable {
public:
    static constexpr unsigned int defaultType = 301;
    static constexpr unsigned int otherType = 302;

    /// The operation that throws a number, for all elements.
    enum class Fault { none, typeId, binLength, toBin, fromBin, order, copy };
    static inline Fault fault = Fault::none;
    /// The result of getBinLength of all elements.
    static inline unsigned int binLength = 1;

    Element() = default;
    Element(int number, unsigned int type) : key(number), type_(type) {}
    Element(Element const& other) : Serializable(other), key(other.key), type_(other.type_) {
        failIf(Fault::copy);
    }
    Element& operator=(Element const&) = default;
    ~Element() override = default;

    int key = 0;

    bool operator<(Element const& other) const {
        failIf(Fault::order);
        return key < other.key;
    }

    unsigned int getTypeId() const override {
        failIf(Fault::typeId);
        return type_;
    }
    std::string getTypeName() const override { return "Element" + std::to_string(type_); }
    std::string toXML() const override { return toXML(getTypeName().c_str()); }
    std::string toXML(char const* name) const override { return name; }
    bool fromXML(char const* /*xml*/) override { return false; }
    unsigned int getBinLength() const override {
        failIf(Fault::binLength);
        return binLength;
    }
    unsigned int toBin(unsigned char* out) const override {
        failIf(Fault::toBin);
        *out = static_cast<unsigned char>(key);
        return 1;
    }
    unsigned int fromBin(unsigned char const* data, unsigned int length) override {
        failIf(Fault::fromBin);
        key = *data;
        return length;
    }

private:
    static void failIf(Fault operation) {
        if (fault == operation)
            throw 7;
    }

    unsigned int type_ = defaultType;
};

using Elements = znsl::Set<Element>;
using Fault = Element::Fault;

/// Makes an operation of all elements throw while this object lives.
class Failing {
public:
    explicit Failing(Fault fault) { Element::fault = fault; }
    Failing(Failing const&) = delete;
    Failing& operator=(Failing const&) = delete;
    ~Failing() { Element::fault = Fault::none; }
};

Elements oneOfAnotherType() {
    Elements elements;
    elements.insert(Element(5, Element::otherType));
    return elements;
}

Bytes integerRecord(unsigned int value) {
    return record(
        504, {static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8), 0, 0});
}

/// Returns the binary form of a set with one element.
Bytes formWith(Bytes const& elementRecord) {
    Bytes const content =
        concat(integerRecord(Element::defaultType), integerRecord(1), elementRecord);
    return concat(Bytes{static_cast<unsigned char>(content.size()), 0, 0, 0}, content);
}

TEST(SetElements, AreAskedForTypeAndNameByADefaultOne) {
    Elements const elements = oneOfAnotherType();
    EXPECT_EQ(elements.getTypeId(), 10301U);
    EXPECT_EQ(elements.getTypeName(), "Element301Set");
    EXPECT_EQ(elements.internalTypeName(), "Element301Set");
    EXPECT_EQ(elements.toXML(), "<Element301Set>Element302</Element301Set>");
}

TEST(SetElements, AreWrittenUnderTheTypeOfADefaultOne) {
    Elements const elements = oneOfAnotherType();
    Bytes form(elements.getBinLength());
    EXPECT_EQ(elements.toBin(form.data()), form.size());
    EXPECT_EQ(toHex(form), toHex(formWith(record(Element::otherType, fromHex("05")))));
}

TEST(SetElements, AreReadUnderTheTypeOfADefaultOne) {
    Elements elements = oneOfAnotherType();
    Bytes const form = formWith(record(Element::defaultType, fromHex("06")));
    EXPECT_EQ(elements.fromBin(form.data(), static_cast<unsigned int>(form.size())), form.size());
    ASSERT_EQ(elements.size(), 1U);
    EXPECT_EQ(elements.begin()->key, 6);
}

TEST(SetElements, ThatThrowANumberCannotBeWritten) {
    Elements const elements = oneOfAnotherType();
    test::TemporaryDirectory const directory;
    std::string const path = directory / "set";
    for (Fault const fault : {Fault::typeId, Fault::binLength, Fault::toBin}) {
        SCOPED_TRACE(static_cast<int>(fault));
        Failing const failing(fault);
        znsl::MemIOStream stream;
        EXPECT_FALSE(elements.serialize(stream));
        EXPECT_EQ(elements.getBinLength(), 0U);
        Bytes out(100, 0xEE);
        EXPECT_TRUE(
            test::throws<zntl::Exception>(cannotBeRead, [&] { elements.toBin(out.data()); }));
        EXPECT_EQ(out, Bytes(100, 0xEE)) << "nothing was written";
        EXPECT_FALSE(elements.toFile(path.c_str()));
    }
}

TEST(SetElements, ThatThrowANumberCannotBeRead) {
    Bytes const one = record(Element::defaultType, fromHex("06"));
    Bytes const form = formWith(one);
    for (Fault const fault : {Fault::typeId, Fault::fromBin, Fault::copy}) {
        SCOPED_TRACE(static_cast<int>(fault));
        Elements elements = oneOfAnotherType();
        Failing const failing(fault);
        EXPECT_TRUE(test::throws<zntl::Exception>(cannotBeRead, [&] {
            elements.fromBin(form.data(), static_cast<unsigned int>(form.size()));
        }));
        EXPECT_TRUE(elements.empty());
    }
}

TEST(SetElements, ThatThrowANumberOnOrderCannotBeReadBeyondTheFirst) {
    Bytes const one = record(Element::defaultType, fromHex("06"));
    Bytes form = formWith(one);
    form.insert(form.end(), one.begin(), one.end());
    form[0] = static_cast<unsigned char>(form.size() - 4);
    form[4 + 12 + 8] = 2;
    Elements elements;
    Failing const failing(Fault::order);
    EXPECT_TRUE(test::throws<zntl::Exception>(cannotBeRead, [&] {
        elements.fromBin(form.data(), static_cast<unsigned int>(form.size()));
    }));
    EXPECT_EQ(elements.size(), 1U);
}

TEST(SetBinLength, ThrowsIfTheFormDoesNotFitIn32Bits) {
    Elements const elements = oneOfAnotherType();
    Element::binLength = 0xFFFFFFFF;
    EXPECT_TRUE(test::throws<std::length_error>("znsl::MemIOStream: content beyond 32 bits",
                                                [&] { elements.getBinLength(); }));
    Element::binLength = 1;
    EXPECT_EQ(elements.getBinLength(), 4U + 12 + 12 + 9);
}

} // namespace
