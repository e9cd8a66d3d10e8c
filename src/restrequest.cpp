// Reflex-mode names and the comparisons of rest requests.
#include <kr/restrequest.h>
#include <kr/math/isnear.h>

#include "krvalueutils_messages.h"

#include <boost/algorithm/cxx14/is_permutation.hpp>

#include <algorithm>
#include <cstddef>
#include <string>

namespace KR {
namespace {

// Angles of two requests are the same when within this distance.
const float kAngleTolerance = 1e-5f;

// The modes of both requests: the same names (std::map compares the sizes,
// then the pairs in key order) with the same mode each.
bool sameReflexModes(const RestRequest& a, const RestRequest& b) {
  return a.reflexModes == b.reflexModes;
}

// The same names with the same multiplicities, in any order. The common
// leading run is skipped first, so identical lists cost one pass.
bool sameNamesInAnyOrder(const RestRequest& a, const RestRequest& b) {
  return boost::algorithm::is_permutation(a.names.begin(), a.names.end(), b.names.begin(),
                                          b.names.end());
}

// For each name of `a` that has an angle, that angle against the angle of the
// name's first occurrence in `b`. The caller has made sure that both requests
// have as many names, and at least as many angles as names.
bool sameAnglesByName(const RestRequest& a, const RestRequest& b) {
  const std::size_t count = std::min(a.angles.size(), a.names.size());
  for (std::size_t i = 0; i < count; ++i) {
    const auto found = std::find(b.names.begin(), b.names.end(), a.names[i]);
    if (found == b.names.end()) {
      return false;
    }
    const std::size_t j = static_cast<std::size_t>(found - b.names.begin());
    if (!Math::isNear(a.angles[i], b.angles[j], kAngleTolerance)) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::string restReflexModeToString(REST_REFLEX_MODE mode) {
  const int number = static_cast<int>(mode);
  if (number == IMMEDIATE) {
    return "Immediate";
  }
  if (number == CUSTOM) {
    return "Custom";
  }
  if (number == SAFE) {
    return "Safe";
  }
  ValueUtils::detail::failUnknownRestReflexMode(number);
}

REST_REFLEX_MODE stringToRestReflexMode(const std::string& name) {
  if (name == "Safe") {
    return SAFE;
  }
  if (name == "Immediate") {
    return IMMEDIATE;
  }
  if (name == "Custom") {
    return CUSTOM;
  }
  ValueUtils::detail::failUnknownRestReflexModeName(name);
}

bool operator==(const RestRequest& a, const RestRequest& b) {
  if (a.names != b.names) {
    return false;
  }
  if (!sameReflexModes(a, b)) {
    return false;
  }
  return Math::isNear(a.angles, b.angles, kAngleTolerance);
}

bool operator!=(const RestRequest& a, const RestRequest& b) { return !(a == b); }

bool restRequestsAreEquivalent(const RestRequest& a, const RestRequest& b) {
  if (!sameReflexModes(a, b)) {
    return false;
  }
  if (!sameNamesInAnyOrder(a, b)) {
    return false;
  }
  if (a.angles.size() != b.angles.size()) {
    return false;
  }
  if (a.angles.empty() || a.names.empty()) {
    return true;
  }
  // The permutation test compares the two lists whole (with four iterators,
  // lists of different lengths are never permutations of each other), so
  // both requests have as many names here. A name found in `b` may sit at any
  // index below that number; with fewer angles than names its angle would be
  // missing. Both requests have as many names and as many angles, so testing
  // `a` covers `b`.
  if (a.angles.size() < a.names.size()) {
    return false;
  }
  return sameAnglesByName(a, b);
}

}  // namespace KR
