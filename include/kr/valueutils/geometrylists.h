// Geometry lists. One record or a list of records in the same argument: a
// value is one record when its size is one of the record's single sizes
// (Position2D 2, Pose2D 3, Pose2DAndTime 3 or more, Position3D 3, Position6D
// 6, Transform 12 or 16) and its element 0 is a number; otherwise each
// element is read as one record. The output is emptied first, then sized
// before any element is read: after a failure at element k it holds every
// record, those after k default-made. Shape failures are those of
// checkArrayFromKRValue, except for Position3D lists (below).
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dandtime.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>
#include <kr/math/position6d.h>
#include <kr/math/transform.h>

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {

KRVALUEUTILS_API void extractVectorPose2DFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     std::vector<KR::Math::Pose2D>& out);
KRVALUEUTILS_API void extractVectorPosition2DFromKRValue(const KR::KRValue& value,
                                                         const std::string& name,
                                                         std::vector<KR::Math::Position2D>& out);
KRVALUEUTILS_API void extractVectorPose2DAndTimeFromKRValue(
    const KR::KRValue& value, const std::string& name, std::vector<KR::Math::Pose2DAndTime>& out);
/// An invalid value, a value that is not an array and an empty array all give
/// an empty list without error.
KRVALUEUTILS_API void extractVectorPosition3DFromKRValue(const KR::KRValue& value,
                                                         const std::string& name,
                                                         std::vector<KR::Math::Position3D>& out);
KRVALUEUTILS_API void extractVectorPosition6DFromKRValue(const KR::KRValue& value,
                                                         const std::string& name,
                                                         std::vector<KR::Math::Position6D>& out);
KRVALUEUTILS_API void extractVectorTransformFromKRValue(const KR::KRValue& value,
                                                        const std::string& name,
                                                        std::vector<KR::Math::Transform>& out);

/// Groups of records. One record gives one group of one. A list whose every
/// element is a record gives one group per record, or a single group of all
/// of them when `isSingleGroup` is true. Otherwise (some element is not a
/// record) each element is one group, read by the list reader above.
KRVALUEUTILS_API void extractVectorPosition6DFromKRValue(
    const KR::KRValue& value, const std::string& name, const bool& isSingleGroup,
    std::vector<std::vector<KR::Math::Position6D>>& out);
KRVALUEUTILS_API void extractVectorTransformFromKRValue(
    const KR::KRValue& value, const std::string& name, const bool& isSingleGroup,
    std::vector<std::vector<KR::Math::Transform>>& out);

}  // namespace ValueUtils
}  // namespace KR
