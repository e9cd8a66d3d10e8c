#include <kr/math/floattext.h>

#include <charconv>
#include <cmath>
#include <ostream>

namespace KR {
namespace Math {

void appendFloatText(std::string& out, float number) {
  if (std::isnan(number)) {
    out += "nan";  // one text for every NaN, whatever its sign and payload
    return;
  }
  // std::to_chars without a format is the shortest round-trip form;
  // infinities come out as "inf" and "-inf".
  char text[32];
  const std::to_chars_result written = std::to_chars(text, text + sizeof text, number);
  out.append(text, written.ptr);
}

std::string floatText(float number) {
  std::string text;
  appendFloatText(text, number);
  return text;
}

std::ostream& operator<<(std::ostream& out, FloatText text) {
  return out << floatText(text.number);
}

}  // namespace Math
}  // namespace KR
