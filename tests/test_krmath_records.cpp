// Geometry records: transform validation and repair, vector conversions,
// layout, comparison and printing.
#include <kr/math/pose2d.h>
#include <kr/math/pose2dandtime.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>
#include <kr/math/position6d.h>
#include <kr/math/transform.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace KR::Math;
using Matrix = std::array<std::array<double, 3>, 3>;
using Vec3 = std::array<float, 3>;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// Readers of values rely on the field order.
#define KR_AT(R, f, n) (offsetof(R, f) == (n) * sizeof(float))
static_assert(KR_AT(Position2D, x, 0) && KR_AT(Position2D, y, 1));
static_assert(KR_AT(Pose2D, x, 0) && KR_AT(Pose2D, y, 1) && KR_AT(Pose2D, theta, 2));
static_assert(KR_AT(Pose2DAndTime, pose, 0) && KR_AT(Pose2DAndTime, time, 3));
static_assert(KR_AT(Position3D, x, 0) && KR_AT(Position3D, y, 1) && KR_AT(Position3D, z, 2));
static_assert(KR_AT(Position6D, x, 0) && KR_AT(Position6D, y, 1) && KR_AT(Position6D, z, 2) &&
              KR_AT(Position6D, wx, 3) && KR_AT(Position6D, wy, 4) && KR_AT(Position6D, wz, 5));
static_assert(KR_AT(Pose2DPosVelAcc, position, 0) && KR_AT(Pose2DPosVelAcc, velocity, 3) &&
              KR_AT(Pose2DPosVelAcc, acceleration, 6));
static_assert(KR_AT(Transform, r1_c1, 0) && KR_AT(Transform, r1_c2, 1) &&
              KR_AT(Transform, r1_c3, 2) && KR_AT(Transform, r1_c4, 3) &&
              KR_AT(Transform, r2_c1, 4) && KR_AT(Transform, r2_c2, 5) &&
              KR_AT(Transform, r2_c3, 6) && KR_AT(Transform, r2_c4, 7) &&
              KR_AT(Transform, r3_c1, 8) && KR_AT(Transform, r3_c2, 9) &&
              KR_AT(Transform, r3_c3, 10) && KR_AT(Transform, r3_c4, 11));
#undef KR_AT

// The fields of a Transform row by row.
float Transform::* const kFields[12] = {
    &Transform::r1_c1, &Transform::r1_c2, &Transform::r1_c3, &Transform::r1_c4,
    &Transform::r2_c1, &Transform::r2_c2, &Transform::r2_c3, &Transform::r2_c4,
    &Transform::r3_c1, &Transform::r3_c2, &Transform::r3_c3, &Transform::r3_c4};

Transform makeTransform(const Matrix& r, const Vec3& translation = {}) {
  Transform t;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) t.*kFields[4 * i + j] = static_cast<float>(r[i][j]);
    t.*kFields[4 * i + 3] = translation[i];
  }
  return t;
}

Vec3 translationOf(const Transform& t) { return {t.r1_c4, t.r2_c4, t.r3_c4}; }

// Frobenius distance between the rotation part of `t` and `m`.
double distance(const Transform& t, const Matrix& m) {
  double sum = 0;
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) sum += std::pow(t.*kFields[4 * i + j] - m[i][j], 2);
  return std::sqrt(sum);
}

Matrix diag(double a, double b, double c) { return {{{a, 0, 0}, {0, b, 0}, {0, 0, c}}}; }
Matrix with(Matrix m, std::size_t i, std::size_t j, double value) {
  m[i][j] = value;
  return m;
}
const Matrix kRotZ90 = {{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}};

// Rotation by `angle` about the unit vector (x, y, z) (Rodrigues' formula).
Matrix axisAngle(double x, double y, double z, double angle) {
  const double c = std::cos(angle), s = std::sin(angle), k = 1 - c;
  return {{{c + x * x * k, x * y * k - z * s, x * z * k + y * s},
           {y * x * k + z * s, c + y * y * k, y * z * k - x * s},
           {z * x * k - y * s, z * y * k + x * s, c + z * z * k}}};
}

