#include "blend.h"

#include <Eigen/Dense>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <limits>
#include <utility>

#include "pathgeometry.h"
#include "trajectoryphase.h"

// A transition replaces the described path about a joint, from arc length h
// before it to h after it, by eight clothoids of equal length whose
// curvature is continuous: it starts at the curvature of the segment it
// leaves, ends at the one of the segment it joins, and is linear between
// nine knots. The seven inner knots are chosen so that the transition ends
// on the described pose h after the joint (x, y and heading) with the least
// sum of squared steps of curvature between knots; its length is the one
// of a circular arc through both ends. The larger h, the gentler the change
// of curvature and the faster a base may drive through, but the farther the
// transition strays from the described path: h shrinks until every point of
// the transition lies within the tolerance. A piecewise constant change of
// curvature is what a jerk bound would need next: the turning rate then
// changes at a bounded rate.

namespace KR {
namespace Math {
namespace Trajectory {
namespace {

// The pieces of a transition, of equal length; the curvature is linear on
// each, between knots.
constexpr std::size_t kPieces = 8;
constexpr std::size_t kInner = kPieces - 1;  // the knots that are solved for
// Four-point Gauss-Legendre nodes and weights on [-1, 1], by pairs +-node,
// over steps that each turn by at most kStepTurn (radians): the end pose to
// a part in 1e10 of the length, far below what float coordinates keep.
constexpr double kNodes[2] = {0.3399810435848563, 0.8611363115940526};
constexpr double kWeights[2] = {0.6521451548625461, 0.3478548451374538};
constexpr double kStepTurn = 0.25;
// A piece of a transition may turn by at most this (radians).
constexpr double kMaxPieceTurn = 4.0;
// The largest turn of a corner that is blended: near a half turn a
// transition within any tolerance would need a curvature without bound.
constexpr double kMaxCorner = 3.0;
// How far from the described segments a transition is aimed (a share of the
// tolerance), and how many lengths are tried before a joint is left as it is.
constexpr double kAim = 0.8;
// A transition straying less than this share of the tolerance is tried
// longer once.
constexpr double kGrow = 0.6;
constexpr int kAttempts = 6;
// Points sampled along each clothoid to measure the deviation.
constexpr std::size_t kSamplesPerClothoid = 4;

struct PointD {
  double x;
  double y;
};
using Samples = std::array<PointD, kPieces * kSamplesPerClothoid>;

// The curvature at the knots of a transition, and its length.
struct Knots {
  std::array<double, kPieces + 1> k;
  double length;
};

// A transition integrated from its start, in the frame of its start pose:
// the pose where each piece starts (the last: the end), and the
// derivatives of the end position by the inner knots.
struct Integrated {
  std::array<PoseD, kPieces + 1> at;
  std::array<double, kInner> dx;
  std::array<double, kInner> dy;
};

// The heading at `t` along a piece starting at `theta` with curvature k0,
// reaching k1 after length q: the curvature is linear in between.
double headingAt(double theta, double k0, double k1, double q, double t) {
  return theta + t * (k0 + 0.5 * (k1 - k0) * t / q);
}

// How many steps integrate a piece of length q between curvatures k0 and
// k1, each turning by at most `turn`.
double stepsOf(double k0, double k1, double q, double turn) {
  return std::max(1.0, std::ceil((std::fabs(k0) + std::fabs(k1)) * q / turn));
}

// Integrates the unit tangent with Gauss-Legendre quadrature, the heading
// being quadratic on each piece. d heading / d knot follows from the same
// formula: before a piece it is a constant per knot, within it only the
// piece's own two knots add to it, so the Jacobian costs a few sums per
// node.
Integrated integrate(const Knots& knots) {
  const double q = knots.length / static_cast<double>(kPieces);
  Integrated out{};
  std::array<double, kInner> dTheta{};  // d heading / d inner knot, at the piece's start
  double x = 0.0;
  double y = 0.0;
  double theta = 0.0;
  for (std::size_t piece = 0; piece < kPieces; ++piece) {
    out.at[piece] = {x, y, theta};
    const double k0 = knots.k[piece];
    const double k1 = knots.k[piece + 1];
    const double steps = stepsOf(k0, k1, q, kStepTurn);
    const double h = q / steps;
    double sumC = 0.0;  // of the weighted cos and sin of the heading
    double sumS = 0.0;
    double startC = 0.0;  // ... times d heading / d k0 within the piece
    double startS = 0.0;
    double endC = 0.0;  // ... times d heading / d k1 within the piece
    double endS = 0.0;
    for (double i = 0.0; i < steps; ++i) {
      // The nodes' directions from the one at the step's middle.
      const double middle = headingAt(theta, k0, k1, q, (i + 0.5) * h);
      const Direction base = directionOf(middle);
      for (int j = 0; j < 2; ++j) {
        for (const double side : {-1.0, 1.0}) {
          const double t = (i + 0.5) * h + side * 0.5 * h * kNodes[j];
          const double ramp = t * t / (2.0 * q);  // d heading / d k1 at t
          const double w = 0.5 * h * kWeights[j];
          const Direction d = turnedBy(base, headingAt(theta, k0, k1, q, t) - middle);
          const double c = w * d.cos;
          const double s = w * d.sin;
          sumC += c;
          sumS += s;
          startC += c * (t - ramp);
          startS += s * (t - ramp);
          endC += c * ramp;
          endS += s * ramp;
        }
      }
    }
    x += sumC;
    y += sumS;
    // Inner knot `piece - 1` starts this piece, inner knot `piece` ends it.
    for (std::size_t knot = 0; knot < kInner; ++knot) {
      out.dx[knot] -= dTheta[knot] * sumS;
      out.dy[knot] += dTheta[knot] * sumC;
    }
    if (piece >= 1) {
      out.dx[piece - 1] -= startS;
      out.dy[piece - 1] += startC;
      dTheta[piece - 1] += 0.5 * q;
    }
    if (piece < kInner) {
      out.dx[piece] -= endS;
      out.dy[piece] += endC;
      dTheta[piece] += 0.5 * q;
    }
    theta += 0.5 * q * (k0 + k1);
  }
  out.at[kPieces] = {x, y, theta};
  return out;
}

// Points along a transition, kSamplesPerClothoid evenly along each piece,
// integrated with two Gauss-Legendre nodes per step of a tenth of a radian
// at most: far finer than the deviation they measure.
Samples samplesOf(const Knots& knots) {
  static const double kNode = 0.5773502691896258;  // 1 / sqrt(3)
  const double q = knots.length / static_cast<double>(kPieces);
  Samples out{};
  double x = 0.0;
  double y = 0.0;
  double theta = 0.0;
  for (std::size_t piece = 0; piece < kPieces; ++piece) {
    const double k0 = knots.k[piece];
    const double k1 = knots.k[piece + 1];
    const double samples = static_cast<double>(kSamplesPerClothoid);
    const double perSample = stepsOf(k0, k1, q / samples, 0.1);
    const double h = q / (perSample * samples);
    // The nodes' directions from the one at the middle of the piece or, on
    // a piece turning further than half a radian, of the step.
    const bool gentle = (std::fabs(k0) + std::fabs(k1)) * q <= 0.5;
    double middle = headingAt(theta, k0, k1, q, 0.5 * q);
    Direction base = directionOf(middle);
    double t = 0.0;
    for (std::size_t sample = 0; sample < kSamplesPerClothoid; ++sample) {
      for (double i = 0.0; i < perSample; ++i, t += h) {
        if (!gentle) {
          middle = headingAt(theta, k0, k1, q, t + 0.5 * h);
          base = directionOf(middle);
        }
        for (const double side : {-1.0, 1.0}) {
          const Direction d = turnedBy(
              base, headingAt(theta, k0, k1, q, t + 0.5 * h * (1.0 + side * kNode)) - middle);
          x += 0.5 * h * d.cos;
          y += 0.5 * h * d.sin;
        }
      }
      out[piece * kSamplesPerClothoid + sample] = {x, y};
    }
    theta += 0.5 * q * (k0 + k1);
  }
  return out;
}

// Whether every piece of a transition turns by at most kMaxPieceTurn (its
// curvatures finite): the others are no transition a base could drive, and
// would take ever more steps to integrate.
bool tame(const Knots& knots) {
  const double q = knots.length / static_cast<double>(kPieces);
  for (std::size_t piece = 0; piece < kPieces; ++piece) {
    const double turn = (std::fabs(knots.k[piece]) + std::fabs(knots.k[piece + 1])) * q;
    if (!(turn <= kMaxPieceTurn)) {
      return false;
    }
  }
  return true;
}

// (A^-1)_ij for A the second differences of the inner knots (2 on the
// diagonal, -1 beside it), the Hessian of half the sum of squared steps:
// min(i, j) (n + 1 - max(i, j)) / (n + 1), counting from 1.
double inverseSecondDifference(std::size_t i, std::size_t j) {
  const double low = static_cast<double>(std::min(i, j) + 1);
  const double high = static_cast<double>(std::max(i, j) + 1);
  const double n = static_cast<double>(kInner);
  return low * (n + 1.0 - high) / (n + 1.0);
}

// The inner knots that take a transition from (0, 0, 0) to `target` with
// the least sum of squared curvature steps between knots (so the least
// sharpness), by sequential quadratic programming from the linear ramp:
// each step minimises that sum under the end constraints linearised.
// `knots` holds the two end curvatures and the length on entry; false when
// the steps do not converge.
bool solveKnots(const PoseD& target, Knots& knots, Integrated& at) {
  const double q = knots.length / static_cast<double>(kPieces);
  const double ka = knots.k[0];
  const double kb = knots.k[kPieces];
  // The linear ramp, the unconstrained minimum; the first knots are it
  // shifted so that the heading already ends right (the end heading grows
  // by q per unit of each inner knot).
  const double pieces = static_cast<double>(kPieces);
  const double shift = (target.theta - 0.5 * q * pieces * (ka + kb)) / ((pieces - 1.0) * q);
  std::array<double, kInner> ramp{};
  for (std::size_t i = 0; i < kInner; ++i) {
    ramp[i] = ka + (kb - ka) * static_cast<double>(i + 1) / pieces;
    knots.k[i + 1] = ramp[i] + shift;
  }
  const double accuracy = 1e-10 * knots.length;
  double lastStep = std::numeric_limits<double>::infinity();
  double size = std::max(std::fabs(ka), std::fabs(kb));
  for (int iteration = 0; iteration < 30; ++iteration) {
    if (!tame(knots)) {
      return false;
    }
    const Integrated now = integrate(knots);
    const std::array<double, 3> r{target.x - now.at[kPieces].x, target.y - now.at[kPieces].y,
                                  target.theta - now.at[kPieces].theta};
    // Done when the end is met and the last step hardly changed the knots:
    // the sharpness is then as low as these knots make it, to a part in a
    // thousand.
    const bool met = std::hypot(r[0], r[1]) <= accuracy && std::fabs(r[2]) <= 1e-12;
    if (met && lastStep <= 1e-3 * size) {
      at = now;
      return true;
    }
    // The step minimises the sum of squared curvature steps under the end
    // constraints linearised, J step = r (rows x, y, heading): with A the
    // second differences, whose unconstrained minimum is the ramp,
    // step = ramp - knots - A^-1 J^T m, where (J A^-1 J^T) m =
    // J (ramp - knots) - r.
    Eigen::Matrix<double, 3, static_cast<int>(kInner)> jacobian;
    Eigen::Matrix<double, static_cast<int>(kInner), 1> free;  // ramp - knots
    for (std::size_t i = 0; i < kInner; ++i) {
      const Eigen::Index c = static_cast<Eigen::Index>(i);
      jacobian(0, c) = now.dx[i];
      jacobian(1, c) = now.dy[i];
      jacobian(2, c) = q;
      free(c) = ramp[i] - knots.k[i + 1];
    }
    Eigen::Matrix<double, static_cast<int>(kInner), 3> spread;  // A^-1 J^T
    for (std::size_t i = 0; i < kInner; ++i) {
      for (Eigen::Index row = 0; row < 3; ++row) {
        double sum = 0.0;
        for (std::size_t j = 0; j < kInner; ++j) {
          sum += inverseSecondDifference(i, j) * jacobian(row, static_cast<Eigen::Index>(j));
        }
        spread(static_cast<Eigen::Index>(i), row) = sum;
      }
    }
    const Eigen::Vector3d residual(r[0], r[1], r[2]);
    const Eigen::Vector3d multipliers =
        (jacobian * spread).partialPivLu().solve(jacobian * free - residual);
    const Eigen::Matrix<double, static_cast<int>(kInner), 1> step = free - spread * multipliers;
    if (!step.allFinite()) {
      return false;
    }
    lastStep = 0.0;
    for (std::size_t i = 0; i < kInner; ++i) {
      const double change = step(static_cast<Eigen::Index>(i));
      knots.k[i + 1] += change;
      lastStep = std::max(lastStep, std::fabs(change));
      size = std::max(size, std::fabs(knots.k[i + 1]));
    }
  }
  return false;
}

// A described piece of constant curvature, in the frame of a transition's
// start: where it starts and ends, its direction there and its curvature.
struct Piece {
  PoseD start;
  double cos;
  double sin;
  double curvature;
  double length;
  PointD end;
};

Piece pieceOf(const PoseD& start, double curvature, double length) {
  const Segment2D segment{toPose2D(start), static_cast<float>(length),
                          static_cast<float>(curvature)};
  const PoseD end = segmentPoseAt(segment, length);
  return {start, std::cos(start.theta), std::sin(start.theta), curvature, length, {end.x, end.y}};
}

// The distance from `p` to `piece`. In the piece's frame (a along it, l to
// its left) the distance to its circle is |k (a^2 + l^2) - 2 l| /
// (|k p - centre| + 1) and the arc length of the nearest point
// atan2(k a, 1 - k l) / k, both exact as k goes to 0; beyond its ends, the
// nearer end.
double distanceTo(const Piece& piece, const PointD& p) {
  const double dx = p.x - piece.start.x;
  const double dy = p.y - piece.start.y;
  const double a = dx * piece.cos + dy * piece.sin;
  const double l = dy * piece.cos - dx * piece.sin;
  const double k = piece.curvature;
  const double along = k == 0.0 ? a : std::atan2(k * a, 1.0 - k * l) / k;
  if (along >= 0.0 && along <= piece.length) {
    return std::fabs(k * (a * a + l * l) - 2.0 * l) / (std::hypot(k * a, k * l - 1.0) + 1.0);
  }
  return std::min(std::hypot(dx, dy), std::hypot(p.x - piece.end.x, p.y - piece.end.y));
}

// How far a transition strays from the two described pieces it replaces:
// the largest distance at the sampled points, plus what the distance can
// grow between samples (a step^2 / 8 times the two curves' curvatures).
double deviationOf(const Knots& knots, const Piece& tail, const Piece& head) {
  double largest = 0.0;
  for (const PointD& p : samplesOf(knots)) {
    largest = std::max(largest, std::min(distanceTo(tail, p), distanceTo(head, p)));
  }
  double curvature = std::max(std::fabs(tail.curvature), std::fabs(head.curvature));
  for (const double k : knots.k) {
    curvature = std::max(curvature, std::fabs(k));
  }
  const double step = knots.length / static_cast<double>(kPieces * kSamplesPerClothoid);
  return largest + step * step / 8.0 * 2.0 * curvature;
}

// The speed a base may keep along a piece of the largest curvature `k` and
// sharpness `c` (both sizes), cruising: the speed limit, the centripetal
// acceleration and, turning with the path, the turning rate and c v^2.
double cruiseSpeed(double k, double c, const BlendLimits& limits) {
  double speed = limits.speed;
  if (k > 0.0) {
    speed = std::min(speed, std::sqrt(0.99 * limits.acceleration / k));
    if (limits.turnsWithPath) {
      speed = std::min(speed, limits.angularSpeed / k);
    }
  }
  if (c > 0.0 && limits.turnsWithPath) {
    speed = std::min(speed, std::sqrt(limits.sharpnessShare * limits.angularAcceleration / c));
  }
  return speed;
}

// A joint's transition: how far it reaches on each side of the joint, and
// its clothoids.
struct Transition {
  double half = 0.0;  // 0: the joint is left as it is
  std::array<Segment2D, kPieces> clothoids{};
  Knots knots{};
  Piece tail{};  // the described pieces it replaces, in its start's frame
  Piece head{};
};

// The transition at arc length `half` on both sides of the joint from `a`
// to `b`, or none when it cannot be solved.
bool transitionOf(const Segment2D& a, const Segment2D& b, double half, Transition& out) {
  const double lengthA = static_cast<double>(a.length);
  const PoseD from = segmentPoseAt(a, lengthA - half);
  const PoseD to = segmentPoseAt(b, half);
  const double c = std::cos(from.theta);
  const double s = std::sin(from.theta);
  const PoseD target{(to.x - from.x) * c + (to.y - from.y) * s,
                     (to.y - from.y) * c - (to.x - from.x) * s, to.theta - from.theta};
  const double chord = std::hypot(target.x, target.y);
  const double turn = 0.5 * target.theta;
  Knots knots{};
  knots.k[0] = a.curvatureAt(lengthA - half);
  knots.k[kPieces] = b.curvatureAt(half);
  knots.length = std::fabs(turn) < 1e-6 ? chord : chord * turn / std::sin(turn);
  Integrated path{};
  if (!(knots.length > 0.0) || !solveKnots(target, knots, path)) {
    return false;
  }
  out.knots = knots;
  out.tail = pieceOf({0.0, 0.0, 0.0}, knots.k[0], half);
  const double bx = static_cast<double>(b.start.x) - from.x;
  const double by = static_cast<double>(b.start.y) - from.y;
  out.head =
      pieceOf({bx * c + by * s, by * c - bx * s, static_cast<double>(b.start.theta) - from.theta},
              b.curvatureAt(0.0), half);
  const double q = knots.length / static_cast<double>(kPieces);
  for (std::size_t i = 0; i < kPieces; ++i) {
    const PoseD& p = path.at[i];
    Segment2D& clothoid = out.clothoids[i];
    clothoid.start = toPose2D({from.x + p.x * c - p.y * s, from.y + p.x * s + p.y * c,
                               from.theta + p.theta});
    clothoid.length = static_cast<float>(q);
    clothoid.curvature = static_cast<float>(knots.k[i]);
    clothoid.sharpness = static_cast<float>(
        (static_cast<double>(static_cast<float>(knots.k[i + 1])) -
         static_cast<double>(clothoid.curvature)) /
        static_cast<double>(clothoid.length));
    if (!std::isfinite(clothoid.curvature) || !std::isfinite(clothoid.sharpness) ||
        !(clothoid.length > 0.0f)) {
      return false;
    }
  }
  out.half = half;
  return true;
}

// Whether driving through the corner from `a` to `b` (by `turn` radians) on
// `t` is quicker than stopping there: the time lost crawling through it
// against the time lost braking to rest, speeding up again and, turning
// with the path, turning on the spot. Both are estimated from the speed
// kept on the two pieces, reached with the acceleration they allow.
bool quickerThanStopping(const Segment2D& a, const Segment2D& b, double turn, const Transition& t,
                         const BlendLimits& limits) {
  double k = 0.0;
  double c = 0.0;
  double length = 0.0;
  for (const Segment2D& clothoid : t.clothoids) {
    k = std::max({k, std::fabs(clothoid.curvatureAt(0.0)),
                  std::fabs(clothoid.curvatureAt(static_cast<double>(clothoid.length)))});
    c = std::max(c, std::fabs(static_cast<double>(clothoid.sharpness)));
    length += static_cast<double>(clothoid.length);
  }
  const double ka = std::fabs(static_cast<double>(a.curvature));
  const double kb = std::fabs(static_cast<double>(b.curvature));
  double acceleration = limits.acceleration;
  if (limits.turnsWithPath && std::max(ka, kb) > 0.0) {
    acceleration = std::min(acceleration, limits.angularAcceleration / std::max(ka, kb));
  }
  const double reachable = std::sqrt(
      acceleration * std::min(static_cast<double>(a.length), static_cast<double>(b.length)));
  const double around =
      std::min({cruiseSpeed(ka, 0.0, limits), cruiseSpeed(kb, 0.0, limits), reachable});
  const double through = std::min(cruiseSpeed(k, c, limits), around);
  const double crawling = length / through - length / around +
                          (around - through) * (around - through) / (acceleration * around);
  double stopping = around / acceleration;
  if (limits.turnsWithPath) {
    stopping +=
        profileDuration(planTurn(turn, 0.0, limits.angularSpeed, limits.angularAcceleration));
  }
  return crawling < stopping;
}

// The transition for the joint from `a` to `b` reaching at most `longest`
// on each side, or none (half 0) when the joint is smooth already, no
// length keeps the tolerance or, at a corner, stopping is quicker.
Transition blendJoint(const Segment2D& a, const Segment2D& b, double longest, double tolerance,
                      const BlendLimits& limits) {
  const double lengthA = static_cast<double>(a.length);
  const double ka = a.curvatureAt(lengthA);
  const double kb = b.curvatureAt(0.0);
  // Path headings are the values nearest the heading before, so the raw
  // difference is the corner's turn; a segment list that jumps by whole
  // turns is left as it is.
  const double rawTurn = static_cast<double>(b.start.theta) - segmentPoseAt(a, lengthA).theta;
  const double turn = std::remainder(rawTurn, 2.0 * kPi);
  const double jump = std::fabs(kb - ka);
  const double eps = static_cast<double>(FLT_EPSILON);
  // Jumps within a few float roundings are none.
  const bool corner =
      std::fabs(turn) > 8.0 * eps * (1.0 + std::fabs(static_cast<double>(b.start.theta)));
  const bool smooth = !corner && jump <= 8.0 * eps * (std::fabs(ka) + std::fabs(kb));
  if (smooth || std::fabs(turn) > kMaxCorner || std::fabs(rawTurn - turn) > 1e-3) {
    return {};
  }
  // Below this a transition is lost in the float rounding of its points.
  const double shortest = 64.0 * eps *
                          (1.0 + std::fabs(static_cast<double>(b.start.x)) +
                           std::fabs(static_cast<double>(b.start.y)));
  // Each side keeps within half a radian of turn, so the heading's turn
  // over the transition stays well away from a full circle.
  longest = std::min({longest, 0.5 / std::max(std::fabs(ka), 1e-300),
                      0.5 / std::max(std::fabs(kb), 1e-300)});
  // First guesses: a curvature jump strays by about h^2 |dk| / 24, a
  // corner by about h |turn| / 4.
  double half = longest;
  if (jump > 0.0) {
    half = std::min(half, std::sqrt(24.0 * kAim * tolerance / jump));
  }
  if (turn != 0.0) {
    half = std::min(half, 4.0 * kAim * tolerance / std::fabs(turn));
  }
  // Shrink until the tolerance holds; a transition well within it that the
  // pieces leave room for grows once, and the longest within it is kept.
  Transition kept;
  bool grown = false;
  for (int attempt = 0; attempt < kAttempts && half >= shortest; ++attempt) {
    Transition t;
    if (!transitionOf(a, b, half, t)) {
      if (kept.half > 0.0) {
        break;
      }
      half *= 0.5;
      continue;
    }
    const double deviation = deviationOf(t.knots, t.tail, t.head);
    if (deviation > tolerance) {
      if (kept.half > 0.0) {
        break;
      }
      half *= std::max(0.2, std::min(0.9, kAim * tolerance / deviation));
      continue;
    }
    kept = t;
    if (grown || deviation >= kGrow * tolerance || half >= 0.99 * longest) {
      break;
    }
    grown = true;
    half = std::min(longest, half * std::min(2.0, std::sqrt(kAim * tolerance / deviation)));
  }
  if (kept.half > 0.0 && corner && !quickerThanStopping(a, b, turn, kept, limits)) {
    return {};
  }
  return kept;
}

// The part of `segment` from `from` to `to` (arc lengths along it).
Segment2D partOf(const Segment2D& segment, double from, double to) {
  Segment2D part = segment;
  part.start = toPose2D(segmentPoseAt(segment, from));
  part.length = static_cast<float>(to - from);
  part.curvature = static_cast<float>(segment.curvatureAt(from));
  return part;
}

}  // namespace

std::vector<Segment2D> blendedSegments(const std::vector<Segment2D>& described, double tolerance,
                                       const BlendLimits& limits) {
  std::vector<Segment2D> driven;
  driven.reserve(3 * described.size());
  // Segment i runs from the transition before it (reaching `from` into it)
  // to the one after it, which is found first.
  double from = 0.0;
  for (std::size_t i = 0; i < described.size(); ++i) {
    const Segment2D& segment = described[i];
    Transition next;
    if (i + 1 < described.size()) {
      const double longest = 0.5 * std::min(static_cast<double>(segment.length),
                                            static_cast<double>(described[i + 1].length));
      next = blendJoint(segment, described[i + 1], longest, tolerance, limits);
    }
    const double to = static_cast<double>(segment.length) - next.half;
    if (from == 0.0 && next.half == 0.0) {
      driven.push_back(segment);
    } else if (to > from) {
      driven.push_back(partOf(segment, from, to));
    }
    if (next.half > 0.0) {
      driven.insert(driven.end(), next.clothoids.begin(), next.clothoids.end());
    }
    from = next.half;
  }
  return driven;
}

DrivenPath2D::DrivenPath2D(const Pose2D& start, std::vector<Segment2D> segments)
    : KRPath2D(start, std::move(segments)) {}

}  // namespace Trajectory
}  // namespace Math
}  // namespace KR
