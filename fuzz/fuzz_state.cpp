// Rest-request, support-sequence and status readers on arbitrary values: only
// std::runtime_error escapes, a support sequence or metrical data is untouched
// after a failure of its shape, and temperature status and metrical data
// written from what was read read back equal. Rest requests go round in
// fuzz_roundtrip.
//
// Input layout: no options; the last byte chooses the value's decoding (see
// fuzz_value.h).
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>
#include <kr/restrequest.h>
#include <kr/temperaturestatus.h>

#include "fuzz_value.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace KR::ValueUtils;
using krfuzz::succeeds;

const std::string kName = "fuzz";

void checkRestRequests(const KR::KRValue& value) {
  std::vector<KR::RestRequest> requests;
  succeeds([&] { extractVectorRestRequestFromKRValue(value, kName, requests); });
}

void checkSupportSequences(const KR::KRValue& value) {
  const KR::Math::SupportSequence before("before", {1.0f, 2.0f}, {true, false});
  KR::Math::SupportSequence sequence = before;
  if (!succeeds([&] { extractSupportSequenceFromKRValue(value, kName, sequence); })) {
    KRFUZZ_CHECK(sequence == before);
  }
  std::vector<KR::Math::SupportSequence> sequences;
  succeeds([&] { extractVectorSupportSequenceFromKRValue(value, kName, sequences); });
}

void checkStatus(const KR::KRValue& value) {
  KR::TemperatureStatus status;
  if (succeeds([&] { extractTemperatureStatusFromKRValue(value, status, kName); })) {
    KR::KRValue written;
    convertTemperatureStatusToKRValue(status, written);
    KR::TemperatureStatus back;
    extractTemperatureStatusFromKRValue(written, back, kName);
    KRFUZZ_CHECK(back.level == status.level && back.names == status.names);
  }
  int level = 0;
  std::set<std::string> names;
  succeeds([&] { extractDiagnosisFromKRValue(value, level, names, kName); });
  std::map<std::string, bool> touch;
  succeeds([&] { extractTouchFromKRValue(value, kName, touch); });
  std::map<std::string, std::pair<bool, int>> touchAndNumber;
  succeeds([&] { extractTouchFromKRValue(value, kName, touchAndNumber); });
  std::vector<KR::Math::Position2D> positions;
  succeeds([&] { extractNavigationFromKRValue(value, kName, positions); });
}

void checkMetricalData(const KR::KRValue& value) {
  KR::Math::MetricalData data;
  data.label1 = "before";
  const KR::Math::MetricalData before = data;
  const std::optional<std::string> message =
      krfuzz::failure([&] { extractMetricalDataFromKRValue(value, kName, data); });
  if (message) {
    if (message->find("Wrong input MetricalData type format") != std::string::npos) {
      KRFUZZ_CHECK(data == before);
    }
    return;
  }
  // The writer keeps whole seconds in an int: beyond that they wrap.
  const long long seconds = data.duration.count() / 1000000000;
  if (seconds > INT_MAX || seconds < INT_MIN) {
    return;
  }
  KR::KRValue written;
  extractKRValueFromMetricalData(data, written);
  KR::Math::MetricalData back;
  extractMetricalDataFromKRValue(written, kName, back);
  KRFUZZ_CHECK(back == data || !(data == data));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::optional<KR::KRValue> value = krfuzz::decodeValue(data);
  if (value) {
    checkRestRequests(*value);
    checkSupportSequences(*value);
    checkStatus(*value);
    checkMetricalData(*value);
  }
  return 0;
}
