// Writer to reader round trips from records made of the fuzz bytes: groups of
// any floats (NaN and infinities included) and rest requests of every form are
// written by the library's writers and read back by its readers, which must
// give back what was written (floats bit for bit); a request name without a
// mode makes the writer throw std::out_of_range. Geometry lists, durations,
// status and metrical data go round from read values in fuzz_geometry,
// fuzz_values and fuzz_state.
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>
#include <kr/restrequest.h>

#include "fuzz_value.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace KR::ValueUtils;

const std::string kName = "roundtrip";

/// Any float, NaN and infinities included, half of the time; a plain one else.
float anyFloat(FuzzedDataProvider& data) {
  return data.ConsumeBool() ? krfuzz::floatFromBits(data.ConsumeIntegral<std::uint32_t>())
                           : data.ConsumeFloatingPointInRange<float>(-1e6f, 1e6f);
}

std::size_t smallCount(FuzzedDataProvider& data) {
  return data.ConsumeIntegralInRange<std::size_t>(1, 8);
}

void checkFloatGroups(FuzzedDataProvider& data) {
  // Two groups or more of two numbers or more: a group of one number would be
  // read as a number, not as a group.
  std::vector<std::vector<float>> groups(data.ConsumeIntegralInRange<std::size_t>(2, 6));
  for (std::vector<float>& group : groups) {
    group.resize(1 + smallCount(data));
    for (float& f : group) {
      f = anyFloat(data);
    }
  }
  KR::KRValue value;
  createKRValueFromVectorVectorFloat(groups, value);
  std::vector<std::vector<float>> back;
  extractVectorFloatsFromKRValue(value, kName, false, back);
  KRFUZZ_CHECK(back.size() == groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i) {
    KRFUZZ_CHECK(krfuzz::sameRecords(back[i], groups[i]));
  }
}

const char* const kParts[] = {"Head", "LArm", "RArm", "LLeg", "RLeg", "x", ""};

/// Requests of one kind each: Safe or Immediate per part, or Custom with one
/// angle per name; the last may lack a mode, which the writer refuses with
/// std::out_of_range.
void checkRestRequests(FuzzedDataProvider& data) {
  std::vector<KR::RestRequest> requests(smallCount(data));
  for (KR::RestRequest& request : requests) {
    request.names.resize(smallCount(data));
    const bool custom = data.ConsumeBool();
    for (std::string& part : request.names) {
      part = data.PickValueInArray(kParts);
      request.reflexModes[part] =
          custom ? KR::CUSTOM : (data.ConsumeBool() ? KR::SAFE : KR::IMMEDIATE);
      if (custom) {
        request.angles.push_back(data.ConsumeFloatingPointInRange<float>(-1e6f, 1e6f));
      }
    }
  }
  const bool dropMode = data.ConsumeBool() && requests.back().angles.empty();
  if (dropMode) {
    requests.back().reflexModes.erase(requests.back().names.back());
  }
  KR::KRValue value;
  try {
    extractKRValueFromVectorRestRequest(requests, value);
  } catch (const std::out_of_range&) {
    KRFUZZ_CHECK(dropMode);
    return;
  }
  KRFUZZ_CHECK(!dropMode);
  std::vector<KR::RestRequest> back;
  extractVectorRestRequestFromKRValue(value, kName, back);
  KRFUZZ_CHECK(back == requests);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  if (data.ConsumeBool()) {
    checkFloatGroups(data);
  } else {
    checkRestRequests(data);
  }
  return 0;
}
