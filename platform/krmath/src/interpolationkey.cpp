// Interpolation keys: construction, comparison and printing.
#include <kr/math/interpolationkey.h>

#include <kr/math/floattext.h>

#include <ostream>

// Comparisons are exact float comparisons, so a key holding a NaN differs from
// every key, itself included. Printing writes each float in its shortest
// exact form (floattext.h), whatever the stream's formatting.

namespace KR {
namespace Math {
namespace Interpolation {
namespace {

bool sameParameter(const Parameter& a, const Parameter& b) {
  return a.type == b.type && a.offset == b.offset;
}

std::ostream& printParameter(std::ostream& out, const Parameter& p) {
  return out << "(" << p.type << ", " << FloatText{p.offset.x} << ", " << FloatText{p.offset.y}
             << ")";
}

}  // namespace

Key::Key() : value(0.0f), firstParam(), secondParam() {}

Key::Key(float value, const Parameter& firstParam, const Parameter& secondParam)
    : value(value), firstParam(firstParam), secondParam(secondParam) {}

// Out of line so that the virtual table lives in this library.
Key::~Key() = default;

bool operator==(const Key& a, const Key& b) {
  return a.value == b.value && sameParameter(a.firstParam, b.firstParam) &&
         sameParameter(a.secondParam, b.secondParam);
}

bool operator!=(const Key& a, const Key& b) { return !(a == b); }

std::ostream& operator<<(std::ostream& out, const Key& key) {
  out << "Key(value=" << FloatText{key.value} << ", first=";
  printParameter(out, key.firstParam) << ", second=";
  return printParameter(out, key.secondParam) << ")";
}

}  // namespace Interpolation
}  // namespace Math
}  // namespace KR
