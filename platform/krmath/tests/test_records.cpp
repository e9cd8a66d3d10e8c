// Geometry records: layout, transform validation and repair, vector
// conversions, and how they print their floats.
#include <kr/math/floattext.h>
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
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace KR::Math;
using Matrix = std::array<std::array<double, 3>, 3>;
using Vec3 = std::array<float, 3>;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Readers of values rely on the field order: the last field of each record
// sits where the order puts it, and nothing follows it.
constexpr std::size_t kF = sizeof(float);
static_assert(offsetof(Position2D, y) == 1 * kF && sizeof(Position2D) == 2 * kF);
static_assert(offsetof(Pose2D, theta) == 2 * kF && sizeof(Pose2D) == 3 * kF);
static_assert(offsetof(Pose2DAndTime, time) == 3 * kF && sizeof(Pose2DAndTime) == 4 * kF);
static_assert(offsetof(Position3D, z) == 2 * kF && sizeof(Position3D) == 3 * kF);
static_assert(offsetof(Position6D, wz) == 5 * kF && sizeof(Position6D) == 6 * kF);
static_assert(offsetof(Pose2DPosVelAcc, acceleration) == 6 * kF &&
              sizeof(Pose2DPosVelAcc) == 9 * kF);
static_assert(offsetof(Transform, r3_c4) == 11 * kF && sizeof(Transform) == 12 * kF);

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
    for (std::size_t j = 0; j < 3; ++j)
      sum += std::pow(static_cast<double>(t.*kFields[4 * i + j]) - m[i][j], 2);
  return std::sqrt(sum);
}

Matrix diag(double a, double b, double c) { return {{{a, 0, 0}, {0, b, 0}, {0, 0, c}}}; }
const Matrix kIdentity = diag(1, 1, 1);
const Matrix kRotZ90 = {{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}};
const Vec3 kTranslation = {1e6f, -2.5f, 1e-30f};

// The band follows the largest |R^T R - I| entry: a scale s gives s^2 - 1
// (1.0004: 0.0008, 0.998: -0.004, 1.005: 0.010025), the shear an off-diagonal
// 0.003. A negative determinant or a NaN anywhere fails at any tolerance. The
// repair gives the nearest rotation, where known; for the reflection, with
// singular values 3, 2 and 1, it flips the axis of the smallest (x to -y), not z.
TEST(TransformIsTransform, ToleranceBandsAndRepair) {
  using Bands = std::array<bool, 4>;  // passes at 1e-9, 0.001, 0.01, 1e30
  const struct {
    const char* name;
    Matrix r;
    Bands bands;
    const Matrix* nearest;  // the rotation the repair must give, where known
    Vec3 translation = kTranslation;
  } rows[] = {
      {"90 deg about z", kRotZ90, {true, true, true, true}, &kRotZ90},
      {"scale 1.0004", diag(1.0004, 1.0004, 1.0004), {false, true, true, true}, &kIdentity},
      {"scale 0.998 on y", diag(1, 0.998, 1), {false, false, true, true}, &kIdentity},
      {"shear 0.003", {{{0, -1, 0}, {1, 0, 0}, {0.003, 0, 1}}}, {false, false, true, true}, {}},
      {"scale 1.005", diag(1.005, 1.005, 1.005), {false, false, false, true}, &kIdentity},
      {"reflection", {{{0, -3, 0}, {-1, 0, 0}, {0, 0, 2}}}, {false, false, false, false}, &kRotZ90},
      {"NaN in the translation", diag(1.003, 1.003, 1.003), {false, false, false, false}, {},
       {1, kNaN, 3}},
  };
  for (const auto& row : rows) {
    const Transform t = makeTransform(row.r, row.translation);
    SCOPED_TRACE(testing::Message() << row.name << " " << t);
    EXPECT_EQ((Bands{t.isTransform(1e-9f), t.isTransform(0.001f), t.isTransform(0.01f),
                     t.isTransform(1e30f)}),
              row.bands);
    Transform repaired = t;
    repaired.normalizeTransform();
    if (std::isnan(row.translation[1])) {  // a non-finite record is left as it is
      EXPECT_EQ(std::memcmp(&repaired, &t, sizeof t), 0);
      continue;
    }
    EXPECT_TRUE(repaired.isTransform(0.001f)) << repaired;
    EXPECT_EQ(translationOf(repaired), kTranslation);
    EXPECT_TRUE(!row.nearest || distance(repaired, *row.nearest) < 1e-6) << repaired;
  }
  for (const float badTolerance : {kNaN, -0.001f}) {
    EXPECT_FALSE(Transform().isTransform(badTolerance)) << badTolerance;
  }
}

