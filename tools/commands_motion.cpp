// Motion keys and configuration: one key, control-point lists and motion
// configuration pairs.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/interpolationkey.h>

#include <sstream>
#include <utility>
#include <vector>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;
using KR::Math::Interpolation::Key;

std::string describe(const Key& key) {
  std::ostringstream out;
  out << key;
  return out.str();
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

/// "dropped: true|false", then "time: key" per key.
std::string formatControlPoints(bool dropped, const std::vector<std::pair<float, Key>>& keys) {
  std::string text = std::string("dropped: ") + (dropped ? "true" : "false");
  for (const auto& entry : keys) {
    text += "\n" + formatFloat(entry.first) + ": " + describe(entry.second);
  }
  return text;
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
  c.readers.push_back({"key",
                       "[VALUE, [TYPE, X, Y], [TYPE, X, Y]]; prints the Key, forcing an "
                       "unknown type to 3 with a warning",
                       [](const KR::KRValue& v, const Options& o) {
                         Key key;
                         extractKeyFromKRValue(v, o.name, key);
                         return describe(key);
                       }});
  c.readers.push_back({"control-points",
                       "[NUMBER, ...] or [KEY, ...], one per time of --times; prints "
                       "\"dropped: true|false\" and \"time: key\" per key (uses --min-time)",
                       [](const KR::KRValue& v, const Options& o) {
                         const std::vector<float> times = readTimes(o.times);
                         std::vector<std::pair<float, Key>> keys;
                         const bool dropped =
                             extractVectorOfGenericControlPoints(times, v, o.name, o.minTime, keys);
                         return formatControlPoints(dropped, keys);
                       }});
  c.writers.push_back(
      {"motion-config",
       "[[NAME, VALUE], ...]; prints the decoded pairs (a string VALUE is true "
       "only when \"1\"; unusable entries are skipped with a warning)",
       [](const std::string& input, const Options&) { return decodeConfig(input); }});
}

}  // namespace krvaluetool
