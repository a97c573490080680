#include "system/znml_constants.h"

#include "znml_constants_second.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

static_assert(std::is_same_v<decltype(znml::PI), double const>);
static_assert(std::is_same_v<decltype(znml::TWO_PI), double const>);
static_assert(std::is_same_v<decltype(znml::RAD_TO_DEG), double const>);
static_assert(std::is_same_v<decltype(znml::DEG_TO_RAD), double const>);
static_assert(std::is_same_v<decltype(znmlf::PI), float const>);
static_assert(std::is_same_v<decltype(znmlf::TWO_PI), float const>);
static_assert(std::is_same_v<decltype(znmlf::RAD_TO_DEG), float const>);
static_assert(std::is_same_v<decltype(znmlf::DEG_TO_RAD), float const>);

namespace {

std::uint64_t bits(double number) {
    std::uint64_t pattern;
    std::memcpy(&pattern, &number, sizeof pattern);
    return pattern;
}

std::uint32_t bits(float number) {
    std::uint32_t pattern;
    std::memcpy(&pattern, &number, sizeof pattern);
    return pattern;
}

TEST(AngleConstants, InDoublePrecision) {
    EXPECT_EQ(bits(znml::PI), 0x400921FB54442D18U);
    EXPECT_EQ(bits(znml::TWO_PI), 0x401921FB54442D18U);
    EXPECT_EQ(bits(znml::RAD_TO_DEG), 0x404CA5DC1A63C1F8U);
    EXPECT_EQ(bits(znml::DEG_TO_RAD), 0x3F91DF46A2529D39U);
}

TEST(AngleConstants, InSinglePrecision) {
    EXPECT_EQ(bits(znmlf::PI), 0x40490FDBU);
    EXPECT_EQ(bits(znmlf::TWO_PI), 0x40C90FDBU);
    EXPECT_EQ(bits(znmlf::RAD_TO_DEG), 0x42652EE0U);
    EXPECT_EQ(bits(znmlf::DEG_TO_RAD), 0x3C8EFA35U);
}

TEST(AngleConstants, AreComputedFromTheArcTangent) {
    double volatile zero = 0.0;
    double volatile minusOne = -1.0;
    double const pi = std::atan2(zero, minusOne);
    EXPECT_EQ(bits(znml::PI), bits(pi));
    EXPECT_EQ(bits(znml::RAD_TO_DEG), bits(180.0 / pi));
    EXPECT_EQ(bits(znml::DEG_TO_RAD), bits(pi / 180.0));

    float volatile const floatPi = static_cast<float>(pi);
    float volatile const radToDeg = 180.0F / floatPi;
    float volatile const degToRad = floatPi / 180.0F;
    EXPECT_EQ(bits(znmlf::PI), bits(static_cast<float>(floatPi)));
    EXPECT_EQ(bits(znmlf::RAD_TO_DEG), bits(static_cast<float>(radToDeg)))
        << "in float arithmetic, not rounded from the double value";
    EXPECT_EQ(bits(znmlf::DEG_TO_RAD), bits(static_cast<float>(degToRad)));
}

TEST(AngleConstants, ArePrivateToEachSourceFile) {
    EXPECT_NE(&znml::PI, addressOfSecondPi());
    EXPECT_NE(&znmlf::PI, addressOfSecondFloatPi());
    EXPECT_EQ(bits(znml::PI), bits(*addressOfSecondPi()));
    EXPECT_EQ(bits(znmlf::PI), bits(*addressOfSecondFloatPi()));
}

} // namespace
