#include <kr/math/trajectory/trajectorypose2d.h>

#include "motionprofile.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

// Each phase is timed in its own clock, the profile's; a trajectory runs that
// clock `stretch` times slower to fill its duration, which divides speeds by
// the stretch and accelerations by its square.

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

using Phase = KRDirectTrajectoryPose2D::Phase;

Pose2DPosVelAcc atRest(const Pose2D& pose) { return {pose, Pose2D(), Pose2D()}; }

double ownTimeOf(const std::vector<Phase>& phases) {
  if (phases.empty()) {
    return 0.0;
  }
  return phases.back().startTime + phases.back().profile.duration();
}

// How much slower than its own clock a motion of `ownTime` runs to last
// `duration`; never below 1, so limits met by the profile stay met.
double stretchOf(double ownTime, const RationalSeconds& duration) {
  if (!(ownTime > 0.0)) {
    return 1.0;
  }
  return std::max(1.0, toSeconds(duration) / ownTime);
}

// The phase running at own time `t`: the last one started by then.
const Phase& phaseAt(const std::vector<Phase>& phases, double t) {
  const auto after = std::upper_bound(
      phases.begin(), phases.end(), t,
      [](double time, const Phase& phase) { return time < phase.startTime; });
  return after == phases.begin() ? phases.front() : *(after - 1);
}

// The pose where a phase ends: a turn ends facing the segment it precedes, a
// move at the end of its segment.
Pose2D phaseEndPose(const Phase& phase, const KRPath2D& path) {
  const Segment2D& segment = path.segments()[phase.segment];
  if (phase.kind == Phase::Kind::Turn) {
    return Pose2D(segment.start.x, segment.start.y,
                  saturatedFloat(phase.fromHeading + phase.turn));
  }
  const Pose2D end = segment.endPose();
  return Pose2D(end.x, end.y, saturatedFloat(end.theta + phase.headingOffset));
}

// The state `t` own seconds into `phase`, slowed down by `stretch`.
Pose2DPosVelAcc phaseState(const Phase& phase, const KRPath2D& path, double t, double stretch) {
  const Segment2D& segment = path.segments()[phase.segment];
  const ProfileSample sample = sampleProfile(phase.profile, t);
  const double speed = sample.speed / stretch;
  const double acceleration = sample.acceleration / (stretch * stretch);
  if (phase.kind == Phase::Kind::Turn) {
    const double sign = phase.turn < 0.0 ? -1.0 : 1.0;
    return {Pose2D(segment.start.x, segment.start.y,
                   saturatedFloat(phase.fromHeading + sign * sample.position)),
            Pose2D(0.0f, 0.0f, saturatedFloat(sign * speed)),
            Pose2D(0.0f, 0.0f, saturatedFloat(sign * acceleration))};
  }
  // Along the path: the tangential part along the heading, the centripetal
  // part k v^2 to its left (k signed).
  const PoseD pose = segmentPoseAt(segment, sample.position);
  const double k = segment.curvature;
  const double c = std::cos(pose.theta);
  const double s = std::sin(pose.theta);
  const double centripetal = k * speed * speed;
  return {toPose2D({pose.x, pose.y, pose.theta + phase.headingOffset}),
          toPose2D({c * speed, s * speed, k * speed}),
          toPose2D({c * acceleration - s * centripetal, s * acceleration + c * centripetal,
                    k * acceleration})};
}

void requireValidPhases(const std::vector<Phase>& phases, const KRPath2D& path) {
  for (const Phase& phase : phases) {
    if (phase.segment >= path.segments().size()) {
      throw std::runtime_error("A trajectory phase refers to a segment its path does not have.");
    }
  }
}

}  // namespace

Profile makeProfile(double distance, double maxSpeed, double maxAcceleration) {
  Profile profile;
  if (!(distance > 0.0)) {
    return profile;
  }
  profile.distance = distance;
  profile.acceleration = maxAcceleration;
  const double rampTime = maxSpeed / maxAcceleration;
  if (distance <= maxSpeed * rampTime) {
    // Triangular: accelerate over half the distance, decelerate over the rest.
    profile.rampTime = std::sqrt(distance / maxAcceleration);
    profile.peakSpeed = maxAcceleration * profile.rampTime;
    return profile;
  }
  profile.rampTime = rampTime;
  profile.peakSpeed = maxSpeed;
  profile.cruiseTime = (distance - maxSpeed * rampTime) / maxSpeed;
  return profile;
}

ProfileSample sampleProfile(const Profile& profile, double t) {
  const double total = profile.duration();
  const double a = profile.acceleration;
  if (!(t > 0.0)) {
    return {0.0, 0.0, a};
  }
  if (t < profile.rampTime) {
    return {0.5 * a * t * t, a * t, a};
  }
  if (t < profile.rampTime + profile.cruiseTime) {
    return {0.5 * a * profile.rampTime * profile.rampTime +
                profile.peakSpeed * (t - profile.rampTime),
            profile.peakSpeed, 0.0};
  }
  // Deceleration, written from the end so that the end is reached exactly.
  const double left = std::max(0.0, total - t);
  return {profile.distance - 0.5 * a * left * left, a * left, -a};
}

