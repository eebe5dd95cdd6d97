#include "classes.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "overload.h"

namespace py = pybind11;

namespace ky::python {

namespace {

// Raises the status of the thread as an exception when a member has failed.
void Check(KY_ERRORS error) {
  if (error == KY_OK) return;
  RaiseStatus(error);
  throw py::error_already_set();
}

// Takes an argument as the calls of functions do.
template <class H>
void Take(H& holder, const py::object& object, const Place& place) {
  if (!holder.Take(object.ptr(), place)) throw py::error_already_set();
}

// Takes a destination, or makes one like `source`.
template <class H>
void TakeOrMake(H& holder, const py::object& object, Shape shape, const Place& place) {
  if (!object.is_none()) return Take(holder, object, place);
  if (!holder.Make(shape, Contents::kAny, nullptr, place)) throw py::error_already_set();
}

py::object Steal(PyObject* object) {
  if (object == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(object);
}

const char* Doc(const char* name) { return DocumentationOf(name); }

// Makes every protocol of pickling refuse the objects of a class. Without it the two oldest make
// objects that no constructor has seen, which ends the process.
template <class C>
void RefusePickling(C& bound) {
  bound.def("__reduce__", [](const py::object& self) -> py::object {
    const auto name = py::type::of(self).attr("__name__").cast<std::string>();
    throw py::type_error("cannot pickle a ky." + name);
  });
}

}  // namespace

void AddPixelTypes(py::module_& module) {
  py::class_<PixelType>(
      module, "PixelType",
      "A type of pixels; stands for a new array of them where a destination is asked for.")
      .def_property_readonly("name", [](const PixelType& type) { return type.name; })
      .def_property_readonly(
          "dtype",
          [](const PixelType& type) { return py::reinterpret_borrow<py::object>(type.dtype); },
          "The dtype of the arrays.")
      .def("__repr__", [](const PixelType& type) { return std::string("ky.") + type.name; })
      .def("__reduce__", [](const PixelType& type) { return type.name; });
  int count = 0;
  PixelType* const* const types = PixelTypes(count);
  for (int i = 0; i < count; ++i) {
    PixelType& type = *types[i];
    const std::string format = type.format;
    const auto colon = format.find(':');
    if (colon == format.npos) {
      type.dtype = NewDtype(type.format);
    } else {
      const std::string name = format.substr(0, colon);
      const RecordField field{name.c_str(), format.substr(colon + 1), 0};
      type.dtype = NewRecordDtype({field}, size_t(type.itemSize));
    }
    if (type.dtype == nullptr) throw py::error_already_set();
    const py::object object = py::cast(&type, py::return_value_policy::reference);
    module.attr(type.name) = object;
    type.object = object.inc_ref().ptr();
  }
}

void AddKernel(py::module_& module) {
  using K = KyKernel;
  py::class_<K> kernel(module, "Kernel", Doc("KyKernel"));
  kernel.def(py::init([] { return std::make_unique<K>(); }), "Makes a kernel of size 0 x 0.")
      .def(py::init([](int type) {
             auto made = std::make_unique<K>(static_cast<KERNEL_TYPE>(type));
             Check(KyGetError());
             return made;
           }),
           "Makes a preset kernel, such as ky.Kernel(ky.KERNEL_SOBEL_X).", py::arg("type"))
      .def(py::init([](const py::array_t<float, py::array::c_style | py::array::forcecast>& rows,
                       float gain, int offset, std::int16_t rectifier, int outsideValue) {
             if (rows.ndim() != 2)
               throw py::value_error("Kernel(): coefficients must be rows of numbers");
             if (rows.shape(0) > INT16_MAX || rows.shape(1) > INT16_MAX)
               throw py::value_error("Kernel(): there may be at most 32767 rows and columns");
             auto made = std::make_unique<K>(
                 static_cast<std::int16_t>(rows.shape(1)), static_cast<std::int16_t>(rows.shape(0)),
                 gain, std::uint32_t(offset), rectifier, std::uint32_t(outsideValue));
             Check(KyGetError());
             if (rows.size() > 0)
               std::memcpy(made->GetDataPtr(), rows.data(), size_t(rows.size()) * sizeof(float));
             return made;
           }),
           "Makes a kernel of rows of coefficients, from the top.", py::arg("coefficients"),
           py::kw_only(), py::arg("gain") = 1.0F, py::arg("offset") = 0, py::arg("rectifier") = 2,
           py::arg("outside_value") = 0)
      .def_property_readonly(
          "coefficients",
          [](const K& self) {
            const py::ssize_t rows = self.GetSizeY(), columns = self.GetSizeX();
            const float* const data = self.GetDataPtr();
            if (data == nullptr || rows * columns > py::ssize_t(self.GetAllocatedSize()) ||
                rows < 0 || columns < 0)
              return py::array_t<float>(std::vector<py::ssize_t>{0, 0});
            return py::array_t<float>(std::vector<py::ssize_t>{rows, columns}, data);
          },
          "A copy of the coefficients, an array (rows, columns).")
      .def("get_size_x", &K::GetSizeX, Doc("KyKernel::GetSizeX"))
      .def("get_size_y", &K::GetSizeY, Doc("KyKernel::GetSizeX"))
      .def("get_gain", &K::GetGain, Doc("KyKernel::GetSizeX"))
      .def(
          "get_offset", [](const K& self) { return int(self.GetOffset()); },
          Doc("KyKernel::GetSizeX"))
      .def("get_rectifier", &K::GetRectifier, Doc("KyKernel::GetSizeX"))
      .def(
          "get_outside_value", [](const K& self) { return int(self.GetOutsideValue()); },
          Doc("KyKernel::GetSizeX"))
      .def("get_allocated_size", &K::GetAllocatedSize, Doc("KyKernel::GetAllocatedSize"))
      .def("set_gain", &K::SetGain, Doc("KyKernel::SetGain"), py::arg("gain"))
      .def(
          "set_offset",
          [](K& self, int offset) { return int(self.SetOffset(std::uint32_t(offset))); },
          Doc("KyKernel::SetGain"), py::arg("offset"))
      .def("set_rectifier", &K::SetRectifier, Doc("KyKernel::SetGain"), py::arg("rectifier"))
      .def(
          "set_outside_value",
          [](K& self, int value) { return int(self.SetOutsideValue(std::uint32_t(value))); },
          Doc("KyKernel::SetGain"), py::arg("value"))
      .def(
          "set_allocated_size",
          [](K& self, std::uint32_t count) { Check(self.SetAllocatedSize(count)); },
          Doc("KyKernel::SetAllocatedSize"), py::arg("count"))
      .def(
          "set_size_x", [](K& self, std::int16_t size) { Check(self.SetSizeX(size)); },
          Doc("KyKernel::SetSizeX"), py::arg("size_x"))
      .def(
          "set_size_y", [](K& self, std::int16_t size) { Check(self.SetSizeY(size)); },
          Doc("KyKernel::SetSizeX"), py::arg("size_y"))
      .def(
          "get_kernel_data",
          [](const K& self, int x, int y) {
            float value = 0;
            Check(self.GetKernelData(x, y, value));
            return value;
          },
          Doc("KyKernel::GetKernelData"), py::arg("x"), py::arg("y"))
      .def(
          "set_kernel_data",
          [](K& self, int x, int y, float value) { Check(self.SetKernelData(x, y, value)); },
          Doc("KyKernel::GetKernelData"), py::arg("x"), py::arg("y"), py::arg("value"))
      .def(
          "set_kernel_data",
          [](K& self, const py::array_t<float, py::array::c_style | py::array::forcecast>& values) {
            const auto set = [&]<int n>(std::integral_constant<int, n>) {
              float grid[n];
              std::copy_n(values.data(), n, grid);
              Check(self.SetKernelData(grid));
            };
            switch (values.size()) {
              case 9: return set(std::integral_constant<int, 9>());
              case 25: return set(std::integral_constant<int, 25>());
              case 49: return set(std::integral_constant<int, 49>());
              default:
                throw py::value_error("set_kernel_data(): there must be 9, 25 or 49 coefficients");
            }
          },
          Doc("KyKernel::SetKernelData"), py::arg("coefficients"))
      .def(
          "set_kernel",
          [](K& self, int type) { Check(self.SetKernel(static_cast<KERNEL_TYPE>(type))); },
          Doc("KyKernel::SetKernel"), py::arg("type"))
      .def("__reduce__", [](const py::object& self) {
        const K& of = self.cast<const K&>();
        const py::object make = py::module_::import("functools").attr("partial");
        return py::make_tuple(
            make(py::type::of(self), self.attr("coefficients"), py::arg("gain") = of.GetGain(),
                 py::arg("offset") = int(of.GetOffset()), py::arg("rectifier") = of.GetRectifier(),
                 py::arg("outside_value") = int(of.GetOutsideValue())),
            py::tuple());
      });
}

void AddLookups(py::module_& module) {
  // Final, as the library would not call what a class of Python overrides.
  py::class_<KyColorLookup> lookup(
      module, "ColorLookup",
      "Converts colours one by one: this one copies them, and ky.ColorMatrix multiplies them by a "
      "matrix. No class can be derived from it.",
      py::is_final());
  lookup.def(py::init([] { return std::make_unique<KyColorLookup>(); }))
      .def(
          "transform",
          [](const KyColorLookup& self, const std::array<KyBW8, 3>& color) {
            KyC24 output{};
            self.Transform(KyC24(color[0], color[1], color[2]), output);
            return std::make_tuple(output.c0, output.c1, output.c2);
          },
          Doc("KyColorLookup::Transform"), py::arg("color"));
  RefusePickling(lookup);
  py::class_<KyColorMatrix, KyColorLookup>(module, "ColorMatrix", Doc("KyColorMatrix"),
                                           py::is_final())
      .def(py::init([](const std::vector<float>& rows) {
             if (rows.size() != 9)
               throw py::value_error("ColorMatrix(): there must be 9 coefficients");
             float nine[9];
             std::copy_n(rows.begin(), 9, nine);
             return std::make_unique<KyColorMatrix>(nine);
           }),
           Doc("KyColorMatrix::KyColorMatrix"), py::arg("rows"))
      .def_static("luma", &KyColorMatrix::Luma, Doc("KyColorMatrix::Luma"));
}

namespace {

// A moving average; one thread at a time uses it. Arrays on its images keep it alive, and it is
// replaced, not resized, so that they never lose their pixels.
struct Averager {
  std::shared_ptr<KyMovingAverage> average = std::make_shared<KyMovingAverage>();
  std::unique_ptr<std::mutex> mutex = std::make_unique<std::mutex>();

