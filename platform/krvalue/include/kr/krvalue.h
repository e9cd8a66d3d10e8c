// KR::KRValue: the platform's dynamic value.
//
// A value is invalid, or holds a bool, a 32-bit int, a 32-bit float, a string
// or an array of further values. Values have value semantics: copies are deep
// and independent of their source.
//
// Layout. A value is 16 bytes: an 8-byte payload and a kind tag. Bools, ints
// and floats live in the payload, so making, copying or destroying one never
// touches the heap. A string owns a heap std::string. An array owns one heap
// block holding its size, its capacity and then its elements, so reaching
// element i is a single indirection from the value. An empty array made by
// arraySetSize(0) or from an empty vector shares a static empty block and
// allocates nothing.
//
// Misuse. Indexing past the end and a conversion applied to the wrong kind
// throw std::runtime_error naming what was expected and what was found. The
// conversions accept:
//   int      int only               float    float, or an int's value
//   bool     bool; an int or a float converts as "non-zero"
//   string   string only
// getSize() of a value that is not an array is 0.
//
// On a non-const value, `float f = v;` picks the mutable operator float&(),
// which needs a float value; read a number that may be an int through a const
// reference (`static_cast<const KR::KRValue&>(v)`), as readers do.
//
// Depth. Copying, comparing and destroying never recurse, so a value nested a
// million levels deep is as safe as a flat one.
//
// Threads. Const operations never write, so one value may be read from
// several threads at once; writing needs exclusive access.
#pragma once

#include <kr/krvalue_export.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace KR {

class KRValue;

namespace detail {

/// Heap block of an array: its size and capacity, then its elements.
struct KRValueArrayBlock {
  std::uint32_t size;
  std::uint32_t capacity;  // 0 only for the shared static empty block

  KRValue* elements() noexcept;
  const KRValue* elements() const noexcept;
};

}  // namespace detail

class KRVALUE_API KRValue {
 public:
  enum Type : std::uint8_t {
    TypeInvalid = 0,
    TypeBool,
    TypeInt,
    TypeFloat,
    TypeString,
    TypeArray,
  };

  /// An invalid value.
  KRValue() noexcept : payload_(), type_(TypeInvalid) {}

  KRValue(const bool& b) noexcept : type_(TypeBool) { payload_.b = b; }
  KRValue(const int& i) noexcept : type_(TypeInt) { payload_.i = i; }
  KRValue(const float& f) noexcept : type_(TypeFloat) { payload_.f = f; }
  /// A float value holding `d` rounded to single precision; lets `KRValue(0.5)`
  /// pick the float kind instead of being ambiguous.
  KRValue(const double& d) noexcept : type_(TypeFloat) {
    payload_.f = static_cast<float>(d);
  }
  KRValue(const std::string& s);
  KRValue(std::string&& s);
  /// A string value; keeps a literal from turning into a bool.
  KRValue(const char* s);
  KRValue(const std::vector<float>& floats);
  KRValue(const std::vector<std::string>& strings);

  KRValue(const KRValue& other);
  KRValue(KRValue&& other) noexcept : payload_(other.payload_), type_(other.type_) {
    other.type_ = TypeInvalid;
  }
  KRValue& operator=(const KRValue& other);
  KRValue& operator=(KRValue&& other) noexcept {
    KRValue tmp(std::move(other));
    swap(tmp);
    return *this;
  }
  // Scalar assignments are inline and write the value in place, without a
  // temporary: filling a large array element by element stays cheap. The
  // argument is read first, so it may be an element of this very array.
  KRValue& operator=(const int& i) noexcept {
    const std::int32_t value = i;
    becomeScalar(TypeInt);
    payload_.i = value;
    return *this;
  }
  KRValue& operator=(const float& f) noexcept {
    const float value = f;
    becomeScalar(TypeFloat);
    payload_.f = value;
    return *this;
  }
  KRValue& operator=(const double& d) noexcept { return *this = static_cast<float>(d); }
  KRValue& operator=(const bool& b) noexcept {
    const bool value = b;
    becomeScalar(TypeBool);
    payload_.b = value;
    return *this;
  }
  KRValue& operator=(const std::string& s);
  KRValue& operator=(const char* s);

  ~KRValue() {
    if (type_ >= TypeString) {
      release();
    }
  }

  void swap(KRValue& other) noexcept {
    std::swap(payload_, other.payload_);
    std::swap(type_, other.type_);
  }

  /// A new array of exactly sizeof...(args) elements, element i holding
  /// argument i converted to a value.
  template <typename... Args>
  static KRValue array(const Args&... args) {
    KRValue result;
    result.arraySetSize(static_cast<int>(sizeof...(Args)));
    KRValue* out = result.payload_.a->elements();
    ((*out++ = KRValue(args)), ...);
    return result;
  }

