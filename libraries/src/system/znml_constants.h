#pragma once

#include <cmath>

/// Angle constants in double precision. Every source file that includes this header has its own
/// private copy. Compilers compute it at compile time and drop unused copies.
namespace znml {

static double const PI = std::atan2(0.0, -1.0); ///< half a turn in radians
static double const TWO_PI = PI + PI;           ///< a whole turn in radians
static double const RAD_TO_DEG = 180.0 / PI;    ///< degrees per radian
static double const DEG_TO_RAD = PI / 180.0;    ///< radians per degree

} // namespace znml

/// The same constants in single precision: PI is the rounded double value, and the others are
/// computed from it.
namespace znmlf {

static float const PI = static_cast<float>(znml::PI); ///< half a turn in radians
static float const TWO_PI = PI + PI;                  ///< a whole turn in radians
static float const RAD_TO_DEG = 180.0F / PI;          ///< degrees per radian
static float const DEG_TO_RAD = PI / 180.0F;          ///< radians per degree

} // namespace znmlf
