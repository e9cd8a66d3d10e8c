// Operating-system helpers of the middleware layer.
#pragma once

#include <zu/zu_export.h>

#include <boost/chrono/duration.hpp>

#include <cstdint>
#include <string>

namespace zu {
namespace os {

/// The user's home directory: $HOME when it is set and not empty, otherwise
/// the password database entry of the current user, otherwise "".
ZU_API std::string home();

/// A time span as whole seconds and the remaining microseconds.
///
/// Built from a nanosecond duration, it truncates toward zero: both fields
/// carry the sign of the duration (-1.5 s is {-1, -500000}) and the
/// sub-microsecond rest is dropped, so that seconds * 1000000 + microseconds
/// is the duration truncated to whole microseconds.
struct ZU_API timeval {
  std::int64_t tv_sec;
  std::int64_t tv_usec;

  timeval() noexcept;
  timeval(std::int64_t seconds, std::int64_t microseconds) noexcept;
  explicit timeval(const boost::chrono::nanoseconds& duration) noexcept;

  /// The span as nanoseconds. A span beyond the 64-bit nanosecond range
  /// wraps around instead of overflowing.
  boost::chrono::nanoseconds toDuration() const noexcept;
};

}  // namespace os
}  // namespace zu
