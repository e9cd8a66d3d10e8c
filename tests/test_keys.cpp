// Interpolation keys and control-point lists read from values.
#include "log_capture.h"
#include "test_support.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/interpolationkey.h>

#include <zu/log.h>

#include <cmath>
#include <limits>
#include <utility>

namespace {

using KR::parseKRValue;
using KR::Math::Interpolation::Key;
using KR::Math::Interpolation::Parameter;
using KR::ValueUtils::extractKeyFromKRValue;
using KR::ValueUtils::extractVectorOfGenericControlPoints;
using KRTest::Warnings;
using Lines = std::vector<std::string>;
using TimedKeys = std::vector<std::pair<float, Key>>;

Key key(float value, int type1, float x1, float y1, int type2, float x2, float y2) {
  return Key(value, Parameter(type1, {x1, y1}), Parameter(type2, {x2, y2}));
}

const std::string kForced =
    "KRValueUtils warning '' extractKeyFromKRValue:0 angleInterpolationBezier received an "
    "unexpected interpolation type. Forced to BEZIER_AUTO.";
const Key kSentinel = key(99, 2, 9, 9, 1, 8, 8);
const std::string kPrefix = "KRMotion: angles";
const std::string kParam = " Interpolation Param: Invalid, not Array or not of length 3. Expected "
                           "Key of form [float, [int, float, float]].";
const std::string kFirst = kPrefix + " Malformed Control Point First" + kParam;
const std::string kTypes = kPrefix +
                           " Incorrect argument types within well formed control point. Should be "
                           "[float,[int,float,float],[int,float,float]]";
const std::string kMalformed =
    kPrefix + " Malformed Control Point: Invalid, not Array or not of length 3.";
const std::string kNotArray = kPrefix + " KRValue is not an array.";

void readKey(const std::string& text, Key& out) {
  extractKeyFromKRValue(parseKRValue(text), "angles", out);
}

TEST(Key, ReadsOrFailsOnTheFirstCheckInOrderLeavingTheKeyUntouched) {
  const Key s = kSentinel;
  KRTest::expectRows<Key>(
      readKey, s,
      {
          {"[-2, [0, 1, 2.5], [2, -3, 4]]", kNoThrow, key(-2, 0, 1, 2.5f, 2, -3, 4)},
          {"1.5", kNotArray, s},
          {"[1, [3, 0, 0]]", kMalformed, s},
          {"[1, [3, 0, 0], [3, 0, 0], 4]", kMalformed, s},
          {"[1, 2, [3, 0, 0]]", kNotArray, s},
          {"[1, [3, 0], [3, 0, 0]]", kFirst, s},
          {"[\"x\", [3, 0], [3, 0, 0]]", kFirst, s},  // shape before types
          {"[1, [3, 0, 0], [3, 0]]", kPrefix + " Malformed Control Point Second" + kParam, s},
          {"[1, [3.0, 0, 0], [3, 0, 0]]", kTypes, s},
          {"[1, [3, \"a\", 0], [3, 0, 0]]", kTypes, s},
          {"[1, [3, 0, 0], [3, 0, [1]]]", kTypes, s},
      });
}

TEST(Key, ForcesUnknownTypesWithOneExactWarningPerSide) {
  const struct {
    int first, second, expectedFirst, expectedSecond;
    std::size_t warnings;
  } cases[] = {
      {0, 3, 0, 3, 0}, {7, -1, 3, 3, 2}, {4, 1, 3, 1, 1}, {2, -2147483647 - 1, 2, 3, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.first) + " " + std::to_string(c.second));
    Warnings warnings;
    Key k = kSentinel;
    extractKeyFromKRValue(KR::KRValue::array(1, KR::KRValue::array(c.first, 0.5f, 0),
                                             KR::KRValue::array(c.second, 0, 0.25f)),
                          "angles", k);
    EXPECT_EQ(k, key(1, c.expectedFirst, 0.5f, 0, c.expectedSecond, 0, 0.25f));
    EXPECT_EQ(warnings.got, Lines(c.warnings, kForced));
  }
}

TEST(Key, WarnsOnlyAfterEveryCheckAndOnlyWhileWarningsAreEnabled) {
  Warnings warnings;
  Key k = kSentinel;
  EXPECT_EQ(messageOf([&] { readKey("[1, [7, 0, 0], [3.0, 0, 0]]", k); }), kTypes);
  EXPECT_EQ(k, kSentinel);
  zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), zu::log::error);
  readKey("[1, [7, 0, 0], [-5, 0, 0]]", k);
  EXPECT_EQ(k, key(1, 3, 0, 0, 3, 0, 0));
  EXPECT_EQ(warnings.got, Lines{});
}

