#include <kr/math/transform.h>

#include <kr/math/floattext.h>

#include <Eigen/Geometry>
#include <Eigen/LU>
#include <Eigen/SVD>

#include <array>
#include <cmath>
#include <cstddef>
#include <ostream>

namespace KR {
namespace Math {
namespace {

using Matrix3 = Eigen::Matrix3d;

// The twelve stored numbers, row by row.
std::array<float, 12> fieldsOf(const Transform& t) {
  return {t.r1_c1, t.r1_c2, t.r1_c3, t.r1_c4, t.r2_c1, t.r2_c2,
          t.r2_c3, t.r2_c4, t.r3_c1, t.r3_c2, t.r3_c3, t.r3_c4};
}

bool allFinite(const Transform& t) {
  for (const float value : fieldsOf(t)) {
    if (!std::isfinite(value)) {
      return false;
    }
  }
  return true;
}

// The rotation part R (columns 1 to 3), widened to double so that the checks
// below are not limited by single-precision rounding.
Matrix3 rotationOf(const Transform& t) {
  Eigen::Matrix3f r;
  r << t.r1_c1, t.r1_c2, t.r1_c3,
       t.r2_c1, t.r2_c2, t.r2_c3,
       t.r3_c1, t.r3_c2, t.r3_c3;
  return r.cast<double>();
}

void setRotation(Transform& t, const Matrix3& r) {
  const auto at = [&r](Eigen::Index row, Eigen::Index column) {
    return static_cast<float>(r(row, column));
  };
  t.r1_c1 = at(0, 0); t.r1_c2 = at(0, 1); t.r1_c3 = at(0, 2);
  t.r2_c1 = at(1, 0); t.r2_c2 = at(1, 1); t.r2_c3 = at(1, 2);
  t.r3_c1 = at(2, 0); t.r3_c2 = at(2, 1); t.r3_c3 = at(2, 2);
}

}  // namespace

Transform::Transform()
    : r1_c1(1.0f), r1_c2(0.0f), r1_c3(0.0f), r1_c4(0.0f),
      r2_c1(0.0f), r2_c2(1.0f), r2_c3(0.0f), r2_c4(0.0f),
      r3_c1(0.0f), r3_c2(0.0f), r3_c3(1.0f), r3_c4(0.0f) {}

bool Transform::isTransform(const float& tolerance) const {
  // R^T R - I is symmetric: its entries are the dot products of the columns
  // of R, less 1 on the diagonal, so six of them decide. Each is compared on
  // its own, so that a NaN anywhere (or a NaN tolerance) fails a comparison.
  const Eigen::Vector3d c1 = Eigen::Vector3f(r1_c1, r2_c1, r3_c1).cast<double>();
  const Eigen::Vector3d c2 = Eigen::Vector3f(r1_c2, r2_c2, r3_c2).cast<double>();
  const Eigen::Vector3d c3 = Eigen::Vector3f(r1_c3, r2_c3, r3_c3).cast<double>();
  const double limit = static_cast<double>(tolerance);
  const bool orthonormal = std::abs(c1.dot(c1) - 1.0) <= limit &&
                           std::abs(c2.dot(c2) - 1.0) <= limit &&
                           std::abs(c3.dot(c3) - 1.0) <= limit &&
                           std::abs(c1.dot(c2)) <= limit && std::abs(c1.dot(c3)) <= limit &&
                           std::abs(c2.dot(c3)) <= limit;
  // An infinite entry makes a dot product infinite or NaN and fails above;
  // the translation is checked on its own.
  return orthonormal && c1.dot(c2.cross(c3)) > 0.0 && std::isfinite(r1_c4) &&
         std::isfinite(r2_c4) && std::isfinite(r3_c4);
}

void Transform::normalizeTransform() {
  if (!allFinite(*this)) {
    return;
  }
  // Polar decomposition: with R = U S V^T, U V^T is the orthogonal matrix
  // nearest to R. If that is a reflection, negating the singular vector of the
  // smallest singular value (JacobiSVD sorts them in decreasing order, so the
  // last column of U) gives the nearest rotation instead.
  const Eigen::JacobiSVD<Matrix3> svd(rotationOf(*this), Eigen::ComputeFullU | Eigen::ComputeFullV);
  Matrix3 u = svd.matrixU();
  const Matrix3 vt = svd.matrixV().transpose();
  if ((u * vt).determinant() < 0.0) {
    u.col(2) = -u.col(2);
  }
  setRotation(*this, u * vt);
}

std::vector<float> Transform::toVector() const {
  const std::array<float, 12> fields = fieldsOf(*this);
  std::vector<float> out(fields.begin(), fields.end());
  out.insert(out.end(), {0.0f, 0.0f, 0.0f, 1.0f});
  return out;
}

bool operator==(const Transform& a, const Transform& b) { return fieldsOf(a) == fieldsOf(b); }

bool operator!=(const Transform& a, const Transform& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Transform& t) {
  const std::array<float, 12> fields = fieldsOf(t);
  out << "Transform(";
  for (std::size_t row = 0; row < 3; ++row) {
    out << (row == 0 ? "[" : "], [");
    for (std::size_t column = 0; column < 4; ++column) {
      out << (column == 0 ? "" : ", ") << FloatText{fields[4 * row + column]};
    }
  }
  return out << "])";
}

}  // namespace Math
}  // namespace KR
