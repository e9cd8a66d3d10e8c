// KR::KRValue to and from plain Python objects, and the shared argument
// conversions of the module.
#include "values.h"

#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace krpy {
namespace {

/// Where the converter stands in the argument ("value[2][0]" in messages),
/// and the memory the converted value takes, estimated.
struct Walk {
  std::vector<Py_ssize_t> position;
  std::size_t bytes = 0;
};

std::string positionText(const Walk& walk) {
  std::string text = "value";
  for (const Py_ssize_t index : walk.position) {
    text += "[" + std::to_string(index) + "]";
  }
  return text;
}

[[noreturn]] void throwUnsupported(PyObject* object, const Walk& walk) {
  throw py::type_error(positionText(walk) + " is a " + Py_TYPE(object)->tp_name +
                       "; a KRValue holds None, bool, int, float, str or a list");
}

[[noreturn]] void throwFloatOverflow(double number, const Walk& walk) {
  const py::float_ shown(number);
  PyErr_Format(PyExc_OverflowError,
               "%s is the float %R, outside a KRValue float's range "
               "[-3.4028235e+38, 3.4028235e+38]",
               positionText(walk).c_str(), shown.ptr());
  throw py::error_already_set();
}

/// An int object as a 32-bit int value; OverflowError beyond that range.
KR::KRValue intValue(PyObject* object, const Walk& walk) {
  int overflow = 0;
  const long long number = PyLong_AsLongLongAndOverflow(object, &overflow);
  if (number == -1 && PyErr_Occurred()) {
    throw py::error_already_set();
  }
  if (overflow != 0 || number < INT_MIN || number > INT_MAX) {
    PyErr_Format(PyExc_OverflowError, "%s is the int %S, outside a KRValue int's range [%d, %d]",
                 positionText(walk).c_str(), object, INT_MIN, INT_MAX);
    throw py::error_already_set();
  }
  return KR::KRValue(static_cast<int>(number));
}

/// A float object as a 32-bit float value, rounded to the nearest float;
/// OverflowError for a finite number beyond the float range, which would
/// otherwise round to an infinity. NaN and the infinities stay what they are.
float floatOf(double number, const Walk& walk) {
  const float narrowed = static_cast<float>(number);
  if (std::isinf(narrowed) && !std::isinf(number)) {
    throwFloatOverflow(number, walk);
  }
  return narrowed;
}

bool isNumpyObject(PyObject* object) {
  return std::strncmp(Py_TYPE(object)->tp_name, "numpy.", 6) == 0;
}

void convert(PyObject* object, KR::KRValue& out, Walk& walk);

/// A list or tuple, element by element, written in place into `out`. Every
/// element is written: `out` may hold an earlier value whose blocks are
/// reused.
void convertSequence(PyObject* sequence, KR::KRValue& out, Walk& walk) {
  const bool isList = PyList_Check(sequence);
  const Py_ssize_t size = isList ? PyList_GET_SIZE(sequence) : PyTuple_GET_SIZE(sequence);
  if (size > INT_MAX) {
    throw py::value_error(positionText(walk) + " has more elements than a KRValue holds");
  }
  out.arraySetSize(static_cast<int>(size));
  walk.bytes += 16 + static_cast<std::size_t>(size) * sizeof(KR::KRValue);
  if (size == 0) {
    return;
  }
  // Elements are contiguous and stay in place while they are filled.
  KR::KRValue* const elements = &out[0];
  walk.position.push_back(0);
  Py_ssize_t i = 0;
  // A list may shrink while a numpy element is converted: stop at its end.
  for (; i < size && (!isList || i < PyList_GET_SIZE(sequence)); ++i) {
    PyObject* const element =
        isList ? PyList_GET_ITEM(sequence, i) : PyTuple_GET_ITEM(sequence, i);
    // Floats, the bulk of record lists, without the general dispatch.
    if (Py_IS_TYPE(element, &PyFloat_Type)) {
      const double number = PyFloat_AS_DOUBLE(element);
      const float narrowed = static_cast<float>(number);
      if (std::isinf(narrowed) && !std::isinf(number)) {
        walk.position.back() = i;
        throwFloatOverflow(number, walk);
      }
      elements[i] = narrowed;
      continue;
    }
    walk.position.back() = i;
    // Our own reference: converting a numpy element runs Python code.
    const py::object hold = py::reinterpret_borrow<py::object>(element);
    convert(element, elements[i], walk);
  }
  for (; i < size; ++i) {
    elements[i].clear();
  }
  walk.position.pop_back();
}

void convertNested(PyObject* sequence, KR::KRValue& out, Walk& walk) {
  if (Py_EnterRecursiveCall(" while converting to a KRValue") != 0) {
    throw py::error_already_set();
  }
  struct Leave {
    ~Leave() { Py_LeaveRecursiveCall(); }
  } leave;
  convertSequence(sequence, out, walk);
}

/// A numpy array as the list its tolist() gives, a numpy scalar as the
/// Python number its item() gives.
void convertNumpy(PyObject* object, KR::KRValue& out, Walk& walk) {
  const py::handle handle(object);
  if (py::hasattr(handle, "tolist") && py::hasattr(handle, "ndim") &&
      handle.attr("ndim").cast<int>() > 0) {
    const py::object list = handle.attr("tolist")();
    convert(list.ptr(), out, walk);
    return;
  }
  const py::object item = handle.attr("item")();
  if (PyBool_Check(item.ptr()) || PyLong_Check(item.ptr()) || PyFloat_Check(item.ptr())) {
    convert(item.ptr(), out, walk);
    return;
  }
  throwUnsupported(object, walk);
}

void convert(PyObject* object, KR::KRValue& out, Walk& walk) {
  if (object == Py_None) {
    out.clear();
    return;
  }
  // Lists and tuples first: their test reads a type flag, while a float
  // test of a list walks its type's bases.
  if (PyList_Check(object) || PyTuple_Check(object)) {
    convertNested(object, out, walk);
    return;
  }
  if (PyBool_Check(object)) {
    out = (object == Py_True);
    return;
  }
  if (PyLong_Check(object)) {
    out = intValue(object, walk);
    return;
  }
  if (PyFloat_Check(object)) {
    out = floatOf(PyFloat_AS_DOUBLE(object), walk);
    return;
  }
  if (PyUnicode_Check(object)) {
    Py_ssize_t size = 0;
    const char* text = PyUnicode_AsUTF8AndSize(object, &size);
    if (text == nullptr) {
      throw py::error_already_set();
    }
    out = std::string(text, static_cast<std::size_t>(size));
    walk.bytes += sizeof(std::string) + static_cast<std::size_t>(size);
    return;
  }
  if (isNumpyObject(object)) {
    convertNumpy(object, out, walk);
    return;
  }
  throwUnsupported(object, walk);
}

/// The value each thread converts its readers' arguments into.
struct KeptValue {
  KR::KRValue value;
  bool inUse = false;
};

KeptValue& keptValue() {
  thread_local KeptValue kept;
  return kept;
}

py::object fromString(const std::string& text) {
  PyObject* object =
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
  if (object == nullptr) {
    throw py::error_already_set();
  }
  return py::reinterpret_steal<py::object>(object);
}

}  // namespace

