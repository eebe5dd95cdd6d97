// The classes of the module.
#pragma once

#include <pybind11/pybind11.h>

namespace ky::python {

// The comment of a class or member of a public header, "KyKernel::SetGain"; generated.
const char* DocumentationOf(const char* name);

void AddPixelTypes(pybind11::module_& module);
void AddKernel(pybind11::module_& module);
void AddLookups(pybind11::module_& module);
void AddMovingAverage(pybind11::module_& module);
void AddPyramid(pybind11::module_& module);

}  // namespace ky::python
