// Text form of KR::KRValue: JSON syntax, for people, tools and tests.
//
// Kinds map to JSON as follows:
//   invalid  null           bool   true / false
//   int      3, -7          float  3.0, 3e0, -0.5 (a decimal point or an exponent),
//                                  NaN, Infinity, -Infinity
//   string   "text"         array  [1, 2.5, "x"]
// A JSON object has no value kind and is rejected.
//
// The one extension to JSON: the words NaN, Infinity and -Infinity stand for
// the non-finite floats, wherever a value may stand. They are what
// printKRValue writes for them, and what Python's json module and
// JavaScript's JSON5 readers write and read.
//
// Built only on the public operations of KR::KRValue, so it works with any
// value library that provides them.
//
// Depth. Neither parsing nor printing recurses: a value nested a million
// levels deep is read and written like a flat one.
//
// Round trip. For every value whose strings are valid UTF-8,
// parseKRValue(printKRValue(v)) is v: the same kinds everywhere (an int never
// reads back as a float or the other way round), every int and every float
// bit for bit (-0.0 keeps its sign, denormals stay), every string byte for
// byte. NaN is the one float that is not kept bit for bit: every NaN prints as
// NaN and reads back as the quiet NaN 0x7FC00000, as JSON has a single NaN;
// its sign and payload are lost.
// A string that is not valid UTF-8 prints with each byte that does not begin a
// well-formed UTF-8 sequence (a stray continuation byte, the lead byte of a
// truncated or overlong sequence, an encoded surrogate, a code point above
// U+10FFFF) replaced by U+FFFD. Parsing only ever produces valid UTF-8, so
// this never affects text that came from parseKRValue.
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
/// the largest float (3.4028235e38) are rejected. NaN, Infinity and -Infinity
/// are floats (quiet NaN, +inf, -inf); no other spelling of them is read.
/// Whitespace may surround the value; anything else after it, a NUL byte
/// included, is an error. Comments are not accepted; a UTF-8 byte order mark
/// may open the text.
///
/// Cost: a first pass checks the whole text, the grammar and the range of
/// every number, and allocates nothing, so malformed text of any size fails
/// at its first problem with no memory spent on it. A second pass builds the
/// tree bottom up, each array allocated once at its exact size.
///
/// Errors throw std::runtime_error with the message
///   "KRValue text: <problem> at line <L>, column <C> (offset <N>)[: <detail>]"
/// where N is the 0-based byte offset into `text` of the byte reported, L its
/// 1-based line (lines end at '\n') and C its 1-based column, counted in
/// characters (a well-formed UTF-8 sequence is one column, any other byte
/// one). <problem> is one of:
///   "no value"                   the text is empty or only whitespace (after
///                                a byte order mark, if one opens it);
///                                N is the length of the text
///   "syntax error"               malformed text; N is the byte at which the
///                                text stopped being JSON (the length of the
///                                text when it ended too early); the detail
///                                tells what was found and expected
///   "objects are not supported"  N is the offset of the object's '{'
///   "integer out of range"       N is the offset of the number's first byte
///   "float out of range"         N is the offset of the number's first byte
/// No message grows with the input: the detail of a range error quotes the
/// number cut short past 32 bytes ("... (N bytes)"), and the "last read" part
/// of a syntax error quotes the bytes up to and including the offending one
/// in at most 40 characters: their end, after "..." when cut, starting on a
/// character. In it a control character shows as <U+00XX> and a byte that is
/// not well-formed UTF-8 as <0xXX>, so every message is valid UTF-8.
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
