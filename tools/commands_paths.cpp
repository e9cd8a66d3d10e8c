// Paths and trajectories: a description is read into a builder, the builder
// is called at the start pose, and the result is sampled and drawn.
#include "commands.h"
#include "paths.h"
#include "svg.h"

#include <kr/krvaluetext.h>
#include <kr/krvalueutils.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/path2d.h>
#include <kr/math/trajectory/trajectoryfactory.h>
#include <kr/math/trajectory/trajectorypose2d.h>

#include <boost/function.hpp>
#include <boost/rational.hpp>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace krvaluetool {
namespace {

using KR::Math::Pose2D;
using KR::Math::Pose2DPosVelAcc;
using KR::Math::Position2D;
using KR::Math::RationalSeconds;
using KR::Math::Trajectory::KRDirectPath2D;
using KR::Math::Trajectory::KRDirectTrajectoryPose2D;
using KR::Math::Trajectory::KRPath2D;
using KR::Math::Trajectory::KRTrajectoryPose2D;
using KR::Math::Trajectory::KRTrajectoryPose2DComposed;
using KR::Math::Trajectory::Limits;
using KR::Math::Trajectory::TrajectoryFactory;

// Printed samples: eight equal steps, nine samples from start to end.
const int printedIntervals = 8;
// Drawn samples of a trajectory, evenly spaced in time.
const int drawnIntervals = 400;
// Largest turn drawn as one straight piece of an arc: 2 degrees.
const double drawnTurn = 2.0 * 3.14159265358979323846 / 180.0;

// Reading the options.

/// `count` comma-separated numbers, read as the value text "[text]".
std::vector<float> readNumbers(const std::string& text, std::size_t count,
                               const std::string& option, const std::string& shape) {
  const std::string usage = option + " is given as " + shape;
  KR::KRValue value;
  try {
    value = parseInput("[" + text + "]");
  } catch (const UsageError&) {
    throw UsageError(usage);
  }
  if (value.getSize() != count) {
    throw UsageError(usage);
  }
  std::vector<float> numbers;
  for (unsigned int i = 0; i < value.getSize(); ++i) {
    const KR::KRValue& number = value[int(i)];
    if (!number.isInt() && !number.isFloat()) {
      throw UsageError(usage);
    }
    numbers.push_back(static_cast<float>(number));
  }
  return numbers;
}

Pose2D readStart(const std::string& text) {
  const std::vector<float> n = readNumbers(text, 3, "--start", "X,Y,THETA");
  return Pose2D(n[0], n[1], n[2]);
}

Limits readLimits(const std::string& text, const std::string& option) {
  const std::vector<float> n = readNumbers(text, 2, option, "VELOCITY,ACCELERATION");
  return Limits(n[0], n[1]);
}

/// The period rounded to whole milliseconds, kept as an exact fraction of a
/// second: 0.01 gives 1/100 s. Trajectory durations are whole numbers of it.
RationalSeconds readPeriod(float seconds) {
  const RationalSeconds millisecond(boost::rational<int>(1, 1000));
  if (!std::isfinite(seconds) || seconds < 0.0005f || seconds > 1000.0f) {
    throw UsageError("--period is given in seconds, from 0.001 to 1000");
  }
  return KR::Math::rationalSecondsFromFloat(seconds, millisecond);
}

// Formatting the samples.

// Poses, lengths and times are floats of the geometry layer (sample points
// are computed in double but stay far inside the float range): each prints
// as the shortest text that reads back to the same float, as every reader does.
std::string number(double value) {
  return value == 0.0 ? "0" : formatNumber(static_cast<float>(value));  // no "-0"
}

std::string number(float value) { return number(static_cast<double>(value)); }

std::string describe(const Pose2D& p) {
  return "Pose2D(x=" + number(p.x) + ", y=" + number(p.y) + ", theta=" + number(p.theta) + ")";
}

std::string triple(const Pose2D& p) {
  return "(" + number(p.x) + ", " + number(p.y) + ", " + number(p.theta) + ")";
}

std::string describe(const Pose2DPosVelAcc& state) {
  return "position " + triple(state.position) + " velocity " + triple(state.velocity) +
         " acceleration " + triple(state.acceleration);
}

/// Seconds, and the exact fraction when it is not a whole number.
std::string describe(const RationalSeconds& duration) {
  const std::string seconds = number(KR::Math::toSeconds(duration)) + " s";
  if (duration.count().denominator() == 1) {
    return seconds;
  }
  std::ostringstream out;
  out << duration.count();
  return seconds + " (" + out.str() + ")";
}

/// "length", "end", then "s=...: pose" at evenly spaced arc lengths.
std::string formatPath(const KRPath2D& path) {
  const double length = static_cast<double>(path.length());
  std::string text = "length: " + number(length) + "\nend: " + describe(path.endPose());
  const int intervals = length > 0 ? printedIntervals : 0;
  for (int i = 0; i <= intervals; ++i) {
    const double s = intervals ? length * i / intervals : 0.0;
    text += "\ns=" + number(s) + ": " + describe(path.poseAt(static_cast<float>(s)));
  }
  return text;
}

/// Sample times from 0 to the duration, `intervals` apart (only 0 for a
/// motion that takes no time).
std::vector<double> sampleTimes(double duration, int intervals) {
  if (!(duration > 0)) {
    return {0.0};
  }
  std::vector<double> times;
  for (int i = 0; i <= intervals; ++i) {
    times.push_back(duration * i / intervals);
  }
  return times;
}

/// "duration", then "t=...: state" at evenly spaced times.
std::string formatTrajectory(const KRTrajectoryPose2D& trajectory) {
  const RationalSeconds duration = trajectory.duration();
  std::string text = "duration: " + describe(duration);
  for (const double t : sampleTimes(KR::Math::toSeconds(duration), printedIntervals)) {
    text += "\nt=" + number(t) + ": " + describe(trajectory.stateAt(t));
  }
  return text;
}

// Drawing.

const double pageWidth = 660;
const double marginLeft = 72;
const double marginRight = 28;
const double marginTop = 56;
const double axisRoom = 52;  // below a panel: tick labels and the axis title
const double panelWidth = pageWidth - marginLeft - marginRight;
const double speedPanelHeight = 200;

const char* const pathColour = "#1f77b4";
const char* const startColour = "#2ca02c";
const char* const endColour = "#d62728";
const char* const turnColour = "#ff7f0e";
const char* const headingColour = "#8c8c8c";
const char* const boundColour = "#9467bd";
const char* const describedColour = "#555555";
const char* const titleAttributes = R"(font-family="sans-serif" font-size="13" fill="#222")";
const char* const noteAttributes = R"(font-family="sans-serif" font-size="11" fill="#555")";

svg::Point at(const Pose2D& p) { return {static_cast<double>(p.x), static_cast<double>(p.y)}; }

/// The points of a path, with every arc and clothoid cut into pieces that
/// turn by at most `drawnTurn` so that it looks round.
std::vector<svg::Point> pathPoints(const KRPath2D& path) {
  std::vector<svg::Point> points{at(path.startPose())};
  for (const auto& segment : path.segments()) {
    // The curvature is linear along a segment: its largest size is at an end.
    const double length = static_cast<double>(segment.length);
    const double curvature =
        std::max(std::fabs(segment.curvatureAt(0.0)), std::fabs(segment.curvatureAt(length)));
    const double turn = curvature * length;
    const int pieces = std::clamp(static_cast<int>(std::ceil(turn / drawnTurn)), 1, 4000);
    for (int i = pieces == 1 ? 0 : 1; i <= pieces; ++i) {
      points.push_back(
          at(segment.poseAt(segment.length * static_cast<float>(i) / static_cast<float>(pieces))));
    }
  }
  return points;
}

/// The title: what was drawn, from which description, and a note.
void drawTitle(svg::Document& document, const std::string& title, const KR::KRValue& description,
               const std::string& note) {
  std::string text = title + " " + KR::printKRValue(description);
  if (text.size() > 88) {
    // Cut before a character, not inside one that takes several bytes.
    std::size_t cut = 85;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) {
      --cut;
    }
    text = text.substr(0, cut) + "...";
  }
  document.text({marginLeft, 22}, text, titleAttributes);
  document.text({marginLeft, 40}, note, noteAttributes);
}

