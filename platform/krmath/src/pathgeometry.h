// Internal helpers of the path sources: poses computed in double along a
// segment and stored as floats without overflow. Not installed.
#pragma once

#include <kr/math/pose2d.h>
#include <kr/math/trajectory/path2d.h>

#include <cfloat>
#include <cmath>

namespace KR {
namespace Math {
namespace Trajectory {

constexpr double kPi = 3.14159265358979323846;

/// A pose computed in double before it is stored as floats.
struct PoseD {
  double x;
  double y;
  double theta;
};

inline bool isFinite(const Pose2D& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.theta);
}

/// `value` as a float, saturated to +-FLT_MAX: a double beyond the float
/// range is not converted to float directly (that conversion is undefined).
inline float saturatedFloat(double value) {
  if (value > static_cast<double>(FLT_MAX)) {
    return FLT_MAX;
  }
  if (value < -static_cast<double>(FLT_MAX)) {
    return -FLT_MAX;
  }
  return static_cast<float>(value);
}

inline Pose2D toPose2D(const PoseD& p) {
  return Pose2D(saturatedFloat(p.x), saturatedFloat(p.y), saturatedFloat(p.theta));
}

/// The direction at `base + d` from the cosine and sine of `base`, for
/// small d: the Taylor series of cos d and sin d to d^11 are exact to
/// double's rounding for |d| <= 0.25 (the integrators of clothoids keep
/// their nodes that close to one heading), and far cheaper than another
/// sincos.
struct Direction {
  double cos;
  double sin;
};

inline Direction turnedBy(const Direction& base, double d) {
  const double d2 = d * d;
  const double c =
      1.0 -
      d2 / 2.0 * (1.0 - d2 / 12.0 * (1.0 - d2 / 30.0 * (1.0 - d2 / 56.0 * (1.0 - d2 / 90.0))));
  const double s =
      d *
      (1.0 -
       d2 / 6.0 * (1.0 - d2 / 20.0 * (1.0 - d2 / 42.0 * (1.0 - d2 / 72.0 * (1.0 - d2 / 110.0)))));
  return {base.cos * c - base.sin * s, base.sin * c + base.cos * s};
}

inline Direction directionOf(double heading) { return {std::cos(heading), std::sin(heading)}; }

/// The pose at arc length `s` along `segment`, not clamped.
PoseD segmentPoseAt(const Segment2D& segment, double s);

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
