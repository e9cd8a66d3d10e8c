// Geometry of the path and trajectory layer of krmath: paths in the start
// frame, and what the trajectory factories make of them beyond the speed
// profile (test_trajectory_profile.cpp).
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/pathfactory.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

using namespace KR::Math;
using namespace KR::Math::Trajectory;

constexpr float kPi = 3.14159265f;
const RationalSeconds kPeriod(boost::rational<int>(1, 100));

RationalSeconds seconds(int num, int den = 1) {
  return RationalSeconds(boost::rational<int>(num, den));
}

void expectPose(const Pose2D& actual, const Pose2D& expected, float tolerance = 1e-5f) {
  EXPECT_NEAR(actual.x, expected.x, tolerance) << actual;
  EXPECT_NEAR(actual.y, expected.y, tolerance) << actual;
  EXPECT_NEAR(actual.theta, expected.theta, tolerance) << actual;
}

void expectAtRest(const Pose2DPosVelAcc& state, const Pose2D& pose) {
  expectPose(state.position, pose);
  EXPECT_EQ(state.velocity, Pose2D(0, 0, 0));
  EXPECT_EQ(state.acceleration, Pose2D(0, 0, 0));
}

template <class Path>
std::unique_ptr<Path> build(const boost::function<Path*(const Pose2D&)>& builder,
                            const Pose2D& start) {
  return std::unique_ptr<Path>(builder(start));
}

// ---- Paths ----------------------------------------------------------------

struct LineCase {
  Pose2D start;
  Position2D end;
  Pose2D expectedEnd;
};

TEST(PathGeometry, LineEndsInTheStartFrame) {
  const LineCase cases[] = {
      {{0, 0, 0}, {3, 0}, {3, 0, 0}},
      {{1, 2, kPi / 2}, {3, 0}, {1, 5, kPi / 2}},      // forward is +y
      {{1, 2, kPi / 2}, {0, 2}, {-1, 2, kPi}},         // left is -x
      {{0, 0, 0}, {-1, -1}, {-1, -1, -3 * kPi / 4}},   // a corner behind
      {{5, 5, 7.0f}, {2, 0}, {5 + 2 * std::cos(7.0f), 5 + 2 * std::sin(7.0f), 7.0f}},
  };
  const PathFactory factory(1.0f);
  for (const LineCase& c : cases) {
    const auto path = build(factory.lineBuilder(c.end), c.start);
    EXPECT_EQ(path->kind(), KRDirectPath2D::Kind::Line);
    expectPose(path->endPose(), c.expectedEnd);
    EXPECT_NEAR(path->length(), std::hypot(c.end.x, c.end.y), 1e-5);
    EXPECT_EQ(path->startPose(), c.start);
  }
}

TEST(PathGeometry, ScaleMultipliesPointsNotAngles) {
  const auto path = build(PathFactory(0.001f).circleBuilder({0, 1000}, kPi), Pose2D());
  expectPose(path->endPose(), {0, 2, kPi});
  EXPECT_NEAR(path->length(), kPi, 1e-5);
}

struct ArcCase {
  Pose2D start;
  Position2D centre;  // start frame
  float angle;
  Position2D worldCentre;
  Pose2D expectedEnd;
};

TEST(PathGeometry, ArcKeepsItsRadiusAndTurnsTheGivenWay) {
  const ArcCase cases[] = {
      {{0, 0, 0}, {0, 1}, kPi / 2, {0, 1}, {1, 1, kPi / 2}},
      {{0, 0, 0}, {0, -2}, -kPi, {0, -2}, {0, -4, -kPi}},
      {{1, 1, kPi / 2}, {0, 1}, kPi / 2, {0, 1}, {0, 2, kPi}},
      {{0, 0, 0}, {0, 1}, 4 * kPi, {0, 1}, {0, 0, 4 * kPi}},  // two full turns
  };
  const PathFactory factory(1.0f);
  for (const ArcCase& c : cases) {
    const auto path = build(factory.circleBuilder(c.centre, c.angle), c.start);
    const float radius = std::hypot(c.centre.x, c.centre.y);
    ASSERT_EQ(path->segments().size(), 1u);
    EXPECT_NEAR(path->segments()[0].curvature, (c.angle > 0 ? 1 : -1) / radius, 1e-6);
    EXPECT_NEAR(path->length(), radius * std::fabs(c.angle), 1e-4);
    for (int i = 0; i <= 50; ++i) {
      const Pose2D p = path->poseAt(path->length() * static_cast<float>(i) / 50);
      EXPECT_NEAR(std::hypot(p.x - c.worldCentre.x, p.y - c.worldCentre.y), radius, 1e-5);
    }
    expectPose(path->endPose(), c.expectedEnd, 1e-4f);
  }
}

