// The value-access readers: array shape check, float and int readers,
// clipping with its warning, axis masks, frames and durations.
#include <kr/krvalueutils.h>

#include <zu/log.h>

#include "log_capture.h"
#include "test_support.h"

#include <bitset>
#include <climits>
#include <cstdint>
#include <limits>
#include <utility>

namespace {

using KR::KRValue;
using namespace KR::ValueUtils;
using Lines = std::vector<std::string>;

const KRValue kInvalid;
const KRValue kEmpty{std::vector<float>{}};

TEST(CheckArray, ChecksValidityThenEmptinessThenKind) {
  const std::pair<KRValue, const char*> cases[] = {
      {kInvalid, "KRMotion: arg KRValue is invalid."},  // though not an array either
      {kEmpty, "KRMotion: arg KRValue is empty."},
      {KRValue(3), "KRMotion: arg KRValue is not an array."},
      {KRValue::array(kInvalid, kEmpty), kNoThrow}};  // elements are not looked at
  for (const auto& c : cases) {
    EXPECT_EQ(messageOf([&] { checkArrayFromKRValue(c.first, "arg"); }), c.second);
  }
}

// Both readers take an int or a float; a float read as an int is truncated
// toward zero and saturated without undefined behaviour.
TEST(ExtractNumber, FloatAndIntReaders) {
  EXPECT_EQ(extractFloat(KRValue(3), "n", "f"), 3.0f);
  EXPECT_EQ(extractFloat(KRValue(2.5f), "n", "f"), 2.5f);
  const std::pair<KRValue, int> cases[] = {
      {KRValue(7), 7}, {KRValue(-2.9f), -2}, {KRValue(2147483520.0f), 2147483520},
      {KRValue(2147483648.0f), INT_MAX}, {KRValue(-3e9f), INT_MIN},
      {KRValue(std::numeric_limits<float>::quiet_NaN()), 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(extractIntFromKRValue(c.first, "n", "f"), c.second) << c.second;
  }
  EXPECT_EQ(messageOf([] { extractFloat(kInvalid, "setSpeed", "x"); }),
            "setSpeed x: Expected a float but found an invalid KRValue");
  EXPECT_EQ(messageOf([] { extractIntFromKRValue(kInvalid, "move", "count"); }),
            "move count: Expected a int but found an invalid KRValue");
  for (const KRValue& value : {KRValue(true), KRValue("1.5"), KRValue::array(1.0f)}) {
    EXPECT_EQ(messageOf([&] { extractFloat(value, "setSpeed", "x"); }),
              "setSpeed x: Expected a float");
    EXPECT_EQ(messageOf([&] { extractIntFromKRValue(value, "move", "count"); }),
              "move count: Expected a int");
  }
}

using KRTest::Warnings;
const std::string kWarning = "KRValueUtils warning '' clipAndWarn:0 KRMotion ";

// extractFloatAndClip reads the number and clips it through clipAndWarn, so
// one table checks both: a warning naming both names comes only when the
// number changed, and a changed number is still clipped with warnings off.
TEST(Clip, WarnsWithExactTextWhenDataChanges) {
  const struct {
    float min, max, data, expected;
    std::string warning;  // empty: no warning
  } cases[] = {
      {0, 1, 2.0f, 1,
       "+2.00000 is clipped to: +1.00000 because it must be in range [+0.00000 <-> +1.00000]"},
      {-0.3f, 0.3f, -0.5f, -0.3f,
       "-0.500000 is clipped to: -0.300000 because it must be in range [-0.300000 <-> +0.300000]"},
      // Reversed bounds clamp all the same but are printed in argument order.
      {1, -1, -3, -1,
       "-3.00000 is clipped to: -1.00000 because it must be in range [+1.00000 <-> -1.00000]"},
      {-1, 1, 1, 1, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.data);
    Warnings warnings;
    EXPECT_EQ(extractFloatAndClip(KRValue(c.data), c.min, c.max, "setSpeed", "x"), c.expected);
    EXPECT_EQ(warnings.got,
              c.warning.empty() ? Lines{} : Lines{kWarning + "setSpeed: x value " + c.warning});
  }
  EXPECT_EQ(messageOf([] { extractFloatAndClip(KRValue("9"), 0, 1, "setAngle", "yaw"); }),
            "setAngle yaw: Expected a float");
  Warnings warnings;
  zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), zu::log::error);
  float data = 3;
  clipAndWarn(-1, 1, data, "setSpeed", "x");
  EXPECT_EQ(data, 1.0f);
  EXPECT_EQ(warnings.got, Lines{});
}

