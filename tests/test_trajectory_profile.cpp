// The speed profile of trajectories, checked against a reference written
// differently: a fine-grid forward and backward integration of the speed
// along the path. Sampled every millisecond, no limit is exceeded and the
// velocity never steps by more than the acceleration allows.
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace KR::Math;
using namespace KR::Math::Trajectory;

constexpr float kPi = 3.14159265f;
const RationalSeconds kPeriod(boost::rational<int>(1, 100));
const RationalSeconds kFastest(boost::rational<int>(0));
const Limits kLinear(0.5f, 0.5f);
const Limits kAngular(1.0f, 1.0f);

// ---- Reference -------------------------------------------------------------

// Rest-to-rest time over `distance` with a speed and an acceleration bound.
double restToRest(double distance, double speed, double acceleration) {
  if (distance <= speed * speed / acceleration) {
    return 2.0 * std::sqrt(distance / acceleration);
  }
  return distance / speed + speed / acceleration;
}

// The fastest time along `path` by integration on a grid of 20 um: the
// speed bound at every grid point (0 at corners and the end), then u = v^2
// raised forward and backward by 2 a ds with the tangential acceleration the
// centripetal one leaves. A base facing along the path adds k v and k a to
// its rotation and turns on the spot at corners.
double referenceTime(const KRPath2D& path, const Limits& linear, const Limits& angular,
                     bool facing) {
  struct Point {
    double ds, k, bound2;
  };
  std::vector<Point> grid;
  double time = 0.0;  // turns on the spot
  double heading = path.startPose().theta;
  for (const Segment2D& segment : path.segments()) {
    const double jump = std::remainder(segment.start.theta - heading, 2 * M_PI);
    const bool corner = std::fabs(jump) > 1e-3 && (facing || !grid.empty());
    if (corner && facing) {
      time += restToRest(std::fabs(jump), angular.maxVelocity, angular.maxAcceleration);
    }
    if (corner && !grid.empty()) {
      grid.back().bound2 = 0;
    }
    const double k = std::fabs(segment.curvature);
    double bound = linear.maxVelocity;
    if (k > 0) {
      bound = std::min({bound, std::sqrt(linear.maxAcceleration / k),
                        facing ? angular.maxVelocity / k : bound});
    }
    const int n = std::max(2, static_cast<int>(segment.length / 2e-5));
    grid.insert(grid.end(), n, Point{segment.length / n, k, bound * bound});
    heading = segment.endPose().theta;
  }
  grid.push_back({0, 0, 0});
  auto tangential = [&](const Point& p, double u) {
    const double a = linear.maxAcceleration;
    const double left = std::sqrt(std::max(0.0, a * a - p.k * p.k * u * u));
    return facing && p.k > 0 ? std::min(left, angular.maxAcceleration / p.k) : left;
  };
  std::vector<double> u(grid.size(), 0.0);
  for (std::size_t i = 0; i + 1 < grid.size(); ++i) {
    u[i + 1] = std::min(grid[i + 1].bound2, u[i] + 2 * grid[i].ds * tangential(grid[i], u[i]));
  }
  for (std::size_t i = grid.size() - 1; i-- > 0;) {
    u[i] = std::min(u[i], u[i + 1] + 2 * grid[i].ds * tangential(grid[i], u[i + 1]));
    time += 2 * grid[i].ds / (std::sqrt(u[i]) + std::sqrt(u[i + 1]) + 1e-300);
  }
  return time;
}

// ---- Dense checks ----------------------------------------------------------

