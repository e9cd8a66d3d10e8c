// The state of a planar motion: pose, velocity and acceleration.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/pose2d.h>

#include <iosfwd>

namespace KR {
namespace Math {

/// Each part is (x, y, theta): the pose in meters and radians, its first
/// derivative (m/s, rad/s) and its second (m/s^2, rad/s^2). Defaults to all
/// zeros: at rest at the origin.
struct KRMATH_API Pose2DPosVelAcc {
  Pose2D position;
  Pose2D velocity;
  Pose2D acceleration;

  Pose2DPosVelAcc() = default;
  Pose2DPosVelAcc(const Pose2D& position, const Pose2D& velocity, const Pose2D& acceleration)
      : position(position), velocity(velocity), acceleration(acceleration) {}
};

static_assert(sizeof(Pose2DPosVelAcc) == 9 * sizeof(float), "Pose2DPosVelAcc is nine floats");

/// Exact comparison of every field.
KRMATH_API bool operator==(const Pose2DPosVelAcc& a, const Pose2DPosVelAcc& b);
KRMATH_API bool operator!=(const Pose2DPosVelAcc& a, const Pose2DPosVelAcc& b);

/// Writes "Pose2DPosVelAcc(position=Pose2D(x=1, y=2, theta=3),
/// velocity=Pose2D(x=0, y=0, theta=0), acceleration=Pose2D(x=0, y=0, theta=0))"
/// on one line, each part as its Pose2D is written.
KRMATH_API std::ostream& operator<<(std::ostream& out, const Pose2DPosVelAcc& p);

}  // namespace Math
}  // namespace KR
