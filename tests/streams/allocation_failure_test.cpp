// Operations that never throw do not allocate, or report an allocation failure by their result.

#include "misc/zntl_Integer.h"
#include "misc/zntl_SmartArray.h"
#include "misc/zntl_String.h"
#include "streams/records.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Set.h"
#include "support/bytes.h"
#include "support/failing_allocation.h"
#include "support/temporary_directory.h"
#include "system/zn_portability.h"
#include "video/znvl_Resolution.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>

namespace {

using zntl::String;
using ResolutionSet = znsl::Set<znvl::Resolution>;

String const text = "  a text that is longer than what a string holds without an allocation  ";
ResolutionSet const resolutions{{160, 120}, {320, 200}, {640, 480}};

znsl::MemIOStream makeStream() {
    znsl::MemIOStream stream(1000);
    stream << zntl::Integer(1) << znvl::Resolution(2, 3);
    stream.close();
    return stream;
}

znsl::MemIOStream records = makeStream();

unsigned char out[1000];

struct Operation {
    char const* name;
    void (*run)();

    friend std::ostream& operator<<(std::ostream& stream, Operation const& operation) {
        return stream << operation.name;
    }
};

class AllocationFailure : public testing::TestWithParam<Operation> {};

TEST_P(AllocationFailure, CannotHappenWithoutAllocations) {
    EXPECT_EQ(test::largestAllocation(GetParam().run), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, AllocationFailure,
    testing::Values(Operation{"Integer",
                              [] {
                                  zntl::Integer integer(7);
                                  integer.setValue(integer.getValue() + 1);
                                  integer.fromBin(out, integer.toBin(out));
                                  ASSERT_EQ(integer.getBinLength(), 4U);
                                  ASSERT_EQ(integer.getTypeId(), 504U);
                                  ASSERT_EQ(integer.getTypeName().size(), 7U);
                              }},
                    Operation{"StringQuestions",
                              [] {
                                  bool isInteger;
                                  ASSERT_FALSE(text.isNumeric(isInteger));
                                  ASSERT_FALSE(text.toBool());
                                  ASSERT_TRUE(text.hasPrefix(text));
                                  ASSERT_EQ(text.iCompare(text), 0);
                                  ASSERT_EQ(text.toUnsignedInt(), 0U);
                              }},
                    Operation{"StringCopies",
                              [] {
                                  char copy[100];
                                  ASSERT_EQ(text.copyString(copy, 99), text.size());
                                  ASSERT_EQ(text.toBin(out), text.getBinLength());
                              }},
                    Operation{"Resolution",
                              [] {
                                  znvl::Resolution resolution(640, 480);
                                  znvl::Resolution const other(1920, 1080);
                                  ASSERT_EQ(resolution.getMax(other), other);
                                  ASSERT_TRUE(resolution < other);
                                  ASSERT_EQ(resolution.toBin(out), resolution.getBinLength());
                                  ASSERT_EQ(resolution.fromBin(out, 8), 8U);
                              }},
                    Operation{"StreamQuestions",
                              [] {
                                  unsigned char const* data;
                                  unsigned int length;
                                  records.getBuffer(data, length);
                                  ASSERT_EQ(records.size(), length);
                                  ASSERT_EQ(records.capacity(), 1000U);
                                  ASSERT_EQ(records.count(), 3U);
                                  ASSERT_TRUE(records.validate());
                                  ASSERT_FALSE(records.isEmpty());
                                  ASSERT_FALSE(records.isEOF());
                                  ASSERT_EQ(records.getNextType(), 504U);
                                  ASSERT_EQ(records.toBin(out), records.getBinLength());
                              }},
                    Operation{"StreamInItsBuffer",
                              [] {
                                  zntl::Integer integer;
                                  znvl::Resolution resolution;
                                  records << integer << resolution;
                                  records.peek(integer);
                                  records >> integer >> resolution;
                                  records.skip();
                                  records.defrag();
                                  records.flush();
                                  unsigned char* room;
                                  records.getWriteBuffer(room, 8);
                                  records.finalizeBuffer(room, 0);
                                  records.clear();
                                  records << zntl::Integer(1) << znvl::Resolution(2, 3);
                                  records.close();
                              }},
                    Operation{"EmptyStream",
                              [] {
                                  znsl::MemIOStream empty;
                                  empty.purge();
                                  znsl::MemIOStream const copy(empty);
                                  ASSERT_EQ(copy.toBin(out), 4U);
                              }},
                    Operation{"EmptyArray",
                              [] {
                                  zntl::SmartArray<char> array;
                                  zntl::SmartArray<char> copy(array);
                                  copy = array;
                                  copy.removeReference();
                                  ASSERT_EQ(copy.getReferenceCount(), 0);
                              }},
                    Operation{"PortabilityFunctions",
                              [] {
                                  char copy[8];
                                  zn_strlwr(zn_strcpy(copy, sizeof copy, text.c_str()));
                                  ASSERT_EQ(zn_stricmp("a", "A"), 0);
                                  ASSERT_EQ(zn_atoi64("12"), 12);
                                  zn_tickcount();
                                  zn_get_threadid();
                              }}),
    [](auto const& test) { return test.param.name; });

TEST(SetAllocationFailure, StillKnowsItsLength) {
    unsigned int const expected = resolutions.getBinLength();
    ASSERT_EQ(expected, 4U + 2 * 12U + 3 * 16U);
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        unsigned int length = 99;
        EXPECT_FALSE(run.runsOutOfMemory([&] { length = resolutions.getBinLength(); }));
        EXPECT_EQ(length, expected);
    });
    EXPECT_GT(failures, 0);
}

