// A point in space.
#pragma once

#include <kr/math/krmath_export.h>

#include <iosfwd>
#include <vector>

namespace KR {
namespace Math {

/// x, y and z in meters; defaults to the origin.
struct KRMATH_API Position3D {
  float x;
  float y;
  float z;

  Position3D() : x(0.0f), y(0.0f), z(0.0f) {}
  Position3D(float x, float y, float z) : x(x), y(y), z(z) {}

  /// {x, y, z}.
  std::vector<float> toVector() const;
};

static_assert(sizeof(Position3D) == 3 * sizeof(float), "Position3D is three floats");

/// Exact comparison of every field.
KRMATH_API bool operator==(const Position3D& a, const Position3D& b);
KRMATH_API bool operator!=(const Position3D& a, const Position3D& b);

/// Writes "Position3D(x=1, y=2, z=3)".
KRMATH_API std::ostream& operator<<(std::ostream& out, const Position3D& p);

}  // namespace Math
}  // namespace KR
