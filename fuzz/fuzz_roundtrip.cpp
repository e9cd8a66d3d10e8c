// Writer to reader round trips: records made from the fuzz bytes are written
// to values by the library's writers and read back by its readers, which must
// give back what was written (floats bit for bit, NaN included).
#include <kr/krvalue.h>
#include <kr/krvalueutils.h>
#include <kr/restrequest.h>
#include <kr/temperaturestatus.h>

#include "fuzz_value.h"

#include <boost/chrono/duration.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using krfuzz::sameBits;
using krfuzz::samePose;
using namespace KR::ValueUtils;
using KR::Math::Pose2D;
using KR::Math::Position2D;
using KR::Math::Position3D;

const std::string kName = "roundtrip";

// Any float, NaN and infinities included, half of the time; a plain one else.
float anyFloat(FuzzedDataProvider& data) {
  if (data.ConsumeBool()) {
    const std::uint32_t bits = data.ConsumeIntegral<std::uint32_t>();
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
  }
  return data.ConsumeFloatingPointInRange<float>(-1e6f, 1e6f);
}

float finiteFloat(FuzzedDataProvider& data) {
  return data.ConsumeFloatingPointInRange<float>(-1e6f, 1e6f);
}

std::size_t smallCount(FuzzedDataProvider& data) {
  return data.ConsumeIntegralInRange<std::size_t>(1, 8);
}

void checkPositions(FuzzedDataProvider& data) {
  const Position2D p(anyFloat(data), anyFloat(data));
  KR::KRValue value;
  extractKRValueFromPosition2D(p, value);
  Position2D back;
  extractPosition2DFromKRValue(value, kName, back);
  KRFUZZ_CHECK(sameBits(back.x, p.x) && sameBits(back.y, p.y));

  std::vector<Position2D> list(smallCount(data));
  for (Position2D& q : list) {
    q = Position2D(anyFloat(data), anyFloat(data));
  }
  extractKRValueFromVectorPosition2D(list, value);
  std::vector<Position2D> listBack;
  extractVectorPosition2DFromKRValue(value, kName, listBack);
  KRFUZZ_CHECK(listBack.size() == list.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    KRFUZZ_CHECK(sameBits(listBack[i].x, list[i].x) && sameBits(listBack[i].y, list[i].y));
  }

  std::vector<Position3D> points(smallCount(data));
  for (Position3D& q : points) {
    q = Position3D(anyFloat(data), anyFloat(data), anyFloat(data));
  }
  createKRValueFromVectorPosition3D(points, value);
  std::vector<Position3D> pointsBack;
  extractVectorPosition3DFromKRValue(value, kName, pointsBack);
  KRFUZZ_CHECK(pointsBack.size() == points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    KRFUZZ_CHECK(sameBits(pointsBack[i].x, points[i].x) &&
                 sameBits(pointsBack[i].y, points[i].y) &&
                 sameBits(pointsBack[i].z, points[i].z));
  }
}

void checkPoses(FuzzedDataProvider& data) {
  const Pose2D p(anyFloat(data), anyFloat(data), anyFloat(data));
  KR::KRValue value;
  extractKRValueFromPose2D(p, value);
  Pose2D back;
  extractPose2DFromKRValue(value, kName, back);
  KRFUZZ_CHECK(samePose(back, p));

  // A state is three poses; each element reads back as a Pose2D.
  const KR::Math::Pose2DPosVelAcc state(p, Pose2D(anyFloat(data), anyFloat(data), anyFloat(data)),
                                        Pose2D(anyFloat(data), anyFloat(data), anyFloat(data)));
  extractKRValueFromPose2DPosVelAcc(state, value);
  std::vector<Pose2D> parts;
  extractVectorPose2DFromKRValue(value, kName, parts);
  KRFUZZ_CHECK(parts.size() == 3);
  KRFUZZ_CHECK(samePose(parts[0], state.position) && samePose(parts[1], state.velocity) &&
               samePose(parts[2], state.acceleration));
}

void checkFloatGroups(FuzzedDataProvider& data) {
  // Two groups or more, each non-empty, so that the value is read one group
  // per element whatever the groups' sizes.
  std::vector<std::vector<float>> groups(data.ConsumeIntegralInRange<std::size_t>(2, 6));
  for (std::vector<float>& group : groups) {
    group.resize(smallCount(data));
    for (float& f : group) {
      f = anyFloat(data);
    }
  }
  // A group of one number would be read as a number, not as a group: keep
  // every group at two numbers or more.
  for (std::vector<float>& group : groups) {
    if (group.size() == 1) {
      group.push_back(0.0f);
    }
  }
  KR::KRValue value;
  createKRValueFromVectorVectorFloat(groups, value);
  std::vector<std::vector<float>> back;
  extractVectorFloatsFromKRValue(value, kName, false, back);
  KRFUZZ_CHECK(back.size() == groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i) {
    KRFUZZ_CHECK(back[i].size() == groups[i].size());
    for (std::size_t j = 0; j < groups[i].size(); ++j) {
      KRFUZZ_CHECK(sameBits(back[i][j], groups[i][j]));
    }
  }
}

const char* const kParts[] = {"Head", "LArm", "RArm", "LLeg", "RLeg", "x", ""};

