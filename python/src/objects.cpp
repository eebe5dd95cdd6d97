#include "objects.h"

#include <pybind11/pybind11.h>

#include <cstring>

namespace py = pybind11;

namespace ky::python {

namespace {

template <class T>
bool Is(PyObject* object) {
  const py::handle type = py::detail::get_type_handle(typeid(T), false);
  return type && PyObject_TypeCheck(object, reinterpret_cast<PyTypeObject*>(type.ptr()));
}

// The object of the library in an object of Python; null with an exception where there is none.
template <class T>
const T* In(PyObject* object, const Place& place, const char* expected) {
  py::detail::make_caster<T> caster;
  try {
    if (object != Py_None && caster.load(object, false)) return static_cast<T*>(caster);
    RaiseMismatch(PyExc_TypeError, place, expected, object);
  } catch (const py::builtin_exception& exception) {
    exception.set_error();
  }
  return nullptr;
}

}  // namespace

bool Holder<const KyKernel*>::Matches(PyObject* object) { return Is<KyKernel>(object); }

bool Holder<const KyKernel*>::Take(PyObject* object, const Place& place) {
  const KyKernel* const kernel = In<KyKernel>(object, place, kExpected);
  if (kernel == nullptr) return false;
  const std::int16_t sizeX = kernel->GetSizeX(), sizeY = kernel->GetSizeY();
  const std::int64_t count = std::int64_t{sizeX} * sizeY;
  const float* const data = kernel->GetDataPtr();
  // A kernel whose array is too small for its grid counts as one without.
  if (data == nullptr || count < 0 || count > kernel->GetAllocatedSize()) {
    kernel_.emplace();
    return true;
  }
  kernel_.emplace(sizeX, sizeY, kernel->GetGain(), kernel->GetOffset(), kernel->GetRectifier(),
                  kernel->GetOutsideValue());
  if (kernel_->GetDataPtr() == nullptr) {
    PyErr_NoMemory();
    return false;
  }
  std::memcpy(kernel_->GetDataPtr(), data, size_t(count) * sizeof(float));
  return true;
}

bool Holder<const KyColorLookup*>::Matches(PyObject* object) { return Is<KyColorLookup>(object); }

bool Holder<const KyColorLookup*>::Take(PyObject* object, const Place& place) {
  lookup_ = In<KyColorLookup>(object, place, kExpected);
  return lookup_ != nullptr;
}

bool Holder<const Bytes*>::Take(PyObject* object, const Place& place) {
  if (!PyObject_CheckBuffer(object))
    return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
  if (PyObject_GetBuffer(object, &view_, PyBUF_SIMPLE) != 0) {
    view_.obj = nullptr;
    PyErr_Clear();
    return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
  }
  bytes_ = {view_.buf, view_.len};
  return true;
}

bool Holder<FilePath>::Matches(PyObject* object) {
  return PyUnicode_Check(object) || PyBytes_Check(object) ||
         PyObject_HasAttrString(object, "__fspath__");
}

bool Holder<FilePath>::Take(PyObject* object, const Place& place) {
  if (!Matches(object)) return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
  return PyUnicode_FSConverter(object, &bytes_) != 0;
}

}  // namespace ky::python
