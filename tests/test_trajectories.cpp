// Trajectory descriptions: messages and their order of checks for the three
// functions, the caller's builder after a failure, and the trajectories the
// builders make.
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include "test_support.h"

#include <memory>

namespace {

using KR::KRValue;
using KR::Math::Pose2D;
using KR::Math::Pose2DPosVelAcc;
using KR::Math::RationalSeconds;
using namespace KR::Math::Trajectory;
using namespace KR::ValueUtils;

KRValue parse(const std::string& text) { return KR::parseKRValue(text); }

const RationalSeconds kPeriod(boost::rational<int>(1, 100));
// Generous enough for every trajectory below to take the duration asked for.
const Limits kLimits(2, 2);

const auto kPreviousDirect = [](const Pose2DPosVelAcc&) -> KRDirectTrajectoryPose2D* {
  return nullptr;
};
const auto kPreviousComposed = [](const Pose2DPosVelAcc&) -> KRTrajectoryPose2DComposed* {
  return nullptr;
};
const auto kPrevious = [](const Pose2DPosVelAcc&) -> KRTrajectoryPose2D* { return nullptr; };

// Runs the three functions on `text`, each into a builder holding a previous
// callable, and checks their messages and that a failure kept the previous one.
void expectMessages(const std::string& text, const std::string& direct,
                    const std::string& composed, const std::string& general,
                    const Limits& limits = kLimits) {
  SCOPED_TRACE(text);
  const KRValue value = parse(text);
  DirectTrajectoryPose2DBuilder directBuilder = kPreviousDirect;
  TrajectoryPose2DComposedBuilder composedBuilder = kPreviousComposed;
  TrajectoryPose2DBuilder builder = kPrevious;
  // Each function reads `value` into `out` with the same settings.
  const auto read = [&](auto extract, auto& out) {
    return messageOf([&] { extract(value, "t", kPeriod, limits, limits, 1.0f, out); });
  };
  EXPECT_EQ(read(extractDirectTrajectoryPose2DBuilderFromKRValue, directBuilder), direct);
  EXPECT_EQ(read(extractTrajectoryPose2DComposedBuilderFromKRValue, composedBuilder), composed);
  EXPECT_EQ(read(extractTrajectoryPose2DBuilderFromKRValue, builder), general);
  EXPECT_EQ(directBuilder.target<decltype(kPreviousDirect)>() != nullptr, direct != kNoThrow);
  EXPECT_EQ(composedBuilder.target<decltype(kPreviousComposed)>() != nullptr,
            composed != kNoThrow);
  EXPECT_EQ(builder.target<decltype(kPrevious)>() != nullptr, general != kNoThrow);
}

const std::string kWrongComposed = "t Wrong TrajectoryPose2DComposed format";
const std::string kUnknown = "t Unknown DirectTrajectoryPose2D type";
const std::string kInvalidSize = "tInvalid HolonomicTrajectoryPose2D KRValue";

TEST(TrajectoryDescriptions, MessagesInTheOrderOfTheChecks) {
  expectMessages("5", "KRMotion: t KRValue is not an array.",
                 "KRMotion: t KRValue is not an array.", "KRMotion: t KRValue is not an array.");
  expectMessages("[7, 1]", "t Wrong Path2D type format", kWrongComposed,
                 "t Wrong TrajectoryPose2D type format");
  expectMessages(R"(["NonHolonomic", ["Line", [1, 0]], 0.5, 2.0])", kInvalidSize, kWrongComposed,
                 kInvalidSize);
  expectMessages(R"(["holonomic", ["Line", [1, 0]], 0.5, 2.0])", kUnknown, kWrongComposed,
                 kUnknown);
  expectMessages(R"(["Composed"])", kUnknown, "t Empty Composed TrajectoryPose2D",
                 "t Empty Composed TrajectoryPose2D");
  expectMessages(R"(["Composed", ["Composed", ["NonHolonomic", ["Line", [1, 0]], 2]]])", kUnknown,
                 kUnknown, kUnknown);
  // The path is read before the numbers, and the rotation before the seconds.
  expectMessages(R"(["Holonomic", ["Composed"], "a", 2.0])", "t Empty Composed Path2D",
                 kWrongComposed, "t Empty Composed Path2D");
  expectMessages(R"(["Holonomic", ["Line", [1]], "a", "b"])",
                 "KRMotion: t Position2D is not valid. It has to be [x, y].", kWrongComposed,
                 "KRMotion: t Position2D is not valid. It has to be [x, y].");
  // Seconds that no fraction of ints holds, and seconds too many periods long.
  const std::string seconds =
      "A duration of 10000000000.000000 seconds does not fit an exact fraction of ints.";
  expectMessages(R"(["NonHolonomic", ["Line", [1, 0]], 1e10])", seconds, kWrongComposed, seconds);
  const std::string periods = "300000000000 periods of 1/100 s do not fit an exact fraction of ints.";
  expectMessages(R"(["NonHolonomic", ["Line", [1, 0]], 3e9])", periods, kWrongComposed, periods);
  expectMessages(R"(["Holonomic", ["Line", [1, 0]], null, "b"])",
                 "t KRValue: Expected a float but found an invalid KRValue", kWrongComposed,
                 "t KRValue: Expected a float but found an invalid KRValue");
  // A failing second element leaves the caller's builder as it was.
  expectMessages(
      R"(["Composed", ["NonHolonomic", ["Line", [1, 0]], 2], ["Holonomic", ["Line", [1, 0]], 1]])",
      kUnknown, kInvalidSize, kInvalidSize);
}

TEST(TrajectoryDescriptions, TheSizeIsCheckedBeforeTheFactoryIsMade) {
  // Limits no factory accepts: only a description of the right size gets as
  // far as making one, and the factory's own exception passes through.
  const Limits unusable(0, 0);
  expectMessages(R"(["Holonomic", ["Line", [1, 0]], 2.0])", kInvalidSize, kWrongComposed,
                 kInvalidSize, unusable);
  const KRValue good = parse(R"(["NonHolonomic", ["Line", [1, 0]], 2.0])");
  DirectTrajectoryPose2DBuilder builder;
  EXPECT_THROW(extractDirectTrajectoryPose2DBuilderFromKRValue(good, "t", kPeriod, unusable,
                                                               unusable, 1.0f, builder),
               std::runtime_error);
}

// The position where a trajectory built at rest at the origin ends.
Pose2D endOf(const KRTrajectoryPose2D& trajectory) {
  return trajectory.stateAt(KR::Math::toSeconds(trajectory.duration())).position;
}

void expectNear(const Pose2D& got, const Pose2D& expected) {
  EXPECT_NEAR(got.x, expected.x, 1e-5);
  EXPECT_NEAR(got.y, expected.y, 1e-5);
  EXPECT_NEAR(got.theta, expected.theta, 1e-5);
}

TEST(TrajectoryDescriptions, BuildersFollowThePathForTheDurationGiven) {
  DirectTrajectoryPose2DBuilder direct;
  extractDirectTrajectoryPose2DBuilderFromKRValue(
      parse(R"(["Holonomic", ["Line", [1.0, 0.0]], 0.5, 2.0])"), "t", kPeriod, kLimits, kLimits,
      1.0f, direct);
  const std::unique_ptr<KRDirectTrajectoryPose2D> holonomic(direct(Pose2DPosVelAcc()));
  ASSERT_NE(dynamic_cast<KRTrajectoryPose2DHolonomic*>(holonomic.get()), nullptr);
  EXPECT_EQ(KR::Math::toSeconds(holonomic->duration()), 2.0);
  expectNear(endOf(*holonomic), Pose2D(1, 0, 0.5f));

  // A composed trajectory runs its pieces one after the other; the general
  // function makes the same.
  const KRValue value = parse(R"(["Composed", ["NonHolonomic", ["Line", [1, 0]], 2],
                                   ["Holonomic", ["Line", [1, 0]], -0.5, 1.5]])");
  TrajectoryPose2DComposedBuilder composed;
  TrajectoryPose2DBuilder general;
  extractTrajectoryPose2DComposedBuilderFromKRValue(value, "t", kPeriod, kLimits, kLimits, 1.0f,
                                                    composed);
  extractTrajectoryPose2DBuilderFromKRValue(value, "t", kPeriod, kLimits, kLimits, 1.0f, general);
  const std::unique_ptr<KRTrajectoryPose2DComposed> trajectory(composed(Pose2DPosVelAcc()));
  const std::unique_ptr<KRTrajectoryPose2D> same(general(Pose2DPosVelAcc()));
  ASSERT_EQ(trajectory->pieces().size(), 2u);
  EXPECT_EQ(KR::Math::toSeconds(trajectory->duration()), 3.5);
  expectNear(endOf(*trajectory), Pose2D(2, 0, -0.5f));
  EXPECT_EQ(KR::Math::toSeconds(same->duration()), 3.5);
  EXPECT_EQ(endOf(*same), endOf(*trajectory));
}

}  // namespace
