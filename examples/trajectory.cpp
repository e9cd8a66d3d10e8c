// From a path description to a timed motion: build the path, make the
// fastest trajectory along it within the robot's limits, and sample it.
#include <kr/krvalueutils.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include <boost/rational.hpp>

#include <iostream>
#include <memory>

int main() {
  using KR::KRValue;
  using KR::Math::Pose2DPosVelAcc;
  using KR::Math::RationalSeconds;
  namespace Trajectory = KR::Math::Trajectory;

  // One metre straight ahead, then a quarter turn to the left about a centre
  // 0.5 m to the left of where the line ends. Each piece is given in the
  // frame of the previous piece's end (x ahead, y to the left).
  const KRValue description =
      KRValue::array("Composed", KRValue::array("Line", KRValue::array(1.0f, 0.0f)),
                     KRValue::array("Circle", KRValue::array(0.0f, 0.5f), 1.5707964f));

  // A path builder makes the path once the start pose is known; the caller
  // owns what it returns.
  Trajectory::Path2DBuilder pathBuilder;
  KR::ValueUtils::extractPath2DBuilderFromKRValue(description, "path", pathBuilder);
  const std::unique_ptr<Trajectory::KRPath2D> path(pathBuilder(KR::Math::Pose2D()));
  std::cout << "path length " << path->length() << " m, ends at " << path->endPose() << "\n";

  // A robot that faces where it drives: at most 0.5 m/s and 1 m/s^2 along
  // the path, 1 rad/s and 2 rad/s^2 turning, controlled every 10 ms, using
  // all of its limits.
  const RationalSeconds period(boost::rational<int>(1, 100));
  Trajectory::NonHolonomicTrajectoryFactory factory(Trajectory::Limits(0.5f, 1.0f),
                                                    Trajectory::Limits(1.0f, 2.0f), period, 1.0f);
  KR::ValueUtils::extractPath2DIntoTrajectoryFactory(description, "path", factory);

  // A duration of 0 asks for the fastest motion; a longer one stretches it.
  // Starting at rest at the origin:
  const Pose2DPosVelAcc start;
  const std::unique_ptr<Trajectory::KRDirectTrajectoryPose2D> trajectory(
      factory.getTrajectoryBuilder(RationalSeconds(boost::rational<int>(0)))(start));
  const double duration = KR::Math::toSeconds(trajectory->duration());
  std::cout << "duration " << duration << " s\n";

  // The state at any time: pose, velocity and acceleration in the world
  // frame. Before 0 it is the start, after the duration the end at rest.
  for (int quarter = 0; quarter <= 4; ++quarter) {
    const double t = duration * quarter / 4;
    const Pose2DPosVelAcc state = trajectory->stateAt(t);
    std::cout << "t=" << t << " s: " << state.position << " moving " << state.velocity << "\n";
  }

  // Where the line meets the arc the curvature jumps, and a robot that
  // follows the path exactly all but stops there to keep its rotation
  // acceleration. Allowed to stray up to 1 cm, it drives through on a
  // transition of continuously changing curvature instead, and arrives
  // sooner at the same end pose.
  factory.setBlendTolerance(0.01f);
  const std::unique_ptr<Trajectory::KRDirectTrajectoryPose2D> blended(
      factory.getTrajectoryBuilder(RationalSeconds(boost::rational<int>(0)))(start));
  const double blendedDuration = KR::Math::toSeconds(blended->duration());
  std::cout << "within 1 cm: duration " << blendedDuration << " s, ends at "
            << blended->stateAt(blendedDuration).position << "\n";
  return 0;
}
