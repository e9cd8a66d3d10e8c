// A point in the plane.
#pragma once

#include <kr/math/krmath_export.h>

#include <iosfwd>

namespace KR {
namespace Math {

/// x and y in meters; defaults to the origin.
struct KRMATH_API Position2D {
  float x;
  float y;

  Position2D() : x(0.0f), y(0.0f) {}
  Position2D(float x, float y) : x(x), y(y) {}
};

static_assert(sizeof(Position2D) == 2 * sizeof(float), "Position2D is two floats");

/// Exact comparison of every field.
KRMATH_API bool operator==(const Position2D& a, const Position2D& b);
KRMATH_API bool operator!=(const Position2D& a, const Position2D& b);

/// Writes "Position2D(x=1, y=2)".
KRMATH_API std::ostream& operator<<(std::ostream& out, const Position2D& p);

}  // namespace Math
}  // namespace KR
