// Path descriptions: messages and their order of checks, what the builder and
// the factory hold after a failure, the calls a factory receives, and the
// paths the builders make.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <memory>
#include <sstream>

namespace {

using KR::KRValue;
using KR::Math::Pose2D;
using KR::Math::Position2D;
using namespace KR::Math::Trajectory;
using namespace KR::ValueUtils;

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

// A factory that only writes down the calls it receives, one line each.
class RecordingFactory final : public TrajectoryFactory {
 public:
  RecordingFactory()
      : TrajectoryFactory(Limits(1, 1), Limits(1, 1),
                          KR::Math::RationalSeconds(boost::rational<int>(1, 100)), 1.0f) {}
  void addLine(const Position2D& p) override { record("line", p); }
  void addCircle(const Position2D& p, float f) override { record("circle", p, f); }
  void addFlat(const Position2D& p1, float f2, const Position2D& p3, const Position2D& p4,
               float f5) override {
    record("flat", p1, f2, p3, p4, f5);
  }
  std::vector<std::string> calls;

 private:
  template <typename... T>
  void record(const T&... parts) {
    std::ostringstream line;
    ((line << parts << ' '), ...);
    calls.push_back(line.str());
  }
};

// Stand in the caller's builder before a call, to see whether it was replaced.
const auto kPreviousDirect = [](const Pose2D&) -> KRDirectPath2D* { return nullptr; };
const auto kPreviousPath = [](const Pose2D&) -> KRPath2D* { return nullptr; };

// Descriptions that every function rejects with the same message: the four
// share one reader of a direct path, so the builders and the general factory
// function stand for them.
const std::vector<std::pair<std::string, std::string>> kCommonFailures = {
    {R"("Line")", "KRMotion: p KRValue is not an array."},
    {"[]", "KRMotion: p KRValue is empty."},
    {"null", "KRMotion: p KRValue is invalid."},
    {R"(["Line", [1, 2], 3])", "pInvalid Path2DStraightLine KRValue"},
    // The size is checked before any element is read.
    {R"(["Circle", "a"])", "pInvalid Path2DArcOfCircle KRValue"},
    {R"(["Flat", [0, 0], 1, [0, 0], [0, 0]])", "pInvalid Path2DFlat KRValue"},
    {R"(["line", [1, 2]])", "p Unknown DirectPath2D type"},
    // Elements: the position reader's and the float reader's own messages,
    // in array order.
    {R"(["Line", 5])", "KRMotion: p KRValue is not an array."},
    {R"(["Line", [1]])", "KRMotion: p Position2D is not valid. It has to be [x, y]."},
    {R"(["Circle", [0, 1], "a"])", "p KRValue: Expected a float"},
    {R"(["Circle", [0, true], null])", "p y: Expected a float"},
    {R"(["Flat", [0, 0], null, "a", [0, 0], "b"])",
     "p KRValue: Expected a float but found an invalid KRValue"},
    {R"(["Flat", [0, 0], 1, [0, 0], [0, 0], "b"])", "p KRValue: Expected a float"},
};

TEST(PathDescriptions, EveryFunctionRejectsWithTheSameMessageAndChangesNothing) {
  for (const auto& row : kCommonFailures) {
    SCOPED_TRACE(row.first);
    const KRValue value = parse(row.first);
    DirectPath2DBuilder direct = kPreviousDirect;
    Path2DBuilder path = kPreviousPath;
    RecordingFactory factory;
    EXPECT_EQ(messageOf([&] { extractDirectPath2DBuilderFromKRValue(value, "p", direct); }),
              row.second);
    EXPECT_EQ(messageOf([&] { extractPath2DBuilderFromKRValue(value, "p", path); }), row.second);
    EXPECT_EQ(messageOf([&] { extractPath2DIntoTrajectoryFactory(value, "p", factory); }),
              row.second);
    EXPECT_NE(direct.target<decltype(kPreviousDirect)>(), nullptr);
    EXPECT_NE(path.target<decltype(kPreviousPath)>(), nullptr);
    EXPECT_TRUE(factory.calls.empty());
  }
}

TEST(PathDescriptions, DirectAndGeneralFunctionsWordTheTypeChecksDifferently) {
  const struct {
    const char* text;
    std::string direct, general;
  } rows[] = {
      {"[3, [1, 2]]", "p Wrong DirectPath2D type format", "p Wrong Path2D type format"},
      {R"(["Composed", ["Line", [1, 2]]])", "p Unknown DirectPath2D type", kNoThrow},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const KRValue value = parse(row.text);
    DirectPath2DBuilder direct;
    Path2DBuilder path;
    RecordingFactory factory;
    EXPECT_EQ(messageOf([&] { extractDirectPath2DBuilderFromKRValue(value, "p", direct); }),
              row.direct);
    EXPECT_EQ(messageOf([&] { extractDirectPath2DIntoTrajectoryFactory(value, "p", factory); }),
              row.direct);
    EXPECT_EQ(messageOf([&] { extractPath2DBuilderFromKRValue(value, "p", path); }), row.general);
    EXPECT_EQ(messageOf([&] { extractPath2DIntoTrajectoryFactory(value, "p", factory); }),
              row.general);
  }
}

TEST(PathDescriptions, AFactoryIsFedPieceByPieceInArrayOrder) {
  RecordingFactory factory;
  extractPath2DIntoTrajectoryFactory(
      parse(R"(["Composed", ["Line", [1, 2]], ["Circle", [0, 1], 1.5],
                ["Flat", [1, 2], 3, [4, 5], [6, 7], 8]])"),
      "p", factory);
  extractDirectPath2DIntoTrajectoryFactory(parse(R"(["Line", [-1, 0.25]])"), "p", factory);
  EXPECT_EQ(factory.calls,
            (std::vector<std::string>{
                "line Position2D(x=1, y=2) ", "circle Position2D(x=0, y=1) 1.5 ",
                "flat Position2D(x=1, y=2) 3 Position2D(x=4, y=5) Position2D(x=6, y=7) 8 ",
                "line Position2D(x=-1, y=0.25) "}));
}

