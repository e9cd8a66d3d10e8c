// Text form of KR::KRValue: JSON syntax, for people, tools and tests.
//
// Kinds map to JSON as follows:
//   invalid  null           bool   true / false
//   int      3, -7          float  3.0, 3e0, -0.5 (a decimal point or an exponent)
//   string   "text"         array  [1, 2.5, "x"]
// A JSON object has no value kind and is rejected.
//
// Built only on the public operations of KR::KRValue, so it works with any
// value library that provides them.
//
// Depth. Neither parsing nor printing recurses: a value nested a million
// levels deep is read and written like a flat one.
//
// Round trip. For every value parseKRValue can produce,
// parseKRValue(printKRValue(v)) == v, and an int never reads back as a float
// or the other way round. Printing goes beyond what parsing produces in two
// places, and there the round trip does not hold:
//   - A NaN or infinite float prints as NaN, Infinity or -Infinity. That text
//     is not JSON and parseKRValue rejects it.
//   - A string that is not valid UTF-8 prints with each byte that does not
//     begin a well-formed UTF-8 sequence (a stray continuation byte, the lead
//     byte of a truncated or overlong sequence, an encoded surrogate, a code
//     point above U+10FFFF) replaced by U+FFFD. Parsing only ever produces
//     valid UTF-8, so this never affects text that came from parseKRValue.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvaluetext_export.h>

#include <iosfwd>
#include <string>

namespace KR {

/// Parses JSON text into a value.
///
/// Numbers: a token without '.', 'e' or 'E' is an int and must lie in
/// [-2147483648, 2147483647]; any other number is a float, read with correct
/// rounding to the nearest float. Magnitudes too small for a float read as
/// denormals or as a zero of the token's sign; magnitudes that round beyond
/// the largest float (3.4028235e38) are rejected. Whitespace may surround the
/// value; anything else after it, a NUL byte included, is an error. Comments,
/// NaN and Infinity are not accepted; a UTF-8 byte order mark may open the
/// text.
///
/// Cost: one pass to count the elements of every array and one to read; the
/// tree is built in place at its final size, so besides the finished value
/// parsing allocates only four bytes per array.
///
/// Errors throw std::runtime_error with the message
///   "KRValue text: <problem> at offset <N>[: <detail>]"
/// where N is a 0-based byte offset into `text` and <problem> is one of:
///   "no value"                   the text is empty or only whitespace;
///                                N is the length of the text
///   "syntax error"               malformed text; N is the byte at which the
///                                text stopped being JSON (the length of the
///                                text when it ended too early); the detail
///                                tells what was found and expected
///   "objects are not supported"  N is the offset of the object's '{'
///   "integer out of range"       N is the offset of the number's first byte
///   "float out of range"         N is the offset of the number's first byte
/// The detail of a range error quotes the number, cut short past 32 bytes.
KRVALUETEXT_API KRValue parseKRValue(const std::string& text);

/// Prints a value as compact JSON text: array elements separated by ", "
/// ("[1, 2.5, \"x\", true, null, []]"), no other whitespace.
///
/// An int prints as a plain integer. A float prints as the shortest text that
/// reads back to the same float, always with a decimal point or an exponent so
/// that it reads back as a float: 3.0f gives "3.0", 1e20f "1e+20", -0.0f
/// "-0.0"; non-finite floats give NaN, Infinity, -Infinity (not JSON, see
/// above). A string escapes the double quote, the backslash and control
/// characters (\b \f \n \r \t, others as \u00XX); other characters, including non-ASCII UTF-8 and DEL,
/// are copied as they are, and bytes that are not valid UTF-8 become U+FFFD.
KRVALUETEXT_API std::string printKRValue(const KRValue& value);

/// Writes printKRValue(value) to the stream.
KRVALUETEXT_API std::ostream& operator<<(std::ostream& out, const KRValue& value);

}  // namespace KR
