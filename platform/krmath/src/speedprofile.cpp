#include "speedprofile.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

// Speeds are handled as u = v^2, in which a constant acceleration a is a
// straight line (du/ds = 2 a). The forward pass finds the fastest speed
// reachable at each joint, the backward pass the fastest one from which the
// rest can still be stopped; each span is then a rise from its entry speed,
// a cruise at its bound and a fall to its exit speed.

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

// The largest share of the acceleration bound a curve's centripetal part
// takes, so that some is always left to speed up or slow down with (at the
// share of 0.99, 14 %); the speed on a curve is then at most 0.5 % below
// the one where the centripetal part alone reaches the bound.
constexpr double kCentripetalShare = 0.99;
// Steps of a rise or fall on a curve, where the tangential acceleration left
// depends on the speed: each step takes the bound at its faster end, so more
// steps lose less time (32: within about 0.2 % of the exact rise).
constexpr int kCurveSteps = 32;
// Slack for a start speed given as a float against bounds computed in double.
constexpr double kStartSlack = 1e-6;

double tangentialBound(const SpeedSpan& span, double acceleration, double u) {
  const double centripetal = span.curvature * u;
  const double left =
      std::sqrt(std::max(0.0, acceleration * acceleration - centripetal * centripetal));
  return std::min(left, span.maxTangential);
}

// A change of speed at the largest tangential acceleration, from u[0] up to
// u[steps]: d[j] is the distance it takes to get from u[0] to u[j]. Read
// backwards from the end of a span it is a fall. Each step's acceleration is
// the bound at its faster end, the smaller one on a curve.
struct Ramp {
  int steps = 0;
  double u[kCurveSteps + 1];
  double d[kCurveSteps + 1];

  // The distance to reach `speed2` (clamped into the ramp).
  double distanceTo(double speed2) const {
    if (speed2 <= u[0]) {
      return 0.0;
    }
    for (int j = 0; j < steps; ++j) {
      if (speed2 <= u[j + 1]) {
        const double width = u[j + 1] - u[j];
        return width > 0.0 ? d[j] + (d[j + 1] - d[j]) * (speed2 - u[j]) / width : d[j + 1];
      }
    }
    return d[steps];
  }

  // u after `distance` (clamped into the ramp).
  double speed2After(double distance) const {
    if (distance <= 0.0) {
      return u[0];
    }
    for (int j = 0; j < steps; ++j) {
      if (distance <= d[j + 1]) {
        const double width = d[j + 1] - d[j];
        return width > 0.0 ? u[j] + (u[j + 1] - u[j]) * (distance - d[j]) / width : u[j + 1];
      }
    }
    return u[steps];
  }
};

Ramp makeRamp(const SpeedSpan& span, double acceleration, double low, double high) {
  Ramp ramp;
  ramp.u[0] = low;
  ramp.d[0] = 0.0;
  if (!(high > low)) {
    return ramp;
  }
  // On a line, or where the further bound is below what the centripetal
  // part leaves even at the top speed, the acceleration is constant: one
  // step is exact.
  const double slowest = tangentialBound(span, acceleration, high);
  if (span.curvature == 0.0 || slowest == span.maxTangential) {
    ramp.steps = 1;
    ramp.u[1] = high;
    ramp.d[1] = (high - low) / (2.0 * std::min(acceleration, span.maxTangential));
    return ramp;
  }
  // Equal steps of the angle whose sine is the centripetal share: finer
  // steps in u where the acceleration left falls fastest. A bound that
  // falls by a share r over the ramp gets r of the steps, so each step
  // loses about as little as when it falls all the way.
  const double fall = 1.0 - slowest / tangentialBound(span, acceleration, low);
  ramp.steps = std::clamp(static_cast<int>(std::ceil(kCurveSteps * fall)), 1, kCurveSteps);
  const double full = acceleration / span.curvature;
  const double from = std::asin(std::min(1.0, low / full));
  const double to = std::asin(std::min(1.0, high / full));
  for (int j = 1; j <= ramp.steps; ++j) {
    // Kept in order against rounding, and ending exactly at `high`.
    ramp.u[j] = j == ramp.steps ? high
                                : std::clamp(full * std::sin(from + (to - from) * j / ramp.steps),
                                             ramp.u[j - 1], high);
    ramp.d[j] = ramp.d[j - 1] +
                (ramp.u[j] - ramp.u[j - 1]) / (2.0 * tangentialBound(span, acceleration, ramp.u[j]));
  }
  return ramp;
}

