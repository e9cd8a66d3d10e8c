// Generated tests of the text form's promises, over random values and texts
// that include the edges: NaN, infinities, -0.0, denormals, extreme ints, any
// Unicode character, deep nesting, tiny and huge pieces.
//   - Round trip: parseKRValue(printKRValue(v)) is v, kinds and bits kept.
//   - Location: a bad byte anywhere is reported at its offset, line and column.
//   - Bounded: no message grows with the input.
//   - No memory for malformed text: a failing parse allocates nothing but its
//     message, whatever the size of the text.
#include <kr/krvaluetext.h>

#include "test_support.h"

#include <cctype>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <regex>
#include <utility>

// Counts the bytes allocated by this thread while `counting` is set, so that a
// test can see what a single call allocates.
namespace {
thread_local bool counting = false;
thread_local std::size_t allocated = 0;
}  // namespace

void* operator new(std::size_t size) {
  if (counting) {
    allocated += size;
  }
  if (void* p = std::malloc(size == 0 ? 1 : size)) {
    return p;
  }
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using KR::KRValue;
using KR::parseKRValue;
using KR::printKRValue;

std::uint32_t bitsOf(float f) {
  std::uint32_t bits = 0;
  std::memcpy(&bits, &f, sizeof bits);
  return bits;
}

float floatFromBits(std::uint32_t bits) {
  float f = 0.0f;
  std::memcpy(&f, &bits, sizeof f);
  return f;
}

// The one NaN the text form reads.
constexpr std::uint32_t kQuietNaN = 0x7FC00000u;

// What `v` reads back as: itself, with every NaN the quiet NaN. Floats are
// compared by their bits, so -0.0 and 0.0 differ and NaN equals NaN.
// Iterative, as the values may nest deeply.
::testing::AssertionResult sameAfterRoundTrip(const KRValue& original, const KRValue& read) {
  std::vector<std::pair<const KRValue*, const KRValue*>> pending{{&original, &read}};
  while (!pending.empty()) {
    const auto [a, b] = pending.back();
    pending.pop_back();
    if (a->isValid() != b->isValid() || a->isBool() != b->isBool() || a->isInt() != b->isInt() ||
        a->isFloat() != b->isFloat() || a->isString() != b->isString() ||
        a->isArray() != b->isArray()) {
      return ::testing::AssertionFailure() << "kinds differ: " << printKRValue(*a).substr(0, 80)
                                           << " read as " << printKRValue(*b).substr(0, 80);
    }
    if (a->isFloat()) {
      const float f = static_cast<float>(*a);
      const std::uint32_t expected = std::isnan(f) ? kQuietNaN : bitsOf(f);
      if (bitsOf(static_cast<float>(*b)) != expected) {
        return ::testing::AssertionFailure()
               << "float bits " << std::hex << bitsOf(f) << " read as "
               << bitsOf(static_cast<float>(*b));
      }
    } else if (a->isArray()) {
      if (a->getSize() != b->getSize()) {
        return ::testing::AssertionFailure() << "array sizes differ";
      }
      for (unsigned int i = 0; i < a->getSize(); ++i) {
        pending.emplace_back(&(*a)[static_cast<int>(i)], &(*b)[static_cast<int>(i)]);
      }
    } else if (!(*a == *b)) {
      return ::testing::AssertionFailure() << printKRValue(*a).substr(0, 80) << " read as "
                                           << printKRValue(*b).substr(0, 80);
    }
  }
  return ::testing::AssertionSuccess();
}

// Random values, biased towards the edges.
class Generator {
 public:
  explicit Generator(std::uint32_t seed) : rng_(seed) {}

  std::uint32_t below(std::uint32_t n) { return std::uniform_int_distribution<std::uint32_t>(0, n - 1)(rng_); }

  float anyFloat() {
    static const float kEdges[] = {0.0f,
                                   -0.0f,
                                   std::numeric_limits<float>::quiet_NaN(),
                                   -std::numeric_limits<float>::quiet_NaN(),
                                   std::numeric_limits<float>::infinity(),
                                   -std::numeric_limits<float>::infinity(),
                                   std::numeric_limits<float>::max(),
                                   -std::numeric_limits<float>::max(),
                                   std::numeric_limits<float>::min(),
                                   std::numeric_limits<float>::denorm_min(),
                                   -std::numeric_limits<float>::denorm_min(),
                                   floatFromBits(0x007FFFFFu),  // the largest denormal
                                   16777217.0f,
                                   0.1f};
    if (below(3) == 0) {
      return kEdges[below(sizeof kEdges / sizeof kEdges[0])];
    }
    return floatFromBits(static_cast<std::uint32_t>(rng_()));  // any bits, NaN payloads too
  }

  int anyInt() {
    static const int kEdges[] = {0, -1, 1, INT_MAX, INT_MIN, INT_MIN + 1, 10, -10};
    if (below(3) == 0) {
      return kEdges[below(sizeof kEdges / sizeof kEdges[0])];
    }
    return static_cast<int>(static_cast<std::uint32_t>(rng_()));
  }

  // Valid UTF-8 of any code point but the surrogates: controls, quotes,
  // backslashes, U+FFFD, the last code point, and sometimes a long run.
  std::string anyString() {
    std::string s;
    const std::uint32_t length = below(10) == 0 ? 1000 + below(5000) : below(12);
    for (std::uint32_t i = 0; i < length; ++i) {
      appendCodePoint(s, anyCodePoint());
    }
    return s;
  }

  // A tree of up to `budget` nodes; now and then a chain nested thousands deep.
  KRValue anyValue(int budget) {
    if (below(50) == 0) {
      return chain(static_cast<int>(1000 + below(20000)));
    }
    return tree(budget, 0);
  }

 private:
  std::uint32_t anyCodePoint() {
    static const std::uint32_t kEdges[] = {0x00, 0x1F, '"', '\\', '/', 0x7F, 0x80, 0x7FF, 0x800,
                                           0xFFFD, 0xFFFF, 0x10000, 0x10FFFF, 'e', '\n'};
    switch (below(4)) {
      case 0:
        return kEdges[below(sizeof kEdges / sizeof kEdges[0])];
      case 1:
        return below(0x80);
      default: {
        const std::uint32_t c = below(0x110000 - 0x800);
        return c < 0xD800 ? c : c + 0x800;  // skip the surrogates
      }
    }
  }

  static void appendCodePoint(std::string& s, std::uint32_t c) {
    if (c < 0x80) {
      s += static_cast<char>(c);
    } else if (c < 0x800) {
      s += static_cast<char>(0xC0 | (c >> 6));
      s += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      s += static_cast<char>(0xE0 | (c >> 12));
      s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      s += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      s += static_cast<char>(0xF0 | (c >> 18));
      s += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      s += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      s += static_cast<char>(0x80 | (c & 0x3F));
    }
  }

  KRValue scalar() {
    switch (below(6)) {
      case 0:
        return KRValue();
      case 1:
        return KRValue(below(2) == 0);
      case 2:
        return KRValue(anyInt());
      case 3:
        return KRValue(anyString());
      default:
        return KRValue(anyFloat());
    }
  }

  KRValue tree(int budget, int depth) {
    if (budget <= 1 || depth > 6 || below(3) == 0) {
      return below(8) == 0 ? emptyArray() : scalar();
    }
    KRValue array;
    const int size = static_cast<int>(below(static_cast<std::uint32_t>(std::min(budget, 12))));
    array.arraySetSize(size);
    for (int i = 0; i < size; ++i) {
      array[i] = tree(budget / (size + 1), depth + 1);
    }
    return array;
  }

  static KRValue emptyArray() {
    KRValue empty;
    empty.arraySetSize(0);
    return empty;
  }

  KRValue chain(int depth) {
    KRValue value = scalar();
    for (int i = 0; i < depth; ++i) {
      KRValue outer;
      outer.arraySetSize(1);
      outer[0] = std::move(value);
      value = std::move(outer);
    }
    return value;
  }

  std::mt19937 rng_;
};

// Text errors name the problem, the line, the column and the offset.
const std::regex kErrorForm(
    R"(KRValue text: [a-z ]+ at line ([0-9]+), column ([0-9]+) \(offset ([0-9]+)\)(: .*)?)");

// Line, column and offset of a text error message; fails the test if the
// message does not have the form.
struct Where {
  std::size_t line = 0, column = 0, offset = 0;
};

Where whereOf(const std::string& message) {
  std::smatch match;
  EXPECT_TRUE(std::regex_match(message, match, kErrorForm)) << message.substr(0, 300);
  if (match.empty()) {
    return {};
  }
  return {std::stoul(match[1]), std::stoul(match[2]), std::stoul(match[3])};
}

// Characters (not continuation bytes) in `s`.
std::size_t charactersIn(const std::string& s) {
  std::size_t n = 0;
  for (const char c : s) {
    n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }
  return n;
}

TEST(TextProperties, EveryValueReadsBackWithItsKindsAndBits) {
  Generator generate(20261124);
  for (int round = 0; round < 3000; ++round) {
    const KRValue value = generate.anyValue(60);
    const std::string text = printKRValue(value);
    KRValue read;
    ASSERT_EQ(messageOf([&] { read = parseKRValue(text); }), kNoThrow) << text.substr(0, 200);
    ASSERT_TRUE(sameAfterRoundTrip(value, read)) << text.substr(0, 200);
    ASSERT_EQ(printKRValue(read), text);
  }
}

// Any decimal number token reads as the float nearest to it, rounded once as
// strtof rounds, and any int token as its int: short and long digit runs,
// leading and trailing zeros, mantissas on both sides of 2^24, with and
// without exponents, at the top level, inside an array and nested deeper.
TEST(TextProperties, EveryNumberTokenReadsAsTheNearestFloatOrItsInt) {
  std::mt19937 rng(1124);
  const auto digits = [&](int count) {
    std::string run;
    for (int i = 0; i < count; ++i) {
      // Zeros and nines often, to reach the edges of each digit count.
      const int kind = static_cast<int>(rng() % 4);
      run += kind == 0 ? '0' : kind == 1 ? '9' : static_cast<char>('0' + rng() % 10);
    }
    return run;
  };
  for (int round = 0; round < 200000; ++round) {
    std::string token = rng() % 2 == 0 ? "-" : "";
    const int integerDigits = 1 + static_cast<int>(rng() % 12);
    std::string integer = digits(integerDigits);
    if (integer.size() > 1 && integer[0] == '0') {
      integer[0] = '1' + static_cast<char>(rng() % 9);
    }
    token += integer;
    const int shape = static_cast<int>(rng() % 4);  // int, fraction, exponent, both
    if (shape == 1 || shape == 3) {
      token += '.' + digits(1 + static_cast<int>(rng() % 13));
    }
    if (shape >= 2) {
      token += rng() % 2 == 0 ? "e" : "E-";
      token += std::to_string(rng() % 30);
    }
    const bool isInt = shape == 0;
    const long long asInt = std::strtoll(token.c_str(), nullptr, 10);
    if (isInt && (integer.size() > 10 || asInt < INT_MIN || asInt > INT_MAX)) {
      continue;  // out of range: a failure, tested elsewhere
    }
    const float asFloat = std::strtof(token.c_str(), nullptr);
    if (!isInt && std::isinf(asFloat)) {
      continue;
    }
    // The token alone, as an element, and as an element of a nested array.
    const std::pair<std::string, std::vector<int>> placed[] = {
        {token, {}}, {"[" + token + "]", {0}}, {"[[1, " + token + "], 2]", {0, 1}}};
    for (const auto& place : placed) {
      const std::string& text = place.first;  // a lambda below takes it: no structured binding
      KRValue read;
      ASSERT_EQ(messageOf([&] { read = parseKRValue(text); }), kNoThrow) << text;
      const KRValue* number = &read;
      for (const int index : place.second) {
        number = &(*number)[index];
      }
      if (isInt) {
        ASSERT_TRUE(number->isInt()) << text;
        ASSERT_EQ(static_cast<int>(*number), asInt) << text;
      } else {
        ASSERT_TRUE(number->isFloat()) << text;
        ASSERT_EQ(bitsOf(static_cast<float>(*number)), bitsOf(asFloat)) << text;
      }
    }
  }
}

// A control byte is wrong anywhere in printed text: between tokens, inside a
// number, a word, a string, an escape. Put after a few lines and spaces, it
// is reported at its own offset, line and column, whatever came before.
TEST(TextProperties, ABadByteIsReportedWhereItIs) {
  Generator generate(7);
  for (int round = 0; round < 2000; ++round) {
    const std::string printed = printKRValue(generate.anyValue(20));
    std::size_t k = generate.below(static_cast<std::uint32_t>(printed.size() + 1));
    while (k < printed.size() && (static_cast<unsigned char>(printed[k]) & 0xC0) == 0x80) {
      ++k;  // at a character boundary: the column is then a count of characters
    }
    // Not after the first digit of a run, nor between digits and a '.' or an
    // exponent: the digits before would be an int token of their own, which
    // may be out of range ("7933079060\x0148.0").
    const auto digitAt = [&printed](std::size_t i) {
      return i < printed.size() && std::isdigit(static_cast<unsigned char>(printed[i])) != 0;
    };
    while (k > 0 && digitAt(k - 1) && digitAt(k)) {
      ++k;
    }
    if (k > 0 && k < printed.size() && std::strchr(".eE", printed[k]) != nullptr && digitAt(k - 1)) {
      ++k;
    }
    const std::uint32_t lines = generate.below(4);
    const std::uint32_t spaces = generate.below(4);
    std::string lead;
    for (std::uint32_t i = 0; i < lines; ++i) lead += generate.below(2) == 0 ? "\n" : "\r\n";
    lead += std::string(spaces, ' ');
    const std::string text = lead + printed.substr(0, k) + '\x01' + printed.substr(k);
    const std::string message = messageOf([&] { parseKRValue(text); });
    ASSERT_EQ(message.rfind("KRValue text: syntax error at line ", 0), 0u) << message;
    const Where where = whereOf(message);
    EXPECT_EQ(where.offset, lead.size() + k) << message;
    EXPECT_EQ(where.line, lines + 1) << message;
    EXPECT_EQ(where.column, spaces + charactersIn(printed.substr(0, k)) + 1) << message;
    EXPECT_LE(message.size(), 250u) << message;
  }
}

// Malformed texts of every size: cut short, a byte changed, a value
// repeated without a comma, huge runs of one byte. Each fails with a message
// of bounded length and allocates nothing but that message.
TEST(TextProperties, MalformedTextCostsNoMemoryAndABoundedMessage) {
  Generator generate(99);
  std::vector<std::string> texts = {
      "[" + std::string(5000000, ','),
      std::string(3000000, '['),
      "[" + std::string(3000000, '1'),
      "[" + std::string(3000000, '1') + ".5]",  // a float far out of range
      "\"" + std::string(3000000, 'x'),
      "[\"" + std::string(200000, 'y') + "\x02\"]",
      "[" + std::string(1000000, ' ') + "}",
      std::string(1000000, '\n') + "x",
  };
  for (int round = 0; round < 500; ++round) {
    std::string text = printKRValue(generate.anyValue(40));
    switch (generate.below(3)) {
      case 0:
        text.resize(generate.below(static_cast<std::uint32_t>(text.size())));
        break;
      case 1:
        text[generate.below(static_cast<std::uint32_t>(text.size()))] =
            static_cast<char>(generate.below(256));
        break;
      default:
        text += text;
    }
    texts.push_back(std::move(text));
  }
  for (const std::string& text : texts) {
    std::string message;
    allocated = 0;
    counting = true;
    try {
      parseKRValue(text);
    } catch (const std::runtime_error& e) {
      counting = false;
      message = e.what();
    }
    counting = false;
    if (message.empty()) {
      continue;  // a changed byte that left valid text
    }
    EXPECT_LE(message.size(), 250u) << message.substr(0, 300);
    // The message itself, built by appending, and nothing that grows with the text.
    EXPECT_LE(allocated, 2048u) << message.substr(0, 300);
    const Where where = whereOf(message);
    EXPECT_LE(where.offset, text.size()) << message;
  }
}

}  // namespace
