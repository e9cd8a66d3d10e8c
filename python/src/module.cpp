// The extension module krvalueutils._krvalueutils: the text form, the bridge
// from the library's warnings to Python's logging, and the parts bound in the
// other files of this directory.
#include "values.h"

#include <kr/krvaluetext.h>
#include <zu/log.h>

#include <pybind11/stl.h>

#include <exception>
#include <string>

namespace krpy {
namespace {

/// Python logging's level for a middleware level.
int pythonLevel(zu::log::Level level) {
  switch (level) {
    case zu::log::fatal:
      return 50;  // CRITICAL
    case zu::log::error:
      return 40;  // ERROR
    case zu::log::warning:
      return 30;  // WARNING
    case zu::log::info:
      return 20;  // INFO
    default:
      return 10;  // DEBUG
  }
}

/// Hands a record of the "KRValueUtils" category to the Python logger of the
/// same name, on the thread that logged, if that logger is enabled for its
/// level. The record's funcName is the C++ function that warned.
void forwardToLogging(const zu::log::Record& record) {
  if (record.category != "KRValueUtils" || !Py_IsInitialized()) {
    return;
  }
  const py::gil_scoped_acquire gil;
  try {
    const py::object logger = py::module_::import("logging").attr("getLogger")("KRValueUtils");
    const int level = pythonLevel(record.level);
    if (!logger.attr("isEnabledFor")(level).cast<bool>()) {
      return;
    }
    const py::object entry =
        logger.attr("makeRecord")(logger.attr("name"), level, record.file, record.line,
                                  record.message, py::tuple(), py::none(), record.function);
    logger.attr("handle")(entry);
  } catch (py::error_already_set& error) {
    error.discard_as_unraisable("krvalueutils warning handler");
  }
}

void bindText(py::module_& m) {
  m.def(
      "loads", [](const std::string& text) { return KR::parseKRValue(text); }, py::arg("text"),
      "Parses the JSON text form into a value (1 is an int, 1.0 a float, null None); "
      "RuntimeError \"KRValue text: ...\" on malformed text.");
  m.def(
      "dumps", [](const KR::KRValue& value) { return KR::printKRValue(value); },
      py::arg("value"), "The compact JSON text form of a value: \"[1, 2.5, \\\"x\\\", null]\".");
}

}  // namespace

void bindErrors(py::module_& m) {
  // The type outlives every call: the module keeps it, and so does this
  // function's static.
  static py::exception<ReaderError> type(m, "KRValueError", PyExc_RuntimeError);
  type.attr("__module__") = "krvalueutils";  // where users import it from
  type.doc() =
      "A reader's failure: the library's exact message (str(error)), `path`, the indices "
      "from the argument down to the element whose check failed (() for the argument "
      "itself), and `argument`, the name the reader was given.";
  py::register_exception_translator([](std::exception_ptr raised) {
    try {
      if (raised) {
        std::rethrow_exception(raised);
      }
    } catch (const ReaderError& e) {
      py::object error = py::handle(type.ptr())(e.what());
      error.attr("path") = py::tuple(py::cast(e.path));
      error.attr("argument") = e.argument;
      PyErr_SetObject(type.ptr(), error.ptr());
    }
  });
}

namespace {

void subscribeLogging(py::module_& m) {
  const zu::log::HandlerId id = zu::log::subscribe(&forwardToLogging);
  // Unsubscribe before the interpreter goes away, so that a warning logged
  // late (from a C++ thread, say) never reaches a finalized interpreter.
  py::module_::import("atexit").attr("register")(
      py::cpp_function([id]() { zu::log::unsubscribe(id); }));
  m.attr("LOGGER_NAME") = "KRValueUtils";
}

}  // namespace
}  // namespace krpy

PYBIND11_MODULE(_krvalueutils, m) {
  m.doc() =
      "Checked conversions between plain Python values and robot records (C++ "
      "libkrvalueutils).";
  // Everything bound here is re-exported by the package, so classes,
  // exceptions and functions say they belong to it: signatures, reprs and
  // tracebacks then name krvalueutils.Pose2D, not the extension module.
  const pybind11::object extensionName = m.attr("__name__");
  m.attr("__name__") = "krvalueutils";
  krpy::bindErrors(m);
  krpy::bindRecords(m);
  krpy::bindText(m);
  krpy::bindScalars(m);
  krpy::bindGeometry(m);
  krpy::bindState(m);
  krpy::bindPaths(m);
  krpy::bindSchemas(m);
  krpy::subscribeLogging(m);
  m.attr("__name__") = extensionName;
}
