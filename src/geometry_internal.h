// The single-record geometry readers, for the list readers of this library;
// not installed.
//
// The exported readers forward to these. They have hidden visibility, so a
// list reader calls them directly rather than through the dynamic linker's
// procedure table once per element.
#pragma once

#include <kr/krvalue.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dandtime.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>
#include <kr/math/position6d.h>
#include <kr/math/transform.h>

#include <string>

namespace KR {
namespace ValueUtils {
namespace detail {

void readPosition2D(const KR::KRValue& value, const std::string& name,
                    KR::Math::Position2D& out);
void readPose2D(const KR::KRValue& value, const std::string& name, KR::Math::Pose2D& out);
void readPose2DAndTime(const KR::KRValue& value, const std::string& name,
                       KR::Math::Pose2DAndTime& out);
void readPosition3D(const KR::KRValue& value, const std::string& name,
                    KR::Math::Position3D& out);
void readPosition6D(const KR::KRValue& value, const std::string& name,
                    KR::Math::Position6D& out);
void readTransform(const KR::KRValue& value, const std::string& name, KR::Math::Transform& out);

}  // namespace detail
}  // namespace ValueUtils
}  // namespace KR