// u at the far end of a span entered at `entry2`, changing speed as fast as
// allowed towards the bound `cap2`.
double reach(const SpeedSpan& span, double acceleration, double entry2, double cap2) {
  const Ramp ramp = makeRamp(span, acceleration, entry2, cap2);
  return ramp.speed2After(span.length);
}

// The peak u of a span: where the rise from the entry meets the fall to the
// exit, or the bound when both reach it. Both distances are piecewise linear
// in u, so the meeting point is solved exactly between their breakpoints.
double peakOf(const Ramp& rise, const Ramp& fall, double length, double cap2) {
  if (rise.distanceTo(cap2) + fall.distanceTo(cap2) <= length) {
    return cap2;
  }
  double points[2 * kCurveSteps + 4];
  int count = 0;
  const double low = std::max(rise.u[0], fall.u[0]);
  points[count++] = low;
  for (const Ramp* ramp : {&rise, &fall}) {
    for (int j = 1; j <= ramp->steps; ++j) {
      if (ramp->u[j] > low && ramp->u[j] < cap2) {
        points[count++] = ramp->u[j];
      }
    }
  }
  points[count++] = cap2;
  std::sort(points, points + count);
  double previous = points[0];
  double before = rise.distanceTo(previous) + fall.distanceTo(previous);
  for (int i = 1; i < count; ++i) {
    const double next = points[i];
    const double after = rise.distanceTo(next) + fall.distanceTo(next);
    if (after >= length) {
      if (!(after > before)) {
        return previous;
      }
      return previous + (next - previous) * std::clamp((length - before) / (after - before), 0.0, 1.0);
    }
    previous = next;
    before = after;
  }
  return cap2;
}

// Appends the knots of one change of speed, from (position, u0) to
// (position + distance, u1) at constant acceleration, and advances the clock.
void appendStep(std::vector<ProfileKnot>& knots, double& time, double position, double distance,
                double u0, double u1) {
  if (!(distance > 0.0)) {
    return;
  }
  const double v0 = std::sqrt(u0);
  const double v1 = std::sqrt(u1);
  knots.push_back({time, position, v0, (u1 - u0) / (2.0 * distance)});
  time += 2.0 * distance / (v0 + v1);
}

// The knots of one span from entry to exit (both u) starting at `start`.
void appendSpan(std::vector<ProfileKnot>& knots, double& time, double start,
                const SpeedSpan& span, double acceleration, double entry2, double exit2) {
  const double cap2 = speedBound(span, acceleration) * speedBound(span, acceleration);
  const Ramp rise = makeRamp(span, acceleration, entry2, cap2);
  const Ramp fall = makeRamp(span, acceleration, exit2, cap2);
  const double peak = peakOf(rise, fall, span.length, cap2);
  // Rising to the peak.
  for (int j = 0; j < rise.steps && rise.u[j] < peak; ++j) {
    const double to = std::min(rise.u[j + 1], peak);
    const double from = rise.d[j];
    appendStep(knots, time, start + from, rise.distanceTo(to) - from, rise.u[j], to);
  }
  // Cruising at the bound.
  const double cruise = span.length - rise.distanceTo(peak) - fall.distanceTo(peak);
  if (peak == cap2 && cruise > 0.0) {
    knots.push_back({time, start + rise.distanceTo(peak), std::sqrt(peak), 0.0});
    time += cruise / std::sqrt(peak);
  }
  // Falling from the peak, the fall ramp read from its fast end.
  for (int j = fall.steps - 1; j >= 0; --j) {
    if (fall.u[j] >= peak) {
      continue;
    }
    const double from = std::min(fall.u[j + 1], peak);
    const double before = fall.distanceTo(from);
    appendStep(knots, time, start + span.length - before, before - fall.d[j], from, fall.u[j]);
  }
}

}  // namespace

