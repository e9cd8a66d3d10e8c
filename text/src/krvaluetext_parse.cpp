// parseKRValue: two passes over the text, neither of them recursive.
//   1. check: the whole grammar and every number's range, allocating nothing,
//      so that malformed text of any size fails at its first bad byte
//      without costing memory;
//   2. build: the tree, bottom up, each array allocated once at its size.
// Checking and building are one scanner (Reader), instantiated for each.
//
// The reader follows the JSON grammar of RFC 8259, plus the words NaN,
// Infinity and -Infinity. The detail of a syntax error names what was found
// ("unexpected ']'", "invalid literal; last read: '...'") and what was
// expected, and "last read" quotes the text from the start of the last string
// or number token (or of the text) up to the offending byte, at most
// kQuotedLength characters of it.
#include <kr/krvaluetext.h>

#include "utf8.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace KR {

namespace {

// ---------------------------------------------------------------------------
// Errors: messages are built only here, on the failure path.

// 1-based line and column of the byte at `offset`. Lines end at '\n' (so
// also at "\r\n"); the column counts characters: a well-formed UTF-8
// sequence is one, as is any other byte.
struct LineColumn {
  std::size_t line = 1;
  std::size_t column = 1;
};

LineColumn lineColumnOf(const char* begin, std::size_t offset) {
  LineColumn at;
  const char* const target = begin + offset;
  for (const char* p = begin; p < target;) {
    const unsigned char c = static_cast<unsigned char>(*p);
    ++at.column;
    if (c == '\n') {
      ++at.line;
      at.column = 1;
    }
    std::size_t length = 1;
    if (c >= 0x80) {
      const char* bad = nullptr;
      length = text::utf8SequenceLength(p, target, bad);
      length = length == 0 ? 1 : length;
    }
    p += length;
  }
  return at;
}

// "KRValue text: <problem> at line L, column C (offset N)[: <detail>]".
[[noreturn]] void fail(const char* problem, const char* text, std::size_t offset,
                       const std::string& detail) {
  const LineColumn at = lineColumnOf(text, offset);
  std::string message = "KRValue text: ";
  message += problem;
  message += " at line ";
  message += std::to_string(at.line);
  message += ", column ";
  message += std::to_string(at.column);
  message += " (offset ";
  message += std::to_string(offset);
  message += ')';
  if (!detail.empty()) {
    message += ": ";
    message += detail;
  }
  throw std::runtime_error(message);
}

// A number token as quoted in a message: long ones are cut short, since a
// number can be any length.
std::string quoteNumber(const char* first, const char* last) {
  constexpr std::size_t kShown = 32;
  const std::size_t length = static_cast<std::size_t>(last - first);
  if (length <= kShown) {
    return std::string(first, last);
  }
  return std::string(first, kShown) + "... (" + std::to_string(length) + " bytes)";
}

// What "last read" quotes of the input is at most this long, so that no
// message grows with the input.
constexpr std::size_t kQuotedLength = 40;

// The quoted form of the character or byte at p: control characters as
// <U+00XX>, bytes that are not well-formed UTF-8 as <0xXX>, so that the
// message is printable, valid UTF-8. Returns the bytes it stands for.
std::size_t appendQuoted(std::string& out, const char* p, const char* last) {
  const unsigned char c = static_cast<unsigned char>(*p);
  char code[9];
  if (c <= 0x1F) {
    std::snprintf(code, sizeof code, "<U+%.4X>", c);
    out += code;
    return 1;
  }
  if (c < 0x80) {
    out += *p;
    return 1;
  }
  const char* bad = nullptr;
  const std::size_t length = text::utf8SequenceLength(p, last, bad);
  if (length == 0) {
    std::snprintf(code, sizeof code, "<0x%.2X>", c);
    out += code;
    return 1;
  }
  out.append(p, length);
  return length;
}

// The bytes quoted after "last read": all of them when their quoted form
// fits kQuotedLength, else "..." and the longest tail, whole characters and
// escapes, that does.
std::string quoteRead(const char* first, const char* last) {
  bool cut = false;
  if (static_cast<std::size_t>(last - first) > kQuotedLength) {
    cut = true;
    first = last - kQuotedLength;
    while (first != last && (static_cast<unsigned char>(*first) & 0xC0) == 0x80) {
      ++first;  // a character boundary, unless the bytes are not UTF-8 anyway
    }
  }
  // Each byte or character quoted, and where its quoted form starts.
  std::string quoted;
  std::size_t starts[kQuotedLength];
  std::size_t pieces = 0;
  for (const char* p = first; p != last; ++pieces) {
    starts[pieces] = quoted.size();
    p += appendQuoted(quoted, p, last);
  }
  std::size_t piece = 0;
  while (piece < pieces && quoted.size() - starts[piece] > kQuotedLength) {
    ++piece;
  }
  if (!cut && piece == 0) {
    return quoted;
  }
  return "..." + quoted.substr(piece < pieces ? starts[piece] : quoted.size());
}

// The problem with a raw control character inside a string.
const char* controlCharacterProblem(unsigned char c) {
  static const char* const kMessages[0x20] = {
      "invalid string: control character U+0000 (NUL) must be escaped to \\u0000",
      "invalid string: control character U+0001 (SOH) must be escaped to \\u0001",
      "invalid string: control character U+0002 (STX) must be escaped to \\u0002",
      "invalid string: control character U+0003 (ETX) must be escaped to \\u0003",
      "invalid string: control character U+0004 (EOT) must be escaped to \\u0004",
      "invalid string: control character U+0005 (ENQ) must be escaped to \\u0005",
      "invalid string: control character U+0006 (ACK) must be escaped to \\u0006",
      "invalid string: control character U+0007 (BEL) must be escaped to \\u0007",
      "invalid string: control character U+0008 (BS) must be escaped to \\u0008 or \\b",
      "invalid string: control character U+0009 (HT) must be escaped to \\u0009 or \\t",
      "invalid string: control character U+000A (LF) must be escaped to \\u000A or \\n",
      "invalid string: control character U+000B (VT) must be escaped to \\u000B",
      "invalid string: control character U+000C (FF) must be escaped to \\u000C or \\f",
      "invalid string: control character U+000D (CR) must be escaped to \\u000D or \\r",
      "invalid string: control character U+000E (SO) must be escaped to \\u000E",
      "invalid string: control character U+000F (SI) must be escaped to \\u000F",
      "invalid string: control character U+0010 (DLE) must be escaped to \\u0010",
      "invalid string: control character U+0011 (DC1) must be escaped to \\u0011",
      "invalid string: control character U+0012 (DC2) must be escaped to \\u0012",
      "invalid string: control character U+0013 (DC3) must be escaped to \\u0013",
      "invalid string: control character U+0014 (DC4) must be escaped to \\u0014",
      "invalid string: control character U+0015 (NAK) must be escaped to \\u0015",
      "invalid string: control character U+0016 (SYN) must be escaped to \\u0016",
      "invalid string: control character U+0017 (ETB) must be escaped to \\u0017",
      "invalid string: control character U+0018 (CAN) must be escaped to \\u0018",
      "invalid string: control character U+0019 (EM) must be escaped to \\u0019",
      "invalid string: control character U+001A (SUB) must be escaped to \\u001A",
      "invalid string: control character U+001B (ESC) must be escaped to \\u001B",
      "invalid string: control character U+001C (FS) must be escaped to \\u001C",
      "invalid string: control character U+001D (GS) must be escaped to \\u001D",
      "invalid string: control character U+001E (RS) must be escaped to \\u001E",
      "invalid string: control character U+001F (US) must be escaped to \\u001F",
  };
  return kMessages[c];
}

const char* const kIllFormedUtf8 = "invalid string: ill-formed UTF-8 byte";
const char* const kHexDigits = "invalid string: '\\u' must be followed by 4 hex digits";
const char* const kNoLowSurrogate =
    "invalid string: surrogate U+D800..U+DBFF must be followed by U+DC00..U+DFFF";
const char* const kNoHighSurrogate =
    "invalid string: surrogate U+DC00..U+DFFF must follow U+D800..U+DBFF";
const char* const kBadEscape = "invalid string: forbidden character after backslash";

// What a message says was expected where a token did not fit.
const char* const kExpectValue = "'[', '{', or a literal";
const char* const kExpectEndArray = "']'";
const char* const kExpectEnd = "end of input";

bool isJsonWhitespace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Value 0 to 15 of a hex digit, or -1.
int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// How many of the eight bytes at `p` are ASCII digits before the first that
// is not. A byte is a digit when its high nibble is 3 and stays 3 with 6
// added; a carry out of a byte only disturbs the bytes after it, which do
// not count once it is not a digit.
std::size_t leadingDigits(const char* p) {
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first byte must be the lowest");
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, p, sizeof bytes);
  constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0u;
  constexpr std::uint64_t kSix = 0x0606060606060606u;
  constexpr std::uint64_t kThrees = 0x3333333333333333u;
  const std::uint64_t notDigit = ((bytes & kHigh) | (((bytes + kSix) & kHigh) >> 4)) ^ kThrees;
  if (notDigit == 0) {
    return 8;
  }
  return static_cast<std::size_t>(__builtin_ctzll(notDigit)) / 8;
}

