// The arguments that are contexts of Cairo.
#pragma once

#include "argument.h"
#include "ky/drawing.h"

namespace ky::python {

// The context in a cairo.Context of pycairo; null for any other object.
cairo_t* ContextIn(PyObject* object);

template <>
struct Holder<cairo_t*> : Argument {
  static constexpr const char* kExpected = "a cairo.Context";
  static bool Matches(PyObject* object) { return ContextIn(object) != nullptr; }
  bool Take(PyObject* object, const Place& place) override {
    context_ = ContextIn(object);
    return context_ != nullptr || RaiseMismatch(PyExc_TypeError, place, kExpected, object);
  }
  cairo_t* Pass() const { return context_; }

 private:
  cairo_t* context_ = nullptr;
};

}  // namespace ky::python
