// The module of an optional library, which KY_MODULE and KY_MODULE_NAME name.
#include <pybind11/pybind11.h>

#include "overload.h"

namespace ky::python {

std::vector<Named> Functions();  // generated

}  // namespace ky::python

PYBIND11_MODULE(KY_MODULE, module) {
  namespace python = ky::python;
  if (!python::TakePixelTypes() ||
      !python::AddFunctions(module.ptr(), "ky." KY_MODULE_NAME, python::Functions()))
    throw pybind11::error_already_set();
}
