#include <kr/krvaluetext.h>

#include "test_support.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <sstream>
#include <utility>

namespace {

using KR::KRValue;
using KR::parseKRValue;
using KR::printKRValue;

// The message parseKRValue throws for `text`, or kNoThrow.
std::string parseError(const std::string& text) {
  return messageOf([&] { parseKRValue(text); });
}

// Each text fails with "KRValue text: <problem> at offset <N>", then ": " or nothing.
void expectError(const std::vector<std::pair<std::string, std::size_t>>& cases,
                 const std::string& problem) {
  for (const auto& [text, offset] : cases) {
    const std::string want = "KRValue text: " + problem + " at offset " + std::to_string(offset);
    const std::string message = parseError(text);
    EXPECT_TRUE(message == want || message.rfind(want + ": ", 0) == 0)
        << "text " << text.substr(0, 40) << "\nthrew " << message;
  }
}

TEST(ParseKRValue, ScalarsKeepTheirKindAndSign) {
  const std::pair<const char*, KRValue> cases[] = {
      {"null", KRValue()},
      {"true", KRValue(true)},
      {"false", KRValue(false)},
      {" \t\r\n \"x\" \n", KRValue("x")},
      {"-0", KRValue(0)},  // no point, no exponent: an int
      {"2147483647", KRValue(INT_MAX)},
      {"-2147483648", KRValue(INT_MIN)},
      {"3.0", KRValue(3.0f)},
      {"3e0", KRValue(3.0f)},
      {"1E+2", KRValue(100.0f)},
      {"-0.5", KRValue(-0.5f)},
      {"16777217.0", KRValue(16777216.0f)},  // the nearest float
      {"3.40282356e38", KRValue(FLT_MAX)},   // still rounds down to the largest float
      {"1e-45", KRValue(std::numeric_limits<float>::denorm_min())},
      {"-0.0", KRValue(-0.0f)},
      {"-1e-50", KRValue(-0.0f)},  // too small: a zero of the token's sign
      {"1e-400", KRValue(0.0f)},
      // Just above the midpoint between 1 and the next float. Rounding to
      // double first lands on the midpoint, and ties-to-even then gives 1.
      {"1.00000005960464477539062500001", KRValue(std::nextafter(1.0f, 2.0f))},
  };
  for (const auto& [text, expected] : cases) {
    const KRValue v = parseKRValue(text);
    EXPECT_EQ(v, expected) << text;  // == tells an int from a float
    if (v.isFloat()) {
      EXPECT_EQ(std::signbit(float(v)), std::signbit(float(expected))) << text;
    }
  }
}

TEST(ParseKRValue, StringEscapes) {
  const KRValue v = parseKRValue(R"("q\" b\\ s\/ \b\f\n\r\t \u0000 \u00e9 \ud83d\ude00 é")");
  const std::string expected("q\" b\\ s/ \b\f\n\r\t \0 \xC3\xA9 \xF0\x9F\x98\x80 \xC3\xA9", 27);
  EXPECT_EQ(v, KRValue(expected));
}

TEST(ParseKRValueErrors, IntegersOutsideThirtyTwoBits) {
  expectError({{"2147483648", 0},
               {"-2147483649", 0},
               {"9223372036854775808", 0},      // fits only an unsigned 64-bit integer
               {"-9223372036854775809", 0},     // beyond 64 bits: the lexer's float path
               {"1" + std::string(400, '0'), 0},  // beyond double too
               {"[1, 2147483648]", 4},            // offsets past a byte of look-ahead...
               {"[99999999999999999999999 ]", 1},
               {"  -2147483649", 2}},             // ...and at the end of the text
              "integer out of range");
  EXPECT_EQ(parseError("[1, 2147483648]"),
            "KRValue text: integer out of range at offset 4: "
            "2147483648 is outside [-2147483648, 2147483647]");
  // A number of any length is quoted only in part.
  EXPECT_EQ(parseError("1" + std::string(400, '0')),
            "KRValue text: integer out of range at offset 0: " + ("1" + std::string(31, '0')) +
                "... (401 bytes) is outside [-2147483648, 2147483647]");
}

TEST(ParseKRValueErrors, FloatsBeyondTheLargestFloat) {
  expectError({{"3.4028236e38", 0},  // past the midpoint above FLT_MAX
               {"-1e39", 0},
               {"1e400", 0},  // beyond double too
               {"[0.5, 3.5e38]", 6},
               {"[-1e400,1]", 1}},
              "float out of range");
  const std::string quoted = "KRValue text: float out of range at offset 0: -1e39 ";
  EXPECT_EQ(parseError("-1e39").rfind(quoted, 0), 0u) << parseError("-1e39");
}

TEST(ParseKRValueErrors, ObjectsAtTheOffsetOfTheirBrace) {
  expectError({{"{}", 0}, {"  {", 2}, {"[1, {\"a\": 1}]", 4},
               {"[" + std::string(1000, '[') + "{", 1001}},
              "objects are not supported");
  EXPECT_EQ(parseError("[1, {}]"), "KRValue text: objects are not supported at offset 4");
}

TEST(ParseKRValueErrors, MalformedTextAtTheOffendingByte) {
  expectError({{"", 0}, {" \n\t\r", 4}}, "no value");
  expectError({{"[1, 2", 5},  // ended too early: the length of the text
               {"tru", 3},
               {"[1, 2,]", 6},
               {"[1] x", 4},  // nothing may follow the value, a NUL byte included
               {std::string("1\0junk", 6), 1},
               {std::string("[1]\0", 4), 3},
               {std::string("[1,\0]", 5), 3},
               {"NaN", 0},
               {"-Infinity", 1},
               {"// note\n1", 0},  // no comments
               {"01", 1},
               {"\"a\tb\"", 2},  // raw control character in a string
               {"\"\xFF\"", 1},  // not UTF-8
               {"[\"\\ud800\"]", 8}},  // lone surrogate
              "syntax error");
  // The detail says what was found and what was expected; "last read" runs
  // from the last number or string token to the offending byte.
  const std::pair<std::string, const char*> details[] = {
      {"[1, 2,]", "syntax error at offset 6: unexpected ']'; expected '[', '{', or a literal"},
      {"[1 2]", "syntax error at offset 3: unexpected number literal; expected ']'"},
      {std::string("1\0junk", 6),
       "syntax error at offset 1: invalid literal; last read: '1<U+0000>'; expected end of input"},
      {"[\"a\", tru]", "syntax error at offset 9: invalid literal; last read: '\"a\", tru]'"},
      {"\"\\ud800x\"", "syntax error at offset 7: invalid string: surrogate U+D800..U+DBFF "
                       "must be followed by U+DC00..U+DFFF; last read: '\"\\ud800x'"},
  };
  for (const auto& [text, detail] : details) {
    EXPECT_EQ(parseError(text), std::string("KRValue text: ") + detail);
  }
}

TEST(PrintKRValue, ScalarsAndTheStreamOperator) {
  const float inf = std::numeric_limits<float>::infinity();
  const std::pair<KRValue, const char*> cases[] = {
      {KRValue(), "null"},
      {KRValue(true), "true"},
      {KRValue(false), "false"},
      {KRValue(INT_MIN), "-2147483648"},
      {KRValue(3.0f), "3.0"},  // a point or an exponent, to read back as a float
      {KRValue(-0.0f), "-0.0"},
      {KRValue(16777216.0f), "16777216.0"},
      {KRValue(1e20f), "1e+20"},
      {KRValue(0.1f), "0.1"},  // the shortest text that reads back
      {KRValue(-FLT_MAX), "-3.4028235e+38"},
      {KRValue(std::numeric_limits<float>::denorm_min()), "1e-45"},
      {KRValue(std::numeric_limits<float>::quiet_NaN()), "NaN"},
      {KRValue(inf), "Infinity"},
      {KRValue(-inf), "-Infinity"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(printKRValue(value), text);
  std::ostringstream out;  // the stream operator prints the same text
  out << KRValue::array(-0.0f, KRValue::array());
  EXPECT_EQ(out.str(), "[-0.0, []]");
}

TEST(PrintKRValue, StringsEscapeOnlyWhatJsonRequires) {
  const std::pair<std::string, std::string> cases[] = {
      {"", R"("")"},
      {"a/\"b\\", R"("a/\"b\\")"},
      {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
      {std::string("\0\x1f", 2), R"("\u0000\u001f")"},
      {"\x7f", "\"\x7f\""},
      // UTF-8 of every length, up to U+10FFFF, is copied as it is.
      {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF",
       "\"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF\""},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(printKRValue(KRValue(value)), text);
}

TEST(PrintKRValue, BytesThatAreNotUtf8BecomeReplacementCharacters) {
  const std::string r = "\xEF\xBF\xBD";  // U+FFFD
  const std::pair<std::string, std::string> cases[] = {
      {"a\x80" "b", "\"a" + r + "b\""},                   // stray continuation byte
      {"\xC3", "\"" + r + "\""},                          // truncated at the end
      {"\xE2\x82" "A", "\"" + r + r + "A\""},              // truncated before ASCII
      {"\xE0\x80\xAF", "\"" + r + r + r + "\""},          // overlong '/'
      {"\xED\xA0\x80", "\"" + r + r + r + "\""},          // encoded surrogate U+D800
      {"\xF4\x90\x80\x80", "\"" + r + r + r + r + "\""},  // above U+10FFFF
      {"\xC3\xA9\xFF\xC3\xA9", "\"\xC3\xA9" + r + "\xC3\xA9\""},
  };
  for (const auto& [value, text] : cases) {
    EXPECT_EQ(printKRValue(KRValue(value)), text);
    EXPECT_EQ(printKRValue(parseKRValue(text)), text);  // valid text from then on
  }
}

}  // namespace
