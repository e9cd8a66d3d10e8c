// Helpers shared by the source files of libkrvalueutils; not installed.
//
// The readers' success paths are inline here so that record readers pay no
// call per number; everything that builds a message lives out of line, on the
// failure path only (krvalueutils_messages.h).
#pragma once

#include <kr/krvalue.h>
#include <kr/valueutils/locate.h>

#include "krvalueutils_messages.h"

#include <climits>
#include <string>

namespace KR {
namespace ValueUtils {
namespace detail {

/// True when warnings of the "KRValueUtils" category would be handed on.
bool warningsEnabled();

/// Logs `text` as a warning from `function` in the "KRValueUtils" category.
void warn(const char* function, const std::string& text);

inline bool isNumber(const KR::KRValue& value) { return value.isInt() || value.isFloat(); }

/// The text of a value through its own string conversion, which decides what
/// a non-string gives; as it is expected to throw for one, a non-string is
/// first noted as the failing value for a locateFailure in progress.
inline const std::string& stringOf(const KR::KRValue& value) {
  if (!value.isString()) {
    noteFailureAt(value);
  }
  return static_cast<const std::string&>(value);
}

inline void checkArray(const KR::KRValue& value, const std::string& name) {
  if (value.isArray() && value.getSize() != 0) {
    return;
  }
  if (!value.isValid()) {
    fail(Message::ArrayInvalid, value, name);
  }
  if (value.isArray()) {
    fail(Message::ArrayEmpty, value, name);
  }
  fail(Message::NotAnArray, value, name);
}

/// Element 0 of a path or trajectory description, its type word. Throws
/// checkArray's messages, then `wrongFormat` when element 0 is not a string.
inline const std::string& readTypeWord(const KR::KRValue& value, const std::string& name,
                                       Message wrongFormat) {
  checkArray(value, name);
  if (!value[0].isString()) {
    fail(wrongFormat, value[0], name);
  }
  return static_cast<const std::string&>(value[0]);
}

/// The number of a value already found to be an int or a float, as a float:
/// no message can be needed, so no names are taken.
inline float numberOf(const KR::KRValue& number) {
  if (number.isFloat()) {
    return static_cast<float>(number);
  }
  return static_cast<float>(static_cast<int>(number));
}

inline float readFloat(const KR::KRValue& value, const std::string& name,
                       const std::string& fieldName) {
  if (value.isFloat()) {
    return static_cast<float>(value);
  }
  if (value.isInt()) {
    return static_cast<float>(static_cast<int>(value));
  }
  failExpectedFloat(value, name, fieldName);
}

// Truncates toward zero, saturating where the float lies beyond int (the
// plain conversion would be undefined there); NaN gives 0.
inline int truncateToInt(float f) {
  if (f != f) {
    return 0;
  }
  if (f >= 2147483648.0f) {
    return INT_MAX;
  }
  if (f < -2147483648.0f) {
    return INT_MIN;
  }
  return static_cast<int>(f);
}

inline int readInt(const KR::KRValue& value, const std::string& name,
                   const std::string& fieldName) {
  if (value.isInt()) {
    return static_cast<int>(value);
  }
  if (value.isFloat()) {
    return truncateToInt(static_cast<float>(value));
  }
  failExpectedInt(value, name, fieldName);
}

}  // namespace detail
}  // namespace ValueUtils
}  // namespace KR
