#include <kr/math/supportsequence.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace KR {
namespace Math {

SupportSequence::SupportSequence(std::string name, const std::vector<float>& values,
                                 const std::vector<bool>& flags) {
  // Checked before anything is stored: every flag belongs to one value.
  if (flags.size() != values.size()) {
    throw std::runtime_error("SupportSequence " + name + ": " + std::to_string(flags.size()) +
                             " flags for " + std::to_string(values.size()) +
                             " values; there must be one flag per value.");
  }
  this->name = std::move(name);
  this->values = values;
  this->flags = flags;
}

bool operator==(const SupportSequence& a, const SupportSequence& b) {
  return a.name == b.name && a.values == b.values && a.flags == b.flags;
}

bool operator!=(const SupportSequence& a, const SupportSequence& b) { return !(a == b); }

}  // namespace Math
}  // namespace KR
