#include "ky/kernel.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include "classes.h"

namespace py = pybind11;

namespace ky::python {

namespace {

using K = KyKernel;
using Floats = py::array_t<float, py::array::c_style | py::array::forcecast>;

std::unique_ptr<K> KernelOf(const Floats& rows, float gain, int offset, std::int16_t rectifier,
                            int outsideValue) {
  if (rows.ndim() != 2) throw py::value_error("Kernel(): coefficients must be rows of numbers");
  if (rows.shape(0) > INT16_MAX || rows.shape(1) > INT16_MAX)
    throw py::value_error("Kernel(): there may be at most 32767 rows and columns");
  auto made = std::make_unique<K>(static_cast<std::int16_t>(rows.shape(1)),
                                  static_cast<std::int16_t>(rows.shape(0)), gain,
                                  std::uint32_t(offset), rectifier, std::uint32_t(outsideValue));
  Check(KyGetError());
  if (rows.size() > 0)
    std::memcpy(made->GetDataPtr(), rows.data(), size_t(rows.size()) * sizeof(float));
  return made;
}

py::array_t<float> CoefficientsOf(const K& self) {
  const py::ssize_t rows = self.GetSizeY(), columns = self.GetSizeX();
  const float* const data = self.GetDataPtr();
  if (data == nullptr || rows * columns > py::ssize_t(self.GetAllocatedSize()) || rows < 0 ||
      columns < 0)
    return py::array_t<float>(std::vector<py::ssize_t>{0, 0});
  return py::array_t<float>(std::vector<py::ssize_t>{rows, columns}, data);
}

void SetCoefficients(K& self, const Floats& values) {
  const auto set = [&]<int n>(std::integral_constant<int, n>) {
    float grid[n];
    std::copy_n(values.data(), n, grid);
    Check(self.SetKernelData(grid));
  };
  switch (values.size()) {
    case 9: return set(std::integral_constant<int, 9>());
    case 25: return set(std::integral_constant<int, 25>());
    case 49: return set(std::integral_constant<int, 49>());
    default: throw py::value_error("set_kernel_data(): there must be 9, 25 or 49 coefficients");
  }
}

// How pickling makes the kernel again: a constructor and its arguments.
py::tuple Reduce(const py::object& self) {
  const K& of = self.cast<const K&>();
  const py::object make = py::module_::import("functools").attr("partial");
  return py::make_tuple(
      make(py::type::of(self), CoefficientsOf(of), py::arg("gain") = of.GetGain(),
           py::arg("offset") = int(of.GetOffset()), py::arg("rectifier") = of.GetRectifier(),
           py::arg("outside_value") = int(of.GetOutsideValue())),
      py::tuple());
}

void AddConstructors(py::class_<K>& kernel) {
  kernel.def(py::init([] { return std::make_unique<K>(); }), "Makes a kernel of size 0 x 0.")
      .def(py::init([](int type) {
             auto made = std::make_unique<K>(static_cast<KERNEL_TYPE>(type));
             Check(KyGetError());
             return made;
           }),
           "Makes a preset kernel, such as ky.Kernel(ky.KERNEL_SOBEL_X).", py::arg("type"))
      .def(py::init(&KernelOf), "Makes a kernel of rows of coefficients, from the top.",
           py::arg("coefficients"), py::kw_only(), py::arg("gain") = 1.0F, py::arg("offset") = 0,
           py::arg("rectifier") = 2, py::arg("outside_value") = 0)
      .def("__reduce__", &Reduce);
}

void AddNumbers(py::class_<K>& kernel) {
  const char* const get = DocumentationOf("KyKernel::GetSizeX");
  const char* const set = DocumentationOf("KyKernel::SetGain");
  kernel.def("get_size_x", &K::GetSizeX, get)
      .def("get_size_y", &K::GetSizeY, get)
      .def("get_gain", &K::GetGain, get)
      .def(
          "get_offset", [](const K& self) { return int(self.GetOffset()); }, get)
      .def("get_rectifier", &K::GetRectifier, get)
      .def(
          "get_outside_value", [](const K& self) { return int(self.GetOutsideValue()); }, get)
      .def("set_gain", &K::SetGain, set, py::arg("gain"))
      .def(
          "set_offset",
          [](K& self, int offset) { return int(self.SetOffset(std::uint32_t(offset))); }, set,
          py::arg("offset"))
      .def("set_rectifier", &K::SetRectifier, set, py::arg("rectifier"))
      .def(
          "set_outside_value",
          [](K& self, int value) { return int(self.SetOutsideValue(std::uint32_t(value))); }, set,
          py::arg("value"));
}

void AddCoefficients(py::class_<K>& kernel) {
  kernel
      .def_property_readonly("coefficients", &CoefficientsOf,
                             "A copy of the coefficients, an array (rows, columns).")
      .def("get_allocated_size", &K::GetAllocatedSize,
           DocumentationOf("KyKernel::GetAllocatedSize"))
      .def(
          "set_allocated_size",
          [](K& self, std::uint32_t count) { Check(self.SetAllocatedSize(count)); },
          DocumentationOf("KyKernel::SetAllocatedSize"), py::arg("count"))
      .def(
          "set_size_x", [](K& self, std::int16_t size) { Check(self.SetSizeX(size)); },
          DocumentationOf("KyKernel::SetSizeX"), py::arg("size_x"))
      .def(
          "set_size_y", [](K& self, std::int16_t size) { Check(self.SetSizeY(size)); },
          DocumentationOf("KyKernel::SetSizeX"), py::arg("size_y"))
      .def(
          "get_kernel_data",
          [](const K& self, int x, int y) {
            float value = 0;
            Check(self.GetKernelData(x, y, value));
            return value;
          },
          DocumentationOf("KyKernel::GetKernelData"), py::arg("x"), py::arg("y"))
      .def(
          "set_kernel_data",
          [](K& self, int x, int y, float value) { Check(self.SetKernelData(x, y, value)); },
          DocumentationOf("KyKernel::GetKernelData"), py::arg("x"), py::arg("y"), py::arg("value"))
      .def("set_kernel_data", &SetCoefficients, DocumentationOf("KyKernel::SetKernelData"),
           py::arg("coefficients"))
      .def(
          "set_kernel",
          [](K& self, int type) { Check(self.SetKernel(static_cast<KERNEL_TYPE>(type))); },
          DocumentationOf("KyKernel::SetKernel"), py::arg("type"));
}

}  // namespace

void AddKernel(py::module_& module) {
  py::class_<K> kernel(module, "Kernel", DocumentationOf("KyKernel"));
  AddConstructors(kernel);
  AddNumbers(kernel);
  AddCoefficients(kernel);
}

}  // namespace ky::python
