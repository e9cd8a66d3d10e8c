#include <kr/math/trajectory/path2d.h>

#include "pathgeometry.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

// s clamped into [0, length]; NaN gives 0.
double clampedArc(double s, double length) {
  if (!(s > 0.0)) {
    return 0.0;
  }
  return std::min(s, length);
}

// Length of the chord spanning an arc of length s and curvature k,
// 2 sin(k s / 2) / k, written so that it stays exact as k goes to 0.
double chordLength(double curvature, double s) {
  const double half = 0.5 * curvature * s;
  if (std::fabs(half) < 1e-4) {
    return s * (1.0 - half * half / 6.0);
  }
  return s * std::sin(half) / half;
}

// A bound on how much a clothoid's heading turns over [0, s]: the sum of
// its end curvatures' sizes times s. It decides how finely the position is
// integrated.
double clothoidVariation(const Segment2D& segment, double s) {
  return (std::fabs(static_cast<double>(segment.curvature)) + std::fabs(segment.curvatureAt(s))) *
         s;
}

// Clothoids turning further are refused: their positions would take ever
// more steps to integrate.
constexpr double kMaxClothoidTurn = 1000.0;
// Each step of the integration turns by at most this (radians), so six
// Gauss-Legendre nodes give the position to double's rounding.
constexpr double kClothoidStepTurn = 0.5;

// The position along a clothoid by Gauss-Legendre quadrature of its unit
// tangent, in steps that each turn by at most kClothoidStepTurn.
PoseD clothoidPoseAt(const Segment2D& segment, double s) {
  static const double kNodes[3] = {0.2386191860831909, 0.6612093864662645, 0.9324695142031521};
  static const double kWeights[3] = {0.4679139345726910, 0.3607615730481386, 0.1713244923791704};
  const double theta = static_cast<double>(segment.start.theta);
  const double k = static_cast<double>(segment.curvature);
  const double c = static_cast<double>(segment.sharpness);
  const double steps = std::max(1.0, std::ceil(clothoidVariation(segment, s) / kClothoidStepTurn));
  const double h = s / steps;
  double x = 0.0;
  double y = 0.0;
  for (double i = 0.0; i < steps; ++i) {
    const double middle = (i + 0.5) * h;
    const double atMiddle = middle * (k + 0.5 * c * middle);
    const Direction base = directionOf(theta + atMiddle);
    for (int j = 0; j < 3; ++j) {
      for (const double side : {-1.0, 1.0}) {
        const double u = middle + side * 0.5 * h * kNodes[j];
        const Direction d = turnedBy(base, u * (k + 0.5 * c * u) - atMiddle);
        x += kWeights[j] * d.cos;
        y += kWeights[j] * d.sin;
      }
    }
  }
  return {static_cast<double>(segment.start.x) + 0.5 * h * x,
          static_cast<double>(segment.start.y) + 0.5 * h * y, theta + s * (k + 0.5 * c * s)};
}

bool fitsFloat(const PoseD& p) {
  const double limit = static_cast<double>(FLT_MAX);
  return std::fabs(p.x) <= limit && std::fabs(p.y) <= limit && std::fabs(p.theta) <= limit;
}

// Checks one segment and that every stored number along it stays a finite
// float; throws std::runtime_error otherwise.
void requireValid(const Segment2D& segment) {
  if (!isFinite(segment.start) || !std::isfinite(segment.curvature) ||
      !std::isfinite(segment.sharpness) || !std::isfinite(segment.length) ||
      segment.length < 0.0f) {
    throw std::runtime_error("A path segment needs a finite start pose, curvature and length >= 0.");
  }
  if (segment.sharpness != 0.0f) {
    const double end = segment.curvatureAt(static_cast<double>(segment.length));
    if (!(std::fabs(end) <= static_cast<double>(FLT_MAX))) {
      throw std::runtime_error("A clothoid path segment ends at a curvature beyond float.");
    }
    if (!(clothoidVariation(segment, static_cast<double>(segment.length)) <= kMaxClothoidTurn)) {
      throw std::runtime_error("A clothoid path segment may turn by at most 1000 rad.");
    }
  }
  if (!fitsFloat(segmentPoseAt(segment, static_cast<double>(segment.length)))) {
    throw std::runtime_error("A path segment ends outside the range of float coordinates.");
  }
}

