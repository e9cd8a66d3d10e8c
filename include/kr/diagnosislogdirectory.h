// Where diagnosis logs of the platform are kept.
#pragma once

#include <kr/krvalueutils_export.h>

#include <string>

namespace KR {

/// The user's home directory followed by "/diagnosis/", computed once when
/// the library is loaded.
KRVALUEUTILS_API extern const std::string kDiagnosisLogDirectory;

}  // namespace KR
