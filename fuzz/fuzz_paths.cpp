// Path and trajectory descriptions on arbitrary values, with limits, period,
// fraction of limits and start state drawn from the input (invalid ones
// included). Only std::runtime_error escapes, from the readers and from the
// builders they return; a failing reader leaves the caller's builder in place
// and a failing direct path adds nothing to a factory. What is built is
// queried along its length or duration, for the sanitizers to watch.
//
// Input layout: the last ten bytes are, from the last one backwards: the first
// limits (velocity, acceleration), the second limits, the period, the fraction
// of limits, the start x, y and theta and the start velocity. The byte before
// them chooses the value's decoding (see fuzz_value.h).
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/path2d.h>
#include <kr/math/trajectory/trajectoryfactory.h>
#include <kr/math/trajectory/trajectorypose2d.h>

#include "fuzz_value.h"

#include <boost/function.hpp>
#include <boost/rational.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

namespace {

using namespace KR::ValueUtils;
using namespace KR::Math::Trajectory;
using KR::Math::Pose2D;
using KR::Math::Pose2DPosVelAcc;
using KR::Math::RationalSeconds;
using krfuzz::succeeds;

const std::string kName = "fuzz";
const float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();

const float kLimitValues[] = {1.0f, 0.5f, 2.0f, 0.1f, 10.0f, 1e-6f, 1e30f, 0.0f, -1.0f, kInf, kNaN};
const float kFractions[] = {1.0f, 0.5f, 0.25f, 1e-3f, 0.0f, -0.5f, 1.5f, kNaN, kInf};
const float kStartValues[] = {0.0f, 1.0f, -2.5f, 0.5f, 3.1415927f, 100.0f, 1e6f, 1e30f,
                              -0.0f, kNaN, kInf};
const float kVelocities[] = {0.0f, 1.0f, -3.0f, kNaN};
const float kBlends[] = {0.0f, 0.01f, 1e-4f, 0.3f, 1e-30f, 1e30f, -0.0f, -1.0f, kNaN, kInf};
const int kPeriods[][2] = {{1, 100}, {1, 1000}, {1, 3}, {1, 1}, {1, 50}, {0, 1}, {-1, 100}};

struct Options {
  Limits first{1.0f, 1.0f};
  Limits second{1.0f, 1.0f};
  RationalSeconds period;
  float fraction = 1.0f;
  float blend = 0.0f;
  Pose2DPosVelAcc start;
};

Options readOptions(FuzzedDataProvider& data) {
  Options options;
  options.first.maxVelocity = data.PickValueInArray(kLimitValues);
  options.first.maxAcceleration = data.PickValueInArray(kLimitValues);
  options.second.maxVelocity = data.PickValueInArray(kLimitValues);
  options.second.maxAcceleration = data.PickValueInArray(kLimitValues);
  const auto& period = kPeriods[data.ConsumeIntegralInRange<std::size_t>(0, 6)];
  options.period = RationalSeconds(boost::rational<int>(period[0], period[1]));
  options.fraction = data.PickValueInArray(kFractions);
  options.blend = data.PickValueInArray(kBlends);
  options.start.position.x = data.PickValueInArray(kStartValues);
  options.start.position.y = data.PickValueInArray(kStartValues);
  options.start.position.theta = data.PickValueInArray(kStartValues);
  const float v = data.PickValueInArray(kVelocities);
  options.start.velocity = Pose2D(v, -v, v);
  options.start.acceleration = Pose2D(-v, v, v);
  return options;
}

// Builders the readers must leave in place when they fail; never called.
KRDirectPath2D* directPathBefore(const Pose2D&) { return nullptr; }
KRPath2D* pathBefore(const Pose2D&) { return nullptr; }
KRDirectTrajectoryPose2D* directBefore(const Pose2DPosVelAcc&) { return nullptr; }
KRTrajectoryPose2DComposed* composedBefore(const Pose2DPosVelAcc&) { return nullptr; }
KRTrajectoryPose2D* trajectoryBefore(const Pose2DPosVelAcc&) { return nullptr; }

/// Runs `read` on a builder holding `before`: after a failure the builder
/// still holds it; after a success the builder is called at `start` and what
/// it makes is handed to `query`.
template <typename Result, typename Argument, typename Read, typename Query>
void checkBuilder(Result* (*before)(const Argument&), const Read& read, const Argument& start,
                  const Query& query) {
  boost::function<Result*(const Argument&)> builder = before;
  if (!succeeds([&] { read(builder); })) {
    using Pointer = Result* (*)(const Argument&);
    const Pointer* held = builder.template target<Pointer>();
    KRFUZZ_CHECK(held != nullptr && *held == before);
    return;
  }
  std::unique_ptr<Result> built;
  if (succeeds([&] { built.reset(builder(start)); })) {
    KRFUZZ_CHECK(built != nullptr);
    query(*built);
  }
}

void queryPath(const KRPath2D& path) {
  const float length = path.length();
  for (float s : {-1.0f, 0.0f, 0.5f * length, length, 2.0f * length + 1.0f, kInf}) {
    path.poseAt(s);
  }
  path.endPose();
}

void queryTrajectory(const KRTrajectoryPose2D& trajectory) {
  const double total = KR::Math::toSeconds(trajectory.duration());
  for (double t : {-1.0, 0.0, 0.25 * total, 0.5 * total, total, total + 1.0}) {
    trajectory.stateAt(t);
  }
}

void checkPaths(const KR::KRValue& value, const Options& options) {
  const Pose2D& start = options.start.position;
  checkBuilder(directPathBefore,
               [&](auto& b) { extractDirectPath2DBuilderFromKRValue(value, kName, b); }, start,
               queryPath);
  checkBuilder(pathBefore, [&](auto& b) { extractPath2DBuilderFromKRValue(value, kName, b); },
               start, queryPath);
  // Factories with usable settings: only the path's reading is under test.
  const RationalSeconds tick(boost::rational<int>(1, 100));
  HolonomicTrajectoryFactory factory(Limits(1.0f, 1.0f), Limits(1.0f, 1.0f), tick, 1.0f);
  if (!succeeds([&] { extractDirectPath2DIntoTrajectoryFactory(value, kName, factory); })) {
    KRFUZZ_CHECK(factory.pieces().empty());
  }
  HolonomicTrajectoryFactory composed(Limits(1.0f, 1.0f), Limits(1.0f, 1.0f), tick, 1.0f);
  succeeds([&] { extractPath2DIntoTrajectoryFactory(value, kName, composed); });
}

void checkTrajectories(const KR::KRValue& value, const Options& options) {
  const auto& o = options;
  checkBuilder(
      directBefore,
      [&](auto& b) {
        extractDirectTrajectoryPose2DBuilderFromKRValue(value, kName, o.period, o.first, o.second,
                                                        o.fraction, o.blend, b);
      },
      o.start, queryTrajectory);
  checkBuilder(
      composedBefore,
      [&](auto& b) {
        extractTrajectoryPose2DComposedBuilderFromKRValue(value, kName, o.period, o.first, o.second,
                                                          o.fraction, o.blend, b);
      },
      o.start, queryTrajectory);
  checkBuilder(
      trajectoryBefore,
      [&](auto& b) {
        extractTrajectoryPose2DBuilderFromKRValue(value, kName, o.period, o.first, o.second,
                                                  o.fraction, o.blend, b);
      },
      o.start, queryTrajectory);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const Options options = readOptions(data);
  const std::optional<KR::KRValue> value = krfuzz::decodeValue(data);
  if (value) {
    checkPaths(*value, options);
    checkTrajectories(*value, options);
  }
  return 0;
}
