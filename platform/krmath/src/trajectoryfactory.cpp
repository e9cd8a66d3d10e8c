#include <kr/math/trajectory/trajectoryfactory.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "blend.h"
#include "pathgeometry.h"
#include "periods.h"
#include "speedprofile.h"
#include "trajectoryphase.h"

// The builders capture a composed-path builder and the settings by value, so
// they keep working after the factory is gone. A motion is planned as phases:
// runs along the path between stops, each one speed profile over its
// segments' bounds, and for a non-holonomic base turns on the spot at the
// corners between them. The duration is then the one asked for or the
// phases' own time, whichever is longer, in whole periods.

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

using Phase = KRDirectTrajectoryPose2D::Phase;

// A joint whose direction of travel jumps by more than this (radians) is a
// corner, where the robot stops; smaller jumps are the rounding of float
// headings and are driven through. The float rounding of a large heading
// value is added to it.
constexpr double kCornerTolerance = 1e-4;
// The share of the start speed that may point sideways of the direction it
// must follow (float rounding of a velocity handed over from another
// motion).
constexpr double kSidewaysTolerance = 1e-4;

double cornerTolerance(double heading) {
  return kCornerTolerance + 4.0 * static_cast<double>(FLT_EPSILON) * std::fabs(heading);
}

// The limits the motion may use (already times the fraction of limits), the
// tick and the duration asked for.
struct MotionSettings {
  double speed;
  double acceleration;
  double angularSpeed;
  double angularAcceleration;
  RationalSeconds period;
  RationalSeconds asked;
  double blendTolerance;  // meters; 0 follows the described path exactly
};

// The factory's limits times its fraction of limits, and the duration asked for.
MotionSettings settingsOf(const TrajectoryFactory& factory, const RationalSeconds& asked) {
  const double fraction = static_cast<double>(factory.fractionOfLimits());
  return {fraction * static_cast<double>(factory.firstLimits().maxVelocity),
          fraction * static_cast<double>(factory.firstLimits().maxAcceleration),
          fraction * static_cast<double>(factory.secondLimits().maxVelocity),
          fraction * static_cast<double>(factory.secondLimits().maxAcceleration),
          factory.period(),
          asked,
          static_cast<double>(factory.blendTolerance())};
}

void requireValid(const Limits& limits, const char* which) {
  const bool valid = std::isfinite(limits.maxVelocity) && limits.maxVelocity > 0.0f &&
                     std::isfinite(limits.maxAcceleration) && limits.maxAcceleration > 0.0f;
  if (!valid) {
    throw std::runtime_error(std::string("A trajectory factory's ") + which +
                             " limits must be finite and positive, got velocity " +
                             std::to_string(limits.maxVelocity) + " and acceleration " +
                             std::to_string(limits.maxAcceleration) + ".");
  }
}

void requireFiniteStart(const Pose2DPosVelAcc& start) {
  if (!isFinite(start.position)) {
    throw std::runtime_error("A trajectory cannot start at a pose that is not finite.");
  }
  if (!isFinite(start.velocity)) {
    throw std::runtime_error("A trajectory cannot start with a velocity that is not finite.");
  }
}

// On a clothoid the share of the rotation acceleration limit that c v^2 may
// take; k a gets the rest. A blend is mostly driven through at a steady
// speed, so most of it goes to c v^2.
constexpr double kSharpnessShare = 0.8;

// How the curvature runs along a segment: where it starts and ends
// (signed) and how fast it changes (|sharpness|, 0 but on a clothoid).
struct CurvatureRun {
  double start;
  double end;
  double sharpness;
  /// The sum of the sizes of the whole segment's end curvatures: the float
  /// rounding of its curvature along it is a few ulps of this.
  double scale;

  double largest() const { return std::max(std::fabs(start), std::fabs(end)); }
};

// The curvature along `segment` from arc length `from` to `to`.
CurvatureRun curvatureRunOf(const Segment2D& segment, double from, double to) {
  return {segment.curvatureAt(from), segment.curvatureAt(to),
          std::fabs(static_cast<double>(segment.sharpness)),
          std::fabs(segment.curvatureAt(0.0)) +
              std::fabs(segment.curvatureAt(static_cast<double>(segment.length)))};
}

