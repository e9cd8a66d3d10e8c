// State readers on arbitrary values: rest requests, support sequences,
// temperature status, diagnosis, touch, navigation and metrical data. Each
// either succeeds or throws std::runtime_error. What they read is checked
// against the value, and records that have a writer are written and read
// back: rest requests (whose writer may throw std::out_of_range, the one
// other exception allowed here), temperature status and metrical data.
//
// Input layout: FuzzedDataProvider takes option bytes from the end of the
// input; there are none here, so the last byte chooses the value's decoding
// (see fuzz_value.h) and the bytes before it are the value.
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>
#include <kr/restrequest.h>
#include <kr/temperaturestatus.h>

#include "fuzz_value.h"

#include <boost/chrono/duration.hpp>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace KR::ValueUtils;
using krfuzz::isNumber;
using krfuzz::succeeds;

const std::string kName = "fuzz";

bool sameFloats(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

const std::string& stringOf(const KR::KRValue& v) { return static_cast<const std::string&>(v); }

// --- rest requests -------------------------------------------------------------

/// Equality with angles compared bit for bit, so that NaN angles compare.
bool sameRequest(const KR::RestRequest& a, const KR::RestRequest& b) {
  return a.names == b.names && a.reflexModes == b.reflexModes && sameFloats(a.angles, b.angles);
}

/// The writer needs a mode for every name of a request without angles.
bool writerNeedsMissingMode(const std::vector<KR::RestRequest>& requests) {
  for (const KR::RestRequest& request : requests) {
    if (!request.angles.empty()) {
      continue;
    }
    for (const std::string& n : request.names) {
      if (request.reflexModes.count(n) == 0) {
        return true;
      }
    }
  }
  return false;
}

void checkRestRequests(const KR::KRValue& value) {
  std::vector<KR::RestRequest> requests;
  if (!succeeds([&] { extractVectorRestRequestFromKRValue(value, kName, requests); })) {
    return;
  }
  KRFUZZ_CHECK(value.isArray() && requests.size() == value.getSize());
  for (const KR::RestRequest& request : requests) {
    // Every mode belongs to one of the names; custom requests carry angles
    // only when their names are all CUSTOM.
    for (const auto& entry : request.reflexModes) {
      KRFUZZ_CHECK(std::find(request.names.begin(), request.names.end(), entry.first) !=
                   request.names.end());
      KRFUZZ_CHECK(entry.second == KR::SAFE || entry.second == KR::IMMEDIATE ||
                   entry.second == KR::CUSTOM);
      if (!request.angles.empty()) {
        KRFUZZ_CHECK(entry.second == KR::CUSTOM);
      }
    }
  }

  KR::KRValue written("stale");
  bool outOfRange = false;
  try {
    extractKRValueFromVectorRestRequest(requests, written);
  } catch (const std::out_of_range&) {
    outOfRange = true;
  }
  KRFUZZ_CHECK(outOfRange == writerNeedsMissingMode(requests));
  if (outOfRange) {
    return;
  }
  KRFUZZ_CHECK(written.isArray() && written.getSize() == requests.size());
  std::vector<KR::RestRequest> back;
  KRFUZZ_CHECK(succeeds([&] { extractVectorRestRequestFromKRValue(written, kName, back); }));
  KRFUZZ_CHECK(back.size() == requests.size());
  for (std::size_t k = 0; k < back.size(); ++k) {
    KRFUZZ_CHECK(sameRequest(back[k], requests[k]));
  }
}

// --- support sequences ---------------------------------------------------------

bool sameSequence(const KR::Math::SupportSequence& a, const KR::Math::SupportSequence& b) {
  return a.name == b.name && sameFloats(a.values, b.values) && a.flags == b.flags;
}

KR::Math::SupportSequence sentinelSequence() {
  return KR::Math::SupportSequence("sentinel", {1.0f, 2.0f}, {true, false});
}

void checkSupportSequence(const KR::KRValue& value) {
  KR::Math::SupportSequence sequence = sentinelSequence();
  if (!succeeds([&] { extractSupportSequenceFromKRValue(value, kName, sequence); })) {
    KRFUZZ_CHECK(sameSequence(sequence, sentinelSequence()));
    return;
  }
  KRFUZZ_CHECK(value.isArray() && value.getSize() == 3 && value[0].isString());
  KRFUZZ_CHECK(sequence.name == stringOf(value[0]));
  KRFUZZ_CHECK(sequence.values.size() == sequence.flags.size());
}

void checkSupportSequences(const KR::KRValue& value) {
  std::vector<KR::Math::SupportSequence> sequences(1, sentinelSequence());
  const bool got =
      succeeds([&] { extractVectorSupportSequenceFromKRValue(value, kName, sequences); });
  if (!value.isArray()) {
    KRFUZZ_CHECK(!got && sequences.empty());
    return;
  }
  // Sized before reading, whatever happens next.
  KRFUZZ_CHECK(sequences.size() == value.getSize());
  if (!got) {
    return;
  }
  std::set<std::string> names;
  for (std::size_t k = 0; k < sequences.size(); ++k) {
    KRFUZZ_CHECK(names.insert(sequences[k].name).second);
    KR::Math::SupportSequence single;
    KRFUZZ_CHECK(succeeds([&] {
      extractSupportSequenceFromKRValue(value[static_cast<int>(k)], kName, single);
    }));
    KRFUZZ_CHECK(sameSequence(sequences[k], single));
  }
}

// --- temperature and diagnosis -------------------------------------------------

/// The level as extractIntFromKRValue reads it.
int levelOf(const KR::KRValue& v) { return extractIntFromKRValue(v, kName, "KRValue"); }

void checkTemperature(const KR::KRValue& value) {
  KR::TemperatureStatus status;
  status.level = 99;
  status.names.insert("earlier");
  if (!succeeds([&] { extractTemperatureStatusFromKRValue(value, status, kName); })) {
    return;
  }
  KRFUZZ_CHECK(value.isArray() && value.getSize() >= 2 && isNumber(value[0]));
  KRFUZZ_CHECK(status.level == levelOf(value[0]));
  // Names are added to those already there.
  KRFUZZ_CHECK(status.names.count("earlier") == 1);

  // Written after one element already there, then read back from a copy
  // without it.
  KR::KRValue written;
  written.arrayPush(KR::KRValue("before"));
  convertTemperatureStatusToKRValue(status, written);
  KRFUZZ_CHECK(written.getSize() == 3 && written[0] == KR::KRValue("before"));
  KRFUZZ_CHECK(written[1].isInt() && static_cast<int>(written[1]) == status.level);
  KRFUZZ_CHECK(written[2].isArray() && written[2].getSize() == status.names.size());
  KR::KRValue layout;
  layout.arrayPush(written[1]);
  layout.arrayPush(written[2]);
  KR::TemperatureStatus back;
  KRFUZZ_CHECK(succeeds([&] { extractTemperatureStatusFromKRValue(layout, back, kName); }));
  KRFUZZ_CHECK(back.level == status.level && back.names == status.names);
}

void checkDiagnosis(const KR::KRValue& value) {
  int level = -5;
  std::set<std::string> names{"earlier"};
  if (!succeeds([&] { extractDiagnosisFromKRValue(value, level, names, kName); })) {
    return;
  }
  KRFUZZ_CHECK(value.isArray() && value.getSize() >= 2);
  KRFUZZ_CHECK(value[1].isArray() && value[1].getSize() > 0);
  KRFUZZ_CHECK(isNumber(value[0]) && level == levelOf(value[0]));
  KRFUZZ_CHECK(names.count("earlier") == 1);
}

// --- touch ---------------------------------------------------------------------

/// The number of the bool-and-int form: element 0 of a non-empty third
/// element, else 0.
int touchNumberOf(const KR::KRValue& entry) {
  if (entry.getSize() > 2 && entry[2].getSize() > 0) {
    return static_cast<int>(entry[2][0]);
  }
  return 0;
}

void checkTouch(const KR::KRValue& value) {
  std::map<std::string, bool> touch{{"stale", true}};
  const bool got = succeeds([&] { extractTouchFromKRValue(value, kName, touch); });
  std::map<std::string, std::pair<bool, int>> touchAndNumber{{"stale", {true, 1}}};
  const bool gotNumbers = succeeds([&] { extractTouchFromKRValue(value, kName, touchAndNumber); });
  // The second form needs everything the first does.
  KRFUZZ_CHECK(got || !gotNumbers);
  if (!got || !value.isArray()) {
    return;
  }
  std::set<std::string> seen;
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    const KR::KRValue& entry = value[static_cast<int>(i)];
    KRFUZZ_CHECK(entry.isArray() && entry.getSize() >= 2 && entry[0].isString() &&
                 entry[1].isBool());
    const std::string& n = stringOf(entry[0]);
    if (!seen.insert(n).second) {
      continue;  // the first entry of a name wins
    }
    KRFUZZ_CHECK(touch.count(n) == 1 && touch[n] == static_cast<bool>(entry[1]));
    if (gotNumbers) {
      KRFUZZ_CHECK(touchAndNumber.count(n) == 1);
      KRFUZZ_CHECK(touchAndNumber[n].first == static_cast<bool>(entry[1]));
      KRFUZZ_CHECK(touchAndNumber[n].second == touchNumberOf(entry));
    }
  }
  KRFUZZ_CHECK(touch.size() == seen.size());
  if (gotNumbers) {
    KRFUZZ_CHECK(touchAndNumber.size() == seen.size());
  }
}

