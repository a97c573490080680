#pragma once

#include <cmath>

/// Angle constants in double precision. Every source file that includes this header has its own
/// private copy, which compilers compute ahead of time and drop where it is not used.
namespace znml {

static double const PI = std::atan2(0.0, -1.0);
static double const TWO_PI = PI + PI;
static double const RAD_TO_DEG = 180.0 / PI;
static double const DEG_TO_RAD = PI / 180.0;

} // namespace znml

/// The same in single precision: PI rounded from the double value, the others computed from it.
namespace znmlf {

static float const PI = static_cast<float>(znml::PI);
static float const TWO_PI = PI + PI;
static float const RAD_TO_DEG = 180.0F / PI;
static float const DEG_TO_RAD = PI / 180.0F;

} // namespace znmlf