// The bounds on a clothoid hold at the larger end curvature of each span,
// so a clothoid is timed as this many spans, each close to the curvature
// along it.
constexpr int kClothoidSpans = 2;

// Whether the curvature jumps from `before` into `after`: more than the float
// rounding of a transition's knots, which joins its clothoids (a curvature
// passing through 0 is rounded as its ends are).
bool curvatureJumps(const CurvatureRun& before, const CurvatureRun& after) {
  const double rounding = 8.0 * static_cast<double>(FLT_EPSILON) * (before.scale + after.scale);
  return std::fabs(after.start - before.end) > rounding;
}

// The bounds along `segment`: the speed limit and, on a curve, the share of
// the acceleration the centripetal part leaves at its largest curvature; a
// base turning with the path also keeps its turning rate k v and its
// angular acceleration within the rotation limits. On an arc that
// acceleration is k a; on a clothoid of sharpness c it is c v^2 + k a, and
// c v^2 gets kSharpnessShare of the limit, k a the rest.
SpeedSpan spanOf(double length, const CurvatureRun& run, const MotionSettings& settings,
                 bool turnsWithPath) {
  SpeedSpan span;
  span.length = length;
  span.maxSpeed = settings.speed;
  span.curvature = run.largest();
  span.maxTangential = std::numeric_limits<double>::infinity();
  if (!turnsWithPath) {
    return span;
  }
  const double alpha = settings.angularAcceleration;
  if (run.sharpness > 0.0) {
    span.maxSpeed = std::min(span.maxSpeed, std::sqrt(kSharpnessShare * alpha / run.sharpness));
  }
  if (span.curvature > 0.0) {
    span.maxSpeed = std::min(span.maxSpeed, settings.angularSpeed / span.curvature);
    span.maxTangential =
        (run.sharpness > 0.0 ? 1.0 - kSharpnessShare : 1.0) * alpha / span.curvature;
  }
  return span;
}

// A zone about a joint where the curvature jumps, in arc length from the
// start of the run: the speed is at most `speed` and the tangential
// acceleration at most `tangential` on [from, to].
struct JumpZone {
  double at;  // the joint
  double from;
  double to;
  double speed;
  double tangential;
};

