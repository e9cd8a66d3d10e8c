// KR::ValueUtils: checked conversions between KR::KRValue and typed records.
//
// Readers (extract...FromKRValue) check the shape of a value and fill a typed
// output; a malformed value throws std::runtime_error whose message names the
// argument (`name`) and, for numbers, the field (`fieldName`). No reader
// catches, wraps or extends an exception of a reader it calls, so the message
// a caller sees is the innermost one. Writers lay a record out as a value
// array in a fixed positional order.
//
// Corrections that are not failures (a clipped number, for instance) are
// logged as warnings (level 3) in the log category "KRValueUtils", with an
// empty file name, line 0 and the function's name; nothing else is printed.
//
// Every function is a free function without state: calls from several threads
// are independent as long as they do not share output arguments.
#pragma once

#include <kr/krvalue.h>
#include <kr/krvalueutils_export.h>
#include <kr/restrequest.h>
#include <kr/temperaturestatus.h>
#include <kr/math/frame.h>
#include <kr/math/interpolationkey.h>
#include <kr/math/metricaldata.h>
#include <kr/math/pose2d.h>
#include <kr/math/pose2dandtime.h>
#include <kr/math/pose2dposvelacc.h>
#include <kr/math/position2d.h>
#include <kr/math/position3d.h>
#include <kr/math/position6d.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/supportsequence.h>
#include <kr/math/trajectory/limits.h>
#include <kr/math/trajectory/pathfactory.h>
#include <kr/math/trajectory/trajectoryfactory.h>
#include <kr/math/transform.h>

#include <boost/chrono/duration.hpp>
#include <boost/function.hpp>
#include <boost/rational.hpp>

#include <bitset>
#include <map>
#include <set>
#include <string>
#include <utility>
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

// ---------------------------------------------------------------------------
// Lists and maps. Each output is cleared first.

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

// ---------------------------------------------------------------------------
// Rest requests (the record and its comparisons are in kr/restrequest.h)

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

// ---------------------------------------------------------------------------
// Support sequences

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

// ---------------------------------------------------------------------------
// Sensor and status records

/// Appends two elements to `value` (not cleared first): the level as an int
/// value and the names, in sorted order, as an array of strings (an empty
/// array when there are none).
KRVALUEUTILS_API void convertTemperatureStatusToKRValue(const KR::TemperatureStatus& status,
                                                        KR::KRValue& value);

/// [level, [name, ...], ...]. The names are added to those `status` already
/// holds. Throws the shape messages of checkArrayFromKRValue, then
/// "<name>: Invalid KRValue size." for fewer than two elements; the level is
/// read with extractIntFromKRValue (field name "KRValue").
KRVALUEUTILS_API void extractTemperatureStatusFromKRValue(const KR::KRValue& value,
                                                          KR::TemperatureStatus& status,
                                                          const std::string& name);

/// As extractTemperatureStatusFromKRValue, with element 1 also required to be
/// a non-empty array (checkArrayFromKRValue) before the level is read.
KRVALUEUTILS_API void extractDiagnosisFromKRValue(const KR::KRValue& value, int& level,
                                                  std::set<std::string>& names,
                                                  const std::string& name);

/// [[name, touched], ...]; the map is cleared first. An empty array, and any
/// valid value that is not an array (a number, a string), give an empty map. An entry that is
/// not an array of at least two elements with a string and a bool throws
/// "<name> Your collection of Touch was invalid."; the first entry of a name
/// wins.
KRVALUEUTILS_API void extractTouchFromKRValue(const KR::KRValue& value, const std::string& name,
                                              std::map<std::string, bool>& touch);

/// As above, with an int per name: element 0 of a non-empty third element
/// [number, ...] (read with the value's int conversion), otherwise 0.
KRVALUEUTILS_API void extractTouchFromKRValue(const KR::KRValue& value, const std::string& name,
                                              std::map<std::string, std::pair<bool, int>>& touch);