TEST(PathGeometry, DegenerateArcsAndLinesHaveNoLength) {
  const PathFactory factory(1.0f);
  const Pose2D start(1, 2, 3);
  for (const auto& builder : {factory.circleBuilder({0, 0}, 1.0f),
                              factory.circleBuilder({0, 1}, 0.0f), factory.lineBuilder({0, 0})}) {
    const auto path = build(builder, start);
    EXPECT_EQ(path->length(), 0.0f);
    EXPECT_TRUE(path->segments().empty());
    EXPECT_EQ(path->poseAt(1.0f), start);
    EXPECT_EQ(path->endPose(), start);
  }
}

TEST(PathGeometry, FlatPathHasItsThreeParts) {
  // Quarter turn left about (0, 1) to (1, 1), straight up to (1, 3), quarter
  // turn about (0, 3) to (0, 4) facing -x.
  const auto path = build(PathFactory(1.0f).flatPathBuilder({0, 1}, kPi / 2, {1, 3}, {0, 3},
                                                            kPi / 2),
                          Pose2D());
  EXPECT_EQ(path->kind(), KRDirectPath2D::Kind::Flat);
  ASSERT_EQ(path->segments().size(), 3u);
  EXPECT_NEAR(path->segments()[0].curvature, 1.0f, 1e-6);
  EXPECT_EQ(path->segments()[1].curvature, 0.0f);
  EXPECT_NEAR(path->segments()[1].length, 2.0f, 1e-5);
  expectPose(path->segments()[1].start, {1, 1, kPi / 2});
  expectPose(path->segments()[2].start, {1, 3, kPi / 2});
  EXPECT_NEAR(path->length(), 2 + kPi, 1e-5);
  expectPose(path->endPose(), {0, 4, kPi});
  // A joint shows the earlier segment's pose.
  expectPose(path->poseAt(kPi / 2), {1, 1, kPi / 2});
}

// A path so long that its float length falls short of the double sum of its
// segments (found by fuzzing: poseAt(length()) stopped metres before the end
// on the last, small arc).
TEST(PathGeometry, PoseAtTheFloatLengthIsTheEndOfALongPath) {
  const auto path = build(PathFactory(1.0f).flatPathBuilder({0, 0.5f}, 1.5707964f, {2, 1},
                                                            {1, 2.5f}, -185707964.0f),
                          Pose2D());
  ASSERT_GT(path->length(), 1e8f);
  EXPECT_EQ(path->poseAt(path->length()), path->endPose());
  EXPECT_EQ(path->poseAt(path->length() * 2), path->endPose());
}

