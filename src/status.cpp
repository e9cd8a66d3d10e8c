// Sensor and status records: temperature status, diagnosis, touch,
// navigation and metrical data.
#include <kr/valueutils/status.h>
#include <kr/valueutils/durations.h>
#include <kr/valueutils/geometrylists.h>
#include <kr/temperaturestatus.h>
#include <kr/math/metricaldata.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>

#include "geometry_internal.h"
#include "internal.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

// Points and the transform of metrical data are reported under this word,
// not under the caller's argument name.
const std::string kMetricalDataName = "MetricalDataExtractor";


// [level, [name, ...], ...] once the caller has checked the shape: the level
// is written first, then each name inserted as it is reached, so a bad name
// leaves the level and the names before it in place. Element 1 is not tested
// for being an array; the value's own size and string conversion decide.
void readLevelAndNames(const KR::KRValue& value, const std::string& name, int& level,
                       std::set<std::string>& names) {
  level = detail::readInt(value[0], name, detail::kKRValueField);
  const KR::KRValue& list = value[1];
  for (unsigned int k = 0; k < list.getSize(); ++k) {
    names.insert(detail::stringOf(list[static_cast<int>(k)]));
  }
}

void checkAtLeastTwo(const KR::KRValue& value, const std::string& name) {
  if (value.getSize() < 2) {
    detail::fail(detail::Message::StatusTooShort, value, name);
  }
}

// The seven tests of one touch entry, in the order in which they are made.
bool isTouchEntry(const KR::KRValue& entry) {
  return entry.isValid() && entry.isArray() && entry.getSize() >= 2 && entry[0].isValid() &&
         entry[0].isString() && entry[1].isValid() && entry[1].isBool();
}

// The int of the bool-and-int variant: element 0 of a non-empty third
// element, converted by the value itself; 0 when there is none.
int touchNumberOf(const KR::KRValue& entry) {
  if (entry.getSize() > 2 && entry[2].getSize() != 0) {
    return static_cast<int>(entry[2][0]);
  }
  return 0;
}

void insertTouch(const KR::KRValue& entry, std::map<std::string, bool>& touch) {
  touch.emplace(detail::stringOf(entry[0]), static_cast<bool>(entry[1]));
}

void insertTouch(const KR::KRValue& entry, std::map<std::string, std::pair<bool, int>>& touch) {
  touch.emplace(detail::stringOf(entry[0]),
                std::make_pair(static_cast<bool>(entry[1]), touchNumberOf(entry)));
}

// Both touch variants. The map is cleared first and filled entry by entry;
// emplace keeps the first entry of a name. An empty value (size 0 and valid)
// is accepted before the shape check.
template <typename Map>
void readTouch(const KR::KRValue& value, const std::string& name, Map& touch) {
  touch.clear();
  if (value.isValid() && value.getSize() == 0) {
    return;
  }
  detail::checkArray(value, name);
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    const KR::KRValue& entry = value[static_cast<int>(i)];
    if (!isTouchEntry(entry)) {
      detail::fail(detail::Message::TouchInvalid, entry, name);
    }
    insertTouch(entry, touch);
  }
}

// [label1, label2, [points], [16 numbers], [seconds, microseconds]]; only the
// kinds and sizes are tested here, the elements by their readers.
bool hasMetricalDataShape(const KR::KRValue& value) {
  return value.getSize() == 5 && value[0].isString() && value[1].isString() &&
         value[2].isArray() && value[3].isArray() && value[3].getSize() == 16 &&
         value[4].isArray() && value[4].getSize() == 2;
}

// Appends each point as it is read, so after a bad point the list holds the
// points before it.
void readPoints(const KR::KRValue& list, std::vector<KR::Math::Position3D>& points) {
  points.clear();
  for (unsigned int k = 0; k < list.getSize(); ++k) {
    KR::Math::Position3D p;
    detail::readPosition3D(list[static_cast<int>(k)], kMetricalDataName, p);
    points.push_back(p);
  }
}

KR::KRValue pointsToKRValue(const std::vector<KR::Math::Position3D>& points) {
  KR::KRValue list;
  list.arraySetSize(0);
  for (const KR::Math::Position3D& p : points) {
    KR::KRValue point;
    point.arraySetSize(3);
    point[0] = p.x;
    point[1] = p.y;
    point[2] = p.z;
    list.arrayPush(std::move(point));
  }
  return list;
}

}  // namespace

void convertTemperatureStatusToKRValue(const KR::TemperatureStatus& status, KR::KRValue& value) {
  value.arrayPush(KR::KRValue(status.level));
  // Sized to 0 so that no names still give an empty array, not an invalid value.
  KR::KRValue names;
  names.arraySetSize(0);
  for (const std::string& n : status.names) {
    names.arrayPush(KR::KRValue(n));
  }
  value.arrayPush(std::move(names));
}

void extractTemperatureStatusFromKRValue(const KR::KRValue& value, KR::TemperatureStatus& status,
                                         const std::string& name) {
  detail::checkArray(value, name);
  checkAtLeastTwo(value, name);
  readLevelAndNames(value, name, status.level, status.names);
}

void extractDiagnosisFromKRValue(const KR::KRValue& value, int& level,
                                 std::set<std::string>& names, const std::string& name) {
  detail::checkArray(value, name);
  checkAtLeastTwo(value, name);
  // Unlike the temperature status, the names must be a non-empty array, and
  // this is checked before the level is read.
  detail::checkArray(value[1], name);
  readLevelAndNames(value, name, level, names);
}

void extractTouchFromKRValue(const KR::KRValue& value, const std::string& name,
                             std::map<std::string, bool>& touch) {
  readTouch(value, name, touch);
}

void extractTouchFromKRValue(const KR::KRValue& value, const std::string& name,
                             std::map<std::string, std::pair<bool, int>>& touch) {
  readTouch(value, name, touch);
}

void extractNavigationFromKRValue(const KR::KRValue& value, const std::string& name,
                                  std::vector<KR::Math::Position2D>& positions) {
  positions.clear();
  detail::checkArray(value, name);
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    const KR::KRValue& entry = value[static_cast<int>(i)];
    detail::checkArray(entry, name);
    if (entry.getSize() != 3) {
      detail::fail(detail::Message::NavigationInvalid, entry, name);
    }
    // Read into a local list so that a bad entry adds none of its positions.
    std::vector<KR::Math::Position2D> list;
    extractVectorPosition2DFromKRValue(entry[2], name, list);
    positions.insert(positions.end(), list.begin(), list.end());
  }
}

void extractMetricalDataFromKRValue(const KR::KRValue& value, const std::string& name,
                                    KR::Math::MetricalData& data) {
  detail::checkArray(value, name);
  if (!hasMetricalDataShape(value)) {
    detail::fail(detail::Message::MetricalDataFormat, value, name);
  }
  data.label1 = detail::stringOf(value[0]);
  data.label2 = detail::stringOf(value[1]);
  readPoints(value[2], data.points);
  detail::readTransform(value[3], kMetricalDataName, data.transform);
  data.duration = extractDuration(value[4][0], value[4][1], name);
}

void extractKRValueFromMetricalData(const KR::Math::MetricalData& data, KR::KRValue& value) {
  value.clear();
  KR::KRValue duration;
  duration.arraySetSize(2);
  convertDurationToKRValue(data.duration, duration[0], duration[1]);
  // toVector() gives the full 4x4 matrix, the 16 numbers the reader requires.
  value = KR::KRValue::array(data.label1, data.label2, pointsToKRValue(data.points),
                             data.transform.toVector(), duration);
}

}  // namespace ValueUtils
}  // namespace KR