  /// A new array of the values in [first, last), moved into it in order;
  /// they are left invalid. One allocation, whatever the count, so building
  /// an array whose elements wait in a buffer costs no more than the moves.
  static KRValue arrayMovedFrom(KRValue* first, KRValue* last);

  // Queries.
  Type getType() const noexcept { return type_; }
  bool isValid() const noexcept { return type_ != TypeInvalid; }
  bool isBool() const noexcept { return type_ == TypeBool; }
  bool isInt() const noexcept { return type_ == TypeInt; }
  bool isFloat() const noexcept { return type_ == TypeFloat; }
  bool isString() const noexcept { return type_ == TypeString; }
  bool isArray() const noexcept { return type_ == TypeArray; }

  /// Number of elements of an array; 0 for any other kind.
  unsigned int getSize() const noexcept {
    return type_ == TypeArray ? payload_.a->size : 0u;
  }

  /// Element i of an array. Throws std::runtime_error when the value is not an
  /// array or i is not below getSize(). The elements of an array are
  /// contiguous: &v[i] == &v[0] + i for every i below getSize(), valid until
  /// the array is next modified (the library's list readers walk them so).
  const KRValue& operator[](int i) const {
    if (type_ != TypeArray || static_cast<std::uint32_t>(i) >= payload_.a->size) {
      throwBadIndex(i);
    }
    return payload_.a->elements()[i];
  }
  KRValue& operator[](int i) {
    return const_cast<KRValue&>(static_cast<const KRValue&>(*this)[i]);
  }

  /// Makes the value an array of exactly n elements. An array keeps its first
  /// elements and gets invalid ones appended; any other kind is replaced by n
  /// invalid elements. Throws std::runtime_error for a negative n.
  void arraySetSize(int n);

  /// Appends a copy as the last element. An invalid value (default-made or
  /// cleared) first becomes an empty array. Throws std::runtime_error on a
  /// bool, int, float or string value.
  void arrayPush(const KRValue& element);
  void arrayPush(KRValue&& element);

  /// Reserves room for n elements without changing the size; an invalid value
  /// becomes an empty array. Throws like arrayPush on other kinds.
  void arrayReserve(int n);

  /// Makes the value invalid, releasing what it held.
  void clear() noexcept {
    KRValue tmp;
    swap(tmp);
  }

  // Conversions. Each throws std::runtime_error on a kind it does not accept
  // (see the table at the top of this file).
  operator int&() {
    if (type_ != TypeInt) throwBadKind("an int");
    return payload_.i;
  }
  operator float&() {
    if (type_ != TypeFloat) throwBadKind("a float");
    return payload_.f;
  }
  operator int() const {
    if (type_ != TypeInt) throwBadKind("an int");
    return payload_.i;
  }
  operator float() const {
    if (type_ == TypeFloat) return payload_.f;
    if (type_ == TypeInt) return static_cast<float>(payload_.i);
    throwBadKind("a float or an int");
  }
  operator bool() const {
    if (type_ == TypeBool) return payload_.b;
    if (type_ == TypeInt) return payload_.i != 0;
    if (type_ == TypeFloat) return payload_.f != 0.0f;
    throwBadKind("a bool, an int or a float");
  }
  operator const std::string&() const {
    if (type_ != TypeString) throwBadKind("a string");
    return *payload_.s;
  }

  /// Same kind and same content, arrays element by element. Floats compare
  /// with ==, so a NaN float is not equal to itself and 0.0 equals -0.0.
  bool operator==(const KRValue& other) const;
  bool operator!=(const KRValue& other) const { return !(*this == other); }

  /// "invalid", "bool", "int", "float", "string" or "array".
  static const char* typeName(Type type) noexcept;

 private:
  union Payload {
    bool b;
    std::int32_t i;
    float f;
    std::string* s;
    detail::KRValueArrayBlock* a;
  };

  void release() noexcept;
  void becomeScalar(Type type) noexcept {
    if (type_ >= TypeString) {
      release();
    }
    type_ = type;
  }
  void growForPush();
  [[noreturn]] void throwBadIndex(int i) const;
  [[noreturn]] void throwBadKind(const char* expected) const;

  Payload payload_;
  Type type_;

  friend struct KRValueImpl;
};

inline KRValue* detail::KRValueArrayBlock::elements() noexcept {
  return reinterpret_cast<KRValue*>(this + 1);
}
inline const KRValue* detail::KRValueArrayBlock::elements() const noexcept {
  return reinterpret_cast<const KRValue*>(this + 1);
}

inline void swap(KRValue& a, KRValue& b) noexcept { a.swap(b); }

}  // namespace KR