const std::string kK1 = "[1, [0, 0.1, 0.2], [1, 0.3, 0.4]]";
const std::string kK2 = "[2, [2, 1, 1], [3, 0, 0]]";
const std::string kK3 = "[3, [9, 0, 0], [3, -1, 0]]";
const std::string kAll = "[" + kK1 + ", " + kK2 + ", " + kK3 + "]";
const Key kKey1 = key(1, 0, 0.1f, 0.2f, 1, 0.3f, 0.4f);
const Key kKey2 = key(2, 2, 1, 1, 3, 0, 0);
const Key kKey3 = key(3, 3, 0, 0, 3, -1, 0);
const std::pair<float, Key> kExisting{-7.0f, kSentinel};

// Each row reads into a list holding kExisting and gives what is appended
// after it; `dropped` is the result, checked when nothing is thrown.
TEST(ControlPoints, ShapeMismatchDropsAndAppends) {
  const float third = 0.5f / 3;
  const struct {
    std::vector<float> times;
    std::string text;
    float minTime;
    std::string message;
    bool dropped;
    TimedKeys appended;
  } cases[] = {
      // Shape mismatches return false and append nothing.
      {{1, 2}, "null", 0, kNoThrow, false, {}},
      {{1, 2}, "[" + kK1 + "]", 0, kNoThrow, false, {}},
      {{1, 2}, "[]", 5, kNoThrow, false, {}},
      // Only strictly earlier points are dropped.
      {{1, 2, 3}, kAll, 1, kNoThrow, false, {{1.0f, kKey1}, {2.0f, kKey2}, {3.0f, kKey3}}},
      {{1, 2, 3}, kAll, 2, kNoThrow, true, {{2.0f, kKey2}, {3.0f, kKey3}}},
      // A dropped point is never read, however malformed.
      {{0, 1}, "[\"junk\", " + kK2 + "]", 0.5f, kNoThrow, true, {{1.0f, kKey2}}},
      // Pairs appended before a failing element stay.
      {{1, 2, 3}, "[" + kK1 + ", [1, [3, 0], [3, 0, 0]], " + kK3 + "]", 0, kFirst, false,
       {{1.0f, kKey1}}},
      {{1, 2}, "[" + kK1 + ", 10]", 0, kNotArray, false, {{1.0f, kKey1}}},
      // The automatic path, fed only the kept points.
      {{0.5f, 1.0f, 1.5f}, "[10, 20, 30]", 1, kNoThrow, true,
       {{1.0f, key(20, 3, 0, 0, 3, third, 0)}, {1.5f, key(30, 3, -third, 0, 3, 0, 0)}}},
      {{1, 2}, "[5, 6]", 3, kNoThrow, true, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text + " minTime " + std::to_string(c.minTime));
    TimedKeys keys{kExisting};
    bool dropped = !c.dropped;
    EXPECT_EQ(messageOf([&] {
                dropped = extractVectorOfGenericControlPoints(c.times, parseKRValue(c.text),
                                                              "angles", c.minTime, keys);
              }),
              c.message);
    if (c.message == kNoThrow) {
      EXPECT_EQ(dropped, c.dropped);
    }
    TimedKeys expected{kExisting};
    expected.insert(expected.end(), c.appended.begin(), c.appended.end());
    EXPECT_EQ(keys, expected);
  }
}

TEST(ControlPoints, NaNTimesAreKeptOnBothPaths) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  TimedKeys keys;
  const KR::KRValue two = parseKRValue("[" + kK1 + ", " + kK2 + "]");
  EXPECT_FALSE(extractVectorOfGenericControlPoints({nan, 1}, two, "angles", 0.5f, keys));
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_TRUE(std::isnan(keys[0].first) && keys[0].second == kKey1);
  // Kept, a NaN time reaches the automatic keys, which reject it with their
  // own message.
  keys.clear();
  const KR::KRValue numbers = parseKRValue("[1, 2]");
  EXPECT_EQ(messageOf([&] {
              extractVectorOfGenericControlPoints({nan, 1}, numbers, "angles", 0.5f, keys);
            }),
            "computeBezierAutoKey: time 0 is not finite or not after the one before.");
  EXPECT_TRUE(keys.empty());
}

}  // namespace
