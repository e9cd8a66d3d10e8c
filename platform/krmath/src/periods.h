// Internal period arithmetic on exact durations that cannot overflow the
// fraction's ints. Not installed.
#pragma once

#include <kr/math/rationalseconds.h>

#include <cstdint>

namespace KR {
namespace Math {

/// `count` periods as an exact duration. Throws std::runtime_error when it
/// does not fit the fraction's int numerator.
RationalSeconds wholePeriods(std::uint64_t count, const RationalSeconds& period);

/// The smallest number of periods lasting at least `seconds` (>= 0). Throws
/// std::runtime_error when `seconds` is not finite or the count is absurd.
std::uint64_t periodsCovering(double seconds, const RationalSeconds& period);

/// The same for an exact, non-negative duration.
std::uint64_t periodsCovering(const RationalSeconds& duration, const RationalSeconds& period);

/// a + b, exact. Throws std::runtime_error when the sum does not fit.
RationalSeconds addDurations(const RationalSeconds& a, const RationalSeconds& b);

}  // namespace Math
}  // namespace KR
