// Scalar, list, map, key and configuration readers on arbitrary values: each
// either succeeds or throws std::runtime_error, and what it writes agrees
// with what its header documents (single numbers as lists of one, list sizes,
// untouched outputs after failures, clipped numbers inside their bounds).
//
// Input layout: FuzzedDataProvider takes option bytes from the end of the
// input, so the last seven bytes are, from the last one backwards: the two
// clip bounds, the bool count, the number of control-point times, which time
// to replace and by what, and the minimum time. The byte before them chooses
// the value's decoding (see fuzz_value.h) and the bytes before that are the
// value.
#include <kr/krvalue.h>
#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/axismask.h>
#include <kr/math/frame.h>
#include <kr/math/interpolationkey.h>

#include "fuzz_value.h"

#include <boost/chrono/duration.hpp>

#include <bitset>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace KR::ValueUtils;
using krfuzz::isNumber;
using krfuzz::sameBits;
using krfuzz::succeeds;

const std::string kName = "fuzz";

/// Bounds, times and thresholds the options pick from: ordinary numbers,
/// both zeros, reversed orders and every kind of non-finite float.
const float kOptionFloats[] = {0.0f,
                               -0.0f,
                               1.0f,
                               -1.0f,
                               0.5f,
                               2.0f,
                               1e30f,
                               -1e30f,
                               std::numeric_limits<float>::max(),
                               std::numeric_limits<float>::denorm_min(),
                               std::numeric_limits<float>::infinity(),
                               -std::numeric_limits<float>::infinity(),
                               std::numeric_limits<float>::quiet_NaN()};

/// The options of one input, read before the value.
struct Options {
  float clipMin;
  float clipMax;
  unsigned int boolCount;
  std::vector<float> times;
  float minTime;
};

Options readOptions(FuzzedDataProvider& data) {
  Options options;
  options.clipMin = data.PickValueInArray(kOptionFloats);
  options.clipMax = data.PickValueInArray(kOptionFloats);
  options.boolCount = data.ConsumeIntegralInRange<unsigned int>(0, 64);
  // Times count up in quarter seconds, so that most lists are increasing;
  // one of them may be replaced by any option float (an index past the end
  // replaces none), which makes lists out of order or not finite.
  const unsigned int timeCount = data.ConsumeIntegralInRange<unsigned int>(0, 8);
  for (unsigned int i = 0; i < timeCount; ++i) {
    options.times.push_back(0.25f * static_cast<float>(i));
  }
  const unsigned int replaced = data.ConsumeIntegralInRange<unsigned int>(0, 15);
  const float replacement = data.PickValueInArray(kOptionFloats);
  if (replaced < options.times.size()) {
    options.times[replaced] = replacement;
  }
  options.minTime = data.PickValueInArray(kOptionFloats);
  return options;
}

/// The float a number value holds, as the readers convert it.
float numberOf(const KR::KRValue& v) { return static_cast<float>(v); }

/// The int a number value truncates to, as extractIntFromKRValue documents.
int truncatedInt(const KR::KRValue& v) {
  if (v.isInt()) {
    return static_cast<int>(v);
  }
  const float f = static_cast<float>(v);
  if (std::isnan(f)) {
    return 0;
  }
  if (f >= 2147483648.0f) {
    return INT_MAX;
  }
  if (f < -2147483648.0f) {
    return INT_MIN;
  }
  return static_cast<int>(f);
}

/// The elements a list reader visits: the value itself when it stands for a
/// list of one, else its elements.
std::vector<KR::KRValue> listElements(const KR::KRValue& value) {
  std::vector<KR::KRValue> elements;
  if (!value.isArray()) {
    elements.push_back(value);
    return elements;
  }
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    elements.push_back(value[static_cast<int>(i)]);
  }
  return elements;
}

// --- scalars ---------------------------------------------------------------