// Every millisecond: limits held, positions moving no faster than the
// speed, velocity (x, y) stepping by no more than the acceleration allows;
// the rotation rate too when it is not tied to the path's curvature.
void expectSmoothAndWithinLimits(const KRTrajectoryPose2D& t, bool rateContinuous) {
  const double dt = 1e-3;
  const double end = toSeconds(t.duration());
  const double slack = 1 + 1e-5;
  Pose2DPosVelAcc previous = t.stateAt(0.0);
  int bad = 0;
  for (double time = dt; time <= end + dt && bad < 5; time += dt) {
    const Pose2DPosVelAcc s = t.stateAt(time);
    const double speed = std::hypot(s.velocity.x, s.velocity.y);
    const bool ok =
        speed <= kLinear.maxVelocity * slack &&
        std::hypot(s.acceleration.x, s.acceleration.y) <= kLinear.maxAcceleration * slack &&
        std::fabs(s.velocity.theta) <= kAngular.maxVelocity * slack &&
        std::fabs(s.acceleration.theta) <= kAngular.maxAcceleration * slack &&
        speed <= t.speedBoundAt(time) * slack + 1e-6 &&
        std::hypot(s.velocity.x - previous.velocity.x, s.velocity.y - previous.velocity.y) <=
            kLinear.maxAcceleration * dt * slack + 1e-6 &&
        std::hypot(s.position.x - previous.position.x, s.position.y - previous.position.y) <=
            kLinear.maxVelocity * dt * slack + 1e-6 &&
        (!rateContinuous || std::fabs(s.velocity.theta - previous.velocity.theta) <=
                                kAngular.maxAcceleration * dt * slack + 1e-6);
    if (!ok) {
      ++bad;
      ADD_FAILURE() << "at " << time << " s: " << s << " after " << previous;
    }
    previous = s;
  }
}

// ---- The table -------------------------------------------------------------

struct PathCase {
  const char* name;
  std::function<void(TrajectoryFactory&)> add;
  double expectedNonHolonomic;  // seconds, when known in closed form; else 0
};

void collinear(TrajectoryFactory& f, int count, float length) {
  for (int i = 0; i < count; ++i) {
    f.addLine({length, 0});
  }
}

const PathCase kPaths[] = {
    // 1 s up to 0.5 m/s, cruise, 1 s down: no stop between the pieces.
    {"three collinear lines", [](TrajectoryFactory& f) { collinear(f, 3, 1.0f); }, 7.0},
    {"twenty short lines", [](TrajectoryFactory& f) { collinear(f, 20, 0.1f); }, 5.0},
    {"line, tangent quarter arc, line",
     [](TrajectoryFactory& f) {
       f.addLine({2, 0});
       f.addCircle({0, 1}, kPi / 2);
       f.addLine({2, 0});
     },
     0},
    {"S-bend",
     [](TrajectoryFactory& f) {
       f.addCircle({0, 0.6f}, kPi / 2);
       f.addCircle({0, -0.6f}, -kPi / 2);
       f.addLine({0.5f, 0});
     },
     0},
    {"square corners",
     [](TrajectoryFactory& f) {
       f.addLine({1, 0});
       f.addLine({0, 1});
       f.addLine({0, 1});
     },
     0},
    // Radius 0.2 m: the centripetal bound (0.32 m/s) binds below 0.5 m/s.
    {"tight arcs", [](TrajectoryFactory& f) {
       f.addLine({0.5f, 0});
       f.addCircle({0, 0.2f}, 3 * kPi / 2);
       f.addFlat({0, -0.2f}, -kPi, {0.4f, 0}, {0, 0.15f}, kPi);
     },
     0},
    {"very short pieces",
     [](TrajectoryFactory& f) {
       for (int i = 0; i < 30; ++i) {
         f.addCircle({0, i % 2 ? -0.5f : 0.5f}, i % 2 ? -0.02f : 0.02f);
         f.addLine({0.003f, 0});
       }
     },
     0},
    // A corner of one float step is driven through: no turn on the spot.
    {"rounding-size corner",
     [](TrajectoryFactory& f) {
       f.addLine({1, 0});
       f.addLine({1, 1e-7f});
     },
     4.0 + 1.0},
};