// --- navigation ------------------------------------------------------------------

void checkNavigation(const KR::KRValue& value) {
  // The header does not say whether earlier contents are kept, so the list
  // starts empty.
  std::vector<KR::Math::Position2D> positions;
  if (!succeeds([&] { extractNavigationFromKRValue(value, kName, positions); })) {
    return;
  }
  // The positions of every entry, one entry after the other.
  std::vector<KR::Math::Position2D> expected;
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    const KR::KRValue& entry = value[static_cast<int>(i)];
    KRFUZZ_CHECK(entry.getSize() == 3);
    std::vector<KR::Math::Position2D> some;
    KRFUZZ_CHECK(succeeds([&] { extractVectorPosition2DFromKRValue(entry[2], kName, some); }));
    expected.insert(expected.end(), some.begin(), some.end());
  }
  KRFUZZ_CHECK(positions.size() == expected.size());
  KRFUZZ_CHECK(expected.empty() ||
               std::memcmp(positions.data(), expected.data(),
                           positions.size() * sizeof(KR::Math::Position2D)) == 0);
}

// --- metrical data ---------------------------------------------------------------

bool sameMetricalData(const KR::Math::MetricalData& a, const KR::Math::MetricalData& b) {
  return a.label1 == b.label1 && a.label2 == b.label2 &&
         std::memcmp(&a.transform, &b.transform, sizeof a.transform) == 0 &&
         a.points.size() == b.points.size() &&
         (a.points.empty() || std::memcmp(a.points.data(), b.points.data(),
                                          a.points.size() * sizeof(KR::Math::Position3D)) == 0) &&
         a.duration == b.duration;
}