/// The height of a panel showing `x` and `y` at equal scale across the
/// page's panel width, kept between a flat strip and a square.
double equalScaleHeight(const svg::Range& x, const svg::Range& y) {
  const double aspect = (y.high - y.low) / (x.high - x.low);
  return std::clamp(panelWidth * aspect, 240.0, panelWidth);
}

/// An equal-scale panel at `top` showing `points` with a margin round them.
svg::Panel trackPanel(const std::vector<svg::Point>& points, double top) {
  const svg::Range x = svg::padded(svg::rangeOf(points, true, 0.5), 0.12);
  const svg::Range y = svg::padded(svg::rangeOf(points, false, 0.5), 0.12);
  return svg::Panel::withEqualScale(marginLeft, top, panelWidth, equalScaleHeight(x, y), x, y);
}

/// The track through `points` on `panel`, with arrows at the start and end
/// poses and dots at `joints`.
void drawTrack(svg::Document& document, const svg::Panel& panel,
               const std::vector<svg::Point>& points, const Pose2D& start, const Pose2D& end,
               const std::vector<Pose2D>& joints) {
  svg::drawAxes(document, panel, "x (m)", "y (m)");

  std::vector<svg::Point> page;
  for (const svg::Point& p : points) {
    page.push_back(panel.toPage(p));
  }
  document.polyline(page, std::string("stroke=\"") + pathColour +
                              R"(" stroke-width="2.5" stroke-linejoin="round")");
  for (const Pose2D& joint : joints) {
    document.circle(
        panel.toPage(at(joint)), 3.5,
        std::string(R"(fill="white" stroke=")") + pathColour + R"(" stroke-width="1.5")");
  }
  document.arrow(panel.toPage(at(start)), static_cast<double>(start.theta), 36, startColour);
  document.arrow(panel.toPage(at(end)), static_cast<double>(end.theta), 36, endColour);
}

void writeFile(const std::string& file, const std::string& text) {
  std::ofstream out(file, std::ios::binary);
  out << text;
  out.close();
  if (!out) {
    throw UsageError("cannot write " + file);
  }
}

/// The path with its start and end pose and the joints between segments.
std::string pathPicture(const KR::KRValue& description, const KRPath2D& path) {
  const std::vector<svg::Point> points = pathPoints(path);
  std::vector<Pose2D> joints;
  for (std::size_t i = 1; i < path.segments().size(); ++i) {
    joints.push_back(path.segments()[i].start);
  }
  const svg::Panel panel = trackPanel(points, marginTop);
  svg::Document document(pageWidth, panel.top() + panel.height() + axisRoom);
  drawTitle(document, "path", description,
            "length " + number(path.length()) +
                " m; start pose in green, end pose in red, "
                "joints between segments as dots");
  drawTrack(document, panel, points, path.startPose(), path.endPose(), joints);
  return document.str();
}

/// Speeds over time: |(x', y')| in m/s and |theta'| in rad/s, with the
/// speed bound where the robot is (the translation limit, lowered on arcs)
/// so that it shows where and why the motion slows.
void drawSpeeds(svg::Document& document, double top, const std::vector<double>& times,
                const std::vector<Pose2DPosVelAcc>& states, const std::vector<double>& bounds,
                double duration) {
  std::vector<svg::Point> linear;
  std::vector<svg::Point> angular;
  std::vector<svg::Point> bound;
  double highest = 0.1;
  for (std::size_t i = 0; i < times.size(); ++i) {
    const Pose2D& v = states[i].velocity;
    linear.push_back({times[i], static_cast<double>(std::hypot(v.x, v.y))});
    angular.push_back({times[i], static_cast<double>(std::fabs(v.theta))});
    bound.push_back({times[i], bounds[i]});
    highest = std::max({highest, linear.back().y, angular.back().y, bound.back().y});
  }
  const svg::Panel panel(marginLeft, top, panelWidth, speedPanelHeight,
                         {0.0, duration > 0 ? duration : 1.0}, {0.0, highest * 1.1});
  svg::drawAxes(document, panel, "t (s)", "speed");

  auto toPage = [&panel](const std::vector<svg::Point>& points) {
    std::vector<svg::Point> page;
    for (const svg::Point& p : points) {
      page.push_back(panel.toPage(p));
    }
    return page;
  };
  document.polyline(toPage(bound), std::string("stroke=\"") + boundColour +
                                       R"(" stroke-width="1.5" stroke-dasharray="2 3")");
  document.polyline(toPage(linear), std::string("stroke=\"") + pathColour +
                                        R"(" stroke-width="2" stroke-linejoin="round")");
  document.polyline(toPage(angular), std::string("stroke=\"") + turnColour +
                                         R"(" stroke-width="2" stroke-dasharray="6 4")");
  // The legend sits above the panel, where it hides no curve.
  const std::string legend = R"(font-family="sans-serif" font-size="11" text-anchor="end" fill=")";
  const double right = panel.left() + panel.width();
  document.text({right, top - 8}, "|theta'| (rad/s), dashed", legend + turnColour + "\"");
  document.text({right - 150, top - 8}, "|(x', y')| (m/s)", legend + pathColour + "\"");
  document.text({right - 260, top - 8}, "its bound, dotted", legend + boundColour + "\"");
}