// The zones of a run's curvature jumps for a base turning with the path. Its
// turning rate w = k v jumps by |dk| v at once where the curvature jumps by dk
// (a line meeting an arc, arcs of other radii or turning the other way), and
// the rotation acceleration limit alpha holds as a controller ticking at the
// period T sees it: |w(t + T) - w(t)| <= alpha T. Half of that budget goes to
// the jumps a period can span, half to the change of speed within it:
// - about each joint, for T of travel at the zone's speed on both sides, the
//   speed is at most alpha T / (2 D), D the sum of the jumps within the
//   farthest any period can reach (the speed limit times T), so the jumps
//   of one period add up to at most alpha T / 2;
// - the tangential acceleration there is at most alpha / (2 max |k|) over
//   the zone, so k a adds at most alpha T / 2; where the zone overlaps a
//   clothoid, whose c v^2 adds to the rotation acceleration too, c v^2 and
//   k a each get alpha / 4 instead.
// A period that spans a joint lies within that joint's zone, since crossing
// the zone at its speed takes T; a period that spans none has a continuous
// curvature, where the segments' own bounds keep c v^2 + k a <= alpha.
std::vector<JumpZone> jumpZones(const std::vector<SpeedSpan>& segments,
                                const std::vector<CurvatureRun>& curvatures,
                                const MotionSettings& settings) {
  const double period = toSeconds(settings.period);
  const double reach = settings.speed * period;
  std::vector<double> starts(segments.size() + 1, 0.0);
  for (std::size_t i = 0; i < segments.size(); ++i) {
    starts[i + 1] = starts[i] + segments[i].length;
  }
  std::vector<std::size_t> joints;  // joint i starts segment i
  for (std::size_t i = 1; i < segments.size(); ++i) {
    if (curvatureJumps(curvatures[i - 1], curvatures[i])) {
      joints.push_back(i);
    }
  }
  auto jumpAt = [&](std::size_t i) {
    return std::fabs(curvatures[i].start - curvatures[i - 1].end);
  };
  std::vector<JumpZone> zones;
  zones.reserve(joints.size());
  std::size_t first = 0;  // the joints within reach: [first, last)
  std::size_t last = 0;
  double near = 0.0;  // the sum of their jumps
  for (const std::size_t joint : joints) {
    const double at = starts[joint];
    for (; last < joints.size() && starts[joints[last]] <= at + reach; ++last) {
      near += jumpAt(joints[last]);
    }
    for (; starts[joints[first]] < at - reach; ++first) {
      near -= jumpAt(joints[first]);
    }
    // At least the joint's own jump, whatever the running sum's rounding.
    const double sum = std::max(near, jumpAt(joint));
    const double alpha = settings.angularAcceleration;
    const double speed = std::min(settings.speed, alpha * period / (2.0 * sum));
    const double from = std::max(0.0, at - speed * period);
    const double to = std::min(starts.back(), at + speed * period);
    // The largest curvature and sharpness over the zone: the segments it
    // overlaps. A speed lowered by the sharpness only makes crossing the
    // zone take longer than T.
    double curvature = 0.0;
    double sharpness = 0.0;
    const std::size_t low = static_cast<std::size_t>(
        std::upper_bound(starts.begin(), starts.end(), from) - starts.begin() - 1);
    for (std::size_t i = std::min(low, segments.size() - 1); i < segments.size() && starts[i] < to;
         ++i) {
      curvature = std::max(curvature, curvatures[i].largest());
      sharpness = std::max(sharpness, curvatures[i].sharpness);
    }
    if (sharpness > 0.0) {
      zones.push_back({at, from, to, std::min(speed, std::sqrt(0.25 * alpha / sharpness)),
                       0.25 * alpha / curvature});
    } else {
      zones.push_back({at, from, to, speed, 0.5 * alpha / curvature});
    }
  }
  return zones;
}

// Cuts the jump zones out of the spans of a run (given with their
// curvatures): every span boundary and zone edge starts a span, capped by
// every zone that covers it. Without a zone the spans stay as they are.
void cutJumpZones(std::vector<SpeedSpan>& segments, const std::vector<CurvatureRun>& curvatures,
                  const MotionSettings& settings) {
  const std::vector<JumpZone> zones = jumpZones(segments, curvatures, settings);
  if (zones.empty()) {
    return;
  }
  std::vector<SpeedSpan> spans;
  spans.reserve(segments.size() + 2 * zones.size());
  // A zone reaches at most `reach` from its joint; the joints are in order.
  const double reach = settings.speed * toSeconds(settings.period);
  std::size_t nextZone = 0;  // the first zone that may reach this segment
  double start = 0.0;
  for (const SpeedSpan& segment : segments) {
    const double end = start + segment.length;
    while (nextZone < zones.size() && zones[nextZone].at + reach < start) {
      ++nextZone;
    }
    std::size_t pastZones = nextZone;  // the first zone that cannot reach it
    while (pastZones < zones.size() && zones[pastZones].at - reach <= end) {
      ++pastZones;
    }
    std::vector<double> cuts{start, end};
    for (std::size_t z = nextZone; z < pastZones; ++z) {
      for (const double edge : {zones[z].from, zones[z].to}) {
        if (edge > start && edge < end) {
          cuts.push_back(edge);
        }
      }
    }
    std::sort(cuts.begin(), cuts.end());
    for (std::size_t c = 0; c + 1 < cuts.size(); ++c) {
      if (!(cuts[c + 1] > cuts[c])) {
        continue;
      }
      SpeedSpan span = segment;
      span.length = cuts[c + 1] - cuts[c];
      const double middle = 0.5 * (cuts[c] + cuts[c + 1]);
      for (std::size_t z = nextZone; z < pastZones; ++z) {
        if (zones[z].from <= middle && middle <= zones[z].to) {
          span.maxSpeed = std::min(span.maxSpeed, zones[z].speed);
          span.maxTangential = std::min(span.maxTangential, zones[z].tangential);
        }
      }
      spans.push_back(span);
    }
    start = end;
  }
  segments.swap(spans);
}

