// The arguments that are numbers, colours, texts and records of them.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "argument.h"
#include "ky/ky.h"

namespace ky::python {

bool IsInteger(PyObject* object);
bool IsNumber(PyObject* object);
// Takes a number within the limits; returns false and raises for any other.
bool TakeInteger(PyObject* object, long long least, long long most, const Place& place,
                 long long& value);
bool TakeNumber(PyObject* object, const Place& place, double& value);
// Takes a sequence of so many numbers.
bool IsSequence(PyObject* object, Py_ssize_t count);
bool TakeNumbers(PyObject* object, int count, const Place& place, double* values);
bool TakeColor(PyObject* object, const Place& place, KyC24& value);
bool TakeText(PyObject* object, const Place& place, const char*& value);

// Any type of number, and enumerations, as the library declares them. Unsigned integers of 32 bits
// take negative numbers too, which wrap, since modes are passed in the place of levels; the fields
// of records do not.
template <class T>
constexpr bool kIsNumber = std::is_arithmetic_v<T> || std::is_enum_v<T>;
template <bool kField = false, class T>
bool TakeValue(PyObject* object, const Place& place, T& value) {
  if constexpr (std::is_same_v<T, KyC24>) {
    return TakeColor(object, place, value);
  } else if constexpr (std::is_same_v<T, bool>) {
    const int truth = PyObject_IsTrue(object);
    value = truth > 0;
    return truth >= 0;
  } else if constexpr (std::is_floating_point_v<T>) {
    double number = 0;
    if (!TakeNumber(object, place, number)) return false;
    value = static_cast<T>(number);
    return true;
  } else {
    using Integer = std::conditional_t<std::is_enum_v<T>, int, T>;
    using Limits = std::numeric_limits<Integer>;
    constexpr bool kWraps = !kField && std::is_same_v<Integer, unsigned int>;
    long long number = 0;
    const long long least = kWraps ? std::numeric_limits<int>::min() : (long long)(Limits::min());
    if (!TakeInteger(object, least, (long long)(Limits::max()), place, number)) return false;
    value = static_cast<T>(static_cast<Integer>(number));
    return true;
  }
}

template <class T>
PyObject* GiveValue(const T& value) {
  if constexpr (std::is_same_v<T, KyC24>)
    return Py_BuildValue("(iii)", value.c0, value.c1, value.c2);
  else if constexpr (std::is_same_v<T, const char*>)
    return value == nullptr ? Py_NewRef(Py_None) : PyUnicode_FromString(value);
  else if constexpr (std::is_same_v<T, bool>)
    return PyBool_FromLong(value);
  else if constexpr (std::is_floating_point_v<T>)
    return PyFloat_FromDouble(static_cast<double>(value));
  else if constexpr (std::is_unsigned_v<T>)
    return PyLong_FromUnsignedLongLong(value);
  else
    return PyLong_FromLongLong(static_cast<long long>(value));
}

template <class T>
requires(kIsNumber<T> || std::is_same_v<T, KyC24>) struct Holder<T> : Argument {
  using Whole = std::conditional_t<std::is_floating_point_v<T>, T, long long>;
  static constexpr const char* kExpected = std::is_same_v<T, KyC24> ? "three integers from 0 to 255"
                                           : std::is_floating_point_v<T> ? "a number"
                                                                         : "an integer";
  static bool Matches(PyObject* object) {
    if constexpr (std::is_same_v<T, KyC24>) return IsSequence(object, 3);
    return std::is_floating_point_v<T> ? IsNumber(object) : IsInteger(object);
  }
  bool Take(PyObject* object, const Place& place) override {
    return TakeValue(object, place, value_);
  }
  void TakeDefault(double value) override {
    if constexpr (!std::is_same_v<T, KyC24>) value_ = static_cast<T>(static_cast<Whole>(value));
  }
  PyObject* Give() override { return GiveValue(value_); }
  long long Number() const override {
    if constexpr (std::is_integral_v<T> || std::is_enum_v<T>) return static_cast<long long>(value_);
    return 0;
  }
  T Pass() const { return value_; }

 protected:
  T value_{};
};
// Written by the call, and read by some.
template <class T>
requires kIsNumber<T>
struct Holder<T&> : Holder<T> {
  T& Pass() { return this->value_; }
};

// Several numbers.
template <class T, int n>
struct Holder<const T (&)[n]> : Argument {
  static_assert(n == 3);
  static constexpr const char* kExpected = "three numbers";
  static bool Matches(PyObject* object) { return IsSequence(object, n); }
  bool Take(PyObject* object, const Place& place) override {
    double values[n];
    if (!TakeNumbers(object, n, place, values)) return false;
    for (int i = 0; i < n; ++i) values_[i] = static_cast<T>(values[i]);
    return true;
  }
  const T (&Pass() const)[n] { return values_; }

 protected:
  T values_[n] = {};
};
template <class T, int n>
requires(!std::is_const_v<T>) struct Holder<T (&)[n]> : Argument {
  bool Take(PyObject*, const Place&) override { return true; }
  PyObject* Give() override {
    PyObject* const tuple = PyTuple_New(n);
    for (int i = 0; tuple != nullptr && i < n; ++i)
      PyTuple_SET_ITEM(tuple, i, GiveValue(values_[i]));
    return tuple;
  }
  T (&Pass())[n] { return values_; }

 private:
  T values_[n] = {};
};

template <>
struct Holder<const char*> : Argument {
  static constexpr const char* kExpected = "a string";
  static bool Matches(PyObject* object) { return PyUnicode_Check(object); }
  bool Take(PyObject* object, const Place& place) override {
    return TakeText(object, place, value_);
  }
  const char* Pass() const { return value_; }

 private:
  const char* value_ = "";
};

}  // namespace ky::python
