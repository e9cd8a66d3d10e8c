// Paths and trajectories of krmath: the guards of the path builders, and the
// speed profile of trajectories checked against a reference written
// differently (a fine-grid forward and backward integration of the speed
// along the path).
// Sampled every millisecond, no limit is exceeded and the velocity never steps
// by more than the acceleration allows.
#include <gtest/gtest.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/pathfactory.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

constexpr const char* kNoThrow = "<no exception>";

// The message of the std::runtime_error that `f` throws, failing the test if
// the exception is a subclass rather than exactly that type; kNoThrow when
// `f` throws nothing.
template <typename F>
std::string messageOf(F&& f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(typeid(e), typeid(std::runtime_error)) << e.what();
    return e.what();
  }
  return kNoThrow;
}

using namespace KR::Math;
using namespace KR::Math::Trajectory;

constexpr float kPi = 3.14159265f;
const float kNaN = std::numeric_limits<float>::quiet_NaN();
const RationalSeconds kPeriod(boost::rational<int>(1, 100));
const RationalSeconds kFastest(boost::rational<int>(0));
const Limits kUnit(1.0f, 1.0f);
const Limits kLinear(0.5f, 0.5f);
const Limits kAngular(1.0f, 1.0f);

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

// Takes ownership of what a builder made.
template <class T>
std::unique_ptr<T> own(T* made) {
  return std::unique_ptr<T>(made);
}

Pose2DPosVelAcc at(const Pose2D& pose) { return {pose, Pose2D(), Pose2D()}; }

// ---- Paths -----------------------------------------------------------------

// A path so long that its float length falls short of the double sum of its
// segments (found by fuzzing: poseAt(length()) stopped metres before the end
// on the last, small arc).
TEST(PathGeometry, PoseAtTheFloatLengthIsTheEndOfALongPath) {
  const auto path = own(PathFactory(1.0f).flatPathBuilder({0, 0.5f}, 1.5707964f, {2, 1},
                                                          {1, 2.5f}, -185707964.0f)(Pose2D()));
  ASSERT_GT(path->length(), 1e8f);
  EXPECT_EQ(path->poseAt(path->length()), path->endPose());
  EXPECT_EQ(path->poseAt(path->length() * 2), path->endPose());
}

// At a corner the pose is the earlier piece's end: still facing its way.
TEST(PathGeometry, PoseAtACornerFacesTheEarlierPiece) {
  const PathFactory f(1.0f);
  const auto path =
      own(f.composedPathBuilder({f.lineBuilder({1, 0}), f.lineBuilder({0, 1})})(Pose2D(0, 0, 0)));
  EXPECT_EQ(path->poseAt(1.0f), Pose2D(1, 0, 0));
  expectPose(path->poseAt(1.5f), Pose2D(1, 0.5f, kPi / 2));
}

// A path made from segments directly checks each of them and its length:
// short segments are kept, a segment or a path beyond the range of float is
// refused with its message.
TEST(PathGeometry, SegmentsAreCheckedWhenAPathIsMade) {
  using Kind = KRDirectPath2D::Kind;
  const float far = 1.7e38f;
  const struct {
    std::vector<Segment2D> segments;
    std::string message;
  } rows[] = {
      {{{Pose2D(), 0.5f, 0.0f}, {Pose2D(0.5f, 0, 0), 0.25f, 2.0f}}, kNoThrow},
      {{{Pose2D(), -0.5f, 0.0f}},
       "A path segment needs a finite start pose, curvature and length >= 0."},
      {{{Pose2D(0, kNaN, 0), 1.0f, 0.0f}},
       "A path segment needs a finite start pose, curvature and length >= 0."},
      {{{Pose2D(3e38f, 0, 0), 3e38f, 0.0f}},
       "A path segment ends outside the range of float coordinates."},
      // Out and back: each segment ends in range, their sum is not a float.
      {{{Pose2D(-far, 0, 0), 2 * far, 0.0f}, {Pose2D(far, 0, kPi), 2 * far, 0.0f}},
       "A path's length exceeds the range of float."},
      // Clothoids: a finite sharpness, an end curvature within float, a
      // bounded turn (|k0| + |k1|) s <= 1000.
      {{{Pose2D(), 1.0f, 0.0f, 2.0f}, {Pose2D(), 100.0f, 5.0f, -0.05f}}, kNoThrow},
      {{{Pose2D(), 1.0f, 0.0f, kNaN}},
       "A path segment needs a finite start pose, curvature and length >= 0."},
      {{{Pose2D(), 2.0f, 0.0f, 3e38f}},
       "A clothoid path segment ends at a curvature beyond float."},
      {{{Pose2D(), 100.0f, 5.0f, 0.01f}}, "A clothoid path segment may turn by at most 1000 rad."},
  };
  for (const auto& row : rows) {
    std::unique_ptr<KRDirectPath2D> path;
    EXPECT_EQ(
        messageOf([&] { path.reset(new KRDirectPath2D(Kind::Line, Pose2D(), row.segments)); }),
        row.message);
    if (path) {
      EXPECT_EQ(path->segments().size(), row.segments.size());
    }
  }
}

// A clothoid's poses against a fine chain of arcs of its midpoint curvatures
// (the heading exactly, the position within the chain's own error), on
// generated clothoids from a fraction of a turn to hundreds of radians.
TEST(PathGeometry, ClothoidPosesFollowTheirCurvature) {
  std::mt19937 random(41);
  auto uniform = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  for (int n = 0; n < 40; ++n) {
    const double length = std::exp(uniform(std::log(1e-3), std::log(20.0)));
    const double k0 = uniform(-5, 5) / std::sqrt(length);
    const double k1 = uniform(-5, 5) / std::sqrt(length) * (n % 4 == 0 ? 20 : 1);
    Segment2D clothoid{
        Pose2D(static_cast<float>(uniform(-3, 3)), static_cast<float>(uniform(-3, 3)),
               static_cast<float>(uniform(-3, 3))),
        static_cast<float>(length), static_cast<float>(k0), static_cast<float>((k1 - k0) / length)};
    SCOPED_TRACE(n);
    const double c = static_cast<double>(clothoid.sharpness);
    double x = static_cast<double>(clothoid.start.x);
    double y = static_cast<double>(clothoid.start.y);
    double theta = static_cast<double>(clothoid.start.theta);
    const int steps = 200000;
    const double ds = static_cast<double>(clothoid.length) / steps;
    for (int i = 0; i < steps; ++i) {
      const double k = static_cast<double>(clothoid.curvature) + c * (i + 0.5) * ds;
      // One arc of curvature k: the chord points halfway along its turn.
      const double chord = std::fabs(k * ds) < 1e-9 ? ds : 2 * std::sin(k * ds / 2) / k;
      x += chord * std::cos(theta + k * ds / 2);
      y += chord * std::sin(theta + k * ds / 2);
      theta += k * ds;
      if ((i + 1) % (steps / 4) == 0) {
        const float s = static_cast<float>((i + 1) * ds);
        const Pose2D p = clothoid.poseAt(s);
        const double turn = std::fabs(static_cast<double>(clothoid.curvature)) +
                            std::fabs(clothoid.curvatureAt(static_cast<double>(s)));
        const double error = 1e-6 * (1 + std::fabs(x) + std::fabs(y)) + 1e-9 * turn * turn * length;
        EXPECT_NEAR(static_cast<double>(p.x), x, error);
        EXPECT_NEAR(static_cast<double>(p.y), y, error);
        EXPECT_NEAR(static_cast<double>(p.theta), theta, 1e-5 * (1 + std::fabs(theta)));
      }
    }
    EXPECT_EQ(clothoid.endPose(), clothoid.poseAt(clothoid.length));
    EXPECT_EQ(clothoid.curvatureAt(-1.0), static_cast<double>(clothoid.curvature));
  }
}

