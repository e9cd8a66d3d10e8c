// Conversions shared by the translation units of the Python module: KR::KRValue
// to and from plain Python objects, record lists to and from numpy arrays,
// and the period and limits arguments of the trajectory readers.
#pragma once

#include <kr/krvalue.h>
#include <kr/math/floattext.h>
#include <kr/math/rationalseconds.h>
#include <kr/math/trajectory/limits.h>
#include <kr/valueutils/locate.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace krpy {

namespace py = pybind11;

/// Where a reader's argument lives while the call runs: each thread keeps the
/// value it converted last, and converting into it again reuses its array
/// blocks wherever the layout repeats, so reading list after list of records
/// of the same shape allocates nothing. A value that takes more than
/// kKeptBytes of memory (elements, array blocks and strings, estimated) is
/// released when the call ends instead of kept. While the thread's value is
/// in use, another lease (the second value argument of a call, a call made
/// from a numpy object's conversion) converts into a value of its own.
class ValueLease {
 public:
  static constexpr std::size_t kKeptBytes = std::size_t(16) << 20;

  ValueLease() = default;
  ValueLease(const ValueLease&) = delete;
  ValueLease& operator=(const ValueLease&) = delete;
  ~ValueLease();

  /// Converts a plain Python object into the leased value: None, bool, int,
  /// float, str, list or tuple, numpy numbers and arrays. Anything else
  /// raises TypeError, an int beyond 32 bits OverflowError, both naming the
  /// type and the position ("value[2][0]").
  void convert(py::handle object);
  KR::KRValue& value() noexcept { return *value_; }

 private:
  KR::KRValue own_;
  KR::KRValue* value_ = &own_;
  bool leased_ = false;
  std::size_t bytes_ = 0;
};

/// A value as plain Python objects: None, bool, int, float, str and lists.
py::object fromValue(const KR::KRValue& value);

/// A reader's failure with where it failed and the argument it was about;
/// raised in Python as krvalueutils.KRValueError, a RuntimeError with the
/// reader's exact message, `.path` and `.argument`.
struct ReaderError : std::runtime_error {
  ReaderError(const KR::ValueUtils::Failure& failure, std::string argumentName)
      : std::runtime_error(failure.message),
        path(failure.path),
        argument(std::move(argumentName)) {}
  std::vector<unsigned int> path;
  std::string argument;
};

/// Runs `read`, a reader's call on `value` (the argument named `argument`);
/// its failure is thrown as a ReaderError that says where in `value`.
/// pybind11's own errors (a TypeError of an argument's conversion, say) are
/// runtime_errors too, and pass through as they are.
template <typename Read>
void located(const KR::KRValue& value, const std::string& argument, Read&& read) {
  std::exception_ptr bindingError;
  const auto failure = KR::ValueUtils::locateFailure(value, [&] {
    try {
      read();
    } catch (const py::builtin_exception&) {
      bindingError = std::current_exception();
    }
  });
  if (bindingError) {
    std::rethrow_exception(bindingError);
  }
  if (failure) {
    throw ReaderError(*failure, argument);
  }
}

/// Registers KRValueError and the translation of a ReaderError into it.
void bindErrors(py::module_& m);

/// Values with at least this many elements are read with the GIL released.
constexpr unsigned int kLargeValue = 1024;

/// Releases the GIL for the lifetime of the returned object when `value` is a
/// large array, so that other Python threads run while C++ reads it.
class ReleaseIfLarge {
 public:
  explicit ReleaseIfLarge(const KR::KRValue& value) {
    if (value.getSize() >= kLargeValue) {
      release_.emplace();
    }
  }

 private:
  std::optional<py::gil_scoped_release> release_;
};

