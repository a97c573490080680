// Contract: the sizes of objects do not change, because programs compiled earlier contain them.

#include "misc/zntl_Countdown.h"
#include "misc/zntl_Exception.h"
#include "misc/zntl_Integer.h"
#include "misc/zntl_SmartArray.h"
#include "misc/zntl_String.h"
#include "streams/znsl_EndOfFile.h"
#include "streams/znsl_MemIOStream.h"
#include "streams/znsl_Members.h"
#include "streams/znsl_Set.h"
#include "system/znst_Wait.h"
#include "video/znvl_Resolution.h"
#include "xml/znxml_DomIterator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>

namespace {

struct Size {
    char const* object;
    std::size_t size;
    std::size_t with32BitPointers;
    std::size_t with64BitPointers;
};

void PrintTo(Size const& row, std::ostream* out) { *out << row.object; }

class Sizes : public testing::TestWithParam<Size> {};

TEST_P(Sizes, IsUnchanged) {
    auto const& row = GetParam();
    EXPECT_EQ(row.size, sizeof(void*) == 4 ? row.with32BitPointers : row.with64BitPointers);
}

INSTANTIATE_TEST_SUITE_P(Objects, Sizes,
                         testing::Values(Size{"Countdown", sizeof(zntl::Countdown), 4, 8},
                                         Size{"Exception", sizeof(zntl::Exception), 28, 40},
                                         Size{"Integer", sizeof(zntl::Integer), 8, 16},
                                         Size{"SmartArray", sizeof(zntl::SmartArray<char>), 16, 32},
                                         Size{"String", sizeof(zntl::String), 28, 40},
                                         Size{"EndOfFile", sizeof(znsl::EndOfFile), 4, 8},
                                         Size{"MemIOStream", sizeof(znsl::MemIOStream), 28, 48},
                                         Size{"Members", sizeof(znsl::Members), 36, 72},
                                         Size{"Set", sizeof(znsl::Set<znvl::Resolution>), 28, 56},
                                         Size{"WaitObject", sizeof(znst::WaitObject), 4, 8},
                                         Size{"Resolution", sizeof(znvl::Resolution), 48, 80},
                                         Size{"DomIterator", sizeof(znxml::DomIterator), 32, 48}));

} // namespace
