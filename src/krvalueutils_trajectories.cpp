// Trajectory descriptions: ["Holonomic", ...], ["NonHolonomic", ...] and
// ["Composed", ...] turned into trajectory builders of the geometry library.
//
// Each direct trajectory gets a factory of its own, made with the caller's
// settings and destroyed before the call returns; the builders the factories
// hand out do not refer to them. The caller's builder is written last, once
// everything has decoded.
#include <kr/krvalueutils.h>

#include "krvalueutils_builders_internal.h"
#include "krvalueutils_internal.h"

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

// Element `index` read as a number of seconds, rounded to the period.
RationalSeconds readSeconds(const KR::KRValue& value, int index, const std::string& name,
                            const RationalSeconds& period) {
  const float seconds = detail::readFloat(value[index], name, detail::kKRValueField);
  return KR::Math::rationalSecondsFromFloat(seconds, period);
}

// ["Holonomic", path, rotation, seconds], its size already checked.
DirectTrajectoryPose2DBuilder readHolonomic(const KR::KRValue& value, const std::string& name,
                                            const RationalSeconds& period,
                                            const Limits& firstLimits,
                                            const Limits& secondLimits, float factoryParameter) {
  HolonomicTrajectoryFactory factory(firstLimits, secondLimits, period, factoryParameter);
  extractPath2DIntoTrajectoryFactory(value[1], name, factory);
  const float rotation = detail::readFloat(value[2], name, detail::kKRValueField);
  const RationalSeconds duration = readSeconds(value, 3, name, period);
  return detail::upcastBuilder<KRDirectTrajectoryPose2D>(
      factory.getTrajectoryBuilder(rotation, duration));
}

// ["NonHolonomic", path, seconds], its size already checked.
DirectTrajectoryPose2DBuilder readNonHolonomic(const KR::KRValue& value, const std::string& name,
                                               const RationalSeconds& period,
                                               const Limits& firstLimits,
                                               const Limits& secondLimits,
                                               float factoryParameter) {
  NonHolonomicTrajectoryFactory factory(firstLimits, secondLimits, period, factoryParameter);
  extractPath2DIntoTrajectoryFactory(value[1], name, factory);
  return factory.getTrajectoryBuilder(readSeconds(value, 2, name, period));
}

}  // namespace

void extractDirectTrajectoryPose2DBuilderFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     const RationalSeconds& period,
                                                     const Limits& firstLimits,
                                                     const Limits& secondLimits,
                                                     float factoryParameter,
                                                     DirectTrajectoryPose2DBuilder& builder) {
  detail::checkArray(value, name);
  if (!value[0].isString()) {
    detail::fail(Message::WrongPathFormat, name);
  }
  const std::string& word = static_cast<const std::string&>(value[0]);
  DirectTrajectoryPose2DBuilder made;
  if (word == "Holonomic") {
    if (value.getSize() != 4) {
      detail::fail(Message::InvalidDirectTrajectorySize, name);
    }
    made = readHolonomic(value, name, period, firstLimits, secondLimits, factoryParameter);
  } else if (word == "NonHolonomic") {
    if (value.getSize() != 3) {
      detail::fail(Message::InvalidDirectTrajectorySize, name);
    }
    made = readNonHolonomic(value, name, period, firstLimits, secondLimits, factoryParameter);
  } else {
    detail::fail(Message::UnknownDirectTrajectory, name);
  }
  builder.swap(made);
}

void extractTrajectoryPose2DComposedBuilderFromKRValue(const KR::KRValue& value,
                                                       const std::string& name,
                                                       const RationalSeconds& period,
                                                       const Limits& firstLimits,
                                                       const Limits& secondLimits,
                                                       float factoryParameter,
                                                       TrajectoryPose2DComposedBuilder& builder) {
  detail::checkArray(value, name);
  if (!value[0].isString() || static_cast<const std::string&>(value[0]) != kComposed) {
    detail::fail(Message::WrongComposedTrajectoryFormat, name);
  }
  if (value.getSize() == 1) {
    detail::fail(Message::EmptyComposedTrajectory, name);
  }
  // A failing element releases the builders of the ones before it with the
  // list; the caller's builder is not touched.
  std::vector<DirectTrajectoryPose2DBuilder> pieces(value.getSize() - 1);
  for (unsigned int i = 1; i < value.getSize(); ++i) {
    extractDirectTrajectoryPose2DBuilderFromKRValue(value[static_cast<int>(i)], name, period,
                                                    firstLimits, secondLimits, factoryParameter,
                                                    pieces[i - 1]);
  }
  TrajectoryPose2DComposedBuilder made = TrajectoryFactory::getComposedTrajectoryBuilder(pieces);
  builder.swap(made);
}

void extractTrajectoryPose2DBuilderFromKRValue(const KR::KRValue& value, const std::string& name,
                                               const RationalSeconds& period,
                                               const Limits& firstLimits,
                                               const Limits& secondLimits,
                                               float factoryParameter,
                                               TrajectoryPose2DBuilder& builder) {
  detail::checkArray(value, name);
  if (!value[0].isString()) {
    detail::fail(Message::WrongTrajectoryFormat, name);
  }
  TrajectoryPose2DBuilder wrapped;
  if (static_cast<const std::string&>(value[0]) == kComposed) {
    TrajectoryPose2DComposedBuilder composed;
    extractTrajectoryPose2DComposedBuilderFromKRValue(value, name, period, firstLimits,
                                                      secondLimits, factoryParameter, composed);
    wrapped = detail::upcastBuilder<KRTrajectoryPose2D>(composed);
  } else {
    DirectTrajectoryPose2DBuilder direct;
    extractDirectTrajectoryPose2DBuilderFromKRValue(value, name, period, firstLimits,
                                                    secondLimits, factoryParameter, direct);
    wrapped = detail::upcastBuilder<KRTrajectoryPose2D>(direct);
  }
  builder.swap(wrapped);
}

}  // namespace ValueUtils
}  // namespace KR
