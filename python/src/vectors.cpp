#include "vectors.h"

#include <pybind11/numpy.h>

#include <climits>

namespace py = pybind11;

namespace ky::python {

namespace {

const py::detail::PyArray_Proxy& ProxyOf(PyObject* array) {
  return *py::detail::array_proxy(array);
}
const py::detail::PyArrayDescr_Proxy& DescriptorOf(PyObject* array) {
  return *py::detail::array_descriptor_proxy(ProxyOf(array).descr);
}
bool IsNative(char byteOrder) { return byteOrder == '=' || byteOrder == '|'; }

// What a module holds, a borrowed reference; null with an exception where either is missing.
PyObject* MemberOf(PyObject* module, const char* name) {
  if (module == nullptr) return nullptr;
  PyObject* const member = PyObject_GetAttrString(module, name);
  Py_XDECREF(member);  // the module keeps it
  return member;
}
PyObject* Helper(const char* name) {
  static PyObject* module = nullptr;  // the interpreter's lock guards it
  if (module == nullptr) module = PyImport_ImportModule("ky._types");
  return MemberOf(module, name);
}

bool IsPositions(PyObject* array) {
  return ProxyOf(array).nd == 2 && ProxyOf(array).dimensions[1] == 2 &&
         std::strchr("iuf", DescriptorOf(array).kind) != nullptr;
}

}  // namespace

std::string Format(char kind, std::size_t itemSize) {
  std::string format(1, kind);
  return format.append(std::to_string(itemSize));
}

PyObject* NewDtype(const char* format) {
  try {
    return py::dtype(format).release().ptr();
  } catch (py::error_already_set& error) {
    error.restore();
    return nullptr;
  }
}

PyObject* NewRecordDtype(const std::vector<RecordField>& fields, std::size_t bytes) {
  try {
    py::list names, formats, offsets;
    for (const RecordField& field : fields) {
      names.append(field.name);
      formats.append(field.format);
      offsets.append(field.offset);
    }
    return py::dtype(names, formats, offsets, static_cast<py::ssize_t>(bytes)).release().ptr();
  } catch (py::error_already_set& error) {
    error.restore();
    return nullptr;
  }
}

bool ElementType::Matches(PyObject* array) const {
  if (!IsArray(array)) return false;
  const auto& proxy = ProxyOf(array);
  const auto& element = DescriptorOf(array);
  if (points != 0 && IsPositions(array)) return points == 'f' || element.kind != 'f';
  if (proxy.nd != (columns == 0 ? 1 : 2)) return false;
  if (columns != 0 && proxy.dimensions[1] != columns) return false;
  if (kind == 'V') return py::detail::npy_api::get().PyArray_EquivTypes_(proxy.descr, dtype);
  return element.kind == kind && element.elsize == itemSize && IsNative(element.byteorder);
}

ElementsOf::ElementsOf(PyObject* array, const ElementType& type, const Place& place) {
  if (!type.Matches(array)) {
    RaiseMismatch(PyExc_TypeError, place, type.expected, array);
    return;
  }
  const auto& api = py::detail::npy_api::get();
  if (type.points != 0 && IsPositions(array)) {
    PyObject* const helper = Helper("points");
    if (helper != nullptr)
      array_ =
          PyObject_CallFunction(helper, "OOss", array, type.dtype, place.function, place.parameter);
  } else {
    array_ = api.PyArray_FromAny_(array, nullptr, 0, 0,
                                  py::detail::npy_api::NPY_ARRAY_C_CONTIGUOUS_, nullptr);
  }
  if (array_ != nullptr && Count() > UINT_MAX) {
    PyErr_Format(PyExc_ValueError, "%s(): %s has too many elements", place.function,
                 place.parameter);
    Py_CLEAR(array_);
  }
}

const void* ElementsOf::Data() const { return ProxyOf(array_).data; }
Py_ssize_t ElementsOf::Count() const { return ProxyOf(array_).dimensions[0]; }

PyObject* NewElements(const ElementType& type, const void* data, Py_ssize_t count) {
  const auto& api = py::detail::npy_api::get();
  Py_intptr_t dimensions[2] = {count, type.columns};
  Py_INCREF(type.dtype);
  PyObject* const array =
      api.PyArray_NewFromDescr_(api.PyArray_Type_, type.dtype, type.columns == 0 ? 1 : 2,
                                dimensions, nullptr, nullptr, 0, nullptr);
  if (array != nullptr && count > 0)
    std::memcpy(ProxyOf(array).data, data, size_t(count) * type.bytes);
  return array;
}

PyObject* NewPath(PyObject* array, bool closed) {
  PyObject* const helper = array == nullptr ? nullptr : Helper("Path");
  PyObject* const path =
      helper == nullptr ? nullptr : PyObject_CallMethod(array, "view", "O", helper);
  Py_XDECREF(array);
  if (path != nullptr) PyObject_SetAttrString(path, "closed", closed ? Py_True : Py_False);
  return path;
}

bool IsClosedPath(PyObject* array) {
  PyObject* const helper = Helper("Path");
  if (helper == nullptr || PyObject_IsInstance(array, helper) != 1) return false;
  PyObject* const closed = PyObject_GetAttrString(array, "closed");
  const bool result = closed != nullptr && PyObject_IsTrue(closed) == 1;
  Py_XDECREF(closed);
  PyErr_Clear();
  return result;
}

bool GenericVectorArgument::Matches(PyObject* object) {
  if (!IsArray(object)) return false;
  const auto& proxy = ProxyOf(object);
  const auto& element = DescriptorOf(object);
  if ((proxy.nd != 1 && proxy.nd != 2) || !IsNative(element.byteorder)) return false;
  if (element.kind == 'f') return element.elsize == 4;
  return (element.kind == 'i' || element.kind == 'u') && element.elsize <= 4;
}

bool GenericVectorArgument::Take(PyObject* object, const Place& place) {
  if (!Matches(object)) return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
  const auto& api = py::detail::npy_api::get();
  const py::object array = py::reinterpret_steal<py::object>(api.PyArray_FromAny_(
      object, nullptr, 0, 0, py::detail::npy_api::NPY_ARRAY_C_CONTIGUOUS_, nullptr));
  if (!array) return false;
  const auto& proxy = ProxyOf(array.ptr());
  const auto& element = DescriptorOf(array.ptr());
  const Py_ssize_t groups = proxy.dimensions[0];
  const Py_ssize_t length = proxy.nd == 1 ? 1 : proxy.dimensions[1];
  if (groups > INT_MAX || length > INT_MAX || groups * length > INT_MAX / 4) {
    PyErr_Format(PyExc_ValueError, "%s(): %s has too many elements", place.function,
                 place.parameter);
    return false;
  }
  // Groups of three integers are those of segments, single unsigned ones counts or tables.
  const int size = static_cast<int>(element.elsize), n = static_cast<int>(groups);
  const int type = element.kind == 'i' && size == 4 && length == 3                    ? 4
                   : element.kind == 'u' && size == 4 && length == 1                  ? 2
                   : element.kind == 'u' && size == 1 && length == 1 && proxy.nd == 1 ? 3
                                                                                      : 0;
  const int dataType = element.kind == 'u' ? 1 : element.kind == 'i' ? 2 : 4;
  const KY_ERRORS error =
      type != 0 ? vector_.SetType(type, n, 0)
                : vector_.SetStructure(2 * size, n, static_cast<int>(length), dataType);
  if (error != KY_OK) {
    PyErr_Format(PyExc_ValueError, "%s(): %s cannot have the shape (%zd, %zd)", place.function,
                 place.parameter, groups, length);
    return false;
  }
  if (type == 4) vector_.SetUse(5);
  vector_.SetNbGroup(n);
  if (groups * length > 0)
    std::memcpy(vector_.GetDataPtr(), proxy.data, size_t(groups) * size_t(length) * size_t(size));
  return true;
}

bool GenericVectorArgument::Reserve(Py_ssize_t count, const char* elements) {
  const bool floats = std::strchr(elements, 'f') != nullptr;
  const int length = elements[0] == '2' ? 2 : 1;
  const int groups = static_cast<int>(std::min<Py_ssize_t>(count + 1, INT_MAX / 16));
  if (vector_.SetStructure(8, groups, length, floats ? 4 : 2) == KY_OK) return true;
  PyErr_NoMemory();
  return false;
}

PyObject* GenericVectorArgument::Give() {
  const char kind = vector_.GetDataType() == 1 ? 'u' : vector_.GetDataType() == 2 ? 'i' : 'f';
  const int size = vector_.GetDataSize() / 2, length = vector_.GetGroupLength();
  const py::object dtype =
      py::reinterpret_steal<py::object>(NewDtype(Format(kind, size_t(size)).c_str()));
  if (!dtype) return nullptr;
  const ElementType type{"", kind, size, length == 1 ? 0 : length, length * size, 0, dtype.ptr()};
  return NewElements(type, vector_.GetDataPtr(), vector_.GetNbGroup());
}

bool IsElement(PyObject* object, const ElementType& type) {
  PyObject* const dtype = PyObject_GetAttrString(object, "dtype");
  if (dtype == nullptr) PyErr_Clear();
  const bool result = dtype != nullptr && py::detail::npy_api::get().PyArrayDescr_Check_(dtype) &&
                      py::detail::npy_api::get().PyArray_EquivTypes_(dtype, type.dtype);
  Py_XDECREF(dtype);
  return result;
}

bool TakeElement(PyObject* object, const ElementType& type, const Place& place, void* element) {
  constexpr const char* kExpected = "one element of a structured array, as ky returns it";
  if (!IsElement(object, type)) return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
  const auto& api = py::detail::npy_api::get();
  const py::object array = py::reinterpret_steal<py::object>(api.PyArray_FromAny_(
      object, nullptr, 0, 0, py::detail::npy_api::NPY_ARRAY_C_CONTIGUOUS_, nullptr));
  if (!array) return false;
  const auto& proxy = ProxyOf(array.ptr());
  for (int i = 0; i < proxy.nd; ++i)
    if (proxy.dimensions[i] != 1) return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
  std::memcpy(element, proxy.data, size_t(type.bytes));
  return true;
}

PyObject* RecordClass(const char* name) {
  static PyObject* const module = PyImport_ImportModule("ky._records");
  return MemberOf(module, name);
}

PyObject* NewRecord(const char* name, PyObject* values) {
  PyObject* const type = RecordClass(name);
  PyObject* const record =
      type == nullptr || values == nullptr ? nullptr : PyObject_CallObject(type, values);
  Py_XDECREF(values);
  return record;
}

bool IsRecord(PyObject* object, const char* name) {
  PyObject* const type = RecordClass(name);
  const int result = type == nullptr ? -1 : PyObject_IsInstance(object, type);
  if (result < 0) PyErr_Clear();
  return result == 1;
}

}  // namespace ky::python