  void SetSize(unsigned period, int width, int height, int keepSource) {
    auto made = std::make_shared<KyMovingAverage>();
    Check(made->SetSize(period, width, height, keepSource));
    average = made;
  }
  py::object Average(const py::object& source, const py::object& destination) {
    const std::shared_ptr<KyMovingAverage> used = average;
    unsigned period = 0;
    int width = 0, height = 0, keeps = 0;
    used->GetSize(period, width, height, keeps);
    Holder<const KyROI<KyBW8>*> in;
    Holder<KyROI<KyBW8>*> out;
    if (!source.is_none()) Take(in, source, {"average", "source"});
    TakeOrMake(out, destination, {std::max(height, 0), std::max(width, 0)},
               {"average", "destination"});
    KY_ERRORS error = KY_OK;
    {
      const Unlocked unlocked;
      const std::lock_guard<std::mutex> guard(*mutex);
      error = source.is_none() ? used->Average(out.Pass()) : used->Average(in.Pass(), out.Pass());
    }
    Check(error);
    return Steal(out.Give());
  }
  py::object GetSrcImage() {
    auto owner = std::make_unique<std::shared_ptr<KyMovingAverage>>(average);
    KyImage<KyBW8>* image = nullptr;
    {
      const Unlocked unlocked;
      const std::lock_guard<std::mutex> guard(*mutex);
      image = (*owner)->GetSrcImage();
    }
    if (image == nullptr) {
      Check(KyGetError());
      return py::none();
    }
    return Steal(ArrayOn(PixelTraits<KyBW8>::type, image->GetPixelPtr(0, 0),
                         {image->GetHeight(), image->GetWidth()}, image->GetPitch(),
                         Own(owner.release())));
  }
};

}  // namespace

void AddMovingAverage(py::module_& module) {
  py::class_<Averager> bound(module, "MovingAverage", Doc("KyMovingAverage"));
  RefusePickling(bound);
  bound.def(py::init<>(), Doc("KyMovingAverage::KyMovingAverage"))
      .def(py::init([](unsigned period, int width, int height, bool keepSource) {
             Averager made;
             made.SetSize(period, width, height, keepSource);
             return made;
           }),
           py::arg("period"), py::arg("width"), py::arg("height"), py::arg("keep_source") = false)
      .def("set_size", &Averager::SetSize, Doc("KyMovingAverage::SetSize"), py::arg("period"),
           py::arg("width"), py::arg("height"), py::arg("keep_source") = false)
      .def(
          "get_size",
          [](const Averager& self) {
            unsigned period = 0;
            int width = 0, height = 0, keeps = 0;
            self.average->GetSize(period, width, height, keeps);
            return std::make_tuple(period, width, height, keeps);
          },
          Doc("KyMovingAverage::GetSize"))
      .def(
          "reset",
          [](Averager& self) {
            const std::shared_ptr<KyMovingAverage> used = self.average;
            const Unlocked unlocked;
            const std::lock_guard<std::mutex> guard(*self.mutex);
            used->Reset();
          },
          Doc("KyMovingAverage::Reset"))
      .def("get_src_image", &Averager::GetSrcImage, Doc("KyMovingAverage::GetSrcImage"))
      .def("average", &Averager::Average, Doc("KyMovingAverage::Average"),
           py::arg("source") = py::none(), py::arg("destination") = py::none());
}

namespace {

// A pyramid; one thread at a time uses it. Where arrays lie on its levels it is replaced by another
// one, so that they never lose their pixels.
struct Levels {
  std::shared_ptr<KyPyramid> pyramid = std::make_shared<KyPyramid>();
  std::unique_ptr<std::mutex> mutex = std::make_unique<std::mutex>();

