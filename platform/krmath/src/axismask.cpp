#include <kr/math/axismask.h>

namespace KR {
namespace Math {

bool isAxisMask(int mask) { return mask >= 1 && mask <= AXIS_MASK_ALL; }

}  // namespace Math
}  // namespace KR
