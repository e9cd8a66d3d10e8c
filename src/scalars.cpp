// Clipping, the shape check, and the readers of scalars, axis masks and
// frames.
#include <kr/valueutils/scalars.h>
#include <kr/math/axismask.h>
#include <kr/math/clip.h>

#include "internal.h"

#include <bitset>
#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

const std::string kAxisField = "axis";
const std::string kFrameField = "frame";

// The list readers of masks and frames: a single number is a list of one,
// otherwise every element of a non-empty array is read in order into a list
// sized beforehand.
template <typename T, typename ReadOne>
void readList(const KR::KRValue& value, const std::string& name, std::vector<T>& out,
              ReadOne readOne) {
  out.clear();
  if (value.isInt() || value.isFloat()) {
    out.resize(1);
    readOne(value, name, out[0]);
    return;
  }
  detail::checkArray(value, name);
  const unsigned int size = value.getSize();
  out.resize(size);
  for (unsigned int i = 0; i < size; ++i) {
    readOne(value[static_cast<int>(i)], name, out[i]);
  }
}

}  // namespace

void clipAndWarn(float min, float max, float& data, const std::string& name,
                 const std::string& fieldName) {
  const float before = data;
  if (!KR::Math::clipData(min, max, data)) {
    return;
  }
  if (!detail::warningsEnabled()) {
    return;
  }
  detail::warn("clipAndWarn", detail::clipWarning(before, data, min, max, name, fieldName));
}

float extractFloatAndClip(const KR::KRValue& value, const float& min, const float& max,
                          const std::string& name, const std::string& fieldName) {
  float f = detail::readFloat(value, name, fieldName);
  clipAndWarn(min, max, f, name, fieldName);
  return f;
}

void checkArrayFromKRValue(const KR::KRValue& value, const std::string& name) {
  detail::checkArray(value, name);
}

float extractFloat(const KR::KRValue& value, const std::string& name,
                   const std::string& fieldName) {
  return detail::readFloat(value, name, fieldName);
}

int extractIntFromKRValue(const KR::KRValue& value, const std::string& name,
                          const std::string& fieldName) {
  return detail::readInt(value, name, fieldName);
}

void extractAxisMaskFromKRValue(const KR::KRValue& value, const std::string& name,
                                std::bitset<6>& mask) {
  const int i = detail::readInt(value, name, kAxisField);
  if (!KR::Math::isAxisMask(i)) {
    detail::fail(detail::Message::NotAnAxisMask, value, name);
  }
  mask = std::bitset<6>(static_cast<unsigned long>(static_cast<unsigned int>(i)));
}

void extractFrameFromKRValue(const KR::KRValue& value, const std::string& name,
                             KR::Math::FRAME& frame) {
  const int i = detail::readInt(value, name, kFrameField);
  if (!KR::Math::isFrame(i)) {
    detail::fail(detail::Message::NotAFrame, value, name);
  }
  frame = static_cast<KR::Math::FRAME>(i);
}

void extractVectorAxisMaskFromKRValue(const KR::KRValue& value, const std::string& name,
                                      std::vector<std::bitset<6>>& masks) {
  readList(value, name, masks, extractAxisMaskFromKRValue);
}

void extractVectorFrameFromKRValue(const KR::KRValue& value, const std::string& name,
                                   std::vector<KR::Math::FRAME>& frames) {
  readList(value, name, frames, extractFrameFromKRValue);
}

}  // namespace ValueUtils
}  // namespace KR