// The value of the first `count` (1 to 8) bytes at `p`, all ASCII digits.
// The digits are shifted to the top of a word, below them zeros, and then
// combined pairwise: digit pairs, then pairs of pairs, then the two halves.
std::uint64_t digitsValue(const char* p, std::size_t count) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, p, sizeof bytes);
  bytes = (bytes << (8 * (8 - count))) & 0x0F0F0F0F0F0F0F0Fu;
  bytes = (bytes * 10 + (bytes >> 8)) & 0x00FF00FF00FF00FFu;
  bytes = (bytes * 100 + (bytes >> 16)) & 0x0000FFFF0000FFFFu;
  return (bytes * 10000 + (bytes >> 32)) & 0xFFFFFFFFu;
}

constexpr std::uint64_t kPowersOfTen64[] = {1,         10,         100,        1000,
                                            10000,     100000,     1000000,    10000000,
                                            100000000};

void appendUtf8(std::string& out, std::uint32_t codePoint) {
  if (codePoint < 0x80) {
    out += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    out += static_cast<char>(0xC0 | (codePoint >> 6));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else if (codePoint < 0x10000) {
    out += static_cast<char>(0xE0 | (codePoint >> 12));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (codePoint >> 18));
    out += static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (codePoint & 0x3F));
  }
}