void checkMetricalData(const KR::KRValue& value) {
  KR::Math::MetricalData data;
  data.label1 = "earlier";
  const KR::Math::MetricalData untouched = data;
  const bool got = succeeds([&] { extractMetricalDataFromKRValue(value, kName, data); });
  const bool shaped = value.getSize() == 5 && value[0].isString() && value[1].isString() &&
                      value[2].isArray() && value[3].isArray() && value[3].getSize() == 16 &&
                      value[4].isArray() && value[4].getSize() == 2;
  if (!shaped) {
    KRFUZZ_CHECK(!got && sameMetricalData(data, untouched));
    return;
  }
  if (!got) {
    return;
  }
  KRFUZZ_CHECK(data.label1 == stringOf(value[0]) && data.label2 == stringOf(value[1]));
  KRFUZZ_CHECK(data.points.size() == value[2].getSize());
  // The writer keeps whole seconds in an int; only then is the duration
  // expected back unchanged.
  const long long seconds = data.duration.count() / 1000000000;
  if (seconds > INT_MAX || seconds < INT_MIN) {
    return;
  }
  KR::KRValue written;
  extractKRValueFromMetricalData(data, written);
  KR::Math::MetricalData back;
  KRFUZZ_CHECK(succeeds([&] { extractMetricalDataFromKRValue(written, kName, back); }));
  KRFUZZ_CHECK(sameMetricalData(back, data));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  const std::optional<KR::KRValue> decoded = krfuzz::decodeValue(data);
  if (!decoded) {
    return 0;
  }
  const KR::KRValue& value = *decoded;
  checkRestRequests(value);
  checkSupportSequence(value);
  checkSupportSequences(value);
  checkTemperature(value);
  checkDiagnosis(value);
  checkTouch(value);
  checkNavigation(value);
  checkMetricalData(value);
  return 0;
}
