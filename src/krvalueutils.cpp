// Load-time set-up of the library and the helpers every reader shares.
#include <kr/diagnosislogdirectory.h>
#include <kr/krvalueutils.h>

#include "krvalueutils_internal.h"

#include <zu/log.h>

#include <stdexcept>

namespace KR {
namespace ValueUtils {
namespace {

// Registered at load, after kDiagnosisLogDirectory above has been computed;
// only read afterwards.
const zu::log::CategoryType gCategory = zu::log::addCategory("KRValueUtils");

}  // namespace

namespace detail {

const std::string kKRValueField = "KRValue";

void throwPrefixed(const std::string& name, const char* complaint) {
  throw std::runtime_error("KRMotion: " + name + complaint);
}

void throwBare(const std::string& name, const char* complaint) {
  throw std::runtime_error(name + complaint);
}

void throwExpectedFloat(const KR::KRValue& value, const std::string& name,
                        const std::string& fieldName) {
  if (!value.isValid()) {
    throw std::runtime_error(name + " " + fieldName +
                             ": Expected a float but found an invalid KRValue");
  }
  throw std::runtime_error(name + " " + fieldName + ": Expected a float");
}

void throwExpectedInt(const KR::KRValue& value, const std::string& name,
                      const std::string& fieldName) {
  if (!value.isValid()) {
    throw std::runtime_error(name + " " + fieldName +
                             ": Expected a int but found an invalid KRValue");
  }
  throw std::runtime_error(name + " " + fieldName + ": Expected a int");
}

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