// The geometry layer's own checks, whatever its callers checked before: each
// fails with its message, and a trajectory factory keeps no piece it refused.
TEST(PathGeometry, NonFiniteAndOverlongPiecesFailWithTheirMessages) {
  const float inf = std::numeric_limits<float>::infinity();
  const PathFactory f(1.0f);
  const Position2D p(1, 0);
  const auto notFinite = [](const std::string& what) {
    return "Path description: " + what + " is not finite.";
  };
  const auto tooLong = [](double length) {
    return "A path piece of " + std::to_string(length) + " m is longer than the 1e9 m allowed.";
  };
  const struct {
    const char* name;
    std::function<void()> make;
    std::string message;
  } rows[] = {
      {"scale 0", [] { PathFactory{0.0f}; },
       "A path factory's scale must be finite and positive, got 0.000000."},
      {"scale -inf", [&] { PathFactory{-inf}; },
       "A path factory's scale must be finite and positive, got -inf."},
      {"scale NaN", [] { PathFactory{kNaN}; },
       "A path factory's scale must be finite and positive, got nan."},
      {"line x",
       [&] {
         f.lineBuilder({kNaN, 0});
       },
       notFinite("the line's end")},
      {"line y",
       [&] {
         f.lineBuilder({0, inf});
       },
       notFinite("the line's end")},
      {"circle centre",
       [&] {
         f.circleBuilder({0, -inf}, 1);
       },
       notFinite("the arc's centre")},
      {"circle angle",
       [&] {
         f.circleBuilder({0, 1}, kNaN);
       },
       notFinite("the arc's angle")},
      {"flat 1st centre",
       [&] {
         f.flatPathBuilder({kNaN, 1}, 1, p, p, 1);
       },
       notFinite("the first arc's centre")},
      {"flat 1st angle", [&] { f.flatPathBuilder(p, -inf, p, p, 1); },
       notFinite("the first arc's angle")},
      {"flat end",
       [&] {
         f.flatPathBuilder(p, 1, {0, kNaN}, p, 1);
       },
       notFinite("the straight part's end")},
      {"flat 2nd centre",
       [&] {
         f.flatPathBuilder(p, 1, p, {inf, 0}, 1);
       },
       notFinite("the second arc's centre")},
      {"flat 2nd angle", [&] { f.flatPathBuilder(p, 1, p, p, kNaN); },
       notFinite("the second arc's angle")},
      // The bound itself is allowed; the next float beyond it is not.
      {"line of 1e9 m",
       [&] {
         f.lineBuilder({0, -1e9f});
       },
       kNoThrow},
      {"line past 1e9 m",
       [&] {
         f.lineBuilder({1000000064.0f, 0});
       },
       tooLong(1000000064.0)},
      {"line scaled below 1e9 m",
       [] {
         PathFactory(0.5f).lineBuilder({2e9f, 0});
       },
       kNoThrow},
      {"arc",
       [&] {
         f.circleBuilder({0, 1}, 2e9f);
       },
       tooLong(2e9)},
      // Each part on its own, before the rest of the piece is laid out ...
      {"flat, 1st arc",
       [&] {
         f.flatPathBuilder({0, 1}, 2e9f, {100, 0}, {100, 1}, 1);
       },
       tooLong(2e9)},
      {"flat, straight part",
       [&] {
         f.flatPathBuilder(p, 0, {2e9f, 0}, {2e9f, 1}, 1);
       },
       tooLong(2e9)},
      {"flat, 2nd arc",
       [&] {
         f.flatPathBuilder(p, 0, {1, 0}, {1, 1}, 2e9f);
       },
       tooLong(2e9)},
      // ... and the piece as a whole.
      {"flat, parts together",
       [&] {
         f.flatPathBuilder(p, 0, {6e8f, 0}, {6e8f, 1}, 6e8f);
       },
       tooLong(1.2e9)},
      {"radius too small",
       [&] {
         f.circleBuilder({0, 1e-39f}, 1);
       },
       "An arc's radius of 0.000000 m is too small for its curvature to be stored."},
      {"radius 0",
       [&] {
         f.circleBuilder({0, 0}, 1e30f);
       },
       kNoThrow},
      {"start pose", [&] { f.lineBuilder(p)(Pose2D(kNaN, 0, 0)); },
       "A path cannot be built at a start pose that is not finite."},
      {"composed start pose", [&] { f.composedPathBuilder({})(Pose2D(0, 0, inf)); },
       "A path cannot be built at a start pose that is not finite."},
      {"a piece's builder making nothing",
       [&] {
         const DirectPath2DBuilder nothing = [](const Pose2D&) -> KRDirectPath2D* {
           return nullptr;
         };
         f.composedPathBuilder({f.lineBuilder(p), nothing})(Pose2D());
       },
       "A path piece's builder returned no path."},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(messageOf(row.make), row.message);
  }

  // Generated line ends of every size around the bound, non-finite ones too:
  // refused exactly when not finite or longer than 1e9 m, and with the length
  // in the message.
  std::mt19937 rng(5);
  const float edges[] = {0.0f, -0.0f, inf, kNaN, 1e9f, -1e9f, 1000000064.0f, 7.0710678e8f};
  std::uniform_real_distribution<float> exponent(-3.0f, 9.5f);
  const auto coordinate = [&] {
    if (rng() % 4 == 0) return edges[rng() % std::size(edges)];
    return (rng() % 2 ? 1.0f : -1.0f) * std::pow(10.0f, exponent(rng));
  };
  for (int i = 0; i < 2000; ++i) {
    const Position2D end(coordinate(), coordinate());
    SCOPED_TRACE(testing::Message() << end);
    const double length = std::hypot(static_cast<double>(end.x), static_cast<double>(end.y));
    const std::string expected = !std::isfinite(end.x) || !std::isfinite(end.y)
                                     ? notFinite("the line's end")
                                 : length > 1e9 ? tooLong(length)
                                                : kNoThrow;
    EXPECT_EQ(messageOf([&] { f.lineBuilder(end); }), expected);
  }

  NonHolonomicTrajectoryFactory factory(kUnit, kUnit, kPeriod, 1.0f);
  factory.addLine(p);
  EXPECT_EQ(messageOf([&] { factory.addLine({kNaN, 0}); }), notFinite("the line's end"));
  EXPECT_EQ(messageOf([&] { factory.addCircle({0, 1}, 2e9f); }), tooLong(2e9));
  EXPECT_EQ(messageOf([&] { factory.addFlat(p, 1, p, p, inf); }),
            notFinite("the second arc's angle"));
  EXPECT_EQ(factory.pieces().size(), 1u);
}

