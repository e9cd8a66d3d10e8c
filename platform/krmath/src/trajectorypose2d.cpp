#include <kr/math/trajectory/trajectorypose2d.h>

#include "pathgeometry.h"
#include "periods.h"
#include "trajectoryphase.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

// Each phase is timed in its own clock, the profile's; a trajectory that
// starts at rest runs that clock `stretch` times slower to fill its
// duration, which divides speeds by the stretch and accelerations by its
// square.

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

using Phase = KRDirectTrajectoryPose2D::Phase;

Pose2DPosVelAcc atRest(const Pose2D& pose) { return {pose, Pose2D(), Pose2D()}; }

bool isZero(const Pose2D& velocity) { return velocity.x == 0.0f && velocity.y == 0.0f; }

// How much slower than its own clock a motion of `ownTime` runs to last
// `duration`; never below 1, so limits met by the profile stay met. A
// motion that starts moving keeps its own clock (stretching would change
// its start speed).
double stretchOf(double ownTime, const RationalSeconds& duration, bool startsAtRest) {
  if (!(ownTime > 0.0) || !startsAtRest) {
    return 1.0;
  }
  return std::max(1.0, toSeconds(duration) / ownTime);
}

std::vector<double> segmentStartsOf(const KRPath2D& path) {
  std::vector<double> starts;
  starts.reserve(path.segments().size());
  double arc = 0.0;
  for (const Segment2D& segment : path.segments()) {
    starts.push_back(arc);
    arc += static_cast<double>(segment.length);
  }
  return starts;
}

// The phase running at own time `t`: the last one started by then.
const Phase& phaseAt(const std::vector<Phase>& phases, double t) {
  const auto after = std::upper_bound(
      phases.begin(), phases.end(), t,
      [](double time, const Phase& phase) { return time < phase.startTime; });
  return after == phases.begin() ? phases.front() : *(after - 1);
}

// The segment of a run holding arc length `s` of the path.
std::size_t segmentAt(const Phase& run, const std::vector<double>& starts, double s) {
  const auto first = starts.begin() + static_cast<std::ptrdiff_t>(run.segment);
  const auto last = first + static_cast<std::ptrdiff_t>(run.segmentCount);
  const auto after = std::upper_bound(first + 1, last, s);
  return static_cast<std::size_t>(after - starts.begin()) - 1;
}

// The pose where a phase ends: a turn ends facing the segment it precedes, a
// run at the end of its last segment.
Pose2D phaseEndPose(const Phase& phase, const KRPath2D& path) {
  if (phase.kind == Phase::Kind::Turn) {
    const Segment2D& segment = path.segments()[phase.segment];
    return Pose2D(segment.start.x, segment.start.y,
                  saturatedFloat(phase.fromHeading + phase.turn));
  }
  const Pose2D end = path.segments()[phase.segment + phase.segmentCount - 1].endPose();
  return Pose2D(end.x, end.y, saturatedFloat(static_cast<double>(end.theta) + phase.headingOffset));
}

// The state `t` own seconds into a turn on the spot, slowed down by `stretch`.
Pose2DPosVelAcc turnState(const Phase& phase, const KRPath2D& path, double t, double stretch) {
  const Segment2D& segment = path.segments()[phase.segment];
  const ProfileSample sample = sampleProfile(phase.profile, t);
  const double sign = phase.turn < 0.0 ? -1.0 : 1.0;
  return {Pose2D(segment.start.x, segment.start.y,
                 saturatedFloat(phase.fromHeading + sign * sample.position)),
          Pose2D(0.0f, 0.0f, saturatedFloat(sign * sample.speed / stretch)),
          Pose2D(0.0f, 0.0f, saturatedFloat(sign * sample.acceleration / (stretch * stretch)))};
}

