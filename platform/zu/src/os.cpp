// Operating-system helpers of the middleware layer.
#include <zu/os.h>

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <vector>

namespace zu {
namespace os {

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;
constexpr std::int64_t kNanosecondsPerMicrosecond = 1000;
constexpr std::uint64_t kMicrosecondsPerSecond = 1000000;

// The buffer getpwuid_r needs is not bounded by the system on every libc;
// grow it on ERANGE up to this size before giving up.
constexpr std::size_t kMaxPasswdBuffer = std::size_t{1} << 20;

std::string passwdHome() {
  const long suggested = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(suggested > 0 ? static_cast<std::size_t>(suggested) : 16384);
  struct passwd entry {};
  struct passwd* result = nullptr;
  int rc = 0;
  while ((rc = getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &result)) == ERANGE &&
         buffer.size() < kMaxPasswdBuffer) {
    buffer.resize(buffer.size() * 2);
  }
  if (rc != 0 || result == nullptr || result->pw_dir == nullptr) return std::string();
  return result->pw_dir;
}

// Two's-complement reinterpretation without relying on the
// implementation-defined conversion of out-of-range unsigned values.
std::int64_t toSigned(std::uint64_t value) {
  constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (value <= kMax) return static_cast<std::int64_t>(value);
  return -static_cast<std::int64_t>(~value) - 1;
}

}  // namespace

std::string home() {
  const char* value = std::getenv("HOME");
  if (value != nullptr && *value != '\0') return value;
  return passwdHome();
}

timeval::timeval() noexcept : tv_sec(0), tv_usec(0) {}

timeval::timeval(std::int64_t seconds, std::int64_t microseconds) noexcept
    : tv_sec(seconds), tv_usec(microseconds) {}

// Integer division truncates toward zero, so both fields get the sign of the
// duration and the sub-microsecond rest is dropped.
timeval::timeval(const boost::chrono::nanoseconds& duration) noexcept
    : tv_sec(duration.count() / kNanosecondsPerSecond),
      tv_usec(duration.count() % kNanosecondsPerSecond / kNanosecondsPerMicrosecond) {}

// Unsigned arithmetic wraps modulo 2^64 where signed arithmetic would be
// undefined; for spans within range the result is the same.
boost::chrono::nanoseconds timeval::toDuration() const noexcept {
  const std::uint64_t microseconds =
      static_cast<std::uint64_t>(tv_sec) * kMicrosecondsPerSecond + static_cast<std::uint64_t>(tv_usec);
  const std::uint64_t nanoseconds = microseconds * static_cast<std::uint64_t>(kNanosecondsPerMicrosecond);
  return boost::chrono::nanoseconds(toSigned(nanoseconds));
}

}  // namespace os
}  // namespace zu