std::vector<Segment2D> withoutEmptySegments(const std::vector<Segment2D>& segments) {
  std::vector<Segment2D> kept;
  kept.reserve(segments.size());
  for (const Segment2D& segment : segments) {
    requireValid(segment);
    if (segment.length > 0.0f) {
      kept.push_back(segment);
    }
  }
  return kept;
}

double totalLength(const std::vector<Segment2D>& segments) {
  double length = 0.0;
  for (const Segment2D& segment : segments) {
    length += static_cast<double>(segment.length);
  }
  if (length > static_cast<double>(FLT_MAX)) {
    throw std::runtime_error("A path's length exceeds the range of float.");
  }
  return length;
}

std::vector<Segment2D> segmentsOf(const std::vector<std::unique_ptr<KRDirectPath2D> >& pieces) {
  std::vector<Segment2D> segments;
  for (const auto& piece : pieces) {
    if (!piece) {
      throw std::runtime_error("A composed path cannot hold a null piece.");
    }
    segments.insert(segments.end(), piece->segments().begin(), piece->segments().end());
  }
  return segments;
}

}  // namespace

PoseD segmentPoseAt(const Segment2D& segment, double s) {
  if (segment.sharpness != 0.0f) {
    return clothoidPoseAt(segment, s);
  }
  const double heading = static_cast<double>(segment.start.theta);
  const double turn = static_cast<double>(segment.curvature) * s;
  // The chord points halfway between the start and end headings.
  const double chord = chordLength(static_cast<double>(segment.curvature), s);
  const double direction = heading + 0.5 * turn;
  return {static_cast<double>(segment.start.x) + chord * std::cos(direction),
          static_cast<double>(segment.start.y) + chord * std::sin(direction), heading + turn};
}

Pose2D Segment2D::poseAt(float s) const {
  return toPose2D(
      segmentPoseAt(*this, clampedArc(static_cast<double>(s), static_cast<double>(length))));
}

Pose2D Segment2D::endPose() const { return poseAt(length); }

double Segment2D::curvatureAt(double s) const {
  return static_cast<double>(curvature) +
         static_cast<double>(sharpness) * clampedArc(s, static_cast<double>(length));
}

KRPath2D::~KRPath2D() = default;

KRPath2D::KRPath2D(const Pose2D& start, std::vector<Segment2D> segments)
    : start_(start), segments_(withoutEmptySegments(segments)), length_(totalLength(segments_)) {
  if (!isFinite(start)) {
    throw std::runtime_error("A path's start pose must be finite.");
  }
}

float KRPath2D::length() const { return static_cast<float>(length_); }

const Pose2D& KRPath2D::startPose() const { return start_; }

Pose2D KRPath2D::endPose() const {
  if (segments_.empty()) {
    return start_;
  }
  return segments_.back().endPose();
}

Pose2D KRPath2D::poseAt(float s) const {
  if (segments_.empty()) {
    return start_;
  }
  // length() is the double length rounded to float, and may fall short of
  // the end of a very long path: from it on, the pose is the end pose.
  if (s >= length()) {
    return endPose();
  }
  // Walk to the first segment that reaches s: at a joint that is the
  // earlier segment.
  double remaining = clampedArc(static_cast<double>(s), length_);
  for (const Segment2D& segment : segments_) {
    if (remaining <= static_cast<double>(segment.length)) {
      return toPose2D(segmentPoseAt(segment, remaining));
    }
    remaining -= static_cast<double>(segment.length);
  }
  return endPose();  // rounding left a sliver past the last segment
}

const std::vector<Segment2D>& KRPath2D::segments() const { return segments_; }

KRDirectPath2D::KRDirectPath2D(Kind kind, const Pose2D& start, std::vector<Segment2D> segments)
    : KRPath2D(start, std::move(segments)), kind_(kind) {}

KRDirectPath2D::Kind KRDirectPath2D::kind() const { return kind_; }

KRPath2DComposed::KRPath2DComposed(const Pose2D& start,
                                   std::vector<std::unique_ptr<KRDirectPath2D> > pieces)
    : KRPath2D(start, segmentsOf(pieces)), pieces_(std::move(pieces)) {}

const std::vector<std::unique_ptr<KRDirectPath2D> >& KRPath2DComposed::pieces() const {
  return pieces_;
}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
