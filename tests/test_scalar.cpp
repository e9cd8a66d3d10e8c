// The value-access readers: array shape check, float and int readers,
// clipping with its warning, axis masks, frames and durations.
#include <kr/diagnosislogdirectory.h>
#include <kr/krvalueutils.h>

#include <zu/log.h>
#include <zu/os.h>

#include <gtest/gtest.h>

#include <bitset>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using boost::chrono::nanoseconds;
using KR::KRValue;
using namespace KR::ValueUtils;

const KRValue kInvalid;
const KRValue kEmpty{std::vector<float>{}};
const char* const kNoThrow = "<no exception>";

// Runs `f` and returns the message of the std::runtime_error it throws (never
// a subclass), or kNoThrow.
template <typename F>
std::string messageOf(F&& f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(typeid(e), typeid(std::runtime_error)) << e.what();
    return e.what();
  } catch (...) {
    ADD_FAILURE() << "threw something other than std::runtime_error";
    return "<other exception>";
  }
  return kNoThrow;
}

TEST(CheckArray, ChecksValidityThenEmptinessThenKind) {
  const struct {
    KRValue value;
    const char* expected;
  } cases[] = {
      {kInvalid, "KRMotion: arg KRValue is invalid."},
      {kEmpty, "KRMotion: arg KRValue is empty."},
      {KRValue("text"), "KRMotion: arg KRValue is not an array."},
      {KRValue(3), "KRMotion: arg KRValue is not an array."},
      {KRValue(2.5f), "KRMotion: arg KRValue is not an array."},
      {KRValue(true), "KRMotion: arg KRValue is not an array."},
      {KRValue::array(1.0f), kNoThrow},
      {KRValue::array(kInvalid, kEmpty), kNoThrow},  // elements are not looked at
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(messageOf([&] { checkArrayFromKRValue(c.value, "arg"); }), c.expected);
  }
}

// Non-number kinds every scalar reader rejects with the plain complaint.
const KRValue kNotNumbers[] = {KRValue(true), KRValue(false), KRValue("1.5"), kEmpty,
                               KRValue::array(1.0f)};

TEST(ExtractFloat, AcceptsIntAndFloatOnly) {
  EXPECT_EQ(extractFloat(KRValue(3), "n", "f"), 3.0f);
  EXPECT_EQ(extractFloat(KRValue(-7), "n", "f"), -7.0f);
  EXPECT_EQ(extractFloat(KRValue(16777217), "n", "f"), 16777216.0f);  // nearest float
  EXPECT_EQ(extractFloat(KRValue(2.5f), "n", "f"), 2.5f);

  EXPECT_EQ(messageOf([] { extractFloat(kInvalid, "setSpeed", "x"); }),
            "setSpeed x: Expected a float but found an invalid KRValue");
  for (const KRValue& value : kNotNumbers) {
    EXPECT_EQ(messageOf([&] { extractFloat(value, "setSpeed", "x"); }),
              "setSpeed x: Expected a float");
  }
  // Plain concatenation: empty names leave their separators in place.
  EXPECT_EQ(messageOf([] { extractFloat(KRValue("s"), "", ""); }), " : Expected a float");
}

TEST(ExtractInt, AcceptsIntAndTruncatedFloatOnly) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  const struct {
    KRValue value;
    int expected;
  } cases[] = {
      {KRValue(7), 7}, {KRValue(INT_MIN), INT_MIN}, {KRValue(INT_MAX), INT_MAX},
      {KRValue(2.9f), 2}, {KRValue(-2.9f), -2}, {KRValue(-0.5f), 0}, {KRValue(0.999f), 0},
      {KRValue(2147483520.0f), 2147483520},  // largest float below 2^31
      {KRValue(-2147483648.0f), INT_MIN},    // exactly INT_MIN
      // Beyond the int range: saturated, without undefined behaviour.
      {KRValue(2147483648.0f), INT_MAX}, {KRValue(3e9f), INT_MAX}, {KRValue(-3e9f), INT_MIN},
      {KRValue(inf), INT_MAX}, {KRValue(-inf), INT_MIN}, {KRValue(nan), 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(extractIntFromKRValue(c.value, "n", "f"), c.expected);
  }
  EXPECT_EQ(messageOf([] { extractIntFromKRValue(kInvalid, "move", "count"); }),
            "move count: Expected a int but found an invalid KRValue");
  for (const KRValue& value : kNotNumbers) {
    EXPECT_EQ(messageOf([&] { extractIntFromKRValue(value, "move", "count"); }),
              "move count: Expected a int");
  }
}