void checkScalars(const KR::KRValue& value, const Options& options) {
  const bool isArray = succeeds([&] { checkArrayFromKRValue(value, kName); });
  KRFUZZ_CHECK(isArray == (value.isArray() && value.getSize() > 0));

  float f = 0.0f;
  const bool gotFloat = succeeds([&] { f = extractFloat(value, kName, "field"); });
  KRFUZZ_CHECK(gotFloat == isNumber(value));
  if (gotFloat) {
    KRFUZZ_CHECK(sameBits(f, numberOf(value)));
  }

  int i = 0;
  const bool gotInt = succeeds([&] { i = extractIntFromKRValue(value, kName, "field"); });
  KRFUZZ_CHECK(gotInt == isNumber(value));
  if (gotInt) {
    KRFUZZ_CHECK(i == truncatedInt(value));
  }

  float clipped = 0.0f;
  const bool gotClipped = succeeds([&] {
    clipped = extractFloatAndClip(value, options.clipMin, options.clipMax, kName, "field");
  });
  KRFUZZ_CHECK(gotClipped == isNumber(value));
  if (gotClipped && !std::isnan(options.clipMin) && !std::isnan(options.clipMax) &&
      !std::isnan(f)) {
    const float low = std::fmin(options.clipMin, options.clipMax);
    const float high = std::fmax(options.clipMin, options.clipMax);
    KRFUZZ_CHECK(clipped >= low && clipped <= high);
    if (f > low && f < high) {
      KRFUZZ_CHECK(sameBits(clipped, f));
    }
  }
}

// --- axis masks and frames -------------------------------------------------

/// The mask a single element reads as, or nothing.
bool readMask(const KR::KRValue& element, std::bitset<6>& mask) {
  return succeeds([&] { extractAxisMaskFromKRValue(element, kName, mask); });
}

bool readFrame(const KR::KRValue& element, KR::Math::FRAME& frame) {
  return succeeds([&] { extractFrameFromKRValue(element, kName, frame); });
}

void checkMaskAndFrame(const KR::KRValue& value) {
  // A sentinel that no failure may overwrite.
  const std::bitset<6> maskSentinel(0x2a);
  std::bitset<6> mask = maskSentinel;
  if (readMask(value, mask)) {
    const int read = truncatedInt(value);
    KRFUZZ_CHECK(KR::Math::isAxisMask(read));
    KRFUZZ_CHECK(mask.to_ulong() == static_cast<unsigned long>(read));
  } else {
    KRFUZZ_CHECK(mask == maskSentinel);
  }

  KR::Math::FRAME frame = KR::Math::FRAME_WORLD;
  if (readFrame(value, frame)) {
    KRFUZZ_CHECK(static_cast<int>(frame) == truncatedInt(value));
  } else {
    KRFUZZ_CHECK(frame == KR::Math::FRAME_WORLD);
  }
}

/// How many entries a list reader sized its output to: one for a single
/// number, the length of a non-empty array, none otherwise.
std::size_t expectedListSize(const KR::KRValue& value) {
  if (isNumber(value)) {
    return 1;
  }
  return value.isArray() ? value.getSize() : 0;
}

void checkMaskAndFrameLists(const KR::KRValue& value) {
  const std::vector<KR::KRValue> elements = listElements(value);

  std::vector<std::bitset<6>> masks(3, std::bitset<6>(1));
  const bool gotMasks = succeeds([&] { extractVectorAxisMaskFromKRValue(value, kName, masks); });
  KRFUZZ_CHECK(masks.size() == expectedListSize(value));
  // Entries up to the first failing element are read, the rest are zero.
  bool failed = false;
  for (std::size_t k = 0; k < masks.size(); ++k) {
    std::bitset<6> single;
    failed = failed || !readMask(elements[k], single);
    KRFUZZ_CHECK(masks[k] == (failed ? std::bitset<6>() : single));
  }
  KRFUZZ_CHECK(gotMasks == (masks.size() > 0 && !failed));

  std::vector<KR::Math::FRAME> frames(2, KR::Math::FRAME_ROBOT);
  const bool gotFrames = succeeds([&] { extractVectorFrameFromKRValue(value, kName, frames); });
  KRFUZZ_CHECK(frames.size() == expectedListSize(value));
  failed = false;
  for (std::size_t k = 0; k < frames.size(); ++k) {
    KR::Math::FRAME single = KR::Math::FRAME_TORSO;
    failed = failed || !readFrame(elements[k], single);
    KRFUZZ_CHECK(frames[k] == (failed ? KR::Math::FRAME_TORSO : single));
  }
  KRFUZZ_CHECK(gotFrames == (frames.size() > 0 && !failed));
}

// --- durations -------------------------------------------------------------

