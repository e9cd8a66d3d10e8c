// Motion keys and configuration: one key, control-point lists and motion
// configuration pairs.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/interpolationkey.h>

#include <string>
#include <utility>
#include <vector>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;
using KR::Math::Interpolation::Key;

void describe(std::string& text, const KR::Math::Interpolation::Parameter& parameter) {
  text += '(' + std::to_string(parameter.type) + ", ";
  appendNumber(text, parameter.offset.x);
  text += ", ";
  appendNumber(text, parameter.offset.y);
  text += ')';
}

/// "Key(value=20, first=(3, 0, 0), second=(3, 0.16666667, 0))".
std::string describe(const Key& key) {
  std::string text = "Key(value=";
  appendNumber(text, key.value);
  text += ", first=";
  describe(text, key.firstParam);
  text += ", second=";
  describe(text, key.secondParam);
  return text + ")";
}

KR::KRValue toValue(const KR::Math::Interpolation::Parameter& parameter) {
  return KR::KRValue::array(parameter.type, parameter.offset.x, parameter.offset.y);
}

/// [value, [type, x, y], [type, x, y]], as the key reader takes it.
KR::KRValue toValue(const Key& key) {
  return KR::KRValue::array(key.value, toValue(key.firstParam), toValue(key.secondParam));
}

/// --times: the control points' times, as [NUMBER, ...].
std::vector<float> readTimes(const std::string& text) {
  const KR::KRValue value = parseInput(text);
  if (!value.isArray()) {
    throw UsageError("--times is given as [NUMBER, ...]");
  }
  std::vector<float> times;
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    const KR::KRValue& time = value[int(i)];
    if (!time.isInt() && !time.isFloat()) {
      throw UsageError("--times is given as [NUMBER, ...]");
    }
    times.push_back(static_cast<float>(time));
  }
  return times;
}

/// "dropped: true|false", then "time: key" per key; with --json
/// [dropped, [[time, key], ...]].
void printControlPoints(Output& out, const Options& options, bool dropped,
                        const std::vector<std::pair<float, Key>>& keys) {
  if (options.json) {
    KR::KRValue points;
    points.arraySetSize(0);
    for (const auto& entry : keys) {
      points.arrayPush(KR::KRValue::array(entry.first, toValue(entry.second)));
    }
    printValue(out, KR::KRValue::array(dropped, points));
    return;
  }
  out << "dropped: " << (dropped ? "true" : "false");
  for (const auto& entry : keys) {
    out << "\n" << formatFloat(entry.first) << ": " << describe(entry.second);
  }
}

/// Every [name, value] pair decoded in order into one list; starts as an
/// empty array so that a configuration of unusable entries prints [].
std::string decodeConfig(const std::string& input) {
  const char* const usage = "a motion configuration is given as [[NAME, VALUE], ...]";
  const KR::KRValue pairs = parseInput(input);
  if (!pairs.isArray()) {
    throw UsageError(usage);
  }
  KR::KRValue decoded;
  decoded.arraySetSize(0);
  for (unsigned int i = 0; i < pairs.getSize(); ++i) {
    const KR::KRValue& pair = pairs[int(i)];
    if (!pair.isArray() || pair.getSize() != 2) {
      throw UsageError(usage);
    }
    decodeMotionConfig(pair[1], pair[0], decoded);
  }
  return KR::printKRValue(decoded);
}

}  // namespace

void addMotionCommands(Commands& c) {
  c.readers.push_back({"key", "prints the Key, forcing an unknown type to 3 with a warning",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         Key key;
                         extractKeyFromKRValue(v, o.name, key);
                         if (o.json) {
                           printValue(out, toValue(key));
                         } else {
                           out << describe(key);
                         }
                       }});
  c.readers.push_back({"control-points",
                       "prints \"dropped: true|false\" and \"time: key\" per key (uses --min-time)",
                       [](const KR::KRValue& v, const Options& o, Output& out) {
                         const std::vector<float> times = readTimes(o.times);
                         std::vector<std::pair<float, Key>> keys;
                         const bool dropped =
                             extractVectorOfGenericControlPoints(times, v, o.name, o.minTime, keys);
                         printControlPoints(out, o, dropped, keys);
                       }});
  c.writers.push_back(
      {"motion-config",
       "[[NAME, VALUE], ...]; prints the decoded pairs (a string VALUE is true "
       "only when \"1\"; unusable entries are skipped with a warning)",
       [](const std::string& input, const Options&) { return decodeConfig(input); }});
}

}  // namespace krvaluetool
