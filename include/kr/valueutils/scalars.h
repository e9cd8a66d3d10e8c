// Scalars: the shape check of an array, numbers, axis masks and frames, and
// clipping a number into a range with a warning.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/math/frame.h>

#include <bitset>
#include <string>
#include <vector>

namespace KR {
namespace ValueUtils {

// ---------------------------------------------------------------------------
// Clipping

/// Clips `data` into [min, max] (KR::Math::clipData: bounds in either order)
/// and, when that changed it, logs the warning
///   KRMotion <name>: <fieldName> value <data> is clipped to: <new data>
///   because it must be in range [<min> <-> <max>]
/// (one line), numbers printed with a sign, a decimal point and six
/// significant digits (+1.50000). Throws nothing.
KRVALUEUTILS_API void clipAndWarn(float min, float max, float& data, const std::string& name,
                                  const std::string& fieldName);

/// extractFloat, then clipAndWarn; returns the clipped number.
KRVALUEUTILS_API float extractFloatAndClip(const KR::KRValue& value, const float& min,
                                           const float& max, const std::string& name,
                                           const std::string& fieldName);

// ---------------------------------------------------------------------------
// Scalars

/// Returns if `value` is a non-empty array. Otherwise throws, checking in this
/// order: "KRMotion: <name> KRValue is invalid.", "... KRValue is empty.",
/// "... KRValue is not an array.".
KRVALUEUTILS_API void checkArrayFromKRValue(const KR::KRValue& value, const std::string& name);

/// A float, or an int converted to float. Throws
/// "<name> <fieldName>: Expected a float but found an invalid KRValue" for an
/// invalid value and "<name> <fieldName>: Expected a float" for any other kind
/// (a bool is not a number).
KRVALUEUTILS_API float extractFloat(const KR::KRValue& value, const std::string& name,
                                    const std::string& fieldName);

/// An int, or a float truncated toward zero (2.9 gives 2, -2.9 gives -2).
/// Throws "<name> <fieldName>: Expected a int but found an invalid KRValue" or
/// "<name> <fieldName>: Expected a int". A float beyond the int range gives
/// INT_MAX or INT_MIN (NaN gives 0) instead of undefined behaviour.
KRVALUEUTILS_API int extractIntFromKRValue(const KR::KRValue& value, const std::string& name,
                                           const std::string& fieldName);

/// An int (field name "axis") that KR::Math::isAxisMask accepts, as its low six
/// bits. Otherwise throws "KRMotion: <name> Expected an axis mask." and leaves
/// `mask` untouched.
KRVALUEUTILS_API void extractAxisMaskFromKRValue(const KR::KRValue& value,
                                                 const std::string& name, std::bitset<6>& mask);

/// An int (field name "frame") that KR::Math::isFrame accepts. Otherwise throws
/// "KRMotion: <name> Expected a frame." and leaves `frame` untouched.
KRVALUEUTILS_API void extractFrameFromKRValue(const KR::KRValue& value, const std::string& name,
                                              KR::Math::FRAME& frame);

/// A single number is a list of one mask; otherwise a non-empty array of masks
/// (checkArrayFromKRValue). The list is cleared first and, for an array, sized
/// to its length before the elements are read in order, so a failure at
/// element k leaves the masks before k read and the others zero.
KRVALUEUTILS_API void extractVectorAxisMaskFromKRValue(const KR::KRValue& value,
                                                       const std::string& name,
                                                       std::vector<std::bitset<6>>& masks);

/// As extractVectorAxisMaskFromKRValue, for frames (unread entries are frame 0).
KRVALUEUTILS_API void extractVectorFrameFromKRValue(const KR::KRValue& value,
                                                    const std::string& name,
                                                    std::vector<KR::Math::FRAME>& frames);

}  // namespace ValueUtils
}  // namespace KR
