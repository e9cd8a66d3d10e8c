// Geometry records: layout, equality, transform validation and repair,
// vector conversions, and how they print their floats.
#include <gtest/gtest.h>
#include <kr/math/floattext.h>
#include <kr/math/interpolationkey.h>
#include <kr/math/metricaldata.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dandtime.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>
#include <kr/math/position6d.h>
#include <kr/math/supportsequence.h>
#include <kr/math/transform.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iomanip>
#include <iterator>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
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
  const std::vector<float> six = {1, 2, 3, -4, 5.5f, 6};
  EXPECT_EQ(Position6D(six), Position6D(1, 2, 3, -4, 5.5f, 6));
  EXPECT_EQ(Position6D(six).toVector(), six);
  for (const std::size_t size : {0u, 5u, 7u}) {
    EXPECT_THROW(Position6D(std::vector<float>(size, 1.0f)), std::runtime_error) << size;
  }
}

// ---- Equality: every field counts, floats compare exactly -------------------

// Random floats of every size and sign, with the edges; never NaN.
float randomFloat(std::mt19937& rng) {
  const float edges[] = {0.0f,
                         -0.0f,
                         std::numeric_limits<float>::denorm_min(),
                         std::numeric_limits<float>::max(),
                         -std::numeric_limits<float>::infinity(),
                         1.0f};
  if (rng() % 4 == 0) return edges[rng() % std::size(edges)];
  float f = kNaN;
  while (std::isnan(f)) {
    const std::uint32_t bits = static_cast<std::uint32_t>(rng());
    std::memcpy(&f, &bits, sizeof f);
  }
  return f;
}

// A random float that does not compare equal to `f` (0 and -0 are equal).
float otherThan(float f, std::mt19937& rng) {
  float other = randomFloat(rng);
  while (other == f) other = randomFloat(rng);
  return other;
}

template <class R>
void expectEqual(const R& a, const R& b, bool equal) {
  EXPECT_EQ(a == b, equal);
  EXPECT_EQ(b == a, equal);
  EXPECT_EQ(a != b, !equal);
  EXPECT_EQ(b != a, !equal);
}

// The record of floats whose field k is fields[k].
template <class R, std::size_t N>
R recordOf(const std::array<float, N>& fields) {
  static_assert(sizeof(R) == sizeof fields && std::is_trivially_copyable_v<R>);
  R record;
  std::memcpy(static_cast<void*>(&record), fields.data(), sizeof record);
  return record;
}

// A record made only of floats, field k at float k: equal copies compare
// equal, a change of any one field makes them differ, a zero of the other
// sign does not, and a NaN in any field makes the record differ from itself.
template <class R>
void expectFloatFieldsCompare(const char* name, std::mt19937& rng) {
  using Fields = std::array<float, sizeof(R) / sizeof(float)>;
  for (int round = 0; round < 100; ++round) {
    Fields fields;
    for (float& f : fields) f = randomFloat(rng);
    const R a = recordOf<R>(fields);
    expectEqual(a, R(a), true);
    for (std::size_t k = 0; k < fields.size(); ++k) {
      SCOPED_TRACE(testing::Message() << name << " field " << k << " round " << round);
      Fields changed = fields;
      changed[k] = otherThan(fields[k], rng);
      expectEqual(a, recordOf<R>(changed), false);
      Fields zero = fields, minusZero = fields, nan = fields;
      zero[k] = 0.0f;
      minusZero[k] = -0.0f;
      nan[k] = kNaN;
      expectEqual(recordOf<R>(zero), recordOf<R>(minusZero), true);
      expectEqual(recordOf<R>(nan), recordOf<R>(nan), false);
    }
  }
}

// A record with parts of other kinds: each change on its own makes it differ.
template <class R>
void expectEachChangeCounts(const R& base, const std::vector<std::function<void(R&)>>& changes) {
  expectEqual(base, R(base), true);
  for (std::size_t i = 0; i < changes.size(); ++i) {
    SCOPED_TRACE(i);
    R changed = base;
    changes[i](changed);
    expectEqual(base, changed, false);
  }
}

TEST(RecordEquality, EveryFieldOnItsOwn) {
  std::mt19937 rng(77);
  expectFloatFieldsCompare<Position2D>("Position2D", rng);
  expectFloatFieldsCompare<Pose2D>("Pose2D", rng);
  expectFloatFieldsCompare<Pose2DAndTime>("Pose2DAndTime", rng);
  expectFloatFieldsCompare<Pose2DPosVelAcc>("Pose2DPosVelAcc", rng);
  expectFloatFieldsCompare<Position3D>("Position3D", rng);
  expectFloatFieldsCompare<Position6D>("Position6D", rng);
  expectFloatFieldsCompare<Transform>("Transform", rng);

  using Interpolation::Key;
  using Interpolation::Parameter;
  const auto r = [&rng] { return randomFloat(rng); };
  for (int round = 0; round < 50; ++round) {
    const Key key(r(), Parameter(1, Position2D(r(), r())), Parameter(2, Position2D(r(), r())));
    expectEachChangeCounts<Key>(
        key,
        {[&](Key& k) { k.value = otherThan(k.value, rng); }, [](Key& k) { k.firstParam.type = 3; },
         [&](Key& k) { k.firstParam.offset.x = otherThan(k.firstParam.offset.x, rng); },
         [&](Key& k) { k.firstParam.offset.y = otherThan(k.firstParam.offset.y, rng); },
         [](Key& k) { k.secondParam.type = 0; },
         [&](Key& k) { k.secondParam.offset.x = otherThan(k.secondParam.offset.x, rng); },
         [&](Key& k) { k.secondParam.offset.y = otherThan(k.secondParam.offset.y, rng); }});
  }

  MetricalData data;
  data.label1 = "a";
  data.label2 = "b";
  data.points = {Position3D(1, 2, 3)};
  data.duration = boost::chrono::nanoseconds(5);
  expectEachChangeCounts<MetricalData>(
      data,
      {[](MetricalData& d) { d.label1 = "b"; }, [](MetricalData& d) { d.label2 = "a"; },
       [](MetricalData& d) { d.transform.r3_c4 = 1; }, [](MetricalData& d) { d.points[0].z = -3; },
       [](MetricalData& d) { d.points.push_back(d.points[0]); },
       [](MetricalData& d) { d.duration += boost::chrono::nanoseconds(1); }});

  expectEachChangeCounts<SupportSequence>(
      SupportSequence("s", {0.5f, 1}, {true, false}),
      {[](SupportSequence& s) { s.name = "S"; }, [](SupportSequence& s) { s.values[1] = 2; },
       [](SupportSequence& s) { s.flags[1] = true; },
       [](SupportSequence& s) { s = SupportSequence("s", {0.5f}, {true}); }});
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
      << Pose2DAndTime(Pose2D(0.1f, 2, 3), 0.1f)
      << Pose2DPosVelAcc(Pose2D(1, 2, 3), Pose2D(4, 5, 6), Pose2D(7, 8, 0.1f));
  EXPECT_EQ(all.str(),
            "Position2D(x=0.1, y=2)Position3D(x=0.1, y=2, z=3)"
            "Position6D(x=0.1, y=2, z=3, wx=4, wy=5, wz=6)"
            "Pose2DAndTime(Pose2D(x=0.1, y=2, theta=3), time=0.1)"
            "Pose2DPosVelAcc(position=Pose2D(x=1, y=2, theta=3), velocity=Pose2D(x=4, y=5, "
            "theta=6), acceleration=Pose2D(x=7, y=8, theta=0.1))");
}
