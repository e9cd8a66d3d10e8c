// Geometry writers: records laid out as value arrays of float elements, the
// inverse of the geometry readers.
//
// Two ways of building the output, which differ for an empty input: the
// extractKRValueFrom... writers clear `out` and push, so nothing pushed leaves
// it invalid; the create... writers size `out` first, so an empty input gives
// an empty array.
#include <kr/valueutils/geometrywriters.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

// Every number is written as a float element, never an int, even when integral.
void pushFloat(KR::KRValue& array, float f) { array.arrayPush(KR::KRValue(f)); }

// `out` (invalid or an array) gets [x, y] appended.
void pushPosition2D(const KR::Math::Position2D& p, KR::KRValue& out) {
  out.arrayReserve(2);
  pushFloat(out, p.x);
  pushFloat(out, p.y);
}

// `out` (invalid or an array) gets [x, y, theta] appended.
void pushPose2D(const KR::Math::Pose2D& p, KR::KRValue& out) {
  out.arrayReserve(3);
  pushFloat(out, p.x);
  pushFloat(out, p.y);
  pushFloat(out, p.theta);
}

// Appends [x, y, theta] of `p` to `out` as one element.
void pushPose2DElement(const KR::Math::Pose2D& p, KR::KRValue& out) {
  KR::KRValue element;
  pushPose2D(p, element);
  out.arrayPush(std::move(element));
}

// `out` (invalid or an array) gets the three parts of `p` appended, each as
// one [x, y, theta] element.
void pushPose2DPosVelAcc(const KR::Math::Pose2DPosVelAcc& p, KR::KRValue& out) {
  out.arrayReserve(3);
  pushPose2DElement(p.position, out);
  pushPose2DElement(p.velocity, out);
  pushPose2DElement(p.acceleration, out);
}

}  // namespace

void extractKRValueFromPosition2D(const KR::Math::Position2D& p, KR::KRValue& out) {
  out.clear();
  pushPosition2D(p, out);
}

void extractKRValueFromVectorPosition2D(const std::vector<KR::Math::Position2D>& v,
                                        KR::KRValue& out) {
  out.clear();
  if (v.empty()) {
    return;  // nothing pushed: `out` stays invalid, not an empty array
  }
  // Sized once, then each element made whole in one step: one allocation
  // per element and no per-push capacity checks.
  const int size = static_cast<int>(v.size());
  out.arraySetSize(size);
  for (int i = 0; i < size; ++i) {
    const KR::Math::Position2D& p = v[static_cast<std::size_t>(i)];
    out[i] = KR::KRValue::array(p.x, p.y);
  }
}

void extractKRValueFromPose2D(const KR::Math::Pose2D& p, KR::KRValue& out) {
  out.clear();
  pushPose2D(p, out);
}

void extractKRValueFromPose2DPosVelAcc(const KR::Math::Pose2DPosVelAcc& p, KR::KRValue& out) {
  out.clear();
  pushPose2DPosVelAcc(p, out);
}

void extractKRValueFromVectorPose2DPosVelAcc(const std::vector<KR::Math::Pose2DPosVelAcc>& v,
                                             KR::KRValue& out) {
  out.clear();
  if (v.empty()) {
    return;  // nothing pushed: `out` stays invalid, not an empty array
  }
  out.arrayReserve(static_cast<int>(v.size()));
  for (const KR::Math::Pose2DPosVelAcc& p : v) {
    KR::KRValue element;
    pushPose2DPosVelAcc(p, element);
    out.arrayPush(std::move(element));
  }
}

void createKRValueFromVectorVectorFloat(const std::vector<std::vector<float>>& v,
                                        KR::KRValue& out) {
  out.clear();
  out.arraySetSize(static_cast<int>(v.size()));
  for (std::size_t i = 0; i < v.size(); ++i) {
    out[static_cast<int>(i)] = KR::KRValue(v[i]);
  }
}

void createKRValueFromVectorPosition3D(const std::vector<KR::Math::Position3D>& v,
                                       KR::KRValue& out) {
  out.clear();
  out.arraySetSize(static_cast<int>(v.size()));
  for (std::size_t i = 0; i < v.size(); ++i) {
    // The layout of toVector(), [x, y, z], built in place without the
    // intermediate std::vector.
    const KR::Math::Position3D& p = v[i];
    out[static_cast<int>(i)] = KR::KRValue::array(p.x, p.y, p.z);
  }
}

}  // namespace ValueUtils
}  // namespace KR