/// The direct trajectories `trajectory` is made of: itself, or a composed
/// one's pieces.
std::vector<const KRDirectTrajectoryPose2D*> directPieces(const KRTrajectoryPose2D& trajectory) {
  if (const auto* direct = dynamic_cast<const KRDirectTrajectoryPose2D*>(&trajectory)) {
    return {direct};
  }
  std::vector<const KRDirectTrajectoryPose2D*> pieces;
  if (const auto* composed = dynamic_cast<const KRTrajectoryPose2DComposed*>(&trajectory)) {
    for (const auto& piece : composed->pieces()) {
      pieces.push_back(piece.get());
    }
  }
  return pieces;
}

/// The paths as described, one line per piece, when a blend made some
/// piece drive another path; none when every piece drives its path as
/// described (then the track shows it).
std::vector<std::vector<svg::Point>> describedLines(const KRTrajectoryPose2D& trajectory) {
  const std::vector<const KRDirectTrajectoryPose2D*> pieces = directPieces(trajectory);
  const bool blended = std::any_of(pieces.begin(), pieces.end(), [](const auto* piece) {
    return &piece->path() != &piece->describedPath();
  });
  if (!blended) {
    return {};
  }
  std::vector<std::vector<svg::Point>> lines;
  for (const KRDirectTrajectoryPose2D* piece : pieces) {
    lines.push_back(pathPoints(piece->describedPath()));
  }
  return lines;
}

