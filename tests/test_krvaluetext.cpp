#include <kr/krvaluetext.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using KR::KRValue;
using KR::parseKRValue;
using KR::printKRValue;

enum class Kind { Invalid, Bool, Int, Float, String, Array };

Kind kindOf(const KRValue& v) {
  if (v.isBool()) return Kind::Bool;
  if (v.isInt()) return Kind::Int;
  if (v.isFloat()) return Kind::Float;
  if (v.isString()) return Kind::String;
  if (v.isArray()) return Kind::Array;
  return Kind::Invalid;
}

// An array of the given elements, built with arrayPush only.
KRValue list(std::initializer_list<KRValue> elements) {
  KRValue array;
  array.arraySetSize(0);
  for (const KRValue& element : elements) {
    array.arrayPush(element);
  }
  return array;
}

float floatOf(const KRValue& v) { return static_cast<float>(v); }
int intOf(const KRValue& v) { return static_cast<int>(v); }

// The message parseKRValue throws for `text`, or "(no error)".
std::string parseError(const std::string& text) {
  try {
    parseKRValue(text);
  } catch (const std::runtime_error& e) {
    return e.what();
  }
  return "(no error)";
}

std::string nestedText(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

// ---------------------------------------------------------------------------
// Parsing scalars

TEST(ParseKRValue, NumberKindsAndValues) {
  struct Case {
    const char* text;
    Kind kind;
    double expected;  // exact for every case below
  };
  const Case cases[] = {
      {"3", Kind::Int, 3},
      {"-7", Kind::Int, -7},
      {"0", Kind::Int, 0},
      {"-0", Kind::Int, 0},
      {"2147483647", Kind::Int, 2147483647.0},
      {"-2147483648", Kind::Int, -2147483648.0},
      {"3.0", Kind::Float, 3},
      {"3e0", Kind::Float, 3},
      {"3E0", Kind::Float, 3},
      {"1e+2", Kind::Float, 100},
      {"-0.5", Kind::Float, -0.5},
      {"0.1", Kind::Float, static_cast<double>(0.1f)},
      {"16777217.0", Kind::Float, 16777216.0},  // rounds to the nearest float
      {"3.4028235e38", Kind::Float, static_cast<double>(FLT_MAX)},
      {"3.40282356e38", Kind::Float, static_cast<double>(FLT_MAX)},  // still rounds down
      {"-3.4028235e38", Kind::Float, -static_cast<double>(FLT_MAX)},
      {"1e-45", Kind::Float, static_cast<double>(std::numeric_limits<float>::denorm_min())},
      {"1e-40", Kind::Float, static_cast<double>(1e-40f)},
      {"1e-50", Kind::Float, 0},
      {"1e-400", Kind::Float, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const KRValue v = parseKRValue(c.text);
    ASSERT_EQ(kindOf(v), c.kind);
    if (c.kind == Kind::Int) {
      EXPECT_EQ(intOf(v), static_cast<int>(c.expected));
    } else {
      EXPECT_EQ(floatOf(v), static_cast<float>(c.expected));
    }
  }
}

TEST(ParseKRValue, FloatIsRoundedOnceStraightFromTheText) {
  // Just above the midpoint between 1 and the next float. Rounding to double
  // first lands exactly on the midpoint, and then ties-to-even gives 1.
  const KRValue v = parseKRValue("1.00000005960464477539062500001");
  ASSERT_TRUE(v.isFloat());
  EXPECT_EQ(floatOf(v), std::nextafter(1.0f, 2.0f));
}

TEST(ParseKRValue, UnderflowKeepsTheSign) {
  const KRValue negative = parseKRValue("-1e-50");
  ASSERT_TRUE(negative.isFloat());
  EXPECT_EQ(floatOf(negative), 0.0f);
  EXPECT_TRUE(std::signbit(floatOf(negative)));
  EXPECT_FALSE(std::signbit(floatOf(parseKRValue("1e-50"))));
  EXPECT_TRUE(std::signbit(floatOf(parseKRValue("-0.0"))));
}

TEST(ParseKRValue, OtherLiterals) {
  EXPECT_FALSE(parseKRValue("null").isValid());
  const KRValue t = parseKRValue("true");
  ASSERT_TRUE(t.isBool());
  EXPECT_TRUE(static_cast<bool>(t));
  const KRValue f = parseKRValue("false");
  ASSERT_TRUE(f.isBool());
  EXPECT_FALSE(static_cast<bool>(f));
  EXPECT_EQ(parseKRValue("\"x\""), KRValue("x"));
  EXPECT_EQ(parseKRValue(" \t\r\n 5 \n"), KRValue(5));
}

TEST(ParseKRValue, StringEscapes) {
  const KRValue v = parseKRValue(R"("q\" b\\ s\/ \b\f\n\r\t \u0000 \u00e9 \ud83d\ude00 é")");
  ASSERT_TRUE(v.isString());
  const std::string expected("q\" b\\ s/ \b\f\n\r\t \0 \xC3\xA9 \xF0\x9F\x98\x80 \xC3\xA9", 27);
  EXPECT_EQ(static_cast<const std::string&>(v), expected);
}

// ---------------------------------------------------------------------------
// Parsing arrays

TEST(ParseKRValue, NestedArraysOfMixedKinds) {
  const KRValue v = parseKRValue(R"([1, 2.5, "x", true, null, [], [[3], [null, false]]])");
  const KRValue expected = list({1, 2.5f, "x", true, KRValue(), list({}),
                                 list({list({3}), list({KRValue(), false})})});
  EXPECT_EQ(v, expected);
  // Kinds are checked by ==, but make the int/float split explicit.
  EXPECT_TRUE(v[0].isInt());
  EXPECT_TRUE(v[1].isFloat());
  EXPECT_FALSE(v[4].isValid());
  EXPECT_EQ(v[6][1].getSize(), 2u);
}

TEST(ParseKRValue, LongFlatArray) {
  std::string text = "[";
  for (int i = 0; i < 10000; ++i) {
    text += (i == 0 ? "" : ",") + std::to_string(i * 7 - 30000);
  }
  text += "]";
  const KRValue v = parseKRValue(text);
  ASSERT_EQ(v.getSize(), 10000u);
  for (int i = 0; i < 10000; i += 997) {
    EXPECT_EQ(intOf(v[i]), i * 7 - 30000);
  }
  EXPECT_EQ(intOf(v[9999]), 9999 * 7 - 30000);
}

// ---------------------------------------------------------------------------
// Parse errors

struct ErrorCase {
  std::string text;
  std::size_t offset;
};

void expectError(const std::vector<ErrorCase>& cases, const std::string& problem) {
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE("text: " + c.text);
    const std::string message = parseError(c.text);
    EXPECT_NE(message.find("KRValue text: " + problem + " at offset " +
                           std::to_string(c.offset)),
              std::string::npos)
        << message;
  }
}

TEST(ParseKRValueErrors, IntegersOutsideThirtyTwoBits) {
  expectError({{"2147483648", 0},
               {"-2147483649", 0},
               {"9223372036854775808", 0},           // beyond int64, fits uint64
               {"-9223372036854775809", 0},          // below int64
               {"18446744073709551616", 0},          // beyond uint64
               {"99999999999999999999999", 0},
               {"-99999999999999999999999", 0},
               {"1" + std::string(400, '0'), 0},    // beyond double too
               {"[1, 2147483648]", 4},
               {"[2147483648]", 1},
               {"[99999999999999999999999 ]", 1},
               {"  -2147483649", 2}},
              "integer out of range");
  EXPECT_EQ(parseError("[1, 2147483648]"),
            "KRValue text: integer out of range at offset 4: "
            "2147483648 is outside [-2147483648, 2147483647]");
  // A number of any length is quoted only in part.
  EXPECT_EQ(parseError("1" + std::string(400, '0')),
            "KRValue text: integer out of range at offset 0: " + ("1" + std::string(31, '0')) +
                "... (401 bytes) is outside [-2147483648, 2147483647]");
}

TEST(ParseKRValueErrors, FloatsBeyondFloatRange) {
  expectError({{"3.5e38", 0},
               {"-1e39", 0},
               {"3.4028236e38", 0},  // past the midpoint above FLT_MAX
               {"1e400", 0},         // beyond double too
               {"-1.5e400", 0},
               {"[0.5, 3.5e38]", 6},
               {"[ 1e39]", 2},
               {"[-1e400,1]", 1}},
              "float out of range");
}

TEST(ParseKRValueErrors, ObjectsAtTheOffsetOfTheirBrace) {
  expectError({{"{}", 0},
               {"{\"a\": 1}", 0},
               {"  {", 2},
               {"[1, {\"a\": 1}]", 4},
               {"[[], [{}]]", 6},
               {"[" + std::string(1000, '[') + "{", 1001}},
              "objects are not supported");
  EXPECT_EQ(parseError("[1, {}]"), "KRValue text: objects are not supported at offset 4");
}

TEST(ParseKRValueErrors, MalformedTextAtTheOffendingByte) {
  expectError({{"[1, 2", 5},          // unterminated array: at the end
               {"[1, 2,]", 6},        // trailing comma: at the ']'
               {"[1] x", 4},          // trailing garbage
               {"[1]]", 3},
               {"1 2", 2},
               {"[1 2]", 3},
               {"hello", 0},          // bare word
               {"tru", 3},
               {"[tru]", 4},
               {"NaN", 0},
               {"-Infinity", 1},
               {"01", 1},
               {"[1.]", 3},
               {"+1", 0},
               {"\"abc", 4},          // unterminated string
               {"\"a\tb\"", 2},      // raw control character in a string
               {"\"\xFF\"", 1},      // byte that is not UTF-8
               {"\"\\x\"", 2},        // unknown escape
               {"[\"\\ud800\"]", 8},  // lone high surrogate
               {"// note\n1", 0},     // comments are not JSON
               {"]", 0}},
              "syntax error");
}

TEST(ParseKRValueErrors, NoValue) {
  expectError({{"", 0}, {"   ", 3}, {"\n\t\r ", 4}}, "no value");
}

TEST(ParseKRValueErrors, SyntaxErrorExplainsWhatWasFound) {
  const std::string message = parseError("[1, 2,]");
  EXPECT_NE(message.find("unexpected ']'"), std::string::npos) << message;
  // nlohmann's own line/column lead-in is dropped.
  EXPECT_EQ(message.find("json.exception"), std::string::npos) << message;
}

// ---------------------------------------------------------------------------
// Printing

TEST(PrintKRValue, Scalars) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float inf = std::numeric_limits<float>::infinity();
  struct Case {
    KRValue value;
    const char* text;
  };
  const Case cases[] = {
      {KRValue(), "null"},
      {KRValue(true), "true"},
      {KRValue(false), "false"},
      {KRValue(0), "0"},
      {KRValue(-7), "-7"},
      {KRValue(INT_MAX), "2147483647"},
      {KRValue(INT_MIN), "-2147483648"},
      {KRValue(3.0f), "3.0"},
      {KRValue(-0.0f), "-0.0"},
      {KRValue(0.0f), "0.0"},
      {KRValue(-2.5f), "-2.5"},
      {KRValue(0.1f), "0.1"},
      {KRValue(100.0f), "100.0"},
      {KRValue(16777216.0f), "16777216.0"},
      {KRValue(1e7f), "1e+07"},
      {KRValue(1e20f), "1e+20"},
      {KRValue(std::numeric_limits<float>::denorm_min()), "1e-45"},
      {KRValue(FLT_MIN), "1.1754944e-38"},
      {KRValue(-FLT_MAX), "-3.4028235e+38"},
      {KRValue(nan), "NaN"},
      {KRValue(inf), "Infinity"},
      {KRValue(-inf), "-Infinity"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(printKRValue(c.value), c.text);
  }
}

TEST(PrintKRValue, StringsEscapeOnlyWhatJsonRequires) {
  struct Case {
    std::string value;
    std::string text;
  };
  const Case cases[] = {
      {"", R"("")"},
      {"plain / text", R"("plain / text")"},
      {"say \"hi\"", R"("say \"hi\"")"},
      {"back\\slash", R"("back\\slash")"},
      {"line\nbreak", R"("line\nbreak")"},
      {"\b\f\r\t", R"("\b\f\r\t")"},
      {"\x01\x1f", R"("\u0001\u001f")"},
      {std::string("nul\0x", 5), R"("nul\u0000x")"},
      {"\x7f", "\"\x7f\""},
      {"h\xC3\xA9llo \xE2\x82\xAC \xF0\x9F\x98\x80", "\"h\xC3\xA9llo \xE2\x82\xAC \xF0\x9F\x98\x80\""},
      {"\xF4\x8F\xBF\xBF", "\"\xF4\x8F\xBF\xBF\""},  // U+10FFFF, the last code point
  };
  for (const Case& c : cases) {
    EXPECT_EQ(printKRValue(KRValue(c.value)), c.text);
  }
}

TEST(PrintKRValue, BytesThatAreNotUtf8BecomeReplacementCharacters) {
  const std::string r = "\xEF\xBF\xBD";  // U+FFFD
  struct Case {
    std::string value;
    std::string text;
  };
  const Case cases[] = {
      {"\xFF", "\"" + r + "\""},
      {"a\x80" "b", "\"a" + r + "b\""},                   // stray continuation byte
      {"\xC3", "\"" + r + "\""},                          // truncated at the end
      {"\xE2\x82" "A", "\"" + r + r + "A\""},              // truncated before ASCII
      {"\xC0\xAF", "\"" + r + r + "\""},                  // overlong '/'
      {"\xE0\x80\xAF", "\"" + r + r + r + "\""},          // overlong '/'
      {"\xED\xA0\x80", "\"" + r + r + r + "\""},          // encoded surrogate U+D800
      {"\xF4\x90\x80\x80", "\"" + r + r + r + r + "\""},  // above U+10FFFF
      {"\xF5\x80", "\"" + r + r + "\""},
      {"\xC3\xA9\xFF\xC3\xA9", "\"\xC3\xA9" + r + "\xC3\xA9\""},
  };
  for (const Case& c : cases) {
    const std::string text = printKRValue(KRValue(c.value));
    EXPECT_EQ(text, c.text);
    // What is printed is valid text, and stays put from then on.
    EXPECT_EQ(printKRValue(parseKRValue(text)), text);
  }
}

TEST(PrintKRValue, Arrays) {
  EXPECT_EQ(printKRValue(list({})), "[]");
  EXPECT_EQ(printKRValue(list({1, 2.5f, "x", true, KRValue(), list({})})),
            R"([1, 2.5, "x", true, null, []])");
  EXPECT_EQ(printKRValue(list({list({1, list({2.0f})}), list({}), list({list({list({})})})})),
            "[[1, [2.0]], [], [[[]]]]");
  EXPECT_EQ(printKRValue(KRValue(std::vector<std::string>{"a", "b\n"})), R"(["a", "b\n"])");
}

TEST(PrintKRValue, StreamOperatorWritesTheText) {
  const KRValue v = list({1, -0.0f, "\"", list({KRValue()})});
  std::ostringstream out;
  out << "v=" << v << ";";
  EXPECT_EQ(out.str(), "v=" + printKRValue(v) + ";");
  EXPECT_EQ(out.str(), R"(v=[1, -0.0, "\"", [null]];)");
}

