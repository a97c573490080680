// The resolution's order, scaling and names. Another file tests its stored forms.

#include "video/znvl_Resolution.h"

#include "misc/zntl_String.h"
#include "support/failing_allocation.h"
#include "support/print_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

using zntl::String;
using znvl::Resolution;

static_assert(std::is_base_of_v<znsl::Serializable, Resolution>);
static_assert(std::is_same_v<decltype(Resolution::width), zntl::Integer>);
static_assert(std::is_same_v<decltype(Resolution::height), zntl::Integer>);
static_assert(std::is_same_v<decltype(Resolution::name), String>);
static_assert(
    std::is_same_v<decltype(&Resolution::getMax), Resolution (Resolution::*)(Resolution const&)>,
    "getMax is not const");
static_assert(std::is_same_v<std::remove_extent_t<decltype(Resolution::NameStrings)>, char const*>,
              "ordinary writable data");
static_assert(
    std::is_same_v<std::remove_extent_t<decltype(Resolution::ResolutionStrings)>, char const*>,
    "ordinary writable data");

namespace znvl {

void PrintTo(Resolution const& resolution, std::ostream* out) {
    *out << resolution.width.getValue() << 'x' << resolution.height.getValue();
    if (!resolution.name.empty())
        *out << " \"" << resolution.name << '"';
}

} // namespace znvl

