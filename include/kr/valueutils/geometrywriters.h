// Geometry writers. Every number is written as a float element. The
// extractKRValueFrom... writers clear `out` and push elements, so an empty
// input vector leaves `out` cleared (invalid); the create... writers make an
// array of the input's size, so an empty input gives an empty array.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>

#include <vector>

namespace KR {
namespace ValueUtils {

/// [x, y]
KRVALUEUTILS_API void extractKRValueFromPosition2D(const KR::Math::Position2D& p,
                                                   KR::KRValue& out);
/// [[x, y], ...]
KRVALUEUTILS_API void extractKRValueFromVectorPosition2D(
    const std::vector<KR::Math::Position2D>& v, KR::KRValue& out);
/// [x, y, theta]
KRVALUEUTILS_API void extractKRValueFromPose2D(const KR::Math::Pose2D& p, KR::KRValue& out);
/// [[position x, y, theta], [velocity ...], [acceleration ...]]
KRVALUEUTILS_API void extractKRValueFromPose2DPosVelAcc(const KR::Math::Pose2DPosVelAcc& p,
                                                        KR::KRValue& out);
/// One element per record, each laid out as above.
KRVALUEUTILS_API void extractKRValueFromVectorPose2DPosVelAcc(
    const std::vector<KR::Math::Pose2DPosVelAcc>& v, KR::KRValue& out);
/// [[floats of v[0]], [floats of v[1]], ...]
KRVALUEUTILS_API void createKRValueFromVectorVectorFloat(const std::vector<std::vector<float>>& v,
                                                         KR::KRValue& out);
/// [[x, y, z], ...]
KRVALUEUTILS_API void createKRValueFromVectorPosition3D(const std::vector<KR::Math::Position3D>& v,
                                                        KR::KRValue& out);

}  // namespace ValueUtils
}  // namespace KR
