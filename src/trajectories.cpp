// Trajectory descriptions: ["Holonomic", ...], ["NonHolonomic", ...] and
// ["Composed", ...] turned into trajectory builders of the geometry library.
//
// Each direct trajectory gets a factory of its own, made with the caller's
// settings (the blend tolerance set before anything is added) and destroyed
// before the call returns; the builders the factories
// hand out do not refer to them. The caller's builder is written last, once
// everything has decoded.
#include <kr/valueutils/trajectories.h>
#include <kr/valueutils/paths.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include "builders_internal.h"
#include "internal.h"

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

using KR::Math::RationalSeconds;
using KR::Math::Trajectory::DirectTrajectoryPose2DBuilder;
using KR::Math::Trajectory::HolonomicTrajectoryFactory;
using KR::Math::Trajectory::KRDirectTrajectoryPose2D;
using KR::Math::Trajectory::KRTrajectoryPose2D;
using KR::Math::Trajectory::Limits;
using KR::Math::Trajectory::NonHolonomicTrajectoryFactory;
using KR::Math::Trajectory::TrajectoryFactory;
using KR::Math::Trajectory::TrajectoryPose2DBuilder;
using KR::Math::Trajectory::TrajectoryPose2DComposedBuilder;

using detail::Message;

const char* const kComposed = "Composed";

// The caller's settings, the same for every factory a description makes.
struct Settings {
  RationalSeconds period;
  Limits firstLimits;
  Limits secondLimits;
  float factoryParameter;
  float blendTolerance;
};

// Element `index` read as a number of seconds, rounded to the period.
RationalSeconds readSeconds(const KR::KRValue& value, int index, const std::string& name,
                            const RationalSeconds& period) {
  const float seconds = detail::readFloat(value[index], name, detail::kKRValueField);
  return KR::Math::rationalSecondsFromFloat(seconds, period);
}

// ["Holonomic", path, rotation, seconds], its size already checked.
DirectTrajectoryPose2DBuilder readHolonomic(const KR::KRValue& value, const std::string& name,
                                            const Settings& settings) {
  HolonomicTrajectoryFactory factory(settings.firstLimits, settings.secondLimits,
                                     settings.period, settings.factoryParameter);
  factory.setBlendTolerance(settings.blendTolerance);
  extractPath2DIntoTrajectoryFactory(value[1], name, factory);
  const float rotation = detail::readFloat(value[2], name, detail::kKRValueField);
  const RationalSeconds duration = readSeconds(value, 3, name, settings.period);
  return detail::upcastBuilder<KRDirectTrajectoryPose2D>(
      factory.getTrajectoryBuilder(rotation, duration));
}

// ["NonHolonomic", path, seconds], its size already checked.
DirectTrajectoryPose2DBuilder readNonHolonomic(const KR::KRValue& value, const std::string& name,
                                               const Settings& settings) {
  NonHolonomicTrajectoryFactory factory(settings.firstLimits, settings.secondLimits,
                                        settings.period, settings.factoryParameter);
  factory.setBlendTolerance(settings.blendTolerance);
  extractPath2DIntoTrajectoryFactory(value[1], name, factory);
  return factory.getTrajectoryBuilder(readSeconds(value, 2, name, settings.period));
}

void checkSize(const KR::KRValue& value, unsigned int size, const std::string& name) {
  if (value.getSize() != size) {
    detail::fail(Message::InvalidDirectTrajectorySize, value, name);
  }
}

DirectTrajectoryPose2DBuilder readDirect(const KR::KRValue& value, const std::string& name,
                                         const Settings& settings) {
  const std::string& word = detail::readTypeWord(value, name, Message::WrongPathFormat);
  if (word == "Holonomic") {
    checkSize(value, 4, name);
    return readHolonomic(value, name, settings);
  }
  if (word == "NonHolonomic") {
    checkSize(value, 3, name);
    return readNonHolonomic(value, name, settings);
  }
  detail::fail(Message::UnknownDirectTrajectory, value[0], name);
}

