// Path descriptions. A path is [TYPE, ...]:
//   ["Line", Position2D]                                        size 2
//   ["Circle", Position2D, float]                               size 3
//   ["Flat", Position2D, float, Position2D, Position2D, float]   size 6
//   ["Composed", direct path, direct path, ...]                 (general functions only)
// Type words are matched exactly. Each element goes, in array order, to the
// geometry library's parameter in the same position (see
// kr/math/trajectory/path2d.h for what they mean). Messages are `name`
// followed directly by a fixed text, with no separator: note that the texts
// beginning with "Invalid" run into the name ("argInvalid Path2DFlat KRValue").
// Positions and floats that fail report the element readers' own messages.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/pose2d.h>
#include <kr/math/trajectory/path2d.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include <boost/function.hpp>

#include <string>

namespace KR {
namespace ValueUtils {

/// One direct path into a builder of the geometry library (PathFactory(1.0)).
/// Throws, in this order of checks: checkArrayFromKRValue's messages;
/// " Wrong DirectPath2D type format" (element 0 not a string);
/// "Invalid Path2DStraightLine KRValue", "Invalid Path2DArcOfCircle KRValue",
/// "Invalid Path2DFlat KRValue" (wrong size for the kind, checked before any
/// element is read); " Unknown DirectPath2D type" (any other word, "Composed"
/// included). `builder` is replaced only on success.
KRVALUEUTILS_API void extractDirectPath2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name,
    boost::function<KR::Math::Trajectory::KRDirectPath2D*(const KR::Math::Pose2D&)>& builder);

/// A direct or composed path into a path builder. Element 0 not a string
/// throws " Wrong Path2D type format"; a direct kind is decoded as above; a
/// composed path decodes each element as a direct path (so a nested
/// "Composed" throws " Unknown DirectPath2D type"). ["Composed"] alone gives
/// an empty composed path. `builder` is replaced only on success.
KRVALUEUTILS_API void extractPath2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name,
    boost::function<KR::Math::Trajectory::KRPath2D*(const KR::Math::Pose2D&)>& builder);

/// One direct path added to `factory` by one call of addLine, addCircle or
/// addFlat, after every element was read: a failure adds nothing. Same
/// checks and messages as extractDirectPath2DBuilderFromKRValue.
KRVALUEUTILS_API void extractDirectPath2DIntoTrajectoryFactory(
    const KR::KRValue& value, const std::string& name,
    KR::Math::Trajectory::TrajectoryFactory& factory);

/// A direct or composed path added to `factory` piece by piece, in array
/// order. " Wrong Path2D type format" when element 0 is not a string;
/// " Empty Composed Path2D" for ["Composed"] alone. When a piece fails, the
/// pieces before it stay added (no rollback).
KRVALUEUTILS_API void extractPath2DIntoTrajectoryFactory(
    const KR::KRValue& value, const std::string& name,
    KR::Math::Trajectory::TrajectoryFactory& factory);

}  // namespace ValueUtils
}  // namespace KR
