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
  const struct {
    float min, max, data, expected;
    bool changed;
  } cases[] = {
      {-1, 1, -2, -1, true}, {-1, 1, 2, 1, true}, {-1, 1, 0.25f, 0.25f, false},
      {-1, 1, -1, -1, false}, {-1, 1, 1, 1, false},  // a bound itself is not a change
      {1, -1, 2, 1, true}, {1, -1, 0, 0, false},      // bounds in either order
      {nan, 1, -100, -100, false}, {nan, 1, 5, 1, true}, {-1, nan, 100, 100, false},  // open side
      {-1, 1, nan, nan, false}, {1, -1, nan, nan, false},  // NaN data is left as it is
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "[" << c.min << ", " << c.max << "] " << c.data);
    float data = c.data;
    EXPECT_EQ(clipData(c.min, c.max, data), c.changed);
    EXPECT_TRUE(data == c.expected || (std::isnan(data) && std::isnan(c.expected))) << data;
  }
}

TEST(IsAxisMaskAndIsFrame, AcceptOneToSixtyThreeAndZeroToTwo) {
  for (const int mask : {1, 63}) EXPECT_TRUE(isAxisMask(mask)) << mask;
  for (const int mask : {0, 64, -1, INT_MIN}) EXPECT_FALSE(isAxisMask(mask)) << mask;
  for (const int frame : {0, 2}) EXPECT_TRUE(isFrame(frame)) << frame;
  for (const int frame : {-1, 3}) EXPECT_FALSE(isFrame(frame)) << frame;
}

TEST(FrameName, NamesTheThreeFrames) {
  EXPECT_EQ(std::string(frameName(FRAME_TORSO)) + " " + frameName(FRAME_WORLD) + " " +
                frameName(FRAME_ROBOT) + " " + frameName(static_cast<FRAME>(3)),
            "FRAME_TORSO FRAME_WORLD FRAME_ROBOT unknown");
}

}  // namespace
