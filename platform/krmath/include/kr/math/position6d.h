// A position and an orientation in space.
#pragma once

#include <kr/math/krmath_export.h>

#include <iosfwd>
#include <vector>

namespace KR {
namespace Math {

/// x, y, z in meters; wx, wy, wz the rotations about the x, y and z axes in
/// radians (roll, pitch, yaw). Defaults to all zeros.
struct KRMATH_API Position6D {
  float x;
  float y;
  float z;
  float wx;
  float wy;
  float wz;

  Position6D() : x(0.0f), y(0.0f), z(0.0f), wx(0.0f), wy(0.0f), wz(0.0f) {}
  Position6D(float x, float y, float z, float wx, float wy, float wz)
      : x(x), y(y), z(z), wx(wx), wy(wy), wz(wz) {}
  /// The six fields in order x, y, z, wx, wy, wz. Throws std::runtime_error
  /// when `values` does not hold exactly six floats.
  explicit Position6D(const std::vector<float>& values);

  /// {x, y, z, wx, wy, wz}.
  std::vector<float> toVector() const;
};

static_assert(sizeof(Position6D) == 6 * sizeof(float), "Position6D is six floats");

/// Exact comparison of every field.
KRMATH_API bool operator==(const Position6D& a, const Position6D& b);
KRMATH_API bool operator!=(const Position6D& a, const Position6D& b);

/// Writes "Position6D(x=1, y=2, z=3, wx=0, wy=0, wz=0.5)".
KRMATH_API std::ostream& operator<<(std::ostream& out, const Position6D& p);

}  // namespace Math
}  // namespace KR
