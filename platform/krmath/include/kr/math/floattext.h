// Floats as text, the one way every record, the krvalue tool and the Python
// reprs print them: the shortest text that reads back to the same float
// ("1", "0.1", "123456.79", "1e+20", "-0"), "nan", "inf" and "-inf".
#pragma once

#include <kr/math/krmath_export.h>

#include <iosfwd>
#include <string>

namespace KR {
namespace Math {

/// Appends the shortest text of `number` that reads back to the same float;
/// every NaN is "nan". At most 15 bytes ("-1.17549435e-38").
KRMATH_API void appendFloatText(std::string& out, float number);

/// The same as a string.
KRMATH_API std::string floatText(float number);

/// Streams a float as appendFloatText writes it, whatever the stream's
/// formatting: `out << FloatText{p.x}`.
struct FloatText {
  float number;
};
KRMATH_API std::ostream& operator<<(std::ostream& out, FloatText text);

}  // namespace Math
}  // namespace KR