TEST(TrajectoryProfile, FastestWithinLimitsAndMatchesTheReference) {
  for (const PathCase& c : kPaths) {
    for (const bool facing : {true, false}) {
      SCOPED_TRACE(std::string(c.name) + (facing ? ", non-holonomic" : ", holonomic"));
      std::unique_ptr<KRDirectTrajectoryPose2D> t;
      if (facing) {
        NonHolonomicTrajectoryFactory factory(kLinear, kAngular, kPeriod, 1.0f);
        c.add(factory);
        t.reset(factory.getTrajectoryBuilder(kFastest)(Pose2DPosVelAcc()));
      } else {
        HolonomicTrajectoryFactory factory(kLinear, kAngular, kPeriod, 1.0f);
        c.add(factory);
        t.reset(factory.getTrajectoryBuilder(0.0f, kFastest)(Pose2DPosVelAcc()));
      }
      const double seconds = toSeconds(t->duration());
      const double reference = referenceTime(t->path(), kLinear, kAngular, facing);
      EXPECT_LE(seconds, reference * 1.01 + 0.01) << reference;
      EXPECT_GE(seconds, reference * 0.999) << reference;
      if (facing && c.expectedNonHolonomic > 0) {
        EXPECT_NEAR(seconds, c.expectedNonHolonomic, 0.01);
      }
      EXPECT_EQ(t->minimumDuration().count(), t->duration().count());
      expectSmoothAndWithinLimits(*t, !facing);
    }
  }
}

// ---- Start state -----------------------------------------------------------

Pose2DPosVelAcc moving(float vx, float vy, float theta = 0.0f, float rate = 0.0f) {
  return {Pose2D(0, 0, theta), Pose2D(vx, vy, rate), Pose2D(0.2f, 0, 0)};
}

TEST(TrajectoryProfile, StartsWithAFeasibleStartVelocity) {
  NonHolonomicTrajectoryFactory factory(kLinear, kAngular, kPeriod, 1.0f);
  factory.addLine({3, 0});
  const Pose2DPosVelAcc start = moving(0.5f, 0);
  const std::unique_ptr<KRDirectTrajectoryPose2D> t(factory.getTrajectoryBuilder(kFastest)(start));
  // Cruise 2.75 m, then 1 s down; the start acceleration is not used.
  EXPECT_EQ(t->duration().count(), boost::rational<int>(13, 2));
  EXPECT_EQ(factory.minimumDuration(start).count(), t->duration().count());
  const Pose2DPosVelAcc at0 = t->stateAt(0.0);
  EXPECT_EQ(at0.position, start.position);
  EXPECT_EQ(at0.velocity, start.velocity);
  EXPECT_EQ(at0.acceleration, Pose2D());
  expectSmoothAndWithinLimits(*t, false);

  HolonomicTrajectoryFactory omni(kLinear, kAngular, kPeriod, 1.0f);
  omni.addLine({0, 2});
  const Pose2DPosVelAcc sideways = moving(0, 0.4f, 0.0f, 0.5f);
  const std::unique_ptr<KRTrajectoryPose2DHolonomic> h(
      omni.getTrajectoryBuilder(1.0f, kFastest)(sideways));
  EXPECT_EQ(h->stateAt(0.0).velocity, sideways.velocity);
  expectSmoothAndWithinLimits(*h, true);
}