/// The paths as described, thin and dashed over the track, with a legend
/// above the panel that tells them from the driven path.
void drawDescribed(svg::Document& document, const svg::Panel& panel,
                   const std::vector<std::vector<svg::Point>>& lines, float blend) {
  for (const std::vector<svg::Point>& line : lines) {
    std::vector<svg::Point> page;
    for (const svg::Point& p : line) {
      page.push_back(panel.toPage(p));
    }
    document.polyline(page, std::string("stroke=\"") + describedColour +
                                R"(" stroke-width="1.2" stroke-dasharray="5 4")");
  }
  const std::string legend = R"(font-family="sans-serif" font-size="11" text-anchor="end" fill=")";
  const double right = panel.left() + panel.width();
  document.text({right, panel.top() - 8}, "path as described, dashed",
                legend + describedColour + "\"");
  document.text({right - 150, panel.top() - 8},
                "path driven, blend tolerance " + number(blend) + " m", legend + pathColour + "\"");
}

/// The track of the trajectory with its heading at the printed sample
/// times (and the paths as described, when a blend of `blend` meters made
/// it drive others), and below it the speeds over time.
std::string trajectoryPicture(const KR::KRValue& description, const KRTrajectoryPose2D& trajectory,
                              float blend) {
  const double duration = KR::Math::toSeconds(trajectory.duration());
  const std::vector<double> times = sampleTimes(duration, drawnIntervals);
  std::vector<Pose2DPosVelAcc> states;
  std::vector<double> bounds;
  std::vector<svg::Point> points;
  for (const double t : times) {
    states.push_back(trajectory.stateAt(t));
    bounds.push_back(trajectory.speedBoundAt(t));
    points.push_back(at(states.back().position));
  }
  const Pose2D start = states.front().position;
  const Pose2D end = states.back().position;

  // The panel shows the paths as described too, with room above it for
  // their legend.
  const std::vector<std::vector<svg::Point>> described = describedLines(trajectory);
  std::vector<svg::Point> shown = points;
  for (const std::vector<svg::Point>& line : described) {
    shown.insert(shown.end(), line.begin(), line.end());
  }
  const svg::Panel track = trackPanel(shown, marginTop + (described.empty() ? 0 : 16));
  const double speedTop = track.top() + track.height() + axisRoom + 16;
  svg::Document document(pageWidth, speedTop + speedPanelHeight + axisRoom);
  drawTitle(document, "trajectory", description,
            "duration " + number(duration) +
                " s; start pose in green, end pose in red, heading every eighth of the "
                "duration in grey");
  drawTrack(document, track, points, start, end, {});
  if (!described.empty()) {
    drawDescribed(document, track, described, blend);
  }
  const std::vector<double> headingTimes = sampleTimes(duration, printedIntervals);
  for (std::size_t i = 1; i + 1 < headingTimes.size(); ++i) {
    const Pose2D pose = trajectory.stateAt(headingTimes[i]).position;
    document.arrow(track.toPage(at(pose)), static_cast<double>(pose.theta), 22, headingColour);
  }
  drawSpeeds(document, speedTop, times, states, bounds, duration);
  return document.str();
}