void checkDuration(const KR::KRValue& value) {
  // Seconds and microseconds: the first two elements of an array, or the
  // value twice.
  const bool pair = value.isArray() && value.getSize() >= 2;
  const KR::KRValue seconds = pair ? value[0] : value;
  const KR::KRValue micros = pair ? value[1] : value;
  boost::chrono::nanoseconds duration(0);
  const bool got = succeeds([&] { duration = extractDuration(seconds, micros, kName); });
  KRFUZZ_CHECK(got == (isNumber(seconds) && isNumber(micros)));
  if (!got) {
    return;
  }
  const std::int64_t expected =
      (static_cast<std::int64_t>(truncatedInt(seconds)) * 1000000 + truncatedInt(micros)) * 1000;
  KRFUZZ_CHECK(duration.count() == expected);

  // Written back and read again it is the same, as long as its whole seconds
  // fit an int (beyond that the writer wraps them).
  KR::KRValue s = KR::KRValue("stale");
  KR::KRValue us;
  convertDurationToKRValue(duration, s, us);
  KRFUZZ_CHECK(s.isInt() && us.isInt());
  if (duration.count() / 1000000000 <= INT_MAX && duration.count() / 1000000000 >= INT_MIN) {
    KRFUZZ_CHECK(extractDuration(s, us, kName) == duration);
  }
}

// --- float, string and bool lists ------------------------------------------

void checkFloatList(const KR::KRValue& value) {
  const std::vector<KR::KRValue> elements = listElements(value);
  std::vector<float> floats(4, 7.0f);
  const bool got = succeeds([&] { extractVectorFloatsFromKRValue(value, kName, floats); });
  KRFUZZ_CHECK(floats.size() == expectedListSize(value));
  bool failed = false;
  for (std::size_t k = 0; k < floats.size(); ++k) {
    failed = failed || !isNumber(elements[k]);
    KRFUZZ_CHECK(sameBits(floats[k], failed ? 0.0f : numberOf(elements[k])));
  }
  KRFUZZ_CHECK(got == (floats.size() > 0 && !failed));
}

bool allNumbers(const KR::KRValue& array) {
  for (unsigned int i = 0; i < array.getSize(); ++i) {
    if (!isNumber(array[static_cast<int>(i)])) {
      return false;
    }
  }
  return true;
}

/// The groups of a list of numbers: one of all, or one per number.
std::vector<std::vector<float>> numberGroups(const KR::KRValue& list, bool isSingleGroup) {
  std::vector<std::vector<float>> groups;
  if (isSingleGroup) {
    groups.emplace_back();
  }
  for (unsigned int i = 0; i < list.getSize(); ++i) {
    const float f = numberOf(list[static_cast<int>(i)]);
    if (isSingleGroup) {
      groups[0].push_back(f);
    } else {
      groups.push_back({f});
    }
  }
  return groups;
}

bool sameGroups(const std::vector<std::vector<float>>& a, const std::vector<std::vector<float>>& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t g = 0; g < a.size(); ++g) {
    if (a[g].size() != b[g].size()) {
      return false;
    }
    for (std::size_t k = 0; k < a[g].size(); ++k) {
      if (!sameBits(a[g][k], b[g][k])) {
        return false;
      }
    }
  }
  return true;
}

void checkFloatGroups(const KR::KRValue& value, bool isSingleGroup) {
  std::vector<std::vector<float>> groups(2);
  const bool got =
      succeeds([&] { extractVectorFloatsFromKRValue(value, kName, isSingleGroup, groups); });
  if (isNumber(value)) {
    KRFUZZ_CHECK(got);
    KRFUZZ_CHECK(sameGroups(groups, {{numberOf(value)}}));
    return;
  }
  if (!value.isArray() || value.getSize() == 0) {
    KRFUZZ_CHECK(!got);
    return;
  }
  if (allNumbers(value)) {
    KRFUZZ_CHECK(got);
    KRFUZZ_CHECK(sameGroups(groups, numberGroups(value, isSingleGroup)));
    return;
  }
  const bool wrappedOnce =
      value.getSize() == 1 && value[0].isArray() && allNumbers(value[0]);
  if (wrappedOnce) {
    const bool emptyList = value[0].getSize() == 0;
    KRFUZZ_CHECK(got == !(emptyList && isSingleGroup));
    if (got) {
      KRFUZZ_CHECK(sameGroups(groups, numberGroups(value[0], isSingleGroup)));
    }
    return;
  }
  // One group per element, each a flat list.
  if (got) {
    KRFUZZ_CHECK(groups.size() == value.getSize());
    for (std::size_t g = 0; g < groups.size(); ++g) {
      std::vector<float> flat;
      KRFUZZ_CHECK(succeeds(
          [&] { extractVectorFloatsFromKRValue(value[static_cast<int>(g)], kName, flat); }));
      KRFUZZ_CHECK(sameGroups({groups[g]}, {flat}));
    }
  }
}

