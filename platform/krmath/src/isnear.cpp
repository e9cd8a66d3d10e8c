#include <kr/math/isnear.h>

#include <cmath>
#include <cstddef>

namespace KR {
namespace Math {

bool isNear(const float& a, const float& b, const float& epsilon) {
  // Equal numbers are near whatever the tolerance; this is also what makes two
  // equal infinities near, since their difference is NaN.
  if (a == b) {
    return true;
  }
  // A NaN makes the comparison false, so NaN is near nothing.
  return std::fabs(a - b) <= epsilon;
}

bool isNear(const std::vector<float>& a, const std::vector<float>& b, const float& epsilon) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!isNear(a[i], b[i], epsilon)) {
      return false;
    }
  }
  return true;
}

}  // namespace Math
}  // namespace KR
