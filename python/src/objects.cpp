#include "objects.h"

#include <pybind11/pybind11.h>

#include <cstring>

namespace py = pybind11;

namespace ky::python {

namespace {

template <class T>
const T* In(PyObject* object) {
  py::detail::make_caster<T> caster;
  if (object == Py_None || !caster.load(object, false)) return nullptr;
  return static_cast<T*>(caster);
}

}  // namespace

const KyKernel* KernelIn(PyObject* object) { return In<KyKernel>(object); }
const KyColorLookup* LookupIn(PyObject* object) { return In<KyColorLookup>(object); }

bool Holder<const KyKernel*>::Take(PyObject* object, const Place& place) {
  const KyKernel* const kernel = KernelIn(object);
  if (kernel == nullptr) return RaiseMismatch(PyExc_TypeError, place, kExpected, object);
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

}  // namespace ky::python
