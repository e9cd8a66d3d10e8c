// The text form against nlohmann::json: the same bytes go to
// KR::parseKRValue and to nlohmann's SAX parser, whose events build the value
// the text form must give. Both must accept or reject alike, and what is
// accepted must be the same tree: same kinds, sizes, ints and bytes of every
// string, floats bit for bit (-0.0 keeps its sign).
//
// The expected value follows the text form's rules, so it differs from what
// nlohmann makes of the text in these ways, and only these:
//   - null is the invalid value.
//   - A number token without '.', 'e' or 'E' is an int; outside
//     [-2147483648, 2147483647] the text is rejected. nlohmann reads 64-bit
//     ints and reports longer integer tokens as floats; the handler looks at
//     the token, not at the event.
//   - Any other number is a float, the token rounded once to the nearest
//     float by std::strtof (correctly rounded in glibc), not through a
//     double. Magnitudes too small read as denormals or a signed zero; a
//     token that rounds beyond FLT_MAX is rejected.
//   - An object anywhere rejects the text.
//   - The words NaN, Infinity and -Infinity, outside strings, are floats:
//     the quiet NaN 0x7FC00000 (the one NaN the text form reads), +inf and
//     -inf. nlohmann knows no such words, so before it sees the text each is
//     replaced by null, and the null at that place in the expected value
//     becomes the float the word stands for.
//   - A NUL byte anywhere rejects the text. nlohmann, given a std::string,
//     takes the first NUL outside a string as the end of the text and would
//     accept "1\0x"; JSON allows NUL nowhere, so texts holding one are not
//     given to it.
// Everything else, a byte order mark opening the text, whitespace, string
// escapes, UTF-8 validation and lone surrogates included, is nlohmann's
// verdict as it is. Error messages are not compared, but a failure of
// parseKRValue must be a std::runtime_error.
#include <kr/krvalue.h>
#include <kr/krvaluetext.h>

#include "fuzz_value.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Json = nlohmann::json;

/// What a null literal of the text given to nlohmann stands for.
enum class NullWord : std::uint8_t { Null, NaN, Infinity, MinusInfinity };

/// The text as nlohmann gets it, and the meaning of each null literal in it,
/// in text order.
struct JsonText {
  std::string text;
  std::vector<NullWord> nulls;
};

/// Whether `word` stands in `text` at offset `at`.
bool startsWithAt(const std::string& text, std::size_t at, const char* word) {
  return text.compare(at, std::strlen(word), word) == 0;
}

/// Copies the text, replacing NaN, Infinity and -Infinity outside strings by
/// null, and notes what each null literal of the copy stands for (a null of
/// the text for itself). Strings are followed as JSON has them, a backslash
/// escaping the byte after it. In valid JSON every "null" outside strings is
/// a null literal, so once nlohmann accepts the copy its null events match
/// the notes one for one; on text that is not JSON the scan may go astray,
/// but nlohmann rejects it and the notes go unused.
JsonText replaceWords(const std::string& text) {
  static const std::pair<const char*, NullWord> kWords[] = {
      {"null", NullWord::Null},
      {"NaN", NullWord::NaN},
      {"Infinity", NullWord::Infinity},
      {"-Infinity", NullWord::MinusInfinity}};
  JsonText out;
  out.text.reserve(text.size());
  bool inString = false;
  std::size_t i = 0;
  while (i < text.size()) {
    const char c = text[i];
    if (inString) {
      out.text += c;
      ++i;
      if (c == '\\' && i < text.size()) {
        out.text += text[i++];
      } else if (c == '"') {
        inString = false;
      }
      continue;
    }
    if (c == '"') {
      inString = true;
      out.text += c;
      ++i;
      continue;
    }
    bool replaced = false;
    for (const auto& [word, meaning] : kWords) {
      if (startsWithAt(text, i, word)) {
        out.text += "null";
        out.nulls.push_back(meaning);
        i += std::strlen(word);
        replaced = true;
        break;
      }
    }
    if (!replaced) {
      out.text += c;
      ++i;
    }
  }
  return out;
}

/// The value a null literal stands for.
KR::KRValue valueOf(NullWord word) {
  switch (word) {
    case NullWord::NaN: return KR::KRValue(krfuzz::floatFromBits(0x7FC00000u));
    case NullWord::Infinity: return KR::KRValue(std::numeric_limits<float>::infinity());
    case NullWord::MinusInfinity: return KR::KRValue(-std::numeric_limits<float>::infinity());
    case NullWord::Null: break;
  }
  return KR::KRValue();
}

/// A JSON number token that is an int in the text form: no fraction, no
/// exponent.
bool isIntToken(const std::string& token) {
  return token.find_first_of(".eE") == std::string::npos;
}

