// Durations as an exact number of seconds, and their conversion from a float.
#pragma once

#include <kr/math/krmath_export.h>

#include <boost/chrono/duration.hpp>
#include <boost/rational.hpp>

namespace KR {
namespace Math {

/// Seconds as an exact fraction. Trajectories are run by a controller that
/// ticks once per period, so their durations are whole numbers of periods and
/// are kept exact in this type.
typedef boost::chrono::duration<boost::rational<int>, boost::ratio<1, 1> > RationalSeconds;

/// `seconds` rounded to the nearest whole number of `period`s (half a period
/// rounds away from zero), as an exact fraction: 0.1 s with a period of 1/100 s
/// gives exactly 1/10 s, 0.013 s gives 1/100 s. Negative seconds give a
/// negative duration. Throws std::runtime_error when `period` is not positive,
/// when `seconds` is not finite, or when the result does not fit the fraction's
/// int numerator.
KRMATH_API RationalSeconds rationalSecondsFromFloat(float seconds, const RationalSeconds& period);

/// The duration as a double number of seconds.
KRMATH_API double toSeconds(const RationalSeconds& duration);

}  // namespace Math
}  // namespace KR
