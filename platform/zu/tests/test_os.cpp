#include <zu/os.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using boost::chrono::nanoseconds;
using zu::os::timeval;

TEST(ZuOsTimeval, SplitsTowardZeroRoundTripsToWholeMicrosecondsAndWraps) {
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  const struct {
    std::int64_t ns, sec, usec;  // both fields carry the duration's sign
  } cases[] = {{1234567891, 1, 234567},     {-1234567891, -1, -234567},
               {kMax, 9223372036, 854775}, {kMin, -9223372036, -854775}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ns);
    const timeval tv{nanoseconds(c.ns)};
    EXPECT_EQ(tv.tv_sec, c.sec);
    EXPECT_EQ(tv.tv_usec, c.usec);
    EXPECT_EQ(tv.toDuration().count(), c.ns / 1000 * 1000);
  }
  // Beyond the nanosecond range: wraps modulo 2^64 instead of overflowing.
  EXPECT_EQ(timeval(kMax, 0).toDuration().count(), -1000000000);
  EXPECT_EQ(timeval(0, kMin).toDuration().count(), 0);
}

}  // namespace
