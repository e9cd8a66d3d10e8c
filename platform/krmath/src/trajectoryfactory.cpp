#include <kr/math/trajectory/trajectoryfactory.h>

#include "motionprofile.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

// The builders capture a composed-path builder and the settings by value, so
// they keep working after the factory is gone. A motion is planned as phases
// (moves along segments, and for a non-holonomic base turns on the spot),
// each the fastest rest-to-rest profile within the limits; the duration is
// then the one asked for or the phases' own time, whichever is longer, in
// whole periods.

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

using Phase = KRDirectTrajectoryPose2D::Phase;

// The limits the motion may use (already times the fraction of limits), the
// tick and the duration asked for.
struct MotionSettings {
  double speed;
  double acceleration;
  double angularSpeed;
  double angularAcceleration;
  RationalSeconds period;
  RationalSeconds asked;
};

// The factory's limits times its fraction of limits, and the duration asked for.
MotionSettings settingsOf(const TrajectoryFactory& factory, const RationalSeconds& asked) {
  const double fraction = factory.fractionOfLimits();
  return {fraction * factory.firstLimits().maxVelocity,
          fraction * factory.firstLimits().maxAcceleration,
          fraction * factory.secondLimits().maxVelocity,
          fraction * factory.secondLimits().maxAcceleration,
          factory.period(),
          asked};
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

void requireNonNegative(const RationalSeconds& duration) {
  if (duration.count() < 0) {
    throw std::runtime_error("A trajectory's duration must not be negative.");
  }
}

void requireFiniteStart(const Pose2DPosVelAcc& start) {
  if (!isFinite(start.position)) {
    throw std::runtime_error("A trajectory cannot start at a pose that is not finite.");
  }
}

// The fastest rest-to-rest profile along `segment`. On an arc the tangential
// and centripetal accelerations are each held to A / sqrt(2), so that their
// vector sum stays within A; a base turning with the path also keeps its
// turning rate k v and angular acceleration k s'' within the rotation limits.
Profile moveProfile(const Segment2D& segment, const MotionSettings& settings,
                    bool turnsWithPath) {
  double speed = settings.speed;
  double acceleration = settings.acceleration;
  const double k = std::fabs(static_cast<double>(segment.curvature));
  if (k > 0.0) {
    acceleration /= std::sqrt(2.0);
    speed = std::min(speed, std::sqrt(acceleration / k));
    if (turnsWithPath) {
      speed = std::min(speed, settings.angularSpeed / k);
      acceleration = std::min(acceleration, settings.angularAcceleration / k);
    }
  }
  return makeProfile(segment.length, speed, acceleration);
}

void appendPhase(std::vector<Phase>& phases, Phase phase, double& time) {
  phase.startTime = time;
  time += phase.profile.duration();
  phases.push_back(phase);
}

// Moves along every segment, each from rest to rest.
std::vector<Phase> holonomicPhases(const KRPath2D& path, const MotionSettings& settings) {
  std::vector<Phase> phases;
  double time = 0.0;
  for (std::size_t i = 0; i < path.segments().size(); ++i) {
    Phase move;
    move.segment = i;
    move.profile = moveProfile(path.segments()[i], settings, false);
    appendPhase(phases, move, time);
  }
  return phases;
}

// Moves along every segment, preceded by a turn on the spot, the shorter way,
// wherever the direction of travel jumps. Paths made by PathFactory never
// turn by more than a half turn at a corner, so the orientation is then the
// path's heading value; otherwise it keeps the whole turns the robot skipped.
std::vector<Phase> nonHolonomicPhases(const KRPath2D& path, const MotionSettings& settings) {
  std::vector<Phase> phases;
  double time = 0.0;
  double heading = path.startPose().theta;
  double offset = 0.0;
  for (std::size_t i = 0; i < path.segments().size(); ++i) {
    const Segment2D& segment = path.segments()[i];
    const double target = segment.start.theta + offset;
    double turn = target - heading;
    // Headings are stored as floats, so a half turn (a U-turn) may come out a
    // rounding error above pi; only a corner clearly sharper is wrapped.
    const double slack = 1e-6 * (1.0 + std::fabs(heading));
    if (std::fabs(turn) > kPi + slack) {
      const double shorter = std::remainder(turn, 2.0 * kPi);
      offset += 2.0 * kPi * std::round((shorter - turn) / (2.0 * kPi));
      turn = shorter;
    }
    if (turn != 0.0) {
      Phase turning;
      turning.kind = Phase::Kind::Turn;
      turning.segment = i;
      turning.fromHeading = heading;
      turning.turn = turn;
      turning.profile =
          makeProfile(std::fabs(turn), settings.angularSpeed, settings.angularAcceleration);
      appendPhase(phases, turning, time);
    }
    Phase move;
    move.segment = i;
    move.headingOffset = offset;
    move.profile = moveProfile(segment, settings, true);
    appendPhase(phases, move, time);
    heading = segment.endPose().theta + offset;
  }
  return phases;
}

double ownTimeOf(const std::vector<Phase>& phases) {
  if (phases.empty()) {
    return 0.0;
  }
  return phases.back().startTime + phases.back().profile.duration();
}

// The duration asked for, or the motion's own time if that is longer, in
// whole periods (rounded up).
RationalSeconds motionDuration(double ownTime, const MotionSettings& settings) {
  const std::uint64_t needed = periodsCovering(ownTime, settings.period);
  const std::uint64_t asked = periodsCovering(settings.asked, settings.period);
  return wholePeriods(std::max(needed, asked), settings.period);
}

}  // namespace