TEST(PathGeometry, ComposedPiecesChainAtThePreviousEnd) {
  const PathFactory factory(1.0f);
  const auto straight =
      build(factory.composedPathBuilder({factory.lineBuilder({1, 0}), factory.lineBuilder({1, 0})}),
            Pose2D(1, 1, kPi));
  expectPose(straight->endPose(), {-1, 1, kPi});
  EXPECT_NEAR(straight->length(), 2.0f, 1e-6);
  EXPECT_EQ(straight->pieces().size(), 2u);

  const auto turnLeft = build(
      factory.composedPathBuilder({factory.circleBuilder({0, 1}, kPi / 2), factory.lineBuilder({1, 0})}),
      Pose2D());
  expectPose(turnLeft->endPose(), {1, 2, kPi / 2});
  expectPose(turnLeft->poseAt(kPi / 2 + 0.5f), {1, 1.5f, kPi / 2});

  // At a corner the pose ends the earlier segment.
  const auto corner = build(
      factory.composedPathBuilder({factory.lineBuilder({1, 0}), factory.lineBuilder({0, 1})}),
      Pose2D());
  EXPECT_EQ(corner->poseAt(1.0f), Pose2D(1, 0, 0));
  expectPose(corner->poseAt(1.5f), {1, 0.5f, kPi / 2});

  const auto empty = build(factory.composedPathBuilder({}), Pose2D(1, 2, 3));
  EXPECT_EQ(empty->length(), 0.0f);
  EXPECT_EQ(empty->poseAt(10.0f), Pose2D(1, 2, 3));
  EXPECT_EQ(empty->endPose(), Pose2D(1, 2, 3));

  const auto withHole = factory.composedPathBuilder({factory.lineBuilder({1, 0}), {}});
  EXPECT_THROW(withHole(Pose2D()), boost::bad_function_call);
}

TEST(PathGeometry, BadDescriptionsThrow) {
  const PathFactory factory(1.0f);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  EXPECT_THROW(PathFactory{0.0f}, std::runtime_error);
  EXPECT_THROW(PathFactory{nan}, std::runtime_error);
  EXPECT_THROW(factory.lineBuilder({nan, 0}), std::runtime_error);
  EXPECT_THROW(factory.circleBuilder({0, 1}, inf), std::runtime_error);
  EXPECT_THROW(factory.circleBuilder({0, 1}, 1e30f), std::runtime_error);  // absurd length
  EXPECT_THROW(factory.lineBuilder({3e38f, 0}), std::runtime_error);
  EXPECT_THROW(factory.lineBuilder({1, 0})(Pose2D(nan, 0, 0)), std::runtime_error);
  EXPECT_THROW(factory.composedPathBuilder({})(Pose2D(0, inf, 0)), std::runtime_error);
}

// ---- Trajectories ---------------------------------------------------------

const Limits kUnit(1.0f, 1.0f);

Pose2DPosVelAcc at(const Pose2D& pose) { return {pose, Pose2D(), Pose2D()}; }

struct DurationCase {
  Position2D end;
  float fraction;
  RationalSeconds asked;
  RationalSeconds expected;
};

TEST(TrajectoryGeometry, DurationIsAskedOrFastestInWholePeriods) {
  const DurationCase cases[] = {
      {{0.5f, 0}, 1.0f, seconds(0), seconds(71, 50)},     // 2 sqrt(0.5) = 1.414 -> 142 ticks
      {{1, 0}, 1.0f, seconds(401, 200), seconds(201, 100)},  // asked 200.5 ticks -> 201
      {{1, 0}, 0.5f, seconds(0), seconds(3)},             // 1 s up, 1 s cruise, 1 s down
      {{0, 1}, 1.0f, seconds(0), seconds(458, 100)},      // turn 1 + pi/2 s, then 2 s
      {{0, 0}, 1.0f, seconds(INT_MAX), seconds(INT_MAX)},
  };
  for (const DurationCase& c : cases) {
    NonHolonomicTrajectoryFactory factory(kUnit, kUnit, kPeriod, c.fraction);
    factory.addLine(c.end);
    const std::unique_ptr<KRDirectTrajectoryPose2D> t(
        factory.getTrajectoryBuilder(c.asked)(at(Pose2D())));
    EXPECT_EQ(t->duration().count(), c.expected.count()) << c.end << " " << c.fraction;
    expectAtRest(t->stateAt(toSeconds(t->duration())),
                 {c.end.x, c.end.y, std::atan2(c.end.y, c.end.x)});
  }
}

// A U-turn ends facing the path's last heading value, whatever the start
// heading's float rounding.
TEST(TrajectoryGeometry, UTurnEndsOnThePathsHeading) {
  NonHolonomicTrajectoryFactory back(kUnit, kUnit, kPeriod, 1.0f);
  back.addLine({1, 0});
  back.addLine({-1, 0});
  for (const float heading : {0.0f, 0.3f, 1.1f, -2.5f, 5.7f}) {
    const std::unique_ptr<KRDirectTrajectoryPose2D> u(
        back.getTrajectoryBuilder(seconds(0))(at(Pose2D(0, 0, heading))));
    EXPECT_NEAR(u->path().endPose().theta, heading + kPi, 1e-5);
    expectAtRest(u->stateAt(100.0), u->path().endPose());
  }
}

