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

class HolonomicTrajectoryFactory;
class NonHolonomicTrajectoryFactory;

/// What the constructors of the direct trajectories ask for, so that only the
/// trajectory factories make them: a trajectory is made of phases the
/// factory planned within its limits, which no caller can plan or check.
class TrajectoryFactoryKey {
  friend class HolonomicTrajectoryFactory;
  friend class NonHolonomicTrajectoryFactory;
  // User-provided, so that the key is not an aggregate that `{}` could make.
  TrajectoryFactoryKey() {}
};

/// A motion that lasts duration() and gives the robot's state at any time
/// since its start. States are in the world frame: velocity and
/// acceleration are the time derivatives of the position (x, y) and of the
/// orientation (theta). At and before 0 the state is the start pose moving
/// with the start velocity, with no acceleration; after the duration it is
/// the end pose at rest.
class KRMATH_API KRTrajectoryPose2D {
 public:
  virtual ~KRTrajectoryPose2D();

  /// How long the motion lasts: a whole number of the factory's periods.
  virtual RationalSeconds duration() const = 0;
  /// The shortest duration the limits allow for this motion, in whole
  /// periods: duration() is longer when a longer one was asked for.
  virtual RationalSeconds minimumDuration() const = 0;
  /// The state `seconds` after the start, clamped into [0, duration].
  virtual Pose2DPosVelAcc stateAt(double seconds) const = 0;
  /// The largest translation speed the limits allow where the robot is
  /// `seconds` after the start: the first limits' speed, lowered on an arc
  /// by the centripetal acceleration (and, facing along the path, by the
  /// turning rate). 0 while it turns on the spot, before the start when it
  /// starts with such a turn, and after the end. The speed stays at or
  /// below it, and lower where it speeds up or brakes for a stop.
  virtual double speedBoundAt(double seconds) const = 0;

 protected:
  KRTrajectoryPose2D() = default;
  KRTrajectoryPose2D(const KRTrajectoryPose2D&) = delete;
  KRTrajectoryPose2D& operator=(const KRTrajectoryPose2D&) = delete;
};