// The state `t` own seconds into a run along the path: the tangential part
// along the heading, the centripetal part k v^2 to its left (k signed); the
// turning rate k v changes at k a, and on a clothoid of sharpness c by
// c v^2 more.
Pose2DPosVelAcc runState(const Phase& phase, const KRPath2D& path,
                         const std::vector<double>& starts, double t, double stretch) {
  const ProfileSample sample = sampleProfile(phase.profile, t);
  const double s = phase.startArc + sample.position;
  const std::size_t index = segmentAt(phase, starts, s);
  const Segment2D& segment = path.segments()[index];
  const double along = std::clamp(s - starts[index], 0.0, static_cast<double>(segment.length));
  const PoseD pose = segmentPoseAt(segment, along);
  const double speed = sample.speed / stretch;
  const double acceleration = sample.acceleration / (stretch * stretch);
  const double k = segment.curvatureAt(along);
  const double sharpness = static_cast<double>(segment.sharpness);
  const double c = std::cos(pose.theta);
  const double sn = std::sin(pose.theta);
  const double centripetal = k * speed * speed;
  return {toPose2D({pose.x, pose.y, pose.theta + phase.headingOffset}),
          toPose2D({c * speed, sn * speed, k * speed}),
          toPose2D({c * acceleration - sn * centripetal, sn * acceleration + c * centripetal,
                    k * acceleration + sharpness * speed * speed})};
}

void requireValidPhases(const std::vector<Phase>& phases, const KRPath2D& path) {
  const std::size_t count = path.segments().size();
  for (const Phase& phase : phases) {
    const bool run = phase.kind == Phase::Kind::Move;
    const bool valid = run ? phase.segmentCount > 0 && phase.segment < count &&
                                 phase.segmentCount <= count - phase.segment &&
                                 !phase.speedBounds.empty() &&
                                 phase.spanStarts.size() == phase.speedBounds.size()
                           : phase.segment < count;
    if (!valid) {
      throw std::runtime_error("A trajectory phase refers to a segment its path does not have.");
    }
  }
}

}  // namespace

std::vector<ProfileKnot> planTurn(double angle, double startRate, double maxRate,
                                  double maxAcceleration) {
  if (startRate * angle < 0.0 || (angle == 0.0 && startRate != 0.0)) {
    throw std::runtime_error("A turn of " + std::to_string(angle) +
                             " rad cannot start turning the other way, at " +
                             std::to_string(startRate) + " rad/s.");
  }
  std::vector<SpeedSpan> spans;
  if (angle != 0.0) {
    SpeedSpan span;
    span.length = std::fabs(angle);
    span.maxSpeed = maxRate;
    span.maxTangential = maxAcceleration;
    spans.push_back(span);
  }
  return planSpeedProfile(spans, maxAcceleration, std::fabs(startRate));
}

KRTrajectoryPose2D::~KRTrajectoryPose2D() = default;

KRDirectTrajectoryPose2D::KRDirectTrajectoryPose2D(
    TrajectoryFactoryKey /*key*/, std::unique_ptr<KRPath2D> path, std::vector<Phase> phases,
    const RationalSeconds& duration, const RationalSeconds& minimumDuration,
    const Pose2D& startVelocity, std::unique_ptr<KRPath2D> describedPath)
    : path_(std::move(path)),
      describedPath_(std::move(describedPath)),
      phases_(std::move(phases)),
      duration_(duration),
      minimumDuration_(minimumDuration),
      startVelocity_(startVelocity),
      ownTime_(0.0),
      stretch_(1.0) {
  if (!path_) {
    throw std::runtime_error("A trajectory needs a path.");
  }
  requireNonNegative(duration_);
  requireValidPhases(phases_, *path_);
  segmentStarts_ = segmentStartsOf(*path_);
  ownTime_ = ownTimeOf(phases_);
  stretch_ = stretchOf(ownTime_, duration_, isZero(startVelocity_));
}

KRDirectTrajectoryPose2D::~KRDirectTrajectoryPose2D() = default;

RationalSeconds KRDirectTrajectoryPose2D::duration() const { return duration_; }