TrajectoryPose2DComposedBuilder readComposed(const KR::KRValue& value, const std::string& name,
                                             const Settings& settings) {
  if (detail::readTypeWord(value, name, Message::WrongComposedTrajectoryFormat) != kComposed) {
    detail::fail(Message::WrongComposedTrajectoryFormat, value[0], name);
  }
  if (value.getSize() == 1) {
    detail::fail(Message::EmptyComposedTrajectory, value, name);
  }
  // A failing element releases the builders of the ones before it with the
  // list.
  std::vector<DirectTrajectoryPose2DBuilder> pieces(value.getSize() - 1);
  for (unsigned int i = 1; i < value.getSize(); ++i) {
    pieces[i - 1] = readDirect(value[static_cast<int>(i)], name, settings);
  }
  return TrajectoryFactory::getComposedTrajectoryBuilder(pieces);
}

TrajectoryPose2DBuilder readTrajectory(const KR::KRValue& value, const std::string& name,
                                       const Settings& settings) {
  if (detail::readTypeWord(value, name, Message::WrongTrajectoryFormat) == kComposed) {
    return detail::upcastBuilder<KRTrajectoryPose2D>(readComposed(value, name, settings));
  }
  return detail::upcastBuilder<KRTrajectoryPose2D>(readDirect(value, name, settings));
}

}  // namespace

void extractDirectTrajectoryPose2DBuilderFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     const RationalSeconds& period,
                                                     const Limits& firstLimits,
                                                     const Limits& secondLimits,
                                                     float factoryParameter,
                                                     DirectTrajectoryPose2DBuilder& builder) {
  extractDirectTrajectoryPose2DBuilderFromKRValue(value, name, period, firstLimits, secondLimits,
                                                  factoryParameter, 0.0f, builder);
}

void extractDirectTrajectoryPose2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const RationalSeconds& period,
    const Limits& firstLimits, const Limits& secondLimits, float factoryParameter,
    float blendTolerance, DirectTrajectoryPose2DBuilder& builder) {
  DirectTrajectoryPose2DBuilder made = readDirect(
      value, name, {period, firstLimits, secondLimits, factoryParameter, blendTolerance});
  builder.swap(made);
}

void extractTrajectoryPose2DComposedBuilderFromKRValue(const KR::KRValue& value,
                                                       const std::string& name,
                                                       const RationalSeconds& period,
                                                       const Limits& firstLimits,
                                                       const Limits& secondLimits,
                                                       float factoryParameter,
                                                       TrajectoryPose2DComposedBuilder& builder) {
  extractTrajectoryPose2DComposedBuilderFromKRValue(value, name, period, firstLimits, secondLimits,
                                                    factoryParameter, 0.0f, builder);
}

void extractTrajectoryPose2DComposedBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const RationalSeconds& period,
    const Limits& firstLimits, const Limits& secondLimits, float factoryParameter,
    float blendTolerance, TrajectoryPose2DComposedBuilder& builder) {
  TrajectoryPose2DComposedBuilder made = readComposed(
      value, name, {period, firstLimits, secondLimits, factoryParameter, blendTolerance});
  builder.swap(made);
}

void extractTrajectoryPose2DBuilderFromKRValue(const KR::KRValue& value, const std::string& name,
                                               const RationalSeconds& period,
                                               const Limits& firstLimits,
                                               const Limits& secondLimits,
                                               float factoryParameter,
                                               TrajectoryPose2DBuilder& builder) {
  extractTrajectoryPose2DBuilderFromKRValue(value, name, period, firstLimits, secondLimits,
                                            factoryParameter, 0.0f, builder);
}

void extractTrajectoryPose2DBuilderFromKRValue(const KR::KRValue& value, const std::string& name,
                                               const RationalSeconds& period,
                                               const Limits& firstLimits,
                                               const Limits& secondLimits, float factoryParameter,
                                               float blendTolerance,
                                               TrajectoryPose2DBuilder& builder) {
  TrajectoryPose2DBuilder made = readTrajectory(
      value, name, {period, firstLimits, secondLimits, factoryParameter, blendTolerance});
  builder.swap(made);
}

}  // namespace ValueUtils
}  // namespace KR