// Captures every log record for the lifetime of a test and restores the level
// of the library's category afterwards.
class Clip : public ::testing::Test {
 protected:
  void SetUp() override {
    savedLevel_ = zu::log::categoryLevel(category_);
    zu::log::setCategoryLevel(category_, zu::log::info);
    id_ = zu::log::subscribe([this](const zu::log::Record& r) { records_.push_back(r); });
  }
  void TearDown() override {
    zu::log::unsubscribe(id_);
    zu::log::setCategoryLevel(category_, savedLevel_);
  }

  const zu::log::CategoryType category_ = zu::log::addCategory("KRValueUtils");
  zu::log::Level savedLevel_ = zu::log::info;
  zu::log::HandlerId id_ = 0;
  std::vector<zu::log::Record> records_;
};

TEST_F(Clip, WarnsWithExactTextWhenDataChanges) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const std::string head = "KRMotion setSpeed: x value ";
  const struct {
    float min, max, data, expected;
    std::string warning;  // empty: no warning
  } cases[] = {
      {-1, 1, 1.5f, 1,
       "+1.50000 is clipped to: +1.00000 because it must be in range [-1.00000 <-> +1.00000]"},
      {0, 1, 2.0f, 1,
       "+2.00000 is clipped to: +1.00000 because it must be in range [+0.00000 <-> +1.00000]"},
      {-1, 1, -1.5f, -1,
       "-1.50000 is clipped to: -1.00000 because it must be in range [-1.00000 <-> +1.00000]"},
      {-0.3f, 0.3f, 0.5f, 0.3f,
       "+0.500000 is clipped to: +0.300000 because it must be in range [-0.300000 <-> "
       "+0.300000]"},
      {0, 100, 250, 100,
       "+250.000 is clipped to: +100.000 because it must be in range [+0.00000 <-> +100.000]"},
      {0, 1, 1e7f, 1,
       "+1.00000e+07 is clipped to: +1.00000 because it must be in range [+0.00000 <-> "
       "+1.00000]"},
      // Reversed bounds clamp all the same but are printed in argument order.
      {1, -1, 1.5f, 1,
       "+1.50000 is clipped to: +1.00000 because it must be in range [+1.00000 <-> -1.00000]"},
      {1, -1, -3, -1,
       "-3.00000 is clipped to: -1.00000 because it must be in range [+1.00000 <-> -1.00000]"},
      {-1, 1, 0.5f, 0.5f, ""},
      {-1, 1, 1, 1, ""},
      {-1, 1, -1, -1, ""},
      {1, -1, 0, 0, ""},
      {-1, nan, 5, 5, ""},  // a NaN bound leaves that side open
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.data);
    records_.clear();
    float data = c.data;
    clipAndWarn(c.min, c.max, data, "setSpeed", "x");
    EXPECT_EQ(data, c.expected);
    if (c.warning.empty()) {
      EXPECT_TRUE(records_.empty());
      continue;
    }
    ASSERT_EQ(records_.size(), 1u);
    const zu::log::Record& r = records_[0];
    EXPECT_EQ(r.message, head + c.warning);
    EXPECT_EQ(r.level, zu::log::warning);
    EXPECT_EQ(r.category, "KRValueUtils");
    EXPECT_EQ(r.file, "");
    EXPECT_EQ(r.line, 0);
    EXPECT_EQ(r.function, "clipAndWarn");
  }
}

TEST_F(Clip, NaNDataIsLeftAloneWithoutWarning) {
  float data = std::numeric_limits<float>::quiet_NaN();
  clipAndWarn(-1, 1, data, "n", "f");
  EXPECT_TRUE(std::isnan(data));
  EXPECT_TRUE(records_.empty());
}