void ValueLease::convert(py::handle object) {
  KeptValue& kept = keptValue();
  if (!leased_ && !kept.inUse) {
    kept.inUse = true;
    leased_ = true;
    value_ = &kept.value;
  }
  Walk walk;
  try {
    krpy::convert(object.ptr(), *value_, walk);
  } catch (...) {
    bytes_ = kKeptBytes + 1;  // what a failed conversion left is not kept
    throw;
  }
  bytes_ = walk.bytes;
}

ValueLease::~ValueLease() {
  if (!leased_) {
    return;
  }
  if (bytes_ > kKeptBytes) {
    value_->clear();
  }
  keptValue().inUse = false;
}

py::object fromValue(const KR::KRValue& value) {
  switch (value.getType()) {
    case KR::KRValue::TypeBool:
      return py::bool_(static_cast<bool>(value));
    case KR::KRValue::TypeInt:
      return py::int_(static_cast<int>(value));
    case KR::KRValue::TypeFloat:
      return py::float_(static_cast<double>(static_cast<float>(value)));
    case KR::KRValue::TypeString:
      return fromString(static_cast<const std::string&>(value));
    case KR::KRValue::TypeArray:
      break;
    default:
      return py::none();
  }
  if (Py_EnterRecursiveCall(" while converting a KRValue") != 0) {
    throw py::error_already_set();
  }
  struct Leave {
    ~Leave() { Py_LeaveRecursiveCall(); }
  } leave;
  const unsigned int size = value.getSize();
  py::list list(size);
  for (unsigned int i = 0; i < size; ++i) {
    PyList_SET_ITEM(list.ptr(), i, fromValue(value[static_cast<int>(i)]).release().ptr());
  }
  return std::move(list);
}

