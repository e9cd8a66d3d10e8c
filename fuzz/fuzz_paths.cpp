// Path and trajectory descriptions on arbitrary values, with limits, period
// and fraction of limits drawn from the input (invalid ones included). Every
// reader either succeeds or throws std::runtime_error. After a failure the
// caller's builder is still the one it held and a factory got no piece from
// a direct path; after a success the builder is called at a start state from
// the input, which must succeed or throw std::runtime_error too, and the
// object it makes is queried along its length or duration: every pose and
// state is finite, clamping holds at both ends and the motion starts and
// ends at rest within its limits.
//
// Input layout: FuzzedDataProvider takes option bytes from the end of the
// input, so the last ten bytes are, from the last one backwards: the first
// limits (velocity, acceleration), the second limits, the period, the
// fraction of limits, the start x, y and theta and the start velocity. The
// byte before them chooses the value's decoding (see fuzz_value.h) and the
// bytes before that are the value.
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/position2d.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/path2d.h>
#include <kr/math/trajectory/pathfactory.h>
#include <kr/math/trajectory/trajectoryfactory.h>
#include <kr/math/trajectory/trajectorypose2d.h>

#include "fuzz_value.h"

#include <boost/function.hpp>
#include <boost/rational.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace KR::ValueUtils;
using KR::Math::Pose2D;
using KR::Math::Pose2DPosVelAcc;
using KR::Math::Position2D;
using KR::Math::RationalSeconds;
using KR::Math::Trajectory::KRDirectPath2D;
using KR::Math::Trajectory::KRDirectTrajectoryPose2D;
using KR::Math::Trajectory::KRPath2D;
using KR::Math::Trajectory::KRPath2DComposed;
using KR::Math::Trajectory::KRTrajectoryPose2D;
using KR::Math::Trajectory::KRTrajectoryPose2DComposed;
using KR::Math::Trajectory::KRTrajectoryPose2DHolonomic;
using KR::Math::Trajectory::Limits;
using KR::Math::Trajectory::TrajectoryFactory;
using krfuzz::sameBits;
using krfuzz::samePose;
using krfuzz::succeeds;

const std::string kName = "fuzz";
const float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();

// --- options -------------------------------------------------------------------

/// Limits: usable ones first, then zero, negative and non-finite ones.
const float kLimitValues[] = {1.0f, 0.5f, 2.0f, 0.1f, 10.0f, 1e-6f, 1e30f, 0.0f, -1.0f, kInf, kNaN};
/// Fractions of limits: inside (0, 1], then outside.
const float kFractions[] = {1.0f, 0.5f, 0.25f, 1e-3f, 0.0f, -0.5f, 1.5f, kNaN, kInf};
/// Start coordinates: ordinary, large and non-finite.
const float kStartValues[] = {0.0f, 1.0f, -2.5f, 0.5f, 3.1415927f, 100.0f, 1e6f, 1e30f,
                              -0.0f, kNaN, kInf};
/// Start velocities, which a trajectory ignores.
const float kVelocities[] = {0.0f, 1.0f, -3.0f, kNaN};

RationalSeconds seconds(int numerator, int denominator) {
  return RationalSeconds(boost::rational<int>(numerator, denominator));
}

/// Periods: a controller's usual ticks, odd ones, and non-positive ones.
RationalSeconds pickPeriod(FuzzedDataProvider& data) {
  const RationalSeconds periods[] = {seconds(1, 100), seconds(1, 1000), seconds(1, 3),
                                     seconds(1, 1),   seconds(1, 50),   seconds(0, 1),
                                     seconds(-1, 100)};
  return periods[data.ConsumeIntegralInRange<std::size_t>(0, 6)];
}

struct Options {
  Limits first{1.0f, 1.0f};
  Limits second{1.0f, 1.0f};
  RationalSeconds period;
  float fraction = 1.0f;
  Pose2DPosVelAcc start;
};

Options readOptions(FuzzedDataProvider& data) {
  Options options;
  options.first.maxVelocity = data.PickValueInArray(kLimitValues);
  options.first.maxAcceleration = data.PickValueInArray(kLimitValues);
  options.second.maxVelocity = data.PickValueInArray(kLimitValues);
  options.second.maxAcceleration = data.PickValueInArray(kLimitValues);
  options.period = pickPeriod(data);
  options.fraction = data.PickValueInArray(kFractions);
  options.start.position.x = data.PickValueInArray(kStartValues);
  options.start.position.y = data.PickValueInArray(kStartValues);
  options.start.position.theta = data.PickValueInArray(kStartValues);
  const float v = data.PickValueInArray(kVelocities);
  options.start.velocity = Pose2D(v, -v, v);
  options.start.acceleration = Pose2D(-v, v, v);
  return options;
}

