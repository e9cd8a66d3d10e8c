// Motion configuration: one name/value pair decoded at a time.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>

namespace KR {
namespace ValueUtils {

/// Appends [name, decoded] to `decoded` (never cleared): a string value
/// decodes to true when it is exactly "1" and to false otherwise; a bool, int
/// or float keeps its kind. Any other value appends nothing and logs the
/// warning "Config: <name> invalid value.".
KRVALUEUTILS_API void decodeMotionConfig(const KR::KRValue& value, const KR::KRValue& name,
                                         KR::KRValue& decoded);

}  // namespace ValueUtils
}  // namespace KR
