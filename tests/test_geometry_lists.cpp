// The geometry list readers: when a value is one record rather than a list,
// how groups are formed, and what the output holds after a failure.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::ValueUtils;

const std::string kInvalid = "KRMotion: p KRValue is invalid.";
const std::string kNotArray = "KRMotion: p KRValue is not an array.";
const std::string kPose2D = "KRMotion: p Pose2D is not valid. It has to be [x, y, theta].";
const std::string kPos6D =
    "KRMotion: p Expected an KRValue with 6 floats for x, y, z, wx, wy, wz.";

// Every row runs on an output that holds two old records, which must never
// survive: records not read are default-made.
template <typename Record>
void expectList(void (*reader)(const KRValue&, const std::string&, std::vector<Record>&),
                const Record& old, const std::vector<KRTest::Row<std::vector<Record>>>& rows) {
  const auto read = [reader](const std::string& text, std::vector<Record>& out) {
    reader(KR::parseKRValue(text), "p", out);
  };
  KRTest::expectRows(read, std::vector<Record>(2, old), rows);
}

// An identity rotation with translation (f, 2f, 3f); kT12 and kT16 read as
// transform(1), differing from a default-made one.
Transform transform(float f) {
  Transform t;
  t.r1_c4 = f;
  t.r2_c4 = 2 * f;
  t.r3_c4 = 3 * f;
  return t;
}
const std::string kT12 = "[1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3]";
const std::string kT16 = "[1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1]";

TEST(FlatLists, OneRecordOrAListOfThem) {
  using P = Position2D;
  expectList<P>(extractVectorPosition2DFromKRValue, P(7, 8),
                {{"null", kInvalid, {}},  // the array checks first, old records gone
                 {"4", kNotArray, {}},
                 {"[1, 2]", kNoThrow, {P(1, 2)}},
                 {"[[[1, 2]], [3, 4.5]]", kNoThrow, {P(1, 2), P(3, 4.5f)}},  // nested elements
                 // Three numbers are three elements, and element 0 is no array.
                 {"[1, 2, 3]", kNotArray, {P(), P(), P()}},
                 {"[\"a\", 2]", kNotArray, {P(), P()}},  // single size, but no number first
                 // A failure at element 1: element 0 read, 1 partly, 2 default-made.
                 {"[[1, 2], [3, \"y\"], [5, 6]]", "p y: Expected a float",
                  {P(1, 2), P(3, 0), P()}}});

  using Q = Pose2D;
  expectList<Q>(extractVectorPose2DFromKRValue, Q(7, 8, 9),
                {{"[1, 2, 3]", kNoThrow, {Q(1, 2, 3)}},
                 {"[[1, 2, 3], [4, 5, 6, 7]]", kNoThrow, {Q(1, 2, 3), Q(4, 5, 6)}},
                 // One pose is exactly three numbers, though the pose reader takes four.
                 {"[1, 2, 3, 4]", kPose2D, {Q(), Q(), Q(), Q()}}});

  using T = Pose2DAndTime;
  expectList<T>(extractVectorPose2DAndTimeFromKRValue, T(Q(7, 8, 9), 10),
                {{"[1, 2, 3]", kNoThrow, {T(Q(1, 2, 3), -1)}},
                 {"[1, 2, 3, 4, 5]", kNoThrow, {T(Q(1, 2, 3), 4)}},  // 3 or more numbers
                 {"[[1, 2, 3], [4, 5, 6, 7]]", kNoThrow, {T(Q(1, 2, 3), -1), T(Q(4, 5, 6), 7)}},
                 {"[1, 2]", kPose2D, {T(), T()}}});

  using S = Position6D;
  expectList<S>(extractVectorPosition6DFromKRValue, S(7, 7, 7, 7, 7, 7),
                {{"[1, 2, 3, 4, 5, 6]", kNoThrow, {S(1, 2, 3, 4, 5, 6)}},
                 {"[1, 2, 3, 4, 5, 6, 7]", kPos6D, std::vector<S>(7)}});

  // Unlike the others, the Position3D reader takes anything but an array for
  // an empty list.
  using R = Position3D;
  expectList<R>(extractVectorPosition3DFromKRValue, R(7, 8, 9),
                {{"null", kNoThrow, {}},
                 {"[1, 2, 3]", kNoThrow, {R(1, 2, 3)}},
                 {"[[1, 2, 3], [4, 5, 6]]", kNoThrow, {R(1, 2, 3), R(4, 5, 6)}},
                 {"[1, 2, 3, 4]", "KRMotion: p Expected an KRValue with 3 floats for x, y, z.",
                  {R(), R(), R(), R()}}});

  const Transform t = transform(1);
  expectList<Transform>(extractVectorTransformFromKRValue, transform(5),
                        {{kT12, kNoThrow, {t}},
                                 {"[" + kT12 + ", " + kT16 + "]", kNoThrow, {t, t}},
                         {"[1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0]",
                          "KRMotion: p Expected an KRValue with 12 or 16 floats.",
                          std::vector<Transform>(13)}});
}

