// Sensor and status records: temperature status, diagnosis, touch,
// navigation and metrical data.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/temperaturestatus.h>
#include <kr/math/metricaldata.h>
#include <kr/math/position2d.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {

/// Appends two elements to `value` (not cleared first): the level as an int
/// value and the names, in sorted order, as an array of strings (an empty
/// array when there are none).
KRVALUEUTILS_API void convertTemperatureStatusToKRValue(const KR::TemperatureStatus& status,
                                                        KR::KRValue& value);

/// [level, [name, ...], ...]. The names are added to those `status` already
/// holds. Throws the shape messages of checkArrayFromKRValue, then
/// "<name>: Invalid KRValue size." for fewer than two elements; the level is
/// read with extractIntFromKRValue (field name "KRValue").
KRVALUEUTILS_API void extractTemperatureStatusFromKRValue(const KR::KRValue& value,
                                                          KR::TemperatureStatus& status,
                                                          const std::string& name);

/// As extractTemperatureStatusFromKRValue, with element 1 also required to be
/// a non-empty array (checkArrayFromKRValue) before the level is read.
KRVALUEUTILS_API void extractDiagnosisFromKRValue(const KR::KRValue& value, int& level,
                                                  std::set<std::string>& names,
                                                  const std::string& name);

/// [[name, touched], ...]; the map is cleared first. An empty array, and any
/// valid value that is not an array (a number, a string), give an empty map. An entry that is
/// not an array of at least two elements with a string and a bool throws
/// "<name> Your collection of Touch was invalid."; the first entry of a name
/// wins.
KRVALUEUTILS_API void extractTouchFromKRValue(const KR::KRValue& value, const std::string& name,
                                              std::map<std::string, bool>& touch);

/// As above, with an int per name: element 0 of a non-empty third element
/// [number, ...] (read with the value's int conversion), otherwise 0.
KRVALUEUTILS_API void extractTouchFromKRValue(const KR::KRValue& value, const std::string& name,
                                              std::map<std::string, std::pair<bool, int>>& touch);

/// [[any, any, positions], ...]: `positions` is cleared, then the positions
/// of every entry (read as extractVectorPosition2DFromKRValue reads them) are
/// appended in order. An entry
/// of another size throws "<name>Your collection of Navigation Position2D was
/// invalid." (the name runs straight into the text).
KRVALUEUTILS_API void extractNavigationFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   std::vector<KR::Math::Position2D>& positions);

/// [label1, label2, [[x, y, z], ...], [16 floats], [seconds, microseconds]].
/// A wrong shape throws "<name> Wrong input MetricalData type format" and
/// leaves `data` untouched; points and the transform are read under the
/// argument name "MetricalDataExtractor", the duration under `name`.
KRVALUEUTILS_API void extractMetricalDataFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     KR::Math::MetricalData& data);

/// The layout above; reads back equal through extractMetricalDataFromKRValue
/// (the duration truncated to whole microseconds).
KRVALUEUTILS_API void extractKRValueFromMetricalData(const KR::Math::MetricalData& data,
                                                     KR::KRValue& value);

}  // namespace ValueUtils
}  // namespace KR
