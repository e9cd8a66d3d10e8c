// Timed motions in the plane: a path followed over time, with the pose,
// velocity and acceleration at every instant.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/path2d.h>

#include <memory>
#include <vector>

namespace KR {
namespace Math {
namespace Trajectory {

/// A motion that lasts duration() and gives the robot's state at any time
/// since its start. States are in the world frame: velocity and
/// acceleration are the time derivatives of the position (x, y) and of the
/// orientation (theta). Before 0 the state is the start state at rest, after
/// the duration the end state at rest.
class KRMATH_API KRTrajectoryPose2D {
 public:
  virtual ~KRTrajectoryPose2D();

  /// How long the motion lasts: a whole number of the factory's periods.
  virtual RationalSeconds duration() const = 0;
  /// The state `seconds` after the start, clamped into [0, duration].
  virtual Pose2DPosVelAcc stateAt(double seconds) const = 0;

 protected:
  KRTrajectoryPose2D() = default;
  KRTrajectoryPose2D(const KRTrajectoryPose2D&) = delete;
  KRTrajectoryPose2D& operator=(const KRTrajectoryPose2D&) = delete;
};

/// One path followed from rest to rest; this class itself is the
/// non-holonomic motion of a robot that always faces where it drives (a
/// wheeled base that cannot move sideways).
///
/// The path is built at the start state's pose. The motion is split into
/// moves along each segment of the path, each from rest to rest; where the
/// direction of travel jumps (at the start, when the start heading is not
/// the path's, and at every corner) the robot stops and turns on the spot,
/// by the shorter way, before it moves on. Each move and turn is a
/// trapezoidal (or triangular) speed profile, and the whole motion is then
/// slowed down uniformly to fill the duration asked for. So, at every
/// instant:
/// - |velocity (x, y)| <= first limits' velocity and
///   |acceleration (x, y)| <= first limits' acceleration (the whole vector,
///   the centripetal part on arcs included: on an arc of curvature k the
///   tangential acceleration and k v^2 are each held to the limit / sqrt(2));
/// - |velocity theta| <= second limits' velocity and
///   |acceleration theta| <= second limits' acceleration (on an arc the
///   orientation turns at k v, so the speed along it is held to that too);
/// each limit taken times the factory's fraction of limits.
///
/// The state at 0 is the start pose at rest; at the duration it is the
/// path's end pose (heading: the path's last direction of travel) at rest.
/// Headings are not wrapped: the orientation is the path's heading value
/// exactly when no corner of the path (the start included) turns by more
/// than a half turn, which holds for every path PathFactory makes; at a
/// sharper corner of some other path the robot still turns the shorter way,
/// and its orientation then differs from the path's heading value by whole
/// turns from there on.
/// The start state's velocity and acceleration are not used: every motion
/// starts from rest.
class KRMATH_API KRDirectTrajectoryPose2D : public KRTrajectoryPose2D {
 public:
  ~KRDirectTrajectoryPose2D() override;

  RationalSeconds duration() const override;
  Pose2DPosVelAcc stateAt(double seconds) const override;

  /// The path followed, built at the start pose.
  const KRPath2D& path() const;

  /// A piece of the motion (a move along a segment or a turn on the spot),
  /// timed before stretching; defined in the library's private sources.
  struct Phase;

  /// Made by the trajectory factories: follows `path` with the given phases
  /// (in order), slowed down uniformly to last `duration` (never sped up).
  /// Throws std::runtime_error for a null path, a negative duration or a
  /// phase naming a segment the path does not have.
  KRDirectTrajectoryPose2D(std::unique_ptr<KRPath2D> path, std::vector<Phase> phases,
                           const RationalSeconds& duration);

 protected:
  /// The state along the path and the turns, with the orientation of a
  /// non-holonomic robot.
  Pose2DPosVelAcc pathStateAt(double seconds) const;

 private:
  std::unique_ptr<KRPath2D> path_;
  std::vector<Phase> phases_;
  RationalSeconds duration_;
  double stretch_;  // duration / the phases' own total time, at least 1
};

/// A holonomic motion: the robot follows the path (from rest to rest on each
/// segment, without turning on the spot at corners) and, independently,
/// turns from the start orientation by rotation() radians (counter-clockwise
/// positive; more than a half turn is turned as asked, not the shorter
/// way). The translation keeps within the first limits as a vector, the
/// rotation within the second limits; both start at 0 and end at the
/// duration.
class KRMATH_API KRTrajectoryPose2DHolonomic : public KRDirectTrajectoryPose2D {
 public:
  Pose2DPosVelAcc stateAt(double seconds) const override;
  float rotation() const;

  /// Made by the holonomic factory: the rotation is the fastest profile
  /// within the given angular limits, slowed down to last `duration`.
  /// Throws std::runtime_error when the orientation, the rotation or the
  /// limits are not finite, or a limit is not positive.
  KRTrajectoryPose2DHolonomic(std::unique_ptr<KRPath2D> path, std::vector<Phase> phases,
                              const RationalSeconds& duration, float startOrientation,
                              float rotation, double maxAngularVelocity,
                              double maxAngularAcceleration);

 private:
  float startOrientation_;
  float rotation_;
  double maxAngularVelocity_;
  double maxAngularAcceleration_;
  double rotationStretch_;  // duration / the rotation profile's own time, at least 1
};

/// Direct trajectories run one after the other: each starts at rest where
/// the one before ended (its pose, and for a holonomic one its
/// orientation). The duration is the sum of theirs. An empty composed
/// trajectory lasts 0 and stays at its start state, at rest. The constructor
/// throws std::runtime_error for a null piece or when the summed duration
/// does not fit the fraction's ints.
class KRMATH_API KRTrajectoryPose2DComposed : public KRTrajectoryPose2D {
 public:
  KRTrajectoryPose2DComposed(const Pose2DPosVelAcc& start,
                             std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> > pieces);

  RationalSeconds duration() const override;
  Pose2DPosVelAcc stateAt(double seconds) const override;
  const std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> >& pieces() const;

 private:
  Pose2DPosVelAcc start_;
  std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> > pieces_;
  RationalSeconds duration_;
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
