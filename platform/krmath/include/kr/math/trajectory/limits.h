// Bounds on how fast a trajectory may move.
#pragma once

#include <kr/math/krmath_export.h>

namespace KR {
namespace Math {
namespace Trajectory {

/// The largest speed and the largest acceleration allowed, both as
/// magnitudes: m/s and m/s^2 for a translation, rad/s and rad/s^2 for a
/// rotation. A trajectory factory requires both finite and positive.
struct KRMATH_API Limits {
  float maxVelocity;
  float maxAcceleration;

  Limits(float maxVelocity, float maxAcceleration)
      : maxVelocity(maxVelocity), maxAcceleration(maxAcceleration) {}
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
