// The geometry list readers: when a value is one record rather than a list,
// how groups are formed, and what the output holds after a failure.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::ValueUtils;

const std::string kOk = "<no exception>";
const std::string kNotArray = "KRMotion: p KRValue is not an array.";
const std::string kPose2D = "KRMotion: p Pose2D is not valid. It has to be [x, y, theta].";
const std::string kPos3D = "KRMotion: p Expected an KRValue with 3 floats for x, y, z.";
const std::string kPos6D =
    "KRMotion: p Expected an KRValue with 6 floats for x, y, z, wx, wy, wz.";
const std::string kTransform12or16 = "KRMotion: p Expected an KRValue with 12 or 16 floats.";

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

template <typename Record>
using ListReader = void (*)(const KRValue&, const std::string&, std::vector<Record>&);

template <typename Record>
struct Row {
  std::string text, message;
  std::vector<Record> after;  // the whole output, also after a failure
};

// Runs every row on an output that holds old records, which must never
// survive: records not read are default-made.
template <typename Record>
void expectRows(ListReader<Record> reader, const Record& old,
                const std::vector<Row<Record>>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    std::vector<Record> out(2, old);
    EXPECT_EQ(messageOf([&] { reader(KR::parseKRValue(row.text), "p", out); }), row.message);
    EXPECT_EQ(out, row.after);
  }
}

template <typename Record>
void expectShapeFailures(ListReader<Record> reader, const Record& old) {
  expectRows<Record>(reader, old,
                     {{"null", "KRMotion: p KRValue is invalid.", {}},
                      {"[]", "KRMotion: p KRValue is empty.", {}},
                      {"4", kNotArray, {}}});
}

TEST(FlatLists, ShapeFailuresLeaveAnEmptyList) {
  expectShapeFailures<Pose2D>(extractVectorPose2DFromKRValue, Pose2D(7, 8, 9));
  expectShapeFailures<Position2D>(extractVectorPosition2DFromKRValue, Position2D(7, 8));
  expectShapeFailures<Pose2DAndTime>(extractVectorPose2DAndTimeFromKRValue,
                                     Pose2DAndTime(Pose2D(7, 8, 9), 10));
  expectShapeFailures<Position6D>(extractVectorPosition6DFromKRValue,
                                  Position6D(7, 7, 7, 7, 7, 7));
  expectShapeFailures<Transform>(extractVectorTransformFromKRValue, Transform());
}

TEST(FlatLists, Position2D) {
  using P = Position2D;
  expectRows<P>(extractVectorPosition2DFromKRValue, P(7, 8),
                {{"[1, 2]", kOk, {P(1, 2)}},
                 {"[[1, 2], [3, 4.5]]", kOk, {P(1, 2), P(3, 4.5f)}},
                 {"[[1, 2]]", kOk, {P(1, 2)}},
                 {"[[[1, 2]], [3, 4]]", kOk, {P(1, 2), P(3, 4)}},  // elements may be nested
                 // Three numbers are three elements; element 0 is no array.
                 {"[1, 2, 3]", kNotArray, {P(), P(), P()}},
                 {"[\"a\", 2]", kNotArray, {P(), P()}},
                 {"[[1, 2], [3, \"y\"]]", "p y: Expected a float", {P(1, 2), P(3, 0)}},
                 {"[[1, 2], 5, [3, 4]]", kNotArray, {P(1, 2), P(), P()}},
                 {"[[1, 2], [1, 2, 3]]",
                  "KRMotion: p Position2D is not valid. It has to be [x, y].",
                  {P(1, 2), P()}}});
}

