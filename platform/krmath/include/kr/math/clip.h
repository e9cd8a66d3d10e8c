// Clamping a number into a range.
#pragma once

#include <kr/math/krmath_export.h>

namespace KR {
namespace Math {

/// Limits `data` to the range [min, max] in place and returns true if and only
/// if it changed `data`.
///
/// The bounds may come in either order: min 1, max -1 clamps to [-1, 1]. A NaN
/// bound leaves that side of the range open, and a NaN `data` is left as it is
/// (and reported unchanged), since it lies neither below nor above any bound.
KRMATH_API bool clipData(const float& min, const float& max, float& data);

}  // namespace Math
}  // namespace KR
