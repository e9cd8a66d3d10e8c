// Path descriptions: ["Line", ...], ["Circle", ...], ["Flat", ...] and
// ["Composed", ...] turned into path builders of the geometry library or
// added to a trajectory factory.
//
// The builder and the factory forms share one decoder, so they check in the
// same order and report the same messages. Every element of a direct path is
// read before the geometry library is asked for anything: a failure adds
// nothing to a factory and leaves a builder as it was.
#include <kr/krvalueutils.h>

#include "krvalueutils_builders_internal.h"
#include "krvalueutils_geometry_internal.h"
#include "krvalueutils_internal.h"

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

using KR::Math::Pose2D;
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

enum class DirectKind { Line, Circle, Flat };

// One decoded direct path: its kind and the elements after the type word, in
// array order (p1 is element 1, f2 element 2, ...). A line uses p1, a circle
// p1 and f2, a flat path all five.
struct DirectPath {
  DirectKind kind;
  Position2D p1;
  float f2 = 0.0f;
  Position2D p3;
  Position2D p4;
  float f5 = 0.0f;
};

Position2D readPosition(const KR::KRValue& element, const std::string& name) {
  Position2D position;
  detail::readPosition2D(element, name, position);
  return position;
}

float readFloat(const KR::KRValue& element, const std::string& name) {
  return detail::readFloat(element, name, detail::kKRValueField);
}

// Element 0 as a string, which the caller has checked it is.
const std::string& typeWord(const KR::KRValue& value) {
  return static_cast<const std::string&>(value[0]);
}

bool isComposed(const KR::KRValue& value) { return typeWord(value) == kComposed; }

// Decodes one direct path: the array check, the type word, the size for the
// kind (before any element is read), then the elements in array order.
DirectPath readDirectPath(const KR::KRValue& value, const std::string& name) {
  detail::checkArray(value, name);
  if (!value[0].isString()) {
    detail::fail(Message::WrongDirectPathFormat, name);
  }
  const std::string& word = typeWord(value);
  const unsigned int size = value.getSize();
  DirectPath path;
  if (word == "Line") {
    if (size != 2) {
      detail::fail(Message::InvalidLine, name);
    }
    path.kind = DirectKind::Line;
    path.p1 = readPosition(value[1], name);
    return path;
  }
  if (word == "Circle") {
    if (size != 3) {
      detail::fail(Message::InvalidCircle, name);
    }
    path.kind = DirectKind::Circle;
    path.p1 = readPosition(value[1], name);
    path.f2 = readFloat(value[2], name);
    return path;
  }
  if (word == "Flat") {
    if (size != 6) {
      detail::fail(Message::InvalidFlat, name);
    }
    path.kind = DirectKind::Flat;
    path.p1 = readPosition(value[1], name);
    path.f2 = readFloat(value[2], name);
    path.p3 = readPosition(value[3], name);
    path.p4 = readPosition(value[4], name);
    path.f5 = readFloat(value[5], name);
    return path;
  }
  detail::fail(Message::UnknownDirectPath, name);
}

DirectPath2DBuilder makeBuilder(const PathFactory& factory, const DirectPath& path) {
  switch (path.kind) {
    case DirectKind::Line:
      return factory.lineBuilder(path.p1);
    case DirectKind::Circle:
      return factory.circleBuilder(path.p1, path.f2);
    case DirectKind::Flat:
      break;
  }
  return factory.flatPathBuilder(path.p1, path.f2, path.p3, path.p4, path.f5);
}

void addTo(TrajectoryFactory& factory, const DirectPath& path) {
  switch (path.kind) {
    case DirectKind::Line:
      factory.addLine(path.p1);
      return;
    case DirectKind::Circle:
      factory.addCircle(path.p1, path.f2);
      return;
    case DirectKind::Flat:
      break;
  }
  factory.addFlat(path.p1, path.f2, path.p3, path.p4, path.f5);
}

// The checks the two general functions make before choosing a kind.
void checkGeneralPath(const KR::KRValue& value, const std::string& name) {
  detail::checkArray(value, name);
  if (!value[0].isString()) {
    detail::fail(Message::WrongPathFormat, name);
  }
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
  checkGeneralPath(value, name);
  if (!isComposed(value)) {
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
  checkGeneralPath(value, name);
  if (!isComposed(value)) {
    extractDirectPath2DIntoTrajectoryFactory(value, name, factory);
    return;
  }
  if (value.getSize() == 1) {
    detail::fail(Message::EmptyComposedPath, name);
  }
  // Each piece goes in as soon as it is read; a failing piece leaves the
  // earlier ones in the factory.
  for (unsigned int i = 1; i < value.getSize(); ++i) {
    extractDirectPath2DIntoTrajectoryFactory(value[static_cast<int>(i)], name, factory);
  }
}

}  // namespace ValueUtils
}  // namespace KR