// ---- Speed profile against the reference -----------------------------------

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
// its rotation, turns on the spot at corners, and about a joint where the
// curvature jumps keeps, for `period` of travel on each side, the speed
// within alpha period / (2 D), D the sum of the jumps a period at full speed
// reaches, and k a within alpha / 2 (with a clothoid in reach, k a and
// c v^2 within alpha / 4 each). On a clothoid of sharpness c, c v^2 takes
// at most 0.8 alpha and k a the rest, k taken at each grid point.
double referenceTime(const KRPath2D& path, const Limits& linear, const Limits& angular,
                     bool facing, double period = 0.01) {
  struct Point {
    double s, ds, k, bound2, tangential;  // k: the largest on the step
    double zone2 = std::numeric_limits<double>::infinity();
  };
  struct Zone {
    double from, to, speed, tangential;
  };
  const double alpha = static_cast<double>(angular.maxAcceleration);
  const double vmax = static_cast<double>(linear.maxVelocity);
  // First the corners and the zones of the curvature jumps, by arc length.
  struct Jump {
    double s, dk, runStart;
  };
  struct Extent {
    double from, to, k, sharpness;
  };
  std::vector<bool> corners;
  std::vector<double> runStarts;
  std::vector<Jump> jumps;
  std::vector<Extent> extents;
  std::vector<Zone> zones;
  double time = 0.0;  // turns on the spot
  double heading = static_cast<double>(path.startPose().theta);
  double arc = 0.0;
  double curvature = 0.0;
  double previousScale = 0.0;
  for (const Segment2D& segment : path.segments()) {
    const double jump =
        std::remainder(static_cast<double>(segment.start.theta) - heading, 2 * M_PI);
    const bool corner = std::fabs(jump) > 1e-3 && (facing || arc > 0);
    if (corner && facing) {
      time += restToRest(std::fabs(jump), static_cast<double>(angular.maxVelocity), alpha);
    }
    const double k = segment.curvatureAt(0);
    const double kEnd = segment.curvatureAt(static_cast<double>(segment.length));
    runStarts.push_back(corner || arc == 0 ? arc : runStarts.back());
    // Clothoids meet within their knots' float rounding: ulps of the
    // curvatures at their ends.
    const double scale = std::fabs(k) + std::fabs(kEnd);
    const double rounding = 8 * static_cast<double>(FLT_EPSILON) * (scale + previousScale);
    previousScale = scale;
    if (facing && !corner && arc > 0 && std::fabs(k - curvature) > rounding) {
      jumps.push_back({arc, std::fabs(k - curvature), runStarts.back()});
    }
    corners.push_back(corner);
    extents.push_back({arc, arc + static_cast<double>(segment.length),
                       std::max(std::fabs(k), std::fabs(kEnd)),
                       std::fabs(static_cast<double>(segment.sharpness))});
    arc += static_cast<double>(segment.length);
    heading = static_cast<double>(segment.endPose().theta);
    curvature = kEnd;
  }
  // A jump's zone: the speed bound from every jump of its run a period can
  // reach, the tangential one from every curvature the zone overlaps.
  for (const Jump& jump : jumps) {
    double sum = 0.0;
    for (const Jump& other : jumps) {
      if (other.runStart == jump.runStart && std::fabs(other.s - jump.s) <= vmax * period) {
        sum += other.dk;
      }
    }
    const double speed = std::min(vmax, alpha * period / (2 * sum));
    double runEnd = arc;
    for (std::size_t i = 0; i < extents.size(); ++i) {
      if (corners[i] && extents[i].from > jump.s) {
        runEnd = std::min(runEnd, extents[i].from);
      }
    }
    Zone zone{std::max(jump.runStart, jump.s - speed * period),
              std::min(runEnd, jump.s + speed * period), speed, 0};
    double k = 0.0;
    double sharpness = 0.0;
    for (const Extent& e : extents) {
      if (e.from < zone.to && e.to > zone.from) {
        k = std::max(k, e.k);
        sharpness = std::max(sharpness, e.sharpness);
      }
    }
    zone.tangential = alpha / (2 * k);
    if (sharpness > 0) {
      zone.speed = std::min(zone.speed, std::sqrt(alpha / (4 * sharpness)));
      zone.tangential = alpha / (4 * k);
    }
    zones.push_back(zone);
  }
  // Then the grid, with steps of at most 20 um that break at every zone's edges.
  std::vector<Point> grid;
  arc = 0.0;
  for (std::size_t i = 0; i < path.segments().size(); ++i) {
    const Segment2D& segment = path.segments()[i];
    // At a corner the robot is at rest: the segment's first point.
    const std::size_t first = grid.size();
    const double c = std::fabs(static_cast<double>(segment.sharpness));
    auto boundAt = [&](double k) {
      double bound = vmax;
      if (k > 0) {
        bound = std::min({bound, std::sqrt(0.99 * static_cast<double>(linear.maxAcceleration) / k),
                          facing ? static_cast<double>(angular.maxVelocity) / k : bound});
      }
      return facing && c > 0 ? std::min(bound, std::sqrt(0.8 * alpha / c)) : bound;
    };
    const double end = arc + static_cast<double>(segment.length);
    std::vector<double> breaks{arc, end};
    for (const Zone& zone : zones) {
      for (const double edge : {zone.from, zone.to}) {
        if (edge > arc && edge < end) {
          breaks.push_back(edge);
        }
      }
    }
    std::sort(breaks.begin(), breaks.end());
    for (std::size_t b = 0; b + 1 < breaks.size(); ++b) {
      const int n = std::max(8, static_cast<int>((breaks[b + 1] - breaks[b]) / 2e-5));
      const double ds = (breaks[b + 1] - breaks[b]) / n;
      for (int j = 0; j < n; ++j) {
        const double s = breaks[b] + j * ds - arc;
        const double k =
            std::max(std::fabs(segment.curvatureAt(s)), std::fabs(segment.curvatureAt(s + ds)));
        Point p{breaks[b] + j * ds, ds, k, boundAt(k) * boundAt(k),
                facing && k > 0 ? (c > 0 ? 0.2 : 1.0) * alpha / k
                                : std::numeric_limits<double>::infinity()};
        for (const Zone& zone : zones) {
          if (p.s + ds / 2 > zone.from && p.s + ds / 2 < zone.to) {
            p.bound2 = std::min(p.bound2, zone.speed * zone.speed);
            p.zone2 = std::min(p.zone2, zone.speed * zone.speed);
            p.tangential = std::min(p.tangential, zone.tangential);
          }
        }
        grid.push_back(p);
      }
    }
    if (corners[i] && first > 0) {
      grid[first].bound2 = 0;
    }
    arc = end;
  }
  grid.push_back({arc, 0, 0, 0, 0, 0});
  auto tangential = [&](const Point& p, double u) {
    const double a = static_cast<double>(linear.maxAcceleration);
    return std::min(std::sqrt(std::max(0.0, a * a - p.k * p.k * u * u)), p.tangential);
  };
  std::vector<double> u(grid.size(), 0.0);
  for (std::size_t i = 0; i + 1 < grid.size(); ++i) {
    // A zone's bound holds on its steps' both ends.
    u[i + 1] = std::min({grid[i + 1].bound2, grid[i].zone2,
                         u[i] + 2 * grid[i].ds * tangential(grid[i], u[i])});
  }
  for (std::size_t i = grid.size() - 1; i-- > 0;) {
    u[i] = std::min(u[i], u[i + 1] + 2 * grid[i].ds * tangential(grid[i], u[i + 1]));
    time += 2 * grid[i].ds / (std::sqrt(u[i]) + std::sqrt(u[i + 1]) + 1e-300);
  }
  return time;
}