/// [[any, any, positions], ...]: `positions` is cleared, then the positions
/// of every entry (read as extractVectorPosition2DFromKRValue reads them) are
/// appended in order. An entry
/// of another size throws "<name>Your collection of Navigation Position2D was
/// invalid." (the name runs straight into the text).
KRVALUEUTILS_API void extractNavigationFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   std::vector<KR::Math::Position2D>& positions);

/// [label1, label2, [[x, y, z], ...], [16 floats], [seconds, microseconds]].
/// A wrong shape throws "<name> Wrong input MetricalData type format" and
/// leaves `data` untouched; points and the transform are read under the
/// argument name "MetricalDataExtractor", the duration under `name`.
KRVALUEUTILS_API void extractMetricalDataFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     KR::Math::MetricalData& data);

/// The layout above; reads back equal through extractMetricalDataFromKRValue
/// (the duration truncated to whole microseconds).
KRVALUEUTILS_API void extractKRValueFromMetricalData(const KR::Math::MetricalData& data,
                                                     KR::KRValue& value);

// ---------------------------------------------------------------------------
// Interpolation keys and control points

/// [value, [type, x, y], [type, x, y]]: value and offsets ints or floats, the
/// types ints. A type outside 0..3 becomes 3 (BEZIER_AUTO), with the warning
/// "angleInterpolationBezier received an unexpected interpolation type. Forced
/// to BEZIER_AUTO." logged once per such side. Nothing is written to `key`
/// before every check has passed.
KRVALUEUTILS_API void extractKeyFromKRValue(const KR::KRValue& value, const std::string& name,
                                            KR::Math::Interpolation::Key& key);

/// Control points paired with `times` by index, appended to `keys`: either all
/// bare numbers (keys computed by KR::Math::computeBezierAutoKey) or all full
/// keys (read by extractKeyFromKRValue). Points whose time is earlier than
/// `minTime` are dropped; returns whether any was. A value that is not an
/// array as long as `times` returns false and leaves `keys` untouched.
KRVALUEUTILS_API bool extractVectorOfGenericControlPoints(
    const std::vector<float>& times, const KR::KRValue& value, const std::string& name,
    const float& minTime, std::vector<std::pair<float, KR::Math::Interpolation::Key>>& keys);

// ---------------------------------------------------------------------------
// Motion configuration

/// Appends [name, decoded] to `decoded` (never cleared): a string value
/// decodes to true when it is exactly "1" and to false otherwise; a bool, int
/// or float keeps its kind. Any other value appends nothing and logs the
/// warning "Config: <name> invalid value.".
KRVALUEUTILS_API void decodeMotionConfig(const KR::KRValue& value, const KR::KRValue& name,
                                         KR::KRValue& decoded);

// ---------------------------------------------------------------------------
// Durations, exchanged as two int values: whole seconds and microseconds

/// (seconds * 1000000 + microseconds) * 1000 nanoseconds. The microseconds are
/// read first (field name "KRValue"), so when both values are malformed the
/// message is about the microseconds. Neither range nor sign is checked.
KRVALUEUTILS_API boost::chrono::nanoseconds extractDuration(const KR::KRValue& seconds,
                                                            const KR::KRValue& microseconds,
                                                            const std::string& name);

/// Splits a duration into whole seconds and the remaining microseconds
/// (zu::os::timeval: both carry the duration's sign, the sub-microsecond rest
/// is dropped) and stores each as an int value, whatever the outputs held.
/// Seconds beyond the int range wrap modulo 2^32.
KRVALUEUTILS_API void convertDurationToKRValue(const boost::chrono::nanoseconds& duration,
                                               KR::KRValue& seconds, KR::KRValue& microseconds);

// ---------------------------------------------------------------------------
// Geometry records. Values are positional arrays; each number is read with
// extractFloat under the field name given ("x", "y", "theta", ...). Fields are
// written in order as they are read, so a failure at element k leaves the
// fields before k overwritten; a failure of the shape test leaves `out`
// untouched.