TEST_F(Clip, WarningFollowsCategoryLevelButClippingDoesNot) {
  for (int level = zu::log::silent; level <= zu::log::debug; ++level) {
    SCOPED_TRACE(level);
    records_.clear();
    zu::log::setCategoryLevel(category_, static_cast<zu::log::Level>(level));
    float data = 1.5f;
    clipAndWarn(-1, 1, data, "setSpeed", "x");
    EXPECT_EQ(data, 1.0f);
    EXPECT_EQ(records_.size(), level >= zu::log::warning ? 1u : 0u);
  }
}

TEST_F(Clip, ExtractFloatAndClipPassesBothNamesOn) {
  EXPECT_EQ(extractFloatAndClip(KRValue(5), 0, 1, "setAngle", "yaw"), 1.0f);
  ASSERT_EQ(records_.size(), 1u);
  EXPECT_EQ(records_[0].message,
            "KRMotion setAngle: yaw value +5.00000 is clipped to: +1.00000 because it must be "
            "in range [+0.00000 <-> +1.00000]");
  EXPECT_EQ(records_[0].function, "clipAndWarn");

  records_.clear();
  EXPECT_EQ(extractFloatAndClip(KRValue(0.25f), 0, 1, "setAngle", "yaw"), 0.25f);
  EXPECT_EQ(extractFloatAndClip(KRValue(-2.5f), 1, -1, "setAngle", "yaw"), -1.0f);
  ASSERT_EQ(records_.size(), 1u);

  records_.clear();
  EXPECT_EQ(messageOf([] { extractFloatAndClip(KRValue("9"), 0, 1, "setAngle", "yaw"); }),
            "setAngle yaw: Expected a float");
  EXPECT_EQ(messageOf([] { extractFloatAndClip(kInvalid, 0, 1, "setAngle", "yaw"); }),
            "setAngle yaw: Expected a float but found an invalid KRValue");
  EXPECT_TRUE(records_.empty());
}

TEST(ClipOutput, NothingPrintedWithoutHandler) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  float data = 3;
  clipAndWarn(-1, 1, data, "setSpeed", "x");
  EXPECT_EQ(extractFloatAndClip(KRValue(-4), -1, 1, "setSpeed", "y"), -1.0f);
  const std::string out = testing::internal::GetCapturedStdout();
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(data, 1.0f);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err, "");
}

int asInt(const std::bitset<6>& mask) { return static_cast<int>(mask.to_ulong()); }
int asInt(KR::Math::FRAME frame) { return static_cast<int>(frame); }

// A mask or frame case, in ints for both types; `expected` -1: the output
// must keep its previous content.
struct ScalarCase {
  KRValue value;
  int expected;
  std::string message;
};

// Each case is read into an output pre-set to each of two different values,
// so that both writing and not writing are visible.
template <typename T, typename Read>
void checkScalarCases(const std::vector<ScalarCase>& cases, T fillA, T fillB, Read read) {
  for (const ScalarCase& c : cases) {
    SCOPED_TRACE(testing::Message() << c.expected << " " << c.message);
    for (const T fill : {fillA, fillB}) {
      T out = fill;
      EXPECT_EQ(messageOf([&] { read(c.value, out); }), c.message);
      EXPECT_EQ(asInt(out), c.expected < 0 ? asInt(fill) : c.expected);
    }
  }
}

TEST(AxisMask, AcceptsOneToSixtyThreeOnly) {
  const std::string no = "KRMotion: arm Expected an axis mask.";
  const std::string notInt = "arm axis: Expected a int";
  const std::vector<ScalarCase> cases = {
      {KRValue(1), 1, kNoThrow}, {KRValue(7), 7, kNoThrow}, {KRValue(63), 63, kNoThrow},
      {KRValue(3.7f), 3, kNoThrow},  // through the int reader
      {KRValue(0), -1, no}, {KRValue(64), -1, no}, {KRValue(65), -1, no}, {KRValue(-1), -1, no},
      {KRValue(INT_MIN), -1, no}, {KRValue(0.5f), -1, no}, {KRValue(1e10f), -1, no},
      {kInvalid, -1, notInt + " but found an invalid KRValue"}, {KRValue(true), -1, notInt},
      {KRValue("3"), -1, notInt}, {KRValue::array(3), -1, notInt},
  };
  checkScalarCases(
      cases, std::bitset<6>(42), std::bitset<6>(21),
      [](const KRValue& v, std::bitset<6>& m) { extractAxisMaskFromKRValue(v, "arm", m); });
}

