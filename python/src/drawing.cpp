#include "drawing.h"

#include <py3cairo.h>

namespace ky::python {

cairo_t* ContextIn(PyObject* object) {
  if (Pycairo_CAPI == nullptr && import_cairo() < 0) {
    PyErr_Clear();
    return nullptr;
  }
  return PyObject_TypeCheck(object, &PycairoContext_Type) ? PycairoContext_GET(object) : nullptr;
}

}  // namespace ky::python