/// [x, y], or [[x, y, ...]] nested once. Shape failures: those of
/// checkArrayFromKRValue, then "KRMotion: <name> Position2D is not valid. It
/// has to be [x, y]." (a size of 3 or more, a size of 2 whose element 0 is not
/// a number, a size of 1 whose element is not an array).
KRVALUEUTILS_API void extractPosition2DFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   KR::Math::Position2D& out);

/// [x, y, theta, ...]; elements from index 3 on are ignored. Anything that is
/// not an array of at least three elements fails with "KRMotion: <name>
/// Pose2D is not valid. It has to be [x, y, theta]."
KRVALUEUTILS_API void extractPose2DFromKRValue(const KR::KRValue& value, const std::string& name,
                                               KR::Math::Pose2D& out);

/// [x, y, theta] (time -1.0, the mark of an absent time) or
/// [x, y, theta, time, ...]; the pose is read as extractPose2DFromKRValue.
KRVALUEUTILS_API void extractPose2DAndTimeFromKRValue(const KR::KRValue& value,
                                                      const std::string& name,
                                                      KR::Math::Pose2DAndTime& out);

/// Exactly [x, y, z]; else "KRMotion: <name> Expected an KRValue with 3 floats
/// for x, y, z."
KRVALUEUTILS_API void extractPosition3DFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   KR::Math::Position3D& out);

/// Exactly [x, y, z, wx, wy, wz]; else "KRMotion: <name> Expected an KRValue
/// with 6 floats for x, y, z, wx, wy, wz."
KRVALUEUTILS_API void extractPosition6DFromKRValue(const KR::KRValue& value,
                                                   const std::string& name,
                                                   KR::Math::Position6D& out);

/// Exactly six floats; else "KRMotion: <name> Expected an vector with 6 floats
/// for x, y, z, wx, wy, wz."
KRVALUEUTILS_API void extractPosition6DFromVector(const std::vector<float>& values,
                                                  const std::string& name,
                                                  KR::Math::Position6D& out);

/// 12 or 16 numbers, row by row (r1_c1 ... r3_c4; a fourth row is neither read
/// nor checked); else "KRMotion: <name> Expected an KRValue with 12 or 16
/// floats." A matrix that is a transform within 0.001 is kept as read; one
/// within 0.01 is repaired with normalizeTransform() and reported by one line
/// on standard error, "KRMotion: <name> It is not exactly a transform.";
/// anything else fails with "KRMotion: <name> Wrong Transform given." after
/// all twelve fields have been written.
KRVALUEUTILS_API void extractTransformFromKRValue(const KR::KRValue& value,
                                                  const std::string& name,
                                                  KR::Math::Transform& out);

// ---------------------------------------------------------------------------
// Geometry lists. One record or a list of records in the same argument: a
// value is one record when its size is one of the record's single sizes
// (Position2D 2, Pose2D 3, Pose2DAndTime 3 or more, Position3D 3, Position6D
// 6, Transform 12 or 16) and its element 0 is a number; otherwise each
// element is read as one record. The output is emptied first, then sized
// before any element is read: after a failure at element k it holds every
// record, those after k default-made. Shape failures are those of
// checkArrayFromKRValue, except for Position3D lists (below).

KRVALUEUTILS_API void extractVectorPose2DFromKRValue(const KR::KRValue& value,
                                                     const std::string& name,
                                                     std::vector<KR::Math::Pose2D>& out);
KRVALUEUTILS_API void extractVectorPosition2DFromKRValue(const KR::KRValue& value,
                                                         const std::string& name,
                                                         std::vector<KR::Math::Position2D>& out);
KRVALUEUTILS_API void extractVectorPose2DAndTimeFromKRValue(
    const KR::KRValue& value, const std::string& name, std::vector<KR::Math::Pose2DAndTime>& out);
/// An invalid value, a value that is not an array and an empty array all give
/// an empty list without error.
KRVALUEUTILS_API void extractVectorPosition3DFromKRValue(const KR::KRValue& value,
                                                         const std::string& name,
                                                         std::vector<KR::Math::Position3D>& out);