/// Records of K floats (or floats, K = 1) as a float32 array of shape (N, K);
/// shape (N,) when `flat`.
template <typename Record>
py::array_t<float> toArray(const std::vector<Record>& records, std::size_t k, bool flat = false) {
  static_assert(std::is_trivially_copyable<Record>::value, "records are copied as floats");
  std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(records.size())};
  if (!flat) {
    shape.push_back(static_cast<py::ssize_t>(k));
  }
  py::array_t<float> array(shape);
  if (!records.empty()) {
    std::memcpy(array.mutable_data(), records.data(), records.size() * sizeof(Record));
  }
  return array;
}

/// A float32 view of `object` with shape (N, k) (or (N,) when k is 0), or
/// TypeError naming `what`.
py::array_t<float, py::array::c_style | py::array::forcecast> floatArray(py::handle object,
                                                                        std::size_t k,
                                                                        const char* what);

/// Writers' input: a sequence of Record objects, or anything numpy reads as
/// an (N, K) array of numbers (columns in field order).
template <typename Record, std::size_t K>
std::vector<Record> toRecords(py::handle object, const char* what) {
  static_assert(sizeof(Record) == K * sizeof(float), "a record is K floats");
  std::vector<Record> records;
  if (PyList_Check(object.ptr()) || PyTuple_Check(object.ptr())) {
    const py::sequence sequence = py::reinterpret_borrow<py::sequence>(object);
    if (sequence.size() == 0) {
      return records;
    }
    if (py::isinstance<Record>(sequence[0])) {
      records.reserve(sequence.size());
      for (const py::handle element : sequence) {
        records.push_back(element.cast<const Record&>());
      }
      return records;
    }
  }
  const auto array = floatArray(object, K, what);
  records.resize(static_cast<std::size_t>(array.shape(0)));
  if (!records.empty()) {
    std::memcpy(static_cast<void*>(records.data()), array.data(), records.size() * sizeof(Record));
  }
  return records;
}

/// The largest denominator of the fraction a float period or duration is
/// rounded to.
constexpr long kMaxFloatDenominator = 1000000;

/// A period or duration in seconds, exact: a fractions.Fraction, an int, or
/// a str that fractions.Fraction reads ("1/100", "0.01"); a float becomes
/// the nearest fraction whose denominator is at most kMaxFloatDenominator.
/// TypeError for anything else (a bool included), ValueError for a str that
/// is not a fraction.
KR::Math::RationalSeconds toRationalSeconds(py::handle object);

/// The arguments of that kind, so that signatures name what they take.
struct SecondsArgument {
  KR::Math::RationalSeconds value;
};
/// A Limits or a (max_velocity, max_acceleration) tuple.
struct LimitsArgument {
  KR::Math::Trajectory::Limits value{0.0f, 0.0f};
};

/// A Python object passed through as it is, for a binding that inspects it
/// itself; `Type::name` is the type its signature shows.
template <typename Type>
struct Typed {
  py::object object;
};
/// The type names of the objects bindings take or return that way.
struct Position2DsType {
  static constexpr auto name = pybind11::detail::const_name("Sequence[Position2D] | numpy.ndarray");
};
struct Position3DsType {
  static constexpr auto name = pybind11::detail::const_name("Sequence[Position3D] | numpy.ndarray");
};
struct StatesType {
  static constexpr auto name =
      pybind11::detail::const_name("Sequence[Pose2DPosVelAcc] | numpy.ndarray");
};
struct FactoryType {
  static constexpr auto name =
      pybind11::detail::const_name("HolonomicTrajectoryFactory | NonHolonomicTrajectoryFactory");
};
struct TouchType {
  static constexpr auto name =
      pybind11::detail::const_name("dict[str, bool] | dict[str, tuple[bool, int]]");
};

/// A RationalSeconds as a fractions.Fraction.
py::object toFraction(const KR::Math::RationalSeconds& seconds);

/// Limits(...) or a (max_velocity, max_acceleration) tuple.
KR::Math::Trajectory::Limits toLimits(py::handle object);