// --- helpers -------------------------------------------------------------------

bool sameState(const Pose2DPosVelAcc& a, const Pose2DPosVelAcc& b) {
  return samePose(a.position, b.position) && samePose(a.velocity, b.velocity) &&
         samePose(a.acceleration, b.acceleration);
}

bool isFinite(const Pose2D& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.theta);
}

bool isFinite(const Pose2DPosVelAcc& s) {
  return isFinite(s.position) && isFinite(s.velocity) && isFinite(s.acceleration);
}

bool isZero(const Pose2D& p) { return p.x == 0.0f && p.y == 0.0f && p.theta == 0.0f; }

bool atRest(const Pose2DPosVelAcc& s) { return isZero(s.velocity) && isZero(s.acceleration); }

bool isWord(const KR::KRValue& v, const char* word) {
  return v.isString() && static_cast<const std::string&>(v) == word;
}

/// Element 0 of a description, when it is a word.
bool hasWord(const KR::KRValue& value, const char* word) {
  return value.isArray() && value.getSize() > 0 && isWord(value[0], word);
}

// --- sentinel builders -----------------------------------------------------------

// Builders that the readers must leave in place when they fail. They are
// never called.
KRDirectPath2D* sentinelDirectPath(const Pose2D&) { return nullptr; }
KRPath2D* sentinelPath(const Pose2D&) { return nullptr; }
KRDirectTrajectoryPose2D* sentinelDirectTrajectory(const Pose2DPosVelAcc&) { return nullptr; }
KRTrajectoryPose2DComposed* sentinelComposedTrajectory(const Pose2DPosVelAcc&) { return nullptr; }
KRTrajectoryPose2D* sentinelTrajectory(const Pose2DPosVelAcc&) { return nullptr; }

/// True when `builder` still holds the function pointer `sentinel`.
template <typename Result, typename Argument>
bool holds(const boost::function<Result*(const Argument&)>& builder,
           Result* (*sentinel)(const Argument&)) {
  using Pointer = Result* (*)(const Argument&);
  const Pointer* held = builder.template target<Pointer>();
  return held != nullptr && *held == sentinel;
}

// --- paths -----------------------------------------------------------------------

/// The direct kind a word names, or nothing for any other value.
bool kindOf(const KR::KRValue& word, KRDirectPath2D::Kind& kind) {
  if (isWord(word, "Line")) {
    kind = KRDirectPath2D::Kind::Line;
  } else if (isWord(word, "Circle")) {
    kind = KRDirectPath2D::Kind::ArcOfCircle;
  } else if (isWord(word, "Flat")) {
    kind = KRDirectPath2D::Kind::Flat;
  } else {
    return false;
  }
  return true;
}

/// Queries a built path along its length: poses finite, clamped at both
/// ends, and a path without segments stays at its start pose.
void queryPath(const KRPath2D& path, const Pose2D& start) {
  KRFUZZ_CHECK(samePose(path.startPose(), start));
  const float length = path.length();
  KRFUZZ_CHECK(std::isfinite(length) && length >= 0.0f);
  for (const auto& segment : path.segments()) {
    KRFUZZ_CHECK(std::isfinite(segment.length) && segment.length >= 0.0f &&
                 std::isfinite(segment.curvature) && isFinite(segment.start));
  }
  const Pose2D first = path.poseAt(0.0f);
  const Pose2D middle = path.poseAt(0.5f * length);
  const Pose2D last = path.poseAt(length);
  const Pose2D end = path.endPose();
  KRFUZZ_CHECK(isFinite(first) && isFinite(middle) && isFinite(last) && isFinite(end));
  KRFUZZ_CHECK(samePose(path.poseAt(-1.0f), first));
  KRFUZZ_CHECK(samePose(path.poseAt(-kInf), first));
  // Well past the end both clamp to the end. (Just past length() is not
  // compared: length() is the total rounded to float, the clamp is to the
  // total itself, and on paths of 1e7 m and more the two differ by meters.)
  KRFUZZ_CHECK(samePose(path.poseAt(2.0f * length + 1.0f), path.poseAt(kInf)));
  if (path.segments().empty()) {
    KRFUZZ_CHECK(samePose(first, start) && samePose(last, start) && samePose(end, start));
  }
}