TEST(FlatLists, Pose2DAndPose2DAndTime) {
  using Q = Pose2D;
  expectRows<Q>(extractVectorPose2DFromKRValue, Q(7, 8, 9),
                {{"[1, 2, 3]", kOk, {Q(1, 2, 3)}},
                 {"[[1, 2, 3]]", kOk, {Q(1, 2, 3)}},
                 {"[[1, 2, 3], [4, 5, 6, 7]]", kOk, {Q(1, 2, 3), Q(4, 5, 6)}},
                 // One pose is exactly three numbers, though the pose reader takes four.
                 {"[1, 2, 3, 4]", kPose2D, {Q(), Q(), Q(), Q()}},
                 {"[\"a\", 2, 3]", kPose2D, {Q(), Q(), Q()}},
                 {"[[1, 2, 3], [4, 5]]", kPose2D, {Q(1, 2, 3), Q()}}});

  using T = Pose2DAndTime;
  expectRows<T>(extractVectorPose2DAndTimeFromKRValue, T(Q(7, 8, 9), 10),
                {{"[1, 2, 3]", kOk, {T(Q(1, 2, 3), -1)}},
                 {"[1, 2, 3, 4]", kOk, {T(Q(1, 2, 3), 4)}},
                 {"[1, 2, 3, 4, 5]", kOk, {T(Q(1, 2, 3), 4)}},
                 {"[[1, 2, 3], [4, 5, 6, 7]]", kOk, {T(Q(1, 2, 3), -1), T(Q(4, 5, 6), 7)}},
                 {"[1, 2]", kPose2D, {T(), T()}},
                 {"[[1, 2, 3], [4, 5, 6, \"t\"]]",
                  "p time: Expected a float",
                  {T(Q(1, 2, 3), -1), T(Q(4, 5, 6), 0)}}});
}

TEST(FlatLists, Position3DToleratesAnythingButAnArray) {
  using R = Position3D;
  expectRows<R>(extractVectorPosition3DFromKRValue, R(7, 8, 9),
                {{"null", kOk, {}},
                 {"\"s\"", kOk, {}},
                 {"[]", kOk, {}},
                 {"5", kOk, {}},
                 {"[1, 2, 3]", kOk, {R(1, 2, 3)}},
                 {"[[1, 2, 3], [4, 5, 6]]", kOk, {R(1, 2, 3), R(4, 5, 6)}},
                 {"[1, 2, 3, 4]", kPos3D, {R(), R(), R(), R()}},
                 {"[[1, 2, 3], []]", kPos3D, {R(1, 2, 3), R()}}});
}

TEST(FlatLists, Position6D) {
  using S = Position6D;
  expectRows<S>(extractVectorPosition6DFromKRValue, S(7, 7, 7, 7, 7, 7),
                {{"[1, 2, 3, 4, 5, 6]", kOk, {S(1, 2, 3, 4, 5, 6)}},
                 {"[[1, 2, 3, 4, 5, 6], [6, 5, 4, 3, 2, 1]]",
                  kOk,
                  {S(1, 2, 3, 4, 5, 6), S(6, 5, 4, 3, 2, 1)}},
                 {"[1, 2, 3, 4, 5, 6, 7]", kPos6D, std::vector<S>(7)},
                 {"[\"a\", 2, 3, 4, 5, 6]", kPos6D, std::vector<S>(6)}});
}

// A transform with a translation, so that it differs from a default-made one.
const std::string kT12 = "[1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3]";
const std::string kT16 = "[1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1]";
const std::string kTwos = "[2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2]";

Transform translated() {
  Transform t;
  t.r1_c4 = 1;
  t.r2_c4 = 2;
  t.r3_c4 = 3;
  return t;
}

Transform filledWith(float f) {
  Transform t;
  t.r1_c1 = t.r1_c2 = t.r1_c3 = t.r1_c4 = t.r2_c1 = t.r2_c2 = f;
  t.r2_c3 = t.r2_c4 = t.r3_c1 = t.r3_c2 = t.r3_c3 = t.r3_c4 = f;
  return t;
}

TEST(FlatLists, Transform) {
  const Transform t = translated();
  expectRows<Transform>(
      extractVectorTransformFromKRValue, filledWith(5),
      {{kT12, kOk, {t}},
       {kT16, kOk, {t}},
       {"[" + kT12 + ", " + kT16 + "]", kOk, {t, t}},
       {"[1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0]", kTransform12or16, std::vector<Transform>(13)},
       {"[\"a\", 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3]", kTransform12or16,
        std::vector<Transform>(12)},
       // A rejected element keeps all twelve numbers it was given.
       {"[" + kT12 + ", " + kTwos + "]", "KRMotion: p Wrong Transform given.",
        {t, filledWith(2)}}});
}

