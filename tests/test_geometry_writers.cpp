// The geometry writers: layouts, float elements only, empty inputs. Round
// trips through the readers are the fuzz targets' business.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::ValueUtils;

const Pose2DPosVelAcc kState(Pose2D(1, 2, 3), Pose2D(4, 5, 6), Pose2D(7, 8, 9));

// The text form tells int from float (1 versus 1.0) and an invalid value
// from an empty array (null versus []), so comparing texts checks the kinds.
TEST(GeometryWriters, LayoutsOfFloatsOverAnyOldContent) {
  const struct {
    const char* writer;
    std::function<void(KRValue&)> write;
    std::string expected;
  } rows[] = {
      {"Position2D", [](KRValue& out) { extractKRValueFromPosition2D({1, -2.5f}, out); },
       "[1.0, -2.5]"},
      {"Pose2D", [](KRValue& out) { extractKRValueFromPose2D({1, 2, 0.5f}, out); },
       "[1.0, 2.0, 0.5]"},
      {"Pose2DPosVelAcc", [](KRValue& out) { extractKRValueFromPose2DPosVelAcc(kState, out); },
       "[[1.0, 2.0, 3.0], [4.0, 5.0, 6.0], [7.0, 8.0, 9.0]]"},
      {"VectorPosition2D",
       [](KRValue& out) { extractKRValueFromVectorPosition2D({{1, 2}, {3, 4}}, out); },
       "[[1.0, 2.0], [3.0, 4.0]]"},
      {"VectorPose2DPosVelAcc",
       [](KRValue& out) {
         extractKRValueFromVectorPose2DPosVelAcc({kState, Pose2DPosVelAcc()}, out);
       },
       "[[[1.0, 2.0, 3.0], [4.0, 5.0, 6.0], [7.0, 8.0, 9.0]], "
       "[[0.0, 0.0, 0.0], [0.0, 0.0, 0.0], [0.0, 0.0, 0.0]]]"},
      {"VectorVectorFloat",
       [](KRValue& out) { createKRValueFromVectorVectorFloat({{1, 2}, {}, {3}}, out); },
       "[[1.0, 2.0], [], [3.0]]"},
      {"VectorPosition3D",
       [](KRValue& out) { createKRValueFromVectorPosition3D({{1, 2, 3}, {4, 5, 6}}, out); },
       "[[1.0, 2.0, 3.0], [4.0, 5.0, 6.0]]"},
      // Empty input: the pushing writers leave `out` cleared (invalid), the
      // sizing writers an empty array.
      {"empty VectorPosition2D", [](KRValue& out) { extractKRValueFromVectorPosition2D({}, out); },
       "null"},
      {"empty VectorPose2DPosVelAcc",
       [](KRValue& out) { extractKRValueFromVectorPose2DPosVelAcc({}, out); }, "null"},
      {"empty VectorVectorFloat",
       [](KRValue& out) { createKRValueFromVectorVectorFloat({}, out); }, "[]"},
      {"empty VectorPosition3D", [](KRValue& out) { createKRValueFromVectorPosition3D({}, out); },
       "[]"},
  };
  for (const auto& row : rows) {
    for (const char* old : {"[9, 9, 9, 9, 9, 9, 9]", "\"old\""}) {
      SCOPED_TRACE(std::string(row.writer) + " over " + old);
      KRValue out = KR::parseKRValue(old);
      row.write(out);
      EXPECT_EQ(KR::printKRValue(out), row.expected);
    }
  }
}

}  // namespace
