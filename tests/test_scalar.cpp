// The value-access readers: array shape check, float and int readers,
// clipping with its warning, axis masks, frames and durations.
#include <kr/diagnosislogdirectory.h>
#include <kr/krvalueutils.h>

#include <zu/log.h>
#include <zu/os.h>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "test_support.h"

#include <bitset>
#include <climits>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using boost::chrono::nanoseconds;
using KR::KRValue;
using namespace KR::ValueUtils;
using Lines = std::vector<std::string>;

const KRValue kInvalid;
const KRValue kEmpty{std::vector<float>{}};

TEST(CheckArray, ChecksValidityThenEmptinessThenKind) {
  const std::pair<KRValue, const char*> cases[] = {
      {kInvalid, "KRMotion: arg KRValue is invalid."},  // though not an array either
      {kEmpty, "KRMotion: arg KRValue is empty."},
      {KRValue("text"), "KRMotion: arg KRValue is not an array."},
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
      {KRValue(7), 7}, {KRValue(2.9f), 2}, {KRValue(-2.9f), -2}, {KRValue(-0.5f), 0},
      {KRValue(2147483520.0f), 2147483520},  // largest float below 2^31
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

TEST(Clip, WarnsWithExactTextWhenDataChanges) {
  const struct {
    float min, max, data, expected;
    std::string warning;  // empty: no warning
  } cases[] = {
      {-1, 1, 1.5f, 1,
       "+1.50000 is clipped to: +1.00000 because it must be in range [-1.00000 <-> +1.00000]"},
      {0, 1, 2.0f, 1,
       "+2.00000 is clipped to: +1.00000 because it must be in range [+0.00000 <-> +1.00000]"},
      {-0.3f, 0.3f, -0.5f, -0.3f,
       "-0.500000 is clipped to: -0.300000 because it must be in range [-0.300000 <-> +0.300000]"},
      // Reversed bounds clamp all the same but are printed in argument order.
      {1, -1, -3, -1,
       "-3.00000 is clipped to: -1.00000 because it must be in range [+1.00000 <-> -1.00000]"},
      {-1, 1, 0.5f, 0.5f, ""}, {-1, 1, 1, 1, ""}, {1, -1, 0, 0, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.data);
    Warnings warnings;
    float data = c.data;
    clipAndWarn(c.min, c.max, data, "setSpeed", "x");
    EXPECT_EQ(data, c.expected);
    EXPECT_EQ(warnings.got,
              c.warning.empty() ? Lines{} : Lines{kWarning + "setSpeed: x value " + c.warning});
  }
}

TEST(Clip, ExtractFloatAndClipPassesBothNamesOn) {
  Warnings warnings;
  EXPECT_EQ(extractFloatAndClip(KRValue(5), 0, 1, "setAngle", "yaw"), 1.0f);
  EXPECT_EQ(messageOf([] { extractFloatAndClip(KRValue("9"), 0, 1, "setAngle", "yaw"); }),
            "setAngle yaw: Expected a float");
  EXPECT_EQ(messageOf([] { extractFloatAndClip(kInvalid, 0, 1, "setAngle", "yaw"); }),
            "setAngle yaw: Expected a float but found an invalid KRValue");
  EXPECT_EQ(warnings.got, Lines{kWarning + "setAngle: yaw value +5.00000 is clipped to: +1.00000 "
                                           "because it must be in range [+0.00000 <-> +1.00000]"});
}

TEST(Clip, ClipsEvenWhenTheWarningIsFilteredOrUnheard) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(extractFloatAndClip(KRValue(3), -1, 1, "setSpeed", "x"), 1.0f);  // no handler
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out + testing::internal::GetCapturedStderr(), "");
  for (const zu::log::Level level : {zu::log::warning, zu::log::error}) {
    Warnings warnings;
    zu::log::setCategoryLevel(zu::log::addCategory("KRValueUtils"), level);
    float data = 1.5f;
    clipAndWarn(-1, 1, data, "setSpeed", "x");
    EXPECT_EQ(data, 1.0f);
    EXPECT_EQ(warnings.got.size(), level == zu::log::warning ? 1u : 0u) << level;
  }
}

int asInt(const std::bitset<6>& mask) { return static_cast<int>(mask.to_ulong()); }
int asInt(KR::Math::FRAME frame) { return static_cast<int>(frame); }

// A mask or frame case in ints; for scalar readers {} means "output untouched".
struct Case {
  KRValue value;
  std::vector<int> expected;
  std::string message;
};

// Reads into an output pre-set to each of two values, so not writing is visible.
template <typename T, typename Read>
void checkScalar(const std::vector<Case>& cases, T fillA, T fillB, Read read) {
  for (const Case& c : cases) {
    for (const T fill : {fillA, fillB}) {
      T out = fill;
      EXPECT_EQ(messageOf([&] { read(c.value, out); }), c.message);
      EXPECT_EQ(asInt(out), c.expected.empty() ? asInt(fill) : c.expected[0]) << c.message;
    }
  }
}

// Reads into three non-zero entries, so clearing and zero-filling are visible.
template <typename T, typename Read>
void checkList(const std::vector<Case>& cases, T fill, Read read) {
  for (const Case& c : cases) {
    std::vector<T> out(3, fill);
    EXPECT_EQ(messageOf([&] { read(c.value, out); }), c.message);
    std::vector<int> got;
    for (const T& entry : out) got.push_back(asInt(entry));
    EXPECT_EQ(got, c.expected) << c.message;
  }
}

