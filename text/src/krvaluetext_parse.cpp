// parseKRValue: two passes over the text (counting, then reading), neither
// of them recursive.
//
// The reader follows the JSON grammar of RFC 8259 and reports problems in the
// words and at the byte offsets that the text form has always used: the
// detail of a syntax error names what was found ("unexpected ']'", "invalid
// literal; last read: '...'") and what was expected, and "last read" quotes
// the text from the start of the last string or number token (or of the
// text) up to the offending byte.
#include <kr/krvaluetext.h>

#include "utf8.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace KR {

namespace {

// ---------------------------------------------------------------------------
// Errors: messages are built only here, on the failure path.

[[noreturn]] void fail(const char* problem, std::size_t offset, const std::string& detail) {
  std::string message = "KRValue text: ";
  message += problem;
  message += " at offset ";
  message += std::to_string(offset);
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

// Bytes quoted after "last read", with control characters as <U+00XX>.
std::string quoteRead(const char* first, const char* last) {
  std::string quoted;
  for (const char* p = first; p != last; ++p) {
    const unsigned char c = static_cast<unsigned char>(*p);
    if (c <= 0x1F) {
      char code[9];
      std::snprintf(code, sizeof code, "<U+%.4X>", c);
      quoted += code;
    } else {
      quoted += *p;
    }
  }
  return quoted;
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

// The bytes that matter when counting elements; all others are skipped in a
// tight loop.
constexpr std::array<bool, 256> structuralBytes() {
  std::array<bool, 256> structural{};
  structural['"'] = true;
  structural['['] = true;
  structural[']'] = true;
  structural[','] = true;
  return structural;
}

constexpr std::array<bool, 256> kStructural = structuralBytes();

// How many elements each array of the text has, in the order the arrays
// open: one quick pass over the structure that skips strings and counts the
// commas at each level. For well-formed text the counts are exact; for
// malformed text they are only a hint, as parsing then fails anyway.
std::vector<std::uint32_t> countElements(const char* p, const char* end) {
  std::vector<std::uint32_t> counts;
  std::vector<std::size_t> open;  // index in `counts` of each open array
  for (;;) {
    while (p != end && !kStructural[static_cast<unsigned char>(*p)]) {
      ++p;
    }
    if (p == end) {
      return counts;
    }
    switch (*p++) {
      case '"':
        while (p != end && *p != '"') {
          p += *p == '\\' && end - p > 1 ? 2 : 1;
        }
        if (p != end) {
          ++p;
        }
        break;
      case '[': {
        const char* next = p;
        while (next != end && isJsonWhitespace(*next)) {
          ++next;
        }
        open.push_back(counts.size());
        counts.push_back(next != end && *next != ']' ? 1 : 0);
        break;
      }
      case ']':
        if (!open.empty()) {
          open.pop_back();
        }
        break;
      case ',':
        if (!open.empty()) {
          ++counts[open.back()];
        }
        break;
      default:
        break;
    }
  }
}

// Reads one value. Each array is made at its final size as it opens, in
// the place it will keep (its parent's element, or the result), and filled
// element by element, so the finished tree is all that is allocated besides
// the counts and the list of open arrays: nesting depth costs heap, not call
// stack, and nothing is ever copied or moved a second time.
class Parser {
 public:
  explicit Parser(const std::string& text)
      : begin_(text.data()),
        end_(begin_ + text.size()),
        p_(begin_),
        readFrom_(begin_),
        counts_(countElements(begin_, end_)) {}

  KRValue parse() {
    skipByteOrderMark();
    Token token = scan();
    for (;;) {
      if (!startValue(token)) {
        // An array was opened: `token` is its first element.
        continue;
      }
      // A value is complete: close arrays until one goes on.
      for (;;) {
        token = open_.empty() ? scan() : scanInArray();
        if (open_.empty()) {
          if (token != Token::EndOfInput) {
            failToken(token, kExpectEnd);
          }
          return std::move(result_);
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

 private:
  // Handles `token` at the start of a value. Returns false when it opened a
  // non-empty array, with `token` replaced by the array's first token.
  bool startValue(Token& token) {
    switch (token) {
      case Token::Null:
        put(KRValue());
        return true;
      case Token::True:
        put(KRValue(true));
        return true;
      case Token::False:
        put(KRValue(false));
        return true;
      case Token::String:
        put(KRValue(string_));
        return true;
      case Token::Number:
        put(integer_ ? KRValue(readInt()) : KRValue(readFloat()));
        return true;
      case Token::BeginArray: {
        const std::uint32_t count = nextArray_ < counts_.size() ? counts_[nextArray_] : 0;
        ++nextArray_;
        KRValue& array = put(KRValue());
        array.arraySetSize(static_cast<int>(count));
        token = scan();
        if (token == Token::EndArray) {
          array.arraySetSize(0);
          return true;
        }
        open_.push_back({&array, 0});
        return false;
      }
      case Token::BeginObject:
        fail("objects are not supported", offsetOf(tokenStart_), "");
      case Token::Error:
        failToken(token, nullptr);
      default:
        failToken(token, kExpectValue);
    }
  }

  // Stores a value in its place and returns that place.
  KRValue& put(KRValue&& value) {
    if (open_.empty()) {
      result_ = std::move(value);
      return result_;
    }
    OpenArray& top = open_.back();
    // Only malformed text can hold more elements than counted; the array
    // then grows, which is safe as all its elements are complete.
    if (top.filled == top.array->getSize()) {
      top.array->arraySetSize(static_cast<int>(top.filled + 1));
    }
    KRValue& place = (*top.array)[static_cast<int>(top.filled++)];
    place = std::move(value);
    return place;
  }

  void closeArray() {
    const OpenArray& top = open_.back();
    if (top.filled != top.array->getSize()) {
      top.array->arraySetSize(static_cast<int>(top.filled));
    }
    open_.pop_back();
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

  void skipWhitespace() {
    while (p_ != end_ && isJsonWhitespace(*p_)) {
      ++p_;
    }
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

  void skipDigits() {
    while (p_ != end_ && isDigit(*p_)) {
      ++p_;
    }
  }

  // After the number's first byte. Leaves [numberStart_, p_) as the token.
  Token scanNumber() {
    numberStart_ = readFrom_ = p_ - 1;
    integer_ = true;
    char first = *numberStart_;
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
    if (p_ != end_ && (*p_ == 'e' || *p_ == 'E')) {
      integer_ = false;
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

  // After the opening quote. Leaves the text of the string in string_.
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
        string_.append(run, p_);
        ++p_;
        return Token::String;
      }
      if (c == '\\') {
        string_.append(run, p_);
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
        string_ += '"';
        return true;
      case '\\':
        string_ += '\\';
        return true;
      case '/':
        string_ += '/';
        return true;
      case 'b':
        string_ += '\b';
        return true;
      case 'f':
        string_ += '\f';
        return true;
      case 'n':
        string_ += '\n';
        return true;
      case 'r':
        string_ += '\r';
        return true;
      case 't':
        string_ += '\t';
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
      appendUtf8(string_, high);
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
    appendUtf8(string_, 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00));
    return true;
  }

  // ---- Numbers of the number token [numberStart_, p_)

  [[noreturn]] void failIntegerRange() const {
    fail("integer out of range", offsetOf(numberStart_),
         quoteNumber(numberStart_, p_) + " is outside [-2147483648, 2147483647]");
  }

  [[noreturn]] void failFloatRange() const {
    fail("float out of range", offsetOf(numberStart_),
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
  // both overflow and underflow to zero as out of range; the token read as a
  // double tells them apart.
  float readFloat() const {
    float value = 0.0f;
    const std::from_chars_result read = std::from_chars(numberStart_, p_, value);
    if (read.ec == std::errc() && read.ptr == p_) {
      return value;
    }
    if (read.ec == std::errc::result_out_of_range) {
      const double approx = std::strtod(std::string(numberStart_, p_).c_str(), nullptr);
      if (std::fabs(approx) < 1.0) {
        return *numberStart_ == '-' ? -0.0f : 0.0f;
      }
      failFloatRange();
    }
    fail("syntax error", offsetOf(numberStart_),
         "unreadable number " + quoteNumber(numberStart_, p_));
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
    fail("syntax error", offset, detail);
  }

  const char* const begin_;
  const char* const end_;
  const char* p_;           // the next byte to read
  const char* tokenStart_ = nullptr;
  const char* readFrom_;    // start of "last read": the last string or number token
  const char* numberStart_ = nullptr;
  bool integer_ = true;     // the number token has no fraction and no exponent
  std::string string_;      // the string token, unescaped
  const char* errorAt_ = nullptr;
  const char* problem_ = "";

  // An array being filled, and how many of its elements are in place.
  struct OpenArray {
    KRValue* array;
    std::uint32_t filled;
  };
  const std::vector<std::uint32_t> counts_;  // element counts, by order of opening
  std::size_t nextArray_ = 0;                // the next array to open, in counts_
  std::vector<OpenArray> open_;              // innermost last
  KRValue result_;
};

bool isBlank(const std::string& text) {
  for (const char c : text) {
    if (!isJsonWhitespace(c)) {
      return false;
    }
  }
  return true;
}

}  // namespace

KRValue parseKRValue(const std::string& text) {
  if (isBlank(text)) {
    fail("no value", text.size(), "the text is empty or only whitespace");
  }
  return Parser(text).parse();
}

}  // namespace KR
