// Internal pieces shared by the path and trajectory sources: double-precision
// poses along segments, period arithmetic that cannot overflow, and the
// rest-to-rest speed profile the trajectories are made of. Not installed.
#pragma once

#include <kr/math/pose2d.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/path2d.h>
#include <kr/math/trajectory/trajectorypose2d.h>

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>

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

/// The pose at arc length `s` along `segment`, not clamped.
PoseD segmentPoseAt(const Segment2D& segment, double s);

/// `count` periods as an exact duration. Throws std::runtime_error when it
/// does not fit the fraction's int numerator.
RationalSeconds wholePeriods(std::uint64_t count, const RationalSeconds& period);

/// The smallest number of periods lasting at least `seconds` (>= 0). Throws
/// std::runtime_error when `seconds` is not finite or the count is absurd.
std::uint64_t periodsCovering(double seconds, const RationalSeconds& period);

/// The same for an exact, non-negative duration.
std::uint64_t periodsCovering(const RationalSeconds& duration, const RationalSeconds& period);

/// a + b, exact. Throws std::runtime_error when the sum does not fit.
RationalSeconds addDurations(const RationalSeconds& a, const RationalSeconds& b);

/// Rest-to-rest motion over `distance` (>= 0): constant acceleration up to
/// the peak speed, an optional cruise at it, then the mirror deceleration.
/// A triangular profile has no cruise and peaks below the speed limit.
struct Profile {
  double distance = 0.0;
  double acceleration = 0.0;
  double peakSpeed = 0.0;
  double rampTime = 0.0;    // to reach the peak speed, and again to stop
  double cruiseTime = 0.0;  // at the peak speed

  double duration() const { return 2.0 * rampTime + cruiseTime; }
};

struct ProfileSample {
  double position;
  double speed;
  double acceleration;
};

/// The fastest profile over `distance` within the speed and acceleration
/// limits (both positive and finite).
Profile makeProfile(double distance, double maxSpeed, double maxAcceleration);

/// The profile `t` seconds after its start, t clamped into [0, duration].
ProfileSample sampleProfile(const Profile& profile, double t);

/// One piece of a direct trajectory, timed in the profile's own clock
/// (before the uniform stretch to the trajectory's duration).
struct KRDirectTrajectoryPose2D::Phase {
  enum class Kind { Move, Turn };

  Kind kind = Kind::Move;
  /// Move: the path segment travelled. Turn: the segment about to be
  /// travelled; the robot turns on the spot at its start point.
  std::size_t segment = 0;
  /// Move: whole turns added to the path's heading to get the orientation
  /// (0 unless a corner of more than a half turn was turned the shorter way).
  double headingOffset = 0.0;
  /// Turn: the orientation at its start, and the signed angle turned.
  double fromHeading = 0.0;
  double turn = 0.0;
  /// Own time at which the phase starts.
  double startTime = 0.0;
  Profile profile;
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
