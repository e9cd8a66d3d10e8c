// Turns fuzz bytes into a KR::KRValue for the reader targets, and the checks
// the targets share.
//
// FuzzedDataProvider takes numbers from the end of the input and strings from
// its front, so a target's option bytes are the last bytes of an input and the
// byte before them chooses the decoding. With its low bit set, the bytes before
// it are the value's text form, so that seeds can be written by hand (text, the
// mode byte '1', then the options, last-read first). Otherwise they are an
// opcode stream, which reaches what text cannot: NaN, infinities, any int, any
// bytes in a string, any depth.
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

/// Words the readers look for, so that the opcode stream need not guess them.
inline const char* const kWords[] = {"Line", "Circle", "Flat", "Composed", "Holonomic",
                                     "NonHolonomic", "Safe", "Immediate", "Custom", "LArm",
                                     "Head", "LFoot", "1", ""};

/// The float whose bits are `bits`: NaNs, infinities and subnormals included.
inline float floatFromBits(std::uint32_t bits) {
  float f;
  std::memcpy(&f, &bits, sizeof f);
  return f;
}

/// Closes the innermost open array into the one around it.
inline void closeArray(std::vector<KR::KRValue>& open) {
  KR::KRValue closed = std::move(open.back());
  open.pop_back();
  open.back().arrayPush(std::move(closed));
}

/// Each opcode byte says what comes next. Arrays nest through a stack (no
/// recursion); those still open at the end are closed.
inline KR::KRValue decodeOpcodes(FuzzedDataProvider& data) {
  std::vector<KR::KRValue> open(1);
  open.back().arraySetSize(0);
  const auto push = [&open](KR::KRValue v) { open.back().arrayPush(std::move(v)); };
  while (data.remaining_bytes() > 0) {
    switch (data.ConsumeIntegral<std::uint8_t>() % 9) {
      case 0: push(KR::KRValue(data.ConsumeIntegralInRange<int>(-2, 8))); break;
      case 1: push(KR::KRValue(data.ConsumeIntegral<int>())); break;
      case 2: push(KR::KRValue(floatFromBits(data.ConsumeIntegral<std::uint32_t>()))); break;
      case 3: push(KR::KRValue(data.ConsumeBool())); break;
      case 4: push(KR::KRValue(data.PickValueInArray(kWords))); break;
      case 5: push(KR::KRValue(data.ConsumeRandomLengthString(16))); break;
      case 6: push(KR::KRValue()); break;
      case 7: open.emplace_back().arraySetSize(0); break;
      default:
        if (open.size() > 1) closeArray(open);
    }
  }
  while (open.size() > 1) {
    closeArray(open);
  }
  // One top-level element is the value; none or several make an array.
  if (open.back().getSize() == 1) {
    return KR::KRValue(open.back()[0]);
  }
  return std::move(open.back());
}

/// The value the bytes describe, or nothing for text that does not parse.
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

/// One node of two trees: same kind and content, same size for arrays.
inline bool sameNode(const KR::KRValue& expected, const KR::KRValue& actual) {
  if (expected.getType() != actual.getType()) {
    return false;
  }
  switch (expected.getType()) {
    case KR::KRValue::TypeBool: return static_cast<bool>(expected) == static_cast<bool>(actual);
    case KR::KRValue::TypeInt: return static_cast<int>(expected) == static_cast<int>(actual);
    case KR::KRValue::TypeFloat:
      return sameBits(static_cast<float>(expected), static_cast<float>(actual));
    case KR::KRValue::TypeString:
      return static_cast<const std::string&>(expected) == static_cast<const std::string&>(actual);
    case KR::KRValue::TypeArray: return expected.getSize() == actual.getSize();
    case KR::KRValue::TypeInvalid: return true;
  }
  return false;
}

/// Both trees node by node, through a stack of pairs still to compare rather
/// than recursion (KRValue's == compares floats with ==, so 0.0 would match
/// -0.0 and a NaN nothing).
inline bool sameTree(const KR::KRValue& expected, const KR::KRValue& actual) {
  std::vector<std::pair<const KR::KRValue*, const KR::KRValue*>> pending{{&expected, &actual}};
  while (!pending.empty()) {
    const auto [e, a] = pending.back();
    pending.pop_back();
    if (!sameNode(*e, *a)) {
      return false;
    }
    for (unsigned int i = 0; i < e->getSize(); ++i) {
      pending.emplace_back(&(*e)[static_cast<int>(i)], &(*a)[static_cast<int>(i)]);
    }
  }
  return true;
}

/// Records are plain floats without padding, so their bytes compare every
/// field bit for bit.
template <typename Record>
bool sameRecords(const std::vector<Record>& a, const std::vector<Record>& b) {
  return a.size() == b.size() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(Record)) == 0);
}

inline bool samePose(const KR::Math::Pose2D& a, const KR::Math::Pose2D& b) {
  return sameBits(a.x, b.x) && sameBits(a.y, b.y) && sameBits(a.theta, b.theta);
}

/// Stops the run when a property does not hold; libFuzzer saves the input.
#define KRFUZZ_CHECK(condition)                                                          \
  do {                                                                                   \
    if (!(condition)) {                                                                  \
      std::fprintf(stderr, "check failed: %s (%s:%d)\n", #condition, __FILE__, __LINE__); \
      std::abort();                                                                      \
    }                                                                                    \
  } while (0)

/// Runs a reader: nothing when it succeeds, the message of the
/// std::runtime_error it throws otherwise. Any other exception escapes the
/// target, which libFuzzer reports as a crash.
template <typename Call>
std::optional<std::string> failure(Call&& call) {
  try {
    call();
    return std::nullopt;
  } catch (const std::runtime_error& e) {
    return std::string(e.what());
  }
}

template <typename Call>
bool succeeds(Call&& call) {
  return !failure(std::forward<Call>(call));
}

}  // namespace krfuzz
