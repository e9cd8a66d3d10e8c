// The texts of every message of the library and the ways they are joined to
// the caller's names.
//
// The texts are the platform's established wording, kept as they are: some
// end with a full stop and some do not, some run straight into the name, and
// "KRMotion" takes a colon in thrown messages but none in the clip warning.
#include "krvalueutils_messages.h"

#include <kr/valueutils/locate.h>

#include <iostream>
#include <sstream>
#include <stdexcept>

namespace KR {
namespace ValueUtils {
namespace detail {
namespace {

// How a text is joined to the argument name.
enum class Form {
  // "KRMotion: " + name + text, the text beginning with a blank.
  Prefixed,
  // name + text, with nothing between (a text without a leading blank runs
  // into the name).
  Bare,
  // name + " " + text, the text beginning with ": ", so that a blank stands
  // before the colon.
  Separated,
  // The text alone, without the name.
  Alone,
};

struct Entry {
  Form form;
  const char* text;
};

Entry entryOf(Message message) {
  switch (message) {
    case Message::ArrayInvalid:
      return {Form::Prefixed, " KRValue is invalid."};
    case Message::ArrayEmpty:
      return {Form::Prefixed, " KRValue is empty."};
    case Message::NotAnArray:
      return {Form::Prefixed, " KRValue is not an array."};
    case Message::NotAnAxisMask:
      return {Form::Prefixed, " Expected an axis mask."};
    case Message::NotAFrame:
      return {Form::Prefixed, " Expected a frame."};
    case Message::BoolsInvalid:
      return {Form::Separated, ": Expected a bool or vector of bool but found an invalid KRValue"};
    // "found an invalid" is the reader's wording even for a valid value of the
    // wrong kind.
    case Message::BoolsWrongKind:
      return {Form::Separated,
              ": Expected a bool, int, float or array but found an invalid KRValue"};
    case Message::MapInvalid:
      return {Form::Bare, " KRValue is invalid"};
    case Message::MapNotAnArray:
      return {Form::Bare, " KRValue is not valid: it should be an array."};
    // "length 2 arrays" even when entries are read as [key, skipped, value];
    // callers match on this text, line feed included.
    case Message::MapMalformedEntry:
      return {Form::Bare,
              " KRValue is not valid. It should be an array of length 2 arrays, the first "
              "element being an std::string.\n"};
    case Message::Position2DNotValid:
      return {Form::Prefixed, " Position2D is not valid. It has to be [x, y]."};
    case Message::Pose2DNotValid:
      return {Form::Prefixed, " Pose2D is not valid. It has to be [x, y, theta]."};
    case Message::Position3DNotValid:
      return {Form::Prefixed, " Expected an KRValue with 3 floats for x, y, z."};
    case Message::Position6DNotValid:
      return {Form::Prefixed, " Expected an KRValue with 6 floats for x, y, z, wx, wy, wz."};
    case Message::Position6DVectorNotValid:
      return {Form::Prefixed, " Expected an vector with 6 floats for x, y, z, wx, wy, wz."};
    case Message::TransformSize:
      return {Form::Prefixed, " Expected an KRValue with 12 or 16 floats."};
    case Message::WrongTransform:
      return {Form::Prefixed, " Wrong Transform given."};
    case Message::ControlPointShape:
      return {Form::Prefixed, " Malformed Control Point: Invalid, not Array or not of length 3."};
    case Message::ControlPointFirstParameter:
      return {Form::Prefixed,
              " Malformed Control Point First Interpolation Param: Invalid, not Array or not of "
              "length 3. Expected Key of form [float, [int, float, float]]."};
    case Message::ControlPointSecondParameter:
      return {Form::Prefixed,
              " Malformed Control Point Second Interpolation Param: Invalid, not Array or not of "
              "length 3. Expected Key of form [float, [int, float, float]]."};
    case Message::ControlPointTypes:
      return {Form::Prefixed,
              " Incorrect argument types within well formed control point. Should be "
              "[float,[int,float,float],[int,float,float]]"};
    case Message::WrongDirectPathFormat:
      return {Form::Bare, " Wrong DirectPath2D type format"};
    // The direct trajectory's first check has the path readers' wording too.
    case Message::WrongPathFormat:
      return {Form::Bare, " Wrong Path2D type format"};
    case Message::InvalidLine:
      return {Form::Bare, "Invalid Path2DStraightLine KRValue"};
    case Message::InvalidCircle:
      return {Form::Bare, "Invalid Path2DArcOfCircle KRValue"};
    case Message::InvalidFlat:
      return {Form::Bare, "Invalid Path2DFlat KRValue"};
    case Message::UnknownDirectPath:
      return {Form::Bare, " Unknown DirectPath2D type"};
    case Message::EmptyComposedPath:
      return {Form::Bare, " Empty Composed Path2D"};
    // Both direct trajectory kinds report a wrong size with the holonomic text.
    case Message::InvalidDirectTrajectorySize:
      return {Form::Bare, "Invalid HolonomicTrajectoryPose2D KRValue"};
    case Message::UnknownDirectTrajectory:
      return {Form::Bare, " Unknown DirectTrajectoryPose2D type"};
    case Message::WrongComposedTrajectoryFormat:
      return {Form::Bare, " Wrong TrajectoryPose2DComposed format"};
    case Message::EmptyComposedTrajectory:
      return {Form::Bare, " Empty Composed TrajectoryPose2D"};
    case Message::WrongTrajectoryFormat:
      return {Form::Bare, " Wrong TrajectoryPose2D type format"};
    case Message::RestRequestTooShort:
      return {Form::Bare, " KRValue size should be superior to 2."};
    case Message::RestSecondNotStringOrArray:
      return {Form::Bare, " KRValue should be a string or a vector of angles."};
    // The one message of the rest-request reader without the argument name.
    case Message::RestSecondElementKind:
      return {Form::Alone,
              "KRValue should be a string, a vector of floats or a vector of strings."};
    case Message::StatusTooShort:
      return {Form::Bare, ": Invalid KRValue size."};
    case Message::TouchInvalid:
      return {Form::Bare, " Your collection of Touch was invalid."};
    // No blank after the name: it runs straight into "Your".
    case Message::NavigationInvalid:
      return {Form::Bare, "Your collection of Navigation Position2D was invalid."};
    case Message::MetricalDataFormat:
      return {Form::Bare, " Wrong input MetricalData type format"};
    case Message::SupportSequenceSize:
      return {Form::Prefixed, " Expected an KRValue of size 3."};
    case Message::SupportSequenceName:
      return {Form::Prefixed, " Expected a string as first element."};
    case Message::SupportSequencesNotAnArray:
      return {Form::Prefixed, " SupportSequence KRValue is not an array"};
    case Message::SupportSequencesSameName:
      return {Form::Prefixed, " At least two support sequences containt the same name."};
  }
  // Not reached: every message is handled above, and the compiler warns when
  // one is added without a text.
  return {Form::Alone, ""};
}

std::string prefixed(const std::string& name, const char* text) {
  return "KRMotion: " + name + text;
}

std::string joined(const Entry& entry, const std::string& name) {
  switch (entry.form) {
    case Form::Prefixed:
      return prefixed(name, entry.text);
    case Form::Bare:
      return name + entry.text;
    case Form::Separated:
      return name + " " + entry.text;
    case Form::Alone:
      break;
  }
  return entry.text;
}

// The field form of the number readers: name, a blank, the field name, then
// the text beginning with ": ". The invalid value gets a longer text.
[[noreturn]] void failExpected(const KR::KRValue& value, const std::string& name,
                               const std::string& fieldName, const char* kind) {
  noteFailureAt(value);
  std::string text = name + " " + fieldName + ": Expected a " + kind;
  if (!value.isValid()) {
    text += " but found an invalid KRValue";
  }
  throw std::runtime_error(text);
}

}  // namespace

const std::string kKRValueField = "KRValue";

void fail(Message message, const KR::KRValue& at, const std::string& name) {
  noteFailureAt(at);
  throw std::runtime_error(joined(entryOf(message), name));
}

void failUnlocated(Message message, const std::string& name) {
  throw std::runtime_error(joined(entryOf(message), name));
}

void failExpectedFloat(const KR::KRValue& value, const std::string& name,
                       const std::string& fieldName) {
  failExpected(value, name, fieldName, "float");
}

void failExpectedInt(const KR::KRValue& value, const std::string& name,
                     const std::string& fieldName) {
  failExpected(value, name, fieldName, "int");
}

void failUnsupportedRestMode(const KR::KRValue& at, const std::string& name,
                             const std::string& modeName) {
  noteFailureAt(at);
  throw std::runtime_error(name + " unsupported mode: " + modeName);
}

void failUnknownRestReflexMode(int number) {
  throw std::runtime_error("Unknown REST_REFLEX_MODE: " + std::to_string(number));
}

// An empty name leaves two blanks between "convert" and "to".
void failUnknownRestReflexModeName(const std::string& modeName) {
  throw std::runtime_error("Cannot convert " + modeName + " to REST_REFLEX_MODE.");
}

// Numbers carry a sign and a decimal point with six significant digits
// (+1.50000, -0.300000); floats are widened to double for printing.
std::string clipWarning(float before, float after, float min, float max, const std::string& name,
                        const std::string& fieldName) {
  std::ostringstream text;
  text.flags(text.flags() | std::ios::showpos | std::ios::showpoint | std::ios::left);
  text << "KRMotion " << name << ": " << fieldName << " value " << double(before)
       << " is clipped to: " << double(after) << " because it must be in range ["
       << double(min) << " <-> " << double(max) << "]";
  return text.str();
}

std::string forcedInterpolationTypeWarning() {
  return "angleInterpolationBezier received an unexpected interpolation type. Forced to "
         "BEZIER_AUTO.";
}

std::string invalidConfigWarning(const KR::KRValue& name) {
  return "Config: " + static_cast<const std::string&>(name) + " invalid value.";
}

void reportRepairedTransform(const std::string& name) {
  std::cerr << prefixed(name, " It is not exactly a transform.") << std::endl;
}

}  // namespace detail
}  // namespace ValueUtils
}  // namespace KR
