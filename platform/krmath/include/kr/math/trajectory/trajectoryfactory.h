// Factories of trajectories: a path is added piece by piece, then a builder
// makes the timed motion once the start state is known.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/position2d.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/pathfactory.h>
#include <kr/math/trajectory/trajectorypose2d.h>

#include <boost/function.hpp>

#include <vector>

namespace KR {
namespace Math {
namespace Trajectory {

/// Builders return a newly made trajectory (new) that the caller owns and
/// deletes. They own copies of everything they need, so they stay usable
/// after the factory that made them is gone. Calling one with a start pose
/// that is not finite throws std::runtime_error.
typedef boost::function<KRDirectTrajectoryPose2D*(const Pose2DPosVelAcc&)>
    DirectTrajectoryPose2DBuilder;
typedef boost::function<KRTrajectoryPose2DHolonomic*(const Pose2DPosVelAcc&)>
    TrajectoryPose2DHolonomicBuilder;
typedef boost::function<KRTrajectoryPose2DComposed*(const Pose2DPosVelAcc&)>
    TrajectoryPose2DComposedBuilder;
typedef boost::function<KRTrajectoryPose2D*(const Pose2DPosVelAcc&)> TrajectoryPose2DBuilder;

/// Collects the pieces of one path (in the order added, each in the frame of
/// the previous piece's end, as PathFactory's composed paths) together with
/// the settings of the motion along it:
/// - the first limits bound the translation (m/s, m/s^2), the second the
///   rotation (rad/s, rad/s^2); see KRDirectTrajectoryPose2D for the motion
///   they make: one speed profile along the whole path, from the start
///   state, resting only at corners and at the end;
/// - `period` is the controller's tick: durations are whole numbers of it;
/// - `fractionOfLimits`, in (0, 1], is the share of both limits the motion
///   may use (1: all of them; 0.5: half the speed and half the acceleration).
///
/// A duration asked for is the one the motion gets if the limits allow it
/// (rounded up to a whole number of periods when it is not one); when they
/// need longer (0 asks for the fastest motion), the motion takes its minimum
/// duration: the shortest the limits allow, rounded up to a whole number of
/// periods. minimumDuration() tells it beforehand, the trajectory's
/// minimumDuration() afterwards. A builder throws std::runtime_error when
/// that duration does not fit the fraction's int numerator, and when the
/// start state's velocity cannot be honoured (see KRDirectTrajectoryPose2D).
/// A factory with no piece makes a motion that stays in place (a holonomic
/// one still turns).
///
/// The three add operations are the only virtual functions; a derived
/// factory may override them (to record them, for instance). The destructor
/// is protected and not virtual: factories are not deleted through this
/// base.
class KRMATH_API TrajectoryFactory {
 public:
  /// Adds a straight line, an arc or a flat path; see KRDirectPath2D for the
  /// parameters. Each throws std::runtime_error (and adds nothing) when
  /// PathFactory's builder of it would: a parameter not finite, a piece too
  /// long or a radius too small.
  virtual void addLine(const Position2D& end);
  virtual void addCircle(const Position2D& centre, float angle);
  virtual void addFlat(const Position2D& firstCentre, float firstAngle,
                       const Position2D& straightEnd, const Position2D& secondCentre,
                       float secondAngle);

  /// Runs the direct trajectories one after the other (see
  /// KRTrajectoryPose2DComposed). An empty builder in the list makes the
  /// call throw boost::bad_function_call, after freeing what was made.
  static TrajectoryPose2DComposedBuilder getComposedTrajectoryBuilder(
      const std::vector<DirectTrajectoryPose2DBuilder>& pieces);

  const Limits& firstLimits() const;
  const Limits& secondLimits() const;
  const RationalSeconds& period() const;
  float fractionOfLimits() const;
  /// Blending zones. With a tolerance above 0 (meters), the trajectory drives
  /// through each joint of the path where the curvature jumps or the
  /// direction turns a corner (up to 3 rad) on a transition instead: eight
  /// clothoids whose curvature is continuous and linear in arc length,
  /// leaving the described path at most half of either piece before the
  /// joint and rejoining it on its exact pose and curvature, every point
  /// within the tolerance of the described path. A transition is as long as
  /// the tolerance and the pieces allow, so that the base keeps its speed as
  /// far as the limits allow; a joint no transition fits (a corner near a
  /// half turn, pieces too short for float coordinates) is driven as without
  /// a tolerance. The start and end poses are the described ones. 0, the
  /// default, follows the described path exactly. Builders made afterwards
  /// use it; earlier ones keep theirs. Throws std::runtime_error unless
  /// `meters` is finite and not negative.
  void setBlendTolerance(float meters);
  float blendTolerance() const;
  /// Path builders of the pieces added so far, in order.
  const std::vector<DirectPath2DBuilder>& pieces() const;

 protected:
  /// Throws std::runtime_error unless both limits are finite and positive,
  /// the period is positive and `fractionOfLimits` is in (0, 1].
  TrajectoryFactory(const Limits& firstLimits, const Limits& secondLimits,
                    const RationalSeconds& period, float fractionOfLimits);
  TrajectoryFactory(const TrajectoryFactory&) = default;
  TrajectoryFactory& operator=(const TrajectoryFactory&) = default;
  ~TrajectoryFactory();

  /// A builder of the path made of the pieces added so far, from this
  /// factory's path factory.
  Path2DComposedBuilder pathBuilder() const;

 private:
  Limits firstLimits_;
  Limits secondLimits_;
  RationalSeconds period_;
  float fractionOfLimits_;
  float blendTolerance_;
  PathFactory paths_;
  std::vector<DirectPath2DBuilder> pieces_;
};

/// Trajectories of a holonomic base (one that can move in any direction
/// while turning): the path is followed with translation limits (first) and
/// the orientation turned with rotation limits (second).
class KRMATH_API HolonomicTrajectoryFactory final : public TrajectoryFactory {
 public:
  HolonomicTrajectoryFactory(const Limits& translationLimits, const Limits& rotationLimits,
                             const RationalSeconds& period, float fractionOfLimits);

  /// Follows the pieces added so far (later additions do not change the
  /// builder) while turning by `rotation` radians, counter-clockwise
  /// positive. Throws std::runtime_error when `rotation` is not finite or
  /// `duration` is negative; the builder also throws it when the end
  /// orientation (start + rotation) is beyond the range of float.
  TrajectoryPose2DHolonomicBuilder getTrajectoryBuilder(float rotation,
                                                         const RationalSeconds& duration) const;

  /// The duration getTrajectoryBuilder(rotation, 0) would give from `start`.
  /// Throws as that builder does.
  RationalSeconds minimumDuration(float rotation, const Pose2DPosVelAcc& start) const;
};

/// Trajectories of a base that always faces along the path (first limits:
/// along the path; second: its turning rate).
class KRMATH_API NonHolonomicTrajectoryFactory final : public TrajectoryFactory {
 public:
  NonHolonomicTrajectoryFactory(const Limits& linearLimits, const Limits& angularLimits,
                                const RationalSeconds& period, float fractionOfLimits);

  /// Follows the pieces added so far. Throws std::runtime_error when
  /// `duration` is negative.
  DirectTrajectoryPose2DBuilder getTrajectoryBuilder(const RationalSeconds& duration) const;

  /// The duration getTrajectoryBuilder(0) would give from `start`. Throws as
  /// that builder does.
  RationalSeconds minimumDuration(const Pose2DPosVelAcc& start) const;
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
