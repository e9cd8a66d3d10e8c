// Deep and large values: a value nested a million levels deep goes through
// text, copies, comparison, moves, destruction and readers without recursing;
// arrays of ten million elements go through the list readers. Each test prints
// its time and the process's peak resident memory so far.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::ValueUtils;
using namespace KR::Math::Trajectory;

constexpr int kDepth = 1000000;
constexpr int kBig = 10000000;
constexpr int kStrings = 1000000;
// Parsing is the slowest step by far without optimisation (over half a
// minute for ten million numbers under AddressSanitizer in a debug build),
// so unoptimised builds take a tenth through text.
#ifdef NDEBUG
constexpr int kThroughText = kBig;
#else
constexpr int kThroughText = kBig / 10;
#endif

// Prints the time since construction and the peak resident memory.
struct Measure {
  const char* what;
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  ~Measure() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("[ measure  ] %s: %.2f s, peak RSS %ld MB\n", what, seconds.count(),
                usage.ru_maxrss / 1024);
  }
};

std::string nested(const std::string& bottom) {
  return std::string(kDepth, '[') + bottom + std::string(kDepth, ']');
}

// Every reader below sees an array whose only element is another array, and
// must fail on that shape at once instead of walking down.
void expectReadersRefuse(const KRValue& deep) {
  std::vector<float> floats;
  std::vector<std::vector<float>> groups;
  std::vector<std::string> strings;
  KR::Math::Pose2D pose;
  std::vector<KR::Math::Pose2D> poses;
  Path2DBuilder path;
  TrajectoryPose2DBuilder trajectory;
  const KR::Math::RationalSeconds period(boost::rational<int>(1, 100));
  EXPECT_EQ(messageOf([&] { extractVectorFloatsFromKRValue(deep, "d", floats); }),
            "d KRValue: Expected a float");
  EXPECT_EQ(messageOf([&] { extractVectorFloatsFromKRValue(deep, "d", true, groups); }),
            "d KRValue: Expected a float");
  EXPECT_EQ(messageOf([&] { extractVectorStringsFromKRValue(deep, "d", strings); }),
            "KRValue: expected a string value but found an array value");
  EXPECT_EQ(messageOf([&] { extractPose2DFromKRValue(deep, "d", pose); }),
            "KRMotion: d Pose2D is not valid. It has to be [x, y, theta].");
  EXPECT_EQ(messageOf([&] { extractVectorPose2DFromKRValue(deep, "d", poses); }),
            "KRMotion: d Pose2D is not valid. It has to be [x, y, theta].");
  EXPECT_EQ(messageOf([&] { extractPath2DBuilderFromKRValue(deep, "d", path); }),
            "d Wrong Path2D type format");
  EXPECT_EQ(messageOf([&] {
              extractTrajectoryPose2DBuilderFromKRValue(deep, "d", period, Limits(1, 1),
                                                        Limits(1, 1), 1.0f, trajectory);
            }),
            "d Wrong TrajectoryPose2D type format");
}

TEST(DeepValue, AMillionLevelsThroughTextCopiesComparisonMovesAndReaders) {
  const Measure measure{"1,000,000 levels deep, twice"};
  for (const std::string bottom : {"", "1.5"}) {
    SCOPED_TRACE("bottom '" + bottom + "'");
    const std::string text = nested(bottom);
    KRValue deep = KR::parseKRValue(text);
    EXPECT_EQ(KR::printKRValue(deep), text);

    const KRValue copy(deep);
    KRValue assigned = KRValue(7);
    assigned = copy;
    EXPECT_TRUE(copy == deep);
    EXPECT_TRUE(assigned == deep);

    // Walk down the copy and the original together: separate arrays all the
    // way down. Then change the copy at the very bottom.
    KRValue* at = &assigned;
    const KRValue* original = &deep;
    int levels = 0;
    bool shared = false;
    while (at->isArray() && at->getSize() == 1) {
      at = &(*at)[0];
      original = &(*original)[0];
      shared = shared || at == original;
      ++levels;
    }
    EXPECT_FALSE(shared);
    EXPECT_EQ(levels, bottom.empty() ? kDepth - 1 : kDepth);
    EXPECT_EQ(KR::printKRValue(*at), bottom.empty() ? "[]" : bottom);
    if (bottom.empty()) {
      at->arrayPush(KRValue(2.5f));
    } else {
      *at = KRValue(2.5f);
    }
    EXPECT_FALSE(assigned == deep);
    EXPECT_TRUE(copy == deep);

    expectReadersRefuse(deep);

    KRValue moved(std::move(deep));
    EXPECT_FALSE(deep.isValid());
    EXPECT_TRUE(moved == copy);
    deep = std::move(moved);
    EXPECT_TRUE(deep == copy);
    assigned = KRValue();  // destroys a whole copy in place
    EXPECT_FALSE(assigned.isValid());
  }  // and the rest at the end of each pass
}