/// One path followed with a single speed profile along it; this class
/// itself is the non-holonomic motion of a robot that always faces where it
/// drives (a wheeled base that cannot move sideways).
///
/// The path is built at the start state's pose. The robot drives through
/// joints without stopping and comes to rest only at a corner of the path
/// driven, where the direction of travel jumps by more than 1e-4 rad (plus
/// the float rounding of large heading values), and at the end; a corner a
/// blend replaced by a transition is no longer one. A smaller jump is driven
/// through, the velocity turning by that angle at once. At a corner (and at
/// the start, when the start heading is not the path's) the robot stops and
/// turns on the spot, by the shorter way, before it moves on. Between stops
/// the speed profile is the fastest one within the limits: a forward and a
/// backward pass over the speed bounds along the path, accelerating and
/// braking as hard as allowed and cruising at the bounds. At every instant,
/// each limit taken times the factory's fraction of limits:
/// - |velocity (x, y)| <= first limits' velocity, and on an arc of curvature
///   k the centripetal acceleration k v^2 takes at most 99 % of the first
///   limits' acceleration;
/// - |acceleration (x, y)|, tangential and centripetal together, <= first
///   limits' acceleration;
/// - |velocity theta| = |k v| <= second limits' velocity and, on an arc,
///   |acceleration theta| = |k a| <= second limits' acceleration; turns on
///   the spot keep both rotation limits.
/// - The rotation acceleration holds as a controller ticking at the
///   factory's period T sees it: |w(t + T) - w(t)| <= second limits'
///   acceleration * T for every t. Where the path's curvature jumps by dk
///   (a line meeting an arc, arcs of other radii or turning the other way),
///   the turning rate k v jumps with it, since the robot follows the path
///   exactly. So for T of travel on each side of such a joint the speed is
///   at most alpha T / (2 D) (alpha the rotation acceleration limit, D the
///   sum of the jumps within one period's travel at full speed, dk alone
///   unless pieces are that short) and the tangential acceleration at most
///   alpha / (2 max |k|) over that stretch: half a period's worth of
///   rotation acceleration for the jumps, half for the change of speed.
///   With T = 10 ms, alpha = 1 rad/s^2 and a line meeting an arc of radius
///   1 m, that is 5 mm/s: the robot all but stops there.
///   The translation velocity stays continuous at the joint.
/// - With a blend tolerance (TrajectoryFactory::setBlendTolerance) the path
///   driven, path(), replaces such joints and corners by clothoids, whose
///   curvature k changes at a constant sharpness c along each: there the
///   rotation acceleration is c v^2 + k a, and c v^2 takes at most 80 % of
///   the second limits' acceleration and k a the rest. The curvature is then
///   continuous, so nothing jumps and the robot keeps its speed as far as
///   these bounds allow; describedPath() is the path as given.
///
/// Start state. The motion starts with the start state's velocity (x, y)
/// when that is feasible: along the start orientation and the path's first
/// direction (within 1e-4 of the speed sideways), no faster than the bound
/// there, and slow enough to stop at the first corner or the end. Otherwise
/// building throws std::runtime_error, naming what is wrong; the motion never
/// jumps to another speed. The start turning rate is given back by stateAt
/// at 0 as it was passed; from then on it is k v. The start acceleration is
/// not used: the motion takes the acceleration its profile calls for at
/// once (no jerk is bounded).
///
/// Duration. The motion's own time is the fastest one; a longer duration
/// asked for stretches the same profile uniformly in time when the start is
/// at rest (speeds divided by the stretch, accelerations by its square, so
/// the limits still hold). A motion that starts moving cannot be stretched
/// without changing its start speed: it then arrives after its own time and
/// stays at rest at the end until the duration is over.
///
/// The state at the duration is the path's end pose (heading: the path's
/// last direction of travel) at rest. Headings are not wrapped: the
/// orientation is the path's heading value exactly when no corner of the
/// path (the start included) turns by more than a half turn, which holds for
/// every path PathFactory makes; at a sharper corner of some other path the
/// robot still turns the shorter way, and its orientation then differs from
/// the path's heading value by whole turns from there on.
class KRMATH_API KRDirectTrajectoryPose2D : public KRTrajectoryPose2D {
 public:
  ~KRDirectTrajectoryPose2D() override;

  RationalSeconds duration() const override;
  RationalSeconds minimumDuration() const override;
  Pose2DPosVelAcc stateAt(double seconds) const override;
  double speedBoundAt(double seconds) const override;

  /// The path driven, built at the start pose: the described path, or with
  /// a blend tolerance that path with transitions through its joints (see
  /// TrajectoryFactory::setBlendTolerance).
  const KRPath2D& path() const;
  /// The path as described to the factory; path() itself when no joint was
  /// blended.
  const KRPath2D& describedPath() const;

  /// A piece of the motion (a run along the path between stops or a turn on
  /// the spot), timed before stretching; defined in the library's private
  /// sources.
  struct Phase;

  /// Made by the non-holonomic factory (and by the holonomic trajectory, for
  /// its base): follows `path` with the given phases (in order), lasting
  /// `duration` (never shorter than the phases' own time), starting with
  /// `startVelocity` (the phases were planned from it), with the minimum
  /// duration the factory found, and the path as described when `path` is
  /// a blend of it (null: `path` is the described one). Throws
  /// std::runtime_error for a null path, a negative duration or a phase
  /// naming a segment the path does not have.
  KRDirectTrajectoryPose2D(TrajectoryFactoryKey key, std::unique_ptr<KRPath2D> path,
                           std::vector<Phase> phases, const RationalSeconds& duration,
                           const RationalSeconds& minimumDuration, const Pose2D& startVelocity,
                           std::unique_ptr<KRPath2D> describedPath = nullptr);

 protected:
  /// The state along the path and the turns, with the orientation of a
  /// non-holonomic robot.
  Pose2DPosVelAcc pathStateAt(double seconds) const;

