#include <kr/krvaluetext.h>

#include "test_support.h"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
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

// Each text, all on one line, fails with "KRValue text: <problem> at line 1,
// column <N + 1> (offset <N>)", then ": " or nothing.
void expectError(const std::vector<std::pair<std::string, std::size_t>>& cases,
                 const std::string& problem) {
  for (const auto& [text, offset] : cases) {
    const std::string want = "KRValue text: " + problem + " at line 1, column " +
                             std::to_string(offset + 1) + " (offset " + std::to_string(offset) +
                             ")";
    const std::string message = parseError(text);
    EXPECT_TRUE(message == want || message.rfind(want + ": ", 0) == 0)
        << "text " << text.substr(0, 40) << "\nthrew " << message;
  }
}

// Ordinary number tokens are the generated tests' business; these are the
// words, the int range's ends and the float range's edges.
TEST(ParseKRValue, ScalarsKeepTheirKindAndSign) {
  const std::pair<const char*, KRValue> cases[] = {
      {"null", KRValue()},
      {"true", KRValue(true)},
      {"false", KRValue(false)},
      {" \t\r\n \"x\" \n", KRValue("x")},
      {"2147483647", KRValue(INT_MAX)},
      {"-2147483648", KRValue(INT_MIN)},
      {"1E+2", KRValue(100.0f)},  // the generated tokens have no '+'
      {"3.40282356e38", KRValue(FLT_MAX)},   // still rounds down to the largest float
      {"1e-45", KRValue(std::numeric_limits<float>::denorm_min())},
      {"-1e-50", KRValue(-0.0f)},  // too small: a zero of the token's sign
      {"1e-400", KRValue(0.0f)},
      // Just above the midpoint between 1 and the next float. Rounding to
      // double first lands on the midpoint, and ties-to-even then gives 1.
      {"1.00000005960464477539062500001", KRValue(std::nextafter(1.0f, 2.0f))},
      // The three words of the non-finite floats, as printed.
      {"Infinity", KRValue(std::numeric_limits<float>::infinity())},
      {" -Infinity ", KRValue(-std::numeric_limits<float>::infinity())},
  };
  for (const auto& [text, expected] : cases) {
    const KRValue v = parseKRValue(text);
    EXPECT_EQ(v, expected) << text;  // == tells an int from a float
    if (v.isFloat()) {
      EXPECT_EQ(std::signbit(float(v)), std::signbit(float(expected))) << text;
    }
  }
}

TEST(ParseKRValue, NaNIsAFloatWhereverAValueStands) {
  const KRValue v = parseKRValue("[NaN, [NaN], \"NaN\", Infinity]");
  ASSERT_EQ(v.getSize(), 4u);
  EXPECT_TRUE(v[0].isFloat() && std::isnan(float(v[0])));
  EXPECT_TRUE(v[1][0].isFloat() && std::isnan(float(v[1][0])));
  EXPECT_EQ(v[2], KRValue("NaN"));  // in quotes, a string
  EXPECT_EQ(v[3], KRValue(std::numeric_limits<float>::infinity()));
}

TEST(ParseKRValue, StringEscapes) {
  const KRValue v = parseKRValue(R"("q\" b\\ s\/ \b\f\n\r\t \u0000 \u00e9 \ud83d\ude00 é")");
  const std::string expected("q\" b\\ s/ \b\f\n\r\t \0 \xC3\xA9 \xF0\x9F\x98\x80 \xC3\xA9", 27);
  EXPECT_EQ(v, KRValue(expected));
  // Each UTF-8 length from its first code point on, and the last before it.
  EXPECT_EQ(parseKRValue(R"("\u007f\u0080\u07ff\u0800\uffff\ud800\udc00")"),
            KRValue("\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80"));
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
            "KRValue text: integer out of range at line 1, column 5 (offset 4): "
            "2147483648 is outside [-2147483648, 2147483647]");
  // A number of any length is quoted only in part.
  EXPECT_EQ(parseError("1" + std::string(400, '0')),
            "KRValue text: integer out of range at line 1, column 1 (offset 0): " +
                ("1" + std::string(31, '0')) +
                "... (401 bytes) is outside [-2147483648, 2147483647]");
}

