// Planar paths: chains of straight segments and arcs of circle, measured by
// arc length.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/pose2d.h>

#include <memory>
#include <vector>

namespace KR {
namespace Math {
namespace Trajectory {

/// A piece of a path: a straight segment (curvature 0), an arc of circle
/// (curvature 1/radius, positive when it turns left, that is
/// counter-clockwise) or a clothoid, whose curvature changes linearly with
/// arc length (sharpness not 0: the blends a trajectory factory drives
/// through a joint). `start` is its first point with the tangent heading
/// there; along it the curvature is curvature + sharpness * s and the
/// heading grows by curvature * s + sharpness * s^2 / 2.
struct KRMATH_API Segment2D {
  Pose2D start;
  float length = 0.0f;     ///< meters, >= 0
  float curvature = 0.0f;  ///< 1/m, at the start
  float sharpness = 0.0f;  ///< 1/m^2, the change of curvature per meter
  /// The point at arc length `s` (clamped into [0, length]) with the tangent
  /// heading there.
  Pose2D poseAt(float s) const;
  /// poseAt(length).
  Pose2D endPose() const;
  /// The curvature at arc length `s` (clamped into [0, length]).
  double curvatureAt(double s) const;
};

/// A path in the plane, built at a start pose. It is a chain of segments,
/// each starting where the previous one ends. Poses along it carry the
/// tangent heading (the direction of travel), not wrapped into (-pi, pi]: an
/// arc of 4 pi ends with a heading 4 pi greater than it started with. Where a
/// segment's direction is given only as a direction (the start of a line or
/// of an arc), its heading is the value of that direction nearest the
/// heading before it (the start pose's for the first), so a line straight
/// ahead keeps the start heading exactly and no corner exceeds a half turn.
///
/// A path of length 0 (no segment) stays at its start pose: poseAt gives the
/// start pose for every s, heading included.
///
/// Construction throws std::runtime_error when the start pose or a segment
/// is not finite, a length is negative, a clothoid turns by more than
/// 1000 rad or its curvature ends beyond the range of float, or a segment
/// ends (or the total length lies) beyond the range of float.
class KRMATH_API KRPath2D {
 public:
  virtual ~KRPath2D();

  /// Total arc length in meters.
  float length() const;
  /// The pose the path was built at.
  const Pose2D& startPose() const;
  /// The pose at the end of the path: its last point with the tangent
  /// heading there (the start pose for a path of length 0).
  Pose2D endPose() const;
  /// The pose at arc length `s`: the start pose for s <= 0 (or NaN), the end
  /// pose for s >= length(), so poseAt(length()) == endPose(). At a joint
  /// between two segments the pose ends the earlier one, so a corner's new
  /// heading shows only past the joint.
  Pose2D poseAt(float s) const;
  /// The segments, in order; zero-length pieces are left out.
  const std::vector<Segment2D>& segments() const;

 protected:
  KRPath2D(const Pose2D& start, std::vector<Segment2D> segments);

 private:
  Pose2D start_;
  std::vector<Segment2D> segments_;
  double length_;
};

/// One path of a single kind, made by a PathFactory builder. Every point of
/// a description is given in the frame of the pose the path is built at
/// (x forward along its heading, y to its left, meters); angles are radians,
/// positive counter-clockwise.
///
/// - Line(end): a straight segment from the start point to `end`. Its
///   heading is the segment's direction, which may differ from the start
///   pose's heading (a corner at the start).
/// - ArcOfCircle(centre, angle): the start point turned about `centre` by
///   `angle`; the radius is the distance from the start point to `centre`.
///   Positive angles turn counter-clockwise. More than a full turn is
///   allowed (2 pi is one full circle).
/// - Flat(firstCentre, firstAngle, straightEnd, secondCentre, secondAngle):
///   a path that is straight in the middle: an arc about `firstCentre` by
///   `firstAngle`, then a straight segment from where that arc ends to
///   `straightEnd`, then an arc of `straightEnd` about `secondCentre` by
///   `secondAngle`. Any of the three parts may have length 0. The parts meet
///   without a corner only when the points are chosen so (a turn, a straight
///   run and a turn, as a robot drives round an obstacle).
class KRMATH_API KRDirectPath2D : public KRPath2D {
 public:
  enum class Kind { Line, ArcOfCircle, Flat };

  KRDirectPath2D(Kind kind, const Pose2D& start, std::vector<Segment2D> segments);
  Kind kind() const;

 private:
  Kind kind_;
};

/// Direct paths chained: each piece was built at the end pose of the one
/// before it, so a piece's points are in the frame of the previous piece's
/// end (a composed path of two Line([1, 0]) runs 2 m straight ahead). An
/// empty composed path has length 0 and stays at its start pose.
class KRMATH_API KRPath2DComposed : public KRPath2D {
 public:
  KRPath2DComposed(const Pose2D& start, std::vector<std::unique_ptr<KRDirectPath2D> > pieces);
  const std::vector<std::unique_ptr<KRDirectPath2D> >& pieces() const;

 private:
  std::vector<std::unique_ptr<KRDirectPath2D> > pieces_;
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
