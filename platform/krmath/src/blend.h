// Internal: the path a trajectory drives when a blend tolerance is set.
// Not installed.
#pragma once

#include <kr/math/trajectory/path2d.h>

#include <vector>

namespace KR {
namespace Math {
namespace Trajectory {

/// The segments of `described` (a chain of lines and arcs) with each joint
/// where the curvature jumps or the direction turns a corner replaced, where
/// it can be, by a transition of eight clothoids: from a point of the
/// segment before the joint to one of the segment after it, with the
/// curvature continuous and piecewise linear in arc length, ending exactly
/// on the pose and curvature of the described segment it rejoins. Every
/// point of a transition lies within `tolerance` (meters, > 0) of the two
/// described segments it replaces; a transition takes at most half of
/// either one, so neighbouring transitions never overlap. A joint whose
/// transition cannot keep the tolerance (a corner near a half turn, pieces
/// too short for float coordinates) is left as it is.
///
/// A corner is blended only when driving through it is estimated to be
/// quicker than stopping there (and, for a base turning with the path,
/// turning on the spot): a tight tolerance gives a transition so sharp that
/// crawling through it would take longer. The estimate uses `limits`.
struct BlendLimits {
  double speed;
  double acceleration;
  double angularSpeed;
  double angularAcceleration;
  bool turnsWithPath;
  /// On a clothoid, the share of the angular acceleration the change of
  /// curvature may take at speed (c v^2 <= share * angularAcceleration).
  double sharpnessShare;
};

std::vector<Segment2D> blendedSegments(const std::vector<Segment2D>& described, double tolerance,
                                       const BlendLimits& limits);

/// A path made of given segments: the path a trajectory drives, as opposed
/// to the one described to it.
class DrivenPath2D : public KRPath2D {
 public:
  DrivenPath2D(const Pose2D& start, std::vector<Segment2D> segments);
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