// A rest request of one kind: Safe or Immediate per part, or Custom with one
// angle per name.
KR::RestRequest makeRequest(FuzzedDataProvider& data) {
  KR::RestRequest request;
  request.names.resize(smallCount(data));
  for (std::string& part : request.names) {
    part = data.PickValueInArray(kParts);
  }
  const bool custom = data.ConsumeBool();
  for (const std::string& part : request.names) {
    request.reflexModes[part] =
        custom ? KR::CUSTOM : (data.ConsumeBool() ? KR::SAFE : KR::IMMEDIATE);
    if (custom) {
      request.angles.push_back(finiteFloat(data));
    }
  }
  return request;
}

void checkRestRequests(FuzzedDataProvider& data) {
  std::vector<KR::RestRequest> requests(smallCount(data));
  for (KR::RestRequest& request : requests) {
    request = makeRequest(data);
  }
  // Only a request without angles is written with its modes.
  const bool dropMode = data.ConsumeBool() && requests.back().angles.empty();
  if (dropMode) {
    requests.back().reflexModes.erase(requests.back().names.back());
  }
  KR::KRValue value;
  try {
    extractKRValueFromVectorRestRequest(requests, value);
    KRFUZZ_CHECK(!dropMode);
  } catch (const std::out_of_range&) {
    // The documented failure of a name without a mode, and only that.
    KRFUZZ_CHECK(dropMode);
    return;
  }
  std::vector<KR::RestRequest> back;
  extractVectorRestRequestFromKRValue(value, kName, back);
  KRFUZZ_CHECK(back == requests);
}

void checkDurations(FuzzedDataProvider& data) {
  // Seconds within the int range: beyond it the seconds value wraps.
  const std::int64_t limit = std::int64_t(2147483647) * 1000000000;
  const boost::chrono::nanoseconds duration(
      data.ConsumeIntegralInRange<std::int64_t>(-limit, limit));
  KR::KRValue seconds;
  KR::KRValue microseconds;
  convertDurationToKRValue(duration, seconds, microseconds);
  const boost::chrono::nanoseconds back = extractDuration(seconds, microseconds, kName);
  // The writer drops what is below a microsecond, toward zero.
  KRFUZZ_CHECK(back.count() == duration.count() / 1000 * 1000);
}

void checkTemperature(FuzzedDataProvider& data) {
  KR::TemperatureStatus status;
  status.level = data.ConsumeIntegral<int>();
  const std::size_t names = data.ConsumeIntegralInRange<std::size_t>(0, 4);
  for (std::size_t i = 0; i < names; ++i) {
    status.names.insert(data.ConsumeRandomLengthString(8));
  }
  KR::KRValue value;
  convertTemperatureStatusToKRValue(status, value);
  KR::TemperatureStatus back;
  extractTemperatureStatusFromKRValue(value, back, kName);
  KRFUZZ_CHECK(back.level == status.level && back.names == status.names);
}

// A rotation about a random axis with a random translation: rounded to float,
// it is well within the strict check, so the reader keeps it as written.
KR::Math::Transform makeTransform(FuzzedDataProvider& data) {
  const double a = data.ConsumeFloatingPointInRange<double>(-4, 4);
  const double b = data.ConsumeFloatingPointInRange<double>(-4, 4);
  const double c = data.ConsumeFloatingPointInRange<double>(-4, 4);
  const double ca = std::cos(a), sa = std::sin(a), cb = std::cos(b), sb = std::sin(b);
  const double cc = std::cos(c), sc = std::sin(c);
  KR::Math::Transform t;
  t.r1_c1 = float(cb * cc);
  t.r1_c2 = float(sa * sb * cc - ca * sc);
  t.r1_c3 = float(ca * sb * cc + sa * sc);
  t.r2_c1 = float(cb * sc);
  t.r2_c2 = float(sa * sb * sc + ca * cc);
  t.r2_c3 = float(ca * sb * sc - sa * cc);
  t.r3_c1 = float(-sb);
  t.r3_c2 = float(sa * cb);
  t.r3_c3 = float(ca * cb);
  t.r1_c4 = finiteFloat(data);
  t.r2_c4 = finiteFloat(data);
  t.r3_c4 = finiteFloat(data);
  return t;
}

void checkMetricalData(FuzzedDataProvider& data) {
  KR::Math::MetricalData measured;
  measured.label1 = data.ConsumeRandomLengthString(8);
  measured.label2 = data.ConsumeRandomLengthString(8);
  measured.transform = makeTransform(data);
  measured.points.resize(data.ConsumeIntegralInRange<std::size_t>(1, 4));
  for (Position3D& p : measured.points) {
    p = Position3D(finiteFloat(data), finiteFloat(data), finiteFloat(data));
  }
  // Whole microseconds, seconds within the int range.
  measured.duration = boost::chrono::microseconds(
      data.ConsumeIntegralInRange<std::int64_t>(-2147483647LL * 1000000, 2147483647LL * 1000000));
  KR::KRValue value;
  extractKRValueFromMetricalData(measured, value);
  KR::Math::MetricalData back;
  extractMetricalDataFromKRValue(value, kName, back);
  KRFUZZ_CHECK(back == measured);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider data(bytes, size);
  switch (data.ConsumeIntegralInRange<int>(0, 6)) {
    case 0:
      checkPositions(data);
      break;
    case 1:
      checkPoses(data);
      break;
    case 2:
      checkFloatGroups(data);
      break;
    case 3:
      checkRestRequests(data);
      break;
    case 4:
      checkDurations(data);
      break;
    case 5:
      checkTemperature(data);
      break;
    default:
      checkMetricalData(data);
      break;
  }
  return 0;
}
