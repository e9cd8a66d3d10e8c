// A rigid transform in space: the upper three rows of a homogeneous matrix.
#pragma once

#include <kr/math/krmath_export.h>

#include <iosfwd>
#include <vector>

namespace KR {
namespace Math {

/// The matrix
///   | r1_c1 r1_c2 r1_c3 r1_c4 |
///   | r2_c1 r2_c2 r2_c3 r2_c4 |
///   | r3_c1 r3_c2 r3_c3 r3_c4 |
///   |   0     0     0     1   |   (implicit, never stored)
/// stored row by row: a rotation R (columns 1 to 3) and a translation in
/// meters (column 4). Defaults to the identity.
struct KRMATH_API Transform {
  float r1_c1, r1_c2, r1_c3, r1_c4;
  float r2_c1, r2_c2, r2_c3, r2_c4;
  float r3_c1, r3_c2, r3_c3, r3_c4;

  Transform();

  /// True when the record is a rigid transform within `tolerance`: every
  /// entry of R^T R - I (computed in double precision) is at most `tolerance`
  /// in magnitude, the determinant of R is positive, and all twelve numbers
  /// are finite. An exactly orthonormal R with determinant +1 passes at any
  /// positive tolerance; a NaN or negative tolerance accepts nothing.
  bool isTransform(const float& tolerance) const;

  /// Replaces R by the rotation nearest to it in the Frobenius norm (U V^T of
  /// its singular value decomposition R = U S V^T, with the sign of the last
  /// column of U flipped if needed so that the determinant is +1) and keeps
  /// the translation. Afterwards isTransform(0.001f) holds for any R whose
  /// entries are finite and which is not singular. A record with a non-finite
  /// entry is left as it is.
  void normalizeTransform();

  /// The 16 numbers of the 4x4 matrix, row by row, the last row 0, 0, 0, 1.
  std::vector<float> toVector() const;
};

static_assert(sizeof(Transform) == 12 * sizeof(float), "Transform is twelve floats");

/// Exact comparison of every field.
KRMATH_API bool operator==(const Transform& a, const Transform& b);
KRMATH_API bool operator!=(const Transform& a, const Transform& b);

/// Writes "Transform([r1_c1, r1_c2, r1_c3, r1_c4], [r2_c1, ...], [r3_c1, ...])".
KRMATH_API std::ostream& operator<<(std::ostream& out, const Transform& t);

}  // namespace Math
}  // namespace KR