namespace {

Resolution named(int width, int height, char const* name) {
    Resolution resolution(width, height);
    resolution.name = name;
    return resolution;
}

/// Returns width, height and name, because operator== ignores the name.
auto fields(Resolution const& resolution) {
    return std::tuple<int, int, std::string>(resolution.width.getValue(),
                                             resolution.height.getValue(), resolution.name);
}

auto fields(int width, int height, char const* name) { return fields(named(width, height, name)); }

int const extremes[] = {INT_MIN, INT_MIN + 1, -2, -1, 0, 1, 2, 320, INT_MAX - 1, INT_MAX};

std::vector<Resolution> gridOf(std::vector<int> const& numbers) {
    std::vector<Resolution> grid;
    for (int const width : numbers) {
        for (int const height : numbers)
            grid.emplace_back(width, height);
    }
    return grid;
}

std::vector<Resolution> const grid =
    gridOf(std::vector<int>(std::begin(extremes), std::end(extremes)));

TEST(Resolution, IsZeroByZeroWithoutANameByDefault) {
    EXPECT_EQ(fields(Resolution()), fields(0, 0, ""));
}

TEST(Resolution, HasTheSizeThatItIsGivenAndNoName) {
    for (int const width : extremes) {
        for (int const height : extremes) {
            Resolution const resolution(width, height);
            EXPECT_EQ(resolution.width.getValue(), width);
            EXPECT_EQ(resolution.height.getValue(), height);
            EXPECT_EQ(resolution.name, "");
        }
    }
}

TEST(Resolution, CopiesCarryTheName) {
    Resolution const original = named(640, 480, "a name that is too long for a short string");
    Resolution const copy(original);
    EXPECT_EQ(fields(copy), fields(original));
    Resolution assigned = named(1, 2, "before");
    EXPECT_EQ(&(assigned = original), &assigned);
    EXPECT_EQ(fields(assigned), fields(original));
    Resolution const moved(Resolution{original});
    EXPECT_EQ(fields(moved), fields(original));
    assigned = named(1, 2, "before");
    assigned = Resolution(original);
    EXPECT_EQ(fields(assigned), fields(original));
}

TEST(Resolution, IsOfType815) { EXPECT_EQ(Resolution().getTypeId(), 815U); }

TEST(Resolution, HasATypeNameWithoutPrefix) { EXPECT_EQ(Resolution().getTypeName(), "Resolution"); }

// Order

TEST(ResolutionOrder, ComparesWidthsFirstAndThenHeights) {
    EXPECT_LT(Resolution(160, 200), Resolution(176, 144));
    EXPECT_LT(Resolution(176, 144), Resolution(176, 150));
    EXPECT_LT(Resolution(-1, 1000), Resolution(0, 0));
    EXPECT_LT(Resolution(0, -1), Resolution(0, 0));
    EXPECT_LT(Resolution(INT_MIN, 0), Resolution(INT_MAX, 0));
    EXPECT_FALSE(Resolution(176, 144) < Resolution(176, 144));
}

TEST(ResolutionOrder, IsTheOneOfSignedPairs) {
    for (Resolution const& a : grid) {
        for (Resolution const& b : grid) {
            std::pair<int, int> const left(a.width.getValue(), a.height.getValue());
            std::pair<int, int> const right(b.width.getValue(), b.height.getValue());
            ASSERT_EQ(a < b, left < right);
            ASSERT_EQ(a == b, left == right);
            ASSERT_EQ(a != b, left != right);
        }
    }
}

TEST(ResolutionOrder, IsAStrictTotalOrder) {
    std::vector<Resolution> const some = gridOf({INT_MIN, -1, 0, 1, INT_MAX});
    for (Resolution const& a : some) {
        ASSERT_FALSE(a < a);
        for (Resolution const& b : some) {
            ASSERT_EQ((a < b) + (b < a) + (a == b), 1);
            for (Resolution const& c : some) {
                if (a < b && b < c) {
                    ASSERT_LT(a, c);
                }
            }
        }
    }
}

TEST(ResolutionOrder, IgnoresTheName) {
    Resolution const a = named(320, 240, "a");
    Resolution const b = named(320, 240, "b");
    EXPECT_EQ(a, b);
    EXPECT_FALSE(a < b);
    EXPECT_FALSE(b < a);
    std::set<Resolution> set{b, a};
    ASSERT_EQ(set.size(), 1U);
    EXPECT_EQ(set.begin()->name, "b") << "the one inserted first";
}

// Maximum

struct Maximum {
    Resolution a;
    Resolution b;
    Resolution maximum;
};

TEST(ResolutionGetMax, TakesTheLargerWidthAndTheLargerHeight) {
    Maximum const rows[] = {
        {{640, 360}, {480, 480}, {640, 480}},
        {{640, 480}, {320, 240}, {640, 480}},
        {{640, 480}, {640, 480}, {640, 480}},
        {{0, 5}, {7, 0}, {7, 5}}, // neither is 0x0
        {{0, 0}, {1920, 1080}, {0, 0}},
        {{0, 0}, {0, 0}, {0, 0}},
        {{0, 0}, {-1, -1}, {0, 0}},
        {{-5, -6}, {-7, -4}, {-5, -4}},
        {{-1, 0}, {0, -1}, {0, 0}},
        {{INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}},
        {{INT_MIN, 1}, {-1, 1}, {-1, 1}},
    };
    for (Maximum const& row : rows) {
        Resolution a = row.a;
        Resolution b = row.b;
        EXPECT_EQ(a.getMax(b), row.maximum);
        EXPECT_EQ(b.getMax(a), row.maximum);
        EXPECT_EQ(a, row.a) << "unchanged";
        EXPECT_EQ(b, row.b) << "unchanged";
    }
}

TEST(ResolutionGetMax, HasNoName) {
    Resolution a = named(640, 480, "a");
    EXPECT_EQ(fields(a.getMax(named(320, 240, "b"))), fields(640, 480, ""));
    EXPECT_EQ(fields(a.getMax(a)), fields(640, 480, ""));
    Resolution none = named(0, 0, "none");
    EXPECT_EQ(fields(none.getMax(a)), fields(0, 0, ""));
    EXPECT_EQ(fields(a.getMax(none)), fields(0, 0, ""));
}

// Scaling

/// Rounds the result of one double operation on floats to float. For one addition, multiplication
/// or division, this equals the float operation. So the compiler cannot fuse operations or use
/// excess precision.
float single(double exact) { return static_cast<float>(exact); }

int roundLiterally(float x) {
    if (x >= 0) {
        if (x >= 2147483648.0F)
            return INT_MAX;
        return static_cast<int>(std::trunc(single(static_cast<double>(x) + 0.5)));
    }
    if (x < 0) {
        if (x <= -2147483648.0F)
            return INT_MIN;
        return static_cast<int>(std::trunc(single(static_cast<double>(x) - 0.5)));
    }
    return 0; // not a number
}

/// Scales as the definition says, step by step.
Resolution scaleLiterally(Resolution const& value, Resolution const& bounds) {
    int const boundsWidth = bounds.width.getValue();
    int const boundsHeight = bounds.height.getValue();
    if (boundsWidth <= 0 || boundsHeight <= 0 || value == bounds)
        return value;
    double const width = single(value.width.getValue());
    double const height = single(value.height.getValue());
    double const aspect = single(width / height);
    double const fitHeight = single(single(boundsWidth) / aspect);
    if (fitHeight > static_cast<double>(single(boundsHeight)))
        return {roundLiterally(single(aspect * static_cast<double>(single(boundsHeight)))),
                boundsHeight};
    return {boundsWidth, roundLiterally(single(fitHeight))};
}

struct Scaling {
    Resolution value;
    Resolution bounds;
    Resolution scaled;
};

TEST(ResolutionScale, FitsTheBoundsWithTheSameAspect) {
    Scaling const rows[] = {
        {{1920, 1080}, {640, 640}, {640, 360}},
        {{1280, 720}, {320, 200}, {320, 180}},
        {{720, 576}, {320, 200}, {250, 200}},
        {{640, 480}, {320, 240}, {320, 240}},
        {{320, 240}, {640, 480}, {640, 480}}, // enlarges, too
        {{1, 1}, {640, 480}, {480, 480}},
        {{352, 288}, {1, 1}, {1, 1}},
        {{1000, 1}, {10, 10}, {10, 0}}, // 0.01 is rounded to 0
        {{1, 1000}, {10, 10}, {0, 10}},
        {{4, 2}, {3, 3}, {3, 2}}, // 1.5: halves are rounded away from zero
        {{2, 4}, {3, 3}, {2, 3}},
        {{4, 2}, {5, 9}, {5, 3}},   // 2.5
        {{4, -2}, {3, 3}, {3, -2}}, // -1.5
        {{4, -2}, {5, 9}, {5, -3}}, // -2.5
        {{-4, 2}, {3, 3}, {3, -2}},
        {{-4, -2}, {3, 3}, {3, 2}},
    };
    for (Scaling const& row : rows) {
        EXPECT_EQ(row.value.scale(row.bounds), row.scaled);
        EXPECT_EQ(scaleLiterally(row.value, row.bounds), row.scaled) << "the row is wrong";
    }
}

TEST(ResolutionScale, ComputesInSinglePrecisionAndRoundsEveryStep) {
    Scaling const rows[] = {
        // In double precision, the height would be larger by 1.
        {{160, 300}, {180, 352}, {180, 337}},
        {{144, 540}, {854, 3840}, {854, 3202}},
        {{144, 540}, {1050, 4096}, {1050, 3937}},
        // A fused multiply-add would return another width.
        {{90316, 42}, {23317624, 5883}, {12650692, 5883}},
        {{68868, 44}, {21379615, 6073}, {9505350, 6073}},
        {{37771, 30}, {36901541, 6852}, {8626896, 6852}},
        {{54547, 10}, {76957755, 6252}, {34102784, 6252}},
        // These numbers have no exact float value.
        {{16777217, 16777216}, {100, 100}, {100, 100}},
        {{1, 1}, {16777217, 16777217}, {16777217, 16777216}},
        {{1, 1}, {INT_MAX, INT_MAX}, {INT_MAX, INT_MAX}},
    };
    for (Scaling const& row : rows) {
        EXPECT_EQ(row.value.scale(row.bounds), row.scaled);
        EXPECT_EQ(scaleLiterally(row.value, row.bounds), row.scaled) << "the row is wrong";
    }
}

TEST(ResolutionScale, SaturatesAt32Bits) {
    Scaling const rows[] = {
        {{1, 1000}, {INT_MAX, INT_MAX}, {2147484, INT_MAX}},
        {{1, -1}, {INT_MAX, 5}, {INT_MAX, INT_MIN}},
        {{-1, 1}, {INT_MAX, 5}, {INT_MAX, INT_MIN}},
        {{1, INT_MIN}, {5, 5}, {5, INT_MIN}},
        {{INT_MAX, 1}, {INT_MAX, INT_MAX}, {INT_MAX, 1}},
        {{INT_MIN, -1}, {INT_MAX, INT_MAX}, {INT_MAX, 1}},
        // The bound of the height determines the size.
        {{INT_MAX, 2}, {INT_MAX, 1}, {1073741824, 1}},
    };
    for (Scaling const& row : rows) {
        EXPECT_EQ(row.value.scale(row.bounds), row.scaled);
        EXPECT_EQ(scaleLiterally(row.value, row.bounds), row.scaled) << "the row is wrong";
    }
}

TEST(ResolutionScale, FollowsTheArithmeticOfInfinities) {
    Scaling const rows[] = {
        {{640, 0}, {320, 200}, {320, 0}},        // the aspect is infinite, so the height is 0
        {{-640, 0}, {320, 200}, {320, 0}},       // the aspect is minus infinity
        {{0, 480}, {320, 200}, {0, 200}},        // the aspect is 0, so the height is infinite
        {{0, -480}, {320, 200}, {320, INT_MIN}}, // the aspect is -0
        {{0, 0}, {320, 200}, {320, 0}},          // the aspect is not a number
    };
    for (Scaling const& row : rows) {
        EXPECT_EQ(row.value.scale(row.bounds), row.scaled);
        EXPECT_EQ(scaleLiterally(row.value, row.bounds), row.scaled) << "the row is wrong";
    }
}

TEST(ResolutionScale, WithoutBoundsIsACopy) {
    Resolution const value = named(640, 480, "VGA");
    for (Resolution const& bounds :
         {Resolution(0, 200), Resolution(320, 0), Resolution(320, -1), Resolution(-1, 200),
          Resolution(0, 0), Resolution(INT_MIN, INT_MAX), Resolution(INT_MAX, INT_MIN)})
        EXPECT_EQ(fields(value.scale(bounds)), fields(value));
}

TEST(ResolutionScale, ToItsOwnSizeIsACopy) {
    Resolution const value = named(640, 480, "VGA");
    EXPECT_EQ(fields(value.scale(named(640, 480, "bounds"))), fields(value));
    EXPECT_EQ(fields(value.scale(value)), fields(value));
}

TEST(ResolutionScale, HasNoNameWhenItWasComputed) {
    Resolution const value = named(640, 480, "VGA");
    EXPECT_EQ(fields(value.scale(named(320, 480, "bounds"))), fields(320, 240, ""));
    EXPECT_EQ(fields(value.scale(named(640, 240, "bounds"))), fields(320, 240, ""));
    EXPECT_EQ(fields(value.scale(named(640, 481, "bounds"))), fields(640, 480, ""))
        << "even if the size has not changed";
}

TEST(ResolutionScale, AgreesWithItsStepsOnAGrid) {
    std::vector<Resolution> const values =
        gridOf({INT_MIN, -65536, -3, 0, 1, 3, 144, 480, 1080, 16777217, INT_MAX});
    std::vector<Resolution> const bounds =
        gridOf({-1, 0, 1, 2, 200, 320, 853, 65537, 33554433, INT_MAX});
    for (Resolution const& value : values) {
        for (Resolution const& bound : bounds) {
            ASSERT_EQ(value.scale(bound), scaleLiterally(value, bound))
                << testing::PrintToString(value) << " into " << testing::PrintToString(bound);
        }
    }
}

TEST(ResolutionScale, AgreesWithItsStepsOnRandomSizes) {
    std::mt19937 random(20240302);
    auto const number = [&] { return static_cast<int>(random() >> (random() % 32)); };
    for (int round = 0; round < 50000; ++round) {
        Resolution const value(number(), number());
        Resolution const bound(number(), number());
        ASSERT_EQ(value.scale(bound), scaleLiterally(value, bound))
            << testing::PrintToString(value) << " into " << testing::PrintToString(bound);
    }
}

// Texts

TEST(ResolutionTables, NameTheCommonSizes) {
    char const* const names[] = {"QCIF", "CIF", "4CIF", "720p", "1080p"};
    char const* const sizes[] = {"176x144", "352x288", "704x576", "1280x720", "1920x1080"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_STREQ(Resolution::NameStrings[i], names[i]);
        EXPECT_STREQ(Resolution::ResolutionStrings[i], sizes[i]);
    }
    EXPECT_EQ(Resolution::NameStrings[5], nullptr);
    EXPECT_EQ(Resolution::ResolutionStrings[5], nullptr);
}

struct Text {
    char const* text;
    Resolution size;
};

TEST(ResolutionFromString, TakesTwoNumbersOrAName) {
    Text const rows[] = {
        {"640x480", {640, 480}},
        {"640 x 480", {640, 480}},
        {"640x 480", {640, 480}},
        {"640 x480", {640, 480}},
        {" \t\n640 \v\f x \r\n 480", {640, 480}},
        {"640x480 and more", {640, 480}},
        {"640x480x24", {640, 480}},
        {"640x480.5", {640, 480}},
        {"0x0", {0, 0}},
        {"-1x5", {-1, 5}},
        {"+1x-5", {1, -5}},
        {"007x010", {7, 10}},
        {"0x10", {0, 10}}, // not a hexadecimal number
        {"2147483647x-2147483648", {INT_MAX, INT_MIN}},
        {"QCIF", {176, 144}},
        {"CIF", {352, 288}},
        {"4CIF", {704, 576}},
        {"720p", {1280, 720}},
        {"1080p", {1920, 1080}},
        {"qcif", {176, 144}},
        {"cIf", {352, 288}},
        {"4cif", {704, 576}},
        {"720P", {1280, 720}},
        {"1080P", {1920, 1080}},
    };
    for (Text const& row : rows) {
        Resolution resolution = named(1, 2, "kept");
        EXPECT_TRUE(resolution.fromString(row.text)) << row.text;
        EXPECT_EQ(resolution, row.size) << row.text;
        EXPECT_EQ(resolution.name, "kept");
    }
}

TEST(ResolutionFromString, OfAnythingElseIsFalseAndChangesNothing) {
    char const* const texts[] = {
        "",
        " ",
        "x",
        "VGA",
        "640",
        "640x",
        "x480",
        "640 480",
        "640X480",
        "640*480",
        "640xx480",
        "640x-",
        "640x+ 1",
        "- 1x5",
        "a1x5",
        "1e3x5",
        "1.5x2",
        "CIF ",
        " CIF",
        "CIFx",
        "4 CIF",
        "720",
        "720 p",
        "1080px",
        "QCI",
        "1 080x20",
        "640\xD7"
        "480",
        "0x",
        "+x+",
        "--1x1",
        nullptr,
    };
    for (char const* const text : texts) {
        Resolution resolution = named(1, 2, "kept");
        EXPECT_FALSE(resolution.fromString(text)) << (text ? text : "null");
        EXPECT_EQ(fields(resolution), fields(1, 2, "kept"));
    }
}

TEST(ResolutionFromString, SaturatesNumbersBeyond32Bits) {
    Text const rows[] = {
        {"2147483648x1", {INT_MAX, 1}},
        {"4294967296x4294967297", {INT_MAX, INT_MAX}},
        {"-2147483649x-4294967296", {INT_MIN, INT_MIN}},
        {"99999999999999999999x-99999999999999999999", {INT_MAX, INT_MIN}},
        {"9223372036854775807x-9223372036854775808", {INT_MAX, INT_MIN}},
    };
    for (Text const& row : rows) {
        Resolution resolution;
        EXPECT_TRUE(resolution.fromString(row.text));
        EXPECT_EQ(resolution, row.size) << row.text;
    }
}

TEST(ResolutionFromString, EndsAtTheFirstNul) {
    Resolution resolution(1, 2);
    EXPECT_FALSE(resolution.fromString(std::string("640\0x480", 8)));
    EXPECT_EQ(resolution, Resolution(1, 2));
    EXPECT_TRUE(resolution.fromString(std::string("640x48\0"
                                                  "0",
                                                  8)));
    EXPECT_EQ(resolution, Resolution(640, 48));
    EXPECT_TRUE(resolution.fromString(std::string("CIF\0...", 7)));
    EXPECT_EQ(resolution, Resolution(352, 288));
}

// The texts are short, so their numbers fit 32 bits.
TEST(ResolutionFromString, AgreesWithScanf) {
    std::string const alphabet = "0159-+xxX \t\n.a";
    std::mt19937 random(20240303);
    unsigned int scanned = 0;
    for (int round = 0; round < 100000; ++round) {
        std::string text;
        for (unsigned int length = static_cast<unsigned int>(random() % 9); length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        int width = 1;
        int height = 2;
        bool const both = std::sscanf(text.c_str(), "%d x %d", &width, &height) == 2;
        Resolution resolution(1, 2);
        ASSERT_EQ(resolution.fromString(text), both) << '"' << text << '"';
        ASSERT_EQ(resolution, both ? Resolution(width, height) : Resolution(1, 2))
            << '"' << text << '"';
        scanned += both;
    }
    EXPECT_GT(scanned, 1000U) << "too few texts are resolutions";
}

TEST(ResolutionToNameString, IsTheNameOrTheNumbers) {
    Text const rows[] = {
        {"QCIF", {176, 144}},
        {"CIF", {352, 288}},
        {"4CIF", {704, 576}},
        {"720p", {1280, 720}},
        {"1080p", {1920, 1080}},
        {"640x480", {640, 480}},
        {"144x176", {144, 176}},
        {"352x289", {352, 289}},
        {"0x0", {0, 0}},
        {"-1x5", {-1, 5}},
        {"-2147483648x2147483647", {INT_MIN, INT_MAX}},
    };
    for (Text const& row : rows)
        EXPECT_EQ(row.size.toNameString(), row.text);
    EXPECT_EQ(named(352, 288, "other").toNameString(), "CIF") << "the member `name` is ignored";
}

TEST(ResolutionToNameString, IsUnderstoodByFromString) {
    for (Resolution const& size : grid) {
        Resolution read(7, 7);
        EXPECT_TRUE(read.fromString(size.toNameString()));
        EXPECT_EQ(read, size);
    }
}

/// Replaces a string of a table while it lives.
class TableEntry {
public:
    TableEntry(char const*& entry, char const* text) : entry_(entry), before_(entry) {
        entry_ = text;
    }
    TableEntry(TableEntry const&) = delete;
    TableEntry& operator=(TableEntry const&) = delete;
    ~TableEntry() { entry_ = before_; }

private:
    char const*& entry_;
    char const* before_;
};

TEST(ResolutionTables, AreWhatTheLookUpsUse) {
    TableEntry const name(Resolution::NameStrings[1], "VGA");
    TableEntry const size(Resolution::ResolutionStrings[1], "640X480");
    EXPECT_EQ(Resolution(640, 480).toNameString(), "VGA") << "letter case is ignored";
    EXPECT_EQ(Resolution(352, 288).toNameString(), "352x288");

    Resolution resolution(1, 2);
    EXPECT_FALSE(resolution.fromString("CIF"));
    EXPECT_FALSE(resolution.fromString("vga")) << "fromString accepts no \"X\" between the numbers";
    EXPECT_EQ(resolution, Resolution(1, 2));

    TableEntry const readable(Resolution::ResolutionStrings[1], "640 x 480");
    EXPECT_TRUE(resolution.fromString("vga"));
    EXPECT_EQ(resolution, Resolution(640, 480));

    TableEntry const alias(Resolution::ResolutionStrings[1], "4cif");
    EXPECT_TRUE(resolution.fromString("vga")) << "an entry may be another name instead of a size";
    EXPECT_EQ(resolution, Resolution(704, 576));
}

TEST(ResolutionTables, MayReferToEachOtherInAChain) {
    TableEntry const cif(Resolution::ResolutionStrings[1], "QCIF");
    TableEntry const four(Resolution::ResolutionStrings[2], "CIF");
    TableEntry const small(Resolution::ResolutionStrings[3], "4CIF");
    TableEntry const large(Resolution::ResolutionStrings[4], "720p");
    Resolution resolution;
    EXPECT_TRUE(resolution.fromString("1080p"));
    EXPECT_EQ(resolution, Resolution(176, 144));
}

TEST(ResolutionTables, MayReferToEachOtherInACircle) {
    TableEntry const self(Resolution::ResolutionStrings[0], "qcif");
    TableEntry const one(Resolution::ResolutionStrings[1], "4CIF");
    TableEntry const other(Resolution::ResolutionStrings[2], "CIF");
    Resolution resolution(1, 2);
    EXPECT_FALSE(resolution.fromString("QCIF"));
    EXPECT_FALSE(resolution.fromString("CIF"));
    EXPECT_EQ(resolution, Resolution(1, 2));
}

TEST(ResolutionTables, TheFirstMatchCounts) {
    TableEntry const name(Resolution::NameStrings[3], "cif");
    TableEntry const size(Resolution::ResolutionStrings[3], "352x288");
    Resolution resolution;
    EXPECT_TRUE(resolution.fromString("cif"));
    EXPECT_EQ(resolution, Resolution(352, 288));
    EXPECT_EQ(resolution.toNameString(), "CIF");
}

TEST(ResolutionTables, AnEntryMatchesAsAWholeOnly) {
    for (char const* const text :
         {"", "6", "640x48", "640x4800", "640y480", "64Xx480", "X40x480"}) {
        TableEntry const size(Resolution::ResolutionStrings[1], text);
        EXPECT_EQ(Resolution(640, 480).toNameString(), "640x480") << text;
    }
}

TEST(ResolutionTables, EndAtTheNullEntry) {
    TableEntry const end(Resolution::NameStrings[2], nullptr);
    TableEntry const endOfSizes(Resolution::ResolutionStrings[2], nullptr);
    Resolution resolution(1, 2);
    EXPECT_TRUE(resolution.fromString("CIF"));
    EXPECT_FALSE(resolution.fromString("720p"));
    EXPECT_EQ(Resolution(1280, 720).toNameString(), "1280x720");
}

TEST(ResolutionTables, ANullNameIsTheEmptyName) {
    TableEntry const none(Resolution::NameStrings[1], nullptr);
    EXPECT_EQ(Resolution(352, 288).toNameString(), "");
    EXPECT_EQ(Resolution(704, 576).toNameString(), "4CIF");
    EXPECT_EQ(Resolution(353, 288).toNameString(), "353x288");
}

// Allocation failure

TEST(Resolution, CopiesLeaveTheTargetOnAllocationFailure) {
    String const longName(std::string(100, 'n'));
    Resolution source(640, 480);
    source.name = longName;
    EXPECT_GT(test::failEachAllocationOf([&] { Resolution{source}; }), 0);
    EXPECT_GT(test::failEachAllocationOf([&] { source.scale(Resolution(0, 0)); }), 0);
    EXPECT_EQ(test::failEachAllocationOf([&] { source.scale(Resolution(1, 1)); }), 0);
}

TEST(Resolution, DoesNotAllocateForTheTextsOfCommonSizes) {
    String const text("1080p");
    EXPECT_EQ(test::failEachAllocationOf([&] {
                  Resolution resolution;
                  resolution.fromString(text);
                  resolution.toNameString();
              }),
              0);
}

} // namespace
