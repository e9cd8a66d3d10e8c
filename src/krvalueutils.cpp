// Load-time set-up of the library and its warnings.
#include <kr/diagnosislogdirectory.h>

#include "internal.h"

#include <zu/log.h>

namespace KR {
namespace ValueUtils {
namespace {

// Registered at load, after kDiagnosisLogDirectory above has been computed;
// only read afterwards.
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