// The start speed along `direction`, the path's first direction of travel.
// Throws std::runtime_error when the start velocity points elsewhere.
double startSpeedAlong(const Pose2DPosVelAcc& start, double direction) {
  const double vx = static_cast<double>(start.velocity.x);
  const double vy = static_cast<double>(start.velocity.y);
  const double speed = std::hypot(vx, vy);
  if (speed == 0.0) {
    return 0.0;
  }
  const double along = vx * std::cos(direction) + vy * std::sin(direction);
  const double sideways = vy * std::cos(direction) - vx * std::sin(direction);
  if (!(along > 0.0) || std::fabs(sideways) > kSidewaysTolerance * speed) {
    throw std::runtime_error("A trajectory cannot start moving at (" +
                             std::to_string(vx) + ", " + std::to_string(vy) +
                             ") m/s: its path starts in the direction " +
                             std::to_string(direction) + " rad.");
  }
  return speed;
}

// The phases along `path` starting at `startSpeed`: runs between corners and
// the end, and for a base turning with the path turns on the spot, the
// shorter way, at the corners (the start included). Paths made by
// PathFactory never turn by more than a half turn at a corner, so the
// orientation is then the path's heading value; otherwise it keeps the whole
// turns the robot skipped.
class PhasePlanner {
 public:
  PhasePlanner(const MotionSettings& settings, bool turnsWithPath)
      : settings_(settings), turnsWithPath_(turnsWithPath) {}

  std::vector<Phase> plan(const KRPath2D& path, double startSpeed) {
    const std::vector<Segment2D>& segments = path.segments();
    if (segments.empty()) {
      planSpeedProfile({}, settings_.acceleration, startSpeed);  // throws when moving
      return {};
    }
    startSpeed_ = startSpeed;
    double heading =
        static_cast<double>(turnsWithPath_ ? path.startPose().theta : segments[0].start.theta);
    double offset = 0.0;
    double arc = 0.0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
      const Segment2D& segment = segments[i];
      double turn = static_cast<double>(segment.start.theta) + offset - heading;
      // Headings are stored as floats, so a half turn (a U-turn) may come out
      // a rounding error above pi; only a corner clearly sharper is wrapped.
      const double slack = 1e-6 * (1.0 + std::fabs(heading));
      if (std::fabs(turn) > kPi + slack) {
        const double shorter = std::remainder(turn, 2.0 * kPi);
        if (turnsWithPath_) {
          offset += 2.0 * kPi * std::round((shorter - turn) / (2.0 * kPi));
        }
        turn = shorter;
      }
      if (std::fabs(turn) > cornerTolerance(heading)) {
        closeRun();
        if (turnsWithPath_) {
          addTurn(i, heading, turn);
        }
      }
      if (run_.segmentCount == 0) {
        run_.segment = i;
        run_.startArc = arc;
        run_.headingOffset = offset;
      }
      addSpans(segment);
      ++run_.segmentCount;
      arc += static_cast<double>(segment.length);
      heading = static_cast<double>(segment.endPose().theta) + offset;
    }
    closeRun();
    return std::move(phases_);
  }

 private:
  // The spans of one segment: one, or kClothoidSpans for a clothoid.
  void addSpans(const Segment2D& segment) {
    const double length = static_cast<double>(segment.length);
    const int count = segment.sharpness != 0.0f ? kClothoidSpans : 1;
    for (int i = 0; i < count; ++i) {
      const CurvatureRun run =
          curvatureRunOf(segment, length * i / count, length * (i + 1) / count);
      spans_.push_back(spanOf(length / count, run, settings_, turnsWithPath_));
      curvatures_.push_back(run);
    }
  }

  void append(Phase& phase) {
    phase.startTime = time_;
    time_ += phase.duration();
    phases_.push_back(std::move(phase));
  }

  void addTurn(std::size_t segment, double heading, double turn) {
    if (phases_.empty() && startSpeed_ > 0.0) {
      throw std::runtime_error("A trajectory moving at the start cannot turn on the spot first: "
                               "its path starts in another direction.");
    }
    Phase turning;
    turning.kind = Phase::Kind::Turn;
    turning.segment = segment;
    turning.fromHeading = heading;
    turning.turn = turn;
    turning.profile =
        planTurn(turn, 0.0, settings_.angularSpeed, settings_.angularAcceleration);
    append(turning);
  }

  // Ends the current run at rest; the first one starts at the start speed.
  void closeRun() {
    if (run_.segmentCount == 0) {
      return;
    }
    if (turnsWithPath_) {
      cutJumpZones(spans_, curvatures_, settings_);
    }
    const std::vector<SpeedSpan>& spans = spans_;
    run_.spanStarts.reserve(spans.size());
    run_.speedBounds.reserve(spans.size());
    double start = 0.0;
    for (const SpeedSpan& span : spans) {
      run_.spanStarts.push_back(start);
      run_.speedBounds.push_back(speedBound(span, settings_.acceleration));
      start += span.length;
    }
    run_.profile = planSpeedProfile(spans, settings_.acceleration,
                                    phases_.empty() ? startSpeed_ : 0.0);
    append(run_);
    run_ = Phase();
    spans_.clear();
    curvatures_.clear();
  }

  MotionSettings settings_;
  bool turnsWithPath_;
  double startSpeed_ = 0.0;
  double time_ = 0.0;
  Phase run_;
  std::vector<SpeedSpan> spans_;          // the current run's, in order
  std::vector<CurvatureRun> curvatures_;  // their curvatures
  std::vector<Phase> phases_;
};