TEST(ParseKRValueErrors, FloatsBeyondTheLargestFloat) {
  expectError({{"3.4028236e38", 0},  // past the midpoint above FLT_MAX
               {"-1e39", 0},
               {"1e400", 0},  // beyond double too
               {"[0.5, 3.5e38]", 6},
               {"[-1e400,1]", 1},
               {"[1e39, tru", 1},  // found before the bad word after it
               {"[" + std::string(100000, '9') + ".5]", 1},
               {"0.5e39", 0},
               {"0.0000034028236e44", 0}},
              "float out of range");
  const std::string quoted = "KRValue text: float out of range at line 1, column 1 (offset 0): -1e39 ";
  EXPECT_EQ(parseError("-1e39").rfind(quoted, 0), 0u) << parseError("-1e39");
}

TEST(ParseKRValueErrors, ObjectsAtTheOffsetOfTheirBrace) {
  expectError({{"{}", 0}, {"  {", 2}, {"[1, {\"a\": 1}]", 4},
               {"[" + std::string(1000, '[') + "{", 1001}},
              "objects are not supported");
  EXPECT_EQ(parseError("[1, {}]"),
            "KRValue text: objects are not supported at line 1, column 5 (offset 4)");
}

TEST(ParseKRValueErrors, MalformedTextAtTheOffendingByte) {
  expectError({{"", 0}, {"  \t\r", 4}}, "no value");
  // A byte order mark is one character, and no value either.
  EXPECT_EQ(parseError("\xEF\xBB\xBF \r\t"),
            "KRValue text: no value at line 1, column 5 (offset 6): "
            "the text is empty or only whitespace");
  expectError({{"[1, 2", 5},  // ended too early: the length of the text
               {"tru", 3},
               {"[1, 2,]", 6},
               {"[1] x", 4},  // nothing may follow the value, a NUL byte included
               {std::string("1\0junk", 6), 1},
               {std::string("[1]\0", 4), 3},
               {std::string("[1,\0]", 5), 3},
               {"nan", 1},  // the words are spelt exactly as printed
               {"-NaN", 1},
               {"+Infinity", 0},
               {"Inf", 3},
               {"-Infinit", 8},
               {"[NaN1]", 4},
               {"// note\n1", 0},  // no comments
               {"01", 1},
               {"\"a\tb\"", 2},  // raw control character in a string
               {"\"\xFF\"", 1},  // not UTF-8
               {"\"\x80\"", 1},  // a stray continuation byte
               {"[\"\\ud800\"]", 8}},  // lone surrogate
              "syntax error");
  // The detail says what was found and what was expected; "last read" runs
  // from the last number or string token to the offending byte.
  const std::pair<std::string, const char*> details[] = {
      {"[1, 2,]", "syntax error at line 1, column 7 (offset 6): unexpected ']'; "
                  "expected '[', '{', or a literal"},
      {"[1 2]", "syntax error at line 1, column 4 (offset 3): unexpected number literal; "
                "expected ']'"},
      {"[1 NaN]", "syntax error at line 1, column 6 (offset 5): unexpected number literal; "
                  "expected ']'"},
      {"[1 true]", "syntax error at line 1, column 7 (offset 6): unexpected true literal; "
                   "expected ']'"},
      {"1e", "syntax error at line 1, column 3 (offset 2): invalid number; expected '+', '-', "
             "or digit after exponent; last read: '1e'"},
      {"\xEF\xBB", "syntax error at line 1, column 3 (offset 2): invalid BOM; must be 0xEF "
                   "0xBB 0xBF if given; last read: '<0xEF><0xBB>'"},
      {std::string("1\0junk", 6),
       "syntax error at line 1, column 2 (offset 1): invalid literal; last read: '1<U+0000>'; "
       "expected end of input"},
      {"[\"a\", tru]", "syntax error at line 1, column 10 (offset 9): invalid literal; "
                      "last read: '\"a\", tru]'"},
      {"\"\\ud800x\"", "syntax error at line 1, column 8 (offset 7): invalid string: surrogate "
                       "U+D800..U+DBFF must be followed by U+DC00..U+DFFF; last read: '\"\\ud800x'"},
      // A byte that is not UTF-8 is quoted by its value, so the message is UTF-8.
      {"[\"\xC3\xA9\xFF\"]", "syntax error at line 1, column 4 (offset 4): invalid string: "
                           "ill-formed UTF-8 byte; last read: '\"\xC3\xA9<0xFF>'"},
  };
  for (const auto& [text, detail] : details) {
    EXPECT_EQ(parseError(text), std::string("KRValue text: ") + detail);
  }
}

