// The geometry writers: layouts, float elements only, empty inputs, and
// write-then-read round trips through the readers.
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
       [](KRValue& out) { extractKRValueFromVectorPosition2D({{1, 2}, {3, 4}, {0, 0}}, out); },
       "[[1.0, 2.0], [3.0, 4.0], [0.0, 0.0]]"},
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
  const char* const oldContents[] = {"null", "[9, 9, 9, 9, 9, 9, 9]", "[[9, 9, 9]]", "\"old\"",
                                     "5"};
  for (const auto& row : rows) {
    for (const char* old : oldContents) {
      SCOPED_TRACE(std::string(row.writer) + " over " + old);
      KRValue out = KR::parseKRValue(old);
      row.write(out);
      EXPECT_EQ(KR::printKRValue(out), row.expected);
    }
  }
}

TEST(GeometryWriters, RoundTripsThroughTheReaders) {
  KRValue value;
  const Position2D position(1.5f, -2);
  extractKRValueFromPosition2D(position, value);
  Position2D positionBack;
  extractPosition2DFromKRValue(value, "p", positionBack);
  EXPECT_EQ(positionBack, position);

  const Pose2D pose(0.25f, -1, 3.125f);
  extractKRValueFromPose2D(pose, value);
  Pose2D poseBack;
  extractPose2DFromKRValue(value, "p", poseBack);
  EXPECT_EQ(poseBack, pose);

  // The three parts of a state read back as a list of three poses, in order.
  extractKRValueFromPose2DPosVelAcc(kState, value);
  std::vector<Pose2D> parts;
  extractVectorPose2DFromKRValue(value, "p", parts);
  EXPECT_EQ(parts, (std::vector<Pose2D>{kState.position, kState.velocity, kState.acceleration}));

  // Lists of one are nested too, and still read back as lists of one.
  for (const std::vector<Position2D>& positions :
       {std::vector<Position2D>{{1, 2}}, std::vector<Position2D>{{1, 2}, {3, 4}, {5, 6}}}) {
    extractKRValueFromVectorPosition2D(positions, value);
    std::vector<Position2D> back;
    extractVectorPosition2DFromKRValue(value, "p", back);
    EXPECT_EQ(back, positions);
  }
  for (const std::vector<Position3D>& positions :
       {std::vector<Position3D>{}, std::vector<Position3D>{{1, 2, 3}},
        std::vector<Position3D>{{1, 2, 3}, {-4, 5.5f, 6}}}) {
    createKRValueFromVectorPosition3D(positions, value);
    std::vector<Position3D> back(4);
    extractVectorPosition3DFromKRValue(value, "p", back);
    EXPECT_EQ(back, positions);
  }

  // Float lists of the spatial records.
  const std::vector<Position6D> sixes = {{1, 2, 3, 4, 5, 6}, {-1, 0, 0.5f, 0, 0, 3}};
  createKRValueFromVectorVectorFloat({sixes[0].toVector(), sixes[1].toVector()}, value);
  std::vector<Position6D> sixesBack;
  extractVectorPosition6DFromKRValue(value, "p", sixesBack);
  EXPECT_EQ(sixesBack, sixes);

  Transform t;
  t.r1_c4 = 1;
  t.r2_c4 = -2;
  t.r3_c4 = 0.5f;
  createKRValueFromVectorVectorFloat({t.toVector(), Transform().toVector()}, value);
  std::vector<Transform> transformsBack;
  extractVectorTransformFromKRValue(value, "p", transformsBack);
  EXPECT_EQ(transformsBack, (std::vector<Transform>{t, Transform()}));
}

}  // namespace
