// The arguments that are objects of classes, bytes and names of files.
#pragma once

#include <optional>

#include "argument.h"
#include "ky/ky.h"

namespace ky::python {

// A copy, so that another thread may change the caller's kernel during the call.
template <>
struct Holder<const KyKernel*> : Argument {
  static constexpr const char* kExpected = "a ky.Kernel";
  static bool Matches(PyObject* object);
  bool Take(PyObject* object, const Place& place) override;
  const KyKernel* Pass() const { return kernel_ ? &*kernel_ : nullptr; }

 private:
  std::optional<KyKernel> kernel_;
};

// Lookups cannot be changed.
template <>
struct Holder<const KyColorLookup*> : Argument {
  static constexpr const char* kExpected = "a ky.ColorLookup";
  static bool Matches(PyObject* object);
  bool Take(PyObject* object, const Place& place) override;
  const KyColorLookup* Pass() const { return lookup_; }

 private:
  const KyColorLookup* lookup_ = nullptr;
};

// Bytes whose number is known.
struct Bytes {
  const void* data = nullptr;
  Py_ssize_t size = 0;
};
template <>
struct Holder<const Bytes*> : Argument {
  static constexpr const char* kExpected = "bytes, or another contiguous buffer";
  static bool Matches(PyObject* object) { return PyObject_CheckBuffer(object); }
  ~Holder() override {
    if (view_.obj != nullptr) PyBuffer_Release(&view_);
  }
  bool Take(PyObject* object, const Place& place) override;
  const Bytes* Pass() const { return &bytes_; }

 private:
  Py_buffer view_{};
  Bytes bytes_;
};

// The name of a file, as Python's own functions take it: a string, bytes, or a path of pathlib and
// the like.
struct FilePath {
  const char* text;
};
template <>
struct Holder<FilePath> : Argument {
  static constexpr const char* kExpected = "a path";
  static bool Matches(PyObject* object);
  ~Holder() override { Py_XDECREF(bytes_); }
  bool Take(PyObject* object, const Place& place) override;
  FilePath Pass() const { return {PyBytes_AS_STRING(bytes_)}; }

 private:
  PyObject* bytes_ = nullptr;
};

// ImgUnpack for a buffer: refuses one that is too small by KY_ERROR_PARAMETER_1_OUT_OF_RANGE
// (1011).
template <class T>
KY_ERRORS Unpack(const Bytes* pixels, int pitch, KY_PACKED_FORMAT format, KyROI<T>* destination) {
  const std::int64_t width = destination->GetWidth(), height = destination->GetHeight();
  const bool gige = format == KY_PACKED_MONO10_GIGE || format == KY_PACKED_MONO12_GIGE;
  const std::int64_t bits = format == KY_PACKED_MONO10P ? 10 : 12;
  const std::int64_t row = gige ? 3 * ((width + 1) / 2) : (width * bits + 7) / 8;
  // The library refuses a pitch that is shorter than a row.
  if (height > 0 && pitch >= row && pixels->size < (height - 1) * pitch + row) {
    KyOk();
    KySetError(KY_ERROR_PARAMETER_1_OUT_OF_RANGE);
    KyNameParameter("pixels holds fewer bytes than the rows take");
    return KyTraceError("ImgUnpack");
  }
  return ImgUnpack(pixels->data, pitch, format, destination);
}

}  // namespace ky::python