TEST(TrajectoryGeometry, HolonomicTurnsAsAskedWhileFollowingThePath) {
  HolonomicTrajectoryFactory factory(kUnit, kUnit, kPeriod, 1.0f);
  factory.addLine({1, 0});
  // Turning 4 rad takes 1 + 3 + 1 s, longer than the 2 s of the line.
  const std::unique_ptr<KRTrajectoryPose2DHolonomic> t(
      factory.getTrajectoryBuilder(-4.0f, seconds(0))(at(Pose2D(0, 0, 0.3f))));
  EXPECT_EQ(t->duration().count(), boost::rational<int>(5));
  EXPECT_EQ(t->rotation(), -4.0f);
  expectAtRest(t->stateAt(0.0), {0, 0, 0.3f});
  const Pose2D end(std::cos(0.3f), std::sin(0.3f), 0.3f - 4.0f);
  expectAtRest(t->stateAt(5.0), end);
  EXPECT_NEAR(t->stateAt(2.5).velocity.theta, -1.0f, 1e-5);  // cruising
  // The 2 s line is slowed down 2.5 times: halfway at 2.5 s at 1 / 2.5 m/s.
  const Pose2DPosVelAcc middle = t->stateAt(2.5);
  expectPose(middle.position, {0.5f * std::cos(0.3f), 0.5f * std::sin(0.3f), 0.3f - 2.0f});
  EXPECT_NEAR(std::hypot(middle.velocity.x, middle.velocity.y), 0.4f, 1e-5);

  HolonomicTrajectoryFactory still(kUnit, kUnit, kPeriod, 1.0f);
  const std::unique_ptr<KRTrajectoryPose2DHolonomic> spin(
      still.getTrajectoryBuilder(kPi, seconds(0))(at(Pose2D(1, 1, 0))));
  expectAtRest(spin->stateAt(100.0), {1, 1, kPi});
}

TEST(TrajectoryGeometry, BuildersOutliveTheirFactory) {
  DirectTrajectoryPose2DBuilder wheeled;
  TrajectoryPose2DHolonomicBuilder omni;
  {
    NonHolonomicTrajectoryFactory a(kUnit, kUnit, kPeriod, 1.0f);
    a.addCircle({0, 1}, kPi);
    wheeled = a.getTrajectoryBuilder(seconds(0));
    a.addLine({5, 0});  // later additions do not change the builder
    HolonomicTrajectoryFactory b(kUnit, kUnit, kPeriod, 1.0f);
    b.addLine({1, 0});
    omni = b.getTrajectoryBuilder(1.0f, seconds(0));
  }
  const std::unique_ptr<KRDirectTrajectoryPose2D> t(wheeled(at(Pose2D())));
  expectAtRest(t->stateAt(1e6), {0, 2, kPi});
  const std::unique_ptr<KRTrajectoryPose2DHolonomic> u(omni(at(Pose2D())));
  expectAtRest(u->stateAt(1e6), {1, 0, 1});
}