TEST(PathDescriptions, AnEmptyComposedPathIsABuilderButNotAFactoryPath) {
  RecordingFactory factory;
  EXPECT_EQ(messageOf([&] { extractPath2DIntoTrajectoryFactory(parse(R"(["Composed"])"), "p", factory); }),
            "p Empty Composed Path2D");
  EXPECT_TRUE(factory.calls.empty());

  Path2DBuilder builder;
  extractPath2DBuilderFromKRValue(parse(R"(["Composed"])"), "p", builder);
  const std::unique_ptr<KRPath2D> path(builder(Pose2D(1, 2, 0.5)));
  ASSERT_NE(dynamic_cast<KRPath2DComposed*>(path.get()), nullptr);
  EXPECT_EQ(path->length(), 0.0f);
  EXPECT_EQ(path->endPose(), Pose2D(1, 2, 0.5));
}

// The builders come from the geometry library with the elements unchanged;
// the general function's builder makes the same path as the direct one.
TEST(PathDescriptions, BuildersMakeTheDescribedPaths) {
  const struct {
    const char* text;
    KRDirectPath2D::Kind kind;
    float length;
    Pose2D end;  // built at (1, 1) facing along y
  } rows[] = {
      {R"(["Line", [3, 4]])", KRDirectPath2D::Kind::Line, 5.0f, Pose2D(-3, 4, 2.49809f)},
      // A half turn to the left about a centre 1 m to the left.
      {R"(["Circle", [0, 1], 3.14159265])", KRDirectPath2D::Kind::ArcOfCircle, 3.14159f,
       Pose2D(-1, 1, 4.71239f)},
      // A quarter turn about (0, 1), a straight run to (2, 1) (a corner back to
      // the start heading), and no second arc: its centre is where it starts.
      {R"(["Flat", [0, 1], 1.57079633, [2, 1], [2, 1], 1])", KRDirectPath2D::Kind::Flat,
       1.57080f + 1.0f, Pose2D(0, 3, 1.57080f)},
  };
  const Pose2D start(1, 1, 1.57079633f);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    DirectPath2DBuilder directBuilder;
    Path2DBuilder pathBuilder;
    extractDirectPath2DBuilderFromKRValue(parse(row.text), "p", directBuilder);
    extractPath2DBuilderFromKRValue(parse(row.text), "p", pathBuilder);
    const std::unique_ptr<KRDirectPath2D> direct(directBuilder(start));
    const std::unique_ptr<KRPath2D> path(pathBuilder(start));
    EXPECT_EQ(direct->kind(), row.kind);
    EXPECT_NEAR(direct->length(), row.length, 1e-4);
    EXPECT_NEAR(direct->endPose().x, row.end.x, 1e-4);
    EXPECT_NEAR(direct->endPose().y, row.end.y, 1e-4);
    EXPECT_NEAR(direct->endPose().theta, row.end.theta, 1e-4);
    ASSERT_NE(dynamic_cast<KRDirectPath2D*>(path.get()), nullptr);
    EXPECT_EQ(path->endPose(), direct->endPose());
    EXPECT_EQ(path->length(), direct->length());
  }
}

}  // namespace
