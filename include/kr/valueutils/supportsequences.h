// Support sequences read from values.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/supportsequence.h>

#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {

/// [name, floats, bools]: the floats as extractVectorFloatsFromKRValue reads
/// them, the bools as extractVectorBoolsFromKRValue reads them with the number
/// of floats as count, and as many bools as floats (else the record's
/// constructor throws). [name, [], []] is the empty sequence. Throws
/// "KRMotion: <name> Expected an KRValue of size 3." or "KRMotion: <name>
/// Expected a string as first element."; `sequence` is replaced only once
/// everything has been read.
KRVALUEUTILS_API void extractSupportSequenceFromKRValue(const KR::KRValue& value,
                                                        const std::string& name,
                                                        KR::Math::SupportSequence& sequence);

/// [sequence, ...] with pairwise different names. Throws "KRMotion: <name>
/// SupportSequence KRValue is not an array" or, at the first repeated name,
/// "KRMotion: <name> At least two support sequences containt the same name.".
/// The list is sized before reading: after a failure the sequences read so
/// far (a duplicate included) keep their data and the others are default.
KRVALUEUTILS_API void extractVectorSupportSequenceFromKRValue(
    const KR::KRValue& value, const std::string& name,
    std::vector<KR::Math::SupportSequence>& sequences);

}  // namespace ValueUtils
}  // namespace KR