  // Runs `work`, which returns a status, on the pyramid or on a new one like it.
  template <class F>
  void Change(bool keepsLevels, F work) {
    KY_ERRORS error = KY_OK;
    {
      const Unlocked unlocked;
      const std::lock_guard<std::mutex> guard(*mutex);
      std::shared_ptr<KyPyramid> changed = pyramid;
      if (changed.use_count() > 2) {  // arrays refer to it too
        changed = std::make_shared<KyPyramid>();
        if (pyramid->GetNumLevels() > 0)
          error = changed->SetNumLevels(pyramid->GetNumLevels(), pyramid->GetImageType());
        if (error == KY_OK && keepsLevels)
          error = pyramid->GetImageType() == KY_IMAGE_BW8 ? changed->Build(pyramid->GetBW8Level(0))
                                                          : changed->Build(pyramid->GetC24Level(0));
      }
      if (error == KY_OK) error = work(*changed);
      if (error == KY_OK) pyramid = changed;
    }
    Check(error);
  }
  void SetNumLevels(int levels, int type) {
    Change(false,
           [&](KyPyramid& p) { return p.SetNumLevels(levels, static_cast<KY_IMAGE_TYPES>(type)); });
  }
  void Build(const py::object& source) {
    if (PixelTraits<KyC24>::type.Matches(source.ptr()))
      BuildFrom<KyC24>(source);
    else
      BuildFrom<KyBW8>(source);
  }
  template <class T>
  void BuildFrom(const py::object& source) {
    Holder<const KyROI<T>*> in;
    Take(in, source, {"build", "source"});
    Change(false, [&](KyPyramid& p) { return p.Build(in.Pass()); });
  }
  void Halve() {
    Change(true, [](KyPyramid& p) { return p.Halve(); });
  }
  // The pyramid as it is between two changes; while it is held, no thread changes it.
  std::shared_ptr<KyPyramid> Current() const {
    const Unlocked unlocked;
    const std::lock_guard<std::mutex> guard(*mutex);
    return pyramid;
  }
  py::object GetLevel(int level) const {
    auto owner = std::make_unique<std::shared_ptr<KyPyramid>>(Current());
    const KyGenericROI* const roi = (*owner)->GetLevel(level);
    if (roi == nullptr || roi->GetPixelPtr(0, 0) == nullptr) return py::none();
    const PixelType& type = (*owner)->GetImageType() == KY_IMAGE_BW8 ? PixelTraits<KyBW8>::type
                                                                     : PixelTraits<KyC24>::type;
    return Steal(ArrayOn(type, roi->GetPixelPtr(0, 0), {roi->GetHeight(), roi->GetWidth()},
                         roi->GetPitch(), Own(owner.release()), false));
  }
};

}  // namespace

void AddPyramid(py::module_& module) {
  py::class_<Levels> bound(module, "Pyramid", Doc("KyPyramid"));
  RefusePickling(bound);
  bound.def(py::init<>())
      .def(py::init([](int levels, int type) {
             Levels made;
             made.SetNumLevels(levels, type);
             return made;
           }),
           py::arg("levels"), py::arg("type") = int(KY_IMAGE_BW8))
      .def("set_num_levels", &Levels::SetNumLevels, Doc("KyPyramid::SetNumLevels"),
           py::arg("levels"), py::arg("type") = int(KY_IMAGE_BW8))
      .def("build", &Levels::Build, Doc("KyPyramid::Build"), py::arg("source"))
      .def("halve", &Levels::Halve, Doc("KyPyramid::Halve"))
      .def(
          "get_num_levels", [](const Levels& self) { return self.Current()->GetNumLevels(); },
          Doc("KyPyramid::GetNumLevels"))
      .def(
          "get_image_type", [](const Levels& self) { return int(self.Current()->GetImageType()); },
          Doc("KyPyramid::GetImageType"))
      .def("get_level", &Levels::GetLevel, Doc("KyPyramid::GetLevel"), py::arg("level"));
}

}  // namespace ky::python