enum class Token {
  Null,
  True,
  False,
  String,
  Number,
  NonFinite,  // NaN, Infinity or -Infinity: see Reader::nonFinite_
  BeginArray,
  EndArray,
  BeginObject,
  EndObject,
  NameSeparator,
  ValueSeparator,
  EndOfInput,
  Error,  // a malformed token: see Parser::problem_
};

const char* tokenName(Token token) {
  switch (token) {
    case Token::Null:
      return "null literal";
    case Token::True:
      return "true literal";
    case Token::False:
      return "false literal";
    case Token::String:
      return "string literal";
    case Token::Number:
    case Token::NonFinite:
      return "number literal";
    case Token::BeginArray:
      return "'['";
    case Token::EndArray:
      return "']'";
    case Token::BeginObject:
      return "'{'";
    case Token::EndObject:
      return "'}'";
    case Token::NameSeparator:
      return "':'";
    case Token::ValueSeparator:
      return "','";
    case Token::EndOfInput:
      return "end of input";
    case Token::Error:
      break;
  }
  return "<parse error>";
}

// The power of ten of a well-formed number token's leading non-zero digit
// (2 for "123.4", -3 for "0.00123e0", 40 for "1e40"), clamped to a few
// million either way; a very low value for a token of zeros.
long decimalMagnitude(const char* p, const char* end) {
  constexpr long kClamp = 1L << 24;
  if (*p == '-') {
    ++p;
  }
  long magnitude = -kClamp;
  long integerDigits = 0;
  for (; p != end && isDigit(*p); ++p) {
    if (integerDigits != 0 || *p != '0') {
      ++integerDigits;
    }
  }
  if (integerDigits != 0) {
    magnitude = integerDigits - 1;
  }
  if (p != end && *p == '.') {
    long position = 0;
    for (++p; p != end && isDigit(*p); ++p) {
      --position;
      if (integerDigits == 0 && *p != '0' && magnitude == -kClamp) {
        magnitude = position;
      }
    }
  }
  if (magnitude == -kClamp || p == end) {
    return magnitude;
  }
  ++p;  // 'e' or 'E'
  const bool negative = *p == '-';
  if (*p == '-' || *p == '+') {
    ++p;
  }
  long exponent = 0;
  for (; p != end && exponent < kClamp; ++p) {
    exponent = exponent * 10 + (*p - '0');
  }
  return magnitude + (negative ? -exponent : exponent);
}

