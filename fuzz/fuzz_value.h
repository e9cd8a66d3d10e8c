// Turns fuzz bytes into a KR::KRValue for the reader targets.
//
// FuzzedDataProvider takes numbers from the end of the input and strings
// from its front, so a target's option bytes are the last bytes of an input,
// and the byte before them chooses the decoding. With its low bit set, all
// the bytes before it are the value's text form, so that seeds can be written
// by hand (text, then the mode byte '1', then the options, last-read first)
// and mutated into near-misses of real descriptions. Otherwise they are a
// compact opcode stream (opcodes read from the back, strings from the front),
// which reaches what text cannot express: NaN, infinities, denormal floats,
// any int and any bytes in a string.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvaluetext.h>
#include <kr/math/pose2d.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace krfuzz {

/// Words the readers look for, so that the opcode stream finds them without
/// having to guess their bytes.
inline const char* const kWords[] = {
    "Line",   "Circle", "Flat",  "Composed", "Holonomic", "NonHolonomic", "Safe",
    "Immediate", "Custom", "LArm", "RArm", "Head", "LLeg", "RLeg", "walk", "x", "", "1", "0",
    "Enabled", "LFoot", "RFoot",
};

/// Floats that readers treat specially or that sit on a boundary.
inline const float kFloats[] = {0.0f, -0.0f, 0.5f, 1.0f, -1.0f, 1.5f, 2.0f, 3.1415927f,
                                1e-3f, 1e30f, 2147483648.0f, -2147483904.0f};

/// Appends `element` to the innermost open array.
inline void put(std::vector<KR::KRValue>& open, KR::KRValue&& element) {
  open.back().arrayPush(std::move(element));
}

/// The opcode stream: each byte says what comes next. Arrays nest through a
/// stack of open arrays (no recursion), so any depth the input can reach is
/// built; arrays still open at the end are closed.
inline KR::KRValue decodeOpcodes(FuzzedDataProvider& data) {
  std::vector<KR::KRValue> open(1);
  open.back().arraySetSize(0);
  while (data.remaining_bytes() > 0) {
    switch (data.ConsumeIntegral<std::uint8_t>() % 12) {
      case 0:
        put(open, KR::KRValue(data.ConsumeIntegralInRange<int>(-2, 8)));
        break;
      case 1:
        put(open, KR::KRValue(data.ConsumeIntegral<int>()));
        break;
      case 2:
        put(open, KR::KRValue(data.PickValueInArray(kFloats)));
        break;
      case 3: {
        const std::uint32_t bits = data.ConsumeIntegral<std::uint32_t>();
        float f;
        std::memcpy(&f, &bits, sizeof f);
        put(open, KR::KRValue(f));
        break;
      }
      case 4:
        put(open, KR::KRValue(data.ConsumeBool()));
        break;
      case 5:
        put(open, KR::KRValue(data.PickValueInArray(kWords)));
        break;
      case 6:
        put(open, KR::KRValue(data.ConsumeRandomLengthString(16)));
        break;
      case 7:
        put(open, KR::KRValue());
        break;
      case 8:
      case 9:
        open.emplace_back();
        open.back().arraySetSize(0);
        break;
      default:
        if (open.size() > 1) {
          KR::KRValue closed = std::move(open.back());
          open.pop_back();
          put(open, std::move(closed));
        }
        break;
    }
  }
  while (open.size() > 1) {
    KR::KRValue closed = std::move(open.back());
    open.pop_back();
    put(open, std::move(closed));
  }
  // One top-level element is the value; none or several make an array.
  if (open.back().getSize() == 1) {
    return KR::KRValue(open.back()[0]);
  }
  return std::move(open.back());
}

/// The value the bytes describe, or nothing when they are text that does not
/// parse (the text target covers that path).
inline std::optional<KR::KRValue> decodeValue(FuzzedDataProvider& data) {
  if (data.remaining_bytes() == 0) {
    return std::nullopt;
  }
  if (data.ConsumeIntegral<std::uint8_t>() & 1) {
    try {
      return KR::parseKRValue(data.ConsumeRemainingBytesAsString());
    } catch (const std::runtime_error&) {
      return std::nullopt;
    }
  }
  return decodeOpcodes(data);
}

/// Floats compared bit for bit: NaN equals the same NaN, 0 differs from -0.
inline bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

inline bool samePose(const KR::Math::Pose2D& a, const KR::Math::Pose2D& b) {
  return sameBits(a.x, b.x) && sameBits(a.y, b.y) && sameBits(a.theta, b.theta);
}

/// An int or a float: what the float and int readers accept.
inline bool isNumber(const KR::KRValue& v) { return v.isInt() || v.isFloat(); }

/// Stops the run with a message when a property does not hold; libFuzzer
/// then saves the input as a crash.
#define KRFUZZ_CHECK(condition)                                                          \
  do {                                                                                   \
    if (!(condition)) {                                                                  \
      std::fprintf(stderr, "check failed: %s (%s:%d)\n", #condition, __FILE__, __LINE__); \
      std::abort();                                                                      \
    }                                                                                    \
  } while (0)

/// Runs a reader. Its documented failure, std::runtime_error, is caught and
/// reported as false; any other exception escapes the fuzz target, which
/// libFuzzer reports as a crash.
template <typename Call>
bool succeeds(Call&& call) {
  try {
    call();
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

}  // namespace krfuzz
