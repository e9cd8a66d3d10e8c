// Internal: the fastest speed profile along a chain of spans within a speed
// and an acceleration bound, planned by a forward and a backward pass.
// It knows nothing of paths: a span is a length with its bounds, so the same
// planner times a run along path segments and a turn about an angle. Not
// installed.
#pragma once

#include <cstddef>
#include <vector>

namespace KR {
namespace Math {
namespace Trajectory {

/// A stretch of constant bounds: a path segment (meters) or a turn
/// (radians).
struct SpeedSpan {
  double length = 0.0;     ///< > 0
  double maxSpeed = 0.0;   ///< > 0
  /// |curvature|: the centripetal acceleration curvature * v^2 and the
  /// tangential one share the acceleration bound as a vector; 0 on a line.
  double curvature = 0.0;
  /// A further bound on the tangential acceleration (for a base turning with
  /// the path, the rotation acceleration / curvature); infinite if none.
  double maxTangential = 0.0;
};

/// The motion from one knot to the next has the knot's constant
/// acceleration. Times and positions count from the start of the profile.
struct ProfileKnot {
  double time;
  double position;
  double speed;
  double acceleration;
};

struct ProfileSample {
  double position;
  double speed;
  double acceleration;
};

/// The largest speed the bounds of `span` allow anywhere on it: its own
/// bound, and on a curve a speed that leaves part of the acceleration bound
/// for the tangential acceleration.
double speedBound(const SpeedSpan& span, double acceleration);

/// The fastest profile along `spans` (in order, none empty) starting at
/// `startSpeed` and ending at rest, with |acceleration| (tangential and
/// centripetal combined) <= `acceleration`. Throws std::runtime_error when
/// the start speed is above the first span's bound or too fast to stop
/// within the spans. No span: no knot.
///
/// The profile is piecewise constant in acceleration: speed rises and falls
/// at the largest tangential acceleration left over by the curvature
/// (evaluated conservatively, at the faster end of each small step, so the
/// bound holds between knots too) and cruises at the bounds. A jerk bound
/// would replace these constant-acceleration steps by ramps of acceleration;
/// the spans and the passes over them stay as they are.
std::vector<ProfileKnot> planSpeedProfile(const std::vector<SpeedSpan>& spans,
                                          double acceleration, double startSpeed);

/// How long the profile lasts: its last knot's time (0 for no knot).
double profileDuration(const std::vector<ProfileKnot>& knots);

/// The profile `t` seconds after its start, clamped into [0, duration].
ProfileSample sampleProfile(const std::vector<ProfileKnot>& knots, double t);

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
