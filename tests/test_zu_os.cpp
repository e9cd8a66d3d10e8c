#include <zu/os.h>

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

namespace {

using boost::chrono::nanoseconds;
using zu::os::timeval;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

TEST(ZuOsTimeval, Constructors) {
  const timeval zero;
  EXPECT_EQ(zero.tv_sec, 0);
  EXPECT_EQ(zero.tv_usec, 0);
  const timeval pair(-3, 7);
  EXPECT_EQ(pair.tv_sec, -3);
  EXPECT_EQ(pair.tv_usec, 7);
}

TEST(ZuOsTimeval, SplitsNanosecondsTowardZero) {
  const struct {
    std::int64_t ns;
    std::int64_t sec;
    std::int64_t usec;
  } cases[] = {
      {1500000000, 1, 500000},
      {-1500000000, -1, -500000},
      {1, 0, 0},
      {-999, 0, 0},
      {-1000, 0, -1},
      {999999999, 0, 999999},
      {-1000000000, -1, 0},
      {5000000000000, 5000, 0},  // beyond 32-bit seconds
      {kMax, 9223372036, 854775},
      {kMin, -9223372036, -854775},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ns);
    const timeval tv{nanoseconds(c.ns)};
    EXPECT_EQ(tv.tv_sec, c.sec);
    EXPECT_EQ(tv.tv_usec, c.usec);
  }
}

TEST(ZuOsTimeval, RoundTripTruncatesToWholeMicroseconds) {
  const struct {
    std::int64_t ns;
    std::int64_t back;
  } cases[] = {
      {1234567891, 1234567000},
      {-1234567891, -1234567000},
      {999, 0},
      {kMax, 9223372036854775000},
      {kMin, -9223372036854775000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ns);
    EXPECT_EQ(timeval(nanoseconds(c.ns)).toDuration().count(), c.back);
  }
}

TEST(ZuOsTimeval, OutOfRangeSpansWrapInsteadOfTrapping) {
  // (2^63 - 1) s = -1 s modulo 2^64 ns, since 10^9 ns is even.
  EXPECT_EQ(timeval(kMax, 0).toDuration().count(), -1000000000);
  EXPECT_EQ(timeval(kMin, 0).toDuration().count(), 0);
  EXPECT_EQ(timeval(0, kMin).toDuration().count(), 0);
  EXPECT_EQ(timeval(-1, -500000).toDuration().count(), -1500000000);
}

// Sets or unsets HOME for one test and restores the previous value.
class ScopedHome {
 public:
  explicit ScopedHome(const char* value) {
    if (const char* old = std::getenv("HOME")) saved_ = old;
    if (value != nullptr) {
      setenv("HOME", value, 1);
    } else {
      unsetenv("HOME");
    }
  }
  ~ScopedHome() {
    if (saved_) {
      setenv("HOME", saved_->c_str(), 1);
    } else {
      unsetenv("HOME");
    }
  }
  ScopedHome(const ScopedHome&) = delete;
  ScopedHome& operator=(const ScopedHome&) = delete;

 private:
  std::optional<std::string> saved_;
};

std::string passwdHome() {
  const passwd* entry = getpwuid(geteuid());
  return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "";
}

TEST(ZuOsHome, PrefersTheEnvironment) {
  const ScopedHome home("/srv/robot/home");
  EXPECT_EQ(zu::os::home(), "/srv/robot/home");
}

TEST(ZuOsHome, FallsBackToThePasswordDatabase) {
  const std::string expected = passwdHome();
  {
    const ScopedHome home(nullptr);
    EXPECT_EQ(zu::os::home(), expected);
  }
  {
    const ScopedHome home("");
    EXPECT_EQ(zu::os::home(), expected);
  }
}

}  // namespace
