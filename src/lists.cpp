// Lists and maps: flat float lists, groups of floats, string and bool lists,
// and string-keyed maps of values.
//
// Each reader has its own tolerance on purpose: a single number or string
// stands for a list of one, the bool reader repeats a single bool and skips
// array elements it cannot use, and the map reader stops at the first
// malformed entry but keeps what it has inserted.
#include <kr/valueutils/lists.h>

#include "internal.h"

#include <map>
#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

// Reads a non-empty array of numbers, or a single number, into `floats`. The
// list is sized before any element is read, so after a failure it keeps its
// full size, the entries from the failing one on being 0.
void readFlat(const KR::KRValue& value, const std::string& name, std::vector<float>& floats) {
  floats.clear();
  if (detail::isNumber(value)) {
    floats.assign(1, detail::numberOf(value));
    return;
  }
  detail::checkArray(value, name);
  const unsigned int size = value.getSize();
  floats.resize(size);
  // The elements are contiguous in the array's block and the size is known,
  // so they are walked by pointer: indexing through the value would reload
  // the block and check the index for every element (a float store may alias
  // the value's payload, so the compiler cannot hoist those loads).
  const KR::KRValue* elements = &value[0];
  float* out = floats.data();
  for (unsigned int i = 0; i < size; ++i) {
    out[i] = detail::readFloat(elements[i], name, detail::kKRValueField);
  }
}

bool allNumbers(const KR::KRValue& array) {
  const unsigned int size = array.getSize();
  for (unsigned int i = 0; i < size; ++i) {
    if (!detail::isNumber(array[static_cast<int>(i)])) {
      return false;
    }
  }
  return true;
}

// One group per element of `array`, each holding that element alone. Every
// group exists before any number is read, and each gets its single 0 just
// before its number is read, so a failure leaves the earlier groups filled,
// the failing group holding 0 and the later groups empty. An empty array gives
// no groups.
void readOneNumberPerGroup(const KR::KRValue& array, const std::string& name,
                           std::vector<std::vector<float>>& groups) {
  const unsigned int size = array.getSize();
  groups.resize(size);
  for (unsigned int i = 0; i < size; ++i) {
    groups[i].resize(1);
    groups[i][0] = detail::readFloat(array[static_cast<int>(i)], name, detail::kKRValueField);
  }
}

// A list of numbers read as groups: all of it one group, or one group per
// number. With `isSingleGroup` the flat reader sees the list itself, so an
// empty list fails there as empty while the per-number form gives no groups.
void readNumberList(const KR::KRValue& list, const std::string& name, bool isSingleGroup,
                    std::vector<std::vector<float>>& groups) {
  if (isSingleGroup) {
    groups.resize(1);
    readFlat(list, name, groups[0]);
    return;
  }
  readOneNumberPerGroup(list, name, groups);
}

bool isBoolLike(const KR::KRValue& value) {
  return value.isBool() || value.isInt() || value.isFloat();
}

// An entry is an array long enough to hold its value, with a string key and a
// valid value. The array test comes first since indexing needs an array.
bool isWellFormedEntry(const KR::KRValue& entry, unsigned int leastSize, int valuePosition) {
  return entry.isArray() && entry.getSize() >= leastSize && entry[0].isValid() &&
         entry[0].isString() && entry[valuePosition].isValid();
}

}  // namespace

void extractVectorFloatsFromKRValue(const KR::KRValue& value, const std::string& name,
                                    std::vector<float>& floats) {
  readFlat(value, name, floats);
}

void extractVectorFloatsFromKRValue(const KR::KRValue& value, const std::string& name,
                                    const bool& isSingleGroup,
                                    std::vector<std::vector<float>>& groups) {
  groups.clear();
  // A single number is one group of one, whatever the flag says.
  if (detail::isNumber(value)) {
    groups.resize(1);
    groups[0].assign(1, detail::numberOf(value));
    return;
  }
  detail::checkArray(value, name);
  if (allNumbers(value)) {
    readNumberList(value, name, isSingleGroup, groups);
    return;
  }
  const unsigned int size = value.getSize();
  // A list of numbers wrapped once, [[x1, x2, ...]], reads like the list
  // itself; its elements are not checked beforehand, so a non-number among
  // them fails when read.
  if (size == 1 && value[0].isArray()) {
    readNumberList(value[0], name, isSingleGroup, groups);
    return;
  }
  // Mixed lists: every element is a group of its own, a number giving a group
  // of one. After a failure the later groups stay empty.
  groups.resize(size);
  for (unsigned int i = 0; i < size; ++i) {
    readFlat(value[static_cast<int>(i)], name, groups[i]);
  }
}

void extractVectorStringsFromKRValue(const KR::KRValue& value, const std::string& name,
                                     std::vector<std::string>& strings) {
  strings.clear();
  if (value.isString()) {
    strings.assign(1, static_cast<const std::string&>(value));
    return;
  }
  detail::checkArray(value, name);
  const unsigned int size = value.getSize();
  strings.resize(size);
  // The elements' kinds are not tested: the value's string conversion decides
  // and throws its own error for a non-string element.
  for (unsigned int i = 0; i < size; ++i) {
    strings[i] = detail::stringOf(value[static_cast<int>(i)]);
  }
}

void extractVectorBoolsFromKRValue(const KR::KRValue& value, unsigned int count,
                                   const std::string& name, std::vector<bool>& bools) {
  bools.clear();
  if (!value.isValid()) {
    detail::fail(detail::Message::BoolsInvalid, value, name);
  }
  // One bool stands for `count` of them (a caller passes the length of a list
  // the bools go with).
  if (isBoolLike(value)) {
    bools.assign(count, static_cast<bool>(value));
    return;
  }
  if (!value.isArray()) {
    detail::fail(detail::Message::BoolsWrongKind, value, name);
  }
  // Elements that are not a bool or a number are skipped, never a failure.
  const unsigned int size = value.getSize();
  bools.reserve(size);
  for (unsigned int i = 0; i < size; ++i) {
    const KR::KRValue& element = value[static_cast<int>(i)];
    if (isBoolLike(element)) {
      bools.push_back(static_cast<bool>(element));
    }
  }
}

void extractKeyValueMapFromKRValue(const KR::KRValue& value, const std::string& name,
                                   bool skipSecondElement,
                                   std::map<std::string, KR::KRValue>& map) {
  map.clear();
  if (!value.isValid()) {
    detail::fail(detail::Message::MapInvalid, value, name);
  }
  if (!value.isArray()) {
    detail::fail(detail::Message::MapNotAnArray, value, name);
  }
  // With skipSecondElement an entry is [key, anything, value, ...]: element 1
  // is never looked at.
  const int valuePosition = skipSecondElement ? 2 : 1;
  const unsigned int leastSize = skipSecondElement ? 3u : 2u;
  const unsigned int size = value.getSize();
  for (unsigned int i = 0; i < size; ++i) {
    const KR::KRValue& entry = value[static_cast<int>(i)];
    // Entries inserted so far stay in the map when a later one is malformed.
    if (!isWellFormedEntry(entry, leastSize, valuePosition)) {
      detail::fail(detail::Message::MapMalformedEntry, entry, name);
    }
    // The first entry with a given key wins; try_emplace copies nothing for a
    // key already present.
    map.try_emplace(static_cast<const std::string&>(entry[0]), entry[valuePosition]);
  }
}

}  // namespace ValueUtils
}  // namespace KR