KRVALUEUTILS_API void extractVectorPosition6DFromKRValue(const KR::KRValue& value,
                                                         const std::string& name,
                                                         std::vector<KR::Math::Position6D>& out);
KRVALUEUTILS_API void extractVectorTransformFromKRValue(const KR::KRValue& value,
                                                        const std::string& name,
                                                        std::vector<KR::Math::Transform>& out);

/// Groups of records. One record gives one group of one. A list whose every
/// element is a record gives one group per record, or a single group of all
/// of them when `isSingleGroup` is true. Otherwise (some element is not a
/// record) each element is one group, read by the list reader above.
KRVALUEUTILS_API void extractVectorPosition6DFromKRValue(
    const KR::KRValue& value, const std::string& name, const bool& isSingleGroup,
    std::vector<std::vector<KR::Math::Position6D>>& out);
KRVALUEUTILS_API void extractVectorTransformFromKRValue(
    const KR::KRValue& value, const std::string& name, const bool& isSingleGroup,
    std::vector<std::vector<KR::Math::Transform>>& out);

// ---------------------------------------------------------------------------
// Geometry writers. Every number is written as a float element. The
// extractKRValueFrom... writers clear `out` and push elements, so an empty
// input vector leaves `out` cleared (invalid); the create... writers make an
// array of the input's size, so an empty input gives an empty array.

/// [x, y]
KRVALUEUTILS_API void extractKRValueFromPosition2D(const KR::Math::Position2D& p,
                                                   KR::KRValue& out);
/// [[x, y], ...]
KRVALUEUTILS_API void extractKRValueFromVectorPosition2D(
    const std::vector<KR::Math::Position2D>& v, KR::KRValue& out);
/// [x, y, theta]
KRVALUEUTILS_API void extractKRValueFromPose2D(const KR::Math::Pose2D& p, KR::KRValue& out);
/// [[position x, y, theta], [velocity ...], [acceleration ...]]
KRVALUEUTILS_API void extractKRValueFromPose2DPosVelAcc(const KR::Math::Pose2DPosVelAcc& p,
                                                        KR::KRValue& out);
/// One element per record, each laid out as above.
KRVALUEUTILS_API void extractKRValueFromVectorPose2DPosVelAcc(
    const std::vector<KR::Math::Pose2DPosVelAcc>& v, KR::KRValue& out);
/// [[floats of v[0]], [floats of v[1]], ...]
KRVALUEUTILS_API void createKRValueFromVectorVectorFloat(const std::vector<std::vector<float>>& v,
                                                         KR::KRValue& out);
/// [[x, y, z], ...]
KRVALUEUTILS_API void createKRValueFromVectorPosition3D(const std::vector<KR::Math::Position3D>& v,
                                                        KR::KRValue& out);

// ---------------------------------------------------------------------------
// Path descriptions. A path is [TYPE, ...]:
//   ["Line", Position2D]                                        size 2
//   ["Circle", Position2D, float]                               size 3
//   ["Flat", Position2D, float, Position2D, Position2D, float]   size 6
//   ["Composed", direct path, direct path, ...]                 (general functions only)
// Type words are matched exactly. Each element goes, in array order, to the
// geometry library's parameter in the same position (see
// kr/math/trajectory/path2d.h for what they mean). Messages are `name`
// followed directly by a fixed text, with no separator: note that the texts
// beginning with "Invalid" run into the name ("argInvalid Path2DFlat KRValue").
// Positions and floats that fail report the element readers' own messages.

