// Axis masks: which of the six Cartesian axes a command controls.
#pragma once

#include <kr/math/krmath_export.h>

namespace KR {
namespace Math {

/// Bits of an axis mask, one per axis of a 6D position: x, y, z, then the
/// rotations wx, wy, wz.
enum AXIS_MASK {
  AXIS_MASK_X = 1,
  AXIS_MASK_Y = 2,
  AXIS_MASK_Z = 4,
  AXIS_MASK_WX = 8,
  AXIS_MASK_WY = 16,
  AXIS_MASK_WZ = 32,
  AXIS_MASK_POSITION = 7,  // the three translations
  AXIS_MASK_ROTATION = 56,  // the three rotations
  AXIS_MASK_ALL = 63,       // every axis
};

/// True for an int that selects at least one axis and nothing else: 1 to 63.
/// 0 (no axis at all) and anything with bits above the sixth are not masks.
KRMATH_API bool isAxisMask(int mask);

}  // namespace Math
}  // namespace KR
