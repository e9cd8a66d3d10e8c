// Automatic Bezier keys from bare values.
#pragma once

#include <kr/math/interpolationkey.h>
#include <kr/math/krmath_export.h>

#include <utility>
#include <vector>

namespace KR {
namespace Math {

/// Appends to `keys` one (time, key) pair per entry of `times`, in order: the
/// key holds values[i] and both sides are BEZIER_AUTO with handles computed
/// so that the curve through the keys is smooth and never overshoots:
///  - the slope at a key is 0 at the first and the last key (the motion starts
///    and ends at rest) and at a local extremum or a plateau (where the
///    neighbouring secants differ in sign or one is zero);
///  - elsewhere it is the harmonic mean of the two neighbouring secant
///    slopes, which keeps a monotonic sequence monotonic;
///  - the incoming handle is (-(t[i] - t[i-1]) / 3, -slope * (t[i] - t[i-1]) / 3)
///    and the outgoing one ((t[i+1] - t[i]) / 3, slope * (t[i+1] - t[i]) / 3);
///    the first key's incoming and the last key's outgoing handles are (0, 0).
/// Throws std::runtime_error, leaving `keys` unchanged, when the two lists
/// differ in length or the times are not finite and strictly increasing.
/// Empty lists append nothing.
KRMATH_API void computeBezierAutoKey(const std::vector<float>& times,
                                     const std::vector<float>& values,
                                     std::vector<std::pair<float, Interpolation::Key>>& keys);

}  // namespace Math
}  // namespace KR
