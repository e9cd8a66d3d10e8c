// Every message of the library: what the readers throw, the warnings they
// log and the one report on standard error; not installed.
//
// A reader names what went wrong (a Message) and passes the caller's names;
// krvalueutils_messages.cpp holds each text and the way it is joined to the
// names. Everything here is out of line and reached only on the failure or
// warning path, so a reader's success path composes no text.
#pragma once

#include <kr/krvalue.h>

#include <string>

namespace KR {
namespace ValueUtils {
namespace detail {

/// The messages thrown with the caller's argument name, by the reader family
/// that throws them.
enum class Message {
  // The shape check of an array (checkArrayFromKRValue).
  ArrayInvalid,
  ArrayEmpty,
  NotAnArray,
  // Axis masks and frames.
  NotAnAxisMask,
  NotAFrame,
  // The bool-list and key/value map readers.
  BoolsInvalid,
  BoolsWrongKind,
  MapInvalid,
  MapNotAnArray,
  MapMalformedEntry,
  // Single geometry records.
  Position2DNotValid,
  Pose2DNotValid,
  Position3DNotValid,
  Position6DNotValid,
  Position6DVectorNotValid,
  TransformSize,
  WrongTransform,
  // Interpolation keys.
  ControlPointShape,
  ControlPointFirstParameter,
  ControlPointSecondParameter,
  ControlPointTypes,
  // Path descriptions.
  WrongDirectPathFormat,
  WrongPathFormat,
  InvalidLine,
  InvalidCircle,
  InvalidFlat,
  UnknownDirectPath,
  EmptyComposedPath,
  // Trajectory descriptions.
  InvalidDirectTrajectorySize,
  UnknownDirectTrajectory,
  WrongComposedTrajectoryFormat,
  EmptyComposedTrajectory,
  WrongTrajectoryFormat,
  // Rest requests.
  RestRequestTooShort,
  RestSecondNotStringOrArray,
  RestSecondElementKind,
  // Sensor and status records.
  StatusTooShort,
  TouchInvalid,
  NavigationInvalid,
  MetricalDataFormat,
  // Support sequences.
  SupportSequenceSize,
  SupportSequenceName,
  SupportSequencesNotAnArray,
  SupportSequencesSameName,
};

/// Throws std::runtime_error with `message` joined to `name`, after noting
/// `at`, the value whose check failed, for a locateFailure in progress.
[[noreturn]] void fail(Message message, const KR::KRValue& at, const std::string& name);
/// As fail, for a check of something that is not a value.
[[noreturn]] void failUnlocated(Message message, const std::string& name);

/// Throws "<name> <fieldName>: Expected a float", or the same followed by
/// " but found an invalid KRValue" when `value` is invalid; `value` is noted
/// as fail notes `at`.
[[noreturn]] void failExpectedFloat(const KR::KRValue& value, const std::string& name,
                                    const std::string& fieldName);
/// As failExpectedFloat, with "int" for "float".
[[noreturn]] void failExpectedInt(const KR::KRValue& value, const std::string& name,
                                  const std::string& fieldName);

/// Throws "<name> unsupported mode: <modeName>"; `at` is the mode's value.
[[noreturn]] void failUnsupportedRestMode(const KR::KRValue& at, const std::string& name,
                                          const std::string& modeName);
/// Throws "Unknown REST_REFLEX_MODE: <number>".
[[noreturn]] void failUnknownRestReflexMode(int number);
/// Throws "Cannot convert <modeName> to REST_REFLEX_MODE.".
[[noreturn]] void failUnknownRestReflexModeName(const std::string& modeName);

/// The field name "KRValue", under which list elements and durations are read.
extern const std::string kKRValueField;

/// The warning of clipAndWarn: the number before and after clipping, and the
/// range as given.
std::string clipWarning(float before, float after, float min, float max, const std::string& name,
                        const std::string& fieldName);
/// The warning of a key whose interpolation type was forced to BEZIER_AUTO.
std::string forcedInterpolationTypeWarning();
/// The warning of a motion configuration entry that was skipped; `name` is
/// taken with the value's string conversion.
std::string invalidConfigWarning(const KR::KRValue& name);

/// Reports a transform read after repair as one line on standard error.
void reportRepairedTransform(const std::string& name);

}  // namespace detail
}  // namespace ValueUtils
}  // namespace KR
