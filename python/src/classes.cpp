#include "classes.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace py = pybind11;

namespace ky::python {

void Check(KY_ERRORS error) {
  if (error == KY_OK) return;
  RaiseStatus(error);
  throw py::error_already_set();
}

namespace {

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

// Makes every protocol of pickling refuse the objects of a class. Without it the two oldest make
// objects that no constructor has seen.
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
          DocumentationOf("KyColorLookup::Transform"), py::arg("color"));
  RefusePickling(lookup);
  py::class_<KyColorMatrix, KyColorLookup>(module, "ColorMatrix", DocumentationOf("KyColorMatrix"),
                                           py::is_final())
      .def(py::init([](const std::vector<float>& rows) {
             if (rows.size() != 9)
               throw py::value_error("ColorMatrix(): there must be 9 coefficients");
             float nine[9];
             std::copy_n(rows.begin(), 9, nine);
             return std::make_unique<KyColorMatrix>(nine);
           }),
           DocumentationOf("KyColorMatrix::KyColorMatrix"), py::arg("rows"))
      .def_static("luma", &KyColorMatrix::Luma, DocumentationOf("KyColorMatrix::Luma"));
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
  py::class_<Averager> bound(module, "MovingAverage", DocumentationOf("KyMovingAverage"));
  RefusePickling(bound);
  bound.def(py::init<>(), DocumentationOf("KyMovingAverage::KyMovingAverage"))
      .def(py::init([](unsigned period, int width, int height, bool keepSource) {
             Averager made;
             made.SetSize(period, width, height, keepSource);
             return made;
           }),
           py::arg("period"), py::arg("width"), py::arg("height"), py::arg("keep_source") = false)
      .def("set_size", &Averager::SetSize, DocumentationOf("KyMovingAverage::SetSize"),
           py::arg("period"), py::arg("width"), py::arg("height"), py::arg("keep_source") = false)
      .def(
          "get_size",
          [](const Averager& self) {
            unsigned period = 0;
            int width = 0, height = 0, keeps = 0;
            self.average->GetSize(period, width, height, keeps);
            return std::make_tuple(period, width, height, keeps);
          },
          DocumentationOf("KyMovingAverage::GetSize"))
      .def(
          "reset",
          [](Averager& self) {
            const std::shared_ptr<KyMovingAverage> used = self.average;
            const Unlocked unlocked;
            const std::lock_guard<std::mutex> guard(*self.mutex);
            used->Reset();
          },
          DocumentationOf("KyMovingAverage::Reset"))
      .def("get_src_image", &Averager::GetSrcImage, DocumentationOf("KyMovingAverage::GetSrcImage"))
      .def("average", &Averager::Average, DocumentationOf("KyMovingAverage::Average"),
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
  py::class_<Levels> bound(module, "Pyramid", DocumentationOf("KyPyramid"));
  RefusePickling(bound);
  bound.def(py::init<>())
      .def(py::init([](int levels, int type) {
             Levels made;
             made.SetNumLevels(levels, type);
             return made;
           }),
           py::arg("levels"), py::arg("type") = int(KY_IMAGE_BW8))
      .def("set_num_levels", &Levels::SetNumLevels, DocumentationOf("KyPyramid::SetNumLevels"),
           py::arg("levels"), py::arg("type") = int(KY_IMAGE_BW8))
      .def("build", &Levels::Build, DocumentationOf("KyPyramid::Build"), py::arg("source"))
      .def("halve", &Levels::Halve, DocumentationOf("KyPyramid::Halve"))
      .def(
          "get_num_levels", [](const Levels& self) { return self.Current()->GetNumLevels(); },
          DocumentationOf("KyPyramid::GetNumLevels"))
      .def(
          "get_image_type", [](const Levels& self) { return int(self.Current()->GetImageType()); },
          DocumentationOf("KyPyramid::GetImageType"))
      .def("get_level", &Levels::GetLevel, DocumentationOf("KyPyramid::GetLevel"),
           py::arg("level"));
}

namespace {

void* RaiseUnmade(std::size_t) {
  throw py::type_error("the object does not exist yet: the __init__ of its class has not run");
}

}  // namespace

// pybind11 gives such an object uninitialised memory when a member is first called, through this.
void RefuseUnmade(const py::module_& module) {
  for (const auto& [name, member] : py::dict(module.attr("__dict__"))) {
    if (!PyType_Check(member.ptr())) continue;
    auto* const type = reinterpret_cast<PyTypeObject*>(member.ptr());
    if (py::detail::type_info* const info = py::detail::get_type_info(type))
      info->operator_new = &RaiseUnmade;
  }
}

}  // namespace ky::python