/// A trajectory factory that prints every call it receives on standard
/// output as it arrives and counts them.
class PrintingFactory final : public TrajectoryFactory {
 public:
  PrintingFactory()
      : TrajectoryFactory(Limits(1, 1), Limits(1, 1),
                          RationalSeconds(boost::rational<int>(1, 100)), 1.0f) {}

  void addLine(const Position2D& end) override {
    print("addLine(" + describe(end) + ")");
  }
  void addCircle(const Position2D& centre, float angle) override {
    print("addCircle(" + describe(centre) + ", " + number(angle) + ")");
  }
  void addFlat(const Position2D& firstCentre, float firstAngle, const Position2D& straightEnd,
               const Position2D& secondCentre, float secondAngle) override {
    print("addFlat(" + describe(firstCentre) + ", " + number(firstAngle) + ", " +
          describe(straightEnd) + ", " + describe(secondCentre) + ", " + number(secondAngle) +
          ")");
  }

  int calls() const { return calls_; }

 private:
  static std::string describe(const Position2D& p) {
    return "Position2D(x=" + number(p.x) + ", y=" + number(p.y) + ")";
  }
  void print(const std::string& call) {
    std::cout << call << std::endl;
    ++calls_;
  }
  int calls_ = 0;
};

/// The path builder the options ask for: the general reader, or the direct
/// one wrapped to the same type.
boost::function<KRPath2D*(const Pose2D&)> readPathBuilder(const KR::KRValue& description,
                                                          const PathOptions& options) {
  boost::function<KRPath2D*(const Pose2D&)> builder;
  if (!options.direct) {
    KR::ValueUtils::extractPath2DBuilderFromKRValue(description, options.name, builder);
    return builder;
  }
  boost::function<KRDirectPath2D*(const Pose2D&)> direct;
  KR::ValueUtils::extractDirectPath2DBuilderFromKRValue(description, options.name, direct);
  return [direct](const Pose2D& start) -> KRPath2D* { return direct(start); };
}

