// Durations, exchanged as two int values: whole seconds and microseconds.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>

#include <boost/chrono/duration.hpp>

#include <string>

namespace KR {
namespace ValueUtils {

/// (seconds * 1000000 + microseconds) * 1000 nanoseconds. The microseconds are
/// read first (field name "KRValue"), so when both values are malformed the
/// message is about the microseconds. Neither range nor sign is checked.
KRVALUEUTILS_API boost::chrono::nanoseconds extractDuration(const KR::KRValue& seconds,
                                                            const KR::KRValue& microseconds,
                                                            const std::string& name);

/// Splits a duration into whole seconds and the remaining microseconds
/// (zu::os::timeval: both carry the duration's sign, the sub-microsecond rest
/// is dropped) and stores each as an int value, whatever the outputs held.
/// Seconds beyond the int range wrap modulo 2^32.
KRVALUEUTILS_API void convertDurationToKRValue(const boost::chrono::nanoseconds& duration,
                                               KR::KRValue& seconds, KR::KRValue& microseconds);

}  // namespace ValueUtils
}  // namespace KR