 private:
  /// Where the motion ends at rest: the end of the described path (with the
  /// whole turns a sharper corner added), or after a final turn on the spot
  /// that turn's end.
  Pose2D endPose() const;
  std::unique_ptr<KRPath2D> path_;
  std::unique_ptr<KRPath2D> describedPath_;  // null: path_ itself
  std::vector<Phase> phases_;
  RationalSeconds duration_;
  RationalSeconds minimumDuration_;
  Pose2D startVelocity_;
  std::vector<double> segmentStarts_;  // arc length where each segment starts
  double ownTime_;                     // the phases' own total time
  double stretch_;  // duration / own time when stretched, else 1
};

/// A holonomic motion: the robot follows the path with one speed profile as
/// the non-holonomic one does (within the first limits as a vector, coming
/// to rest at corners and the end, but never turning on the spot) and,
/// independently, turns from the start orientation by rotation() radians
/// (counter-clockwise positive; more than a half turn is turned as asked,
/// not the shorter way) within the second limits. The turn is the fastest
/// one, stretched over the whole duration when it starts at rest.
///
/// Start state: the velocity (x, y) is honoured as for the non-holonomic
/// kind, along the path's first direction (the orientation does not
/// matter). The start turning rate is honoured too when it turns the way of
/// the rotation, is within the second limits and can stop within the
/// rotation; otherwise building throws std::runtime_error. A turn that
/// starts moving is not stretched: it ends after its own time and holds the
/// end orientation.
class KRMATH_API KRTrajectoryPose2DHolonomic : public KRDirectTrajectoryPose2D {
 public:
  ~KRTrajectoryPose2DHolonomic() override;

  Pose2DPosVelAcc stateAt(double seconds) const override;
  float rotation() const;

  /// Made by the holonomic factory from the start state `start` (its
  /// orientation and velocity), with the minimum duration the factory found:
  /// the rotation is the fastest profile within the given angular limits,
  /// stretched to last `duration` when it starts at rest. Throws
  /// std::runtime_error when the orientation, the rotation or the limits are
  /// not finite, a limit is not positive, or the start turning rate cannot be
  /// honoured.
  KRTrajectoryPose2DHolonomic(TrajectoryFactoryKey key, std::unique_ptr<KRPath2D> path,
                              std::vector<Phase> phases, const RationalSeconds& duration,
                              const RationalSeconds& minimumDuration, const Pose2DPosVelAcc& start,
                              float rotation, double maxAngularVelocity,
                              double maxAngularAcceleration,
                              std::unique_ptr<KRPath2D> describedPath = nullptr);

 private:
  float startOrientation_;
  float startTurnRate_;
  float rotation_;
  std::unique_ptr<Phase> turn_;  // the rotation as a turn profile
  double rotationStretch_;       // duration / the turn's own time when stretched, else 1
};

/// Direct trajectories run one after the other. The first starts with the
/// composed trajectory's start state (its velocity included); every direct
/// trajectory ends at rest, so the hand-over carries no speed: each next
/// one starts at rest where the one before ended (its pose, and for a
/// holonomic one its orientation). Blending never reaches across a
/// hand-over: each direct trajectory blends the joints of its own path and
/// ends exactly on its described end pose, where the robot stops (and, if
/// the next one starts in another direction, turns on the spot or, holonomic,
/// simply moves on from rest). The duration and the minimum duration
/// are the sums of theirs. An empty composed trajectory lasts 0 and stays at
/// its start pose, at rest. The constructor throws std::runtime_error for a
/// null piece or when the summed duration does not fit the fraction's ints.
class KRMATH_API KRTrajectoryPose2DComposed : public KRTrajectoryPose2D {
 public:
  KRTrajectoryPose2DComposed(const Pose2DPosVelAcc& start,
                             std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> > pieces);

  RationalSeconds duration() const override;
  RationalSeconds minimumDuration() const override;
  Pose2DPosVelAcc stateAt(double seconds) const override;
  double speedBoundAt(double seconds) const override;
  const std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> >& pieces() const;

 private:
  Pose2DPosVelAcc start_;
  std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> > pieces_;
  RationalSeconds duration_;
  RationalSeconds minimumDuration_;
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