// The fastest motion's own time in whole periods (rounded up).
RationalSeconds minimumDurationOf(double ownTime, const MotionSettings& settings) {
  return wholePeriods(periodsCovering(ownTime, settings.period), settings.period);
}

// The duration asked for, or the minimum if that is longer.
RationalSeconds motionDuration(const RationalSeconds& minimum, const MotionSettings& settings) {
  const std::uint64_t needed = periodsCovering(minimum, settings.period);
  const std::uint64_t asked = periodsCovering(settings.asked, settings.period);
  return asked > needed ? wholePeriods(asked, settings.period) : minimum;
}

// The path the robot drives along `described` with its joints replaced by
// transitions (see blendedSegments); null without a blend tolerance or when
// no joint took a transition, when it drives `described` itself.
std::unique_ptr<KRPath2D> blendedPath(const KRPath2D& described, const MotionSettings& settings,
                                      bool turnsWithPath) {
  if (!(settings.blendTolerance > 0.0)) {
    return nullptr;
  }
  const BlendLimits limits{settings.speed,        settings.acceleration,
                           settings.angularSpeed, settings.angularAcceleration,
                           turnsWithPath,         kSharpnessShare};
  std::vector<Segment2D> segments =
      blendedSegments(described.segments(), settings.blendTolerance, limits);
  const bool blended = std::any_of(segments.begin(), segments.end(),
                                   [](const Segment2D& s) { return s.sharpness != 0.0f; });
  if (!blended) {
    return nullptr;
  }
  return std::make_unique<DrivenPath2D>(described.startPose(), std::move(segments));
}

// The path's first direction of travel; the start heading for no path.
double firstDirection(const KRPath2D& path) {
  return static_cast<double>(path.segments().empty() ? path.startPose().theta
                                                     : path.segments()[0].start.theta);
}

