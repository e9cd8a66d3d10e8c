// Durations, exchanged as two int values: whole seconds and microseconds.
#include <kr/valueutils/durations.h>

#include "internal.h"

#include <zu/os.h>

#include <cstdint>

namespace KR {
namespace ValueUtils {

boost::chrono::nanoseconds extractDuration(const KR::KRValue& seconds,
                                           const KR::KRValue& microseconds,
                                           const std::string& name) {
  const int u = detail::readInt(microseconds, name, detail::kKRValueField);
  const int s = detail::readInt(seconds, name, detail::kKRValueField);
  return boost::chrono::nanoseconds((std::int64_t(s) * 1000000 + u) * 1000);
}

void convertDurationToKRValue(const boost::chrono::nanoseconds& duration, KR::KRValue& seconds,
                              KR::KRValue& microseconds) {
  const zu::os::timeval split(duration);
  seconds = static_cast<int>(split.tv_sec);
  microseconds = static_cast<int>(split.tv_usec);
}

}  // namespace ValueUtils
}  // namespace KR
