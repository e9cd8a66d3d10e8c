// Keys of Bezier angle interpolation.
#pragma once

#include <kr/math/krmath_export.h>
#include <kr/math/position2d.h>

#include <iosfwd>

namespace KR {
namespace Math {
namespace Interpolation {

/// How the curve leaves or reaches a key.
enum INTERPOLATION_TYPE : int {
  CONSTANT = 0,     // holds the value until the next key
  LINEAR = 1,       // a straight line to the next key
  BEZIER = 2,       // a Bezier handle given by the offset
  BEZIER_AUTO = 3,  // a Bezier handle computed from the neighbouring keys
};

/// One side of a key: its interpolation type and its Bezier handle, as an
/// offset from the key in (time in seconds, value) — x < 0 on the incoming
/// side, x > 0 on the outgoing side.
struct KRMATH_API Parameter {
  int type;
  Position2D offset;

  /// BEZIER_AUTO with a zero offset.
  Parameter() : type(BEZIER_AUTO), offset(0.0f, 0.0f) {}
  Parameter(int type, const Position2D& offset) : type(type), offset(offset) {}
};

/// A key: its value (an angle in radians, for angle interpolation) and the
/// parameters of its incoming (`firstParam`) and outgoing (`secondParam`)
/// sides. Polymorphic (it has a virtual destructor), so that interpolators
/// may derive richer keys.
class KRMATH_API Key {
 public:
  float value;
  Parameter firstParam;
  Parameter secondParam;

  /// Value 0, both sides BEZIER_AUTO with a zero offset.
  Key();
  Key(float value, const Parameter& firstParam, const Parameter& secondParam);
  virtual ~Key();

  Key(const Key&) = default;
  Key& operator=(const Key&) = default;
};

/// Same value, types and offsets (floats exactly).
KRMATH_API bool operator==(const Key& a, const Key& b);
KRMATH_API bool operator!=(const Key& a, const Key& b);

/// Writes "Key(value=1, first=(3, 0.1, 0.2), second=(3, -0.1, 0))".
KRMATH_API std::ostream& operator<<(std::ostream& out, const Key& key);

}  // namespace Interpolation
}  // namespace Math
}  // namespace KR