TrajectoryFactory::TrajectoryFactory(const Limits& firstLimits, const Limits& secondLimits,
                                     const RationalSeconds& period, float fractionOfLimits)
    : firstLimits_(firstLimits),
      secondLimits_(secondLimits),
      period_(period),
      fractionOfLimits_(fractionOfLimits),
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
    Pose2DPosVelAcc at(start.position, Pose2D(), Pose2D());
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

const std::vector<DirectPath2DBuilder>& TrajectoryFactory::pieces() const { return pieces_; }

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
  const Path2DComposedBuilder pathBuilder = PathFactory(1.0f).composedPathBuilder(pieces());
  const MotionSettings settings = settingsOf(*this, duration);
  return [pathBuilder, settings, rotation](const Pose2DPosVelAcc& start) {
    requireFiniteStart(start);
    if (!(std::fabs(static_cast<double>(start.position.theta) + rotation) <=
          static_cast<double>(FLT_MAX))) {
      throw std::runtime_error("A holonomic trajectory would end at an orientation out of range.");
    }
    std::unique_ptr<KRPath2D> path(pathBuilder(start.position));
    std::vector<Phase> phases = holonomicPhases(*path, settings);
    const Profile turn =
        makeProfile(std::fabs(rotation), settings.angularSpeed, settings.angularAcceleration);
    const RationalSeconds total =
        motionDuration(std::max(ownTimeOf(phases), turn.duration()), settings);
    return new KRTrajectoryPose2DHolonomic(std::move(path), std::move(phases), total,
                                           start.position.theta, rotation, settings.angularSpeed,
                                           settings.angularAcceleration);
  };
}

NonHolonomicTrajectoryFactory::NonHolonomicTrajectoryFactory(const Limits& linearLimits,
                                                             const Limits& angularLimits,
                                                             const RationalSeconds& period,
                                                             float fractionOfLimits)
    : TrajectoryFactory(linearLimits, angularLimits, period, fractionOfLimits) {}

DirectTrajectoryPose2DBuilder NonHolonomicTrajectoryFactory::getTrajectoryBuilder(
    const RationalSeconds& duration) const {
  requireNonNegative(duration);
  const Path2DComposedBuilder pathBuilder = PathFactory(1.0f).composedPathBuilder(pieces());
  const MotionSettings settings = settingsOf(*this, duration);
  return [pathBuilder, settings](const Pose2DPosVelAcc& start) {
    requireFiniteStart(start);
    std::unique_ptr<KRPath2D> path(pathBuilder(start.position));
    std::vector<Phase> phases = nonHolonomicPhases(*path, settings);
    const RationalSeconds total = motionDuration(ownTimeOf(phases), settings);
    return new KRDirectTrajectoryPose2D(std::move(path), std::move(phases), total);
  };
}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
