// A pose with the time at which it holds.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/pose2d.h>

#include <iosfwd>

namespace KR {
namespace Math {

/// `time` in seconds; a negative time (-1.0 by convention) marks a pose
/// given without a time.
struct KRMATH_API Pose2DAndTime {
  Pose2D pose;
  float time;

  /// Pose2DAndTime(Pose2D(), 0.0f).
  Pose2DAndTime() : pose(), time(0.0f) {}
  Pose2DAndTime(Pose2D pose, float time) : pose(pose), time(time) {}
};

static_assert(sizeof(Pose2DAndTime) == 4 * sizeof(float), "Pose2DAndTime is four floats");

/// Exact comparison of every field.
KRMATH_API bool operator==(const Pose2DAndTime& a, const Pose2DAndTime& b);
KRMATH_API bool operator!=(const Pose2DAndTime& a, const Pose2DAndTime& b);

/// Writes "Pose2DAndTime(Pose2D(x=1, y=2, theta=3), time=4)".
KRMATH_API std::ostream& operator<<(std::ostream& out, const Pose2DAndTime& p);

}  // namespace Math
}  // namespace KR