/// Builds the value the text form must give from nlohmann's events, arrays
/// through a stack of open ones as decodeOpcodes does. Stops the parse, with
/// the reason kept, on anything the text form rejects.
class Oracle final : public nlohmann::json_sax<Json> {
 public:
  explicit Oracle(std::vector<NullWord> nulls) : nulls_(std::move(nulls)), open_(1) {
    open_.back().arraySetSize(0);
  }

  /// The value, once sax_parse accepted the text.
  KR::KRValue take() {
    // Every null literal of the text was an event, and every array closed.
    KRFUZZ_CHECK(nextNull_ == nulls_.size());
    KRFUZZ_CHECK(open_.size() == 1 && open_.back().getSize() == 1);
    return std::move(open_.back()[0]);
  }

  const char* rejection() const { return rejection_; }

  bool null() override {
    KRFUZZ_CHECK(nextNull_ < nulls_.size());
    return push(valueOf(nulls_[nextNull_++]));
  }

  bool boolean(bool b) override { return push(KR::KRValue(b)); }

  bool number_integer(number_integer_t i) override {
    if (i < std::numeric_limits<std::int32_t>::min() ||
        i > std::numeric_limits<std::int32_t>::max()) {
      return reject("integer out of range");
    }
    return push(KR::KRValue(static_cast<int>(i)));
  }

  bool number_unsigned(number_unsigned_t u) override {
    if (u > static_cast<number_unsigned_t>(std::numeric_limits<std::int32_t>::max())) {
      return reject("integer out of range");
    }
    return push(KR::KRValue(static_cast<int>(u)));
  }

  // nlohmann's double is not used: rounding the token to a double and then
  // to a float could land on a different float than rounding it once.
  bool number_float(number_float_t, const string_t& token) override {
    if (isIntToken(token)) {
      return reject("integer out of range");
    }
    errno = 0;
    char* end = nullptr;
    const float f = std::strtof(token.c_str(), &end);
    KRFUZZ_CHECK(end == token.c_str() + token.size());
    if (errno == ERANGE && std::isinf(f)) {
      return reject("float out of range");
    }
    return push(KR::KRValue(f));
  }

  bool string(string_t& s) override { return push(KR::KRValue(std::move(s))); }

  // Never reported for JSON text.
  bool binary(binary_t&) override { return reject("binary value"); }

  bool start_object(std::size_t) override { return reject("objects are not supported"); }
  bool key(string_t&) override { return reject("objects are not supported"); }
  bool end_object() override { return reject("objects are not supported"); }

  bool start_array(std::size_t) override {
    open_.emplace_back().arraySetSize(0);
    return true;
  }

  bool end_array() override {
    krfuzz::closeArray(open_);
    return true;
  }

  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
    return reject("not JSON");
  }

 private:
  bool push(KR::KRValue v) {
    open_.back().arrayPush(std::move(v));
    return true;
  }

  bool reject(const char* why) {
    rejection_ = why;
    return false;
  }

  std::vector<NullWord> nulls_;
  std::size_t nextNull_ = 0;
  std::vector<KR::KRValue> open_;
  const char* rejection_ = nullptr;
};

/// What parseKRValue must make of the text: a value, or nothing with the
/// reason the text is rejected.
struct Expected {
  std::optional<KR::KRValue> value;
  const char* rejection = nullptr;
};

Expected expectedValue(const std::string& text) {
  if (text.find('\0') != std::string::npos) {
    return {std::nullopt, "NUL byte"};
  }
  JsonText json = replaceWords(text);
  Oracle oracle(std::move(json.nulls));
  if (!Json::sax_parse(json.text, &oracle)) {
    return {std::nullopt, oracle.rejection()};
  }
  return {oracle.take(), nullptr};
}

/// Says on stderr what each side made of the text, before a failed check
/// stops the run.
void describe(const Expected& expected, const std::optional<std::string>& error,
              const KR::KRValue& actual) {
  if (expected.value) {
    std::fprintf(stderr, "expected: %s\n", KR::printKRValue(*expected.value).c_str());
  } else {
    std::fprintf(stderr, "expected: rejected (%s)\n", expected.rejection);
  }
  if (error) {
    std::fprintf(stderr, "parseKRValue: rejected (%s)\n", error->c_str());
  } else {
    std::fprintf(stderr, "parseKRValue: %s\n", KR::printKRValue(actual).c_str());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  KR::KRValue actual;
  const std::optional<std::string> error =
      krfuzz::failure([&] { actual = KR::parseKRValue(text); });
  const Expected expected = expectedValue(text);
  const bool sameVerdict = expected.value.has_value() == !error;
  if (!sameVerdict) {
    describe(expected, error, actual);
  }
  KRFUZZ_CHECK(sameVerdict);
  if (!expected.value) {
    return 0;
  }
  const bool same = krfuzz::sameTree(*expected.value, actual);
  if (!same) {
    describe(expected, error, actual);
  }
  KRFUZZ_CHECK(same);
  return 0;
}