// Every millisecond: limits held, positions moving no faster than the
// speed, velocity (x, y) stepping by no more than the acceleration allows,
// and the rotation rate changing over any one period by no more than the
// rotation acceleration allows in a period.
void expectSmoothAndWithinLimits(const KRTrajectoryPose2D& t, const Limits& linear = kLinear,
                                 const Limits& angular = kAngular, double period = 0.01) {
  const double dt = 1e-3;
  const int perPeriod = static_cast<int>(std::lround(period / dt));
  const double end = toSeconds(t.duration());
  const double slack = 1 + 1e-5;
  const double v = static_cast<double>(linear.maxVelocity) * slack;
  const double a = static_cast<double>(linear.maxAcceleration) * slack;
  const double w = static_cast<double>(angular.maxVelocity) * slack;
  const double alpha = static_cast<double>(angular.maxAcceleration) * slack;
  std::vector<double> rates{static_cast<double>(t.stateAt(0.0).velocity.theta)};
  Pose2DPosVelAcc previous = t.stateAt(0.0);
  int bad = 0;
  for (int i = 1; i * dt <= end + dt && bad < 5; ++i) {
    const double time = i * dt;
    const Pose2DPosVelAcc s = t.stateAt(time);
    rates.push_back(static_cast<double>(s.velocity.theta));
    const double speed = static_cast<double>(std::hypot(s.velocity.x, s.velocity.y));
    const double periodAgo = rates[static_cast<std::size_t>(std::max(0, i - perPeriod))];
    const bool ok =
        speed <= v && static_cast<double>(std::hypot(s.acceleration.x, s.acceleration.y)) <= a &&
        static_cast<double>(std::fabs(s.velocity.theta)) <= w &&
        static_cast<double>(std::fabs(s.acceleration.theta)) <= alpha &&
        speed <= t.speedBoundAt(time) * slack + 1e-6 &&
        static_cast<double>(std::hypot(s.velocity.x - previous.velocity.x,
                                       s.velocity.y - previous.velocity.y)) <= a * dt + 1e-6 &&
        static_cast<double>(std::hypot(s.position.x - previous.position.x,
                                       s.position.y - previous.position.y)) <= v * dt + 1e-6 &&
        std::fabs(rates.back() - periodAgo) <= alpha * period + 1e-6;
    if (!ok) {
      ++bad;
      ADD_FAILURE() << "at " << time << " s: " << s << " after " << previous << ", rate "
                    << periodAgo << " a period before";
    }
    previous = s;
  }
}

// The distance from (x, y) to a path of lines and arcs: to each segment's
// nearest point, an arc's found from its centre.
double distanceToPath(const KRPath2D& path, double x, double y) {
  double nearest = std::numeric_limits<double>::infinity();
  for (const Segment2D& segment : path.segments()) {
    const double ax = static_cast<double>(segment.start.x);
    const double ay = static_cast<double>(segment.start.y);
    const Pose2D b = segment.endPose();
    double d = std::min(std::hypot(x - ax, y - ay),
                        std::hypot(x - static_cast<double>(b.x), y - static_cast<double>(b.y)));
    const double k = static_cast<double>(segment.curvature);
    const double ux = std::cos(static_cast<double>(segment.start.theta));
    const double uy = std::sin(static_cast<double>(segment.start.theta));
    if (k == 0) {
      const double along = (x - ax) * ux + (y - ay) * uy;
      if (along > 0 && along < static_cast<double>(segment.length)) {
        d = std::min(d, std::fabs((y - ay) * ux - (x - ax) * uy));
      }
    } else {
      const double cx = ax - uy / k;
      const double cy = ay + ux / k;
      // The angle swept from the start about the centre, the way it turns.
      const double swept = std::atan2(y - cy, x - cx) - std::atan2(ay - cy, ax - cx);
      const double turned =
          std::fmod(std::fmod(k > 0 ? swept : -swept, 2 * M_PI) + 2 * M_PI, 2 * M_PI);
      if (turned / std::fabs(k) < static_cast<double>(segment.length)) {
        d = std::min(d, std::fabs(std::hypot(x - cx, y - cy) - 1 / std::fabs(k)));
      }
    }
    nearest = std::min(nearest, d);
  }
  return nearest;
}

// Every millisecond, the robot lies within `tolerance` of the path it was
// given (and the float rounding of its coordinates).
void expectWithinTolerance(const KRDirectTrajectoryPose2D& t, double tolerance) {
  const double end = toSeconds(t.duration());
  int bad = 0;
  for (double time = 0; time <= end && bad < 5; time += 1e-3) {
    const Pose2D p = t.stateAt(time).position;
    const double x = static_cast<double>(p.x);
    const double y = static_cast<double>(p.y);
    const double slack = 1e-6 * (1 + std::fabs(x) + std::fabs(y));
    const double d = distanceToPath(t.describedPath(), x, y);
    if (!(d <= tolerance + slack)) {
      ++bad;
      ADD_FAILURE() << "at " << time << " s the robot is at " << p << ", " << d
                    << " m from the described path";
    }
  }
}

using Pieces = std::function<void(TrajectoryFactory&)>;