TEST(TrajectoryGeometry, ComposedRunsOneAfterTheOther) {
  NonHolonomicTrajectoryFactory a(kUnit, kUnit, kPeriod, 1.0f);
  a.addLine({1, 0});
  HolonomicTrajectoryFactory b(kUnit, kUnit, kPeriod, 1.0f);
  b.addLine({1, 0});
  // The holonomic piece ends facing +y, so the last line runs along +y.
  const auto builder = TrajectoryFactory::getComposedTrajectoryBuilder(
      {a.getTrajectoryBuilder(seconds(3)), b.getTrajectoryBuilder(kPi / 2, seconds(3)),
       a.getTrajectoryBuilder(seconds(0))});
  // The first piece starts with the start velocity, arrives early (1.63 s)
  // and rests; every hand-over is at rest.
  const Pose2DPosVelAcc moving(Pose2D(), Pose2D(0.5f, 0, 0), Pose2D());
  const std::unique_ptr<KRTrajectoryPose2DComposed> t(builder(moving));
  EXPECT_EQ(t->stateAt(0.0).velocity, moving.velocity);
  EXPECT_EQ(t->duration().count(), boost::rational<int>(3 + 3 + 2));
  EXPECT_EQ(t->minimumDuration().count(), boost::rational<int>(163 + 258 + 200, 100));
  expectAtRest(t->stateAt(3.0), {1, 0, 0});
  expectAtRest(t->stateAt(6.0), {2, 0, kPi / 2});
  expectAtRest(t->stateAt(8.0), {2, 1, kPi / 2});
  expectPose(t->stateAt(7.0).position, {2, 0.5f, kPi / 2});

  const std::unique_ptr<KRTrajectoryPose2DComposed> empty(
      TrajectoryFactory::getComposedTrajectoryBuilder({})(at(Pose2D(1, 2, 3))));
  EXPECT_EQ(empty->duration().count(), boost::rational<int>(0));
  expectAtRest(empty->stateAt(1.0), {1, 2, 3});

  const auto withHole = TrajectoryFactory::getComposedTrajectoryBuilder(
      {a.getTrajectoryBuilder(seconds(0)), DirectTrajectoryPose2DBuilder()});
  EXPECT_THROW(withHole(at(Pose2D())), boost::bad_function_call);
}

// A factory of its own that records what is added, as a user may write.
class RecordingFactory : public TrajectoryFactory {
 public:
  RecordingFactory() : TrajectoryFactory(kUnit, kUnit, kPeriod, 1.0f) {}
  void addLine(const Position2D& end) override {
    ++lines;
    TrajectoryFactory::addLine(end);
  }
  int lines = 0;
};

TEST(TrajectoryGeometry, DerivedFactoryOverridesTheAddOperations) {
  RecordingFactory recorder;
  TrajectoryFactory& base = recorder;
  base.addLine({1, 0});
  base.addCircle({0, 1}, 1.0f);
  EXPECT_EQ(recorder.lines, 1);
  EXPECT_EQ(recorder.pieces().size(), 2u);
}

TEST(TrajectoryGeometry, InvalidSettingsThrow) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const Limits bad[] = {{0, 1}, {1, -1}, {nan, 1}, {1, INFINITY}};
  for (const Limits& limits : bad) {
    EXPECT_THROW(NonHolonomicTrajectoryFactory(limits, kUnit, kPeriod, 1.0f), std::runtime_error);
    EXPECT_THROW(HolonomicTrajectoryFactory(kUnit, limits, kPeriod, 1.0f), std::runtime_error);
  }
  for (const float fraction : {0.0f, -0.5f, 1.5f, nan}) {
    EXPECT_THROW(NonHolonomicTrajectoryFactory(kUnit, kUnit, kPeriod, fraction),
                 std::runtime_error);
  }
  EXPECT_THROW(NonHolonomicTrajectoryFactory(kUnit, kUnit, seconds(0), 1.0f), std::runtime_error);

  HolonomicTrajectoryFactory factory(kUnit, kUnit, kPeriod, 1.0f);
  EXPECT_THROW(factory.addLine({nan, 0}), std::runtime_error);
  EXPECT_TRUE(factory.pieces().empty());
  EXPECT_THROW(factory.getTrajectoryBuilder(nan, seconds(0)), std::runtime_error);
  EXPECT_THROW(factory.getTrajectoryBuilder(0.0f, seconds(-1)), std::runtime_error);
  EXPECT_THROW(factory.getTrajectoryBuilder(0.0f, seconds(0))(at(Pose2D(0, nan, 0))),
               std::runtime_error);
  // A motion lasting far longer than an int number of seconds.
  NonHolonomicTrajectoryFactory slow(Limits(1e-3f, 1.0f), kUnit, kPeriod, 1.0f);
  slow.addLine({1e8f, 0});
  EXPECT_THROW(slow.getTrajectoryBuilder(seconds(0))(at(Pose2D())), std::runtime_error);
}

}  // namespace