/// Calls a path builder that a reader produced. Builders throw
/// std::runtime_error for a start pose that is not finite, and may for one
/// that takes the path out of range; anything built is queried and freed.
template <typename Path>
void buildPath(const boost::function<Path*(const Pose2D&)>& builder, const Pose2D& start,
               const KR::KRValue& value) {
  std::unique_ptr<Path> path;
  if (!succeeds([&] { path.reset(builder(start)); })) {
    return;
  }
  KRFUZZ_CHECK(path != nullptr);
  KRFUZZ_CHECK(isFinite(start));
  queryPath(*path, start);
  KRDirectPath2D::Kind kind;
  if (kindOf(value[0], kind)) {
    const auto* direct = dynamic_cast<const KRDirectPath2D*>(path.get());
    KRFUZZ_CHECK(direct != nullptr && direct->kind() == kind);
  } else {
    const auto* composed = dynamic_cast<const KRPath2DComposed*>(path.get());
    KRFUZZ_CHECK(hasWord(value, "Composed") && composed != nullptr);
    KRFUZZ_CHECK(composed->pieces().size() == value.getSize() - 1);
  }
}

void checkDirectPathBuilder(const KR::KRValue& value, const Pose2D& start) {
  boost::function<KRDirectPath2D*(const Pose2D&)> builder = &sentinelDirectPath;
  if (!succeeds([&] { extractDirectPath2DBuilderFromKRValue(value, kName, builder); })) {
    KRFUZZ_CHECK(holds(builder, &sentinelDirectPath));
    return;
  }
  KRDirectPath2D::Kind kind;
  KRFUZZ_CHECK(value.isArray() && value.getSize() > 0 && kindOf(value[0], kind));
  buildPath(builder, start, value);
}

void checkPathBuilder(const KR::KRValue& value, const Pose2D& start) {
  boost::function<KRPath2D*(const Pose2D&)> builder = &sentinelPath;
  if (!succeeds([&] { extractPath2DBuilderFromKRValue(value, kName, builder); })) {
    KRFUZZ_CHECK(holds(builder, &sentinelPath));
    return;
  }
  KRFUZZ_CHECK(value.isArray() && value.getSize() > 0 && value[0].isString());
  buildPath(builder, start, value);
}

// --- paths into a factory --------------------------------------------------------

/// One add operation as the factory received it.
struct AddCall {
  KRDirectPath2D::Kind kind;
  std::vector<float> numbers;  // every parameter's floats, in parameter order
};

/// A factory that records every add operation that the base factory
/// accepted (one it rejects threw and added nothing).
class RecordingFactory : public TrajectoryFactory {
 public:
  RecordingFactory() : TrajectoryFactory(Limits(1.0f, 1.0f), Limits(1.0f, 1.0f), seconds(1, 100), 1.0f) {}

  void addLine(const Position2D& end) override {
    TrajectoryFactory::addLine(end);
    calls.push_back({KRDirectPath2D::Kind::Line, {end.x, end.y}});
  }
  void addCircle(const Position2D& centre, float angle) override {
    TrajectoryFactory::addCircle(centre, angle);
    calls.push_back({KRDirectPath2D::Kind::ArcOfCircle, {centre.x, centre.y, angle}});
  }
  void addFlat(const Position2D& firstCentre, float firstAngle, const Position2D& straightEnd,
               const Position2D& secondCentre, float secondAngle) override {
    TrajectoryFactory::addFlat(firstCentre, firstAngle, straightEnd, secondCentre, secondAngle);
    calls.push_back({KRDirectPath2D::Kind::Flat,
                     {firstCentre.x, firstCentre.y, firstAngle, straightEnd.x, straightEnd.y,
                      secondCentre.x, secondCentre.y, secondAngle}});
  }

  std::vector<AddCall> calls;
};

/// Whether a recorded call is the direct path `direct` describes: its kind,
/// and each element read (positions and floats) in parameter order.
bool callMatches(const AddCall& call, const KR::KRValue& direct) {
  KRDirectPath2D::Kind kind;
  if (!direct.isArray() || direct.getSize() == 0 || !kindOf(direct[0], kind) ||
      kind != call.kind) {
    return false;
  }
  std::vector<float> numbers;
  for (unsigned int k = 1; k < direct.getSize(); ++k) {
    const KR::KRValue& element = direct[static_cast<int>(k)];
    if (element.isInt() || element.isFloat()) {
      numbers.push_back(extractFloat(element, kName, "angle"));
      continue;
    }
    Position2D p;
    if (!succeeds([&] { extractPosition2DFromKRValue(element, kName, p); })) {
      return false;
    }
    numbers.push_back(p.x);
    numbers.push_back(p.y);
  }
  if (numbers.size() != call.numbers.size()) {
    return false;
  }
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    if (!sameBits(numbers[k], call.numbers[k])) {
      return false;
    }
  }
  return true;
}