RationalSeconds KRDirectTrajectoryPose2D::minimumDuration() const { return minimumDuration_; }

Pose2DPosVelAcc KRDirectTrajectoryPose2D::stateAt(double seconds) const {
  return pathStateAt(seconds);
}

double KRDirectTrajectoryPose2D::speedBoundAt(double seconds) const {
  if (phases_.empty() || seconds >= toSeconds(duration_)) {
    return 0.0;
  }
  const double own = std::max(0.0, seconds / stretch_);
  if (own >= ownTime_) {
    return 0.0;
  }
  const Phase& phase = phaseAt(phases_, own);
  if (phase.kind == Phase::Kind::Turn) {
    return 0.0;
  }
  const double s = sampleProfile(phase.profile, own - phase.startTime).position;
  const auto after = std::upper_bound(phase.spanStarts.begin() + 1, phase.spanStarts.end(), s);
  return phase.speedBounds[static_cast<std::size_t>(after - phase.spanStarts.begin()) - 1];
}

const KRPath2D& KRDirectTrajectoryPose2D::path() const { return *path_; }

Pose2D KRDirectTrajectoryPose2D::endPose() const {
  const Phase& last = phases_.back();
  if (!describedPath_ || last.kind != Phase::Kind::Move) {
    return phaseEndPose(last, *path_);
  }
  // A blended path ends on the described end within float rounding; the
  // motion ends on it exactly.
  const Pose2D end = describedPath_->endPose();
  return Pose2D(end.x, end.y, saturatedFloat(static_cast<double>(end.theta) + last.headingOffset));
}

const KRPath2D& KRDirectTrajectoryPose2D::describedPath() const {
  return describedPath_ ? *describedPath_ : *path_;
}

Pose2DPosVelAcc KRDirectTrajectoryPose2D::pathStateAt(double seconds) const {
  if (!(seconds > 0.0)) {
    return {path_->startPose(), startVelocity_, Pose2D()};
  }
  if (phases_.empty()) {
    return atRest(path_->startPose());
  }
  const double own = seconds / stretch_;
  if (seconds >= toSeconds(duration_) || own >= ownTime_) {
    return atRest(endPose());
  }
  const Phase& phase = phaseAt(phases_, own);
  if (phase.kind == Phase::Kind::Turn) {
    return turnState(phase, *path_, own - phase.startTime, stretch_);
  }
  return runState(phase, *path_, segmentStarts_, own - phase.startTime, stretch_);
}

KRTrajectoryPose2DHolonomic::KRTrajectoryPose2DHolonomic(
    TrajectoryFactoryKey key, std::unique_ptr<KRPath2D> path, std::vector<Phase> phases,
    const RationalSeconds& duration, const RationalSeconds& minimumDuration,
    const Pose2DPosVelAcc& start, float rotation, double maxAngularVelocity,
    double maxAngularAcceleration, std::unique_ptr<KRPath2D> describedPath)
    : KRDirectTrajectoryPose2D(key, std::move(path), std::move(phases), duration, minimumDuration,
                               Pose2D(start.velocity.x, start.velocity.y, 0.0f),
                               std::move(describedPath)),
      startOrientation_(start.position.theta),
      startTurnRate_(start.velocity.theta),
      rotation_(rotation),
      turn_(new Phase),
      rotationStretch_(1.0) {
  if (!std::isfinite(startOrientation_) || !std::isfinite(rotation) ||
      !std::isfinite(startTurnRate_)) {
    throw std::runtime_error("A holonomic trajectory needs a finite orientation and rotation.");
  }
  if (!(maxAngularVelocity > 0.0 && maxAngularAcceleration > 0.0) ||
      !std::isfinite(maxAngularVelocity) || !std::isfinite(maxAngularAcceleration)) {
    throw std::runtime_error("A holonomic trajectory needs positive, finite rotation limits.");
  }
  turn_->kind = Phase::Kind::Turn;
  turn_->turn = static_cast<double>(rotation);
  turn_->fromHeading = static_cast<double>(startOrientation_);
  turn_->profile = planTurn(static_cast<double>(rotation), static_cast<double>(startTurnRate_),
                            maxAngularVelocity, maxAngularAcceleration);
  rotationStretch_ = stretchOf(turn_->duration(), duration, startTurnRate_ == 0.0f);
}

