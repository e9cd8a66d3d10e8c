// The single-record geometry readers: accepted layouts, exact messages, the
// order of the checks, and what a failed read leaves in the output.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <algorithm>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::ValueUtils;

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

// Each row reads into a copy of `sentinel`, so the expected record also tells
// which fields a failing read overwrote: those before the failing element.
template <typename Record>
void expectReads(void (*reader)(const KRValue&, const std::string&, Record&),
                 const Record& sentinel, const std::vector<KRTest::Row<Record>>& rows) {
  const auto read = [reader](const std::string& text, Record& out) {
    reader(parse(text), "p", out);
  };
  KRTest::expectRows(read, sentinel, rows);
}

TEST(PositionReaders, LayoutsMessagesAndPartialWrites) {
  using P = Position2D;
  const std::string shape2 = "KRMotion: p Position2D is not valid. It has to be [x, y].";
  expectReads<P>(extractPosition2DFromKRValue, P(7, 8),
                 {{"[1, 2.5]", kNoThrow, P(1, 2.5f)},
                  {"[[1, 2, 3]]", kNoThrow, P(1, 2)},  // nested once; inner size not checked
                  // The array checks come first (their order is checkArray's own).
                  {"null", "KRMotion: p KRValue is invalid.", P(7, 8)},
                  {"[1, 2, 3]", shape2, P(7, 8)},
                  {"[\"a\", 2]", shape2, P(7, 8)},  // element 0 is tested, element 1 is not
                  {"[5]", shape2, P(7, 8)},
                  {"[1, \"a\"]", "p y: Expected a float", P(1, 8)}});

  using R = Position3D;
  const std::string shape3 = "KRMotion: p Expected an KRValue with 3 floats for x, y, z.";
  expectReads<R>(extractPosition3DFromKRValue, R(7, 8, 9),
                 {{"[1, 2.5, -3]", kNoThrow, R(1, 2.5f, -3)},
                  {"[1, 2, 3, 4]", shape3, R(7, 8, 9)},
                  {"null", shape3, R(7, 8, 9)},  // not the array checks
                  {"[1, 2, \"z\"]", "p z: Expected a float", R(1, 2, 9)}});

  using S = Position6D;
  const std::string shape6 =
      "KRMotion: p Expected an KRValue with 6 floats for x, y, z, wx, wy, wz.";
  const std::string notFloat = ": Expected a float";
  const S sentinel(9, 9, 9, 9, 9, 9);
  expectReads<S>(extractPosition6DFromKRValue, sentinel,
                 {{"[1, 2.5, 3, 4, 5, -6]", kNoThrow, S(1, 2.5f, 3, 4, 5, -6)},
                  {"[1, 2, 3, 4, 5]", shape6, sentinel},
                  {"null", shape6, sentinel},
                  // A field by its name, after the fields before it.
                  {"[\"a\", 2, 3, 4, 5, 6]", "p x" + notFloat, sentinel},
                  {"[1, 2, 3, 4, 5, \"a\"]", "p wz" + notFloat, S(1, 2, 3, 4, 5, 9)}});

  S out = sentinel;
  extractPosition6DFromVector({1, 2, 3, 4, 5, 6}, "v", out);
  EXPECT_EQ(out, S(1, 2, 3, 4, 5, 6));
  for (const std::size_t size : {5u, 7u}) {
    EXPECT_EQ(messageOf([&] { extractPosition6DFromVector(std::vector<float>(size), "v", out); }),
              "KRMotion: v Expected an vector with 6 floats for x, y, z, wx, wy, wz.");
    EXPECT_EQ(out, S(1, 2, 3, 4, 5, 6));
  }
}

// Both pose readers share the pose part; the time reader adds element 3.
TEST(PoseReaders, LayoutsMessagesAndPartialWrites) {
  const std::string shape = "KRMotion: p Pose2D is not valid. It has to be [x, y, theta].";
  const struct {
    std::string text, poseMessage, timedMessage;
    Pose2DAndTime after;  // the Pose2D reader leaves after.pose
  } rows[] = {
      {"[1, 2, 3]", kNoThrow, kNoThrow, {{1, 2, 3}, -1.0f}},  // no time: -1, not 0
      {"[1, 2.5, 3, 4.5, \"extra\"]", kNoThrow, kNoThrow, {{1, 2.5f, 3}, 4.5f}},
      {"[1, 2, 3, \"t\"]", kNoThrow, "p time: Expected a float", {{1, 2, 3}, 10}},
      // Not the array checks: one message for every bad shape.
      {"null", shape, shape, {{7, 8, 9}, 10}},
      {"[1, 2]", shape, shape, {{7, 8, 9}, 10}},
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

TEST(TransformReader, FieldNamesInRowOrder) {
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

TEST(TransformReader, ShapeThenStrictLenientAndRejectedBands) {
  std::vector<float> tiny = kRotation;
  tiny[0] += 2e-4f;  // within the strict tolerance, yet not exact
  std::vector<float> sixteen = tiny;
  sixteen.insert(sixteen.end(), {9, 9, 9, 9});  // a fourth row nobody reads
  std::vector<float> scaled = kRotation;
  for (std::size_t i : {0u, 1u, 2u, 4u, 5u, 6u, 8u, 9u, 10u})
    scaled[i] *= 1.003f;  // R^T R off by 0.006
  const std::string shape = "KRMotion: t Expected an KRValue with 12 or 16 floats.";
  const std::vector<float> untouched(12, 5.0f), twos(12, 2.0f);
  const struct {
    KRValue value;
    std::string message, stderrText;
    std::vector<float> after;  // the twelve fields; empty: repaired
  } rows[] = {
      {KRValue(), shape, "", untouched},
      {KRValue(tiny), kNoThrow, "", tiny},
      {KRValue(sixteen), kNoThrow, "", tiny},
      {KRValue(scaled), kNoThrow, "KRMotion: t It is not exactly a transform.\n", {}},
      {KRValue(twos), "KRMotion: t Wrong Transform given.", "", twos},  // after all twelve writes
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(KR::printKRValue(row.value));
    Transform out = filledWith(5);
    testing::internal::CaptureStderr();
    const std::string message =
        messageOf([&] { extractTransformFromKRValue(row.value, "t", out); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), row.stderrText);
    EXPECT_EQ(message, row.message);
    if (!row.after.empty()) {
      EXPECT_EQ(twelveOf(out), row.after);
      continue;
    }
    EXPECT_NE(twelveOf(out), scaled);  // repaired: a rotation now, the translation kept
    EXPECT_TRUE(out.isTransform(0.001f));
    EXPECT_EQ(std::vector<float>({out.r1_c4, out.r2_c4, out.r3_c4}), (std::vector<float>{1, 2, 3}));
  }
}

}  // namespace
