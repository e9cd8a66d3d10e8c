// Interpolation keys and control-point lists.
#include <kr/valueutils/keys.h>
#include <kr/math/bezierautokey.h>

#include "internal.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

using KR::Math::Interpolation::Key;
using KR::Math::Interpolation::Parameter;

const char* const kKeyFunction = "extractKeyFromKRValue";

// A parameter element must be a non-empty array of exactly three elements.
void checkParameterShape(const KR::KRValue& param, const std::string& name,
                         detail::Message wrongShape) {
  detail::checkArray(param, name);
  if (param.getSize() != 3) {
    detail::fail(wrongShape, param, name);
  }
}

bool isParameter(const KR::KRValue& param) {
  return param[0].isInt() && detail::isNumber(param[1]) && detail::isNumber(param[2]);
}

// Codes 0 to 3 are kept; anything else, negative codes included, becomes
// BEZIER_AUTO with one warning.
int forcedType(int type) {
  if (static_cast<unsigned int>(type) <= KR::Math::Interpolation::BEZIER_AUTO) {
    return type;
  }
  if (detail::warningsEnabled()) {
    detail::warn(kKeyFunction, detail::forcedInterpolationTypeWarning());
  }
  return KR::Math::Interpolation::BEZIER_AUTO;
}

// Types have been checked: the value type's own conversions cannot fail here.
void readParameter(const KR::KRValue& param, Parameter& out) {
  out.type = forcedType(static_cast<int>(param[0]));
  out.offset.x = static_cast<float>(param[1]);
  out.offset.y = static_cast<float>(param[2]);
}

// A list is one of bare values (for automatic keys) only when every element
// is a number; an empty list counts as one.
bool allNumbers(const KR::KRValue& value) {
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    if (!detail::isNumber(value[static_cast<int>(i)])) {
      return false;
    }
  }
  return true;
}

using TimedKeys = std::vector<std::pair<float, Key>>;

// A point strictly earlier than minTime is dropped; a NaN time is kept.
bool isDropped(float time, float minTime) { return minTime > time; }

bool readKeys(const std::vector<float>& times, const KR::KRValue& value, const std::string& name,
              float minTime, TimedKeys& keys) {
  bool dropped = false;
  Key key;
  for (std::size_t i = 0; i < value.getSize(); ++i) {
    const float time = times.at(i);
    if (isDropped(time, minTime)) {
      dropped = true;
      continue;
    }
    extractKeyFromKRValue(value[static_cast<int>(i)], name, key);
    keys.emplace_back(time, key);
  }
  return dropped;
}

bool computeAutoKeys(const std::vector<float>& times, const KR::KRValue& value, float minTime,
                     TimedKeys& keys) {
  bool dropped = false;
  std::vector<float> keptTimes;
  std::vector<float> keptValues;
  for (std::size_t i = 0; i < value.getSize(); ++i) {
    if (isDropped(times[i], minTime)) {
      dropped = true;
      continue;
    }
    keptTimes.push_back(times[i]);
    keptValues.push_back(static_cast<float>(value[static_cast<int>(i)]));
  }
  KR::Math::computeBezierAutoKey(keptTimes, keptValues, keys);
  return dropped;
}

}  // namespace

void extractKeyFromKRValue(const KR::KRValue& value, const std::string& name, Key& key) {
  detail::checkArray(value, name);
  if (value.getSize() != 3) {
    detail::fail(detail::Message::ControlPointShape, value, name);
  }
  checkParameterShape(value[1], name, detail::Message::ControlPointFirstParameter);
  checkParameterShape(value[2], name, detail::Message::ControlPointSecondParameter);
  if (!detail::isNumber(value[0]) || !isParameter(value[1]) || !isParameter(value[2])) {
    // The first element of the wrong kind.
    const int at = !detail::isNumber(value[0]) ? 0 : !isParameter(value[1]) ? 1 : 2;
    detail::fail(detail::Message::ControlPointTypes, value[at], name);
  }
  // Every check has passed: only now is `key` written.
  key.value = static_cast<float>(value[0]);
  readParameter(value[1], key.firstParam);
  readParameter(value[2], key.secondParam);
}

bool extractVectorOfGenericControlPoints(const std::vector<float>& times, const KR::KRValue& value,
                                         const std::string& name, const float& minTime,
                                         TimedKeys& keys) {
  // A list of the wrong shape is the caller's to reject, not an error here.
  if (!value.isArray() || value.getSize() != times.size()) {
    return false;
  }
  if (allNumbers(value)) {
    return computeAutoKeys(times, value, minTime, keys);
  }
  return readKeys(times, value, name, minTime, keys);
}

}  // namespace ValueUtils
}  // namespace KR