KRTrajectoryPose2DHolonomic::~KRTrajectoryPose2DHolonomic() = default;

Pose2DPosVelAcc KRTrajectoryPose2DHolonomic::stateAt(double seconds) const {
  Pose2DPosVelAcc state = pathStateAt(seconds);
  state.velocity.theta = 0.0f;
  state.acceleration.theta = 0.0f;
  if (!(seconds > 0.0)) {
    state.position.theta = startOrientation_;
    state.velocity.theta = startTurnRate_;
    return state;
  }
  const double own = seconds / rotationStretch_;
  if (seconds >= toSeconds(duration()) || own >= turn_->duration()) {
    state.position.theta =
        saturatedFloat(static_cast<double>(startOrientation_) + static_cast<double>(rotation_));
    return state;
  }
  const ProfileSample sample = sampleProfile(turn_->profile, own);
  const double sign = rotation_ < 0.0f ? -1.0 : 1.0;
  state.position.theta =
      saturatedFloat(static_cast<double>(startOrientation_) + sign * sample.position);
  state.velocity.theta = saturatedFloat(sign * sample.speed / rotationStretch_);
  state.acceleration.theta =
      saturatedFloat(sign * sample.acceleration / (rotationStretch_ * rotationStretch_));
  return state;
}

float KRTrajectoryPose2DHolonomic::rotation() const { return rotation_; }

KRTrajectoryPose2DComposed::KRTrajectoryPose2DComposed(
    const Pose2DPosVelAcc& start, std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> > pieces)
    : start_(atRest(start.position)),
      pieces_(std::move(pieces)),
      duration_(boost::rational<int>(0)),
      minimumDuration_(boost::rational<int>(0)) {
  for (const auto& piece : pieces_) {
    if (!piece) {
      throw std::runtime_error("A composed trajectory cannot hold a null piece.");
    }
    duration_ = addDurations(duration_, piece->duration());
    minimumDuration_ = addDurations(minimumDuration_, piece->minimumDuration());
  }
}

RationalSeconds KRTrajectoryPose2DComposed::duration() const { return duration_; }

RationalSeconds KRTrajectoryPose2DComposed::minimumDuration() const { return minimumDuration_; }

namespace {

// The piece of `pieces` (not empty) running `seconds` after the start, and
// the time it started at; past the end, the last one.
template <class Pieces>
std::size_t pieceAt(const Pieces& pieces, double seconds, double& offset) {
  offset = 0.0;
  for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
    const double length = toSeconds(pieces[i]->duration());
    if (seconds < offset + length) {
      return i;
    }
    offset += length;
  }
  return pieces.size() - 1;
}

}  // namespace

Pose2DPosVelAcc KRTrajectoryPose2DComposed::stateAt(double seconds) const {
  if (pieces_.empty()) {
    return start_;
  }
  if (!(seconds > 0.0)) {
    return pieces_.front()->stateAt(0.0);
  }
  double offset = 0.0;
  const std::size_t i = pieceAt(pieces_, seconds, offset);
  return pieces_[i]->stateAt(seconds - offset);
}

double KRTrajectoryPose2DComposed::speedBoundAt(double seconds) const {
  if (pieces_.empty()) {
    return 0.0;
  }
  double offset = 0.0;
  const std::size_t i = pieceAt(pieces_, std::max(0.0, seconds), offset);
  return pieces_[i]->speedBoundAt(seconds - offset);
}

const std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> >&
KRTrajectoryPose2DComposed::pieces() const {
  return pieces_;
}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