// The fastest trajectory along the pieces `add` lays out, from `start`: of a
// base facing along the path, or of a holonomic one turning by `rotation`.
std::unique_ptr<KRDirectTrajectoryPose2D> fastest(bool facing, const Pieces& add,
                                                  float tolerance = 0.0f,
                                                  const Pose2DPosVelAcc& start = Pose2DPosVelAcc(),
                                                  float rotation = 0.0f,
                                                  const Limits& linear = kLinear,
                                                  const Limits& angular = kAngular,
                                                  const RationalSeconds& period = kPeriod) {
  if (facing) {
    NonHolonomicTrajectoryFactory factory(linear, angular, period, 1.0f);
    factory.setBlendTolerance(tolerance);
    add(factory);
    return own(factory.getTrajectoryBuilder(kFastest)(start));
  }
  HolonomicTrajectoryFactory factory(linear, angular, period, 1.0f);
  factory.setBlendTolerance(tolerance);
  add(factory);
  return std::unique_ptr<KRDirectTrajectoryPose2D>(
      factory.getTrajectoryBuilder(rotation, kFastest)(start));
}

struct PathCase {
  const char* name;
  Pieces add;
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
    {"tight arcs",
     [](TrajectoryFactory& f) {
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
    // Still speeding up from rest where the curvature jumps: the jump and
    // the speeding up share the rotation acceleration within one period.
    {"arc into a tighter arc",
     [](TrajectoryFactory& f) {
       f.addCircle({0, 0.1f}, 5e-4f);
       f.addCircle({0, 1 / 11.0f}, 1);
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
      for (const float tolerance : {0.0f, 0.01f}) {
        SCOPED_TRACE(std::string(c.name) + (facing ? ", non-holonomic" : ", holonomic") +
                     (tolerance > 0 ? ", blended" : ""));
        const auto t = fastest(facing, c.add, tolerance);
        const double seconds = toSeconds(t->duration());
        const double reference = referenceTime(t->path(), kLinear, kAngular, facing);
        EXPECT_LE(seconds, reference * 1.01 + 0.01) << reference;
        EXPECT_GE(seconds, reference * 0.999) << reference;
        if (facing && c.expectedNonHolonomic > 0) {
          EXPECT_NEAR(seconds, c.expectedNonHolonomic, 0.01);
        }
        EXPECT_EQ(t->minimumDuration().count(), t->duration().count());
        expectSmoothAndWithinLimits(*t);
        expectWithinTolerance(*t, static_cast<double>(tolerance));
      }
    }
  }
}

// A line, a tangent quarter arc of radius 1 m and a line: a non-holonomic
// base all but stops at both joints on the exact path, and with 1 cm of
// tolerance drives through them on clothoids at nearly the holonomic pace
// (12.15 s, stopping nowhere), within 2 % of it.
TEST(TrajectoryBlend, ACentimetreKeepsTheSpeedThroughTangentJoints) {
  auto durationWith = [](float tolerance) {
    const auto t = fastest(
        true,
        [](TrajectoryFactory& f) {
          f.addLine({2, 0});
          f.addCircle({0, 1}, kPi / 2);
          f.addLine({2, 0});
        },
        tolerance);
    EXPECT_EQ(t->describedPath().segments().size(), 3u);
    int clothoids = 0;
    for (const Segment2D& segment : t->path().segments()) {
      clothoids += segment.sharpness != 0.0f;
    }
    EXPECT_EQ(clothoids > 0, tolerance > 0);
    return toSeconds(t->duration());
  };
  // Collinear lines leave nothing to blend: the path driven is the one
  // described.
  const auto t = fastest(true, [](TrajectoryFactory& f) { collinear(f, 3, 1.0f); }, 0.01f);
  EXPECT_EQ(&t->path(), &t->describedPath());
  const double exact = durationWith(0.0f);
  const double blended = durationWith(0.01f);
  EXPECT_GT(exact, 14.0);
  EXPECT_LE(blended, 12.15 * 1.02);
  EXPECT_LT(durationWith(0.001f), exact);
}

// Joints far outside what the property test draws: corners up to a half
// turn, radii from 1 um to 1 km, pieces from 1 um to 10 km, tolerances from
// 1 nm to 100 m, far from the origin. Every motion is built (a transition
// that cannot be solved is left out, never looped on), ends exactly at the
// described end and stays within the tolerance where it was sampled.
TEST(TrajectoryBlend, ExtremeJointsAreBlendedOrLeftAsTheyAre) {
  std::mt19937 random(97);
  auto logUniform = [&](double low, double high) {
    return static_cast<float>(
        std::exp(std::uniform_real_distribution<double>(std::log(low), std::log(high))(random)));
  };
  auto sign = [&] { return random() % 2 ? 1.0f : -1.0f; };
  int blended = 0;  // clothoid segments driven
  for (int n = 0; n < 300; ++n) {
    const float tolerance = logUniform(1e-9, 100);
    const float turn = sign() * static_cast<float>(std::uniform_real_distribution<double>(
                                    0, static_cast<double>(kPi))(random));
    const float length = logUniform(1e-6, 1e4);
    const float radius = logUniform(1e-6, 1e3);
    const Pose2D start(sign() * logUniform(1e-3, 1e5), sign() * logUniform(1e-3, 1e5), turn);
    SCOPED_TRACE("case " + std::to_string(n));
    for (const bool facing : {true, false}) {
      const auto add = [&](TrajectoryFactory& f) {
        f.addLine({length, 0});
        f.addLine({length * std::cos(turn), length * std::sin(turn)});
        f.addCircle({0, sign() * radius}, turn);
        f.addLine({length, 0});
      };
      const auto t = fastest(facing, add, tolerance, at(start));
      const Pose2D end = t->describedPath().endPose();
      const Pose2D reached = t->stateAt(toSeconds(t->duration())).position;
      EXPECT_EQ(reached.x, end.x);
      EXPECT_EQ(reached.y, end.y);
      for (const Segment2D& segment : t->path().segments()) {
        blended += segment.sharpness != 0.0f;
        for (const float share : {0.25f, 0.5f, 0.75f, 1.0f}) {
          const Pose2D p = segment.poseAt(share * segment.length);
          const double x = static_cast<double>(p.x);
          const double y = static_cast<double>(p.y);
          EXPECT_LE(distanceToPath(t->describedPath(), x, y),
                    static_cast<double>(tolerance) + 1e-6 * (1 + std::fabs(x) + std::fabs(y)));
        }
      }
    }
  }
  EXPECT_GT(blended, 100);  // clothoids: many joints were blended
}

// Square corners: a wheeled base would crawl round them on a transition
// within 1 cm far longer than it takes to stop and turn, so it stops; a
// holonomic base drives round them within 10 cm faster than it stops.
TEST(TrajectoryBlend, ACornerIsBlendedOnlyWhereThatIsQuicker) {
  auto seconds = [](bool facing, float tolerance) {
    const auto square = [](TrajectoryFactory& f) {
      f.addLine({1, 0});
      f.addLine({0, 1});
      f.addLine({0, 1});
    };
    return toSeconds(fastest(facing, square, tolerance)->duration());
  };
  EXPECT_EQ(seconds(true, 0.01f), seconds(true, 0.0f));
  EXPECT_LT(seconds(false, 0.1f), seconds(false, 0.0f) - 0.5);
}

TEST(TrajectoryBlend, AToleranceMustBeFiniteAndNotNegative) {
  NonHolonomicTrajectoryFactory factory(kLinear, kAngular, kPeriod, 1.0f);
  factory.setBlendTolerance(0.25f);
  for (const float bad : {-1e-9f, kNaN, std::numeric_limits<float>::infinity()}) {
    EXPECT_EQ(messageOf([&] { factory.setBlendTolerance(bad); }),
              "A trajectory factory's blend tolerance must be finite and not negative, got " +
                  std::to_string(bad) + ".");
    EXPECT_EQ(factory.blendTolerance(), 0.25f);
  }
  factory.setBlendTolerance(0.0f);
  EXPECT_EQ(factory.blendTolerance(), 0.0f);
}

// Generated paths for both kinds, under several limits and periods: lines
// (straight on or round a corner), arcs of both signs with radii from 5 cm
// to 5 m, flats, pieces from 0.1 mm to 1.5 m and bursts of arcs of 10 um to
// 1 mm turning either way; three in four with a blend tolerance from 0.1 mm
// to 5 cm. At every millisecond each limit holds and the robot is within
// the tolerance of the described path; the motion ends at rest exactly
// where the described path ends, and it takes the reference's time along
// the path driven within 1 % and one period.
TEST(TrajectoryProfile, GeneratedPathsKeepEveryLimitAndTheReferenceTime) {
  std::mt19937 random(2711);
  auto uniform = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  auto logUniform = [&](double low, double high) {
    return static_cast<float>(std::exp(uniform(std::log(low), std::log(high))));
  };
  const struct {
    Limits linear, angular;
    int periodMs;
  } settings[] = {{kLinear, kAngular, 10},
                  {Limits(1.0f, 2.0f), Limits(0.5f, 0.3f), 20},
                  {Limits(0.2f, 1.0f), Limits(2.0f, 5.0f), 5}};
  for (int n = 0; n < 60; ++n) {
    const auto& setting = settings[n % 3];
    const RationalSeconds period(boost::rational<int>(setting.periodMs, 1000));
    std::vector<Pieces> pieces;
    const int count = 1 + static_cast<int>(random() % 5);
    for (int i = 0; i < count; ++i) {
      const float length = logUniform(1e-4, 1.5);
      const float side = random() % 2 ? 1.0f : -1.0f;
      const float radius = logUniform(0.05, 5.0);
      const float angle = side * std::min(2.0f, length / radius);
      switch (random() % 5) {
        case 0:
          pieces.push_back([=](TrajectoryFactory& f) { f.addLine({length, 0}); });
          break;
        case 1: {
          const float turn = static_cast<float>(uniform(-2.5, 2.5));
          pieces.push_back([=](TrajectoryFactory& f) {
            f.addLine({length * std::cos(turn), length * std::sin(turn)});
          });
          break;
        }
        case 2:
          pieces.push_back([=](TrajectoryFactory& f) { f.addCircle({0, side * radius}, angle); });
          break;
        case 3: {
          // Arcs turning either way, each far shorter than a period's travel,
          // so that the jumps of one period add up.
          const float tiny = logUniform(1e-5, 1e-3);
          pieces.push_back([=](TrajectoryFactory& f) {
            for (int j = 0; j < 6; ++j) {
              const float turn = j % 2 ? -side : side;
              f.addCircle({0, turn * radius}, turn * tiny / radius);
            }
          });
          break;
        }
        default:
          pieces.push_back([=](TrajectoryFactory& f) {
            f.addFlat({0, side * radius}, angle, {2 * length, side * length},
                      {2 * length, -side * radius}, -angle);
          });
      }
    }
    const Pose2D start(static_cast<float>(uniform(-5, 5)), static_cast<float>(uniform(-5, 5)),
                       static_cast<float>(uniform(-3, 3)));
    const float tolerance = n % 4 == 3 ? 0.0f : logUniform(1e-4, 0.05);
    for (const bool facing : {true, false}) {
      SCOPED_TRACE("path " + std::to_string(n) + (facing ? ", non-holonomic" : ", holonomic") +
                   ", blend tolerance " + std::to_string(tolerance));
      const float rotation = facing ? 0.0f : static_cast<float>(uniform(-3, 3));
      const auto addAll = [&](TrajectoryFactory& f) {
        for (const auto& piece : pieces) {
          piece(f);
        }
      };
      const auto t = fastest(facing, addAll, tolerance, at(start), rotation, setting.linear,
                             setting.angular, period);
      const float endTheta =
          facing ? t->describedPath().endPose().theta : start.theta + rotation;
      // The holonomic rotation's own time.
      const double turning = restToRest(std::fabs(static_cast<double>(rotation)),
                                        static_cast<double>(setting.angular.maxVelocity),
                                        static_cast<double>(setting.angular.maxAcceleration));
      const double seconds = toSeconds(t->duration());
      const double reference =
          std::max(turning, referenceTime(t->path(), setting.linear, setting.angular, facing,
                                          toSeconds(period)));
      // The grid's own error, a few parts in a thousand, both ways.
      EXPECT_LE(seconds, reference * 1.01 + toSeconds(period)) << reference;
      EXPECT_GE(seconds, reference * 0.995) << reference;
      const Pose2D end = t->describedPath().endPose();
      EXPECT_EQ(t->stateAt(seconds), at(Pose2D(end.x, end.y, endTheta)));
      EXPECT_EQ(t->path().startPose(), start);
      expectSmoothAndWithinLimits(*t, setting.linear, setting.angular, toSeconds(period));
      expectWithinTolerance(*t, static_cast<double>(tolerance));
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
  const auto t = own(factory.getTrajectoryBuilder(kFastest)(start));
  // Cruise 2.75 m, then 1 s down; the start acceleration is not used.
  EXPECT_EQ(t->duration().count(), boost::rational<int>(13, 2));
  EXPECT_EQ(factory.minimumDuration(start).count(), t->duration().count());
  const Pose2DPosVelAcc at0 = t->stateAt(0.0);
  EXPECT_EQ(at0.position, start.position);
  EXPECT_EQ(at0.velocity, start.velocity);
  EXPECT_EQ(at0.acceleration, Pose2D());
  expectSmoothAndWithinLimits(*t);

  HolonomicTrajectoryFactory omni(kLinear, kAngular, kPeriod, 1.0f);
  omni.addLine({0, 2});
  const Pose2DPosVelAcc sideways = moving(0, 0.4f, 0.0f, 0.5f);
  const auto h = own(omni.getTrajectoryBuilder(1.0f, kFastest)(sideways));
  EXPECT_EQ(h->stateAt(0.0).velocity, sideways.velocity);
  expectSmoothAndWithinLimits(*h);
}

TEST(TrajectoryProfile, AnInfeasibleStartVelocityFailsWithItsMessage) {
  const float wheeled = std::nanf("");  // else the holonomic rotation
  const auto movingAt = [](const std::string& velocity) {
    return "A trajectory cannot start moving at (" + velocity +
           ") m/s: its path starts in the direction 0.000000 rad.";
  };
  const auto cannotStop = [](const std::string& speed) {
    return "A trajectory starting at " + speed +
           " cannot stop in time: within the limits it can start at 0.447214 at most.";
  };
  const struct {
    const char* name;
    Pose2DPosVelAcc start;
    Position2D end;
    float rotation;
    std::string message;
  } cases[] = {
      {"sideways for a wheeled base", moving(0, 0.3f), Position2D(2, 0), wheeled,
       movingAt("0.000000, 0.300000")},
      {"backwards", moving(-0.3f, 0), Position2D(2, 0), wheeled, movingAt("-0.300000, 0.000000")},
      {"above the speed limit", moving(0.6f, 0), Position2D(2, 0), wheeled,
       "A trajectory cannot start at 0.600000: the limits allow at most 0.500000 there."},
      {"too fast to stop in 0.2 m", moving(0.5f, 0), Position2D(0.2f, 0), wheeled,
       cannotStop("0.500000")},
      {"moving into a corner at the start", moving(0.3f, 0), Position2D(1, 1), wheeled,
       "A trajectory moving at the start cannot turn on the spot first: its path starts in "
       "another direction."},
      {"not finite", moving(std::nanf(""), 0), Position2D(2, 0), wheeled,
       "A trajectory cannot start with a velocity that is not finite."},
      {"turning against the rotation", moving(0.3f, 0, 0, -0.5f), Position2D(2, 0), 1.0f,
       "A turn of 1.000000 rad cannot start turning the other way, at -0.500000 rad/s."},
      {"turning too fast to stop within the rotation", moving(0.3f, 0, 0, 1.0f), Position2D(2, 0),
       0.1f, cannotStop("1.000000")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto line = [&c](TrajectoryFactory& f) { f.addLine(c.end); };
    const bool facing = std::isnan(c.rotation);
    EXPECT_EQ(messageOf([&] { fastest(facing, line, 0.0f, c.start, facing ? 0.0f : c.rotation); }),
              c.message);
  }
}

// ---- Durations ---------------------------------------------------------------

TEST(TrajectoryDuration, AskedOrFastestInWholePeriods) {
  const struct {
    Position2D end;
    float fraction;
    RationalSeconds asked, expected;
  } cases[] = {
      {{0.5f, 0}, 1.0f, seconds(0), seconds(71, 50)},     // 2 sqrt(0.5) = 1.414 -> 142 ticks
      {{1, 0}, 1.0f, seconds(401, 200), seconds(201, 100)},  // asked 200.5 ticks -> 201
      {{1, 0}, 0.5f, seconds(0), seconds(3)},             // 1 s up, 1 s cruise, 1 s down
      {{0, 1}, 1.0f, seconds(0), seconds(458, 100)},      // turn 1 + pi/2 s, then 2 s
      {{0, 0}, 1.0f, seconds(INT_MAX), seconds(INT_MAX)},
  };
  for (const auto& c : cases) {
    NonHolonomicTrajectoryFactory factory(kUnit, kUnit, kPeriod, c.fraction);
    factory.addLine(c.end);
    const auto t = own(factory.getTrajectoryBuilder(c.asked)(at(Pose2D())));
    EXPECT_EQ(t->duration().count(), c.expected.count()) << c.end << " " << c.fraction;
    expectAtRest(t->stateAt(toSeconds(t->duration())),
                 {c.end.x, c.end.y, std::atan2(c.end.y, c.end.x)});
  }
}

// ---- Kinds of trajectory -------------------------------------------------------

// A U-turn ends facing the path's last heading value, whatever the start
// heading's float rounding.
TEST(TrajectoryGeometry, UTurnEndsOnThePathsHeading) {
  NonHolonomicTrajectoryFactory back(kUnit, kUnit, kPeriod, 1.0f);
  back.addLine({1, 0});
  back.addLine({-1, 0});
  for (const float heading : {0.0f, 0.3f, 1.1f, -2.5f, 5.7f}) {
    const auto u = own(back.getTrajectoryBuilder(kFastest)(at(Pose2D(0, 0, heading))));
    EXPECT_NEAR(u->path().endPose().theta, heading + kPi, 1e-5);
    expectAtRest(u->stateAt(100.0), u->path().endPose());
  }
}

TEST(TrajectoryGeometry, HolonomicTurnsAsAskedWhileFollowingThePath) {
  HolonomicTrajectoryFactory factory(kUnit, kUnit, kPeriod, 1.0f);
  factory.addLine({1, 0});
  // Turning 4 rad takes 1 + 3 + 1 s, longer than the 2 s of the line.
  const auto t = own(factory.getTrajectoryBuilder(-4.0f, kFastest)(at(Pose2D(0, 0, 0.3f))));
  EXPECT_EQ(t->duration().count(), boost::rational<int>(5));
  EXPECT_EQ(t->rotation(), -4.0f);
  expectAtRest(t->stateAt(0.0), {0, 0, 0.3f});
  expectAtRest(t->stateAt(5.0), {std::cos(0.3f), std::sin(0.3f), 0.3f - 4.0f});
  // The 2 s line is slowed down 2.5 times: halfway at 2.5 s at 1 / 2.5 m/s,
  // while the rotation cruises.
  const Pose2DPosVelAcc middle = t->stateAt(2.5);
  expectPose(middle.position, {0.5f * std::cos(0.3f), 0.5f * std::sin(0.3f), 0.3f - 2.0f});
  EXPECT_NEAR(std::hypot(middle.velocity.x, middle.velocity.y), 0.4f, 1e-5);
  EXPECT_NEAR(middle.velocity.theta, -1.0f, 1e-5);

  HolonomicTrajectoryFactory still(kUnit, kUnit, kPeriod, 1.0f);
  const auto spin = own(still.getTrajectoryBuilder(kPi, kFastest)(at(Pose2D(1, 1, 0))));
  expectAtRest(spin->stateAt(100.0), {1, 1, kPi});
}

TEST(TrajectoryGeometry, BuildersOutliveTheirFactory) {
  DirectTrajectoryPose2DBuilder wheeled;
  TrajectoryPose2DHolonomicBuilder omni;
  {
    NonHolonomicTrajectoryFactory a(kUnit, kUnit, kPeriod, 1.0f);
    a.addCircle({0, 1}, kPi);
    wheeled = a.getTrajectoryBuilder(kFastest);
    a.addLine({5, 0});  // later additions do not change the builder
    HolonomicTrajectoryFactory b(kUnit, kUnit, kPeriod, 1.0f);
    b.addLine({1, 0});
    omni = b.getTrajectoryBuilder(1.0f, kFastest);
  }
  expectAtRest(own(wheeled(at(Pose2D())))->stateAt(1e6), {0, 2, kPi});
  expectAtRest(own(omni(at(Pose2D())))->stateAt(1e6), {1, 0, 1});
}

TEST(TrajectoryGeometry, ComposedRunsOneAfterTheOther) {
  NonHolonomicTrajectoryFactory a(kUnit, kUnit, kPeriod, 1.0f);
  a.addLine({1, 0});
  HolonomicTrajectoryFactory b(kUnit, kUnit, kPeriod, 1.0f);
  b.addLine({1, 0});
  // The holonomic piece ends facing +y, so the last line runs along +y.
  const auto builder = TrajectoryFactory::getComposedTrajectoryBuilder(
      {a.getTrajectoryBuilder(seconds(3)), b.getTrajectoryBuilder(kPi / 2, seconds(3)),
       a.getTrajectoryBuilder(kFastest)});
  // The first piece starts with the start velocity, arrives early (1.63 s)
  // and rests; every hand-over is at rest.
  const Pose2DPosVelAcc rolling(Pose2D(), Pose2D(0.5f, 0, 0), Pose2D());
  const auto t = own(builder(rolling));
  EXPECT_EQ(t->stateAt(0.0).velocity, rolling.velocity);
  EXPECT_EQ(t->duration().count(), boost::rational<int>(3 + 3 + 2));
  EXPECT_EQ(t->minimumDuration().count(), boost::rational<int>(163 + 258 + 200, 100));
  expectAtRest(t->stateAt(3.0), {1, 0, 0});
  expectAtRest(t->stateAt(6.0), {2, 0, kPi / 2});
  expectAtRest(t->stateAt(8.0), {2, 1, kPi / 2});
  expectPose(t->stateAt(7.0).position, {2, 0.5f, kPi / 2});

  const auto empty = own(TrajectoryFactory::getComposedTrajectoryBuilder({})(at(Pose2D(1, 2, 3))));
  EXPECT_EQ(empty->duration().count(), boost::rational<int>(0));
  expectAtRest(empty->stateAt(1.0), {1, 2, 3});

  const auto withHole = TrajectoryFactory::getComposedTrajectoryBuilder(
      {a.getTrajectoryBuilder(kFastest), DirectTrajectoryPose2DBuilder()});
  EXPECT_THROW(withHole(at(Pose2D())), boost::bad_function_call);
}

TEST(TrajectoryGeometry, InvalidSettingsAndStartsFailWithTheirMessages) {
  const auto limitsMessage = [](const char* which, const char* numbers) {
    return std::string("A trajectory factory's ") + which +
           " limits must be finite and positive, got " + numbers + ".";
  };
  HolonomicTrajectoryFactory factory(kUnit, kUnit, kPeriod, 1.0f);
  factory.addLine({1, 0});
  NonHolonomicTrajectoryFactory slow(Limits(1e-3f, 1.0f), kUnit, kPeriod, 1.0f);
  slow.addLine({1e8f, 0});
  const struct {
    const char* name;
    std::function<void()> make;
    std::string message;
  } rows[] = {
      {"first limits", [] { NonHolonomicTrajectoryFactory(Limits(0, 1), kUnit, kPeriod, 1.0f); },
       limitsMessage("first", "velocity 0.000000 and acceleration 1.000000")},
      {"second limits",
       [] { HolonomicTrajectoryFactory(kUnit, Limits(1, -INFINITY), kPeriod, 1.0f); },
       limitsMessage("second", "velocity 1.000000 and acceleration -inf")},
      {"NaN limit", [] { HolonomicTrajectoryFactory(Limits(kNaN, 1), kUnit, kPeriod, 1.0f); },
       limitsMessage("first", "velocity nan and acceleration 1.000000")},
      {"period", [] { NonHolonomicTrajectoryFactory(kUnit, kUnit, seconds(0), 1.0f); },
       "A trajectory factory's period must be positive."},
      {"fraction 0", [] { NonHolonomicTrajectoryFactory(kUnit, kUnit, kPeriod, 0.0f); },
       "A trajectory factory's fraction of limits must be in (0, 1], got 0.000000."},
      {"fraction above 1", [] { HolonomicTrajectoryFactory(kUnit, kUnit, kPeriod, 1.0000001f); },
       "A trajectory factory's fraction of limits must be in (0, 1], got 1.000000."},
      {"fraction NaN", [] { NonHolonomicTrajectoryFactory(kUnit, kUnit, kPeriod, kNaN); },
       "A trajectory factory's fraction of limits must be in (0, 1], got nan."},
      {"rotation", [&] { factory.getTrajectoryBuilder(kNaN, kFastest); },
       "A holonomic trajectory's rotation must be finite."},
      {"negative duration", [&] { factory.getTrajectoryBuilder(0.0f, seconds(-1, 100)); },
       "A trajectory's duration must not be negative."},
      {"start pose", [&] { factory.getTrajectoryBuilder(0.0f, kFastest)(at(Pose2D(0, kNaN, 0))); },
       "A trajectory cannot start at a pose that is not finite."},
      {"start velocity",
       [&] {
         factory.getTrajectoryBuilder(
             0.0f, kFastest)(Pose2DPosVelAcc(Pose2D(), Pose2D(0, 0, INFINITY), Pose2D()));
       },
       "A trajectory cannot start with a velocity that is not finite."},
      {"composed start",
       [] { TrajectoryFactory::getComposedTrajectoryBuilder({})(at(Pose2D(-INFINITY, 0, 0))); },
       "A trajectory cannot start at a pose that is not finite."},
      {"end orientation",
       [&] { factory.getTrajectoryBuilder(1e38f, kFastest)(at(Pose2D(0, 0, 3e38f))); },
       "A holonomic trajectory would end at an orientation out of range."},
      // A motion lasting far longer than an int number of periods: 1e8 m at
      // 1e-3 m/s, plus 1e-3 s to speed up and slow down.
      {"too long", [&] { slow.getTrajectoryBuilder(kFastest)(at(Pose2D())); },
       std::to_string(static_cast<long long>(
           std::ceil((1e8 / static_cast<double>(1e-3f) + static_cast<double>(1e-3f)) * 100))) +
           " periods of 1/100 s do not fit an exact fraction of ints."},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(messageOf(row.make), row.message);
  }
}

}  // namespace
