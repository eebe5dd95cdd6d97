// The module ky._core.
#include "classes.h"

namespace ky::python {

std::vector<Named> Functions();  // generated

}  // namespace ky::python

PYBIND11_MODULE(_core, module) {
  namespace python = ky::python;
  python::AddPixelTypes(module);
  python::AddKernel(module);
  python::AddLookups(module);
  python::AddMovingAverage(module);
  python::AddPyramid(module);
  python::RefuseUnmade(module);
  if (!python::AddFunctions(module.ptr(), "ky", python::Functions()) ||
      !python::AddFunctions(module.ptr(), "ky", python::VectorFiles()))
    throw pybind11::error_already_set();
}
