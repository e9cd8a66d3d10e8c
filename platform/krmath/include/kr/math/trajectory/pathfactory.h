// Builders of planar paths: callables that make a path once the start pose
// is known.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/pose2d.h>
#include <kr/math/position2d.h>
#include <kr/math/trajectory/path2d.h>

#include <boost/function.hpp>

#include <vector>

namespace KR {
namespace Math {
namespace Trajectory {

/// Builders return a newly made path (new) that the caller owns and deletes.
/// Calling one with a start pose that is not finite, or one that puts the
/// path outside the range of float coordinates, throws std::runtime_error.
typedef boost::function<KRDirectPath2D*(const Pose2D&)> DirectPath2DBuilder;
typedef boost::function<KRPath2DComposed*(const Pose2D&)> Path2DComposedBuilder;
typedef boost::function<KRPath2D*(const Pose2D&)> Path2DBuilder;

/// Makes path builders; the geometry of each kind is described at
/// KRDirectPath2D. A builder owns copies of its parameters and does not
/// refer to the factory, so it stays usable after the factory is gone.
class KRMATH_API PathFactory {
 public:
  /// `scale` multiplies every point of the descriptions (1.0: meters as
  /// given; 0.001: millimetres). Angles are not scaled. Throws
  /// std::runtime_error unless it is finite and positive.
  explicit PathFactory(float scale);

  float scale() const;

  // Each throws std::runtime_error when a parameter is not finite, when the
  // piece (after scaling) would be longer than 1e9 m (float coordinates are
  // meaningless that far), or when an arc's radius is so small, yet not 0,
  // that its curvature overflows a float. A radius of exactly 0 or an angle
  // of 0 is an arc of length 0.
  DirectPath2DBuilder lineBuilder(const Position2D& end) const;
  DirectPath2DBuilder circleBuilder(const Position2D& centre, float angle) const;
  DirectPath2DBuilder flatPathBuilder(const Position2D& firstCentre, float firstAngle,
                                      const Position2D& straightEnd,
                                      const Position2D& secondCentre, float secondAngle) const;

  /// Builds each piece in order, the first at the start pose and each next
  /// one at the end pose of the one before. An empty list gives an empty
  /// composed path. When a piece fails (or an empty builder throws
  /// boost::bad_function_call), the pieces already made are freed.
  Path2DComposedBuilder composedPathBuilder(const std::vector<DirectPath2DBuilder>& pieces) const;

 private:
  float scale_;
};

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