// The parts of the module, one per translation unit.
/// The record as its operator<< writes it ("Pose2D(x=1, y=2, theta=0.5)"),
/// each float in its shortest exact form.
template <typename Record>
std::string streamed(const Record& record) {
  std::ostringstream out;
  out << record;
  return out.str();
}

/// OverflowError for a float argument beyond the float range.
[[noreturn]] void throwFloatArgumentOverflow(double number);

/// Floats as a list, each in its shortest exact form: "[0.1, 2]".
std::string floatsText(const std::vector<float>& floats);

void bindRecords(py::module_& m);
void bindScalars(py::module_& m);
void bindGeometry(py::module_& m);
void bindState(py::module_& m);
void bindPaths(py::module_& m);
void bindSchemas(py::module_& m);

/// The docstring of a reader: `doc`, then the layout and description of the
/// schema of the krvalue tool's reader `reader`, so that help() says what the
/// schema says. The text lives as long as the module.
const char* readerDoc(const char* reader, const char* doc);

}  // namespace krpy

namespace pybind11 {
namespace detail {

/// KR::KRValue arguments and results are plain Python objects (converted
/// into the thread's kept value by krpy::ValueLease, and back by
/// krpy::fromValue); a value that cannot be converted raises at once.
template <>
struct type_caster<KR::KRValue> {
  static constexpr auto name = const_name("Value");
  template <typename T>
  using cast_op_type = pybind11::detail::cast_op_type<T>;

  bool load(handle source, bool) {
    lease_.convert(source);
    return true;
  }

  static handle cast(const KR::KRValue& source, return_value_policy, handle) {
    return krpy::fromValue(source).release();
  }

  operator KR::KRValue&() { return lease_.value(); }
  operator KR::KRValue*() { return &lease_.value(); }

 private:
  krpy::ValueLease lease_;
};

template <>
struct type_caster<krpy::SecondsArgument> {
  PYBIND11_TYPE_CASTER(krpy::SecondsArgument, const_name("fractions.Fraction | int | str | float"));
  bool load(handle source, bool) {
    value.value = krpy::toRationalSeconds(source);
    return true;
  }
  static handle cast(const krpy::SecondsArgument& source, return_value_policy, handle) {
    return krpy::toFraction(source.value).release();
  }
};

template <typename Type>
struct type_caster<krpy::Typed<Type>> {
  PYBIND11_TYPE_CASTER(krpy::Typed<Type>, Type::name);
  bool load(handle source, bool) {
    value.object = reinterpret_borrow<object>(source);
    return true;
  }
  static handle cast(const krpy::Typed<Type>& source, return_value_policy, handle) {
    return source.object.inc_ref();
  }
};

template <>
struct type_caster<krpy::LimitsArgument> {
  PYBIND11_TYPE_CASTER(krpy::LimitsArgument, const_name("Limits | tuple[float, float]"));
  bool load(handle source, bool) {
    value.value = krpy::toLimits(source);
    return true;
  }
  static handle cast(const krpy::LimitsArgument& source, return_value_policy policy,
                     handle parent) {
    return make_caster<KR::Math::Trajectory::Limits>::cast(source.value, policy, parent);
  }
};

/// Float arguments, record fields and list elements (std::vector<float>) are
/// read as pybind11 reads any number, as a double first, and then rounded to
/// the nearest float; a finite number beyond the float range raises
/// OverflowError instead of becoming an infinity.
template <>
class type_caster<float> {
 public:
  bool load(handle source, bool convert) {
    type_caster<double> wide;
    if (!wide.load(source, convert)) {
      return false;
    }
    const double number = static_cast<double>(wide);
    value = static_cast<float>(number);
    if (std::isinf(value) && !std::isinf(number)) {
      krpy::throwFloatArgumentOverflow(number);
    }
    return true;
  }

  static handle cast(float source, return_value_policy, handle) {
    return PyFloat_FromDouble(static_cast<double>(source));
  }

  PYBIND11_TYPE_CASTER(float, const_name("float"));
};

}  // namespace detail
}  // namespace pybind11