KRTrajectoryPose2D::~KRTrajectoryPose2D() = default;

KRDirectTrajectoryPose2D::KRDirectTrajectoryPose2D(std::unique_ptr<KRPath2D> path,
                                                   std::vector<Phase> phases,
                                                   const RationalSeconds& duration)
    : path_(std::move(path)), phases_(std::move(phases)), duration_(duration), stretch_(1.0) {
  if (!path_) {
    throw std::runtime_error("A trajectory needs a path.");
  }
  if (duration_.count() < 0) {
    throw std::runtime_error("A trajectory's duration must not be negative.");
  }
  requireValidPhases(phases_, *path_);
  stretch_ = stretchOf(ownTimeOf(phases_), duration_);
}

KRDirectTrajectoryPose2D::~KRDirectTrajectoryPose2D() = default;

RationalSeconds KRDirectTrajectoryPose2D::duration() const { return duration_; }

Pose2DPosVelAcc KRDirectTrajectoryPose2D::stateAt(double seconds) const {
  return pathStateAt(seconds);
}

const KRPath2D& KRDirectTrajectoryPose2D::path() const { return *path_; }

Pose2DPosVelAcc KRDirectTrajectoryPose2D::pathStateAt(double seconds) const {
  if (phases_.empty() || !(seconds > 0.0)) {
    return atRest(path_->startPose());
  }
  if (seconds >= toSeconds(duration_)) {
    return atRest(phaseEndPose(phases_.back(), *path_));
  }
  const double own = seconds / stretch_;
  const Phase& phase = phaseAt(phases_, own);
  return phaseState(phase, *path_, own - phase.startTime, stretch_);
}

KRTrajectoryPose2DHolonomic::KRTrajectoryPose2DHolonomic(
    std::unique_ptr<KRPath2D> path, std::vector<Phase> phases, const RationalSeconds& duration,
    float startOrientation, float rotation, double maxAngularVelocity,
    double maxAngularAcceleration)
    : KRDirectTrajectoryPose2D(std::move(path), std::move(phases), duration),
      startOrientation_(startOrientation),
      rotation_(rotation),
      maxAngularVelocity_(maxAngularVelocity),
      maxAngularAcceleration_(maxAngularAcceleration),
      rotationStretch_(1.0) {
  if (!std::isfinite(startOrientation) || !std::isfinite(rotation)) {
    throw std::runtime_error("A holonomic trajectory needs a finite orientation and rotation.");
  }
  if (!(maxAngularVelocity > 0.0 && maxAngularAcceleration > 0.0) ||
      !std::isfinite(maxAngularVelocity) || !std::isfinite(maxAngularAcceleration)) {
    throw std::runtime_error("A holonomic trajectory needs positive, finite rotation limits.");
  }
  const Profile turn = makeProfile(std::fabs(rotation), maxAngularVelocity, maxAngularAcceleration);
  rotationStretch_ = stretchOf(turn.duration(), duration);
}

Pose2DPosVelAcc KRTrajectoryPose2DHolonomic::stateAt(double seconds) const {
  Pose2DPosVelAcc state = pathStateAt(seconds);
  const double start = startOrientation_;
  state.velocity.theta = 0.0f;
  state.acceleration.theta = 0.0f;
  if (!(seconds > 0.0)) {
    state.position.theta = startOrientation_;
    return state;
  }
  if (seconds >= toSeconds(duration())) {
    state.position.theta = saturatedFloat(start + rotation_);
    return state;
  }
  const Profile turn =
      makeProfile(std::fabs(rotation_), maxAngularVelocity_, maxAngularAcceleration_);
  const ProfileSample sample = sampleProfile(turn, seconds / rotationStretch_);
  const double sign = rotation_ < 0.0f ? -1.0 : 1.0;
  state.position.theta = saturatedFloat(start + sign * sample.position);
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
      duration_(boost::rational<int>(0)) {
  for (const auto& piece : pieces_) {
    if (!piece) {
      throw std::runtime_error("A composed trajectory cannot hold a null piece.");
    }
    duration_ = addDurations(duration_, piece->duration());
  }
}

RationalSeconds KRTrajectoryPose2DComposed::duration() const { return duration_; }

Pose2DPosVelAcc KRTrajectoryPose2DComposed::stateAt(double seconds) const {
  if (pieces_.empty()) {
    return start_;
  }
  if (!(seconds > 0.0)) {
    return pieces_.front()->stateAt(0.0);
  }
  // The piece running then; past the end, the last one at its end.
  double offset = 0.0;
  for (std::size_t i = 0; i + 1 < pieces_.size(); ++i) {
    const double length = toSeconds(pieces_[i]->duration());
    if (seconds < offset + length) {
      return pieces_[i]->stateAt(seconds - offset);
    }
    offset += length;
  }
  return pieces_.back()->stateAt(seconds - offset);
}

const std::vector<std::unique_ptr<KRDirectTrajectoryPose2D> >&
KRTrajectoryPose2DComposed::pieces() const {
  return pieces_;
}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
