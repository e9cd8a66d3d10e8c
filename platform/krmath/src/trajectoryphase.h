// Internal: the phases a direct trajectory is made of. Not installed.
#pragma once

#include <kr/math/trajectory/trajectorypose2d.h>

#include "speedprofile.h"

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace KR {
namespace Math {
namespace Trajectory {

/// One piece of a direct trajectory, timed in the profile's own clock
/// (before any uniform stretch to the trajectory's duration): a run along
/// the path between two stops, or a turn on the spot at a corner.
struct KRDirectTrajectoryPose2D::Phase {
  enum class Kind { Move, Turn };

  Kind kind = Kind::Move;
  /// Move: the first path segment of the run. Turn: the segment about to be
  /// travelled; the robot turns on the spot at its start point.
  std::size_t segment = 0;
  /// Move: the number of segments of the run.
  std::size_t segmentCount = 0;
  /// Move: the path's arc length where the run starts.
  double startArc = 0.0;
  /// Move: whole turns added to the path's heading to get the orientation
  /// (0 unless a corner of more than a half turn was turned the shorter way).
  double headingOffset = 0.0;
  /// Turn: the orientation at its start, and the signed angle turned.
  double fromHeading = 0.0;
  double turn = 0.0;
  /// Move: the run's spans of constant bounds, in order: where each starts
  /// (arc length from startArc) and the speed bound along it. A segment is
  /// one span, or several where a curvature jump's zone caps the speed.
  std::vector<double> spanStarts;
  std::vector<double> speedBounds;
  /// Own time at which the phase starts.
  double startTime = 0.0;
  /// Move: the speed along the path from startArc. Turn: the angle turned.
  std::vector<ProfileKnot> profile;

  double duration() const { return profileDuration(profile); }
};

/// The phases' own total time: where the last one ends, 0 for none.
inline double ownTimeOf(const std::vector<KRDirectTrajectoryPose2D::Phase>& phases) {
  if (phases.empty()) {
    return 0.0;
  }
  return phases.back().startTime + phases.back().duration();
}

/// Throws std::runtime_error when `duration` is negative: the factories
/// check the duration asked for, the trajectories the one they are given.
inline void requireNonNegative(const RationalSeconds& duration) {
  if (duration.count() < 0) {
    throw std::runtime_error("A trajectory's duration must not be negative.");
  }
}

/// The fastest turn by `angle` (signed) starting at the turning rate
/// `startRate` (signed) and ending at rest, within the rate and
/// acceleration bounds. Throws std::runtime_error when the start rate turns
/// against `angle`, exceeds the rate bound or cannot stop within `angle`.
std::vector<ProfileKnot> planTurn(double angle, double startRate, double maxRate,
                                  double maxAcceleration);

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
