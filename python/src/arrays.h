// NumPy arrays as the pixels of images.
#pragma once

#include "argument.h"
#include "ky/ky.h"

namespace ky::python {

// A pixel type, as arrays have it.
struct PixelType {
  const char* name;      // "BW8"
  const char* expected;  // "an array (h, w) of uint8"
  const char* format;    // of the dtype
  char kind;
  int itemSize;
  int channels;  // the length of a third axis, or 0 without one
  int pixelBytes;
  PyObject* dtype = nullptr;   // made by PreparePixelTypes
  PyObject* object = nullptr;  // what stands for it in Python

  bool Matches(PyObject* array) const;
};

template <class T>
struct PixelTraits;
#define KY_PIXELS(T, expected, format, kind, itemSize, channels, pixelBytes)                  \
  template <>                                                                                 \
  struct PixelTraits<Ky##T> {                                                                 \
    static inline PixelType type{#T, expected, format, kind, itemSize, channels, pixelBytes}; \
    static constexpr const char* kName = "ky." #T;                                            \
    static constexpr const char* kExpected = expected;                                        \
  };
KY_PIXELS(BW8, "an array (h, w) of uint8", "u1", 'u', 1, 0, 1)
KY_PIXELS(BW16, "an array (h, w) of uint16", "u2", 'u', 2, 0, 2)
KY_PIXELS(BW32, "an array (h, w) of uint32", "u4", 'u', 4, 0, 4)
KY_PIXELS(C24, "an array (h, w, 3) of uint8", "u1", 'u', 1, 3, 3)
KY_PIXELS(C24A, "an array (h, w, 4) of uint8", "u1", 'u', 1, 4, 4)
KY_PIXELS(C15, "an array (h, w) of ky.C15.dtype", "c15:u2", 'V', 2, 0, 2)
KY_PIXELS(C16, "an array (h, w) of ky.C16.dtype", "c16:u2", 'V', 2, 0, 2)
KY_PIXELS(Complex64, "an array (h, w) of complex64", "c8", 'c', 8, 0, 8)
// One bit a pixel in the library; its arrays are packed and unpacked.
KY_PIXELS(BW1, "an array (h, w) of bool", "?", 'b', 1, 0, 1)
#undef KY_PIXELS

// All of them. The module of the core makes their dtypes and objects; those of the optional
// libraries take them from there, which returns false with an exception when it fails.
PixelType* const* PixelTypes(int& count);
bool TakePixelTypes();

// The pixels of an array.
struct Pixels {
  void* data = nullptr;
  int width = 0, height = 0, pitch = 0;
};

// Finds the pixels of an array of the type. Raises TypeError for an array whose rows the library
// cannot use where they lie, and ValueError when it must be written and cannot.
bool FindPixels(PyObject* array, const PixelType& type, bool write, const Place& place,
                Pixels& pixels);

// Returns a new array, or null with an exception.
PyObject* NewArray(const PixelType& type, Shape shape, Contents contents);

// Returns an array of pixels that `owner`, a capsule or another object, keeps; steals the
// reference.
PyObject* ArrayOn(const PixelType& type, void* data, Shape shape, Py_ssize_t pitch, PyObject* owner,
                  bool writable = true);

// Returns the capsule of an object that is deleted with it.
template <class T>
PyObject* Own(T* object) {
  return PyCapsule_New(object, nullptr, [](PyObject* capsule) {
    delete static_cast<T*>(PyCapsule_GetPointer(capsule, nullptr));
  });
}

bool IsArray(PyObject* object);

}  // namespace ky::python
