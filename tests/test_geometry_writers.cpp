// The geometry writers: layouts, float elements only, empty inputs. Round
// trips through the readers are the fuzz targets' business.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using KR::KRValue;
using namespace KR::Math;
using namespace KR::ValueUtils;

const Pose2DPosVelAcc kState(Pose2D(1, 2, 3), Pose2D(4, 5, 6), Pose2D(7, 8, 9));

// The text form tells int from float (1 versus 1.0) and an invalid value
// from an empty array (null versus []), so comparing texts checks the kinds.
TEST(GeometryWriters, LayoutsOfFloatsOverAnyOldContent) {
  using Out = KRValue;
  const std::pair<std::function<void(Out&)>, std::string> rows[] = {
      {[](Out& out) { extractKRValueFromPosition2D({1, -2.5f}, out); }, "[1.0, -2.5]"},
      {[](Out& out) { extractKRValueFromPose2D({1, 2, 0.5f}, out); }, "[1.0, 2.0, 0.5]"},
      {[](Out& out) { extractKRValueFromPose2DPosVelAcc(kState, out); },
       "[[1.0, 2.0, 3.0], [4.0, 5.0, 6.0], [7.0, 8.0, 9.0]]"},
      {[](Out& out) { extractKRValueFromVectorPosition2D({{1, 2}, {3, 4}}, out); },
       "[[1.0, 2.0], [3.0, 4.0]]"},
      {[](Out& out) { extractKRValueFromVectorPose2DPosVelAcc({kState, Pose2DPosVelAcc()}, out); },
       "[[[1.0, 2.0, 3.0], [4.0, 5.0, 6.0], [7.0, 8.0, 9.0]], "
       "[[0.0, 0.0, 0.0], [0.0, 0.0, 0.0], [0.0, 0.0, 0.0]]]"},
      {[](Out& out) { createKRValueFromVectorVectorFloat({{1, 2}, {}, {3}}, out); },
       "[[1.0, 2.0], [], [3.0]]"},
      {[](Out& out) { createKRValueFromVectorPosition3D({{1, 2, 3}, {4, 5, 6}}, out); },
       "[[1.0, 2.0, 3.0], [4.0, 5.0, 6.0]]"},
      // Empty input: the pushing writers leave `out` cleared (invalid), the
      // sizing writers an empty array.
      {[](Out& out) { extractKRValueFromVectorPosition2D({}, out); }, "null"},
      {[](Out& out) { extractKRValueFromVectorPose2DPosVelAcc({}, out); }, "null"},
      {[](Out& out) { createKRValueFromVectorVectorFloat({}, out); }, "[]"},
      {[](Out& out) { createKRValueFromVectorPosition3D({}, out); }, "[]"},
  };
  for (const auto& row : rows) {
    for (const char* old : {"[9, 9, 9, 9, 9, 9, 9]", "\"old\""}) {
      SCOPED_TRACE(testing::Message() << "row " << &row - rows << " over " << old);
      KRValue out = KR::parseKRValue(old);
      row.first(out);
      EXPECT_EQ(KR::printKRValue(out), row.second);
    }
  }
}

}  // namespace
