// The arguments that are vectors, records and elements of vectors.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "arrays.h"
#include "numbers.h"

namespace ky::python {

// The fields of a struct of the library; generated from its header. `kNames` are their names and
// `Tie(s)` is a tuple of references to them.
template <class S>
struct Fields;
template <class S>
concept HasFields = requires(S s) {
  Fields<S>::Tie(s);
};

// A type of elements, as arrays have it: rows of `columns` numbers, single numbers (0), or records.
struct ElementType {
  const char* expected;
  char kind;
  int itemSize;
  int columns;
  int bytes;
  // Takes an array (n, 2) of positions too: of integers ('i'), of any numbers ('f'), or not (0).
  char points;
  PyObject* dtype;

  bool Matches(PyObject* array) const;
};

// "u1", say.
std::string Format(char kind, std::size_t itemSize);
// The dtype of a format such as "u1", and of a record. A new reference, or null with an exception.
PyObject* NewDtype(const char* format);
struct RecordField {
  const char* name;
  std::string format;
  std::ptrdiff_t offset;
};
PyObject* NewRecordDtype(const std::vector<RecordField>& fields, std::size_t bytes);

template <class E>
std::string FormatOf() {
  if constexpr (std::is_same_v<E, KyC24>) return "3u1";
  return Format(std::is_floating_point_v<E> ? 'f' : std::is_unsigned_v<E> ? 'u' : 'i', sizeof(E));
}
template <HasFields S>
PyObject* RecordDtype() {
  S record{};
  std::vector<RecordField> fields;
  std::apply(
      [&](auto&... field) {
        const char* const* name = Fields<S>::kNames;
        (fields.push_back({*name++, FormatOf<std::decay_t<decltype(field)>>(),
                           reinterpret_cast<char*>(&field) - reinterpret_cast<char*>(&record)}),
         ...);
      },
      Fields<S>::Tie(record));
  return NewRecordDtype(fields, sizeof(S));
}

// Of records that begin with a position the type of its coordinates, 'f' or 'i': arrays (n, 2) of
// positions stand for them. 0 for others.
template <class E>
constexpr char PointsOf() {
  if constexpr (requires(E & e) { e.x, e.y; }) {
    if (offsetof(E, x) == 0) return std::is_floating_point_v<decltype(E::x)> ? 'f' : 'i';
  }
  return 0;
}

template <class E>
struct Element {
  static constexpr const char* kExpected =
      PointsOf<E>() == 'f'
          ? "an array (n, 2) of numbers or a structured array (n,), as ky returns it"
      : PointsOf<E>() == 'i'
          ? "an array (n, 2) of integers or a structured array (n,), as ky returns it"
          : "a structured array (n,), as ky returns it";
  static constexpr char kKind = 'V';
  static constexpr int kItemSize = sizeof(E), kColumns = 0;
};
template <char kind, int itemSize, int columns>
struct NumberElement {
  static constexpr char kKind = kind;
  static constexpr int kItemSize = itemSize, kColumns = columns;
};
template <>
struct Element<KyBW8> : NumberElement<'u', 1, 0> {
  static constexpr const char* kExpected = "an array (n,) of uint8";
};
template <>
struct Element<KyBW16> : NumberElement<'u', 2, 0> {
  static constexpr const char* kExpected = "an array (n,) of uint16";
};
template <>
struct Element<KyBW32> : NumberElement<'u', 4, 0> {
  static constexpr const char* kExpected = "an array (n,) of uint32";
};
template <>
struct Element<float> : NumberElement<'f', 4, 0> {
  static constexpr const char* kExpected = "an array (n,) of float32";
};
template <>
struct Element<KyC24> : NumberElement<'u', 1, 3> {
  static constexpr const char* kExpected = "an array (n, 3) of uint8";
};
template <>
struct Element<KyPath> : NumberElement<'i', 2, 2> {
  static constexpr const char* kExpected = "an array (n, 2) of integers";
};

template <class E>
const ElementType& ElementTypeOf() {
  static const ElementType type = [] {
    ElementType result{Element<E>::kExpected,
                       Element<E>::kKind,
                       Element<E>::kItemSize,
                       Element<E>::kColumns,
                       sizeof(E),
                       0,
                       nullptr};
    if constexpr (HasFields<E>) {
      result.points = PointsOf<E>();
      if constexpr (Element<E>::kKind == 'V') result.dtype = RecordDtype<E>();
    }
    if (result.dtype == nullptr)
      result.dtype = NewDtype(Format(Element<E>::kKind, Element<E>::kItemSize).c_str());
    return result;
  }();
  return type;
}

// The elements of an array, as they lie in a vector. Empty, with an exception, when the array has
// another type.
class ElementsOf {
 public:
  ElementsOf(PyObject* array, const ElementType& type, const Place& place);
  ~ElementsOf() { Py_XDECREF(array_); }
  ElementsOf(const ElementsOf&) = delete;
  ElementsOf& operator=(const ElementsOf&) = delete;

  explicit operator bool() const { return array_ != nullptr; }
  const void* Data() const;
  Py_ssize_t Count() const;

