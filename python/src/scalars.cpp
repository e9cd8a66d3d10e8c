// Readers of scalars, durations, masks, frames, float/string/bool lists, maps,
// interpolation keys and motion configuration.
#include "values.h"

#include <kr/krvalueutils.h>

#include <pybind11/stl.h>

#include <bitset>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace krpy {
namespace {

namespace VU = KR::ValueUtils;
using KR::KRValue;

void bindNumbers(py::module_& m) {
  m.def(
      "clip_and_warn",
      [](float min, float max, float data, const std::string& name, const std::string& field) {
        VU::clipAndWarn(min, max, data, name, field);
        return data;
      },
      py::arg("min"), py::arg("max"), py::arg("data"), py::arg("name"), py::arg("field_name"),
      "Returns `data` clipped into [min, max] (bounds in either order); a changed number is "
      "logged as a warning.");
  m.def(
      "extract_float_and_clip",
      [](const KRValue& value, float min, float max, const std::string& name,
         const std::string& field) {
        float f = 0.0f;
        located(value, name, [&] { f = VU::extractFloatAndClip(value, min, max, name, field); });
        return f;
      },
      py::arg("value"), py::arg("min"), py::arg("max"), py::arg("name"), py::arg("field_name"),
      readerDoc("float-clip", "extract_float, then clip_and_warn; returns the clipped number."));
  m.def(
      "check_array_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        located(value, name, [&] { VU::checkArrayFromKRValue(value, name); });
      },
      py::arg("value"), py::arg("name"),
      readerDoc("check-array",
                "Returns None when `value` is a non-empty list; raises KRValueError otherwise."));
  m.def(
      "extract_float",
      [](const KRValue& value, const std::string& name, const std::string& field) {
        float f = 0.0f;
        located(value, name, [&] { f = VU::extractFloat(value, name, field); });
        return f;
      },
      py::arg("value"), py::arg("name"), py::arg("field_name"),
      readerDoc("float", "A float, or an int converted to float."));
  m.def(
      "extract_int_from_krvalue",
      [](const KRValue& value, const std::string& name, const std::string& field) {
        int i = 0;
        located(value, name, [&] { i = VU::extractIntFromKRValue(value, name, field); });
        return i;
      },
      py::arg("value"), py::arg("name"), py::arg("field_name"),
      readerDoc("int", "An int, or a float truncated toward zero (clamped to the int range)."));
  m.def(
      "extract_axis_mask_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::bitset<6> mask;
        located(value, name, [&] { VU::extractAxisMaskFromKRValue(value, name, mask); });
        return static_cast<int>(mask.to_ulong());
      },
      py::arg("value"), py::arg("name"),
      readerDoc("axis-mask", "An axis mask (an int whose low six bits are used)."));
  m.def(
      "extract_frame_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        KR::Math::FRAME frame = KR::Math::FRAME_TORSO;
        located(value, name, [&] { VU::extractFrameFromKRValue(value, name, frame); });
        return static_cast<int>(frame);
      },
      py::arg("value"), py::arg("name"), readerDoc("frame", "A frame: 0 torso, 1 world, 2 robot."));
  m.def(
      "extract_vector_axis_mask_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<std::bitset<6>> masks;
        located(value, name, [&] { VU::extractVectorAxisMaskFromKRValue(value, name, masks); });
        std::vector<int> out;
        out.reserve(masks.size());
        for (const auto& mask : masks) {
          out.push_back(static_cast<int>(mask.to_ulong()));
        }
        return out;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("axis-masks", "A list of axis masks; a single number is a list of one."));
  m.def(
      "extract_vector_frame_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<KR::Math::FRAME> frames;
        located(value, name, [&] { VU::extractVectorFrameFromKRValue(value, name, frames); });
        return std::vector<int>(frames.begin(), frames.end());
      },
      py::arg("value"), py::arg("name"),
      readerDoc("frames", "A list of frames; a single number is a list of one."));
}

void bindDurations(py::module_& m) {
  m.def(
      "extract_duration",
      [](const KRValue& seconds, const KRValue& microseconds, const std::string& name) {
        return VU::extractDuration(seconds, microseconds, name).count();
      },
      py::arg("seconds"), py::arg("microseconds"), py::arg("name"),
      readerDoc("duration",
                "(seconds * 1000000 + microseconds) * 1000: a duration in integer nanoseconds."));
  m.def(
      "convert_duration_to_krvalue",
      [](long long nanoseconds) {
        KRValue seconds;
        KRValue microseconds;
        VU::convertDurationToKRValue(boost::chrono::nanoseconds(nanoseconds), seconds,
                                     microseconds);
        return std::make_pair(seconds, microseconds);
      },
      py::arg("duration"),
      "A duration in integer nanoseconds as (seconds, microseconds), two ints.");
}

