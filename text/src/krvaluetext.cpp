#include <kr/krvaluetext.h>

#include "utf8.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace KR {

namespace {

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
      const char* bad = nullptr;
      const std::size_t length = text::utf8SequenceLength(s.data() + i, s.data() + s.size(), bad);
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
