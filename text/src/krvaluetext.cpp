#include <kr/krvaluetext.h>

#include <nlohmann/json.hpp>

#include <charconv>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace KR {

namespace {

using Json = nlohmann::json;

// ---------------------------------------------------------------------------
// Errors

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

// nlohmann's explanation without its own "[json.exception...] parse error at
// line L, column C: syntax error while parsing value - " lead-in, which would
// repeat (in other units) what our prefix already says.
std::string syntaxDetail(const std::string& what) {
  const std::size_t syntax = what.find("syntax error");
  if (syntax == std::string::npos) {
    return what;
  }
  const std::size_t dash = what.find(" - ", syntax);
  return dash == std::string::npos ? what.substr(syntax) : what.substr(dash + 3);
}

bool isJsonWhitespace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// A number token as quoted in a message: long ones are cut short, since a
// number can be any length.
std::string quoteNumber(const std::string& token) {
  constexpr std::size_t kShown = 32;
  if (token.size() <= kShown) {
    return token;
  }
  return token.substr(0, kShown) + "... (" + std::to_string(token.size()) + " bytes)";
}

// A number token is an integer literal unless it has a fraction or exponent.
bool isIntegerLiteral(const std::string& token) {
  return token.find_first_of(".eE") == std::string::npos;
}

// ---------------------------------------------------------------------------
// Parsing

// How many bytes of the text the lexer has taken so far.
struct ReadProgress {
  std::size_t consumed = 0;
};

// Input iterator over the text that counts the bytes the lexer takes, so that
// the handler can tell where a problem it detects lies. nlohmann's iterator
// input adapter advances it exactly once per byte read.
class CountingIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* position, ReadProgress* progress)
      : position_(position), progress_(progress) {}

  reference operator*() const { return *position_; }
  CountingIterator& operator++() {
    ++position_;
    ++progress_->consumed;
    return *this;
  }
  CountingIterator operator++(int) {
    CountingIterator before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const CountingIterator& a, const CountingIterator& b) {
    return a.position_ == b.position_;
  }
  friend bool operator!=(const CountingIterator& a, const CountingIterator& b) {
    return !(a == b);
  }

 private:
  const char* position_;
  ReadProgress* progress_;
};

// Builds the value straight from the parser's events. Arrays being filled
// wait on a stack; a finished array is moved into its parent, so no subtree
// is ever copied and nesting depth costs heap, not call stack.
//
// Problems found here throw at once; nlohmann's parser holds nothing but
// self-cleaning members, so the exception unwinds through it safely.
class ValueBuilder final : public nlohmann::json_sax<Json> {
 public:
  ValueBuilder(const std::string& text, const ReadProgress& progress)
      : text_(text), progress_(progress) {}

  KRValue takeResult() { return std::move(result_); }

  bool null() override { return put(KRValue()); }

  bool boolean(bool b) override { return put(KRValue(b)); }

  bool number_integer(number_integer_t i) override {
    if (i < INT_MIN || i > INT_MAX) {
      failIntegerRange(std::to_string(i));
    }
    return put(KRValue(static_cast<int>(i)));
  }

  bool number_unsigned(number_unsigned_t u) override {
    if (u > static_cast<number_unsigned_t>(INT_MAX)) {
      failIntegerRange(std::to_string(u));
    }
    return put(KRValue(static_cast<int>(u)));
  }

  // `approx` is nlohmann's double reading; the float is read again from the
  // token so that it is rounded once, straight to float.
  bool number_float(number_float_t approx, const string_t& token) override {
    // Integers too long for 64 bits come this way too.
    if (isIntegerLiteral(token)) {
      failIntegerRange(token);
    }
    return put(KRValue(readFloat(token, approx)));
  }

  bool string(string_t& s) override { return put(KRValue(std::move(s))); }

  // Only binary formats (CBOR, MessagePack...) produce these.
  bool binary(binary_t& /*bytes*/) override { return false; }

  bool start_object(std::size_t /*elements*/) override {
    // The lexer has just taken the '{' and nothing after it.
    fail("objects are not supported", progress_.consumed - 1, "");
  }
  // start_object never lets an object begin, so these are never reached.
  bool key(string_t& /*name*/) override { return false; }
  bool end_object() override { return false; }

  bool start_array(std::size_t /*elements*/) override {
    KRValue array;
    array.arraySetSize(0);
    open_.push_back(std::move(array));
    return true;
  }