void checkDirectPathIntoFactory(const KR::KRValue& value) {
  RecordingFactory factory;
  const bool got =
      succeeds([&] { extractDirectPath2DIntoTrajectoryFactory(value, kName, factory); });
  KRFUZZ_CHECK(factory.pieces().size() == factory.calls.size());
  if (!got) {
    // Every element is read before the one add: a failure adds nothing.
    KRFUZZ_CHECK(factory.calls.empty());
    return;
  }
  KRFUZZ_CHECK(factory.calls.size() == 1 && callMatches(factory.calls[0], value));
}

void checkPathIntoFactory(const KR::KRValue& value) {
  RecordingFactory factory;
  const bool got = succeeds([&] { extractPath2DIntoTrajectoryFactory(value, kName, factory); });
  KRFUZZ_CHECK(factory.pieces().size() == factory.calls.size());
  if (!hasWord(value, "Composed")) {
    KRFUZZ_CHECK(factory.calls.size() == (got ? 1u : 0u));
    if (got) {
      KRFUZZ_CHECK(callMatches(factory.calls[0], value));
    }
    return;
  }
  // Pieces in array order; those before a failing one stay added.
  const std::size_t pieces = value.getSize() - 1;
  if (got) {
    KRFUZZ_CHECK(pieces > 0 && factory.calls.size() == pieces);
  } else {
    KRFUZZ_CHECK(factory.calls.size() < pieces || pieces == 0);
  }
  for (std::size_t k = 0; k < factory.calls.size(); ++k) {
    KRFUZZ_CHECK(callMatches(factory.calls[k], value[static_cast<int>(k + 1)]));
  }
}

// --- trajectories ----------------------------------------------------------------

/// Within a limit times the fraction, with room for rounding.
bool within(double magnitude, float limit, float fraction) {
  const double bound = static_cast<double>(limit) * fraction;
  return magnitude <= bound * (1.0 + 1e-3) + 1e-6;
}

/// Queries a built trajectory over its duration: states finite, at rest
/// before the start and after the end, clamped on both sides, and within
/// the limits in between.
void queryTrajectory(const KRTrajectoryPose2D& trajectory, const Options& options) {
  const RationalSeconds duration = trajectory.duration();
  KRFUZZ_CHECK(duration.count() >= 0);
  const double total = KR::Math::toSeconds(duration);
  const Pose2DPosVelAcc atStart = trajectory.stateAt(0.0);
  KRFUZZ_CHECK(sameState(trajectory.stateAt(-1.0), atStart));
  KRFUZZ_CHECK(atRest(atStart));
  KRFUZZ_CHECK(samePose(atStart.position, options.start.position));
  const Pose2DPosVelAcc after = trajectory.stateAt(total + 1.0);
  KRFUZZ_CHECK(sameState(after, trajectory.stateAt(total + 1e9)));
  KRFUZZ_CHECK(atRest(after) && isFinite(after));
  for (double t : {0.25 * total, 0.5 * total, 0.75 * total, total}) {
    const Pose2DPosVelAcc s = trajectory.stateAt(t);
    KRFUZZ_CHECK(isFinite(s));
    KRFUZZ_CHECK(within(std::hypot(s.velocity.x, s.velocity.y), options.first.maxVelocity,
                        options.fraction));
    KRFUZZ_CHECK(within(std::fabs(s.velocity.theta), options.second.maxVelocity,
                        options.fraction));
  }
}

/// The duration a direct description asks for, rounded to the period.
RationalSeconds askedDuration(const KR::KRValue& direct, const Options& options) {
  const int index = hasWord(direct, "Holonomic") ? 3 : 2;
  return KR::Math::rationalSecondsFromFloat(extractFloat(direct[index], kName, "seconds"),
                                            options.period);
}