// Reads one value, checking it (kBuild false) or building it (kBuild true).
//
// Checking keeps only the depth of the open arrays and stores nothing: it
// allocates no memory whatever the text. Building runs on text that checking
// has accepted, bottom up: the elements of the open arrays wait on one stack,
// and an array is made at its exact size when it closes, its elements moved
// into it. Nesting depth costs heap, not call stack.
template <bool kBuild>
class Reader {
 public:
  explicit Reader(const std::string& text)
      : begin_(text.data()), end_(begin_ + text.size()), p_(begin_), readFrom_(begin_) {}

  // Reads the whole text; throws at its first problem. The scanner is
  // inlined into this loop whole (flatten): a call per token costs more
  // than the token.
  __attribute__((flatten)) void run() {
    skipByteOrderMark();
    Token token = scan();
    for (;;) {
      if (!startValue(token)) {
        // An array was opened: `token` is its first element.
        continue;
      }
      // A value is complete: close arrays until one goes on.
      for (;;) {
        if constexpr (!kBuild) {
          topLevelElements_ += depth() == 1;
        }
        const bool nested = depth() != 0;
        token = nested ? scanInArray() : scan();
        if (!nested) {
          if (token != Token::EndOfInput) {
            failToken(token, kExpectEnd);
          }
          return;
        }
        if (token == Token::ValueSeparator) {
          token = scan();
          break;
        }
        if (token != Token::EndArray) {
          failToken(token, kExpectEndArray);
        }
        closeArray();
      }
    }
  }

  KRValue takeResult() { return std::move(result_); }

  // Checking: the elements of the outermost array.
  std::size_t topLevelElements() const { return topLevelElements_; }

  // Building: the outermost array has `count` elements (as checking found),
  // so it is made at that size when it opens and its elements go straight
  // into it; only the elements of the arrays inside it wait on the stack.
  void setTopLevelElements(std::size_t count) {
    topLevelElements_ = count;
    values_.reserve(64);
  }

 private:
  std::size_t depth() const {
    if constexpr (kBuild) {
      return starts_.size();
    } else {
      return depth_;
    }
  }

  // Handles `token` at the start of a value. Returns false when it opened a
  // non-empty array, with `token` replaced by the array's first token.
  bool startValue(Token& token) {
    switch (token) {
      case Token::Null:
      case Token::True:
      case Token::False:
      case Token::String:
      case Token::NonFinite:
        if constexpr (kBuild) {
          put(scalar(token));
        }
        return true;
      case Token::Number:
        if constexpr (kBuild) {
          if (integer_) {
            put(int_);
          } else {
            put(float_);
          }
        } else if (integer_) {
          readInt();
        } else {
          checkFloatRange();
        }
        return true;
      case Token::BeginArray:
        return openArray(token);
      case Token::BeginObject:
        fail("objects are not supported", begin_, offsetOf(tokenStart_), "");
      case Token::Error:
        failToken(token, nullptr);
      default:
        failToken(token, kExpectValue);
    }
  }

  // The value of a literal or string token.
  KRValue scalar(Token token) const {
    switch (token) {
      case Token::True:
        return KRValue(true);
      case Token::False:
        return KRValue(false);
      case Token::String:
        return KRValue(string_);
      case Token::NonFinite:
        return KRValue(nonFinite_);
      default:
        return KRValue();
    }
  }

  // After '['. Returns false when the array has elements, with `token`
  // replaced by the first element's token.
  bool openArray(Token& token) {
    token = scan();
    if (token == Token::EndArray) {
      if constexpr (kBuild) {
        KRValue empty;
        empty.arraySetSize(0);
        put(std::move(empty));
      }
      return true;
    }
    if constexpr (kBuild) {
      if (starts_.empty()) {
        constexpr std::size_t kMaxReserved = std::numeric_limits<int>::max();
        result_.arrayReserve(static_cast<int>(std::min(topLevelElements_, kMaxReserved)));
      }
      starts_.push_back(values_.size());
    } else {
      ++depth_;
    }
    return false;
  }

  // Stores a complete value, made of `made`: as the result, as the next
  // element of the outermost array, or as the next element of an array inside
  // it (building only). A scalar is made in its place on the stack: made in a
  // temporary and copied, its 4-byte number would be read back as part of 8
  // bytes before the store completes, which stalls the load.
  template <typename T>
  void put(T&& made) {
    if (starts_.size() > 1) {
      values_.emplace_back(std::forward<T>(made));
    } else if (starts_.empty()) {
      result_ = KRValue(std::forward<T>(made));
    } else {
      result_.arrayPush(KRValue(std::forward<T>(made)));
    }
  }