using Sets = znsl::Set<ResolutionSet>;

/// A set of sets: its elements allocate memory in `toBin`.
Sets const nested{resolutions, {{1, 2}}, {}};

// If the set reported a length that is too small, the address sanitizer would report the write.
TEST(SetAllocationFailure, IsAppendedWholeOrFails) {
    for (znsl::Serializable const* const set :
         {static_cast<znsl::Serializable const*>(&resolutions),
          static_cast<znsl::Serializable const*>(&nested)}) {
        znsl::MemIOStream expected;
        expected << *set;
        long const failures = test::failEachAllocation([&](test::FailingRun& run) {
            znsl::MemIOStream stream;
            bool done = false;
            run.runsOutOfMemory([&] {
                try {
                    stream << *set;
                    done = true;
                } catch (zntl::Exception const&) { // NOLINT(bugprone-empty-catch)
                }
            });
            EXPECT_TRUE(done || run.happened());
            if (done) {
                EXPECT_EQ(test::content(stream), test::content(expected));
            } else {
                EXPECT_LE(stream.size(), 8U);
            }
        });
        EXPECT_GT(failures, 3);
    }
}

TEST(SetAllocationFailure, IsStoredWholeOrNotAtAll) {
    test::TemporaryDirectory const directory;
    std::string const path = directory / "set";
    ASSERT_TRUE(nested.toFile(path.c_str()));
    test::Bytes const expected = test::readFile(path);
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        bool done = false;
        EXPECT_FALSE(run.runsOutOfMemory([&] { done = nested.toFile(path.c_str()); }));
        EXPECT_TRUE(done || run.happened());
        if (done) {
            EXPECT_EQ(test::readFile(path), expected);
        }
    });
    EXPECT_GT(failures, 3);
}

TEST(SetAllocationFailure, OfSetsStillKnowsItsLength) {
    unsigned int const expected = nested.getBinLength();
    long const failures = test::failEachAllocation([&](test::FailingRun& run) {
        unsigned int length = 99;
        EXPECT_FALSE(run.runsOutOfMemory([&] { length = nested.getBinLength(); }));
        EXPECT_EQ(length, expected);
    });
    EXPECT_GT(failures, 3);
}

TEST(SetAllocationFailure, ReportsAnIncompleteSerialization) {
    long const failures = test::failEachAllocation([](test::FailingRun& run) {
        znsl::MemIOStream record;
        bool done = true;
        EXPECT_FALSE(run.runsOutOfMemory([&] { done = resolutions.serialize(record); }));
        EXPECT_EQ(done, !run.happened());
        EXPECT_TRUE(record.validate());
    });
    EXPECT_GT(failures, 0);
}

} // namespace