TEST(Frame, AcceptsTheThreeFramesOnly) {
  const std::string no = "KRMotion: ref Expected a frame.";
  const std::string notInt = "ref frame: Expected a int";
  const std::vector<ScalarCase> cases = {
      {KRValue(0), 0, kNoThrow}, {KRValue(1), 1, kNoThrow}, {KRValue(2), 2, kNoThrow},
      {KRValue(2.9f), 2, kNoThrow}, {KRValue(-1), -1, no}, {KRValue(3), -1, no},
      {KRValue(INT_MAX), -1, no}, {kInvalid, -1, notInt + " but found an invalid KRValue"},
      {KRValue(false), -1, notInt}, {KRValue("0"), -1, notInt}, {kEmpty, -1, notInt},
  };
  checkScalarCases(
      cases, KR::Math::FRAME_WORLD, KR::Math::FRAME_ROBOT,
      [](const KRValue& v, KR::Math::FRAME& f) { extractFrameFromKRValue(v, "ref", f); });
}

// A list case; the output starts as three copies of a non-zero entry so that
// clearing and zero-filling are visible.
struct ListCase {
  KRValue value;
  std::vector<int> expected;
  std::string message;
};

template <typename T, typename Read>
void checkListCases(const std::vector<ListCase>& cases, T fill, Read read) {
  for (const ListCase& c : cases) {
    SCOPED_TRACE(c.message);
    std::vector<T> out(3, fill);
    EXPECT_EQ(messageOf([&] { read(c.value, out); }), c.message);
    std::vector<int> got;
    for (const T& entry : out) {
      got.push_back(asInt(entry));
    }
    EXPECT_EQ(got, c.expected);
  }
}

TEST(AxisMaskList, SingleNumberArrayAndFailures) {
  const std::string notMask = "KRMotion: arm Expected an axis mask.";
  const std::vector<ListCase> cases = {
      {KRValue(5), {5}, kNoThrow},
      {KRValue(6.5f), {6}, kNoThrow},
      {KRValue::array(1, 2, 63), {1, 2, 63}, kNoThrow},
      {KRValue::array(3, "s"), {3, 0}, "arm axis: Expected a int"},
      {KRValue::array(3, kInvalid, 4), {3, 0, 0},
       "arm axis: Expected a int but found an invalid KRValue"},
      {KRValue::array(3, KRValue::array(1)), {3, 0}, "arm axis: Expected a int"},
      {KRValue::array(3, 64), {3, 0}, notMask},
      {KRValue::array(0, 3), {0, 0}, notMask},
      {KRValue(0), {0}, notMask},
      {kInvalid, {}, "KRMotion: arm KRValue is invalid."},
      {kEmpty, {}, "KRMotion: arm KRValue is empty."},
      {KRValue("1"), {}, "KRMotion: arm KRValue is not an array."},
      {KRValue(true), {}, "KRMotion: arm KRValue is not an array."},
  };
  checkListCases(cases, std::bitset<6>(42), [](const KRValue& v, std::vector<std::bitset<6>>& o) {
    extractVectorAxisMaskFromKRValue(v, "arm", o);
  });
}

TEST(FrameList, SingleNumberArrayAndFailures) {
  const std::string notFrame = "KRMotion: ref Expected a frame.";
  const std::vector<ListCase> cases = {
      {KRValue(2), {2}, kNoThrow},
      {KRValue(1.5f), {1}, kNoThrow},
      {KRValue::array(0, 2, 1, 0), {0, 2, 1, 0}, kNoThrow},
      {KRValue::array(1, "s"), {1, 0}, "ref frame: Expected a int"},
      {KRValue::array(2, 3, 1), {2, 0, 0}, notFrame},
      {KRValue(-1), {0}, notFrame},
      {kInvalid, {}, "KRMotion: ref KRValue is invalid."},
      {kEmpty, {}, "KRMotion: ref KRValue is empty."},
      {KRValue("0"), {}, "KRMotion: ref KRValue is not an array."},
  };
  checkListCases(cases, KR::Math::FRAME_ROBOT,
                 [](const KRValue& v, std::vector<KR::Math::FRAME>& o) {
                   extractVectorFrameFromKRValue(v, "ref", o);
                 });
}

