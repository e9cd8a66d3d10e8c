#include <kr/math/trajectory/pathfactory.h>

#include "pathgeometry.h"

#include <cfloat>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

// A description is turned into segments in the frame of the start pose once,
// when its builder is made (that part does not depend on the start pose);
// the builder only moves them into the world frame.

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

// Longer pieces are mistakes: float coordinates are meaningless that far.
constexpr double kMaxPieceLength = 1e9;

struct Point {
  double x;
  double y;
};

// A segment in the start frame.
struct LocalSegment {
  PoseD start;
  double length;
  double curvature;
};

struct LocalPiece {
  KRDirectPath2D::Kind kind;
  std::vector<LocalSegment> segments;
};

void requireFinite(float value, const char* what) {
  if (!std::isfinite(value)) {
    throw std::runtime_error(std::string("Path description: ") + what + " is not finite.");
  }
}

void requireFinite(const Position2D& point, const char* what) {
  requireFinite(point.x, what);
  requireFinite(point.y, what);
}

Point scaled(const Position2D& point, float scale) {
  const double factor = static_cast<double>(scale);
  return {static_cast<double>(point.x) * factor, static_cast<double>(point.y) * factor};
}

// The value of `direction` (an angle) nearest to `reference`, so that headings
// along a path change by at most a half turn at a corner and a straight run
// ahead keeps the previous heading exactly.
double nearestHeading(double direction, double reference) {
  const double difference = direction - reference;
  if (std::fabs(difference) <= kPi) {
    return direction;
  }
  return reference + std::remainder(difference, 2.0 * kPi);
}

void requireReasonableLength(double length) {
  if (!(length <= kMaxPieceLength)) {
    throw std::runtime_error("A path piece of " + std::to_string(length) +
                             " m is longer than the 1e9 m allowed.");
  }
}

// Appends the straight segment from `at` to `end` and moves `at` there.
void appendLine(std::vector<LocalSegment>& out, PoseD& at, const Point& end) {
  const double dx = end.x - at.x;
  const double dy = end.y - at.y;
  const double length = std::hypot(dx, dy);
  if (length == 0.0) {
    return;
  }
  requireReasonableLength(length);
  const double heading = nearestHeading(std::atan2(dy, dx), at.theta);
  out.push_back({{at.x, at.y, heading}, length, 0.0});
  at = {end.x, end.y, heading};
}

// Appends the arc turning `at` about `centre` by `angle` and moves `at` to
// its end.
void appendArc(std::vector<LocalSegment>& out, PoseD& at, const Point& centre, double angle) {
  const double rx = at.x - centre.x;
  const double ry = at.y - centre.y;
  const double radius = std::hypot(rx, ry);
  if (radius == 0.0 || angle == 0.0) {
    return;  // the point does not move
  }
  const double curvature = (angle > 0.0 ? 1.0 : -1.0) / radius;
  if (!(std::fabs(curvature) <= static_cast<double>(FLT_MAX))) {
    throw std::runtime_error("An arc's radius of " + std::to_string(radius) +
                             " m is too small for its curvature to be stored.");
  }
  const double length = radius * std::fabs(angle);
  requireReasonableLength(length);
  // The tangent is the radius vector turned a quarter turn in the sense of
  // the motion.
  const double tx = angle > 0.0 ? -ry : ry;
  const double ty = angle > 0.0 ? rx : -rx;
  const double heading = nearestHeading(std::atan2(ty, tx), at.theta);
  out.push_back({{at.x, at.y, heading}, length, curvature});
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  at = {centre.x + c * rx - s * ry, centre.y + s * rx + c * ry, heading + angle};
}

void requireReasonablePiece(const LocalPiece& piece) {
  double length = 0.0;
  for (const LocalSegment& segment : piece.segments) {
    length += segment.length;
  }
  requireReasonableLength(length);
}

float checkedFloat(double value) {
  if (!(std::fabs(value) <= static_cast<double>(FLT_MAX))) {
    throw std::runtime_error("A path leaves the range of float coordinates.");
  }
  return static_cast<float>(value);
}

