// Deep and large values: a value nested a million levels deep goes through
// text, copies, comparison, moves, destruction and readers without recursing;
// ten million numbers go through the float list. Each test prints its time.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <chrono>
#include <cstdio>
#include <utility>

namespace {

using KR::KRValue;
using namespace KR::ValueUtils;

constexpr int kDepth = 1000000;
constexpr int kBig = 10000000;

// Prints the time since construction.
struct Measure {
  const char* what;
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  ~Measure() {
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("[ measure  ] %s: %.2f s\n", what, seconds.count());
  }
};

TEST(DeepValue, AMillionLevelsThroughTextCopiesComparisonMovesAndReaders) {
  const Measure measure{"1,000,000 levels deep"};
  const std::string text = std::string(kDepth, '[') + "1.5" + std::string(kDepth, ']');
  KRValue deep = KR::parseKRValue(text);
  EXPECT_EQ(KR::printKRValue(deep), text);

  KRValue copy = KRValue(7);
  copy = deep;
  EXPECT_TRUE(copy == deep);
  // Change the copy at the very bottom: the original does not change.
  KRValue* at = &copy;
  while (at->isArray()) at = &(*at)[0];
  *at = KRValue(2.5f);
  EXPECT_FALSE(copy == deep);

  // Readers fail on the shape at once instead of walking down.
  std::vector<std::vector<float>> groups;
  KR::Math::Trajectory::Path2DBuilder path;
  EXPECT_EQ(messageOf([&] { extractVectorFloatsFromKRValue(deep, "d", true, groups); }),
            "d KRValue: Expected a float");
  EXPECT_EQ(messageOf([&] { extractPath2DBuilderFromKRValue(deep, "d", path); }),
            "d Wrong Path2D type format");

  KRValue moved(std::move(deep));
  EXPECT_FALSE(deep.isValid());
  copy = KRValue();  // destroys a whole copy in place
  EXPECT_EQ(KR::printKRValue(moved), text);
}

TEST(LargeValue, TenMillionNumbersThroughTheFloatList) {
  const Measure measure{"10,000,000 numbers: build, float list"};
  KRValue value;
  value.arrayReserve(kBig);
  for (int i = 0; i < kBig; ++i) {
    value.arrayPush(i % 3 == 0 ? KRValue(i % 1000) : KRValue(static_cast<float>(i) * 0.5f));
  }
  value[kBig - 1] = "x";
  std::vector<float> floats{9, 9};
  // The list keeps its full size, with every element before the bad one read.
  EXPECT_EQ(messageOf([&] { extractVectorFloatsFromKRValue(value, "big", floats); }),
            "big KRValue: Expected a float");
  ASSERT_EQ(floats.size(), static_cast<std::size_t>(kBig));
  EXPECT_EQ(floats[3000], 0.0f);
  EXPECT_EQ(floats[kBig - 2], static_cast<float>(kBig - 2) * 0.5f);
  EXPECT_EQ(floats[kBig - 1], 0.0f);
}

}  // namespace
