// The arguments that are images.
#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "arrays.h"

namespace ky::python {

// The caller's array, or a new one, and its pixels.
class ArrayArgument : public Argument {
 public:
  ~ArrayArgument() override { Py_XDECREF(made_); }
  Shape Size() const override { return {pixels_.height, pixels_.width}; }
  PyObject* Give() override { return Py_NewRef(array_); }
  PyObject* Array() const override { return array_; }

 protected:
  bool Find(PyObject* array, const PixelType& type, bool write, const Place& place) {
    array_ = array;
    return FindPixels(array, type, write, place, pixels_);
  }
  bool MakeArray(const PixelType& type, Shape shape, Contents contents, const Argument* like,
                 const Place& place);

  PyObject* array_ = nullptr;
  Pixels pixels_;

 private:
  PyObject* made_ = nullptr;
};

template <class T>
class ImageArgument : public ArrayArgument {
 public:
  static constexpr const char* kExpected = PixelTraits<T>::kExpected;

 protected:
  bool Attach(PyObject* array, bool write, const Place& place) {
    return Find(array, PixelTraits<T>::type, write, place) && Attach();
  }
  bool Attach() {
    image_.Attach(static_cast<T*>(pixels_.data), pixels_.width, pixels_.height, pixels_.pitch);
    return true;
  }

  KyImage<T> image_;
};

// A source. None stands for one that may be left out.
template <class T>
struct SourceHolder : ImageArgument<T> {
  static bool Matches(PyObject* object) { return PixelTraits<T>::type.Matches(object); }
  bool Take(PyObject* object, const Place& place) override {
    return this->Attach(object, false, place);
  }
  const KyImage<T>* Pass() const { return this->array_ == nullptr ? nullptr : &this->image_; }
};
template <class T>
struct Holder<const KyImage<T>*> : SourceHolder<T> {};
template <class T>
struct Holder<const KyROI<T>*> : SourceHolder<T> {};

// A destination. What is passed is an ROI on the array, which no call can give pixels of its own.
template <class T>
struct Holder<KyROI<T>*> : ImageArgument<T> {
  static bool Matches(PyObject* object) {
    const PixelType& type = PixelTraits<T>::type;
    return type.Matches(object) || object == type.object;
  }
  bool Take(PyObject* object, const Place& place) override {
    return this->Attach(object, true, place);
  }
  bool Make(Shape shape, Contents contents, const Argument* like, const Place& place) override {
    return this->MakeArray(PixelTraits<T>::type, shape, contents, like, place) && this->Attach();
  }
  KyROI<T>* Pass() {
    if (this->array_ == nullptr) return nullptr;
    return &roi_.emplace(&this->image_, 0, 0, this->pixels_.width, this->pixels_.height);
  }

 private:
  std::optional<KyROI<T>> roi_;
};

// One bit a pixel: packed before the call, unpacked after it.
class BitsArgument : public ArrayArgument {
 public:
  static constexpr const char* kExpected = PixelTraits<KyBW1>::kExpected;

 protected:
  bool Pack(PyObject* array, bool write, const Place& place);
  bool Pack();
  PyObject* Unpack();

  KyImage<KyBW1> bits_;
};
template <>
struct Holder<const KyROI<KyBW1>*> : BitsArgument {
  static bool Matches(PyObject* object) { return PixelTraits<KyBW1>::type.Matches(object); }
  bool Take(PyObject* object, const Place& place) override { return Pack(object, false, place); }
  const KyROI<KyBW1>* Pass() const { return &bits_; }
};
template <>
struct Holder<KyROI<KyBW1>*> : BitsArgument {
  static bool Matches(PyObject* object) {
    const PixelType& type = PixelTraits<KyBW1>::type;
    return type.Matches(object) || object == type.object;
  }
  bool Take(PyObject* object, const Place& place) override { return Pack(object, true, place); }
  bool Make(Shape shape, Contents contents, const Argument* like, const Place& place) override {
    return MakeArray(PixelTraits<KyBW1>::type, shape, contents, like, place) && Pack();
  }
  PyObject* Give() override { return Unpack(); }
  KyROI<KyBW1>* Pass() { return &bits_; }
};

// An image that the call resizes: its pixels become an array. The caller may say which type they
// have.
template <class T>
PyObject* GiveImage(KyImage<T>&& image) {
  auto owned = std::make_unique<KyImage<T>>(std::move(image));
  const Shape shape{owned->GetHeight(), owned->GetWidth()};
  void* const data = owned->GetPixelPtr(0, 0);
  const int pitch = owned->GetPitch();
  if (data == nullptr) return NewArray(PixelTraits<T>::type, {0, 0}, Contents::kZero);
  return ArrayOn(PixelTraits<T>::type, data, shape, pitch, Own(owned.release()));
}
template <class T>
struct Holder<KyImage<T>*> : Argument {
  static constexpr const char* kExpected = PixelTraits<T>::kName;
  static bool Matches(PyObject* object) { return object == PixelTraits<T>::type.object; }
  bool Take(PyObject*, const Place&) override { return true; }
  PyObject* Give() override { return GiveImage(std::move(image_)); }
  KyImage<T>* Pass() { return &image_; }

 private:
  KyImage<T> image_;
};

}  // namespace ky::python