void bindLists(py::module_& m) {
  m.def(
      "extract_vector_floats_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<float> floats;
        {
          const ReleaseIfLarge release(value);
          located(value, name, [&] { VU::extractVectorFloatsFromKRValue(value, name, floats); });
        }
        return toArray(floats, 1, true);
      },
      py::arg("value"), py::arg("name"),
      readerDoc("floats", "A list of numbers (or one number) as a float32 array of shape (N,)."));
  m.def(
      "extract_vector_floats_from_krvalue",
      [](const KRValue& value, const std::string& name, bool isSingleGroup) {
        std::vector<std::vector<float>> groups;
        {
          const ReleaseIfLarge release(value);
          located(value, name, [&] {
            VU::extractVectorFloatsFromKRValue(value, name, isSingleGroup, groups);
          });
        }
        py::list out;
        for (const auto& group : groups) {
          out.append(toArray(group, 1, true));
        }
        return out;
      },
      py::arg("value"), py::arg("name"), py::arg("is_single_group"),
      readerDoc("float-groups", "Groups of floats: a list of float32 arrays of shape (N,)."));
  m.def(
      "extract_vector_strings_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<std::string> strings;
        located(value, name, [&] { VU::extractVectorStringsFromKRValue(value, name, strings); });
        return strings;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("strings", "A list of strings; a single string is a list of one."));
  m.def(
      "extract_vector_bools_from_krvalue",
      [](const KRValue& value, unsigned int count, const std::string& name) {
        std::vector<bool> bools;
        located(value, name, [&] { VU::extractVectorBoolsFromKRValue(value, count, name, bools); });
        return bools;
      },
      py::arg("value"), py::arg("count"), py::arg("name"),
      readerDoc("bools", "A list of bools; a single bool, int or float repeated `count` times."));
  m.def(
      "extract_key_value_map_from_krvalue",
      [](const KRValue& value, const std::string& name, bool skipSecondElement) {
        std::map<std::string, KRValue> map;
        located(value, name, [&] {
          VU::extractKeyValueMapFromKRValue(value, name, skipSecondElement, map);
        });
        return map;
      },
      py::arg("value"), py::arg("name"), py::arg("skip_second_element"),
      readerDoc("key-value-map",
                "[[key, value], ...] (or [[key, skipped, value], ...]) as a dict; the first of a "
                "key wins."));
}

void bindMotion(py::module_& m) {
  using KR::Math::Interpolation::Key;
  m.def(
      "extract_key_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        Key key;
        located(value, name, [&] { VU::extractKeyFromKRValue(value, name, key); });
        return key;
      },
      py::arg("value"), py::arg("name"),
      readerDoc(
          "key",
          "[value, [type, x, y], [type, x, y]] as a Key; a type outside 0..3 is forced to 3 with a "
          "warning."));
  m.def(
      "extract_vector_of_generic_control_points",
      [](const std::vector<float>& times, const KRValue& value, const std::string& name,
         float minTime) {
        std::vector<std::pair<float, Key>> keys;
        bool result = false;
        located(value, name, [&] {
          result = VU::extractVectorOfGenericControlPoints(times, value, name, minTime, keys);
        });
        return std::make_pair(result, keys);
      },
      py::arg("times"), py::arg("value"), py::arg("name"), py::arg("min_time"),
      readerDoc(
          "control-points",
          "Control points paired with `times`: returns (the C++ result, [(time, Key), ...]). The "
          "result is True when points earlier than `min_time` were dropped, False otherwise and "
          "when `value` is not a list as long as `times` (no keys then)."));
  m.def(
      "decode_motion_config",
      [](const KRValue& value, const KRValue& name) {
        KRValue decoded;
        located(value, name, [&] { VU::decodeMotionConfig(value, name, decoded); });
        return decoded;
      },
      py::arg("value"), py::arg("name"),
      "[[name, decoded]] for a str ('1' is True, anything else False), bool, int or float; "
      "None (and a warning) for any other value.");
}

}  // namespace

void bindScalars(py::module_& m) {
  bindNumbers(m);
  bindDurations(m);
  bindLists(m);
  bindMotion(m);
}

}  // namespace krpy
