// Reads a few arguments the way a motion module does, using nothing but
// <kr/krvalueutils.h> and the library, however it was found: the installed
// CMake package, add_subdirectory or pkg-config (see scripts/test.sh).
#include <kr/krvalueutils.h>
#include <kr/krvalueutils_version.h>

#include <iostream>
#include <stdexcept>

int main() {
  KR::KRValue speed(0.25f);
  KR::KRValue frames;
  frames.arrayPush(KR::KRValue(1));
  frames.arrayPush(KR::KRValue(2));

  const float x = KR::ValueUtils::extractFloat(speed, "setSpeed", "x");
  std::vector<KR::Math::FRAME> read;
  KR::ValueUtils::extractVectorFrameFromKRValue(frames, "frames", read);

  try {
    KR::ValueUtils::extractFloat(KR::KRValue("fast"), "setSpeed", "x");
    std::cerr << "a string was read as a float\n";
    return 1;
  } catch (const std::runtime_error& e) {
    if (std::string(e.what()) != "setSpeed x: Expected a float") {
      std::cerr << "unexpected message: " << e.what() << "\n";
      return 1;
    }
  }

  if (x != 0.25f || read.size() != 2 || read[1] != KR::Math::FRAME_ROBOT) {
    std::cerr << "unexpected result\n";
    return 1;
  }
  std::cout << "consumer of libkrvalueutils " << KRVALUEUTILS_VERSION_MAJOR << "."
            << KRVALUEUTILS_VERSION_MINOR << "." << KRVALUEUTILS_VERSION_PATCH << ": read x = " << x
            << " and " << read.size() << " frames\n";
  return 0;
}
