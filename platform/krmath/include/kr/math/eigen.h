// Conversions between the geometry records and Eigen's types, for code that
// does its geometry with Eigen. Header only; the program that includes it
// needs Eigen 3 (libkrmath itself does not pass Eigen on).
#pragma once

#include <kr/math/position3d.h>
#include <kr/math/position6d.h>
#include <kr/math/transform.h>

#include <Eigen/Geometry>

#include <cmath>

namespace KR {
namespace Math {

/// The transform as an isometry: R and the translation copied as they are
/// (no check that R is a rotation).
inline Eigen::Isometry3f toEigen(const Transform& t) {
  Eigen::Isometry3f result = Eigen::Isometry3f::Identity();
  result.matrix().topRows<3>() << t.r1_c1, t.r1_c2, t.r1_c3, t.r1_c4,
                                  t.r2_c1, t.r2_c2, t.r2_c3, t.r2_c4,
                                  t.r3_c1, t.r3_c2, t.r3_c3, t.r3_c4;
  return result;
}

/// The upper three rows of the isometry's matrix.
inline Transform transformFromEigen(const Eigen::Isometry3f& isometry) {
  const Eigen::Matrix4f& m = isometry.matrix();
  Transform t;
  t.r1_c1 = m(0, 0); t.r1_c2 = m(0, 1); t.r1_c3 = m(0, 2); t.r1_c4 = m(0, 3);
  t.r2_c1 = m(1, 0); t.r2_c2 = m(1, 1); t.r2_c3 = m(1, 2); t.r2_c4 = m(1, 3);
  t.r3_c1 = m(2, 0); t.r3_c2 = m(2, 1); t.r3_c3 = m(2, 2); t.r3_c4 = m(2, 3);
  return t;
}

/// The pose as an isometry: translation (x, y, z) and the rotation
/// Rz(wz) * Ry(wy) * Rx(wx), that is roll wx about x first, then pitch wy
/// about y, then yaw wz about z, all about the fixed axes.
inline Eigen::Isometry3f toEigen(const Position6D& p) {
  Eigen::Isometry3f result = Eigen::Isometry3f::Identity();
  result.translate(Eigen::Vector3f(p.x, p.y, p.z));
  result.rotate(Eigen::AngleAxisf(p.wz, Eigen::Vector3f::UnitZ()) *
                Eigen::AngleAxisf(p.wy, Eigen::Vector3f::UnitY()) *
                Eigen::AngleAxisf(p.wx, Eigen::Vector3f::UnitX()));
  return result;
}

/// The pose of an isometry whose linear part is a rotation, with angles as
/// toEigen(const Position6D&) takes them: wx and wz in [-pi, pi], wy in
/// [-pi/2, pi/2]. At wy = +-pi/2 roll and yaw turn about the same axis; the
/// whole turn is then given to wz, with wx 0.
inline Position6D position6DFromEigen(const Eigen::Isometry3f& isometry) {
  const Eigen::Matrix3f r = isometry.linear();
  const Eigen::Vector3f t = isometry.translation();
  const float sinPitch = -r(2, 0);
  const float wy = std::asin(sinPitch < -1.0f ? -1.0f : (sinPitch > 1.0f ? 1.0f : sinPitch));
  const float cosPitch = std::hypot(r(0, 0), r(1, 0));
  if (cosPitch < 1e-6f) {
    return Position6D(t.x(), t.y(), t.z(), 0.0f, wy, std::atan2(-r(0, 1), r(1, 1)));
  }
  return Position6D(t.x(), t.y(), t.z(), std::atan2(r(2, 1), r(2, 2)), wy,
                    std::atan2(r(1, 0), r(0, 0)));
}

inline Eigen::Vector3f toEigen(const Position3D& p) { return Eigen::Vector3f(p.x, p.y, p.z); }

inline Position3D position3DFromEigen(const Eigen::Vector3f& v) {
  return Position3D(v.x(), v.y(), v.z());
}

}  // namespace Math
}  // namespace KR
