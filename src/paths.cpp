// Path descriptions: ["Line", ...], ["Circle", ...], ["Flat", ...] and
// ["Composed", ...] turned into path builders of the geometry library or
// added to a trajectory factory.
//
// The builder and the factory forms share one decoder, so they check in the
// same order and report the same messages. Every element of a direct path is
// read before the geometry library is asked for anything: a failure adds
// nothing to a factory and leaves a builder as it was.
#include <kr/valueutils/paths.h>
#include <kr/math/position2d.h>
#include <kr/math/trajectory/pathfactory.h>
#include <kr/math/trajectory/trajectoryfactory.h>

#include "builders_internal.h"
#include "geometry_internal.h"
#include "internal.h"

#include <string>
#include <variant>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

using KR::Math::Position2D;
using KR::Math::Trajectory::DirectPath2DBuilder;
using KR::Math::Trajectory::KRPath2D;
using KR::Math::Trajectory::Path2DBuilder;
using KR::Math::Trajectory::PathFactory;
using KR::Math::Trajectory::TrajectoryFactory;

using detail::Message;

const char* const kComposed = "Composed";

// The path factory's scale: descriptions are in meters.
const float kScale = 1.0f;

// The three kinds of direct path, each holding the elements after its type
// word under the geometry library's names for them.
struct Line {
  Position2D end;
};

struct Circle {
  Position2D centre;
  float angle;
};

struct Flat {
  Position2D firstCentre;
  float firstAngle;
  Position2D straightEnd;
  Position2D secondCentre;
  float secondAngle;
};

using DirectPath = std::variant<Line, Circle, Flat>;

Position2D readPosition(const KR::KRValue& element, const std::string& name) {
  Position2D position;
  detail::readPosition2D(element, name, position);
  return position;
}

float readFloat(const KR::KRValue& element, const std::string& name) {
  return detail::readFloat(element, name, detail::kKRValueField);
}

void checkSize(const KR::KRValue& value, unsigned int size, Message wrongSize,
               const std::string& name) {
  if (value.getSize() != size) {
    detail::fail(wrongSize, value, name);
  }
}

// Decodes one direct path: the array check, the type word, the size for the
// kind (before any element is read), then the elements in array order (the
// initialisers of a braced list are evaluated in order).
DirectPath readDirectPath(const KR::KRValue& value, const std::string& name) {
  const std::string& word = detail::readTypeWord(value, name, Message::WrongDirectPathFormat);
  if (word == "Line") {
    checkSize(value, 2, Message::InvalidLine, name);
    return Line{readPosition(value[1], name)};
  }
  if (word == "Circle") {
    checkSize(value, 3, Message::InvalidCircle, name);
    return Circle{readPosition(value[1], name), readFloat(value[2], name)};
  }
  if (word == "Flat") {
    checkSize(value, 6, Message::InvalidFlat, name);
    return Flat{readPosition(value[1], name), readFloat(value[2], name),
                readPosition(value[3], name), readPosition(value[4], name),
                readFloat(value[5], name)};
  }
  detail::fail(Message::UnknownDirectPath, value[0], name);
}

DirectPath2DBuilder builderOf(const PathFactory& factory, const Line& line) {
  return factory.lineBuilder(line.end);
}

DirectPath2DBuilder builderOf(const PathFactory& factory, const Circle& circle) {
  return factory.circleBuilder(circle.centre, circle.angle);
}

DirectPath2DBuilder builderOf(const PathFactory& factory, const Flat& flat) {
  return factory.flatPathBuilder(flat.firstCentre, flat.firstAngle, flat.straightEnd,
                                 flat.secondCentre, flat.secondAngle);
}

void add(TrajectoryFactory& factory, const Line& line) { factory.addLine(line.end); }

void add(TrajectoryFactory& factory, const Circle& circle) {
  factory.addCircle(circle.centre, circle.angle);
}

void add(TrajectoryFactory& factory, const Flat& flat) {
  factory.addFlat(flat.firstCentre, flat.firstAngle, flat.straightEnd, flat.secondCentre,
                  flat.secondAngle);
}

DirectPath2DBuilder makeBuilder(const PathFactory& factory, const DirectPath& path) {
  return std::visit([&factory](const auto& piece) { return builderOf(factory, piece); }, path);
}

void addTo(TrajectoryFactory& factory, const DirectPath& path) {
  std::visit([&factory](const auto& piece) { add(factory, piece); }, path);
}

}  // namespace

void extractDirectPath2DBuilderFromKRValue(const KR::KRValue& value, const std::string& name,
                                           DirectPath2DBuilder& builder) {
  const DirectPath path = readDirectPath(value, name);
  const PathFactory factory(kScale);
  DirectPath2DBuilder made = makeBuilder(factory, path);
  builder.swap(made);
}

void extractPath2DBuilderFromKRValue(const KR::KRValue& value, const std::string& name,
                                     Path2DBuilder& builder) {
  if (detail::readTypeWord(value, name, Message::WrongPathFormat) != kComposed) {
    DirectPath2DBuilder direct;
    extractDirectPath2DBuilderFromKRValue(value, name, direct);
    Path2DBuilder wrapped = detail::upcastBuilder<KRPath2D>(direct);
    builder.swap(wrapped);
    return;
  }
  // No count check: ["Composed"] gives the geometry library an empty list.
  const PathFactory factory(kScale);
  std::vector<DirectPath2DBuilder> pieces(value.getSize() - 1);
  for (unsigned int i = 1; i < value.getSize(); ++i) {
    extractDirectPath2DBuilderFromKRValue(value[static_cast<int>(i)], name, pieces[i - 1]);
  }
  Path2DBuilder wrapped = detail::upcastBuilder<KRPath2D>(factory.composedPathBuilder(pieces));
  builder.swap(wrapped);
}

void extractDirectPath2DIntoTrajectoryFactory(const KR::KRValue& value, const std::string& name,
                                              TrajectoryFactory& factory) {
  addTo(factory, readDirectPath(value, name));
}

void extractPath2DIntoTrajectoryFactory(const KR::KRValue& value, const std::string& name,
                                        TrajectoryFactory& factory) {
  if (detail::readTypeWord(value, name, Message::WrongPathFormat) != kComposed) {
    extractDirectPath2DIntoTrajectoryFactory(value, name, factory);
    return;
  }
  if (value.getSize() == 1) {
    detail::fail(Message::EmptyComposedPath, value, name);
  }
  // Each piece goes in as soon as it is read; a failing piece leaves the
  // earlier ones in the factory.
  for (unsigned int i = 1; i < value.getSize(); ++i) {
    extractDirectPath2DIntoTrajectoryFactory(value[static_cast<int>(i)], name, factory);
  }
}

}  // namespace ValueUtils
}  // namespace KR