std::string feedFactory(const KR::KRValue& description, const PathOptions& options) {
  PrintingFactory factory;
  if (options.direct) {
    KR::ValueUtils::extractDirectPath2DIntoTrajectoryFactory(description, options.name, factory);
  } else {
    KR::ValueUtils::extractPath2DIntoTrajectoryFactory(description, options.name, factory);
  }
  return "pieces added: " + std::to_string(factory.calls());
}

/// The trajectory builder of the reader --kind names, every factory with the
/// --blend tolerance, wrapped to the general type.
boost::function<KRTrajectoryPose2D*(const Pose2DPosVelAcc&)> readTrajectoryBuilder(
    const KR::KRValue& description, const PathOptions& options, const RationalSeconds& period,
    const Limits& first, const Limits& second) {
  using namespace KR::Math::Trajectory;
  TrajectoryPose2DBuilder builder;
  if (options.kind == "direct") {
    DirectTrajectoryPose2DBuilder direct;
    KR::ValueUtils::extractDirectTrajectoryPose2DBuilderFromKRValue(
        description, options.name, period, first, second, options.fraction, options.blend, direct);
    builder = [direct](const Pose2DPosVelAcc& start) -> KRTrajectoryPose2D* {
      return direct(start);
    };
  } else if (options.kind == "composed") {
    TrajectoryPose2DComposedBuilder composed;
    KR::ValueUtils::extractTrajectoryPose2DComposedBuilderFromKRValue(
        description, options.name, period, first, second, options.fraction, options.blend,
        composed);
    builder = [composed](const Pose2DPosVelAcc& start) -> KRTrajectoryPose2D* {
      return composed(start);
    };
  } else {
    KR::ValueUtils::extractTrajectoryPose2DBuilderFromKRValue(
        description, options.name, period, first, second, options.fraction, options.blend, builder);
  }
  return builder;
}

}  // namespace

std::string runPath(const KR::KRValue& description, const PathOptions& options) {
  const Pose2D start = readStart(options.start);
  if (options.factory) {
    return feedFactory(description, options);
  }
  const std::unique_ptr<KRPath2D> path(readPathBuilder(description, options)(start));
  if (!path) {
    throw std::runtime_error("the path builder made no path");
  }
  if (!options.svg.empty()) {
    writeFile(options.svg, pathPicture(description, *path));
  }
  return formatPath(*path);
}

std::string runTrajectory(const KR::KRValue& description, const PathOptions& options) {
  const Pose2D start = readStart(options.start);
  const RationalSeconds period = readPeriod(options.period);
  const Limits first = readLimits(options.limits, "--limits");
  const Limits second = readLimits(options.secondLimits, "--second-limits");
  const std::unique_ptr<KRTrajectoryPose2D> trajectory(
      readTrajectoryBuilder(description, options, period, first, second)(
          Pose2DPosVelAcc(start, Pose2D(), Pose2D())));
  if (!trajectory) {
    throw std::runtime_error("the trajectory builder made no trajectory");
  }
  if (!options.svg.empty()) {
    writeFile(options.svg, trajectoryPicture(description, *trajectory, options.blend));
  }
  return formatTrajectory(*trajectory);
}

}  // namespace krvaluetool