TEST(TrajectoryProfile, AnInfeasibleStartVelocityThrows) {
  const float wheeled = std::nanf("");  // else the holonomic rotation
  const struct {
    const char* name;
    Pose2DPosVelAcc start;
    Position2D end;
    float rotation;
  } cases[] = {
      {"sideways for a wheeled base", moving(0, 0.3f), {2, 0}, wheeled},
      {"backwards", moving(-0.3f, 0), {2, 0}, wheeled},
      {"above the speed limit", moving(0.6f, 0), {2, 0}, wheeled},
      {"too fast to stop in 0.2 m", moving(0.5f, 0), {0.2f, 0}, wheeled},
      {"moving into a corner at the start", moving(0.3f, 0), {1, 1}, wheeled},
      {"not finite", moving(std::nanf(""), 0), {2, 0}, wheeled},
      {"turning against the rotation", moving(0.3f, 0, 0, -0.5f), {2, 0}, 1.0f},
      {"turning too fast to stop within the rotation", moving(0.3f, 0, 0, 1.0f), {2, 0}, 0.1f},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    if (std::isnan(c.rotation)) {
      NonHolonomicTrajectoryFactory factory(kLinear, kAngular, kPeriod, 1.0f);
      factory.addLine(c.end);
      EXPECT_THROW(factory.getTrajectoryBuilder(kFastest)(c.start), std::runtime_error);
    } else {
      HolonomicTrajectoryFactory factory(kLinear, kAngular, kPeriod, 1.0f);
      factory.addLine(c.end);
      EXPECT_THROW(factory.getTrajectoryBuilder(c.rotation, kFastest)(c.start),
                   std::runtime_error);
    }
  }
}

// ---- Durations ---------------------------------------------------------------

TEST(TrajectoryProfile, ALongerDurationStretchesTheSameProfile) {
  NonHolonomicTrajectoryFactory factory(kLinear, kAngular, kPeriod, 1.0f);
  factory.addLine({1, 0});
  factory.addCircle({0, 1}, kPi / 2);
  const std::unique_ptr<KRDirectTrajectoryPose2D> fastest(
      factory.getTrajectoryBuilder(kFastest)(Pose2DPosVelAcc()));
  const double minimum = toSeconds(fastest->duration());
  const RationalSeconds asked = rationalSecondsFromFloat(2.5f * minimum, kPeriod);
  const std::unique_ptr<KRDirectTrajectoryPose2D> slow(
      factory.getTrajectoryBuilder(asked)(Pose2DPosVelAcc()));
  EXPECT_EQ(slow->duration().count(), asked.count());
  EXPECT_EQ(slow->minimumDuration().count(), fastest->duration().count());
  const double k = toSeconds(asked) / minimum;
  for (const double f : {0.1, 0.4, 0.7, 0.95}) {
    const Pose2DPosVelAcc a = fastest->stateAt(f * minimum);
    const Pose2DPosVelAcc b = slow->stateAt(f * minimum * k);
    EXPECT_NEAR(b.position.x, a.position.x, 1e-3) << f;
    EXPECT_NEAR(b.position.y, a.position.y, 1e-3) << f;
    EXPECT_NEAR(b.velocity.x * k, a.velocity.x, 1e-3) << f;
    EXPECT_NEAR(b.acceleration.y * k * k, a.acceleration.y, 1e-3) << f;
  }
  // Shorter than the minimum: the minimum.
  const std::unique_ptr<KRDirectTrajectoryPose2D> hurried(factory.getTrajectoryBuilder(
      rationalSecondsFromFloat(0.5f * minimum, kPeriod))(Pose2DPosVelAcc()));
  EXPECT_EQ(hurried->duration().count(), fastest->duration().count());

  // Starting in motion, the profile keeps its start speed: it arrives after
  // its minimum and rests until the duration is over.
  const std::unique_ptr<KRDirectTrajectoryPose2D> moving(
      factory.getTrajectoryBuilder(asked)(Pose2DPosVelAcc(Pose2D(), Pose2D(0.3f, 0, 0), Pose2D())));
  const double arrival = toSeconds(moving->minimumDuration());
  EXPECT_LT(arrival, minimum);
  EXPECT_EQ(moving->duration().count(), asked.count());
  EXPECT_EQ(moving->stateAt(arrival).velocity, Pose2D());
  EXPECT_EQ(moving->stateAt(arrival).position, moving->stateAt(toSeconds(asked)).position);
}

}  // namespace
