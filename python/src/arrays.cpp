#include "arrays.h"

#include <pybind11/numpy.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

#include "images.h"

namespace py = pybind11;

namespace ky::python {

namespace {

PixelType* const kTypes[] = {
    &PixelTraits<KyBW1>::type,  &PixelTraits<KyBW8>::type, &PixelTraits<KyBW16>::type,
    &PixelTraits<KyBW32>::type, &PixelTraits<KyC24>::type, &PixelTraits<KyC24A>::type,
    &PixelTraits<KyC15>::type,  &PixelTraits<KyC16>::type, &PixelTraits<KyComplex64>::type};

const py::detail::PyArray_Proxy& ProxyOf(PyObject* array) {
  return *py::detail::array_proxy(array);
}

// Pixels of arrays without any, whose own address may be anything.
alignas(64) unsigned char no_pixels[64];

bool RaiseLayout(const Place& place, const char* expected, PyObject* array) {
  const PyObject* const strides = PyObject_GetAttrString(array, "strides");
  PyErr_Format(
      PyExc_TypeError,
      "%s(): %s must be %s whose rows are contiguous, aligned, and do not run backwards; its "
      "strides are %R",
      place.function, place.parameter, expected, strides);
  Py_XDECREF(strides);
  return false;
}

}  // namespace

PixelType* const* PixelTypes(int& count) {
  count = static_cast<int>(std::size(kTypes));
  return kTypes;
}

bool TakePixelTypes() {
  PyObject* const core = PyImport_ImportModule("ky._core");
  bool taken = core != nullptr;
  for (PixelType* const type : kTypes) {
    // Kept for the life of the process, like the core's own.
    if (taken) type->object = PyObject_GetAttrString(core, type->name);
    if (taken && type->object != nullptr)
      type->dtype = PyObject_GetAttrString(type->object, "dtype");
    taken = taken && type->dtype != nullptr;
  }
  Py_XDECREF(core);
  return taken;
}

bool IsArray(PyObject* object) { return py::detail::npy_api::get().PyArray_Check_(object); }

bool PixelType::Matches(PyObject* array) const {
  if (!IsArray(array)) return false;
  const auto& proxy = ProxyOf(array);
  if (proxy.nd != (channels == 0 ? 2 : 3)) return false;
  if (channels != 0 && proxy.dimensions[2] != channels) return false;
  const py::detail::PyArrayDescr_Proxy& element = *py::detail::array_descriptor_proxy(proxy.descr);
  if (element.kind != kind) return false;
  if (kind == 'V') return py::detail::npy_api::get().PyArray_EquivTypes_(proxy.descr, dtype);
  return element.elsize == itemSize && (element.byteorder == '=' || element.byteorder == '|');
}

bool FindPixels(PyObject* array, const PixelType& type, bool write, const Place& place,
                Pixels& pixels) {
  if (!type.Matches(array)) return RaiseMismatch(PyExc_TypeError, place, type.expected, array);
  const auto& proxy = ProxyOf(array);
  const Py_ssize_t height = proxy.dimensions[0], width = proxy.dimensions[1];
  if (height > INT_MAX || width > INT_MAX / type.pixelBytes) {
    PyErr_Format(PyExc_ValueError, "%s(): %s has %zd x %zd pixels, which is too large",
                 place.function, place.parameter, height, width);
    return false;
  }
  pixels.width = static_cast<int>(width);
  pixels.height = static_cast<int>(height);
  const Py_ssize_t rowBytes = width * type.pixelBytes;
  if (write && (proxy.flags & py::detail::npy_api::NPY_ARRAY_WRITEABLE_) == 0) {
    PyErr_Format(PyExc_ValueError, "%s(): %s is read-only", place.function, place.parameter);
    return false;
  }
  if (height == 0 || width == 0) {
    pixels.data = no_pixels;
    pixels.pitch = static_cast<int>(rowBytes);
    return true;
  }
  // Of an axis of one element the stride means nothing.
  const Py_ssize_t pitch = height == 1 ? rowBytes : proxy.strides[0];
  const bool contiguous = (width == 1 || proxy.strides[1] == type.pixelBytes) &&
                          (type.channels == 0 || proxy.strides[2] == 1);
  const bool aligned = reinterpret_cast<std::uintptr_t>(proxy.data) % type.itemSize == 0 &&
                       pitch % type.itemSize == 0;
  if (!contiguous || pitch < rowBytes || pitch > INT_MAX)
    return RaiseLayout(place, type.expected, array);
  if (!aligned && type.kind != 'c') return RaiseLayout(place, type.expected, array);
  if (type.kind == 'c' && (reinterpret_cast<std::uintptr_t>(proxy.data) % 4 != 0 || pitch % 4 != 0))
    return RaiseLayout(place, type.expected, array);
  pixels.data = proxy.data;
  pixels.pitch = static_cast<int>(pitch);
  return true;
}

PyObject* NewArray(const PixelType& type, Shape shape, Contents contents) {
  const auto& api = py::detail::npy_api::get();
  Py_intptr_t dimensions[3] = {shape.height, shape.width, type.channels};
  Py_INCREF(type.dtype);
  PyObject* const array =
      api.PyArray_NewFromDescr_(api.PyArray_Type_, type.dtype, type.channels == 0 ? 2 : 3,
                                dimensions, nullptr, nullptr, 0, nullptr);
  if (array != nullptr && contents != Contents::kAny)
    std::memset(ProxyOf(array).data, 0,
                size_t(shape.height) * size_t(shape.width) * type.pixelBytes);
  return array;
}

PyObject* ArrayOn(const PixelType& type, void* data, Shape shape, Py_ssize_t pitch, PyObject* owner,
                  bool writable) {
  const auto& api = py::detail::npy_api::get();
  Py_intptr_t dimensions[3] = {shape.height, shape.width, type.channels};
  Py_intptr_t strides[3] = {pitch, type.pixelBytes, 1};
  Py_INCREF(type.dtype);
  PyObject* const array = api.PyArray_NewFromDescr_(
      api.PyArray_Type_, type.dtype, type.channels == 0 ? 2 : 3, dimensions, strides, data,
      writable ? py::detail::npy_api::NPY_ARRAY_WRITEABLE_ : 0, nullptr);
  if (array == nullptr || owner == nullptr || api.PyArray_SetBaseObject_(array, owner) < 0) {
    if (array == nullptr) Py_XDECREF(owner);
    Py_XDECREF(array);
    return nullptr;
  }
  return array;
}

bool ArrayArgument::MakeArray(const PixelType& type, Shape shape, Contents contents,
                              const Argument* like, const Place& place) {
  made_ = NewArray(type, shape, contents);
  if (made_ == nullptr || !Find(made_, type, true, place)) return false;
  if (contents != Contents::kSource || like == nullptr) return true;
  return PyObject_SetItem(made_, Py_Ellipsis, like->Array()) == 0;
}

bool BitsArgument::Pack(PyObject* array, bool write, const Place& place) {
  return Find(array, PixelTraits<KyBW1>::type, write, place) && Pack();
}

bool BitsArgument::Pack() {
  KyImage<KyBW8> bytes;
  bytes.Attach(static_cast<KyBW8*>(pixels_.data), pixels_.width, pixels_.height, pixels_.pitch);
  bits_.SetSize(pixels_.width, pixels_.height);
  if (pixels_.width > 0 && pixels_.height > 0 && ImgThreshold(&bytes, &bits_, 1) != KY_OK) {
    PyErr_NoMemory();
    return false;
  }
  return true;
}

PyObject* BitsArgument::Unpack() {
  KyImage<KyBW8> bytes;
  bytes.Attach(static_cast<KyBW8*>(pixels_.data), pixels_.width, pixels_.height, pixels_.pitch);
  if (pixels_.width > 0 && pixels_.height > 0 && ImgThreshold(&bits_, &bytes, 0, 1) != KY_OK)
    return PyErr_NoMemory();
  return ArrayArgument::Give();
}

}  // namespace ky::python
