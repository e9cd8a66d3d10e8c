// The temperature status of the robot's parts.
#pragma once

#include <set>
#include <string>

namespace KR {

/// `level` is the overall temperature level (its scale is the reporting
/// module's); `names` the parts that the level concerns, sorted.
struct TemperatureStatus {
  int level = 0;
  std::set<std::string> names;
};

}  // namespace KR
