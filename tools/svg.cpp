#include "svg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace krvaluetool {
namespace svg {
namespace {

/// A page coordinate: a hundredth of a unit is finer than any screen shows.
std::string coordinate(double value) { return formatNumber(value, 2); }

std::string pointList(const std::vector<Point>& points) {
  std::string text;
  for (const Point& p : points) {
    text += (text.empty() ? "" : " ") + coordinate(p.x) + "," + coordinate(p.y);
  }
  return text;
}

const char* const gridAttributes = R"(stroke="#e3e3e3" stroke-width="1")";
const char* const zeroAttributes = R"(stroke="#9a9a9a" stroke-width="1")";
const char* const labelAttributes = R"(font-family="sans-serif" font-size="11" fill="#555")";

}  // namespace

std::string formatNumber(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string text = buffer;
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
      text.pop_back();
    }
  }
  return text == "-0" ? "0" : text;
}

Range rangeOf(const std::vector<Point>& points, bool alongX, double minimumWidth) {
  if (points.empty()) {
    return {-minimumWidth / 2, minimumWidth / 2};
  }
  Range range{alongX ? points[0].x : points[0].y, alongX ? points[0].x : points[0].y};
  for (const Point& p : points) {
    const double v = alongX ? p.x : p.y;
    range.low = std::min(range.low, v);
    range.high = std::max(range.high, v);
  }
  if (range.high - range.low < minimumWidth) {
    const double middle = (range.low + range.high) / 2;
    range = {middle - minimumWidth / 2, middle + minimumWidth / 2};
  }
  return range;
}

Range padded(const Range& range, double fraction) {
  const double pad = (range.high - range.low) * fraction;
  return {range.low - pad, range.high + pad};
}

Ticks ticksOf(const Range& range, int count) {
  const double raw = (range.high - range.low) / std::max(count, 1);
  if (!(raw > 0) || !std::isfinite(raw)) {
    return {1.0, {}};
  }
  const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
  const double fraction = raw / magnitude;
  const double step = magnitude * (fraction < 1.5   ? 1
                                   : fraction < 3.5 ? 2
                                   : fraction < 7.5 ? 5
                                                    : 10);
  Ticks ticks{step, {}};
  // Counted from a whole multiple of the step so that sums do not drift.
  const long first = static_cast<long>(std::ceil(range.low / step - 1e-9));
  for (long i = first; static_cast<double>(i) * step <= range.high + step * 1e-9; ++i) {
    ticks.values.push_back(static_cast<double>(i) * step);
  }
  return ticks;
}

std::string formatTick(double value, double step) {
  const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
  return formatNumber(value, decimals);
}

Panel::Panel(double left, double top, double width, double height, Range x, Range y)
    : left_(left), top_(top), width_(width), height_(height), x_(x), y_(y) {}

Panel Panel::withEqualScale(double left, double top, double width, double height, Range x,
                            Range y) {
  const double scale = std::min(width / (x.high - x.low), height / (y.high - y.low));
  const double xMiddle = (x.low + x.high) / 2;
  const double yMiddle = (y.low + y.high) / 2;
  const double xHalf = width / scale / 2;
  const double yHalf = height / scale / 2;
  return Panel(left, top, width, height, {xMiddle - xHalf, xMiddle + xHalf},
               {yMiddle - yHalf, yMiddle + yHalf});
}

Point Panel::toPage(Point data) const {
  return {left_ + (data.x - x_.low) / (x_.high - x_.low) * width_,
          top_ + (y_.high - data.y) / (y_.high - y_.low) * height_};
}

std::string escape(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '"': escaped += "&quot;"; break;
      default: escaped += c;
    }
  }
  return escaped;
}

Document::Document(double width, double height) : width_(width), height_(height) {}

void Document::line(Point from, Point to, const std::string& attributes) {
  body_ += "<line x1=\"" + coordinate(from.x) + "\" y1=\"" + coordinate(from.y) + "\" x2=\"" +
           coordinate(to.x) + "\" y2=\"" + coordinate(to.y) + "\" " + attributes + "/>\n";
}

