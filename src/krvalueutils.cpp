// Load-time set-up of the library and its warnings.
#include <kr/diagnosislogdirectory.h>

#include "internal.h"

#include <zu/log.h>

namespace KR {
namespace ValueUtils {
namespace {

// Registered at load and only read afterwards.
//
// The header included first defines KR::kDiagnosisLogDirectory with internal
// linkage, so this file holds its own copy, computed at load from the user's
// home directory, before this category (a file's constants are initialised in
// the order they are defined). The library never reads it: it exists because
// the platform's shared header defines it, and this is the one file of the
// library that includes that header, so it is computed once.
const zu::log::CategoryType gCategory = zu::log::addCategory("KRValueUtils");

}  // namespace

namespace detail {

bool warningsEnabled() { return zu::log::isEnabled(gCategory, zu::log::warning); }

void warn(const char* function, const std::string& text) {
  if (!warningsEnabled()) {
    return;
  }
  zu::log::LogStream stream(zu::log::warning, gCategory, "", function, 0);
  stream << text;
}

}  // namespace detail
}  // namespace ValueUtils
}  // namespace KR
