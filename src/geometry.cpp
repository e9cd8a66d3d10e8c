// The single-record geometry readers: planar and spatial positions, poses and
// transforms from positional value arrays.
#include <kr/valueutils/geometry.h>

#include "geometry_internal.h"
#include "internal.h"

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

// Field names for the float reader's messages, built once rather than per call.
const std::string kX = "x";
const std::string kY = "y";
const std::string kZ = "z";
const std::string kTheta = "theta";
const std::string kTime = "time";
const std::string kWx = "wx";
const std::string kWy = "wy";
const std::string kWz = "wz";

// The twelve stored entries of a transform in value order (row by row), each
// with the field name that reports it.
float KR::Math::Transform::* const kTransformFields[12] = {
    &KR::Math::Transform::r1_c1, &KR::Math::Transform::r1_c2, &KR::Math::Transform::r1_c3,
    &KR::Math::Transform::r1_c4, &KR::Math::Transform::r2_c1, &KR::Math::Transform::r2_c2,
    &KR::Math::Transform::r2_c3, &KR::Math::Transform::r2_c4, &KR::Math::Transform::r3_c1,
    &KR::Math::Transform::r3_c2, &KR::Math::Transform::r3_c3, &KR::Math::Transform::r3_c4,
};
const std::string kTransformFieldNames[12] = {
    "r1_c1", "r1_c2", "r1_c3", "r1_c4", "r2_c1", "r2_c2",
    "r2_c3", "r2_c4", "r3_c1", "r3_c2", "r3_c3", "r3_c4",
};

// A matrix within the strict tolerance is kept as read; one within the
// lenient tolerance only is repaired; anything further off is rejected.
const float kStrictTolerance = 0.001f;
const float kLenientTolerance = 0.01f;

// Reads the fields x and y from element 0 and 1 of `array`.
void readXY(const KR::KRValue& array, const std::string& name, KR::Math::Position2D& out) {
  out.x = detail::readFloat(array[0], name, kX);
  out.y = detail::readFloat(array[1], name, kY);
}

}  // namespace

namespace detail {

void readPosition2D(const KR::KRValue& value, const std::string& name,
                    KR::Math::Position2D& out) {
  checkArray(value, name);
  const unsigned int size = value.getSize();
  // [x, y]: only element 0 is tested; the float reader rejects a bad y.
  if (size == 2 && isNumber(value[0])) {
    readXY(value, name, out);
    return;
  }
  // [[x, y]]: the inner array's size is not checked, extra numbers are ignored.
  if (size == 1 && value[0].isArray()) {
    readXY(value[0], name, out);
    return;
  }
  fail(Message::Position2DNotValid, value, name);
}

void readPose2D(const KR::KRValue& value, const std::string& name, KR::Math::Pose2D& out) {
  // Elements from index 3 on are ignored, so [x, y, theta, time] is a pose too.
  if (!value.isArray() || value.getSize() < 3) {
    fail(Message::Pose2DNotValid, value, name);
  }
  out.x = readFloat(value[0], name, kX);
  out.y = readFloat(value[1], name, kY);
  out.theta = readFloat(value[2], name, kTheta);
}

void readPose2DAndTime(const KR::KRValue& value, const std::string& name,
                       KR::Math::Pose2DAndTime& out) {
  readPose2D(value, name, out.pose);
  if (value.getSize() <= 3) {
    out.time = -1.0f;  // the mark of a pose given without a time
    return;
  }
  out.time = readFloat(value[3], name, kTime);
}

void readPosition3D(const KR::KRValue& value, const std::string& name,
                    KR::Math::Position3D& out) {
  if (!value.isArray() || value.getSize() != 3) {
    fail(Message::Position3DNotValid, value, name);
  }
  out.x = readFloat(value[0], name, kX);
  out.y = readFloat(value[1], name, kY);
  out.z = readFloat(value[2], name, kZ);
}

void readPosition6D(const KR::KRValue& value, const std::string& name,
                    KR::Math::Position6D& out) {
  if (!value.isArray() || value.getSize() != 6) {
    fail(Message::Position6DNotValid, value, name);
  }
  out.x = readFloat(value[0], name, kX);
  out.y = readFloat(value[1], name, kY);
  out.z = readFloat(value[2], name, kZ);
  out.wx = readFloat(value[3], name, kWx);
  out.wy = readFloat(value[4], name, kWy);
  out.wz = readFloat(value[5], name, kWz);
}

void readTransform(const KR::KRValue& value, const std::string& name, KR::Math::Transform& out) {
  const unsigned int size = value.getSize();
  if (!value.isArray() || (size != 12 && size != 16)) {
    fail(Message::TransformSize, value, name);
  }
  // A fourth row (elements 12 to 15) is implicit in the record: not read,
  // not checked.
  for (int i = 0; i < 12; ++i) {
    out.*kTransformFields[i] = readFloat(value[i], name, kTransformFieldNames[i]);
  }
  if (out.isTransform(kStrictTolerance)) {
    return;
  }
  if (!out.isTransform(kLenientTolerance)) {
    fail(Message::WrongTransform, value, name);
  }
  // Nearly a transform: accepted after repair, and the repair is reported on
  // standard error (not in the log) as one line.
  reportRepairedTransform(name);
  out.normalizeTransform();
}

}  // namespace detail

void extractPosition2DFromKRValue(const KR::KRValue& value, const std::string& name,
                                  KR::Math::Position2D& out) {
  detail::readPosition2D(value, name, out);
}

void extractPose2DFromKRValue(const KR::KRValue& value, const std::string& name,
                              KR::Math::Pose2D& out) {
  detail::readPose2D(value, name, out);
}

void extractPose2DAndTimeFromKRValue(const KR::KRValue& value, const std::string& name,
                                     KR::Math::Pose2DAndTime& out) {
  detail::readPose2DAndTime(value, name, out);
}

void extractPosition3DFromKRValue(const KR::KRValue& value, const std::string& name,
                                  KR::Math::Position3D& out) {
  detail::readPosition3D(value, name, out);
}

void extractPosition6DFromKRValue(const KR::KRValue& value, const std::string& name,
                                  KR::Math::Position6D& out) {
  detail::readPosition6D(value, name, out);
}

void extractPosition6DFromVector(const std::vector<float>& values, const std::string& name,
                                 KR::Math::Position6D& out) {
  if (values.size() != 6) {
    detail::failUnlocated(detail::Message::Position6DVectorNotValid, name);
  }
  out = KR::Math::Position6D(values);
}

void extractTransformFromKRValue(const KR::KRValue& value, const std::string& name,
                                 KR::Math::Transform& out) {
  detail::readTransform(value, name, out);
}

}  // namespace ValueUtils
}  // namespace KR
