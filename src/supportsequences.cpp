// Support sequences read from values: one sequence, or a list of sequences
// with pairwise different names.
#include <kr/valueutils/supportsequences.h>
#include <kr/valueutils/lists.h>
#include <kr/math/supportsequence.h>

#include "internal.h"

#include <cstddef>
#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {
namespace {

bool isEmptyArray(const KR::KRValue& value) {
  return value.isValid() && value.isArray() && value.getSize() == 0;
}

// True when sequences[index] has the name of one of the sequences before it
// (exact, case-sensitive comparison).
bool repeatsEarlierName(const std::vector<KR::Math::SupportSequence>& sequences,
                        std::size_t index) {
  for (std::size_t i = 0; i < index; ++i) {
    if (sequences[i].name == sequences[index].name) {
      return true;
    }
  }
  return false;
}

}  // namespace

void extractSupportSequenceFromKRValue(const KR::KRValue& value, const std::string& name,
                                       KR::Math::SupportSequence& sequence) {
  if (!value.isValid() || !value.isArray() || value.getSize() != 3) {
    detail::fail(detail::Message::SupportSequenceSize, value, name);
  }
  if (!value[0].isString()) {
    detail::fail(detail::Message::SupportSequenceName, value[0], name);
  }
  // [name, [], []] is the empty sequence; the list readers would reject an
  // empty float list, so they are not asked.
  if (isEmptyArray(value[1]) && isEmptyArray(value[2])) {
    sequence = KR::Math::SupportSequence(static_cast<const std::string&>(value[0]), {}, {});
    return;
  }
  std::vector<float> values;
  extractVectorFloatsFromKRValue(value[1], name, values);
  // A single bool stands for one flag per value.
  std::vector<bool> flags;
  extractVectorBoolsFromKRValue(value[2], static_cast<unsigned int>(values.size()), name, flags);
  // The record's constructor rejects flags and values of different lengths;
  // `sequence` is replaced only once the whole record has been built.
  sequence = KR::Math::SupportSequence(static_cast<const std::string&>(value[0]), values, flags);
}

void extractVectorSupportSequenceFromKRValue(const KR::KRValue& value, const std::string& name,
                                             std::vector<KR::Math::SupportSequence>& sequences) {
  sequences.clear();
  if (!value.isArray()) {
    detail::fail(detail::Message::SupportSequencesNotAnArray, value, name);
  }
  // Sized first: after a failure the sequences not yet read are default.
  const unsigned int size = value.getSize();
  sequences.resize(size);
  // Names are compared as each sequence is read, so the first failure in
  // order is the one reported, and a duplicate is stored before it is found.
  for (unsigned int i = 0; i < size; ++i) {
    extractSupportSequenceFromKRValue(value[static_cast<int>(i)], name, sequences[i]);
    if (repeatsEarlierName(sequences, i)) {
      detail::fail(detail::Message::SupportSequencesSameName, value[static_cast<int>(i)][0], name);
    }
  }
}

}  // namespace ValueUtils
}  // namespace KR
