// Reference frames in which positions and transforms are expressed.
#pragma once

#include <kr/math/krmath_export.h>

namespace KR {
namespace Math {

enum FRAME {
  FRAME_TORSO = 0,  // attached to the robot's torso
  FRAME_WORLD = 1,  // fixed in the world, set where the robot started
  FRAME_ROBOT = 2,  // attached to the robot's base, on the ground below it
};

/// True for the ints that name a FRAME: 0, 1 and 2.
KRMATH_API bool isFrame(int frame);

/// "FRAME_TORSO", "FRAME_WORLD" or "FRAME_ROBOT"; "unknown" otherwise.
KRMATH_API const char* frameName(FRAME frame);

}  // namespace Math
}  // namespace KR
