// The single-record geometry readers: accepted layouts, exact messages, the
// order of the checks, and what a failed read leaves in the output.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::ValueUtils;

const std::string kOk = "<no exception>";

// The message of the std::runtime_error (never a subclass) that `f` throws,
// or kOk.
template <typename F>
std::string messageOf(F&& f) {
  try {
    f();
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(typeid(e), typeid(std::runtime_error)) << e.what();
    return e.what();
  }
  return kOk;
}

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

// Each row starts from a sentinel record, so the expected record also tells
// which fields a failing read overwrote: those before the failing element.
TEST(Position2DReader, LayoutsMessagesAndPartialWrites) {
  const std::string shape = "KRMotion: p Position2D is not valid. It has to be [x, y].";
  const struct {
    std::string text, message;
    Position2D after;
  } rows[] = {
      {"[1, 2]", kOk, {1, 2}},
      {"[1.0, 2.5]", kOk, {1, 2.5f}},
      {"[[1, 2]]", kOk, {1, 2}},
      {"[[1, 2, 3]]", kOk, {1, 2}},  // the inner size is not checked
      // The shape check of arrays comes first.
      {"null", "KRMotion: p KRValue is invalid.", {7, 8}},
      {"[]", "KRMotion: p KRValue is empty.", {7, 8}},
      {"\"xy\"", "KRMotion: p KRValue is not an array.", {7, 8}},
      {"[1, 2, 3]", shape, {7, 8}},
      {"[[1], 2]", shape, {7, 8}},
      {"[5]", shape, {7, 8}},
      {"[\"a\", 2]", shape, {7, 8}},  // element 0 is tested, element 1 is not
      {"[true, 2]", shape, {7, 8}},   // a bool is not a number
      {"[null, 2]", shape, {7, 8}},
      {"[1, \"a\"]", "p y: Expected a float", {1, 8}},
      {"[1, null]", "p y: Expected a float but found an invalid KRValue", {1, 8}},
      {"[[\"a\", 2]]", "p x: Expected a float", {7, 8}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Position2D out(7, 8);
    EXPECT_EQ(messageOf([&] { extractPosition2DFromKRValue(parse(row.text), "p", out); }),
              row.message);
    EXPECT_EQ(out, row.after);
  }
}

// Both pose readers share the pose part; the time reader adds element 3.
TEST(PoseReaders, LayoutsMessagesAndPartialWrites) {
  const std::string shape = "KRMotion: p Pose2D is not valid. It has to be [x, y, theta].";
  const struct {
    std::string text, poseMessage, timedMessage;
    Pose2DAndTime after;  // the Pose2D reader leaves after.pose
  } rows[] = {
      {"[1, 2, 3]", kOk, kOk, {{1, 2, 3}, -1.0f}},  // no time: -1, not 0
      {"[1, 2.5, 3, 4]", kOk, kOk, {{1, 2.5f, 3}, 4}},
      {"[1, 2, 3, 4.5, \"extra\"]", kOk, kOk, {{1, 2, 3}, 4.5f}},
      {"[1, 2, 3, \"t\"]", kOk, "p time: Expected a float", {{1, 2, 3}, 10}},
      // The pose shape test is not the array check: one message for all.
      {"null", shape, shape, {{7, 8, 9}, 10}},
      {"[]", shape, shape, {{7, 8, 9}, 10}},
      {"\"abc\"", shape, shape, {{7, 8, 9}, 10}},
      {"[1, 2]", shape, shape, {{7, 8, 9}, 10}},
      {"[1, \"y\", 3]", "p y: Expected a float", "p y: Expected a float", {{1, 8, 9}, 10}},
      {"[1, 2, null, 4]", "p theta: Expected a float but found an invalid KRValue",
       "p theta: Expected a float but found an invalid KRValue", {{1, 2, 9}, 10}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const KRValue value = parse(row.text);
    Pose2D pose(7, 8, 9);
    EXPECT_EQ(messageOf([&] { extractPose2DFromKRValue(value, "p", pose); }), row.poseMessage);
    EXPECT_EQ(pose, row.after.pose);
    Pose2DAndTime timed(Pose2D(7, 8, 9), 10);
    EXPECT_EQ(messageOf([&] { extractPose2DAndTimeFromKRValue(value, "p", timed); }),
              row.timedMessage);
    EXPECT_EQ(timed, row.after);
  }
}

TEST(Position3DReader, ExactlyThreeNumbers) {
  const std::string shape = "KRMotion: p Expected an KRValue with 3 floats for x, y, z.";
  const struct {
    std::string text, message;
    Position3D after;
  } rows[] = {
      {"[1, 2.5, -3]", kOk, {1, 2.5f, -3}},   {"[1, 2, 3, 4]", shape, {7, 8, 9}},
      {"[1, 2]", shape, {7, 8, 9}},            {"null", shape, {7, 8, 9}},
      {"[]", shape, {7, 8, 9}},                {"3", shape, {7, 8, 9}},
      {"[1, 2, \"z\"]", "p z: Expected a float", {1, 2, 9}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    Position3D out(7, 8, 9);
    EXPECT_EQ(messageOf([&] { extractPosition3DFromKRValue(parse(row.text), "p", out); }),
              row.message);
    EXPECT_EQ(out, row.after);
  }
}

TEST(Position6DReader, ExactlySixNumbersEachNamed) {
  const std::string shape =
      "KRMotion: p Expected an KRValue with 6 floats for x, y, z, wx, wy, wz.";
  const Position6D sentinel(9, 9, 9, 9, 9, 9);
  for (const std::string text : {"[1, 2, 3, 4, 5]", "[1, 2, 3, 4, 5, 6, 7]", "null", "[]"}) {
    Position6D out = sentinel;
    EXPECT_EQ(messageOf([&] { extractPosition6DFromKRValue(parse(text), "p", out); }), shape);
    EXPECT_EQ(out, sentinel);
  }
  Position6D out = sentinel;
  extractPosition6DFromKRValue(parse("[1, 2.5, 3, 4, 5, -6]"), "p", out);
  EXPECT_EQ(out, Position6D(1, 2.5f, 3, 4, 5, -6));

  // A string at element k is reported under its field name after the fields
  // before it have been written.
  const char* const fields[] = {"x", "y", "z", "wx", "wy", "wz"};
  for (int k = 0; k < 6; ++k) {
    SCOPED_TRACE(k);
    KRValue value = parse("[1, 2, 3, 4, 5, 6]");
    value[k] = KRValue("bad");
    Position6D partial = sentinel;
    EXPECT_EQ(messageOf([&] { extractPosition6DFromKRValue(value, "p", partial); }),
              std::string("p ") + fields[k] + ": Expected a float");
    std::vector<float> expected = sentinel.toVector();
    for (int i = 0; i < k; ++i) expected[i] = float(i + 1);
    EXPECT_EQ(partial.toVector(), expected);
  }
}

TEST(Position6DFromVector, SixFloatsInOrder) {
  Position6D out(9, 9, 9, 9, 9, 9);
  extractPosition6DFromVector({1, 2, 3, 4, 5, 6}, "v", out);
  EXPECT_EQ(out, Position6D(1, 2, 3, 4, 5, 6));
  for (const std::vector<float>& values : {std::vector<float>(5, 1.0f),
                                           std::vector<float>(7, 1.0f), std::vector<float>()}) {
    EXPECT_EQ(messageOf([&] { extractPosition6DFromVector(values, "v", out); }),
              "KRMotion: v Expected an vector with 6 floats for x, y, z, wx, wy, wz.");
    EXPECT_EQ(out, Position6D(1, 2, 3, 4, 5, 6));
  }
}

// Rows of a transform: a rotation about z by 0.5 rad (entries rounded to
// float, so it is a transform only to about 1e-7) and a translation.
const std::vector<float> kRotation = {0.87758256f, -0.47942554f, 0, 1,  //
                                      0.47942554f, 0.87758256f,  0, 2,  //
                                      0,           0,            1, 3};

std::vector<float> twelveOf(const Transform& t) {
  const std::vector<float> all = t.toVector();
  return std::vector<float>(all.begin(), all.begin() + 12);
}

Transform filledWith(float f) {
  Transform t;
  t.r1_c1 = t.r1_c2 = t.r1_c3 = t.r1_c4 = t.r2_c1 = t.r2_c2 = f;
  t.r2_c3 = t.r2_c4 = t.r3_c1 = t.r3_c2 = t.r3_c3 = t.r3_c4 = f;
  return t;
}

TEST(TransformReader, ShapeAndFieldMessages) {
  const std::string shape = "KRMotion: t Expected an KRValue with 12 or 16 floats.";
  for (const KRValue& value : {KRValue(), KRValue("m"), KRValue(std::vector<float>()),
                               KRValue(std::vector<float>(11, 0.0f)),
                               KRValue(std::vector<float>(13, 0.0f)),
                               KRValue(std::vector<float>(15, 0.0f))}) {
    Transform out = filledWith(5);
    EXPECT_EQ(messageOf([&] { extractTransformFromKRValue(value, "t", out); }), shape);
    EXPECT_EQ(out, filledWith(5));
  }
  const char* const fields[] = {"r1_c1", "r1_c2", "r1_c3", "r1_c4", "r2_c1", "r2_c2",
                                "r2_c3", "r2_c4", "r3_c1", "r3_c2", "r3_c3", "r3_c4"};
  for (int k = 0; k < 12; ++k) {
    SCOPED_TRACE(k);
    KRValue value(kRotation);
    value[k] = KRValue();
    Transform out = filledWith(5);
    EXPECT_EQ(messageOf([&] { extractTransformFromKRValue(value, "t", out); }),
              std::string("t ") + fields[k] + ": Expected a float but found an invalid KRValue");
    std::vector<float> expected(12, 5.0f);
    std::copy(kRotation.begin(), kRotation.begin() + k, expected.begin());
    EXPECT_EQ(twelveOf(out), expected);
  }
}

TEST(TransformReader, StrictLenientAndRejectedBands) {
  std::vector<float> sixteen = kRotation;
  sixteen.insert(sixteen.end(), {9, 9, 9, 9});  // a fourth row nobody reads
  std::vector<float> tiny = kRotation;
  tiny[0] += 2e-4f;  // within the strict tolerance
  std::vector<float> scaled = kRotation;
  for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10}) scaled[i] *= 1.003f;  // R^T R off by 0.006
  const std::string repaired = "KRMotion: t It is not exactly a transform.\n";
  const std::string wrong = "KRMotion: t Wrong Transform given.";

  const struct {
    std::vector<float> numbers;
    std::string message, stderrText;
  } rows[] = {
      {kRotation, kOk, ""},     {sixteen, kOk, ""},
      {tiny, kOk, ""},          {scaled, kOk, repaired},
      {std::vector<float>(12, 2.0f), wrong, ""},
      {std::vector<float>(16, 0.0f), wrong, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.numbers));
    Transform out = filledWith(5);
    testing::internal::CaptureStderr();
    const std::string message =
        messageOf([&] { extractTransformFromKRValue(KRValue(row.numbers), "t", out); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), row.stderrText);
    EXPECT_EQ(message, row.message);
    const std::vector<float> read(row.numbers.begin(), row.numbers.begin() + 12);
    if (row.stderrText.empty()) {
      EXPECT_EQ(twelveOf(out), read);  // kept as read, or rejected after all twelve writes
      continue;
    }
    EXPECT_NE(twelveOf(out), read);
    EXPECT_TRUE(out.isTransform(0.001f));
    EXPECT_EQ(out.r1_c4, 1.0f);
    EXPECT_EQ(out.r2_c4, 2.0f);
    EXPECT_EQ(out.r3_c4, 3.0f);
  }
}

}  // namespace