 private:
  PyObject* array_ = nullptr;
};

// Returns a new array of a copy of the elements; as a path, when it is one.
PyObject* NewElements(const ElementType& type, const void* data, Py_ssize_t count);
PyObject* NewPath(PyObject* array, bool closed);
bool IsClosedPath(PyObject* array);

template <class V>
using ElementIn = std::decay_t<decltype(std::declval<V&>()[0])>;

template <class V>
requires requires(std::remove_const_t<V>& v) { v.SetNumElements(0); }
struct Holder<V*> : Argument {
  using Vector = std::remove_const_t<V>;
  using E = ElementIn<Vector>;
  static constexpr const char* kExpected = Element<E>::kExpected;
  static constexpr bool kIsPath = requires(Vector & v) { v.GetClosed(); };

  static bool Matches(PyObject* object) { return ElementTypeOf<E>().Matches(object); }
  bool Take(PyObject* object, const Place& place) override {
    const ElementsOf elements(object, ElementTypeOf<E>(), place);
    if (!elements) return false;
    if (vector_.SetNumElements(static_cast<unsigned>(elements.Count())) != KY_OK) {
      PyErr_NoMemory();
      return false;
    }
    if (elements.Count() > 0)
      std::memcpy(static_cast<void*>(vector_.GetDataPtr()), elements.Data(),
                  elements.Count() * sizeof(E));
    if constexpr (kIsPath) vector_.SetClosed(IsClosedPath(object));
    return true;
  }
  Py_ssize_t Count() const override { return vector_.GetNumElements(); }
  PyObject* Give() override {
    PyObject* const array =
        NewElements(ElementTypeOf<E>(), vector_.GetDataPtr(), vector_.GetNumElements());
    if constexpr (kIsPath) return NewPath(array, vector_.GetClosed() != 0);
    return array;
  }
  V* Pass() { return &vector_; }

 private:
  Vector vector_;
};

// The generic vector: an array (n,) or (n, k) of integers of 8, 16 or 32 bits, or of float32.
class GenericVectorArgument : public Argument {
 public:
  static constexpr const char* kExpected =
      "an array (n,) or (n, k) of integers of 8, 16 or 32 bits or of float32";
  static bool Matches(PyObject* object);
  bool Take(PyObject* object, const Place& place) override;
  Py_ssize_t Count() const override {
    return Py_ssize_t{vector_.GetNbGroup()} * vector_.GetGroupLength();
  }
  bool Reserve(Py_ssize_t count, const char* elements) override;
  PyObject* Give() override;

 protected:
  KyVector vector_;
};
template <>
struct Holder<KyVector*> : GenericVectorArgument {
  KyVector* Pass() { return &vector_; }
};
template <>
struct Holder<const KyVector*> : GenericVectorArgument {
  const KyVector* Pass() const { return &vector_; }
};

// One element of a vector.
bool IsElement(PyObject* object, const ElementType& type);
bool TakeElement(PyObject* object, const ElementType& type, const Place& place, void* element);
template <HasFields E>
struct Holder<const E*> : Argument {
  static constexpr const char* kExpected = "an element of a structured array, as ky returns it";
  static bool Matches(PyObject* object) { return IsElement(object, ElementTypeOf<E>()); }
  bool Take(PyObject* object, const Place& place) override {
    return TakeElement(object, ElementTypeOf<E>(), place, &element_);
  }
  const E* Pass() const { return &element_; }

 private:
  E element_{};
};

// The class of Python that stands for a struct, a borrowed reference; and an object of it.
PyObject* RecordClass(const char* name);
PyObject* NewRecord(const char* name, PyObject* values);
bool IsRecord(PyObject* object, const char* name);

template <HasFields S>
struct Holder<const S&> : Argument {
  static constexpr const char* kExpected = Fields<S>::kExpected;
  static bool Matches(PyObject* object) { return IsRecord(object, Fields<S>::kName); }
  bool Take(PyObject* object, const Place& place) override {
    if (!Matches(object)) return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
    const char* const* name = Fields<S>::kNames;
    const auto take = [&](auto& field) {
      PyObject* const value = PyObject_GetAttrString(object, *name);
      const bool taken = value != nullptr && TakeValue<true>(value, {place.function, *name}, field);
      Py_XDECREF(value);
      ++name;
      return taken;
    };
    return std::apply([&](auto&... field) { return (take(field) && ...); },
                      Fields<S>::Tie(record_));
  }
  const S& Pass() const { return record_; }

 private:
  S record_{};
};
template <HasFields S>
struct Holder<S&> : Argument {
  bool Take(PyObject*, const Place&) override { return true; }
  PyObject* Give() override {
    return std::apply(
        [](auto&... field) {
          PyObject* const values = PyTuple_New(sizeof...(field));
          Py_ssize_t i = 0;
          if (values != nullptr) (PyTuple_SET_ITEM(values, i++, GiveValue(field)), ...);
          return NewRecord(Fields<S>::kName, values);
        },
        Fields<S>::Tie(record_));
  }
  S& Pass() { return record_; }

 private:
  S record_{};
};

}  // namespace ky::python
