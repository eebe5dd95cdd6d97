// The classes of the module, and its functions that no header declares.
#pragma once

#include <pybind11/pybind11.h>

#include <vector>

#include "ky/status.h"
#include "overload.h"

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

std::vector<Named> VectorFiles();

// Makes everything that uses objects of the module's classes raise TypeError for those that no
// constructor has made: those of a bare __new__, and self before an override of __init__ has called
// that of its base.
void RefuseUnmade(const pybind11::module_& module);

}  // namespace ky::python
