// Motion configuration: one (name, value) pair at a time, normalised and
// appended to the caller's list.
#include <kr/valueutils/motionconfig.h>

#include "internal.h"

#include <string>
#include <utility>

namespace KR {
namespace ValueUtils {

void decodeMotionConfig(const KR::KRValue& value, const KR::KRValue& name, KR::KRValue& decoded) {
  // Only the one-character string "1" stands for true.
  if (value.isString()) {
    const bool on = static_cast<const std::string&>(value) == "1";
    decoded.arrayPush(KR::KRValue::array(name, on));
    return;
  }
  // Numbers and bools pass through with their kind: an int stays an int.
  if (value.isBool() || value.isInt() || value.isFloat()) {
    KR::KRValue pair;
    pair.arraySetSize(2);
    pair[0] = name;
    pair[1] = value;
    decoded.arrayPush(std::move(pair));
    return;
  }
  // One unusable entry must not reject the whole configuration: skip it. The
  // name is turned into text only when the warning is actually written, so a
  // non-string name fails here only then.
  if (detail::warningsEnabled()) {
    detail::warn("decodeMotionConfig", detail::invalidConfigWarning(name));
  }
}

}  // namespace ValueUtils
}  // namespace KR