namespace {

/// An infinity in `array` that was a finite number in `object`, the numbers
/// it was converted from, is a number beyond the float range: OverflowError,
/// naming the first such element. Only an array holding an infinity is
/// looked at again.
void checkNarrowing(py::handle object,
                    const py::array_t<float, py::array::c_style | py::array::forcecast>& array) {
  const float* narrowed = array.data();
  const py::ssize_t size = array.size();
  py::ssize_t first = 0;
  while (first < size && !std::isinf(narrowed[first])) {
    ++first;
  }
  if (first == size) {
    return;
  }
  const auto wide =
      py::cast<py::array_t<double, py::array::c_style | py::array::forcecast>>(object);
  const double* numbers = wide.data();
  for (py::ssize_t i = first; i < size; ++i) {
    if (std::isinf(narrowed[i]) && !std::isinf(numbers[i])) {
      Walk walk;
      const py::ssize_t columns = array.ndim() == 2 ? array.shape(1) : 1;
      walk.position.push_back(array.ndim() == 2 ? i / columns : i);
      if (array.ndim() == 2) {
        walk.position.push_back(i % columns);
      }
      throwFloatOverflow(numbers[i], walk);
    }
  }
}

}  // namespace

py::array_t<float, py::array::c_style | py::array::forcecast> floatArray(py::handle object,
                                                                        std::size_t k,
                                                                        const char* what) {
  using Array = py::array_t<float, py::array::c_style | py::array::forcecast>;
  Array array;
  try {
    array = py::cast<Array>(object);
  } catch (const py::cast_error&) {
    array = Array();
  }
  const bool flat = k == 0;
  const bool shapeOk = array && array.ndim() == (flat ? 1 : 2) &&
                       (flat || array.shape(1) == static_cast<py::ssize_t>(k));
  if (!shapeOk) {
    const std::string shape = flat ? "(N,)" : "(N, " + std::to_string(k) + ")";
    throw py::type_error(std::string("expected a sequence of ") + what +
                         " or a float array of shape " + shape + ", got " +
                         Py_TYPE(object.ptr())->tp_name);
  }
  checkNarrowing(object, array);
  return array;
}

KR::Math::RationalSeconds toRationalSeconds(py::handle object) {
  static const py::handle fractionType =
      py::object(py::module_::import("fractions").attr("Fraction")).release();
  py::object exact;
  if (PyBool_Check(object.ptr())) {
    exact = py::none();  // a bool is an int to Python, but never a duration
  } else if (PyUnicode_Check(object.ptr())) {
    try {
      exact = fractionType(object);
    } catch (const py::error_already_set&) {
      throw py::value_error(
          "a duration in seconds reads as a fraction (\"1/100\", \"0.01\"), "
          "not " +
          py::repr(object).cast<std::string>());
    }
  } else if (PyFloat_Check(object.ptr())) {
    // The nearest fraction with a denominator of at most a million: 0.01
    // becomes 1/100 rather than the binary 5764607523034235/576460752303423488.
    exact = fractionType(object).attr("limit_denominator")(kMaxFloatDenominator);
  } else if (py::hasattr(object, "numerator") && py::hasattr(object, "denominator")) {
    exact = py::reinterpret_borrow<py::object>(object);  // a Fraction or an int
  }
  if (!exact || exact.is_none()) {
    throw py::type_error(
        std::string("a duration in seconds is a fractions.Fraction, an int, a str such as "
                    "\"1/100\" or a float, got ") +
        Py_TYPE(object.ptr())->tp_name);
  }
  const int numerator = exact.attr("numerator").cast<int>();
  const int denominator = exact.attr("denominator").cast<int>();
  return KR::Math::RationalSeconds(boost::rational<int>(numerator, denominator));
}

py::object toFraction(const KR::Math::RationalSeconds& seconds) {
  // Looked up once and kept for the life of the process.
  static const py::handle fraction =
      py::object(py::module_::import("fractions").attr("Fraction")).release();
  return fraction(seconds.count().numerator(), seconds.count().denominator());
}

KR::Math::Trajectory::Limits toLimits(py::handle object) {
  if (py::isinstance<KR::Math::Trajectory::Limits>(object)) {
    return object.cast<KR::Math::Trajectory::Limits>();
  }
  if (PyTuple_Check(object.ptr()) && PyTuple_GET_SIZE(object.ptr()) == 2) {
    return KR::Math::Trajectory::Limits(py::cast<float>(PyTuple_GET_ITEM(object.ptr(), 0)),
                                        py::cast<float>(PyTuple_GET_ITEM(object.ptr(), 1)));
  }
  throw py::type_error(std::string("limits are Limits(max_velocity, max_acceleration) or a "
                                   "(velocity, acceleration) tuple, got ") +
                       Py_TYPE(object.ptr())->tp_name);
}

std::string floatsText(const std::vector<float>& floats) {
  std::string text = "[";
  for (std::size_t i = 0; i < floats.size(); ++i) {
    text += i == 0 ? "" : ", ";
    KR::Math::appendFloatText(text, floats[i]);
  }
  return text + "]";
}

void throwFloatArgumentOverflow(double number) {
  const py::float_ shown(number);
  PyErr_Format(PyExc_OverflowError,
               "the float %R is outside a KRValue float's range [-3.4028235e+38, 3.4028235e+38]",
               shown.ptr());
  throw py::error_already_set();
}

}  // namespace krpy