  bool end_array() override {
    KRValue done = std::move(open_.back());
    open_.pop_back();
    return put(std::move(done));
  }

  bool parse_error(std::size_t position, const std::string& lastToken,
                   const nlohmann::json::exception& error) override {
    // Id of nlohmann's out_of_range error for a number beyond double range.
    // The lexer stands just as when it reports a number, so numberStart
    // applies.
    constexpr int kNumberOverflow = 406;
    if (error.id == kNumberOverflow) {
      if (isIntegerLiteral(lastToken)) {
        failIntegerRange(lastToken);
      }
      failFloatRange(lastToken);
    }
    // `position` counts the bytes read including the offending one, so the
    // offending byte is one before it; reading past the end counts as one
    // more byte, which makes an early end report the length of the text.
    const std::size_t offset = position == 0 ? 0 : position - 1;
    fail("syntax error", offset < text_.size() ? offset : text_.size(), syntaxDetail(error.what()));
  }

 private:
  bool put(KRValue&& value) {
    if (open_.empty()) {
      result_ = std::move(value);
    } else {
      open_.back().arrayPush(std::move(value));
    }
    return true;
  }

  // Offset of the first byte of the number token of `length` bytes that was
  // just reported. To see where a number ends the lexer reads one byte past
  // it, unless the text ends there. A number token ends in a digit, and the
  // lexer stops a non-zero number only at a byte that cannot continue it,
  // never a digit; so a digit as the last byte read is the token's own last
  // byte, anything else is the byte of look-ahead. Range errors only concern
  // non-zero numbers.
  std::size_t numberStart(std::size_t length) const {
    std::size_t end = progress_.consumed;
    if (end > 0 && !isDigit(text_[end - 1])) {
      --end;
    }
    return end >= length ? end - length : 0;
  }

  [[noreturn]] void failIntegerRange(const std::string& token) const {
    fail("integer out of range", numberStart(token.size()),
         quoteNumber(token) + " is outside [-2147483648, 2147483647]");
  }

  [[noreturn]] void failFloatRange(const std::string& token) const {
    fail("float out of range", numberStart(token.size()),
         quoteNumber(token) + " is outside [-3.4028235e+38, 3.4028235e+38]");
  }

  // The float nearest to the token, which the lexer has checked is a JSON
  // number. std::from_chars rounds correctly but reports both overflow and
  // underflow to zero as out of range; nlohmann's double tells them apart.
  float readFloat(const std::string& token, double approx) const {
    const char* first = token.data();
    const char* last = first + token.size();
    float value = 0.0f;
    const std::from_chars_result read = std::from_chars(first, last, value);
    if (read.ec == std::errc::result_out_of_range) {
      if (std::fabs(approx) < 1.0) {
        return token[0] == '-' ? -0.0f : 0.0f;
      }
      failFloatRange(token);
    }
    if (read.ec != std::errc() || read.ptr != last) {
      fail("syntax error", numberStart(token.size()), "unreadable number " + quoteNumber(token));
    }
    return value;
  }

  const std::string& text_;
  const ReadProgress& progress_;
  std::vector<KRValue> open_;
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

// ---------------------------------------------------------------------------
// Printing

void appendInt(std::string& out, int i) {
  char buffer[16];
  const std::to_chars_result written = std::to_chars(buffer, buffer + sizeof buffer, i);
  out.append(buffer, written.ptr);
}

void appendFloat(std::string& out, float f) {
  if (std::isnan(f)) {
    out += "NaN";
    return;
  }
  if (std::isinf(f)) {
    out += f < 0.0f ? "-Infinity" : "Infinity";
    return;
  }
  // Shortest round-trip form; the longest, "-1.17549435e-38", has 15 bytes.
  char buffer[32];
  const std::to_chars_result written = std::to_chars(buffer, buffer + sizeof buffer, f);
  const std::size_t start = out.size();
  out.append(buffer, written.ptr);
  // "3" or "-0" would read back as an int.
  if (out.find_first_of(".e", start) == std::string::npos) {
    out += ".0";
  }
}

// Length of the well-formed UTF-8 sequence starting at s[i] (a byte >= 0x80),
// or 0 when none starts there. Rejects overlong forms, encoded surrogates and
// code points above U+10FFFF, as nlohmann's reader does.
std::size_t utf8SequenceLength(const std::string& s, std::size_t i) {
  const auto byte = [&s](std::size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char lead = byte(i);
  std::size_t length = 0;
  unsigned char secondLow = 0x80;
  unsigned char secondHigh = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    secondLow = lead == 0xE0 ? 0xA0 : 0x80;   // overlong below U+0800
    secondHigh = lead == 0xED ? 0x9F : 0xBF;  // surrogates U+D800..U+DFFF
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    secondLow = lead == 0xF0 ? 0x90 : 0x80;   // overlong below U+10000
    secondHigh = lead == 0xF4 ? 0x8F : 0xBF;  // above U+10FFFF
  } else {
    return 0;
  }
  if (s.size() - i < length || byte(i + 1) < secondLow || byte(i + 1) > secondHigh) {
    return 0;
  }
  for (std::size_t k = 2; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) {
      return 0;
    }
  }
  return length;
}