// A mask or frame read into an output pre-set to `fill` ({} : untouched), and
// a list read into three non-zero entries, so clearing and zero-filling show.
template <typename T>
int asInt(const T& out) {
  if constexpr (std::is_enum_v<T>) {
    return static_cast<int>(out);
  } else {
    return static_cast<int>(out.to_ulong());
  }
}

struct Case {
  KRValue value;
  std::vector<int> expected;
  std::string message;
};

template <typename T, typename Read, typename ReadList>
void checkReaders(T fill, const std::vector<Case>& singles, Read read,
                  const std::vector<Case>& lists, ReadList readList) {
  for (const Case& c : singles) {
    T out = fill;
    EXPECT_EQ(messageOf([&] { read(c.value, out); }), c.message);
    EXPECT_EQ(asInt(out), c.expected.empty() ? asInt(fill) : c.expected[0]) << c.message;
  }
  for (const Case& c : lists) {
    std::vector<T> out(3, fill);
    EXPECT_EQ(messageOf([&] { readList(c.value, out); }), c.message);
    std::vector<int> got;
    for (const T& entry : out) got.push_back(asInt(entry));
    EXPECT_EQ(got, c.expected) << c.message;
  }
}

TEST(AxisMask, OneToSixtyThreeSingleOrInAList) {
  const std::string no = "KRMotion: arm Expected an axis mask.";
  const std::string notInt = "arm axis: Expected a int";
  checkReaders(
      std::bitset<6>(42),
      {{KRValue(1), {1}, kNoThrow},
       {KRValue(63), {63}, kNoThrow},
       {KRValue(3.7f), {3}, kNoThrow},
       {KRValue(0), {}, no},
       {KRValue(64), {}, no},
       {KRValue::array(3), {}, notInt}},
      [](const KRValue& v, std::bitset<6>& m) { extractAxisMaskFromKRValue(v, "arm", m); },
      {{KRValue(5), {5}, kNoThrow},
       {KRValue(63.9f), {63}, kNoThrow},
       {KRValue(64), {0}, no},  // a single number is read into a list of one
       {KRValue(true), {}, "KRMotion: arm KRValue is not an array."},
       {KRValue::array(1, 2, 63, 4), {1, 2, 63, 4}, kNoThrow},
       {KRValue::array(3, kInvalid), {3, 0}, notInt + " but found an invalid KRValue"},
       {KRValue::array(3, 64, 5), {3, 0, 0}, no},
       {kEmpty, {}, "KRMotion: arm KRValue is empty."},
       {KRValue("1"), {}, "KRMotion: arm KRValue is not an array."}},
      [](const KRValue& v, std::vector<std::bitset<6>>& o) {
        extractVectorAxisMaskFromKRValue(v, "arm", o);
      });
}

TEST(Frame, ZeroToTwoSingleOrInAList) {
  const std::string no = "KRMotion: ref Expected a frame.";
  const std::string notInt = "ref frame: Expected a int";
  checkReaders(
      KR::Math::FRAME_ROBOT,
      {{KRValue(0), {0}, kNoThrow},
       {KRValue(-1), {}, no},
       {KRValue(3), {}, no},
       {KRValue("0"), {}, notInt}},
      [](const KRValue& v, KR::Math::FRAME& f) { extractFrameFromKRValue(v, "ref", f); },
      // The list reader is the axis masks' one: only its use of the frame reader.
      {{KRValue::array(0, 2, 1, 0), {0, 2, 1, 0}, kNoThrow}},
      [](const KRValue& v, std::vector<KR::Math::FRAME>& o) {
        extractVectorFrameFromKRValue(v, "ref", o);
      });
}

TEST(Duration, ExtractReadsMicrosecondsFirstAndCombinesIn64Bits) {
  EXPECT_EQ(extractDuration(KRValue(-1), KRValue(500000), "wait").count(), -500000000);
  EXPECT_EQ(extractDuration(KRValue(1.9f), KRValue(-0.5f), "wait").count(), 1000000000);
  EXPECT_EQ(extractDuration(KRValue(INT_MAX), KRValue(INT_MAX), "wait").count(),
            INT64_C(2147485794483647000));
  EXPECT_EQ(messageOf([] { extractDuration(kInvalid, KRValue("u"), "wait"); }),
            "wait KRValue: Expected a int");
  EXPECT_EQ(messageOf([] { extractDuration(kInvalid, KRValue(0), "wait"); }),
            "wait KRValue: Expected a int but found an invalid KRValue");
}

}  // namespace
