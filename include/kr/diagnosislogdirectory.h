// Where diagnosis logs of the platform are kept.
#pragma once

#include <zu/os.h>

#include <string>

namespace KR {

/// The user's home directory followed by "/diagnosis/". Each translation unit
/// that includes this header has its own copy, computed when its library or
/// program is loaded.
static const std::string kDiagnosisLogDirectory = zu::os::home() + "/diagnosis/";

}  // namespace KR