void checkStringList(const KR::KRValue& value) {
  std::vector<std::string> strings(1, "stale");
  const bool got = succeeds([&] { extractVectorStringsFromKRValue(value, kName, strings); });
  bool allStrings = value.isArray() && value.getSize() > 0;
  for (unsigned int i = 0; allStrings && i < value.getSize(); ++i) {
    allStrings = value[static_cast<int>(i)].isString();
  }
  KRFUZZ_CHECK(got == (value.isString() || allStrings));
  if (!got) {
    return;
  }
  const std::vector<KR::KRValue> elements = listElements(value);
  KRFUZZ_CHECK(strings.size() == elements.size());
  for (std::size_t k = 0; k < strings.size(); ++k) {
    KRFUZZ_CHECK(strings[k] == static_cast<const std::string&>(elements[k]));
  }
}

bool isBoolLike(const KR::KRValue& v) { return v.isBool() || v.isInt() || v.isFloat(); }

void checkBoolList(const KR::KRValue& value, unsigned int count) {
  std::vector<bool> bools(5, true);
  const bool got = succeeds([&] { extractVectorBoolsFromKRValue(value, count, kName, bools); });
  KRFUZZ_CHECK(got == (isBoolLike(value) || value.isArray()));
  if (!got) {
    return;
  }
  std::vector<bool> expected;
  if (isBoolLike(value)) {
    expected.assign(count, static_cast<bool>(value));
  } else {
    for (const KR::KRValue& element : listElements(value)) {
      if (isBoolLike(element)) {
        expected.push_back(static_cast<bool>(element));
      }
    }
  }
  KRFUZZ_CHECK(bools == expected);
}

// --- key/value maps ----------------------------------------------------------

/// Values compared through their text, so that a NaN float equals itself.
bool sameValue(const KR::KRValue& a, const KR::KRValue& b) {
  return KR::printKRValue(a) == KR::printKRValue(b);
}

void checkKeyValueMap(const KR::KRValue& value, bool skipSecondElement) {
  std::map<std::string, KR::KRValue> map;
  map["stale"] = KR::KRValue(1);
  const bool got =
      succeeds([&] { extractKeyValueMapFromKRValue(value, kName, skipSecondElement, map); });
  if (!value.isValid() || !value.isArray()) {
    KRFUZZ_CHECK(!got);
  }
  if (!got) {
    return;
  }
  // Every entry's key is in the map, holding the value of its first entry.
  const int valuePosition = skipSecondElement ? 2 : 1;
  std::set<std::string> keys;
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    const KR::KRValue& entry = value[static_cast<int>(i)];
    KRFUZZ_CHECK(entry.isArray() && entry.getSize() > static_cast<unsigned int>(valuePosition));
    KRFUZZ_CHECK(entry[0].isString());
    const std::string& key = static_cast<const std::string&>(entry[0]);
    if (keys.insert(key).second) {
      KRFUZZ_CHECK(map.count(key) == 1);
      KRFUZZ_CHECK(sameValue(map[key], entry[valuePosition]));
    }
  }
  KRFUZZ_CHECK(map.size() == keys.size());
}

// --- interpolation keys and control points --------------------------------

bool sameKey(const KR::Math::Interpolation::Key& a, const KR::Math::Interpolation::Key& b) {
  return sameBits(a.value, b.value) && a.firstParam.type == b.firstParam.type &&
         sameBits(a.firstParam.offset.x, b.firstParam.offset.x) &&
         sameBits(a.firstParam.offset.y, b.firstParam.offset.y) &&
         a.secondParam.type == b.secondParam.type &&
         sameBits(a.secondParam.offset.x, b.secondParam.offset.x) &&
         sameBits(a.secondParam.offset.y, b.secondParam.offset.y);
}

/// The documented meaning of one side [type, x, y] of a key.
bool sideMatches(const KR::Math::Interpolation::Parameter& side, const KR::KRValue& element) {
  const int type = static_cast<int>(element[0]);
  const int expectedType = (type >= 0 && type <= 3) ? type : 3;
  return side.type == expectedType && sameBits(side.offset.x, numberOf(element[1])) &&
         sameBits(side.offset.y, numberOf(element[2]));
}