TEST(Duration, ExtractCombinesSecondsAndMicroseconds) {
  const struct {
    KRValue seconds, microseconds;
    std::int64_t ns;
  } cases[] = {
      {KRValue(1), KRValue(500000), 1500000000},
      {KRValue(-1), KRValue(500000), -500000000},
      {KRValue(2), KRValue(-250000), 1750000000},
      {KRValue(0), KRValue(2500000), 2500000000},  // no range check
      {KRValue(1.9f), KRValue(500000.7f), 1500000000},
      {KRValue(-1.9f), KRValue(-0.5f), -1000000000},
      {KRValue(INT_MAX), KRValue(INT_MAX), INT64_C(2147485794483647000)},
      {KRValue(INT_MIN), KRValue(INT_MIN), INT64_C(-2147485795483648000)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ns);
    EXPECT_EQ(extractDuration(c.seconds, c.microseconds, "wait").count(), c.ns);
  }
}

TEST(Duration, ExtractReadsMicrosecondsFirst) {
  const std::string invalid = "wait KRValue: Expected a int but found an invalid KRValue";
  const std::string notInt = "wait KRValue: Expected a int";
  const struct {
    KRValue seconds, microseconds;
    std::string message;
  } cases[] = {
      {kInvalid, KRValue("u"), notInt},  {KRValue("s"), kInvalid, invalid},
      {kInvalid, KRValue(0), invalid},   {KRValue(true), KRValue(0), notInt},
      {KRValue(1), KRValue::array(1), notInt},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(messageOf([&] { extractDuration(c.seconds, c.microseconds, "wait"); }), c.message);
  }
}

TEST(Duration, ConvertSplitsIntoIntSecondsAndMicroseconds) {
  const struct {
    std::int64_t ns;
    int seconds, microseconds;
  } cases[] = {
      {1500000000, 1, 500000},
      {-1500000000, -1, -500000},
      {1500000999, 1, 500000},
      {-999, 0, 0},
      {0, 0, 0},
      // Seconds beyond int wrap modulo 2^32.
      {std::numeric_limits<std::int64_t>::max(), 633437444, 854775},
      {std::numeric_limits<std::int64_t>::min(), -633437444, -854775},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ns);
    KRValue seconds = KRValue::array(1, 2);
    KRValue microseconds("text");
    convertDurationToKRValue(nanoseconds(c.ns), seconds, microseconds);
    ASSERT_TRUE(seconds.isInt());
    ASSERT_TRUE(microseconds.isInt());
    EXPECT_EQ(static_cast<int>(static_cast<const KRValue&>(seconds)), c.seconds);
    EXPECT_EQ(static_cast<int>(static_cast<const KRValue&>(microseconds)), c.microseconds);
  }
}

TEST(Duration, RoundTripTruncatesToWholeMicroseconds) {
  const std::int64_t durations[] = {
      1500000000, -1500000000, 1234567891, -1234567891, 999, -999, 0,
      INT64_C(2147483647999999999), INT64_C(-2147483648999999999)};
  for (const std::int64_t ns : durations) {
    SCOPED_TRACE(ns);
    KRValue seconds;
    KRValue microseconds;
    convertDurationToKRValue(nanoseconds(ns), seconds, microseconds);
    EXPECT_EQ(extractDuration(seconds, microseconds, "t").count(), ns / 1000 * 1000);
  }
}

TEST(DiagnosisLogDirectory, IsHomeFollowedByDiagnosis) {
  EXPECT_EQ(KR::kDiagnosisLogDirectory, zu::os::home() + "/diagnosis/");
}

}  // namespace