// Lines end at '\n' (a "\r\n" too); columns count characters, not bytes.
TEST(ParseKRValueErrors, LineAndColumnOfTheReportedByte) {
  const std::pair<std::string, const char*> cases[] = {
      {"[1,\n 2,\n  x]", "line 3, column 3 (offset 10)"},
      {"[1,\r\n\r\n\t}", "line 3, column 2 (offset 8)"},
      {"[\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\", x]", "line 1, column 9 (offset 14)"},
      {"[1,\n", "line 2, column 1 (offset 4)"},  // the end of the text
      {"\n\n  ", "line 3, column 3 (offset 4)"},
  };
  for (const auto& [text, where] : cases) {
    const std::string message = parseError(text);
    EXPECT_NE(message.find(std::string(" at ") + where), std::string::npos) << where << "\n" << message;
  }
}

// Each raw control character in a string is named by its ASCII abbreviation,
// with its \u escape and, where JSON has one, its short escape.
TEST(ParseKRValueErrors, EveryControlCharacterIsNamedWithItsEscapes) {
  const char* const names[] = {"NUL", "SOH", "STX", "ETX", "EOT", "ENQ", "ACK", "BEL",
                               "BS",  "HT",  "LF",  "VT",  "FF",  "CR",  "SO",  "SI",
                               "DLE", "DC1", "DC2", "DC3", "DC4", "NAK", "SYN", "ETB",
                               "CAN", "EM",  "SUB", "ESC", "FS",  "GS",  "RS",  "US"};
  // JSON's short escapes and the letters that write them.
  const std::string shortEscaped = "\b\t\n\f\r";
  const std::string letters = "btnfr";
  for (int c = 0; c < 0x20; ++c) {
    char code[5];
    std::snprintf(code, sizeof code, "%.4X", c);
    std::string problem = std::string("invalid string: control character U+") + code + " (" +
                          names[c] + ") must be escaped to \\u" + code;
    const std::size_t k = shortEscaped.find(static_cast<char>(c));
    if (k != std::string::npos) problem += std::string(" or \\") + letters[k];
    const std::string message = parseError("\"" + std::string(1, static_cast<char>(c)));
    EXPECT_NE(message.find("(offset 1): " + problem + "; last read: '\"<U+" + code + ">'"),
              std::string::npos)
        << message;
  }
}

// However long the input, what a message quotes of it is short: the end of
// a long token, after "...", cut on a character boundary.
TEST(ParseKRValueErrors, QuotesAreCutToTheirLastBytes) {
  EXPECT_EQ(parseError("\"" + std::string(100000, 'x')),
            "KRValue text: syntax error at line 1, column 100002 (offset 100001): invalid "
            "string: missing closing quote; last read: '..." +
                std::string(40, 'x') + "'");
  // 'é' is two bytes: a cut between them moves on to the next character.
  const std::string prefix = "KRValue text: syntax error at line 1, column ";
  const std::string problem = "invalid string: missing closing quote; last read: '...";
  EXPECT_EQ(parseError("\"" + std::string(1000, 'x') + "\xC3\xA9" + std::string(38, 'y')),
            prefix + "1041 (offset 1041): " + problem + "\xC3\xA9" + std::string(38, 'y') + "'");
  EXPECT_EQ(parseError("\"" + std::string(1000, 'x') + "\xC3\xA9" + std::string(39, 'y')),
            prefix + "1042 (offset 1042): " + problem + std::string(39, 'y') + "'");
  // Escapes count with their length: 40 characters of quote at most.
  EXPECT_EQ(parseError("\"" + std::string(40, 'x') + std::string(1, '\x01')),
            prefix + "42 (offset 41): invalid string: control character U+0001 (SOH) must be "
                     "escaped to \\u0001; last read: '..." +
                std::string(32, 'x') + "<U+0001>'");
  EXPECT_EQ(parseError(std::string(5, '\x01')),
            "KRValue text: syntax error at line 1, column 1 (offset 0): invalid literal; "
            "last read: '<U+0001>'");
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
      {std::string("\0\x1d\x1f", 3), R"("\u0000\u001d\u001f")"},
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
