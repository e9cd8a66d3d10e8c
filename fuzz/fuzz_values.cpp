// Scalar, list, map, key, control-point and configuration readers on arbitrary
// values: only std::runtime_error escapes, the readers that promise it leave
// their output untouched after a failure and a duration written reads back
// equal.
//
// Input layout: the last seven bytes are, from the last one backwards: the two
// clip bounds, the bool count, the number of control-point times, which time to
// replace and by what, and the minimum time. The byte before them chooses the
// value's decoding (see fuzz_value.h).
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>
#include <kr/math/interpolationkey.h>

#include "fuzz_value.h"

#include <boost/chrono/duration.hpp>

#include <bitset>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace KR::ValueUtils;
using krfuzz::sameBits;
using krfuzz::succeeds;

const std::string kName = "fuzz";

/// Bounds, times and thresholds: ordinary numbers, both zeros, reversed
/// orders and every kind of non-finite float.
const float kOptionFloats[] = {0.0f, -0.0f, 1.0f, -1.0f, 0.5f, 2.0f, 1e30f, -1e30f,
                               std::numeric_limits<float>::max(),
                               std::numeric_limits<float>::denorm_min(),
                               std::numeric_limits<float>::infinity(),
                               -std::numeric_limits<float>::infinity(),
                               std::numeric_limits<float>::quiet_NaN()};

struct Options {
  float clipMin, clipMax;
  unsigned int boolCount;
  std::vector<float> times;
  float minTime;
};

Options readOptions(FuzzedDataProvider& data) {
  Options options;
  options.clipMin = data.PickValueInArray(kOptionFloats);
  options.clipMax = data.PickValueInArray(kOptionFloats);
  options.boolCount = data.ConsumeIntegralInRange<unsigned int>(0, 64);
  // Times count up in quarter seconds; one of them may be replaced by any
  // option float, which makes lists out of order or not finite.
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

void checkScalars(const KR::KRValue& value, const Options& options) {
  succeeds([&] { checkArrayFromKRValue(value, kName); });
  succeeds([&] { extractIntFromKRValue(value, kName, "field"); });
  succeeds([&] { extractFloatAndClip(value, options.clipMin, options.clipMax, kName, "field"); });

  std::bitset<6> mask(0x2a);
  if (!succeeds([&] { extractAxisMaskFromKRValue(value, kName, mask); })) {
    KRFUZZ_CHECK(mask == std::bitset<6>(0x2a));
  }
  KR::Math::FRAME frame = KR::Math::FRAME_TORSO;
  if (!succeeds([&] { extractFrameFromKRValue(value, kName, frame); })) {
    KRFUZZ_CHECK(frame == KR::Math::FRAME_TORSO);
  }
  std::vector<std::bitset<6>> masks;
  succeeds([&] { extractVectorAxisMaskFromKRValue(value, kName, masks); });
  std::vector<KR::Math::FRAME> frames;
  succeeds([&] { extractVectorFrameFromKRValue(value, kName, frames); });
}

void checkDuration(const KR::KRValue& value) {
  const bool pair = value.isArray() && value.getSize() >= 2;
  boost::chrono::nanoseconds duration(0);
  if (!succeeds([&] {
        duration = extractDuration(pair ? value[0] : value, pair ? value[1] : value, kName);
      })) {
    return;
  }
  // Written back, it reads the same while its whole seconds fit an int.
  KR::KRValue s("stale"), us;
  convertDurationToKRValue(duration, s, us);
  const auto wholeSeconds = duration.count() / 1000000000;
  if (wholeSeconds <= INT_MAX && wholeSeconds >= INT_MIN) {
    KRFUZZ_CHECK(extractDuration(s, us, kName) == duration);
  }
}

void checkLists(const KR::KRValue& value, const Options& options) {
  std::vector<float> floats;
  succeeds([&] { extractVectorFloatsFromKRValue(value, kName, floats); });
  for (bool isSingleGroup : {false, true}) {
    std::vector<std::vector<float>> groups;
    succeeds([&] { extractVectorFloatsFromKRValue(value, kName, isSingleGroup, groups); });
  }
  std::vector<std::string> strings;
  succeeds([&] { extractVectorStringsFromKRValue(value, kName, strings); });
  std::vector<bool> bools;
  succeeds([&] { extractVectorBoolsFromKRValue(value, options.boolCount, kName, bools); });
  for (bool skipSecondElement : {false, true}) {
    std::map<std::string, KR::KRValue> map;
    succeeds([&] { extractKeyValueMapFromKRValue(value, kName, skipSecondElement, map); });
  }
}

bool sameKey(const KR::Math::Interpolation::Key& a, const KR::Math::Interpolation::Key& b) {
  return sameBits(a.value, b.value) && a.firstParam.type == b.firstParam.type &&
         sameBits(a.firstParam.offset.x, b.firstParam.offset.x) &&
         sameBits(a.firstParam.offset.y, b.firstParam.offset.y) &&
         a.secondParam.type == b.secondParam.type &&
         sameBits(a.secondParam.offset.x, b.secondParam.offset.x) &&
         sameBits(a.secondParam.offset.y, b.secondParam.offset.y);
}

void checkKeys(const KR::KRValue& value, const Options& options) {
  using KR::Math::Interpolation::Key;
  using KR::Math::Interpolation::Parameter;
  const Key before(4.5f, Parameter(1, KR::Math::Position2D(-1.0f, 2.0f)),
                   Parameter(0, KR::Math::Position2D(3.0f, -4.0f)));
  Key key = before;
  if (!succeeds([&] { extractKeyFromKRValue(value, kName, key); })) {
    KRFUZZ_CHECK(sameKey(key, before));
  }

  std::vector<std::pair<float, Key>> keys(1, {-7.0f, before});
  succeeds([&] {
    extractVectorOfGenericControlPoints(options.times, value, kName, options.minTime, keys);
  });
  KRFUZZ_CHECK(sameBits(keys[0].first, -7.0f) && sameKey(keys[0].second, before));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const Options options = readOptions(data);
  const std::optional<KR::KRValue> value = krfuzz::decodeValue(data);
  if (!value) {
    return 0;
  }
  checkScalars(*value, options);
  checkDuration(*value);
  checkLists(*value, options);
  checkKeys(*value, options);
  KR::KRValue decoded;
  decodeMotionConfig(*value, KR::KRValue("config"), decoded);
  return 0;
}
