// Trajectory descriptions: messages and their order of checks for the three
// functions in both forms, the caller's builder after a failure, the
// trajectories the builders make, and what a blend tolerance changes (every
// factory gets it, the paths as described stay) and does not (0, a failure).
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <utility>

#include "test_support.h"

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

// A reader in its two forms: without a blend tolerance, and with one.
template <typename Builder>
struct Reader {
  void (*first)(const KRValue&, const std::string&, const RationalSeconds&, const Limits&,
                const Limits&, float, Builder&);
  void (*second)(const KRValue&, const std::string&, const RationalSeconds&, const Limits&,
                 const Limits&, float, float, Builder&);

  // The first form when `tolerance` is empty, else the second with it.
  void operator()(const KRValue& value, const Limits& limits, std::optional<float> tolerance,
                  Builder& out) const {
    if (tolerance) {
      second(value, "t", kPeriod, limits, limits, 1.0f, *tolerance, out);
    } else {
      first(value, "t", kPeriod, limits, limits, 1.0f, out);
    }
  }
};

const Reader<DirectTrajectoryPose2DBuilder> kDirect{
    extractDirectTrajectoryPose2DBuilderFromKRValue,
    extractDirectTrajectoryPose2DBuilderFromKRValue};
const Reader<TrajectoryPose2DComposedBuilder> kComposed{
    extractTrajectoryPose2DComposedBuilderFromKRValue,
    extractTrajectoryPose2DComposedBuilderFromKRValue};
const Reader<TrajectoryPose2DBuilder> kGeneral{extractTrajectoryPose2DBuilderFromKRValue,
                                               extractTrajectoryPose2DBuilderFromKRValue};

// Both forms, the second with no blend and with one: a valid tolerance
// changes no message and no order of the checks.
const std::vector<std::optional<float>> kEveryForm{std::nullopt, 0.0f, 0.05f};

// Runs the three functions on `text`, each into a builder holding a previous
// callable, in each form `forms` names, and checks their messages and that a
// failure kept the previous one.
void expectMessages(const std::string& text, const std::string& direct, const std::string& composed,
                    const std::string& general, const Limits& limits = kLimits,
                    const std::vector<std::optional<float>>& forms = kEveryForm) {
  const KRValue value = parse(text);
  for (const std::optional<float>& tolerance : forms) {
    SCOPED_TRACE(text + (tolerance ? " with " + std::to_string(*tolerance) : ""));
    DirectTrajectoryPose2DBuilder directBuilder = kPreviousDirect;
    TrajectoryPose2DComposedBuilder composedBuilder = kPreviousComposed;
    TrajectoryPose2DBuilder builder = kPrevious;
    // Each function reads `value` into `out` with the same settings.
    const auto read = [&](const auto& reader, auto& out) {
      return messageOf([&] { reader(value, limits, tolerance, out); });
    };
    EXPECT_EQ(read(kDirect, directBuilder), direct);
    EXPECT_EQ(read(kComposed, composedBuilder), composed);
    EXPECT_EQ(read(kGeneral, builder), general);
    EXPECT_EQ(directBuilder.target<decltype(kPreviousDirect)>() != nullptr, direct != kNoThrow);
    EXPECT_EQ(composedBuilder.target<decltype(kPreviousComposed)>() != nullptr,
              composed != kNoThrow);
    EXPECT_EQ(builder.target<decltype(kPrevious)>() != nullptr, general != kNoThrow);
  }
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

TEST(TrajectoryDescriptions, AnInvalidBlendToleranceFailsWhenTheFirstFactoryIsMade) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  const std::string blend =
      "A trajectory factory's blend tolerance must be finite and not negative, got ";
  const std::string good = R"(["NonHolonomic", ["Line", [1, 0]], 2.0])";
  const std::vector<std::pair<float, std::string>> invalid{
      {nan, "nan"},
      {-1.0f, "-1.000000"},
      {infinity, "inf"},
      {-infinity, "-inf"},
      {-std::numeric_limits<float>::denorm_min(), "-0.000000"}};
  for (const auto& [tolerance, shown] : invalid) {
    const std::string message = blend + shown + ".";
    expectMessages(good, message, kWrongComposed, message, kLimits, {tolerance});
  }
  const std::string message = blend + "nan.";
  // The type word and the size come first; the path is read after.
  expectMessages(R"(["Holonomic", ["Line", [1, 0]], 2.0])", kInvalidSize, kWrongComposed,
                 kInvalidSize, kLimits, {nan});
  expectMessages(R"(["NonHolonomic", ["Composed"], 2.0])", message, kWrongComposed, message,
                 kLimits, {nan});
  // The first element's factory is made before the second element is looked at.
  expectMessages(
      R"(["Composed", ["NonHolonomic", ["Line", [1, 0]], 2], ["Holonomic", ["Line", [1, 0]], 1]])",
      kUnknown, message, message, kLimits, {nan});
  // The factory checks its limits when it is made, before the tolerance is set.
  const Limits unusable(0, 0);
  DirectTrajectoryPose2DBuilder builder;
  const std::string limits = messageOf([&] { kDirect(parse(good), unusable, {}, builder); });
  ASSERT_NE(limits, kNoThrow);
  ASSERT_EQ(limits.find("blend"), std::string::npos);
  expectMessages(good, limits, kWrongComposed, limits, unusable, {nan});
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

// Blend tolerances.

const std::string kLineArcLine =
    R"(["Composed", ["Line", [1.0, 0.0]], ["Circle", [0.0, 1.0], 1.5707964],
                    ["Line", [1.0, 0.0]]])";