  // After the ']' of a non-empty array.
  void closeArray() {
    if constexpr (kBuild) {
      const std::size_t start = starts_.back();
      starts_.pop_back();
      if (starts_.empty()) {
        return;  // the outermost array: result_ holds it already
      }
      KRValue* const first = values_.data() + start;
      KRValue array = KRValue::arrayMovedFrom(first, first + (values_.size() - start));
      values_.resize(start);
      put(std::move(array));
    } else {
      --depth_;
    }
  }

  // ---- Tokens

  std::size_t offsetOf(const char* p) const { return static_cast<std::size_t>(p - begin_); }

  // A UTF-8 byte order mark may open the text.
  void skipByteOrderMark() {
    if (p_ == end_ || static_cast<unsigned char>(*p_) != 0xEF) {
      return;
    }
    static const unsigned char kMark[] = {0xEF, 0xBB, 0xBF};
    for (const unsigned char byte : kMark) {
      if (p_ == end_ || static_cast<unsigned char>(*p_) != byte) {
        error(p_, "invalid BOM; must be 0xEF 0xBB 0xBF if given");
        failToken(Token::Error, nullptr);
      }
      ++p_;
    }
  }

  // scan() after an element of an array, where ',' and ']' are by far the
  // most likely: those two are taken without the full dispatch.
  Token scanInArray() {
    skipWhitespace();
    if (p_ != end_ && (*p_ == ',' || *p_ == ']')) {
      tokenStart_ = p_;
      return *p_++ == ',' ? Token::ValueSeparator : Token::EndArray;
    }
    return scan();
  }

  // The hot loops work on a local pointer: a store to p_ through `this`
  // may alias the text, so the compiler would write it back on every byte.
  void skipWhitespace() {
    const char* p = p_;
    while (p != end_ && isJsonWhitespace(*p)) {
      ++p;
    }
    p_ = p;
  }

  Token scan() {
    skipWhitespace();
    tokenStart_ = p_;
    if (p_ == end_) {
      return Token::EndOfInput;
    }
    switch (*p_++) {
      case '[':
        return Token::BeginArray;
      case ']':
        return Token::EndArray;
      case '{':
        return Token::BeginObject;
      case '}':
        return Token::EndObject;
      case ':':
        return Token::NameSeparator;
      case ',':
        return Token::ValueSeparator;
      case 't':
        return scanLiteral("true", Token::True);
      case 'f':
        return scanLiteral("false", Token::False);
      case 'n':
        return scanLiteral("null", Token::Null);
      case 'N':
        nonFinite_ = std::numeric_limits<float>::quiet_NaN();
        return scanLiteral("NaN", Token::NonFinite);
      case 'I':
        nonFinite_ = std::numeric_limits<float>::infinity();
        return scanLiteral("Infinity", Token::NonFinite);
      case '"':
        return scanString();
      case '-':
      case '0':
      case '1':
      case '2':
      case '3':
      case '4':
      case '5':
      case '6':
      case '7':
      case '8':
      case '9':
        return scanNumber();
      default:
        return error(p_ - 1, "invalid literal");
    }
  }

  // Records a malformed token whose offending byte is `at` (end_ when the
  // text ended too early).
  Token error(const char* at, const char* problem) {
    errorAt_ = at;
    problem_ = problem;
    return Token::Error;
  }

  Token scanLiteral(const char* literal, Token token) {
    for (const char* expected = literal + 1; *expected != '\0'; ++expected, ++p_) {
      if (p_ == end_ || *p_ != *expected) {
        return error(p_, "invalid literal");
      }
    }
    return token;
  }

  // Eight bytes at a time while eight are left: a number's digits then
  // cost one branch instead of one per digit.
  void skipDigits() {
    const char* p = p_;
    while (end_ - p >= 8) {
      const std::size_t digits = leadingDigits(p);
      p += digits;
      if (digits != 8) {
        p_ = p;
        return;
      }
    }
    while (p != end_ && isDigit(*p)) {
      ++p;
    }
    p_ = p;
  }