TEST(AxisMask, OneToSixtyThreeSingleOrInAList) {
  const std::string no = "KRMotion: arm Expected an axis mask.";
  const std::string notInt = "arm axis: Expected a int";
  const std::string invalid = notInt + " but found an invalid KRValue";
  checkScalar({{KRValue(1), {1}, kNoThrow}, {KRValue(63), {63}, kNoThrow},
               {KRValue(3.7f), {3}, kNoThrow}, {KRValue(0), {}, no}, {KRValue(64), {}, no},
               {KRValue(-1), {}, no}, {kInvalid, {}, invalid}, {KRValue::array(3), {}, notInt}},
              std::bitset<6>(42), std::bitset<6>(21), [](const KRValue& v, std::bitset<6>& m) {
                extractAxisMaskFromKRValue(v, "arm", m);
              });
  checkList({{KRValue(5), {5}, kNoThrow}, {KRValue(6.5f), {6}, kNoThrow}, {KRValue(0), {0}, no},
             {KRValue::array(1, 2, 63, 4), {1, 2, 63, 4}, kNoThrow},
             {KRValue::array(3, kInvalid), {3, 0}, invalid},
             {KRValue::array(3, 64, 5), {3, 0, 0}, no},
             {kInvalid, {}, "KRMotion: arm KRValue is invalid."},
             {kEmpty, {}, "KRMotion: arm KRValue is empty."},
             {KRValue("1"), {}, "KRMotion: arm KRValue is not an array."}},
            std::bitset<6>(42), [](const KRValue& v, std::vector<std::bitset<6>>& o) {
              extractVectorAxisMaskFromKRValue(v, "arm", o);
            });
}

TEST(Frame, ZeroToTwoSingleOrInAList) {
  const std::string no = "KRMotion: ref Expected a frame.";
  const std::string notInt = "ref frame: Expected a int";
  checkScalar({{KRValue(0), {0}, kNoThrow}, {KRValue(2), {2}, kNoThrow}, {KRValue(-1), {}, no},
               {KRValue(3), {}, no}, {KRValue("0"), {}, notInt}},
              KR::Math::FRAME_WORLD, KR::Math::FRAME_ROBOT,
              [](const KRValue& v, KR::Math::FRAME& f) { extractFrameFromKRValue(v, "ref", f); });
  checkList({{KRValue(2), {2}, kNoThrow}, {KRValue::array(0, 2, 1, 0), {0, 2, 1, 0}, kNoThrow},
             {KRValue::array(1, "s", 2), {1, 0, 0}, notInt}, {KRValue::array(2, 3), {2, 0}, no}},
            KR::Math::FRAME_ROBOT, [](const KRValue& v, std::vector<KR::Math::FRAME>& o) {
              extractVectorFrameFromKRValue(v, "ref", o);
            });
}

TEST(Duration, ExtractReadsMicrosecondsFirstAndCombinesIn64Bits) {
  const struct {
    KRValue seconds, microseconds;
    std::int64_t ns;
  } cases[] = {
      {KRValue(1), KRValue(500000), 1500000000},
      {KRValue(-1), KRValue(500000), -500000000},  // neither sign nor range checked
      {KRValue(1.9f), KRValue(-0.5f), 1000000000},
      {KRValue(INT_MAX), KRValue(INT_MAX), INT64_C(2147485794483647000)},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(extractDuration(c.seconds, c.microseconds, "wait").count(), c.ns);
  }
  const std::string invalid = "wait KRValue: Expected a int but found an invalid KRValue";
  EXPECT_EQ(messageOf([] { extractDuration(kInvalid, KRValue("u"), "wait"); }),
            "wait KRValue: Expected a int");
  EXPECT_EQ(messageOf([] { extractDuration(KRValue("s"), kInvalid, "wait"); }), invalid);
  EXPECT_EQ(messageOf([] { extractDuration(kInvalid, KRValue(0), "wait"); }), invalid);
}

// Whatever the outputs held, they become ints that read back to the duration
// truncated to whole microseconds; seconds beyond int wrap modulo 2^32.
TEST(Duration, ConvertSplitsIntoIntsThatReadBack) {
  const struct {
    std::int64_t ns;
    int seconds, microseconds;
    std::int64_t back;
  } cases[] = {
      {1500000999, 1, 500000, 1500000000},
      {-1234567891, -1, -234567, -1234567000},
      {INT64_C(-2147483648999999999), INT_MIN, -999999, INT64_C(-2147483648999999000)},
      {std::numeric_limits<std::int64_t>::max(), 633437444, 854775, INT64_C(633437444854775000)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ns);
    KRValue seconds = KRValue::array(1, 2);
    KRValue microseconds("text");
    convertDurationToKRValue(nanoseconds(c.ns), seconds, microseconds);
    ASSERT_TRUE(seconds.isInt() && microseconds.isInt());
    EXPECT_EQ(static_cast<int>(static_cast<const KRValue&>(seconds)), c.seconds);
    EXPECT_EQ(static_cast<int>(static_cast<const KRValue&>(microseconds)), c.microseconds);
    EXPECT_EQ(extractDuration(seconds, microseconds, "t").count(), c.back);
  }
}

TEST(DiagnosisLogDirectory, IsHomeFollowedByDiagnosis) {
  EXPECT_EQ(KR::kDiagnosisLogDirectory, zu::os::home() + "/diagnosis/");
}

}  // namespace
