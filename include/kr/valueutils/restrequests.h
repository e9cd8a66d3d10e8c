// Rest requests read from and written to values (the record and its
// comparisons are in kr/restrequest.h).
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/restrequest.h>

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {

/// [request, ...], each request [names, second, ...] where second is one mode
/// name for all ("Safe" or "Immediate"), a list of angles (every name
/// CUSTOM), or a list of mode names paired with the names by index. Requests
/// completed before a failing element stay in `requests`. A second element
/// that is an empty array fails with checkArrayFromKRValue's message.
KRVALUEUTILS_API void extractVectorRestRequestFromKRValue(const KR::KRValue& value,
                                                          const std::string& name,
                                                          std::vector<KR::RestRequest>& requests);

/// [[names, modes], ...] for requests without angles (modes: the mode name of
/// each entry of names), [[names, angles], ...] for the others; an empty list
/// leaves `value` cleared. A name without a mode throws std::out_of_range
/// ("map::at"), leaving the items of the requests before it in `value`.
KRVALUEUTILS_API void extractKRValueFromVectorRestRequest(
    const std::vector<KR::RestRequest>& requests, KR::KRValue& value);

}  // namespace ValueUtils
}  // namespace KR
