// Geometry records. Values are positional arrays; each number is read with
// extractFloat under the field name given ("x", "y", "theta", ...). Fields are
// written in order as they are read, so a failure at element k leaves the
// fields before k overwritten; a failure of the shape test leaves `out`
// untouched.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dandtime.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>
#include <kr/math/position6d.h>
#include <kr/math/transform.h>

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {

/// [x, y], or [[x, y, ...]] nested once. Shape failures: those of
/// checkArrayFromKRValue, then "KRMotion: <name> Position2D is not valid. It
/// has to be [x, y]." (a size of 3 or more, a size of 2 whose element 0 is not
/// a number, a size of 1 whose element is not an array).
KRVALUEUTILS_API void extractPosition2DFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   KR::Math::Position2D& out);

/// [x, y, theta, ...]; elements from index 3 on are ignored. Anything that is
/// not an array of at least three elements fails with "KRMotion: <name>
/// Pose2D is not valid. It has to be [x, y, theta]."
KRVALUEUTILS_API void extractPose2DFromKRValue(const KR::KRValue& value, const std::string& name,
                                               KR::Math::Pose2D& out);

/// [x, y, theta] (time -1.0, the mark of an absent time) or
/// [x, y, theta, time, ...]; the pose is read as extractPose2DFromKRValue.
KRVALUEUTILS_API void extractPose2DAndTimeFromKRValue(const KR::KRValue& value,
                                                      const std::string& name,
                                                      KR::Math::Pose2DAndTime& out);

/// Exactly [x, y, z]; else "KRMotion: <name> Expected an KRValue with 3 floats
/// for x, y, z."
KRVALUEUTILS_API void extractPosition3DFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   KR::Math::Position3D& out);

/// Exactly [x, y, z, wx, wy, wz]; else "KRMotion: <name> Expected an KRValue
/// with 6 floats for x, y, z, wx, wy, wz."
KRVALUEUTILS_API void extractPosition6DFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   KR::Math::Position6D& out);

/// Exactly six floats; else "KRMotion: <name> Expected an vector with 6 floats
/// for x, y, z, wx, wy, wz."
KRVALUEUTILS_API void extractPosition6DFromVector(const std::vector<float>& values,
                                                  const std::string& name,
                                                  KR::Math::Position6D& out);

/// 12 or 16 numbers, row by row (r1_c1 ... r3_c4; a fourth row is neither read
/// nor checked); else "KRMotion: <name> Expected an KRValue with 12 or 16
/// floats." A matrix that is a transform within 0.001 is kept as read; one
/// within 0.01 is repaired with normalizeTransform() and reported by one line
/// written to std::cerr (standard error, not the log, so it is printed even
/// with no log handler subscribed), "KRMotion: <name> It is not exactly a
/// transform." and a line feed;
/// anything else fails with "KRMotion: <name> Wrong Transform given." after
/// all twelve fields have been written.
KRVALUEUTILS_API void extractTransformFromKRValue(const KR::KRValue& value,
                                                  const std::string& name,
                                                  KR::Math::Transform& out);

}  // namespace ValueUtils
}  // namespace KR
