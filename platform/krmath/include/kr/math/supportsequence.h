// A named sequence of supports: a list of floats with one flag each.
#pragma once

#include <kr/math/krmath_export.h>

#include <string>
#include <vector>

namespace KR {
namespace Math {

/// `values` and `flags` always have the same length: flags[i] belongs to
/// values[i]. What the numbers mean (times, for instance) is the motion
/// side's business. Defaults to an empty name and two empty lists.
struct KRMATH_API SupportSequence {
  std::string name;
  std::vector<float> values;
  std::vector<bool> flags;

  SupportSequence() = default;
  /// Throws std::runtime_error when `flags` is not as long as `values`.
  SupportSequence(std::string name, const std::vector<float>& values,
                  const std::vector<bool>& flags);
};

/// Same name, same values (exactly) and same flags.
KRMATH_API bool operator==(const SupportSequence& a, const SupportSequence& b);
KRMATH_API bool operator!=(const SupportSequence& a, const SupportSequence& b);

}  // namespace Math
}  // namespace KR
