#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>
#include <zu/os.h>

#include <cstdlib>
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

// $HOME when set and not empty, else the password database's entry.
TEST(ZuOsHome, HomeVariableFirstThenThePasswordEntry) {
  const char* const saved = std::getenv("HOME");
  const std::string before = saved ? saved : "";
  const struct passwd* entry = getpwuid(geteuid());
  ASSERT_NE(entry, nullptr);
  const std::string passwdHome = entry->pw_dir;
  ASSERT_EQ(setenv("HOME", "/not/the/passwd/home", 1), 0);
  EXPECT_EQ(zu::os::home(), "/not/the/passwd/home");
  ASSERT_EQ(setenv("HOME", "", 1), 0);
  EXPECT_EQ(zu::os::home(), passwdHome);
  ASSERT_EQ(unsetenv("HOME"), 0);
  EXPECT_EQ(zu::os::home(), passwdHome);
  if (saved != nullptr) setenv("HOME", before.c_str(), 1);
}

}  // namespace