Segment2D toWorld(const LocalSegment& local, const Pose2D& frame) {
  const double c = std::cos(static_cast<double>(frame.theta));
  const double s = std::sin(static_cast<double>(frame.theta));
  Segment2D segment;
  segment.start =
      Pose2D(checkedFloat(static_cast<double>(frame.x) + c * local.start.x - s * local.start.y),
             checkedFloat(static_cast<double>(frame.y) + s * local.start.x + c * local.start.y),
             checkedFloat(static_cast<double>(frame.theta) + local.start.theta));
  segment.length = static_cast<float>(local.length);
  segment.curvature = static_cast<float>(local.curvature);
  return segment;
}

void requireFiniteStart(const Pose2D& start) {
  if (!isFinite(start)) {
    throw std::runtime_error("A path cannot be built at a start pose that is not finite.");
  }
}

DirectPath2DBuilder builderOf(const LocalPiece& piece) {
  requireReasonablePiece(piece);
  return [piece](const Pose2D& start) {
    requireFiniteStart(start);
    std::vector<Segment2D> segments;
    segments.reserve(piece.segments.size());
    for (const LocalSegment& local : piece.segments) {
      segments.push_back(toWorld(local, start));
    }
    return new KRDirectPath2D(piece.kind, start, std::move(segments));
  };
}

// Start of every description: the origin of the start frame, facing along x.
PoseD origin() { return {0.0, 0.0, 0.0}; }

}  // namespace

PathFactory::PathFactory(float scale) : scale_(scale) {
  if (!std::isfinite(scale) || scale <= 0.0f) {
    throw std::runtime_error("A path factory's scale must be finite and positive, got " +
                             std::to_string(scale) + ".");
  }
}

float PathFactory::scale() const { return scale_; }

DirectPath2DBuilder PathFactory::lineBuilder(const Position2D& end) const {
  requireFinite(end, "the line's end");
  LocalPiece piece{KRDirectPath2D::Kind::Line, {}};
  PoseD at = origin();
  appendLine(piece.segments, at, scaled(end, scale_));
  return builderOf(piece);
}

DirectPath2DBuilder PathFactory::circleBuilder(const Position2D& centre, float angle) const {
  requireFinite(centre, "the arc's centre");
  requireFinite(angle, "the arc's angle");
  LocalPiece piece{KRDirectPath2D::Kind::ArcOfCircle, {}};
  PoseD at = origin();
  appendArc(piece.segments, at, scaled(centre, scale_), static_cast<double>(angle));
  return builderOf(piece);
}

DirectPath2DBuilder PathFactory::flatPathBuilder(const Position2D& firstCentre, float firstAngle,
                                                 const Position2D& straightEnd,
                                                 const Position2D& secondCentre,
                                                 float secondAngle) const {
  requireFinite(firstCentre, "the first arc's centre");
  requireFinite(firstAngle, "the first arc's angle");
  requireFinite(straightEnd, "the straight part's end");
  requireFinite(secondCentre, "the second arc's centre");
  requireFinite(secondAngle, "the second arc's angle");
  LocalPiece piece{KRDirectPath2D::Kind::Flat, {}};
  PoseD at = origin();
  appendArc(piece.segments, at, scaled(firstCentre, scale_), static_cast<double>(firstAngle));
  appendLine(piece.segments, at, scaled(straightEnd, scale_));
  appendArc(piece.segments, at, scaled(secondCentre, scale_), static_cast<double>(secondAngle));
  return builderOf(piece);
}

Path2DComposedBuilder PathFactory::composedPathBuilder(
    const std::vector<DirectPath2DBuilder>& pieces) const {
  return [pieces](const Pose2D& start) {
    requireFiniteStart(start);
    std::vector<std::unique_ptr<KRDirectPath2D> > made;
    made.reserve(pieces.size());
    Pose2D at = start;
    for (const DirectPath2DBuilder& builder : pieces) {
      std::unique_ptr<KRDirectPath2D> piece(builder(at));
      if (!piece) {
        throw std::runtime_error("A path piece's builder returned no path.");
      }
      at = piece->endPose();
      made.push_back(std::move(piece));
    }
    return new KRPath2DComposed(start, std::move(made));
  };
}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
