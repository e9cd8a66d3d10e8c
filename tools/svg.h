// A small SVG writer for the tool's pictures: a page of elements, and panels
// that map data coordinates (x to the right, y up) onto a rectangle of it.
#pragma once

#include <string>
#include <vector>

namespace krvaluetool {
namespace svg {

struct Point {
  double x;
  double y;
};

/// An interval of data values; `low` < `high` for a usable range.
struct Range {
  double low;
  double high;
};

/// The smallest range holding every coordinate of `points` (x when
/// `alongX`, else y), widened to `minimumWidth` about its middle when it is
/// narrower; [-minimumWidth / 2, minimumWidth / 2] without points.
Range rangeOf(const std::vector<Point>& points, bool alongX, double minimumWidth);

/// `range` widened on each side by `fraction` of its width.
Range padded(const Range& range, double fraction);

/// Evenly spaced round values (steps of 1, 2 or 5 times a power of ten)
/// inside a range, about `count` of them, and the step between them.
struct Ticks {
  double step;
  std::vector<double> values;
};
Ticks ticksOf(const Range& range, int count);

/// `value` with at most `decimals` decimals, trailing zeros dropped and no
/// negative zero ("1.5", "2", "-0.25"): compact, and the same on every
/// machine.
std::string formatNumber(double value, int decimals);

/// A value as a tick label: as many decimals as `step` needs, no more.
std::string formatTick(double value, double step);

/// A rectangle of the page (left, top, width, height in page units, y down)
/// showing the data in `x` and `y`, with y growing upwards.
class Panel {
 public:
  Panel(double left, double top, double width, double height, Range x, Range y);

  /// A panel whose ranges are widened so that one data unit has the same
  /// length along x and y, keeping the data centred.
  static Panel withEqualScale(double left, double top, double width, double height, Range x,
                              Range y);

  Point toPage(Point data) const;
  double left() const { return left_; }
  double top() const { return top_; }
  double width() const { return width_; }
  double height() const { return height_; }
  const Range& x() const { return x_; }
  const Range& y() const { return y_; }

 private:
  double left_;
  double top_;
  double width_;
  double height_;
  Range x_;
  Range y_;
};

/// Escapes the characters that XML text and attribute values reserve.
std::string escape(const std::string& text);

/// An SVG page built element by element; coordinates are page units (y down).
/// `attributes` are written into the element as they are, e.g.
/// `stroke="#333" stroke-width="2"`.
class Document {
 public:
  Document(double width, double height);

  void line(Point from, Point to, const std::string& attributes);
  void polyline(const std::vector<Point>& points, const std::string& attributes);
  void rect(double left, double top, double width, double height, const std::string& attributes);
  void circle(Point centre, double radius, const std::string& attributes);
  /// `text` is escaped here.
  void text(Point at, const std::string& text, const std::string& attributes);
  /// A line of `length` from `from` in the page direction `angle` (radians,
  /// counter-clockwise as seen on the page), ending in an arrowhead.
  void arrow(Point from, double angle, double length, const std::string& colour);

  /// The whole document, with the XML declaration and a white background.
  std::string str() const;

 private:
  double width_;
  double height_;
  std::string body_;
};

/// Draws the frame of `panel`, a light grid at the ticks of both ranges with
/// their labels below and left of it, darker lines where x = 0 and y = 0 fall
/// inside, and the axis titles.
void drawAxes(Document& document, const Panel& panel, const std::string& xTitle,
              const std::string& yTitle);

}  // namespace svg
}  // namespace krvaluetool
