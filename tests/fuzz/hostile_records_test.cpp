// Corrupts each field of every kind of value, in streams, nested streams and files. The library
// must read or reject the bytes, and must not allocate more than a small multiple of their number.

#include "form.h"
#include "fuzz.h"
#include "read_everything.h"

#include "support/bytes.h"
#include "support/failing_allocation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <exception>
#include <string>

namespace {

using test::Bytes;

std::string textOf(Bytes const& bytes) { return {bytes.begin(), bytes.end()}; }

/// The limit of memory allocated at one time: `perByte` for each byte of input, plus `beside`. Each
/// level of nested sets and streams copies the bytes, and so do the comparisons of this test.
/// `beside` is for the largest object and an exception's message.
constexpr std::size_t perByte = 16;
constexpr std::size_t beside = 1024;

/// Runs `read` with these bytes. It must not throw, and must stay below the limit of memory.
template <class Read>
void expectHarmless(Bytes const& bytes, Read read) {
    std::string const text = textOf(bytes);
    std::size_t peak = 0;
    try {
        peak = test::peakAllocation([&] { read(text); });
    } catch (std::exception const& fault) {
        ADD_FAILURE() << fault.what() << ": " << test::toHex(bytes);
    }
    EXPECT_LE(peak, perByte * bytes.size() + beside) << test::toHex(bytes);
}

class HostileRecords : public testing::TestWithParam<unsigned int> {
protected:
    unsigned int const type = GetParam();
    fuzz::Form const form = fuzz::formOf(type);
};

TEST_P(HostileRecords, StartFromAFormThatIsReadAsAWhole) {
    auto const value = fuzz::makeReader(type);
    auto const length = static_cast<unsigned int>(form.bytes.size());
    EXPECT_EQ(value->fromBin(form.bytes.data(), length), length);
    Bytes written(value->getBinLength());
    value->toBin(written.data());
    EXPECT_EQ(test::toHex(written), test::toHex(form.bytes));
}

TEST_P(HostileRecords, AreReadOrRefusedFromAStream) {
    // A whole record follows, which a reader that runs too far would reach.
    fuzz::Form const records = fuzz::record(type, form) + fuzz::record(501, fuzz::string("next"));
    fuzz::forEachFault(records, [](Bytes const& bytes) {
        expectHarmless(bytes,
                       [](std::string const& text) { fuzz::readRecords(fuzz::streamOf(text)); });
    });
}

TEST_P(HostileRecords, AreReadOrRefusedFromAStreamInAStream) {
    fuzz::Form const records = fuzz::record(6, fuzz::stream({fuzz::record(type, form)}));
    fuzz::forEachFault(records, [](Bytes const& bytes) {
        expectHarmless(bytes,
                       [](std::string const& text) { fuzz::readRecords(fuzz::streamOf(text)); });
    });
}

TEST_P(HostileRecords, AreReadOrRefusedDirectly) {
    fuzz::forEachFault(form, [&](Bytes const& bytes) {
        expectHarmless(bytes, [&](std::string const& text) { fuzz::readDirectly(type, text); });
    });
}

TEST_P(HostileRecords, AreReadOrRefusedFromAFile) {
    // Only every fifth fault is tested, because files need system calls, which are slow.
    unsigned int number = 0;
    fuzz::forEachFault(form, [&](Bytes const& bytes) {
        if (++number % 5 == 0)
            expectHarmless(bytes,
                           [&](std::string const& text) { fuzz::readTypedFile(type, text); });
    });
    fuzz::forEachFault(fuzz::record(type, form), [&](Bytes const& bytes) {
        if (++number % 5 == 0)
            expectHarmless(bytes, [](std::string const& text) { fuzz::readStreamFile(text); });
    });
}

INSTANTIATE_TEST_SUITE_P(OfType, HostileRecords, testing::ValuesIn(fuzz::readableTypes));

} // namespace
