#include <kr/math/rationalseconds.h>

#include "periods.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <string>

// boost::rational<int> does not check its arithmetic for overflow, so every
// duration here is computed in 64-bit integers and checked against the int
// range before a rational is made from it.

namespace KR {
namespace Math {
namespace {

constexpr std::uint64_t kIntMax = static_cast<std::uint64_t>(INT_MAX);

void requirePositive(const RationalSeconds& period) {
  if (period.count() <= 0) {
    throw std::runtime_error("The period must be positive, got " +
                             std::to_string(period.count().numerator()) + "/" +
                             std::to_string(period.count().denominator()) + " s.");
  }
}

// round(magnitude / period) with halves rounded up, exactly: the float is
// m * 2^e with an integer m of at most 24 bits, so the quotient is the ratio
// of two integers that fit 64 bits. `magnitude` is at most 2^32.
std::uint64_t nearestPeriods(float magnitude, const RationalSeconds& period) {
  if (magnitude == 0.0f) {
    return 0;
  }
  const std::uint64_t num = static_cast<std::uint64_t>(period.count().numerator());
  const std::uint64_t den = static_cast<std::uint64_t>(period.count().denominator());
  int exponent = 0;
  const float fraction = std::frexp(magnitude, &exponent);
  const std::uint64_t mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 24));
  const int e = exponent - 24;
  std::uint64_t dividend = mantissa * den;  // < 2^55
  std::uint64_t divisor = num;
  if (e >= 0) {
    // mantissa * 2^e <= 2^32 and den < 2^31: the product stays below 2^63.
    dividend = (mantissa << e) * den;
  } else {
    const int shift = -e;
    if (shift > 62 || num > (std::uint64_t{1} << (62 - shift))) {
      return 0;  // the divisor exceeds 2^62 > 2 * dividend: below half a period
    }
    divisor = num << shift;
  }
  std::uint64_t count = dividend / divisor;
  const std::uint64_t remainder = dividend % divisor;
  if (remainder >= divisor - remainder) {
    ++count;
  }
  return count;
}

}  // namespace

RationalSeconds rationalSecondsFromFloat(float seconds, const RationalSeconds& period) {
  requirePositive(period);
  if (!std::isfinite(seconds)) {
    throw std::runtime_error("Cannot make a duration of " + std::to_string(seconds) +
                             " seconds: it is not finite.");
  }
  // The result is within half a period (< 2^30 s) of `seconds`, so beyond
  // 2^32 s it cannot fit an int numerator.
  const float magnitude = std::fabs(seconds);
  if (magnitude > 4294967296.0f) {
    throw std::runtime_error("A duration of " + std::to_string(seconds) +
                             " seconds does not fit an exact fraction of ints.");
  }
  const RationalSeconds rounded = wholePeriods(nearestPeriods(magnitude, period), period);
  return seconds < 0.0f ? -rounded : rounded;
}

double toSeconds(const RationalSeconds& duration) {
  return static_cast<double>(duration.count().numerator()) /
         static_cast<double>(duration.count().denominator());
}

RationalSeconds wholePeriods(std::uint64_t count, const RationalSeconds& period) {
  requirePositive(period);
  const std::uint64_t num = static_cast<std::uint64_t>(period.count().numerator());
  const std::uint64_t den = static_cast<std::uint64_t>(period.count().denominator());
  // count * num / den with the common factor of count and den taken out
  // first; num and den are already coprime.
  const std::uint64_t common = count == 0 ? den : std::gcd(count, den);
  const std::uint64_t reducedCount = count / common;
  if (reducedCount > kIntMax / num) {
    throw std::runtime_error(std::to_string(count) + " periods of " + std::to_string(num) + "/" +
                             std::to_string(den) +
                             " s do not fit an exact fraction of ints.");
  }
  return RationalSeconds(boost::rational<int>(static_cast<int>(reducedCount * num),
                                              static_cast<int>(den / common)));
}

std::uint64_t periodsCovering(double seconds, const RationalSeconds& period) {
  requirePositive(period);
  const double periods = seconds * static_cast<double>(period.count().denominator()) /
                         static_cast<double>(period.count().numerator());
  // Far below 2^63, and far beyond any count wholePeriods accepts.
  if (!(periods >= 0.0 && periods <= 1e18)) {
    throw std::runtime_error("A motion of " + std::to_string(seconds) +
                             " seconds is not a duration that can be represented.");
  }
  return static_cast<std::uint64_t>(std::ceil(periods));
}

std::uint64_t periodsCovering(const RationalSeconds& duration, const RationalSeconds& period) {
  requirePositive(period);
  if (duration.count() < 0) {
    throw std::runtime_error("A duration must not be negative.");
  }
  // duration / period = (a / b) / (p / q) = (a q) / (b p); each product of
  // two ints is below 2^62.
  const std::uint64_t a = static_cast<std::uint64_t>(duration.count().numerator());
  const std::uint64_t b = static_cast<std::uint64_t>(duration.count().denominator());
  const std::uint64_t p = static_cast<std::uint64_t>(period.count().numerator());
  const std::uint64_t q = static_cast<std::uint64_t>(period.count().denominator());
  const std::uint64_t dividend = a * q;
  const std::uint64_t divisor = b * p;
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

RationalSeconds addDurations(const RationalSeconds& a, const RationalSeconds& b) {
  const std::int64_t an = a.count().numerator();
  const std::int64_t ad = a.count().denominator();
  const std::int64_t bn = b.count().numerator();
  const std::int64_t bd = b.count().denominator();
  const std::int64_t common = std::gcd(ad, bd);
  // Each term is below 2^62 in magnitude, so their sum fits int64.
  std::int64_t num = an * (bd / common) + bn * (ad / common);
  std::int64_t den = (ad / common) * bd;
  const std::int64_t reduce = std::gcd(num, den);
  num /= reduce;
  den /= reduce;
  if (num > INT_MAX || num < -static_cast<std::int64_t>(INT_MAX) || den > INT_MAX) {
    throw std::runtime_error("The sum of the durations does not fit an exact fraction of ints.");
  }
  return RationalSeconds(boost::rational<int>(static_cast<int>(num), static_cast<int>(den)));
}

}  // namespace Math
}  // namespace KR
