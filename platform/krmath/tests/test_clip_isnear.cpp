// The geometry library's small pieces: clipping and nearness (axis masks and
// frames through the readers of krvalueutils, in its test_scalar).
#include <kr/math/clip.h>
#include <kr/math/isnear.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace KR::Math;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

TEST(ClipData, ClampsAndReportsChange) {
  const struct {
    float min, max, data, expected;
    bool changed;
  } cases[] = {
      {-1, 1, -2, -1, true}, {-1, 1, 2, 1, true}, {-1, 1, 0.25f, 0.25f, false},
      {-1, 1, -1, -1, false}, {-1, 1, 1, 1, false},  // a bound itself is not a change
      {1, -1, 2, 1, true}, {1, -1, 0, 0, false},      // bounds in either order
      {kNaN, 1, -100, -100, false}, {kNaN, 1, 5, 1, true},  // a NaN bound is an open side
      {-1, 1, kNaN, kNaN, false},                          // NaN data is left as it is
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "[" << c.min << ", " << c.max << "] " << c.data);
    float data = c.data;
    EXPECT_EQ(clipData(c.min, c.max, data), c.changed);
    EXPECT_TRUE(data == c.expected || (std::isnan(data) && std::isnan(c.expected))) << data;
  }
}

TEST(IsNear, InclusiveBoundNaNInfinitiesAndLengths) {
  EXPECT_TRUE(isNear(0.5f, 0.75f, 0.25f));  // exactly at the bound
  EXPECT_FALSE(isNear(0.5f, 0.75f, 0.2499f));
  EXPECT_FALSE(isNear(kNaN, kNaN, kInf));
  EXPECT_TRUE(isNear(kInf, kInf, 0.0f));
  EXPECT_FALSE(isNear(kInf, -kInf, std::numeric_limits<float>::max()));
  EXPECT_TRUE(isNear(std::vector<float>{1, 2}, std::vector<float>{1, 2.25f}, 0.25f));
  EXPECT_FALSE(isNear(std::vector<float>{1, 2}, std::vector<float>{1, 2.5f}, 0.25f));
  EXPECT_FALSE(isNear(std::vector<float>{1, 2}, std::vector<float>{1}, 1.0f));
}

}  // namespace
