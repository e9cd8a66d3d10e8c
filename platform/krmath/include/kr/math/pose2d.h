// A position and a heading in the plane.
#pragma once

#include <kr/math/krmath_export.h>

#include <iosfwd>

namespace KR {
namespace Math {

/// x and y in meters, theta in radians counter-clockwise from the x axis;
/// defaults to the origin facing along x.
struct KRMATH_API Pose2D {
  float x;
  float y;
  float theta;

  Pose2D() : x(0.0f), y(0.0f), theta(0.0f) {}
  Pose2D(float x, float y, float theta) : x(x), y(y), theta(theta) {}
};

static_assert(sizeof(Pose2D) == 3 * sizeof(float), "Pose2D is three floats");

/// Exact comparison of every field.
KRMATH_API bool operator==(const Pose2D& a, const Pose2D& b);
KRMATH_API bool operator!=(const Pose2D& a, const Pose2D& b);

/// Writes "Pose2D(x=1, y=2, theta=0.5)".
KRMATH_API std::ostream& operator<<(std::ostream& out, const Pose2D& p);

}  // namespace Math
}  // namespace KR