std::string nonHolonomic(const std::string& path) { return R"(["NonHolonomic", )" + path + ", 0]"; }

std::string holonomic(const std::string& path) { return R"(["Holonomic", )" + path + ", 0.5, 0]"; }

// The same segments wherever they start: lengths, curvatures and sharpness
// bit for bit.
::testing::AssertionResult sameShape(const KRPath2D& a, const KRPath2D& b) {
  if (a.segments().size() != b.segments().size()) {
    return ::testing::AssertionFailure()
           << a.segments().size() << " and " << b.segments().size() << " segments";
  }
  for (std::size_t i = 0; i < a.segments().size(); ++i) {
    const Segment2D& x = a.segments()[i];
    const Segment2D& y = b.segments()[i];
    if (std::memcmp(&x.length, &y.length, sizeof x.length) != 0 ||
        std::memcmp(&x.curvature, &y.curvature, sizeof x.curvature) != 0 ||
        std::memcmp(&x.sharpness, &y.sharpness, sizeof x.sharpness) != 0) {
      return ::testing::AssertionFailure() << "segment " << i << " differs";
    }
  }
  return ::testing::AssertionSuccess();
}

// The direct trajectories a trajectory is made of: itself, or a composed
// one's pieces.
std::vector<const KRDirectTrajectoryPose2D*> piecesOf(const KRTrajectoryPose2D& trajectory) {
  if (const auto* one = dynamic_cast<const KRDirectTrajectoryPose2D*>(&trajectory)) {
    return {one};
  }
  std::vector<const KRDirectTrajectoryPose2D*> pieces;
  for (const auto& piece : dynamic_cast<const KRTrajectoryPose2DComposed&>(trajectory).pieces()) {
    pieces.push_back(piece.get());
  }
  return pieces;
}

// What the factory itself says of `tolerance`: its message, or kNoThrow.
std::string factoryVerdict(float tolerance) {
  NonHolonomicTrajectoryFactory factory(kLimits, kLimits, kPeriod, 1.0f);
  return messageOf([&] { factory.setBlendTolerance(tolerance); });
}

// The states at nine evenly spaced times, and the duration, are the same.
bool sameMotion(const KRTrajectoryPose2D& a, const KRTrajectoryPose2D& b) {
  const double seconds = KR::Math::toSeconds(a.duration());
  for (int i = 0; i <= 8; ++i) {
    if (!(a.stateAt(seconds * i / 8) == b.stateAt(seconds * i / 8))) {
      return false;
    }
  }
  return a.duration() == b.duration();
}

// Tolerances of any bits (NaN payloads, denormals, infinities, huge values)
// and the edges: the readers refuse exactly what the factory refuses, with
// its message and the caller's builder kept; 0 and -0 change nothing; any
// other tolerance leaves the paths as described, and 1 cm reaches every
// piece of either kind, which then drives through the joints.
TEST(TrajectoryBlend, AnyToleranceIsTheFactorysToAcceptAndKeepsThePathsAsDescribed) {
  std::mt19937 random(631);
  std::vector<float> tolerances{0.0f, -0.0f, std::numeric_limits<float>::denorm_min(),
                                std::numeric_limits<float>::max(), 0.01f};
  for (int i = 0; i < 200; ++i) {
    const auto bits = static_cast<std::uint32_t>(random());
    float value;
    std::memcpy(&value, &bits, sizeof value);
    tolerances.push_back(value);
  }
  const KRValue value = parse(R"(["Composed", )" + nonHolonomic(kLineArcLine) + ", " +
                              holonomic(kLineArcLine) + "]");
  TrajectoryPose2DBuilder exact;
  kGeneral(value, kLimits, std::nullopt, exact);
  const std::unique_ptr<KRTrajectoryPose2D> unblended(exact(Pose2DPosVelAcc()));
  for (const float tolerance : tolerances) {
    SCOPED_TRACE(tolerance);
    TrajectoryPose2DBuilder builder = kPrevious;
    const std::string verdict = factoryVerdict(tolerance);
    ASSERT_EQ(messageOf([&] { kGeneral(value, kLimits, tolerance, builder); }), verdict);
    if (verdict != kNoThrow) {
      EXPECT_NE(builder.target<decltype(kPrevious)>(), nullptr);
      continue;
    }
    const std::unique_ptr<KRTrajectoryPose2D> made(builder(Pose2DPosVelAcc()));
    if (tolerance == 0.0f) {
      EXPECT_TRUE(sameMotion(*made, *unblended));
    }
    const auto pieces = piecesOf(*made);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      EXPECT_TRUE(sameShape(pieces[i]->describedPath(), piecesOf(*unblended)[i]->path()));
      if (tolerance == 0.01f) {
        EXPECT_NE(&pieces[i]->path(), &pieces[i]->describedPath()) << "piece " << i;
      }
    }
  }
}

}  // namespace