template <typename Record>
using GroupReader = void (*)(const KRValue&, const std::string&, const bool&,
                             std::vector<std::vector<Record>>&);

template <typename Record>
struct GroupRow {
  std::string text;
  bool isSingleGroup;
  std::string message;
  std::vector<std::vector<Record>> after;
};

template <typename Record>
void expectGroupRows(GroupReader<Record> reader, const Record& old,
                     const std::vector<GroupRow<Record>>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text + (row.isSingleGroup ? " single group" : " group per record"));
    std::vector<std::vector<Record>> out(2, std::vector<Record>(2, old));
    EXPECT_EQ(messageOf([&] { reader(KR::parseKRValue(row.text), "p", row.isSingleGroup, out); }),
              row.message);
    EXPECT_EQ(out, row.after);
  }
}

TEST(GroupLists, Position6DGroups) {
  using S = Position6D;
  const std::string a = "[1, 2, 3, 4, 5, 6]";
  const std::string b = "[6, 5, 4, 3, 2, 1]";
  const S sa(1, 2, 3, 4, 5, 6), sb(6, 5, 4, 3, 2, 1);
  std::vector<GroupRow<S>> rows;
  for (const bool single : {false, true}) {
    // Whatever isSingleGroup says: one record, and lists of groups.
    rows.push_back({a, single, kOk, {{sa}}});
    rows.push_back({"[[" + a + ", " + b + "], " + a + "]", single, kOk, {{sa, sb}, {sa}}});
    rows.push_back({"[" + a + ", 5]", single, kNotArray, {{sa}, {}}});
    rows.push_back({"[" + a + ", []]", single, "KRMotion: p KRValue is empty.", {{sa}, {}}});
    // Element 1 has six elements but no number first: not a record, so the
    // value is a list of groups and group 1 is a list of six failing at once.
    rows.push_back(
        {"[" + a + ", [\"a\", 2, 3, 4, 5, 6]]", single, kPos6D, {{sa}, std::vector<S>(6)}});
    rows.push_back({"[1, 2, 3, 4, 5]", single, kNotArray, {{}, {}, {}, {}, {}}});
    rows.push_back({"null", single, "KRMotion: p KRValue is invalid.", {}});
  }
  // A flat list of records: one group each, or one group of all.
  rows.push_back({"[" + a + ", " + b + "]", false, kOk, {{sa}, {sb}}});
  rows.push_back({"[" + a + ", " + b + "]", true, kOk, {{sa, sb}}});
  const std::string badWz = "[" + a + ", [1, 2, 3, 4, 5, \"w\"], " + b + "]";
  rows.push_back({badWz, false, "p wz: Expected a float", {{sa}, {S(1, 2, 3, 4, 5, 0)}, {S()}}});
  rows.push_back({badWz, true, "p wz: Expected a float", {{sa, S(1, 2, 3, 4, 5, 0), S()}}});
  expectGroupRows<S>(extractVectorPosition6DFromKRValue, S(7, 7, 7, 7, 7, 7), rows);
}

TEST(GroupLists, TransformGroups) {
  const Transform t = translated();
  const std::string pair = "[" + kT12 + ", " + kT16 + "]";
  expectGroupRows<Transform>(
      extractVectorTransformFromKRValue, filledWith(5),
      {{kT16, false, kOk, {{t}}},
       {kT12, true, kOk, {{t}}},
       {pair, false, kOk, {{t}, {t}}},
       {pair, true, kOk, {{t, t}}},
       {"[[" + kT12 + ", " + kT12 + "], " + kT16 + "]", false, kOk, {{t, t}, {t}}},
       {"[" + kT12 + ", " + kTwos + "]", false, "KRMotion: p Wrong Transform given.",
        {{t}, {filledWith(2)}}}});
}

}  // namespace
