// Comparison of floats within a tolerance.
#pragma once

#include <kr/math/krmath_export.h>

#include <vector>

namespace KR {
namespace Math {

/// True when |a - b| <= epsilon (the bound is inclusive). A NaN on either side
/// is near nothing; equal infinities are near each other.
KRMATH_API bool isNear(const float& a, const float& b, const float& epsilon);

/// True when both lists have the same length and every pair of entries at the
/// same index is near (as above). Lists of different lengths are not near; two
/// empty lists are.
KRMATH_API bool isNear(const std::vector<float>& a, const std::vector<float>& b,
                       const float& epsilon);

}  // namespace Math
}  // namespace KR
