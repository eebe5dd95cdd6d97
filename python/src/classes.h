// The classes of the module.
#pragma once

#include <pybind11/pybind11.h>

#include "ky/status.h"

namespace ky::python {

// Raises the status of the thread as an exception when a member has failed.
void Check(KY_ERRORS error);

// The comment of a class or member of a public header, "KyKernel::SetGain"; generated.
const char* DocumentationOf(const char* name);

void AddPixelTypes(pybind11::module_& module);
void AddKernel(pybind11::module_& module);
void AddLookups(pybind11::module_& module);
void AddMovingAverage(pybind11::module_& module);
void AddPyramid(pybind11::module_& module);

}  // namespace ky::python
