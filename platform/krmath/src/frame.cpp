#include <kr/math/frame.h>

namespace KR {
namespace Math {

bool isFrame(int frame) { return frame >= FRAME_TORSO && frame <= FRAME_ROBOT; }

const char* frameName(FRAME frame) {
  switch (frame) {
    case FRAME_TORSO:
      return "FRAME_TORSO";
    case FRAME_WORLD:
      return "FRAME_WORLD";
    case FRAME_ROBOT:
      return "FRAME_ROBOT";
  }
  return "unknown";
}

}  // namespace Math
}  // namespace KR