// Appends the escape for an ASCII byte that JSON does not allow as it is.
void appendEscape(std::string& out, unsigned char c) {
  switch (c) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\b':
      out += "\\b";
      return;
    case '\f':
      out += "\\f";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      break;
  }
  static const char kHex[] = "0123456789abcdef";
  out += "\\u00";
  out += kHex[c >> 4];
  out += kHex[c & 0x0F];
}

void appendString(std::string& out, const std::string& s) {
  static const char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD
  out += '"';
  std::size_t copied = 0;  // s[copied, i) is waiting to be copied unchanged
  std::size_t i = 0;
  while (i < s.size()) {
    const unsigned char c = static_cast<unsigned char>(s[i]);
    if (c >= 0x20 && c < 0x80 && c != '"' && c != '\\') {
      ++i;
      continue;
    }
    if (c >= 0x80) {
      const std::size_t length = utf8SequenceLength(s, i);
      if (length != 0) {
        i += length;
        continue;
      }
    }
    out.append(s, copied, i - copied);
    if (c >= 0x80) {
      out += kReplacement;
    } else {
      appendEscape(out, c);
    }
    copied = ++i;
  }
  out.append(s, copied, i - copied);
  out += '"';
}

void appendScalar(std::string& out, const KRValue& value) {
  if (!value.isValid()) {
    out += "null";
  } else if (value.isBool()) {
    out += static_cast<bool>(value) ? "true" : "false";
  } else if (value.isInt()) {
    appendInt(out, static_cast<int>(value));
  } else if (value.isFloat()) {
    appendFloat(out, static_cast<float>(value));
  } else {
    appendString(out, static_cast<const std::string&>(value));
  }
}

// An array whose elements are being printed, and the next one to print.
struct PrintFrame {
  const KRValue* array;
  unsigned int next;
};

// Prints a scalar or an empty array in full; for any other array prints its
// '[' and pushes it, to be finished by the caller's loop.
void beginValue(std::string& out, const KRValue& value, std::vector<PrintFrame>& open) {
  if (!value.isArray()) {
    appendScalar(out, value);
  } else if (value.getSize() == 0) {
    out += "[]";
  } else {
    out += '[';
    open.push_back({&value, 0});
  }
}

}  // namespace

KRValue parseKRValue(const std::string& text) {
  if (isBlank(text)) {
    fail("no value", text.size(), "the text is empty or only whitespace");
  }
  ReadProgress progress;
  ValueBuilder builder(text, progress);
  const char* data = text.data();
  const bool complete = Json::sax_parse(CountingIterator(data, &progress),
                                        CountingIterator(data + text.size(), &progress), &builder);
  // The builder throws on every problem it is told of, so this is only a guard.
  if (!complete) {
    fail("syntax error", progress.consumed, "parsing stopped early");
  }
  return builder.takeResult();
}

std::string printKRValue(const KRValue& value) {
  std::string out;
  // Enough for a flat array of short numbers; deeper or longer values grow it.
  out.reserve(16 + 8 * static_cast<std::size_t>(value.getSize()));
  std::vector<PrintFrame> open;
  beginValue(out, value, open);
  while (!open.empty()) {
    PrintFrame& top = open.back();
    if (top.next == top.array->getSize()) {
      out += ']';
      open.pop_back();
      continue;
    }
    if (top.next != 0) {
      out += ", ";
    }
    const KRValue& element = (*top.array)[static_cast<int>(top.next)];
    ++top.next;  // before beginValue, which may reallocate `open`
    beginValue(out, element, open);
  }
  return out;
}

std::ostream& operator<<(std::ostream& out, const KRValue& value) {
  return out << printKRValue(value);
}

}  // namespace KR
