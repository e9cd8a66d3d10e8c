// Rest requests read from and written to values.
//
// A request is [names, second, ...]; the second element says how the names go
// to rest: one mode name for all of them, a list of target angles, or a list
// of mode names paired with the names by index. Written back, a request is
// [names, modes] or, when it has angles, [names, angles].
#include <kr/valueutils/restrequests.h>
#include <kr/valueutils/lists.h>
#include <kr/restrequest.h>

#include "internal.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

// The second element is one mode name for every name. "Custom" needs angles,
// which this form cannot carry.
void readSingleMode(const KR::KRValue& second, const std::string& name, KR::RestRequest& request) {
  const std::string& modeName = static_cast<const std::string&>(second);
  // An unknown name makes the conversion throw: the mode's value is at fault.
  detail::noteFailureAt(second);
  const KR::REST_REFLEX_MODE mode = KR::stringToRestReflexMode(modeName);
  if (mode == KR::CUSTOM) {
    detail::failUnsupportedRestMode(second, name, modeName);
  }
  for (const std::string& n : request.names) {
    request.reflexModes[n] = mode;
  }
}

// The second element is a list of target angles: every name is CUSTOM. The
// two lists are not required to have the same length.
void readAngles(const KR::KRValue& second, const std::string& name, KR::RestRequest& request) {
  extractVectorFloatsFromKRValue(second, name, request.angles);
  for (const std::string& n : request.names) {
    request.reflexModes[n] = KR::CUSTOM;
  }
}

// The second element is a list of mode names, paired with the names by index
// up to the end of the shorter list; a name without a partner gets no entry.
// Only element 0 has been found to be a string: any other element goes to the
// value's string conversion as it is. Every mode is converted before any is
// stored.
void readModeNames(const KR::KRValue& second, KR::RestRequest& request) {
  const unsigned int size = second.getSize();
  std::vector<KR::REST_REFLEX_MODE> modes;
  modes.reserve(size);
  for (unsigned int k = 0; k < size; ++k) {
    const KR::KRValue& element = second[static_cast<int>(k)];
    const std::string& modeName = detail::stringOf(element);
    // An unknown name makes the conversion throw: this element is at fault.
    detail::noteFailureAt(element);
    modes.push_back(KR::stringToRestReflexMode(modeName));
  }
  // A name listed twice keeps the mode paired with its later occurrence.
  for (std::size_t i = 0; i < request.names.size() && i < modes.size(); ++i) {
    request.reflexModes[request.names[i]] = modes[i];
  }
}

// The three forms of the second element, told apart in this order: a string,
// an array starting with a float, an array starting with a string.
void readSecond(const KR::KRValue& second, const std::string& name, KR::RestRequest& request) {
  if (second.isString()) {
    readSingleMode(second, name, request);
    return;
  }
  if (!second.isArray()) {
    detail::fail(detail::Message::RestSecondNotStringOrArray, second, name);
  }
  detail::checkArray(second, name);
  if (second[0].isFloat()) {
    readAngles(second, name, request);
    return;
  }
  if (!second[0].isString()) {
    detail::fail(detail::Message::RestSecondElementKind, second[0], name);
  }
  readModeNames(second, request);
}

// One element of the list, [names, second, ...]; elements after the second
// are ignored.
KR::RestRequest readRequest(const KR::KRValue& element, const std::string& name) {
  detail::checkArray(element, name);
  // Two elements are enough, whatever the message says.
  if (element.getSize() < 2) {
    detail::fail(detail::Message::RestRequestTooShort, element, name);
  }
  detail::checkArray(element[0], name);
  KR::RestRequest request;
  extractVectorStringsFromKRValue(element[0], name, request.names);
  readSecond(element[1], name, request);
  return request;
}

// The mode name of each entry of `names`, in order. Without names the result
// stays a default (invalid) value. A name without a mode throws
// std::out_of_range from the map.
KR::KRValue modeNamesOf(const KR::RestRequest& request) {
  KR::KRValue modes;
  for (const std::string& n : request.names) {
    modes.arrayPush(KR::KRValue(KR::restReflexModeToString(request.reflexModes.at(n))));
  }
  return modes;
}

}  // namespace

void extractVectorRestRequestFromKRValue(const KR::KRValue& value, const std::string& name,
                                         std::vector<KR::RestRequest>& requests) {
  // A value that is not a non-empty array leaves `requests` as it was.
  detail::checkArray(value, name);
  requests.clear();
  const unsigned int size = value.getSize();
  requests.reserve(size);
  // A failing element adds nothing; the requests before it stay.
  for (unsigned int i = 0; i < size; ++i) {
    requests.push_back(readRequest(value[static_cast<int>(i)], name));
  }
}

void extractKRValueFromVectorRestRequest(const std::vector<KR::RestRequest>& requests,
                                         KR::KRValue& value) {
  // An empty list leaves the value cleared (invalid), not an empty array.
  value.clear();
  for (const KR::RestRequest& request : requests) {
    KR::KRValue item;
    item.arrayPush(KR::KRValue(request.names));
    if (request.angles.empty()) {
      item.arrayPush(modeNamesOf(request));
    } else {
      item.arrayPush(KR::KRValue(request.angles));
    }
    // Pushed only once complete: after a failure `value` holds the items of
    // the requests before the failing one.
    value.arrayPush(std::move(item));
  }
}

}  // namespace ValueUtils
}  // namespace KR