void Document::polyline(const std::vector<Point>& points, const std::string& attributes) {
  body_ += "<polyline points=\"" + pointList(points) + "\" fill=\"none\" " + attributes + "/>\n";
}

void Document::rect(double left, double top, double width, double height,
                    const std::string& attributes) {
  body_ += "<rect x=\"" + coordinate(left) + "\" y=\"" + coordinate(top) + "\" width=\"" +
           coordinate(width) + "\" height=\"" + coordinate(height) + "\" " + attributes + "/>\n";
}

void Document::circle(Point centre, double radius, const std::string& attributes) {
  body_ += "<circle cx=\"" + coordinate(centre.x) + "\" cy=\"" + coordinate(centre.y) + "\" r=\"" +
           coordinate(radius) + "\" " + attributes + "/>\n";
}

void Document::text(Point at, const std::string& text, const std::string& attributes) {
  body_ += "<text x=\"" + coordinate(at.x) + "\" y=\"" + coordinate(at.y) + "\" " + attributes +
           ">" + escape(text) + "</text>\n";
}

void Document::arrow(Point from, double angle, double length, const std::string& colour) {
  // Page y grows downwards, so a counter-clockwise angle subtracts from y.
  const Point tip{from.x + length * std::cos(angle), from.y - length * std::sin(angle)};
  const double head = 7.0;
  const double spread = 0.45;
  const Point left{tip.x - head * std::cos(angle - spread),
                   tip.y + head * std::sin(angle - spread)};
  const Point right{tip.x - head * std::cos(angle + spread),
                    tip.y + head * std::sin(angle + spread)};
  line(from, tip, "stroke=\"" + colour + "\" stroke-width=\"2\"");
  body_ += "<polygon points=\"" + pointList({tip, left, right}) + "\" fill=\"" + colour + "\"/>\n";
  circle(from, 3, "fill=\"" + colour + "\"");
}

std::string Document::str() const {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
         coordinate(width_) + "\" height=\"" + coordinate(height_) + "\" viewBox=\"0 0 " +
         coordinate(width_) + " " + coordinate(height_) + "\">\n" +
         "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n" + body_ + "</svg>\n";
}

void drawAxes(Document& document, const Panel& panel, const std::string& xTitle,
              const std::string& yTitle) {
  const double left = panel.left();
  const double top = panel.top();
  const double right = left + panel.width();
  const double bottom = top + panel.height();

  const Ticks xTicks = ticksOf(panel.x(), std::max(2, static_cast<int>(panel.width() / 70)));
  for (const double x : xTicks.values) {
    const double pageX = panel.toPage({x, 0}).x;
    document.line({pageX, top}, {pageX, bottom}, x == 0 ? zeroAttributes : gridAttributes);
    document.text({pageX, bottom + 15}, formatTick(x, xTicks.step),
                  std::string(labelAttributes) + " text-anchor=\"middle\"");
  }
  const Ticks yTicks = ticksOf(panel.y(), std::max(2, static_cast<int>(panel.height() / 45)));
  for (const double y : yTicks.values) {
    const double pageY = panel.toPage({0, y}).y;
    document.line({left, pageY}, {right, pageY}, y == 0 ? zeroAttributes : gridAttributes);
    document.text({left - 6, pageY + 4}, formatTick(y, yTicks.step),
                  std::string(labelAttributes) + " text-anchor=\"end\"");
  }
  document.rect(left, top, panel.width(), panel.height(),
                R"(fill="none" stroke="#333" stroke-width="1")");

  document.text({(left + right) / 2, bottom + 32}, xTitle,
                std::string(labelAttributes) + " text-anchor=\"middle\"");
  const Point yTitleAt{left - 42, (top + bottom) / 2};
  document.text(yTitleAt, yTitle,
                std::string(labelAttributes) + " text-anchor=\"middle\" transform=\"rotate(-90 " +
                    coordinate(yTitleAt.x) + " " + coordinate(yTitleAt.y) + ")\"");
}

}  // namespace svg
}  // namespace krvaluetool