KRDirectTrajectoryPose2D* buildNonHolonomic(TrajectoryFactoryKey key,
                                            const Path2DComposedBuilder& pathBuilder,
                                            const MotionSettings& settings,
                                            const Pose2DPosVelAcc& start) {
  requireFiniteStart(start);
  std::unique_ptr<KRPath2D> described(pathBuilder(start.position));
  std::unique_ptr<KRPath2D> path = blendedPath(*described, settings, true);
  if (!path) {
    path = std::move(described);
  }
  // A base facing along the path moves along its orientation; a path that
  // starts elsewhere starts with a turn on the spot, from rest.
  const double speed = startSpeedAlong(start, static_cast<double>(start.position.theta));
  std::vector<Phase> phases = PhasePlanner(settings, true).plan(*path, speed);
  const RationalSeconds minimum = minimumDurationOf(ownTimeOf(phases), settings);
  return new KRDirectTrajectoryPose2D(key, std::move(path), std::move(phases),
                                      motionDuration(minimum, settings), minimum, start.velocity,
                                      std::move(described));
}

KRTrajectoryPose2DHolonomic* buildHolonomic(TrajectoryFactoryKey key,
                                            const Path2DComposedBuilder& pathBuilder,
                                            const MotionSettings& settings, float rotation,
                                            const Pose2DPosVelAcc& start) {
  requireFiniteStart(start);
  if (!(std::fabs(static_cast<double>(start.position.theta) + static_cast<double>(rotation)) <=
        static_cast<double>(FLT_MAX))) {
    throw std::runtime_error("A holonomic trajectory would end at an orientation out of range.");
  }
  std::unique_ptr<KRPath2D> described(pathBuilder(start.position));
  std::unique_ptr<KRPath2D> path = blendedPath(*described, settings, false);
  if (!path) {
    path = std::move(described);
  }
  const double speed = startSpeedAlong(start, firstDirection(*path));
  std::vector<Phase> phases = PhasePlanner(settings, false).plan(*path, speed);
  const double turnTime = profileDuration(
      planTurn(static_cast<double>(rotation), static_cast<double>(start.velocity.theta),
               settings.angularSpeed, settings.angularAcceleration));
  const RationalSeconds minimum =
      minimumDurationOf(std::max(ownTimeOf(phases), turnTime), settings);
  return new KRTrajectoryPose2DHolonomic(
      key, std::move(path), std::move(phases), motionDuration(minimum, settings), minimum, start,
      rotation, settings.angularSpeed, settings.angularAcceleration, std::move(described));
}

}  // namespace

TrajectoryFactory::TrajectoryFactory(const Limits& firstLimits, const Limits& secondLimits,
                                     const RationalSeconds& period, float fractionOfLimits)
    : firstLimits_(firstLimits),
      secondLimits_(secondLimits),
      period_(period),
      fractionOfLimits_(fractionOfLimits),
      blendTolerance_(0.0f),
      paths_(1.0f) {
  requireValid(firstLimits, "first");
  requireValid(secondLimits, "second");
  if (period.count() <= 0) {
    throw std::runtime_error("A trajectory factory's period must be positive.");
  }
  if (!(fractionOfLimits > 0.0f && fractionOfLimits <= 1.0f)) {
    throw std::runtime_error("A trajectory factory's fraction of limits must be in (0, 1], got " +
                             std::to_string(fractionOfLimits) + ".");
  }
}

TrajectoryFactory::~TrajectoryFactory() = default;

void TrajectoryFactory::addLine(const Position2D& end) {
  pieces_.push_back(paths_.lineBuilder(end));
}

void TrajectoryFactory::addCircle(const Position2D& centre, float angle) {
  pieces_.push_back(paths_.circleBuilder(centre, angle));
}

void TrajectoryFactory::addFlat(const Position2D& firstCentre, float firstAngle,
                                const Position2D& straightEnd, const Position2D& secondCentre,
                                float secondAngle) {
  pieces_.push_back(
      paths_.flatPathBuilder(firstCentre, firstAngle, straightEnd, secondCentre, secondAngle));
}

