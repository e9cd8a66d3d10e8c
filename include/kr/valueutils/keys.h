// Interpolation keys and control points read from values.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/interpolationkey.h>

#include <string>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {

/// [value, [type, x, y], [type, x, y]]: value and offsets ints or floats, the
/// types ints. A type outside 0..3 becomes 3 (BEZIER_AUTO), with the warning
/// "angleInterpolationBezier received an unexpected interpolation type. Forced
/// to BEZIER_AUTO." logged once per such side. Nothing is written to `key`
/// before every check has passed.
KRVALUEUTILS_API void extractKeyFromKRValue(const KR::KRValue& value, const std::string& name,
                                            KR::Math::Interpolation::Key& key);

/// Control points paired with `times` by index, appended to `keys`: either all
/// bare numbers (keys computed by KR::Math::computeBezierAutoKey) or all full
/// keys (read by extractKeyFromKRValue). Points whose time is earlier than
/// `minTime` are dropped; returns whether any was. A value that is not an
/// array as long as `times` returns false and leaves `keys` untouched.
KRVALUEUTILS_API bool extractVectorOfGenericControlPoints(
    const std::vector<float>& times, const KR::KRValue& value, const std::string& name,
    const float& minTime, std::vector<std::pair<float, KR::Math::Interpolation::Key>>& keys);

}  // namespace ValueUtils
}  // namespace KR
