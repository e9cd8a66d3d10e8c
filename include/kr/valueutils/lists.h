// Lists and maps. Each output is cleared first.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>

#include <map>
#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {

/// A number (int or float) is a list of one; otherwise a non-empty array of
/// numbers, each read with extractFloat (field name "KRValue"). The list is
/// sized before the elements are read: a failure at element k leaves it at
/// full size, the entries from k on 0.
KRVALUEUTILS_API void extractVectorFloatsFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     std::vector<float>& floats);

/// Groups of floats. A number is one group of one. A non-empty array of
/// numbers is one group of all of them when `isSingleGroup` is true, else one
/// group per number; a list wrapped once, [[x1, x2, ...]], likewise (with
/// `isSingleGroup` false, [[]] gives no groups, with true it fails as empty).
/// Any other array gives one group per element, each read as a flat list.
KRVALUEUTILS_API void extractVectorFloatsFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     const bool& isSingleGroup,
                                                     std::vector<std::vector<float>>& groups);

/// A string is a list of one; otherwise a non-empty array whose elements are
/// taken with the value's string conversion (a non-string element throws the
/// value type's std::runtime_error, naming the kind it found).
KRVALUEUTILS_API void extractVectorStringsFromKRValue(const KR::KRValue& value,
                                                      const std::string& name,
                                                      std::vector<std::string>& strings);

/// A bool, int or float (non-zero is true) repeated `count` times; or an
/// array whose bool, int and float elements are converted in order, any other
/// element being skipped (never a failure; `count` plays no part). Throws
/// "<name> : Expected a bool or vector of bool but found an invalid KRValue"
/// for an invalid value and "<name> : Expected a bool, int, float or array but
/// found an invalid KRValue" for any other kind.
KRVALUEUTILS_API void extractVectorBoolsFromKRValue(const KR::KRValue& value, unsigned int count,
                                                    const std::string& name,
                                                    std::vector<bool>& bools);

/// An array of entries [key, value, ...] (or [key, skipped, value, ...] when
/// `skipSecondElement` is true), key a string; the first entry with a given
/// key wins. Throws "<name> KRValue is invalid", "<name> KRValue is not valid:
/// it should be an array." or, for a malformed entry, "<name> KRValue is not
/// valid. It should be an array of length 2 arrays, the first element being
/// an std::string." followed by a line feed; entries read before a malformed
/// one stay in the map.
KRVALUEUTILS_API void extractKeyValueMapFromKRValue(const KR::KRValue& value,
                                                    const std::string& name,
                                                    bool skipSecondElement,
                                                    std::map<std::string, KR::KRValue>& map);

}  // namespace ValueUtils
}  // namespace KR