double speedBound(const SpeedSpan& span, double acceleration) {
  if (span.curvature == 0.0) {
    return span.maxSpeed;
  }
  return std::min(span.maxSpeed, std::sqrt(kCentripetalShare * acceleration / span.curvature));
}

std::vector<ProfileKnot> planSpeedProfile(const std::vector<SpeedSpan>& spans,
                                          double acceleration, double startSpeed) {
  std::vector<ProfileKnot> knots;
  if (spans.empty()) {
    if (startSpeed > 0.0) {
      throw std::runtime_error("A trajectory starting at " + std::to_string(startSpeed) +
                               " cannot stop: its path has no length.");
    }
    return knots;
  }
  const std::size_t n = spans.size();
  // u at each joint: joint i starts span i, joint n ends the last span.
  std::vector<double> joint(n + 1);
  const double firstBound = speedBound(spans[0], acceleration);
  if (startSpeed > firstBound * (1.0 + kStartSlack)) {
    throw std::runtime_error("A trajectory cannot start at " + std::to_string(startSpeed) +
                             ": the limits allow at most " + std::to_string(firstBound) +
                             " there.");
  }
  joint[0] = std::min(startSpeed, firstBound) * std::min(startSpeed, firstBound);
  // Forward: as fast as the bounds on both sides of a joint and the speed
  // reachable from the previous joint allow.
  for (std::size_t i = 0; i < n; ++i) {
    const double here = speedBound(spans[i], acceleration);
    double bound2 = here * here;
    if (i + 1 < n) {
      const double next = speedBound(spans[i + 1], acceleration);
      bound2 = std::min(bound2, next * next);
    } else {
      bound2 = 0.0;
    }
    joint[i + 1] = std::min(bound2, reach(spans[i], acceleration, joint[i], here * here));
  }
  // Backward: slow enough to stop by the end.
  for (std::size_t i = n; i-- > 0;) {
    const double here = speedBound(spans[i], acceleration);
    const double brake = reach(spans[i], acceleration, joint[i + 1], here * here);
    if (i == 0 && brake < joint[0] * (1.0 - 2.0 * kStartSlack)) {
      throw std::runtime_error("A trajectory starting at " + std::to_string(startSpeed) +
                               " cannot stop in time: within the limits it can start at " +
                               std::to_string(std::sqrt(brake)) + " at most.");
    }
    joint[i] = std::min(joint[i], brake);
  }
  knots.reserve(3 * n + 1);
  double time = 0.0;
  double start = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    appendSpan(knots, time, start, spans[i], acceleration, joint[i], joint[i + 1]);
    start += spans[i].length;
  }
  knots.push_back({time, start, 0.0, 0.0});
  return knots;
}

double profileDuration(const std::vector<ProfileKnot>& knots) {
  return knots.empty() ? 0.0 : knots.back().time;
}

ProfileSample sampleProfile(const std::vector<ProfileKnot>& knots, double t) {
  if (knots.empty()) {
    return {0.0, 0.0, 0.0};
  }
  if (!(t > 0.0)) {
    return {0.0, knots.front().speed, knots.front().acceleration};
  }
  if (t >= knots.back().time) {
    return {knots.back().position, 0.0, 0.0};
  }
  // The last knot at or before t.
  const auto after = std::upper_bound(
      knots.begin(), knots.end(), t,
      [](double time, const ProfileKnot& knot) { return time < knot.time; });
  const ProfileKnot& knot = *(after - 1);
  const double dt = t - knot.time;
  const double speed = std::max(0.0, knot.speed + knot.acceleration * dt);
  const double position =
      std::min(after->position, knot.position + (knot.speed + 0.5 * knot.acceleration * dt) * dt);
  return {position, speed, knot.acceleration};
}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