// The band follows the largest |R^T R - I| entry: a scale s gives s^2 - 1
// (1.0004: 0.0008, 1.003: 0.006, 0.998: -0.004, 1.005: 0.010025), an extra
// off-diagonal entry e gives e. A negative determinant fails at any tolerance.
TEST(TransformIsTransform, ToleranceBandsOrientationAndRepair) {
  const struct {
    const char* name;
    Matrix r;
    bool tiny, strict, lenient, huge;  // at 1e-9, 0.001, 0.01, 1e30
  } cases[] = {
      {"identity", diag(1, 1, 1), true, true, true, true},
      {"90 deg about z", kRotZ90, true, true, true, true},
      {"cyclic permutation", {{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}}, true, true, true, true},
      {"180 deg about x", diag(1, -1, -1), true, true, true, true},
      {"scale 1.0004", diag(1.0004, 1.0004, 1.0004), false, true, true, true},
      {"scale 1.003", diag(1.003, 1.003, 1.003), false, false, true, true},
      {"scale 0.998 on y", diag(1, 0.998, 1), false, false, true, true},
      {"scale 1.005", diag(1.005, 1.005, 1.005), false, false, false, true},
      {"scale 1.02", diag(1.02, 1.02, 1.02), false, false, false, true},
      {"shear 0.0005", with(diag(1, 1, 1), 0, 1, 0.0005), false, true, true, true},
      {"shear 0.003", with(kRotZ90, 2, 0, 0.003), false, false, true, true},
      {"shear 0.02", with(diag(1, 1, 1), 1, 2, 0.02), false, false, false, true},
      {"reflection", diag(1, 1, -1), false, false, false, false},
      {"point reflection", diag(-1, -1, -1), false, false, false, false},
      {"swap x and y", {{{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}}, false, false, false, false},
      {"near reflection", diag(1.003, 1, -1), false, false, false, false},
  };
  for (const auto& c : cases) {
    for (const Vec3& translation : {Vec3{}, Vec3{1e6f, -2.5f, 1e-30f}}) {
      const Transform t = makeTransform(c.r, translation);
      SCOPED_TRACE(testing::Message() << c.name << " " << t);
      EXPECT_EQ(t.isTransform(1e-9f), c.tiny);
      EXPECT_EQ(t.isTransform(0.001f), c.strict);
      EXPECT_EQ(t.isTransform(0.01f), c.lenient);
      EXPECT_EQ(t.isTransform(1e30f), c.huge);
      // None is singular: the repair gives a rotation, keeps the translation
      // and leaves an exact rotation as it is.
      Transform repaired = t;
      repaired.normalizeTransform();
      EXPECT_TRUE(repaired.isTransform(0.001f)) << repaired;
      EXPECT_EQ(translationOf(repaired), translation);
      EXPECT_TRUE(!c.tiny || distance(repaired, c.r) < 1e-6) << repaired;
    }
  }
  EXPECT_FALSE(makeTransform(diag(0, 0, 0)).isTransform(1e30f));
  for (const float tolerance : {kNaN, -0.001f, -kInf}) {
    EXPECT_FALSE(Transform().isTransform(tolerance)) << tolerance;
  }
}

TEST(TransformIsTransform, NonFiniteEntryFailsAndIsNotRepaired) {
  for (float Transform::* const field : kFields) {
    for (const float value : {kNaN, kInf, -kInf}) {
      Transform t = makeTransform(diag(1.003, 1.003, 1.003), {1, 2, 3});
      t.*field = value;
      SCOPED_TRACE(testing::Message() << t);
      EXPECT_FALSE(t.isTransform(1e30f));
      EXPECT_FALSE(t.isTransform(kInf));
      const Transform before = t;
      t.normalizeTransform();
      EXPECT_EQ(std::memcmp(&t, &before, sizeof t), 0);
    }
  }
}

// Random rotations plus up to 0.004 of noise per entry: those within the
// lenient band pass the strict test once repaired, keep their translation and
// end up no farther from the noisy matrix than the rotation the noise was
// added to, as the nearest rotation must.
TEST(TransformNormalize, RepairsRandomNearRotations) {
  std::mt19937 rng(20240611);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> angle(-3.2, 3.2), noise(-0.004, 0.004);
  std::uniform_real_distribution<float> offset(-10, 10);
  int lenient = 0, strict = 0;
  for (int n = 0; n < 2000; ++n) {
    const double x = normal(rng), y = normal(rng), z = normal(rng);
    const double norm = std::sqrt(x * x + y * y + z * z);
    const Matrix exact = axisAngle(x / norm, y / norm, z / norm, angle(rng));
    Matrix noisy = exact;
    for (auto& row : noisy)
      for (double& entry : row) entry += noise(rng);
    const Transform before = makeTransform(noisy, {offset(rng), offset(rng), offset(rng)});
    if (!before.isTransform(0.01f)) continue;
    ++lenient;
    strict += before.isTransform(0.001f);
    Transform t = before;
    t.normalizeTransform();
    SCOPED_TRACE(testing::Message() << "sample " << n << ": " << before << " -> " << t);
    EXPECT_TRUE(t.isTransform(0.001f));
    EXPECT_EQ(translationOf(t), translationOf(before));
    EXPECT_LE(distance(t, noisy), distance(makeTransform(exact), noisy) + 1e-5);
  }
  EXPECT_GT(lenient, 1000) << "the sample must exercise the repair";
  EXPECT_LT(strict, lenient / 4) << "the sample must exercise the repair";
}

TEST(TransformNormalize, AnyNonSingularMatrixBecomesTheNearestRotation) {
  std::mt19937 rng(7);
  std::uniform_real_distribution<double> entry(-10, 10);
  for (int n = 0; n < 500; ++n) {
    Matrix r{};
    for (auto& row : r)
      for (double& e : row) e = entry(rng);
    Transform t = makeTransform(r);
    t.normalizeTransform();
    EXPECT_TRUE(t.isTransform(0.001f)) << makeTransform(r) << " -> " << t;
  }
  // With a negative determinant, the nearest rotation flips the axis of the
  // smallest singular value: here always the one holding the -1.
  const Matrix flips[][2] = {{diag(3, 2, -1), diag(1, 1, 1)},
                             {diag(-1, 3, 2), diag(1, 1, 1)},
                             {{{{0, -3, 0}, {2, 0, 0}, {0, 0, -1}}}, kRotZ90}};
  for (const auto& [r, nearest] : flips) {
    Transform t = makeTransform(r);
    t.normalizeTransform();
    EXPECT_LT(distance(t, nearest), 1e-6) << t;
  }
}

TEST(RecordVectors, TransformPositionsAndSixValueConstructor) {
  Transform t;
  for (std::size_t i = 0; i < 12; ++i) t.*kFields[i] = static_cast<float>(i + 1);
  EXPECT_EQ(t.toVector(), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 1}));
  EXPECT_EQ(Transform().toVector(),
            (std::vector<float>{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
  EXPECT_EQ(Position3D(1, -2, 3.5f).toVector(), (std::vector<float>{1, -2, 3.5f}));
  const std::vector<float> six = {1, 2, 3, -4, 5.5f, 6};
  EXPECT_EQ(Position6D(six), Position6D(1, 2, 3, -4, 5.5f, 6));
  EXPECT_EQ(Position6D(six).toVector(), six);
  for (const std::size_t size : {0, 5, 7}) {
    EXPECT_THROW(Position6D(std::vector<float>(size, 1.0f)), std::runtime_error) << size;
  }
}

// Each field on its own decides equality; a NaN is unequal even to itself.
TEST(RecordComparison, EveryFieldCounts) {
  Transform base;
  for (std::size_t i = 0; i < 12; ++i) base.*kFields[i] = static_cast<float>(i) + 0.5f;
  for (float Transform::* const field : kFields) {
    Transform other = base;
    other.*field = 100;
    EXPECT_TRUE(other != base && !(other == base));
    other.*field = kNaN;
    EXPECT_NE(other, other);
  }
  EXPECT_TRUE(base == base && !(base != base));
  const std::vector<float> six = {1, 2, 3, 4, 5, 6};
  for (std::size_t i = 0; i < 6; ++i) {
    std::vector<float> other = six;
    other[i] = 100;
    EXPECT_NE(Position6D(other), Position6D(six)) << i;
  }
  EXPECT_NE(Position2D(1, 2), Position2D(2, 1));
  EXPECT_NE(Position3D(1, 2, 3), Position3D(1, 2, 4));
  EXPECT_NE(Pose2D(1, 2, 3), Pose2D(1, 2, 4));
  EXPECT_NE(Pose2DAndTime(Pose2D(1, 2, 3), 4), Pose2DAndTime(Pose2D(1, 2, 3), 5));
  EXPECT_NE(Pose2DAndTime(Pose2D(1, 2, 3), 4), Pose2DAndTime(Pose2D(1, 9, 3), 4));
  const Pose2D a(1, 2, 3), b(4, 5, 6), c(7, 8, 9), d;
  const Pose2DPosVelAcc pva(a, b, c);
  EXPECT_EQ(pva, Pose2DPosVelAcc(a, b, c));
  EXPECT_NE(pva, Pose2DPosVelAcc(d, b, c));
  EXPECT_NE(pva, Pose2DPosVelAcc(a, d, c));
  EXPECT_NE(pva, Pose2DPosVelAcc(a, b, d));
}

template <typename Record>
std::string printed(const Record& r) {
  std::ostringstream out;
  out << r;
  EXPECT_EQ(out.flags(), std::ostringstream().flags()) << "flags must be left as they were";
  return out.str();
}

TEST(RecordPrinting, Format) {
  EXPECT_EQ(printed(Position2D(1, -2)), "Position2D(x=1, y=-2)");
  EXPECT_EQ(printed(Pose2DAndTime(Pose2D(1, 2, 0.5f), 4)),
            "Pose2DAndTime(Pose2D(x=1, y=2, theta=0.5), time=4)");
  EXPECT_EQ(printed(Position3D(1, 2, 3)), "Position3D(x=1, y=2, z=3)");
  EXPECT_EQ(printed(Position6D(1, 2, 3, 0, 0, 0.5f)),
            "Position6D(x=1, y=2, z=3, wx=0, wy=0, wz=0.5)");
  EXPECT_EQ(printed(Pose2DPosVelAcc(Pose2D(1, 2, 3), Pose2D(4, 5, 6), Pose2D(7, 8, 9))),
            "Pose2DPosVelAcc(position=Pose2D(x=1, y=2, theta=3), "
            "velocity=Pose2D(x=4, y=5, theta=6), acceleration=Pose2D(x=7, y=8, theta=9))");
  EXPECT_EQ(printed(makeTransform(kRotZ90, {1.5f, 2, 3})),
            "Transform([0, -1, 0, 1.5], [1, 0, 0, 2], [0, 0, 1, 3])");
}

}  // namespace