  // After the number's first byte. Leaves [numberStart_, p_) as the token;
  // when building, also its value in int_ or float_.
  Token scanNumber() {
    numberStart_ = readFrom_ = p_ - 1;
    integer_ = true;
    char first = *numberStart_;
    if (first == '-' && p_ != end_ && *p_ == 'I') {
      ++p_;
      nonFinite_ = -std::numeric_limits<float>::infinity();
      return scanLiteral("Infinity", Token::NonFinite);
    }
    if constexpr (kBuild) {
      return readNumber();
    }
    if (first == '-') {
      if (p_ == end_ || !isDigit(*p_)) {
        return error(p_, "invalid number; expected digit after '-'");
      }
      first = *p_++;
    }
    if (first != '0') {
      skipDigits();
    }
    if (p_ != end_ && *p_ == '.') {
      integer_ = false;
      if (++p_ == end_ || !isDigit(*p_)) {
        return error(p_, "invalid number; expected digit after '.'");
      }
      skipDigits();
    }
    exponent_ = false;
    if (p_ != end_ && (*p_ == 'e' || *p_ == 'E')) {
      integer_ = false;
      exponent_ = true;
      ++p_;
      if (p_ != end_ && (*p_ == '+' || *p_ == '-')) {
        if (++p_ == end_ || !isDigit(*p_)) {
          return error(p_, "invalid number; expected digit after exponent sign");
        }
      } else if (p_ == end_ || !isDigit(*p_)) {
        return error(p_, "invalid number; expected '+', '-', or digit after exponent");
      }
      skipDigits();
    }
    return Token::Number;
  }

  // Appends to the string token, when building.
  void append(const char* first, const char* last) {
    if constexpr (kBuild) {
      string_.append(first, last);
    }
  }

  void append(char c) {
    if constexpr (kBuild) {
      string_ += c;
    }
  }

  void appendCodePoint(std::uint32_t codePoint) {
    if constexpr (kBuild) {
      appendUtf8(string_, codePoint);
    }
  }

  // After the opening quote. Leaves the text of the string in string_ when
  // building; checking only reads it.
  Token scanString() {
    readFrom_ = p_ - 1;
    string_.clear();
    const char* run = p_;  // [run, p_) is copied unchanged
    for (;;) {
      while (p_ != end_ && static_cast<unsigned char>(*p_) >= 0x20 &&
             static_cast<unsigned char>(*p_) < 0x80 && *p_ != '"' && *p_ != '\\') {
        ++p_;
      }
      if (p_ == end_) {
        return error(end_, "invalid string: missing closing quote");
      }
      const unsigned char c = static_cast<unsigned char>(*p_);
      if (c == '"') {
        append(run, p_);
        ++p_;
        return Token::String;
      }
      if (c == '\\') {
        append(run, p_);
        ++p_;
        if (!scanEscape()) {
          return Token::Error;
        }
        run = p_;
      } else if (c < 0x20) {
        return error(p_, controlCharacterProblem(c));
      } else if (!skipUtf8Sequence()) {
        return Token::Error;
      }
    }
  }

  // A well-formed UTF-8 sequence at p_ (utf8.h).
  bool skipUtf8Sequence() {
    const char* bad = nullptr;
    const std::size_t length = text::utf8SequenceLength(p_, end_, bad);
    if (length == 0) {
      error(bad, kIllFormedUtf8);
      return false;
    }
    p_ += length;
    return true;
  }

  // After a backslash.
  bool scanEscape() {
    if (p_ == end_) {
      error(end_, kBadEscape);
      return false;
    }
    switch (*p_++) {
      case '"':
        append('"');
        return true;
      case '\\':
        append('\\');
        return true;
      case '/':
        append('/');
        return true;
      case 'b':
        append('\b');
        return true;
      case 'f':
        append('\f');
        return true;
      case 'n':
        append('\n');
        return true;
      case 'r':
        append('\r');
        return true;
      case 't':
        append('\t');
        return true;
      case 'u':
        return scanUnicodeEscape();
      default:
        error(p_ - 1, kBadEscape);
        return false;
    }
  }

  // Four hex digits after "\u", or false.
  bool readHex4(std::uint32_t& codeUnit) {
    codeUnit = 0;
    for (int k = 0; k < 4; ++k, ++p_) {
      const int digit = p_ == end_ ? -1 : hexValue(*p_);
      if (digit < 0) {
        error(p_, kHexDigits);
        return false;
      }
      codeUnit = codeUnit << 4 | static_cast<std::uint32_t>(digit);
    }
    return true;
  }

