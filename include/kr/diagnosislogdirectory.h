// Where diagnosis logs of the platform are kept.
#pragma once

#include <zu/os.h>

#include <string>

namespace KR {

/// The user's home directory followed by "/diagnosis/", computed when the
/// library or program that holds it is loaded. The constant has internal
/// linkage, as platform code expects of this header: every translation unit
/// that includes it holds its own copy. Within this library only the main
/// source file includes it, so the library computes it once.
static const std::string kDiagnosisLogDirectory = zu::os::home() + "/diagnosis/";

}  // namespace KR