// ---------------------------------------------------------------------------
// Round trip

TEST(RoundTrip, PrintedTextsAreStable) {
  const char* texts[] = {
      "null",
      "true",
      "-2147483648",
      "3.0",
      "-0.0",
      "1e-45",
      "3.4028235e+38",
      "0.3",
      R"("tab\t quote\" uni \u0001 é")",
      "[]",
      R"([1, 2.5, "x", true, null, []])",
      "[[[1]], [2.0, [3, [4.5e-10]]], [[], [[]]]]",
  };
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    const KRValue v = parseKRValue(text);
    EXPECT_EQ(printKRValue(v), text);
    EXPECT_EQ(parseKRValue(printKRValue(v)), v);
  }
}

TEST(RoundTrip, LooseTextsSettleOnTheirCompactForm) {
  struct Case {
    const char* text;
    const char* printed;
  };
  const Case cases[] = {
      {" [ 1 ,\n2.50 , 3e0, 1E2 , -0 ] ", "[1, 2.5, 3.0, 100.0, 0]"},
      {R"(["\u00e9\/", "\ud83d\ude00"])", "[\"\xC3\xA9/\", \"\xF0\x9F\x98\x80\"]"},
      {"0.30000001192092896", "0.3"},
      {"1e-50", "0.0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const KRValue v = parseKRValue(c.text);
    EXPECT_EQ(printKRValue(v), c.printed);
    EXPECT_EQ(parseKRValue(printKRValue(v)), v);
  }
}

// Random values of every kind, a few levels deep.
class RandomValues {
 public:
  explicit RandomValues(unsigned seed) : rng_(seed) {}

  KRValue make(int depth) {
    switch (pick(depth > 0 ? 7 : 5)) {
      case 0:
        return KRValue();
      case 1:
        return KRValue(pick(2) == 1);
      case 2:
        return KRValue(static_cast<int>(static_cast<std::uint32_t>(rng_())));
      case 3:
        return KRValue(makeFloat());
      case 4:
        return KRValue(makeString());
      default: {
        KRValue array;
        array.arraySetSize(0);
        const int size = pick(6);
        for (int i = 0; i < size; ++i) {
          array.arrayPush(make(depth - 1));
        }
        return array;
      }
    }
  }

  // Any byte string, valid UTF-8 or not.
  std::string makeBytes() {
    std::string s(static_cast<std::size_t>(pick(12)), '\0');
    for (char& c : s) {
      c = static_cast<char>(pick(256));
    }
    return s;
  }

 private:
  int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }

  // Any finite float, from any bit pattern.
  float makeFloat() {
    for (;;) {
      const std::uint32_t bits = static_cast<std::uint32_t>(rng_());
      float f;
      std::memcpy(&f, &bits, sizeof f);
      if (std::isfinite(f)) {
        return f;
      }
    }
  }

  // Valid UTF-8 of code points from every encoded length, controls included.
  std::string makeString() {
    static const std::uint32_t kRanges[][2] = {
        {0x00, 0x7F}, {0x80, 0x7FF}, {0x800, 0xD7FF}, {0xE000, 0xFFFF}, {0x10000, 0x10FFFF}};
    std::string s;
    const int length = pick(8);
    for (int i = 0; i < length; ++i) {
      const auto& range = kRanges[pick(5)];
      appendUtf8(s, std::uniform_int_distribution<std::uint32_t>(range[0], range[1])(rng_));
    }
    return s;
  }

  static void appendUtf8(std::string& s, std::uint32_t cp) {
    if (cp < 0x80) {
      s += static_cast<char>(cp);
    } else if (cp < 0x800) {
      s += static_cast<char>(0xC0 | (cp >> 6));
      s += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      s += static_cast<char>(0xE0 | (cp >> 12));
      s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      s += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      s += static_cast<char>(0xF0 | (cp >> 18));
      s += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      s += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }

  std::mt19937 rng_;
};

TEST(RoundTrip, RandomValues) {
  RandomValues random(20240611u);
  for (int i = 0; i < 2000; ++i) {
    const KRValue v = random.make(4);
    const std::string text = printKRValue(v);
    SCOPED_TRACE(text);
    const KRValue back = parseKRValue(text);
    ASSERT_EQ(back, v);
    // Text equality also tells -0.0 from 0.0, which == does not.
    ASSERT_EQ(printKRValue(back), text);
  }
}

TEST(RoundTrip, RandomBytesPrintAsTextThatReadsBack) {
  RandomValues random(7u);
  for (int i = 0; i < 2000; ++i) {
    const std::string bytes = random.makeBytes();
    const std::string text = printKRValue(KRValue(bytes));
    const KRValue back = parseKRValue(text);
    ASSERT_TRUE(back.isString());
    ASSERT_EQ(printKRValue(back), text);
  }
}

// ---------------------------------------------------------------------------
// Depth

TEST(Depth, MillionLevelsParsePrintAndDestroy) {
  constexpr std::size_t kDepth = 1000000;
  const std::string text = nestedText(kDepth);
  const KRValue v = parseKRValue(text);
  std::size_t depth = 1;
  for (const KRValue* level = &v; level->getSize() != 0; level = &(*level)[0]) {
    ASSERT_EQ(level->getSize(), 1u);
    ++depth;
  }
  EXPECT_EQ(depth, kDepth);
  EXPECT_TRUE(printKRValue(v) == text);  // not EXPECT_EQ: no 2 MB diff on failure
  // v is destroyed on the way out, a million levels deep.
}

TEST(Depth, MillionOpenBracketsFailCleanly) {
  constexpr std::size_t kDepth = 1000000;
  expectError({{std::string(kDepth, '['), kDepth},
               {std::string(kDepth, '[') + "1," + std::string(kDepth, ']'), kDepth + 2}},
              "syntax error");
}

}  // namespace
