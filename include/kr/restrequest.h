// Rest requests: which named parts of the robot to put at rest, and how.
#pragma once

#include <kr/krvalueutils_export.h>

#include <map>
#include <string>
#include <vector>

namespace KR {

/// How a part goes to rest. The underlying type is fixed to int, so any int
/// (as a caller may cast one in) is a value of the enumeration.
enum REST_REFLEX_MODE : int {
  SAFE = 0,       // "Safe"
  IMMEDIATE = 1,  // "Immediate"
  CUSTOM = 2,     // "Custom": to the explicit target angles of the request
};

/// One rest request. `names` lists the parts in the caller's order
/// (duplicates kept); `reflexModes` gives the mode of each name; `angles` is
/// empty, or holds one target angle per entry of `names` (custom requests).
struct RestRequest {
  std::map<std::string, REST_REFLEX_MODE> reflexModes;
  std::vector<std::string> names;
  std::vector<float> angles;
};

/// "Safe", "Immediate" or "Custom". Throws std::runtime_error
/// "Unknown REST_REFLEX_MODE: <number>" for any other number.
KRVALUEUTILS_API std::string restReflexModeToString(REST_REFLEX_MODE mode);

/// The mode of "Safe", "Immediate" or "Custom" (exact, case-sensitive).
/// Throws std::runtime_error "Cannot convert <name> to REST_REFLEX_MODE."
KRVALUEUTILS_API REST_REFLEX_MODE stringToRestReflexMode(const std::string& name);

/// Same names in the same order, same modes, and angles near within 1e-5
/// (KR::Math::isNear: inclusive; lists of different lengths are not equal).
KRVALUEUTILS_API bool operator==(const RestRequest& a, const RestRequest& b);
KRVALUEUTILS_API bool operator!=(const RestRequest& a, const RestRequest& b);

/// Equality that ignores the order of `names`: same modes, the same names
/// with the same multiplicities, and for each name of `a` its angle near
/// (within 1e-5) the angle of the name's first occurrence in `b`. Requests
/// whose `angles` is not empty but shorter than their `names` are not
/// equivalent (an angle would be missing), so nothing is read past the end.
KRVALUEUTILS_API bool restRequestsAreEquivalent(const RestRequest& a, const RestRequest& b);

}  // namespace KR
