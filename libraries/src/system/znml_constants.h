#pragma once

#include <cmath>

/// Angle constants in double precision. Every source file that includes this header has its own
/// private copy. Compilers compute it at compile time and drop unused copies.
namespace znml {

static double const PI = std::atan2(0.0, -1.0); ///< half a turn
static double const TWO_PI = PI + PI;           ///< a whole turn
static double const RAD_TO_DEG = 180.0 / PI;    ///< times radians: degrees
static double const DEG_TO_RAD = PI / 180.0;    ///< times degrees: radians

} // namespace znml

/// The same in single precision: PI rounded from the double value, the others computed from it.
namespace znmlf {

static float const PI = static_cast<float>(znml::PI); ///< half a turn
static float const TWO_PI = PI + PI;                  ///< a whole turn
static float const RAD_TO_DEG = 180.0F / PI;          ///< times radians: degrees
static float const DEG_TO_RAD = PI / 180.0F;          ///< times degrees: radians

} // namespace znmlf