void checkKey(const KR::KRValue& value) {
  using KR::Math::Interpolation::Key;
  using KR::Math::Interpolation::Parameter;
  const Key sentinel(4.5f, Parameter(1, KR::Math::Position2D(-1.0f, 2.0f)),
                     Parameter(0, KR::Math::Position2D(3.0f, -4.0f)));
  Key key = sentinel;
  if (!succeeds([&] { extractKeyFromKRValue(value, kName, key); })) {
    KRFUZZ_CHECK(sameKey(key, sentinel));
    return;
  }
  KRFUZZ_CHECK(value.isArray() && value.getSize() == 3);
  KRFUZZ_CHECK(sameBits(key.value, numberOf(value[0])));
  KRFUZZ_CHECK(sideMatches(key.firstParam, value[1]));
  KRFUZZ_CHECK(sideMatches(key.secondParam, value[2]));
}

void checkControlPoints(const KR::KRValue& value, const Options& options) {
  using Point = std::pair<float, KR::Math::Interpolation::Key>;
  std::vector<Point> keys(1);
  keys[0].first = -7.0f;
  bool dropped = false;
  const bool got = succeeds([&] {
    dropped =
        extractVectorOfGenericControlPoints(options.times, value, kName, options.minTime, keys);
  });
  const bool matchesTimes = value.isArray() && value.getSize() == options.times.size();
  if (!matchesTimes) {
    KRFUZZ_CHECK(got && !dropped);
    KRFUZZ_CHECK(keys.size() == 1);
  }
  KRFUZZ_CHECK(keys.size() >= 1 && sameBits(keys[0].first, -7.0f));
  if (!got || !matchesTimes) {
    return;
  }
  // The kept points are those not earlier than the minimum time, in order.
  std::vector<float> kept;
  for (float t : options.times) {
    if (!(t < options.minTime)) {
      kept.push_back(t);
    }
  }
  // Against a NaN, "earlier than" has no single reading: no count is checked.
  bool anyNaN = std::isnan(options.minTime);
  for (float t : options.times) {
    anyNaN = anyNaN || std::isnan(t);
  }
  if (anyNaN) {
    return;
  }
  KRFUZZ_CHECK(dropped == (kept.size() < options.times.size()));
  KRFUZZ_CHECK(keys.size() == 1 + kept.size());
  for (std::size_t k = 0; k < kept.size(); ++k) {
    KRFUZZ_CHECK(sameBits(keys[1 + k].first, kept[k]));
  }
}

// --- motion configuration --------------------------------------------------

void checkMotionConfig(const KR::KRValue& value) {
  const KR::KRValue name("config");
  KR::KRValue decoded;
  decoded.arrayPush(KR::KRValue("earlier"));
  decodeMotionConfig(value, name, decoded);
  KRFUZZ_CHECK(decoded.isArray() && decoded[0] == KR::KRValue("earlier"));
  const bool decodable = value.isString() || isBoolLike(value);
  KRFUZZ_CHECK(decoded.getSize() == (decodable ? 2u : 1u));
  if (!decodable) {
    return;
  }
  const KR::KRValue& entry = decoded[1];
  KRFUZZ_CHECK(entry.isArray() && entry.getSize() == 2 && entry[0] == name);
  if (value.isString()) {
    const bool expected = static_cast<const std::string&>(value) == "1";
    KRFUZZ_CHECK(entry[1].isBool() && static_cast<bool>(entry[1]) == expected);
  } else {
    KRFUZZ_CHECK(entry[1].getType() == value.getType() && sameValue(entry[1], value));
    if (value.isFloat()) {
      KRFUZZ_CHECK(sameBits(numberOf(entry[1]), numberOf(value)));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const Options options = readOptions(data);
  const std::optional<KR::KRValue> decoded = krfuzz::decodeValue(data);
  if (!decoded) {
    return 0;
  }
  const KR::KRValue& value = *decoded;
  checkScalars(value, options);
  checkMaskAndFrame(value);
  checkMaskAndFrameLists(value);
  checkDuration(value);
  checkFloatList(value);
  checkFloatGroups(value, false);
  checkFloatGroups(value, true);
  checkStringList(value);
  checkBoolList(value, options.boolCount);
  checkKeyValueMap(value, false);
  checkKeyValueMap(value, true);
  checkKey(value);
  checkControlPoints(value, options);
  checkMotionConfig(value);
  return 0;
}
