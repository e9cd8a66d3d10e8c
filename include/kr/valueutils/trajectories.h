// Trajectory descriptions. A trajectory is
//   ["Holonomic", path, rotation, seconds]                      size 4
//   ["NonHolonomic", path, seconds]                             size 3
//   ["Composed", direct trajectory, direct trajectory, ...]     at least one
// where path is any path description (kr/valueutils/paths.h) except an empty
// composed one.
// Each direct trajectory gets a factory of its own, made with (firstLimits,
// secondLimits, period, factoryParameter); seconds are converted with
// KR::Math::rationalSecondsFromFloat(seconds, period). The path is read
// before the numbers. Messages are `name` followed directly by a fixed text,
// as for paths. `builder` is replaced only on success; the geometry
// library's own exceptions (limits, durations) pass through.
//
// Each function has a second form that takes a blend tolerance (meters)
// after `factoryParameter`: every factory the description makes gets
// setBlendTolerance(blendTolerance) as soon as it is made, before its path is
// added, so that the trajectories drive through the joints of their paths on
// transitions within that distance (see TrajectoryFactory::setBlendTolerance;
// a trajectory's describedPath() is then the path as described). The first
// form is the second with 0: the described path, driven exactly. A tolerance
// that is not finite or is negative throws the factory's own message once the
// first factory is made: after the type word and the size are checked and
// after the factory has checked the limits and the period, before the path is
// read. `builder` is then left as it was.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/trajectorypose2d.h>

#include <boost/function.hpp>

#include <string>

namespace KR {
namespace ValueUtils {

/// Throws " Wrong Path2D type format" (element 0 not a string),
/// "Invalid HolonomicTrajectoryPose2D KRValue" (wrong size for either kind,
/// checked before anything is read or made), or
/// " Unknown DirectTrajectoryPose2D type".
KRVALUEUTILS_API void extractDirectTrajectoryPose2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter,
    boost::function<KR::Math::Trajectory::KRDirectTrajectoryPose2D*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

/// As above, with every factory made with `blendTolerance`.
KRVALUEUTILS_API void extractDirectTrajectoryPose2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter, float blendTolerance,
    boost::function<KR::Math::Trajectory::KRDirectTrajectoryPose2D*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

/// Throws " Wrong TrajectoryPose2DComposed format" (element 0 not the string
/// "Composed"), " Empty Composed TrajectoryPose2D" (no element after it), or
/// the message of the first element that fails.
KRVALUEUTILS_API void extractTrajectoryPose2DComposedBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter,
    boost::function<KR::Math::Trajectory::KRTrajectoryPose2DComposed*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

/// As above, with every factory made with `blendTolerance`.
KRVALUEUTILS_API void extractTrajectoryPose2DComposedBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter, float blendTolerance,
    boost::function<KR::Math::Trajectory::KRTrajectoryPose2DComposed*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

/// A composed or direct trajectory. Throws " Wrong TrajectoryPose2D type
/// format" when element 0 is not a string; otherwise as the two above.
KRVALUEUTILS_API void extractTrajectoryPose2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter,
    boost::function<KR::Math::Trajectory::KRTrajectoryPose2D*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

/// As above, with every factory made with `blendTolerance`.
KRVALUEUTILS_API void extractTrajectoryPose2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter, float blendTolerance,
    boost::function<KR::Math::Trajectory::KRTrajectoryPose2D*(const KR::Math::Pose2DPosVelAcc&)>&
        builder);

}  // namespace ValueUtils
}  // namespace KR