// Element i of the large arrays: ints and floats, mixed; every value is
// exact in a float, and a few ints are 0 (false for the bool reader).
bool isInt(int i) { return i % 3 == 0; }
int intAt(int i) { return i % 1000 - 500; }
float floatAt(int i) { return static_cast<float>(i) * 0.5f; }

KRValue bigNumbers(int size) {
  KRValue value;
  value.arrayReserve(size);
  for (int i = 0; i < size; ++i) {
    if (isInt(i)) {
      value.arrayPush(KRValue(intAt(i)));
    } else {
      value.arrayPush(KRValue(floatAt(i)));
    }
  }
  return value;
}

TEST(LargeValue, TenMillionNumbersThroughTheFloatAndBoolLists) {
  const Measure measure{"10,000,000 numbers: build, float list, bool list"};
  const KRValue value = bigNumbers(kBig);
  ASSERT_EQ(value.getSize(), static_cast<unsigned int>(kBig));

  std::vector<float> floats{9, 9};
  {
    const Measure read{"10,000,000 numbers: the float list alone"};
    extractVectorFloatsFromKRValue(value, "big", floats);
  }
  ASSERT_EQ(floats.size(), static_cast<std::size_t>(kBig));
  for (const int i : {0, 1, 2, 1500, 4999999, 8388610, kBig - 2, kBig - 1}) {
    EXPECT_EQ(floats[i], isInt(i) ? static_cast<float>(intAt(i)) : floatAt(i)) << i;
  }

  std::vector<bool> bools{true};
  {
    const Measure read{"10,000,000 numbers: the bool list alone"};
    extractVectorBoolsFromKRValue(value, 1, "big", bools);
  }
  ASSERT_EQ(bools.size(), static_cast<std::size_t>(kBig));
  long falses = 0, expectedFalses = 0;
  for (int i = 0; i < kBig; ++i) {
    falses += !bools[i];
    expectedFalses += isInt(i) && intAt(i) == 0;
  }
  EXPECT_EQ(falses, expectedFalses);
  EXPECT_TRUE(bools[0]);      // the int -500
  EXPECT_FALSE(bools[1500]);  // the int 0
  EXPECT_TRUE(bools[kBig - 1]);

  // One bad element at the very end: the list keeps its full size, with every
  // element before the bad one read.
  KRValue spoiled = value;
  spoiled[kBig - 1] = "x";
  EXPECT_EQ(messageOf([&] { extractVectorFloatsFromKRValue(spoiled, "big", floats); }),
            "big KRValue: Expected a float");
  ASSERT_EQ(floats.size(), static_cast<std::size_t>(kBig));
  EXPECT_EQ(floats[kBig - 2], floatAt(kBig - 2));
  EXPECT_EQ(floats[kBig - 1], 0.0f);
}

TEST(LargeValue, AMillionStringsThroughTheStringList) {
  const Measure measure{"1,000,000 strings: build, string list"};
  KRValue value;
  value.arrayReserve(kStrings);
  for (int i = 0; i < kStrings; ++i) value.arrayPush(KRValue("s" + std::to_string(i)));
  std::vector<std::string> strings{"old"};
  extractVectorStringsFromKRValue(value, "big", strings);
  ASSERT_EQ(strings.size(), static_cast<std::size_t>(kStrings));
  for (const int i : {0, 1, 654321, kStrings - 1}) EXPECT_EQ(strings[i], "s" + std::to_string(i));
}

TEST(LargeValue, NumbersThroughText) {
  const Measure measure{kThroughText == kBig ? "10,000,000 numbers: build, print, parse, compare"
                                             : "1,000,000 numbers: build, print, parse, compare"};
  const KRValue value = bigNumbers(kThroughText);
  const std::string text = KR::printKRValue(value);
  EXPECT_EQ(text.compare(0, 14, "[-500, 0.5, 1."), 0) << text.substr(0, 14);
  const KRValue parsed = KR::parseKRValue(text);
  EXPECT_EQ(parsed.getSize(), static_cast<unsigned int>(kThroughText));
  EXPECT_TRUE(parsed == value);
}

}  // namespace
