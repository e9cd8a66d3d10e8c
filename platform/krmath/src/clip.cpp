#include <kr/math/clip.h>

#include <utility>

namespace KR {
namespace Math {

bool clipData(const float& min, const float& max, float& data) {
  float low = min;
  float high = max;
  if (low > high) {
    std::swap(low, high);
  }
  // Comparisons with NaN are false, so a NaN bound or a NaN data never clips.
  if (data < low) {
    data = low;
    return true;
  }
  if (data > high) {
    data = high;
    return true;
  }
  return false;
}

}  // namespace Math
}  // namespace KR
