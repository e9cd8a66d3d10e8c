// Durations as exact whole numbers of a period.
#include <kr/math/rationalseconds.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <stdexcept>
#include <string>

namespace {

using namespace KR::Math;

const RationalSeconds kPeriod(boost::rational<int>(1, 100));

RationalSeconds seconds(int num, int den = 1) {
  return RationalSeconds(boost::rational<int>(num, den));
}

struct RoundingCase {
  float seconds;
  RationalSeconds period;
  RationalSeconds expected;
};

TEST(RationalSecondsTest, NearestWholePeriodExactly) {
  const RoundingCase cases[] = {
      {0.1f, kPeriod, seconds(1, 10)},
      {0.013f, kPeriod, seconds(1, 100)},
      {0.125f, seconds(1, 4), seconds(1, 4)},     // half a period rounds up
      {-0.125f, seconds(1, 4), seconds(-1, 4)},   // and away from zero below
      {0.375f, seconds(1, 4), seconds(1, 2)},
      {0.1249f, seconds(1, 4), seconds(0)},
      {2.0f, seconds(3, 7), seconds(15, 7)},       // 4.67 periods -> 5
      {3e9f, seconds(INT_MAX), seconds(INT_MAX)},  // 1.4 periods -> 1
  };
  for (const RoundingCase& c : cases) {
    EXPECT_EQ(rationalSecondsFromFloat(c.seconds, c.period).count(), c.expected.count())
        << c.seconds;
  }
  EXPECT_DOUBLE_EQ(toSeconds(seconds(3, 8)), 0.375);
}

// Each failure with its message, which the trajectory readers pass on.
TEST(RationalSecondsTest, FailuresWithTheirMessages) {
  const struct {
    float seconds;
    RationalSeconds period;
    std::string message;
  } rows[] = {
      {1.0f, seconds(0), "The period must be positive, got 0/1 s."},
      {1.0f, seconds(-1, 100), "The period must be positive, got -1/100 s."},
      {std::nanf(""), kPeriod, "Cannot make a duration of nan seconds: it is not finite."},
      {-INFINITY, kPeriod, "Cannot make a duration of -inf seconds: it is not finite."},
      {5e9f, kPeriod,
       "A duration of 5000000000.000000 seconds does not fit an exact fraction of ints."},
      {2147483648.0f, seconds(1),
       "2147483648 periods of 1/1 s do not fit an exact fraction of ints."},
      // 3000.5 s is 3000509001.5 periods of 1/1000003 s: rounded up, the
      // fraction 3000509002/1000003 does not reduce and its numerator is too big.
      {3000.5f, seconds(1, 1000003),
       "3000509002 periods of 1/1000003 s do not fit an exact fraction of ints."},
  };
  for (const auto& row : rows) {
    std::string message;
    try {
      rationalSecondsFromFloat(row.seconds, row.period);
    } catch (const std::runtime_error& e) {
      message = e.what();
    }
    EXPECT_EQ(message, row.message) << row.seconds;
  }
}

}  // namespace
