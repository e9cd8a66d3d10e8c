// Automatic Bezier keys: monotone tangents through bare values.
#include <kr/math/bezierautokey.h>

#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>

// Slopes and handles are computed in double: a time difference of two floats
// near the ends of the float range overflows float, not double.

namespace KR {
namespace Math {
namespace {

void checkInputs(const std::vector<float>& times, const std::vector<float>& values) {
  if (times.size() != values.size()) {
    throw std::runtime_error("computeBezierAutoKey: " + std::to_string(times.size()) +
                             " times but " + std::to_string(values.size()) + " values.");
  }
  for (std::size_t i = 0; i < times.size(); ++i) {
    const bool increasing = i == 0 || times[i] > times[i - 1];
    if (!std::isfinite(times[i]) || !increasing) {
      throw std::runtime_error("computeBezierAutoKey: time " + std::to_string(i) +
                               " is not finite or not after the one before.");
    }
  }
}

double secant(const std::vector<float>& times, const std::vector<float>& values, std::size_t i) {
  return (double(values[i + 1]) - double(values[i])) / (double(times[i + 1]) - double(times[i]));
}

// Zero at both ends and wherever the neighbouring secants do not share a
// strict sign (an extremum or a plateau); elsewhere their harmonic mean, which
// lies between them and never exceeds twice the smaller, so that a handle a
// third of the way along cannot overshoot the neighbouring value.
double slopeAt(const std::vector<float>& times, const std::vector<float>& values, std::size_t i) {
  if (i == 0 || i + 1 == times.size()) {
    return 0.0;
  }
  const double before = secant(times, values, i - 1);
  const double after = secant(times, values, i);
  const bool sameSign = (before > 0.0 && after > 0.0) || (before < 0.0 && after < 0.0);
  if (!sameSign) {
    return 0.0;
  }
  return 2.0 / (1.0 / before + 1.0 / after);
}

// A handle a third of the way along the interval `dt` (signed: negative on
// the incoming side), on the tangent of slope `slope`. A flat tangent gives
// +0 rather than the -0 that a zero slope times a negative `dt` would.
Position2D handle(double dt, double slope) {
  const double rise = slope == 0.0 ? 0.0 : slope * dt / 3.0;
  return Position2D(static_cast<float>(dt / 3.0), static_cast<float>(rise));
}

}  // namespace

void computeBezierAutoKey(const std::vector<float>& times, const std::vector<float>& values,
                          std::vector<std::pair<float, Interpolation::Key>>& keys) {
  checkInputs(times, values);
  const std::size_t n = times.size();
  // Built aside and appended at the end, so that `keys` is left as it was
  // should anything throw before.
  std::vector<std::pair<float, Interpolation::Key>> computed;
  computed.reserve(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double slope = slopeAt(times, values, i);
    const double dtIn = i == 0 ? 0.0 : double(times[i - 1]) - double(times[i]);
    const double dtOut = i + 1 == n ? 0.0 : double(times[i + 1]) - double(times[i]);
    const Interpolation::Parameter in(Interpolation::BEZIER_AUTO, handle(dtIn, slope));
    const Interpolation::Parameter out(Interpolation::BEZIER_AUTO, handle(dtOut, slope));
    computed.emplace_back(times[i], Interpolation::Key(values[i], in, out));
  }
  keys.insert(keys.end(), computed.begin(), computed.end());
}

}  // namespace Math
}  // namespace KR