template <typename Record>
using GroupReader = void (*)(const KRValue&, const std::string&, const bool&,
                             std::vector<std::vector<Record>>&);

template <typename Record>
struct GroupRow {
  std::string text, message;
  std::vector<std::vector<Record>> groupPerRecord, singleGroup;  // after isSingleGroup false, true
};

template <typename Record>
void expectGroupRows(GroupReader<Record> reader, const Record& old,
                     const std::vector<GroupRow<Record>>& rows) {
  for (const auto& row : rows) {
    for (const bool single : {false, true}) {
      SCOPED_TRACE(row.text + (single ? " single group" : " group per record"));
      std::vector<std::vector<Record>> out(2, std::vector<Record>(2, old));
      EXPECT_EQ(messageOf([&] { reader(KR::parseKRValue(row.text), "p", single, out); }),
                row.message);
      EXPECT_EQ(out, single ? row.singleGroup : row.groupPerRecord);
    }
  }
}

TEST(GroupLists, Position6DAndTransformGroups) {
  using S = Position6D;
  const std::string a = "[1, 2, 3, 4, 5, 6]", b = "[6, 5, 4, 3, 2, 1]";
  const S sa(1, 2, 3, 4, 5, 6), sb(6, 5, 4, 3, 2, 1), partial(1, 2, 3, 4, 5, 0);
  const std::string badWz = "[" + a + ", [1, 2, 3, 4, 5, \"w\"], " + b + "]";
  expectGroupRows<S>(
      extractVectorPosition6DFromKRValue, S(7, 7, 7, 7, 7, 7),
      {{"null", kInvalid, {}, {}},
       // Whatever isSingleGroup says: one record is one group of one; a list
       // with an element that is not a record is a list of groups.
       {a, kNoThrow, {{sa}}, {{sa}}},
       {"[[" + a + ", " + b + "], " + a + "]", kNoThrow, {{sa, sb}, {sa}}, {{sa, sb}, {sa}}},
       {"[" + a + ", 5]", kNotArray, {{sa}, {}}, {{sa}, {}}},
       // Six elements but no number first: not a record, so group 1 is a list
       // of six that fails at once.
       {"[" + a + ", [\"a\", 2, 3, 4, 5, 6]]", kPos6D, {{sa}, std::vector<S>(6)},
        {{sa}, std::vector<S>(6)}},
       // A flat list of records: one group each, or one group of all.
       {"[" + a + ", " + b + "]", kNoThrow, {{sa}, {sb}}, {{sa, sb}}},
       {badWz, "p wz: Expected a float", {{sa}, {partial}, {S()}}, {{sa, partial, S()}}}});

  const Transform t = transform(1);
  const std::string pair = "[" + kT12 + ", " + kT16 + "]";
  expectGroupRows<Transform>(
      extractVectorTransformFromKRValue, transform(5),
      {{kT16, kNoThrow, {{t}}, {{t}}},
       {pair, kNoThrow, {{t}, {t}}, {{t, t}}},
       {"[" + pair + ", " + kT12 + "]", kNoThrow, {{t, t}, {t}}, {{t, t}, {t}}}});
}

}  // namespace
