// Sensor and status records: temperature status, diagnosis, touch, navigation
// and metrical data.
#include "commands.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace krvaluetool {
namespace {

using namespace KR::ValueUtils;

/// Strings print quoted and escaped as the value text does.
std::string formatString(const std::string& text) { return KR::printKRValue(KR::KRValue(text)); }

std::string formatNames(const std::set<std::string>& names) {
  return KR::printKRValue(KR::KRValue(std::vector<std::string>(names.begin(), names.end())));
}

std::string formatLevelAndNames(int level, const std::set<std::string>& names) {
  return "level " + std::to_string(level) + "\nnames " + formatNames(names);
}

std::string formatTouched(bool touched) { return touched ? "true" : "false"; }

/// One line per name, in name order: "\"Name\" true".
std::string formatTouch(const std::map<std::string, bool>& touch) {
  std::string text;
  for (const auto& entry : touch) {
    text += (text.empty() ? "" : "\n") + formatString(entry.first) + " " +
            formatTouched(entry.second);
  }
  return text;
}

/// One line per name, in name order: "\"Name\" true 3".
std::string formatTouch(const std::map<std::string, std::pair<bool, int>>& touch) {
  std::string text;
  for (const auto& entry : touch) {
    text += (text.empty() ? "" : "\n") + formatString(entry.first) + " " +
            formatTouched(entry.second.first) + " " + std::to_string(entry.second.second);
  }
  return text;
}

/// One position per line, "i: [x, y]".
std::string formatPositions(const std::vector<KR::Math::Position2D>& positions) {
  std::string text;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    text += (i ? "\n" : "") + std::to_string(i) + ": [" + formatFloat(positions[i].x) + ", " +
            formatFloat(positions[i].y) + "]";
  }
  return text;
}

std::string formatRow(float c1, float c2, float c3, float c4) {
  return "[" + formatFloat(c1) + ", " + formatFloat(c2) + ", " + formatFloat(c3) + ", " +
         formatFloat(c4) + "]";
}

/// Labels, the transform's three rows, one point per line and the duration
/// in nanoseconds.
std::string formatMetricalData(const KR::Math::MetricalData& d) {
  const KR::Math::Transform& t = d.transform;
  std::string text = "label1 " + formatString(d.label1) + "\nlabel2 " + formatString(d.label2) +
                     "\ntransform " + formatRow(t.r1_c1, t.r1_c2, t.r1_c3, t.r1_c4) +
                     "\n          " + formatRow(t.r2_c1, t.r2_c2, t.r2_c3, t.r2_c4) +
                     "\n          " + formatRow(t.r3_c1, t.r3_c2, t.r3_c3, t.r3_c4) + "\npoints";
  for (std::size_t i = 0; i < d.points.size(); ++i) {
    const KR::Math::Position3D& p = d.points[i];
    text += "\n  " + std::to_string(i) + ": [" + formatFloat(p.x) + ", " + formatFloat(p.y) +
            ", " + formatFloat(p.z) + "]";
  }
  return text + "\nduration " + std::to_string(d.duration.count()) + " ns";
}

KR::KRValue namesValue(const std::set<std::string>& names) {
  return KR::KRValue(std::vector<std::string>(names.begin(), names.end()));
}

void printLevelAndNames(Output& out, const Options& o, int level,
                        const std::set<std::string>& names) {
  if (o.json) {
    printValue(out, KR::KRValue::array(level, namesValue(names)));
    return;
  }
  out << formatLevelAndNames(level, names);
}

void readTemperatureStatus(const KR::KRValue& value, const Options& o, Output& out) {
  KR::TemperatureStatus status;
  extractTemperatureStatusFromKRValue(value, status, o.name);
  printLevelAndNames(out, o, status.level, status.names);
}

void readDiagnosis(const KR::KRValue& value, const Options& o, Output& out) {
  int level = 0;
  std::set<std::string> names;
  extractDiagnosisFromKRValue(value, level, names, o.name);
  printLevelAndNames(out, o, level, names);
}

void readTouch(const KR::KRValue& value, const Options& o, Output& out) {
  std::map<std::string, bool> touch;
  extractTouchFromKRValue(value, o.name, touch);
  if (o.json) {
    KR::KRValue entries;
    entries.arraySetSize(0);
    for (const auto& entry : touch) {
      entries.arrayPush(KR::KRValue::array(entry.first, entry.second));
    }
    printValue(out, entries);
    return;
  }
  out << formatTouch(touch);
}

void readTouchWithInts(const KR::KRValue& value, const Options& o, Output& out) {
  std::map<std::string, std::pair<bool, int>> touch;
  extractTouchFromKRValue(value, o.name, touch);
  if (o.json) {
    KR::KRValue entries;
    entries.arraySetSize(0);
    for (const auto& entry : touch) {
      entries.arrayPush(KR::KRValue::array(entry.first, entry.second.first, entry.second.second));
    }
    printValue(out, entries);
    return;
  }
  out << formatTouch(touch);
}

void readNavigation(const KR::KRValue& value, const Options& o, Output& out) {
  std::vector<KR::Math::Position2D> positions;
  extractNavigationFromKRValue(value, o.name, positions);
  if (o.json) {
    KR::KRValue written;
    extractKRValueFromVectorPosition2D(positions, written);
    if (positions.empty()) {
      written.arraySetSize(0);
    }
    printValue(out, written);
    return;
  }
  out << formatPositions(positions);
}

void readMetricalData(const KR::KRValue& value, const Options& o, Output& out) {
  KR::Math::MetricalData data;
  extractMetricalDataFromKRValue(value, o.name, data);
  if (o.json) {
    KR::KRValue written;
    extractKRValueFromMetricalData(data, written);
    printValue(out, written);
    return;
  }
  out << formatMetricalData(data);
}

std::string writeTemperatureStatus(const std::string& input, const Options& o) {
  KR::TemperatureStatus status;
  extractTemperatureStatusFromKRValue(parseInput(input), status, o.name);
  KR::KRValue out;
  convertTemperatureStatusToKRValue(status, out);
  return KR::printKRValue(out);
}

std::string writeMetricalData(const std::string& input, const Options& o) {
  KR::Math::MetricalData data;
  extractMetricalDataFromKRValue(parseInput(input), o.name, data);
  KR::KRValue out;
  extractKRValueFromMetricalData(data, out);
  return KR::printKRValue(out);
}

}  // namespace

void addStatusCommands(Commands& c) {
  c.readers.push_back(
      {"temperature-status", "prints the level and the sorted names", readTemperatureStatus});
  c.readers.push_back({"diagnosis", "prints the level and the sorted names", readDiagnosis});
  c.readers.push_back(
      {"touch", "prints each name and whether it is touched (the first entry of a name wins)",
       readTouch});
  c.readers.back().list = true;
  c.readers.push_back(
      {"touch-with-ints",
       "prints each name, its bool and its int (0 without a non-empty third element)",
       readTouchWithInts});
  c.readers.back().list = true;
  c.readers.push_back({"navigation", "prints every position in order", readNavigation});
  c.readers.back().list = true;
  c.readers.push_back(
      {"metrical-data", "prints the labels, transform, points and duration", readMetricalData});

  c.writers.push_back({"temperature-status",
                       "[LEVEL, [NAME, ...]]; prints [level, [names]] with the names sorted",
                       writeTemperatureStatus});
  c.writers.push_back({"metrical-data",
                       "a metrical-data value; reads it and prints what the writer makes of it",
                       writeMetricalData});
}

}  // namespace krvaluetool
