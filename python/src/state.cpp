// Robot state records: rest requests, support sequences, temperature and
// diagnosis, touch, navigation and metrical data.
#include "values.h"

#include <kr/krvalueutils.h>

#include <pybind11/stl.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace krpy {
namespace {

namespace M = KR::Math;
namespace VU = KR::ValueUtils;
using KR::KRValue;

void bindRestRequests(py::module_& m) {
  m.def(
      "extract_vector_rest_request_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<KR::RestRequest> requests;
        located(value, name, [&] {
          VU::extractVectorRestRequestFromKRValue(value, name, requests);
        });
        return requests;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("rest-requests", "[request, ...] as a list of RestRequest."));
  m.def(
      "extract_krvalue_from_vector_rest_request",
      [](const std::vector<KR::RestRequest>& requests) {
        KRValue out;
        VU::extractKRValueFromVectorRestRequest(requests, out);
        return out;
      },
      py::arg("requests"),
      "[[names, modes or angles], ...]; None when empty. A name without a mode raises "
      "IndexError ('map::at').");
  m.def(
      "rest_reflex_mode_to_string",
      [](int mode) { return KR::restReflexModeToString(static_cast<KR::REST_REFLEX_MODE>(mode)); },
      py::arg("mode"), "'Safe', 'Immediate' or 'Custom'; RuntimeError for any other number.");
  m.def("string_to_rest_reflex_mode", &KR::stringToRestReflexMode, py::arg("name"),
        readerDoc("reflex-mode", "The RestReflexMode of 'Safe', 'Immediate' or 'Custom'."));
  m.def("rest_requests_are_equivalent", &KR::restRequestsAreEquivalent, py::arg("a"),
        py::arg("b"), "Equality that ignores the order of the names.");
}

void bindSupportSequences(py::module_& m) {
  m.def(
      "extract_support_sequence_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        M::SupportSequence sequence;
        located(value, name, [&] { VU::extractSupportSequenceFromKRValue(value, name, sequence); });
        return sequence;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("support-sequence", "[name, floats, bools] as a SupportSequence."));
  m.def(
      "extract_vector_support_sequence_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<M::SupportSequence> sequences;
        located(value, name, [&] {
          VU::extractVectorSupportSequenceFromKRValue(value, name, sequences);
        });
        return sequences;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("support-sequences",
                "[sequence, ...] with different names, as a list of SupportSequence."));
}

void bindStatus(py::module_& m) {
  m.def(
      "convert_temperature_status_to_krvalue",
      [](const KR::TemperatureStatus& status) {
        KRValue out;
        VU::convertTemperatureStatusToKRValue(status, out);
        return out;
      },
      py::arg("status"), "[level, [name, ...]] with the names sorted.");
  m.def(
      "extract_temperature_status_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        KR::TemperatureStatus status;
        located(value, name, [&] { VU::extractTemperatureStatusFromKRValue(value, status, name); });
        return status;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("temperature-status", "[level, [name, ...], ...] as a TemperatureStatus."));
  m.def(
      "extract_diagnosis_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        int level = 0;
        std::set<std::string> names;
        located(value, name, [&] { VU::extractDiagnosisFromKRValue(value, level, names, name); });
        return std::make_pair(level, names);
      },
      py::arg("value"), py::arg("name"),
      readerDoc(
          "diagnosis",
          "[level, [name, ...], ...] as (level, set of names); the names must not be empty."));
  m.def(
      "extract_touch_from_krvalue",
      [](const KRValue& value, const std::string& name, bool withInts) -> Typed<TouchType> {
        if (withInts) {
          std::map<std::string, std::pair<bool, int>> touch;
          located(value, name, [&] { VU::extractTouchFromKRValue(value, name, touch); });
          return {py::cast(touch)};
        }
        std::map<std::string, bool> touch;
        located(value, name, [&] { VU::extractTouchFromKRValue(value, name, touch); });
        return {py::cast(touch)};
      },
      py::arg("value"), py::arg("name"), py::arg("with_ints") = false,
      // One function for both of the tool's readers: the layout of each.
      readerDoc("touch",
                readerDoc("touch-with-ints",
                          "[[name, touched], ...] as a dict name -> bool; with `with_ints`, "
                          "name -> (bool, int) (the C++ overload that reads an int per name).")));
  m.def(
      "extract_navigation_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        std::vector<M::Position2D> positions;
        {
          const ReleaseIfLarge release(value);
          located(value, name, [&] { VU::extractNavigationFromKRValue(value, name, positions); });
        }
        return toArray(positions, 2);
      },
      py::arg("value"), py::arg("name"),
      readerDoc("navigation",
                "The positions of every [any, any, positions] entry as a float32 array (N, 2)."));
  m.def(
      "extract_metrical_data_from_krvalue",
      [](const KRValue& value, const std::string& name) {
        M::MetricalData data;
        located(value, name, [&] { VU::extractMetricalDataFromKRValue(value, name, data); });
        return data;
      },
      py::arg("value"), py::arg("name"),
      readerDoc("metrical-data",
                "[label1, label2, [[x, y, z], ...], [16 floats], [seconds, microseconds]]."));
  m.def(
      "extract_krvalue_from_metrical_data",
      [](const M::MetricalData& data) {
        KRValue out;
        VU::extractKRValueFromMetricalData(data, out);
        return out;
      },
      py::arg("data"), "The layout extract_metrical_data_from_krvalue reads.");
}

}  // namespace

void bindState(py::module_& m) {
  bindRestRequests(m);
  bindSupportSequences(m);
  bindStatus(m);
}

}  // namespace krpy