/// One direct path into a builder of the geometry library (PathFactory(1.0)).
/// Throws, in this order of checks: checkArrayFromKRValue's messages;
/// " Wrong DirectPath2D type format" (element 0 not a string);
/// "Invalid Path2DStraightLine KRValue", "Invalid Path2DArcOfCircle KRValue",
/// "Invalid Path2DFlat KRValue" (wrong size for the kind, checked before any
/// element is read); " Unknown DirectPath2D type" (any other word, "Composed"
/// included). `builder` is replaced only on success.
KRVALUEUTILS_API void extractDirectPath2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name,
    boost::function<KR::Math::Trajectory::KRDirectPath2D*(const KR::Math::Pose2D&)>& builder);

/// A direct or composed path into a path builder. Element 0 not a string
/// throws " Wrong Path2D type format"; a direct kind is decoded as above; a
/// composed path decodes each element as a direct path (so a nested
/// "Composed" throws " Unknown DirectPath2D type"). ["Composed"] alone gives
/// an empty composed path. `builder` is replaced only on success.
KRVALUEUTILS_API void extractPath2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name,
    boost::function<KR::Math::Trajectory::KRPath2D*(const KR::Math::Pose2D&)>& builder);

/// One direct path added to `factory` by one call of addLine, addCircle or
/// addFlat, after every element was read: a failure adds nothing. Same
/// checks and messages as extractDirectPath2DBuilderFromKRValue.
KRVALUEUTILS_API void extractDirectPath2DIntoTrajectoryFactory(
    const KR::KRValue& value, const std::string& name,
    KR::Math::Trajectory::TrajectoryFactory& factory);

/// A direct or composed path added to `factory` piece by piece, in array
/// order. " Wrong Path2D type format" when element 0 is not a string;
/// " Empty Composed Path2D" for ["Composed"] alone. When a piece fails, the
/// pieces before it stay added (no rollback).
KRVALUEUTILS_API void extractPath2DIntoTrajectoryFactory(
    const KR::KRValue& value, const std::string& name,
    KR::Math::Trajectory::TrajectoryFactory& factory);

// ---------------------------------------------------------------------------
// Trajectory descriptions. A trajectory is
//   ["Holonomic", path, rotation, seconds]                      size 4
//   ["NonHolonomic", path, seconds]                             size 3
//   ["Composed", direct trajectory, direct trajectory, ...]     at least one
// where path is any path description above except an empty composed one.
// Each direct trajectory gets a factory of its own, made with (firstLimits,
// secondLimits, period, factoryParameter); seconds are converted with
// KR::Math::rationalSecondsFromFloat(seconds, period). The path is read
// before the numbers. Messages are `name` followed directly by a fixed text,
// as for paths. `builder` is replaced only on success; the geometry
// library's own exceptions (limits, durations) pass through.

/// Throws " Wrong Path2D type format" (element 0 not a string),
/// "Invalid HolonomicTrajectoryPose2D KRValue" (wrong size for either kind,
/// checked before anything is read or made), or
/// " Unknown DirectTrajectoryPose2D type".
KRVALUEUTILS_API void extractDirectTrajectoryPose2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter,
    boost::function<KR::Math::Trajectory::KRDirectTrajectoryPose2D*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

/// Throws " Wrong TrajectoryPose2DComposed format" (element 0 not the string
/// "Composed"), " Empty Composed TrajectoryPose2D" (no element after it), or
/// the message of the first element that fails.
KRVALUEUTILS_API void extractTrajectoryPose2DComposedBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter,
    boost::function<KR::Math::Trajectory::KRTrajectoryPose2DComposed*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

/// A composed or direct trajectory. Throws " Wrong TrajectoryPose2D type
/// format" when element 0 is not a string; otherwise as the two above.
KRVALUEUTILS_API void extractTrajectoryPose2DBuilderFromKRValue(
    const KR::KRValue& value, const std::string& name, const KR::Math::RationalSeconds& period,
    const KR::Math::Trajectory::Limits& firstLimits,
    const KR::Math::Trajectory::Limits& secondLimits, float factoryParameter,
    boost::function<KR::Math::Trajectory::KRTrajectoryPose2D*(
        const KR::Math::Pose2DPosVelAcc&)>& builder);

}  // namespace ValueUtils
}  // namespace KR