/// What a direct trajectory must be after its description: the kind, the
/// rotation of a holonomic one, and at least the duration asked for.
void checkDirect(const KRDirectTrajectoryPose2D& trajectory, const KR::KRValue& direct,
                 const Options& options) {
  const auto* holonomic = dynamic_cast<const KRTrajectoryPose2DHolonomic*>(&trajectory);
  if (hasWord(direct, "Holonomic")) {
    KRFUZZ_CHECK(holonomic != nullptr);
    KRFUZZ_CHECK(sameBits(holonomic->rotation(), extractFloat(direct[2], kName, "rotation")));
  } else {
    KRFUZZ_CHECK(hasWord(direct, "NonHolonomic") && holonomic == nullptr);
  }
  KRFUZZ_CHECK(trajectory.duration() >= askedDuration(direct, options));
}

/// Calls a trajectory builder a reader produced, checks what it made against
/// the description, queries it and frees it.
template <typename Trajectory>
void buildTrajectory(const boost::function<Trajectory*(const Pose2DPosVelAcc&)>& builder,
                     const KR::KRValue& value, const Options& options) {
  std::unique_ptr<Trajectory> trajectory;
  if (!succeeds([&] { trajectory.reset(builder(options.start)); })) {
    return;
  }
  KRFUZZ_CHECK(trajectory != nullptr);
  KRFUZZ_CHECK(isFinite(options.start.position));
  if (const auto* composed = dynamic_cast<const KRTrajectoryPose2DComposed*>(trajectory.get())) {
    KRFUZZ_CHECK(hasWord(value, "Composed"));
    KRFUZZ_CHECK(composed->pieces().size() == value.getSize() - 1);
    RationalSeconds sum(boost::rational<int>(0));
    for (std::size_t k = 0; k < composed->pieces().size(); ++k) {
      checkDirect(*composed->pieces()[k], value[static_cast<int>(k + 1)], options);
      sum += composed->pieces()[k]->duration();
    }
    KRFUZZ_CHECK(composed->duration() == sum);
  } else {
    const auto* direct = dynamic_cast<const KRDirectTrajectoryPose2D*>(trajectory.get());
    KRFUZZ_CHECK(direct != nullptr);
    checkDirect(*direct, value, options);
  }
  queryTrajectory(*trajectory, options);
}

void checkDirectTrajectory(const KR::KRValue& value, const Options& options) {
  boost::function<KRDirectTrajectoryPose2D*(const Pose2DPosVelAcc&)> builder =
      &sentinelDirectTrajectory;
  if (!succeeds([&] {
        extractDirectTrajectoryPose2DBuilderFromKRValue(value, kName, options.period,
                                                        options.first, options.second,
                                                        options.fraction, builder);
      })) {
    KRFUZZ_CHECK(holds(builder, &sentinelDirectTrajectory));
    return;
  }
  KRFUZZ_CHECK(hasWord(value, "Holonomic") || hasWord(value, "NonHolonomic"));
  buildTrajectory(builder, value, options);
}

void checkComposedTrajectory(const KR::KRValue& value, const Options& options) {
  boost::function<KRTrajectoryPose2DComposed*(const Pose2DPosVelAcc&)> builder =
      &sentinelComposedTrajectory;
  if (!succeeds([&] {
        extractTrajectoryPose2DComposedBuilderFromKRValue(value, kName, options.period,
                                                          options.first, options.second,
                                                          options.fraction, builder);
      })) {
    KRFUZZ_CHECK(holds(builder, &sentinelComposedTrajectory));
    return;
  }
  KRFUZZ_CHECK(hasWord(value, "Composed") && value.getSize() > 1);
  buildTrajectory(builder, value, options);
}

void checkTrajectory(const KR::KRValue& value, const Options& options) {
  boost::function<KRTrajectoryPose2D*(const Pose2DPosVelAcc&)> builder = &sentinelTrajectory;
  if (!succeeds([&] {
        extractTrajectoryPose2DBuilderFromKRValue(value, kName, options.period, options.first,
                                                  options.second, options.fraction, builder);
      })) {
    KRFUZZ_CHECK(holds(builder, &sentinelTrajectory));
    return;
  }
  buildTrajectory(builder, value, options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const Options options = readOptions(data);
  const std::optional<KR::KRValue> decoded = krfuzz::decodeValue(data);
  if (!decoded) {
    return 0;
  }
  const KR::KRValue& value = *decoded;
  checkDirectPathBuilder(value, options.start.position);
  checkPathBuilder(value, options.start.position);
  checkDirectPathIntoFactory(value);
  checkPathIntoFactory(value);
  checkDirectTrajectory(value, options);
  checkComposedTrajectory(value, options);
  checkTrajectory(value, options);
  return 0;
}
