// Conversions between the geometry records and Eigen (kr/math/eigen.h).
#include <kr/math/eigen.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace KR::Math;

Eigen::VectorXf fieldsOf(const Position6D& p) {
  const std::vector<float> fields = p.toVector();
  return Eigen::Map<const Eigen::VectorXf>(fields.data(), 6);
}

// The rotation of a Position6D is roll, then pitch, then yaw about the fixed
// axes: checked on where each turn alone sends the unit vectors.
TEST(Eigen, Position6DAnglesTurnAboutXThenYThenZ) {
  const float quarter = 1.5707964f;
  const struct {
    Position6D pose;
    Eigen::Vector3f from, to;
  } cases[] = {
      {Position6D(0, 0, 0, quarter, 0, 0), Eigen::Vector3f::UnitY(), Eigen::Vector3f::UnitZ()},
      {Position6D(0, 0, 0, 0, quarter, 0), Eigen::Vector3f::UnitZ(), Eigen::Vector3f::UnitX()},
      {Position6D(0, 0, 0, 0, 0, quarter), Eigen::Vector3f::UnitX(), Eigen::Vector3f::UnitY()},
      // roll first: y goes to z, then the yaw leaves z alone
      {Position6D(0, 0, 0, quarter, 0, quarter), Eigen::Vector3f::UnitY(), Eigen::Vector3f::UnitZ()},
      {Position6D(1, 2, 3, 0, 0, 0), Eigen::Vector3f::Zero(), Eigen::Vector3f(1, 2, 3)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.pose);
    EXPECT_TRUE((toEigen(c.pose) * c.from).isApprox(c.to, 1e-6f)) << (toEigen(c.pose) * c.from);
  }
}

TEST(Eigen, RoundTrips) {
  for (const Position6D& pose : {Position6D(1, -2, 3, 0.1f, -0.2f, 3.0f),
                                 Position6D(0, 0, 0, -3.0f, 1.2f, -0.5f)}) {
    const Position6D back = position6DFromEigen(toEigen(pose));
    EXPECT_TRUE(fieldsOf(back).isApprox(fieldsOf(pose), 1e-5f)) << pose << " came back as " << back;
  }
  // At a pitch of a quarter turn the roll goes into the yaw.
  const Position6D locked = position6DFromEigen(toEigen(Position6D(0, 0, 0, 0.25f, 1.5707964f, 1.0f)));
  EXPECT_NEAR(locked.wx, 0.0f, 1e-6f);
  EXPECT_NEAR(locked.wz, 0.75f, 1e-3f);

  Transform t;
  t.r1_c4 = 4.0f;
  t.r2_c1 = 0.5f;  // copied as it is, rotation or not
  t.r3_c2 = -2.0f;
  EXPECT_EQ(transformFromEigen(toEigen(t)), t);
  EXPECT_EQ(toEigen(t).matrix().row(3), Eigen::RowVector4f(0, 0, 0, 1));
  EXPECT_EQ(position3DFromEigen(toEigen(Position3D(1, 2, 3))), Position3D(1, 2, 3));
  EXPECT_EQ(toEigen(Position3D(1, 2, 3)), Eigen::Vector3f(1, 2, 3));
}

}  // namespace
