// Range clipping, axis masks and frames of the geometry library.
#include <kr/math/axismask.h>
#include <kr/math/clip.h>
#include <kr/math/frame.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

namespace {

using namespace KR::Math;

TEST(ClipData, ClampsAndReportsChange) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  const struct {
    float min, max, data, expected;
    bool changed;
  } cases[] = {
      {-1, 1, -2, -1, true},      {-1, 1, 2, 1, true},         {-1, 1, 0.25f, 0.25f, false},
      {-1, 1, -1, -1, false},     {-1, 1, 1, 1, false},        {-1, 1, 1e30f, 1, true},
      {-1, 1, -inf, -1, true},    {0.5f, 0.5f, 0, 0.5f, true}, {0.5f, 0.5f, 0.5f, 0.5f, false},
      // Bounds in either order.
      {1, -1, 2, 1, true},        {1, -1, -2, -1, true},       {1, -1, 0, 0, false},
      {1, -1, 1, 1, false},
      // A NaN bound leaves its side open.
      {nan, 1, -100, -100, false}, {nan, 1, 5, 1, true},
      {-1, nan, 100, 100, false},  {-1, nan, -5, -1, true},
      {nan, nan, 7, 7, false},     {-inf, inf, 1e30f, 1e30f, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "[" << c.min << ", " << c.max << "] " << c.data);
    float data = c.data;
    EXPECT_EQ(clipData(c.min, c.max, data), c.changed);
    EXPECT_EQ(data, c.expected);
  }
}

TEST(ClipData, NaNDataIsLeftAsItIs) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float bounds[][2] = {{-1, 1}, {1, -1}, {nan, 1}, {0, 0}};
  for (const auto& b : bounds) {
    float data = nan;
    EXPECT_FALSE(clipData(b[0], b[1], data));
    EXPECT_TRUE(std::isnan(data));
  }
}

TEST(IsAxisMask, OneToSixtyThree) {
  const struct {
    int value;
    bool mask;
  } cases[] = {{0, false},  {1, true},   {7, true},     {56, true},     {63, true},
               {64, false}, {65, false}, {127, false},  {-1, false},    {-63, false},
               {INT_MIN, false},         {INT_MAX, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(isAxisMask(c.value), c.mask) << c.value;
  }
}

TEST(IsFrame, ZeroToTwo) {
  const struct {
    int value;
    bool frame;
  } cases[] = {{-1, false}, {0, true}, {1, true}, {2, true}, {3, false},
               {INT_MIN, false}, {INT_MAX, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(isFrame(c.value), c.frame) << c.value;
  }
  EXPECT_EQ(std::string(frameName(FRAME_TORSO)), "FRAME_TORSO");
  EXPECT_EQ(std::string(frameName(FRAME_WORLD)), "FRAME_WORLD");
  EXPECT_EQ(std::string(frameName(FRAME_ROBOT)), "FRAME_ROBOT");
  EXPECT_EQ(std::string(frameName(static_cast<FRAME>(3))), "unknown");
}

}  // namespace