TrajectoryPose2DComposedBuilder TrajectoryFactory::getComposedTrajectoryBuilder(
    const std::vector<DirectTrajectoryPose2DBuilder>& pieces) {
  return [pieces](const Pose2DPosVelAcc& start) {
    requireFiniteStart(start);
    std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> > made;
    made.reserve(pieces.size());
    Pose2DPosVelAcc at = start;
    for (const DirectTrajectoryPose2DBuilder& builder : pieces) {
      std::unique_ptr<KRDirectTrajectoryPose2D> piece(builder(at));
      if (!piece) {
        throw std::runtime_error("A trajectory piece's builder returned no trajectory.");
      }
      at = piece->stateAt(toSeconds(piece->duration()));
      made.push_back(std::move(piece));
    }
    return new KRTrajectoryPose2DComposed(start, std::move(made));
  };
}

const Limits& TrajectoryFactory::firstLimits() const { return firstLimits_; }

const Limits& TrajectoryFactory::secondLimits() const { return secondLimits_; }

const RationalSeconds& TrajectoryFactory::period() const { return period_; }

float TrajectoryFactory::fractionOfLimits() const { return fractionOfLimits_; }

void TrajectoryFactory::setBlendTolerance(float meters) {
  if (!(std::isfinite(meters) && meters >= 0.0f)) {
    throw std::runtime_error(
        "A trajectory factory's blend tolerance must be finite and not negative, got " +
        std::to_string(meters) + ".");
  }
  blendTolerance_ = meters;
}

float TrajectoryFactory::blendTolerance() const { return blendTolerance_; }

const std::vector<DirectPath2DBuilder>& TrajectoryFactory::pieces() const { return pieces_; }

Path2DComposedBuilder TrajectoryFactory::pathBuilder() const {
  return paths_.composedPathBuilder(pieces_);
}

HolonomicTrajectoryFactory::HolonomicTrajectoryFactory(const Limits& translationLimits,
                                                       const Limits& rotationLimits,
                                                       const RationalSeconds& period,
                                                       float fractionOfLimits)
    : TrajectoryFactory(translationLimits, rotationLimits, period, fractionOfLimits) {}

TrajectoryPose2DHolonomicBuilder HolonomicTrajectoryFactory::getTrajectoryBuilder(
    float rotation, const RationalSeconds& duration) const {
  if (!std::isfinite(rotation)) {
    throw std::runtime_error("A holonomic trajectory's rotation must be finite.");
  }
  requireNonNegative(duration);
  const Path2DComposedBuilder paths = pathBuilder();
  const MotionSettings settings = settingsOf(*this, duration);
  return [paths, settings, rotation](const Pose2DPosVelAcc& start) {
    return buildHolonomic(TrajectoryFactoryKey(), paths, settings, rotation, start);
  };
}

RationalSeconds HolonomicTrajectoryFactory::minimumDuration(float rotation,
                                                            const Pose2DPosVelAcc& start) const {
  const std::unique_ptr<KRTrajectoryPose2DHolonomic> fastest(
      getTrajectoryBuilder(rotation, RationalSeconds(0))(start));
  return fastest->minimumDuration();
}

NonHolonomicTrajectoryFactory::NonHolonomicTrajectoryFactory(const Limits& linearLimits,
                                                             const Limits& angularLimits,
                                                             const RationalSeconds& period,
                                                             float fractionOfLimits)
    : TrajectoryFactory(linearLimits, angularLimits, period, fractionOfLimits) {}

DirectTrajectoryPose2DBuilder NonHolonomicTrajectoryFactory::getTrajectoryBuilder(
    const RationalSeconds& duration) const {
  requireNonNegative(duration);
  const Path2DComposedBuilder paths = pathBuilder();
  const MotionSettings settings = settingsOf(*this, duration);
  return [paths, settings](const Pose2DPosVelAcc& start) {
    return buildNonHolonomic(TrajectoryFactoryKey(), paths, settings, start);
  };
}

RationalSeconds NonHolonomicTrajectoryFactory::minimumDuration(
    const Pose2DPosVelAcc& start) const {
  const std::unique_ptr<KRDirectTrajectoryPose2D> fastest(
      getTrajectoryBuilder(RationalSeconds(0))(start));
  return fastest->minimumDuration();
}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