TEST(RecordConversions, VectorsInFieldOrder) {
  Transform t;
  for (std::size_t i = 0; i < 12; ++i) t.*kFields[i] = static_cast<float>(i + 1);
  EXPECT_EQ(t.toVector(), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 1}));
  EXPECT_EQ(Position3D(1, -2, 3.5f).toVector(), (std::vector<float>{1, -2, 3.5f}));
  // Comparisons take every part into account.
  const Pose2DPosVelAcc state(Pose2D(1, 2, 3), Pose2D(4, 5, 6), Pose2D(7, 8, 9));
  EXPECT_TRUE(state == Pose2DPosVelAcc(state));
  EXPECT_FALSE(state == Pose2DPosVelAcc(Pose2D(1, 2, 3), Pose2D(4, 5, 6), Pose2D(7, 8, 0)));
  EXPECT_FALSE(Pose2DAndTime(Pose2D(1, 2, 3), 4) != Pose2DAndTime(Pose2D(1, 2, 3), 4));
  const std::vector<float> six = {1, 2, 3, -4, 5.5f, 6};
  EXPECT_EQ(Position6D(six), Position6D(1, 2, 3, -4, 5.5f, 6));
  EXPECT_EQ(Position6D(six).toVector(), six);
  for (const std::size_t size : {0u, 5u, 7u}) {
    EXPECT_THROW(Position6D(std::vector<float>(size, 1.0f)), std::runtime_error) << size;
  }
}

}  // namespace

namespace {

std::uint32_t bitsOf(float f) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &f, sizeof bits);
  return bits;
}

std::string streamed(const Pose2D& pose, std::ios_base& (*manipulator)(std::ios_base&)) {
  std::ostringstream out;
  out << manipulator << std::setprecision(2) << pose;
  return out.str();
}

}  // namespace

// Every float, random bits, the edges included, reads back from its text to
// the same bits; NaN is "nan" whatever its payload.
TEST(FloatText, EveryFloatReadsBackToItsBits) {
  std::mt19937 rng(2611);
  const float edges[] = {0.0f, -0.0f, std::numeric_limits<float>::min(),
                         std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max(),
                         -std::numeric_limits<float>::max(), 123456.789f, 0.1f, 1e20f};
  for (int i = 0; i < 300000; ++i) {
    float f = 0.0f;
    if (i < static_cast<int>(std::size(edges))) {
      f = edges[i];
    } else {
      const std::uint32_t bits = static_cast<std::uint32_t>(rng());
      std::memcpy(&f, &bits, sizeof f);
    }
    const std::string text = floatText(f);
    if (std::isnan(f)) {
      ASSERT_EQ(text, "nan");
      continue;
    }
    ASSERT_LE(text.size(), 15u) << text;
    ASSERT_EQ(bitsOf(std::strtof(text.c_str(), nullptr)), bitsOf(f)) << text;
  }
}

TEST(FloatText, ShortestForms) {
  const std::pair<float, const char*> cases[] = {
      {1.0f, "1"},         {0.1f, "0.1"},       {123456.789f, "123456.79"},
      {-0.0f, "-0"},       {1e20f, "1e+20"},    {std::numeric_limits<float>::infinity(), "inf"},
      {-std::numeric_limits<float>::infinity(), "-inf"}, {-kNaN, "nan"}};
  for (const auto& [number, text] : cases) {
    EXPECT_EQ(floatText(number), text);
  }
}

// Records print their floats exactly, whatever the stream is set to, and
// leave its settings as they were: two different poses never print alike.
TEST(FloatText, RecordsPrintExactlyWhateverTheStream) {
  const Pose2D pose(123456.789f, 0.1f, -0.0f);
  const std::string expected = "Pose2D(x=123456.79, y=0.1, theta=-0)";
  EXPECT_EQ(streamed(pose, std::fixed), expected);
  EXPECT_EQ(streamed(pose, std::scientific), expected);
  EXPECT_EQ(streamed(pose, std::defaultfloat), expected);
  std::ostringstream out;
  out << std::fixed << std::setprecision(2) << pose << ' ' << 2.0f / 3.0f;
  EXPECT_EQ(out.str(), expected + " 0.67");
  std::ostringstream both;
  both << Pose2D(123456.79f, 0.0f, 0.0f) << ' ' << Pose2D(123456.78f, 0.0f, 0.0f);
  EXPECT_EQ(both.str(), "Pose2D(x=123456.79, y=0, theta=0) Pose2D(x=123456.78, y=0, theta=0)");
  std::ostringstream all;
  all << Position2D(0.1f, 2) << Position3D(0.1f, 2, 3) << Position6D(0.1f, 2, 3, 4, 5, 6)
      << Pose2DAndTime(Pose2D(0.1f, 2, 3), 0.1f);
  EXPECT_EQ(all.str(),
            "Position2D(x=0.1, y=2)Position3D(x=0.1, y=2, z=3)"
            "Position6D(x=0.1, y=2, z=3, wx=4, wy=5, wz=6)"
            "Pose2DAndTime(Pose2D(x=0.1, y=2, theta=3), time=0.1)");
}
