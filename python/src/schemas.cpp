// The reader schemas, for krvalueutils.schema(), and the docstrings of the
// readers, whose layout part comes from them.
#include <kr/krvalueschemas.h>
#include <pybind11/stl.h>

#include <deque>
#include <string>
#include <vector>

#include "values.h"

namespace krpy {

namespace {

/// The typical failures a schema lists ("x-messages"): each value, as JSON,
/// and the KRValueError message it raises with the argument name "value".
std::string failuresText(const char* schemaText) {
  const py::module_ json = py::module_::import("json");
  const py::object schema = json.attr("loads")(schemaText);
  const py::object failures = schema.attr("get")("x-messages", py::list());
  std::string text;
  for (const py::handle failure : failures) {
    text += text.empty() ? "\n\nRaises KRValueError, for example:" : "";
    text += "\n  " + py::str(json.attr("dumps")(failure["value"])).cast<std::string>() + "\n    " +
            py::str(failure["message"]).cast<std::string>();
  }
  return text;
}

}  // namespace

const char* readerDoc(const char* reader, const char* doc) {
  // pybind11 keeps the pointer: the texts live as long as the module.
  static std::deque<std::string> texts;
  const KR::Schemas::ReaderSchema* schema = KR::Schemas::findReaderSchema(reader);
  std::string text = doc;
  if (schema != nullptr) {
    text += "\n\nValue: ";
    text += schema->title;
    text += "\n\n";
    text += schema->description;
    text += failuresText(schema->text);
    text += "\n\nSchema: krvalueutils.schema(\"";
    text += reader;
    text += "\")";
  }
  texts.push_back(std::move(text));
  return texts.back().c_str();
}

void bindSchemas(py::module_& m) {
  m.def(
      "_schema_names",
      [] {
        std::vector<std::string> names;
        for (auto* s = KR::Schemas::readerSchemasBegin(); s != KR::Schemas::readerSchemasEnd();
             ++s) {
          names.emplace_back(s->name);
        }
        return names;
      },
      "The names of the readers that have a schema, in order.");
  m.def(
      "_schema_text",
      [](const std::string& name) {
        const KR::Schemas::ReaderSchema* schema = KR::Schemas::findReaderSchema(name);
        if (schema == nullptr) {
          throw py::value_error("no schema for '" + name + "'; see krvalueutils.schema_names()");
        }
        return std::string(schema->text);
      },
      py::arg("name"), "A reader's schema as JSON text.");
  m.def("_schema_bundle", &KR::Schemas::schemaBundle, "Every schema in one JSON document.");
}

}  // namespace krpy