  // After "\u": one code unit, or a surrogate pair as two escapes.
  bool scanUnicodeEscape() {
    std::uint32_t high = 0;
    if (!readHex4(high)) {
      return false;
    }
    if (high >= 0xDC00 && high <= 0xDFFF) {
      error(p_ - 1, kNoHighSurrogate);
      return false;
    }
    if (high < 0xD800 || high > 0xDBFF) {
      appendCodePoint(high);
      return true;
    }
    for (const char expected : {'\\', 'u'}) {
      if (p_ == end_ || *p_ != expected) {
        error(p_, kNoLowSurrogate);
        return false;
      }
      ++p_;
    }
    std::uint32_t low = 0;
    if (!readHex4(low)) {
      return false;
    }
    if (low < 0xDC00 || low > 0xDFFF) {
      error(p_ - 1, kNoLowSurrogate);
      return false;
    }
    appendCodePoint(0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00));
    return true;
  }

  // ---- Numbers of the number token [numberStart_, p_)

  // Building, on checked text: the number at numberStart_. Its digits tell
  // an int (nothing after them) from a float ('.' or an exponent next), so
  // each is converted once; checking has seen that an int fits.
  Token readNumber() {
    const bool negative = *numberStart_ == '-';
    p_ = numberStart_ + (negative ? 1 : 0);
    // The digits' value, exact while there are at most 19 of them.
    const char* const digits = p_;
    std::uint64_t mantissa = 0;
    p_ = readDigits(p_, mantissa);
    if (p_ == end_ || (*p_ != '.' && *p_ != 'e' && *p_ != 'E')) {
      // Checking has seen that the int fits, so at most ten digits.
      const std::int64_t value = static_cast<std::int64_t>(mantissa);
      int_ = static_cast<int>(negative ? -value : value);
      return Token::Number;
    }
    integer_ = false;
    if (*p_ == '.' && readShortDecimal(negative, p_ - digits, mantissa)) {
      return Token::Number;
    }
    const std::from_chars_result asFloat = std::from_chars(numberStart_, end_, float_);
    p_ = asFloat.ptr;
    if (asFloat.ec == std::errc::result_out_of_range) {
      float_ = readFloat();  // a zero of the token's sign, as checking saw
    }
    return Token::Number;
  }

  // Reads the digits from p on, appending their value to `mantissa` (exact
  // while the total stays within 19 digits); returns the first non-digit.
  // Eight at a time while eight bytes are left.
  const char* readDigits(const char* p, std::uint64_t& mantissa) const {
    while (end_ - p >= 8) {
      const std::size_t count = leadingDigits(p);
      if (count == 0) {
        return p;
      }
      mantissa = mantissa * kPowersOfTen64[count] + digitsValue(p, count);
      p += count;
      if (count != 8) {
        return p;
      }
    }
    for (; p != end_ && isDigit(*p); ++p) {
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(*p - '0');
    }
    return p;
  }

  // A decimal without an exponent whose digits make an integer below 2^24
  // with at most ten of them after the point, at p_ == '.': the integer and
  // the power of ten are then both exact floats, so one float division
  // rounds the quotient once, exactly as std::from_chars would (the fast
  // path of Clinger's algorithm). Most floats in the shortest form take it.
  // Leaves p_ alone and returns false for any other token.
  bool readShortDecimal(bool negative, std::ptrdiff_t integerDigits, std::uint64_t mantissa) {
    static constexpr float kPowersOfTen[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f,
                                             1e6f, 1e7f, 1e8f, 1e9f, 1e10f};
    constexpr std::uint64_t kExact = std::uint64_t{1} << 24;
    if (integerDigits > 8) {
      return false;  // the mantissa might already have wrapped
    }
    const char* const fraction = p_ + 1;
    const char* const p = readDigits(fraction, mantissa);
    const std::ptrdiff_t fractionDigits = p - fraction;
    if (fractionDigits > 10 || mantissa > kExact || (p != end_ && (*p == 'e' || *p == 'E'))) {
      return false;
    }
    const float quotient = static_cast<float>(mantissa) / kPowersOfTen[fractionDigits];
    float_ = negative ? -quotient : quotient;
    p_ = p;
    return true;
  }

  [[noreturn]] void failIntegerRange() const {
    fail("integer out of range", begin_, offsetOf(numberStart_),
         quoteNumber(numberStart_, p_) + " is outside [-2147483648, 2147483647]");
  }

  [[noreturn]] void failFloatRange() const {
    fail("float out of range", begin_, offsetOf(numberStart_),
         quoteNumber(numberStart_, p_) + " is outside [-3.4028235e+38, 3.4028235e+38]");
  }

  int readInt() const {
    const char* digit = numberStart_;
    const bool negative = *digit == '-';
    if (negative) {
      ++digit;
    }
    // Eleven digits already exceed any 32-bit magnitude.
    if (p_ - digit > 10) {
      failIntegerRange();
    }
    std::int64_t magnitude = 0;
    for (; digit != p_; ++digit) {
      magnitude = magnitude * 10 + (*digit - '0');
    }
    const std::int64_t value = negative ? -magnitude : magnitude;
    if (value < INT32_MIN || value > INT32_MAX) {
      failIntegerRange();
    }
    return static_cast<int>(value);
  }

  // The float nearest to the token, rounded once. std::from_chars reports
  // both overflow and underflow to zero as out of range; the token's
  // magnitude tells them apart without copying it.
  float readFloat() const {
    float value = 0.0f;
    const std::from_chars_result read = std::from_chars(numberStart_, p_, value);
    if (read.ec == std::errc() && read.ptr == p_) {
      return value;
    }
    if (read.ec == std::errc::result_out_of_range) {
      if (decimalMagnitude(numberStart_, p_) < 0) {
        return *numberStart_ == '-' ? -0.0f : 0.0f;
      }
      failFloatRange();
    }
    fail("syntax error", begin_, offsetOf(numberStart_),
         "unreadable number " + quoteNumber(numberStart_, p_));
  }

  // Checks the float token's range without converting it, where it can: a
  // token whose leading digit stands for at most 10^37 is below 10^38, well
  // within the largest float; only larger ones are converted to be sure.
  void checkFloatRange() const {
    // Without an exponent, a token of at most 38 bytes has at most 37
    // integer digits after the first.
    if (!exponent_ && p_ - numberStart_ <= 38) {
      return;
    }
    if (decimalMagnitude(numberStart_, p_) >= 38) {
      readFloat();
    }
  }

  // ---- Syntax errors

  // `token` did not fit where `expected` (or, for a malformed token with
  // nothing named, any value) was wanted.
  [[noreturn]] void failToken(Token token, const char* expected) const {
    std::string detail;
    std::size_t offset = 0;
    if (token == Token::Error) {
      offset = offsetOf(errorAt_);
      const char* readTo = errorAt_ == end_ ? end_ : errorAt_ + 1;
      detail = std::string(problem_) + "; last read: '" + quoteRead(readFrom_, readTo) + "'";
    } else {
      // A token is reported at its last byte, the end of input at the length.
      offset = token == Token::EndOfInput ? offsetOf(end_) : offsetOf(p_) - 1;
      detail = std::string("unexpected ") + tokenName(token);
    }
    if (expected != nullptr) {
      detail += "; expected ";
      detail += expected;
    }
    fail("syntax error", begin_, offset, detail);
  }

  const char* const begin_;
  const char* const end_;
  const char* p_;           // the next byte to read
  const char* tokenStart_ = nullptr;
  const char* readFrom_;    // start of "last read": the last string or number token
  const char* numberStart_ = nullptr;
  bool integer_ = true;     // the number token has no fraction and no exponent
  bool exponent_ = false;   // the number token has an exponent
  int int_ = 0;             // the number token's value, when building
  float float_ = 0.0f;
  std::string string_;      // the string token, unescaped
  float nonFinite_ = 0.0f;  // the value of a NonFinite token
  const char* errorAt_ = nullptr;
  const char* problem_ = "";
  std::size_t depth_ = 0;   // arrays open, when checking
  std::size_t topLevelElements_ = 0;

  // Building: the elements of the open arrays, outermost first, and where
  // each open array's elements begin in values_.
  std::vector<KRValue> values_;
  std::vector<std::size_t> starts_;
  KRValue result_;
};

// Only whitespace, after a byte order mark if one opens the text.
bool isBlank(const std::string& text) {
  const std::size_t start = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  for (std::size_t i = start; i < text.size(); ++i) {
    if (!isJsonWhitespace(text[i])) {
      return false;
    }
  }
  return true;
}

}  // namespace

KRValue parseKRValue(const std::string& text) {
  if (isBlank(text)) {
    fail("no value", text.data(), text.size(), "the text is empty or only whitespace");
  }
  Reader<false> checker(text);
  checker.run();
  Reader<true> builder(text);
  builder.setTopLevelElements(checker.topLevelElements());
  builder.run();
  return builder.takeResult();
}

}  // namespace KR
