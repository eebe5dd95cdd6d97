// An argument of each type that calls have: Holder<T> makes, holds and passes one. A type of
// pixels, of typed vectors, of numbers, enumerations and plain records needs no holder of its own.
#pragma once

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <optional>
#include <type_traits>

#include "tests/registry/arguments.h"
#include "tests/registry/sheets.h"

namespace ky::test {

template <class T>
class Holder;

template <class T>
class RoiHolder : public Argument {
 public:
  RoiHolder(Context& context, bool constant) : constant_(constant) {
    int width = context.plan.width, height = context.plan.height;
    const Option* const size = context.Find(Option::Kind::kSize);
    if (size != nullptr) width = static_cast<int>(size->a), height = static_cast<int>(size->b);
    if (context.Find(Option::Kind::kHalfRows) != nullptr) height /= 2;
    if (context.plan.beside != nullptr) {
      auto& other = dynamic_cast<RoiHolder&>((*context.plan.beside)[context.index]);
      sheet_ = other.sheet_;
      roi_.emplace(&sheet_->image, other.roi_->GetX() + other.roi_->GetWidth(), other.roi_->GetY(),
                   width, height);
      passed_ = &*roi_;
      return;
    }
    if (context.Hostile(16)) width = std::max(0, width + context.draw.In(-2, 2));
    if (context.Hostile(16)) height = std::max(0, height + context.draw.In(-2, 2));
    static const char tag = 0;
    std::shared_ptr<void>& shared = context.sheets[&tag];
    const bool overlapping = context.plan.sharing == Sharing::kOverlapping;
    const auto fits = [&] {
      return width + 4 <= sheet_->image.GetWidth() && height + 4 <= sheet_->image.GetHeight();
    };
    // A smaller ROI has its neighbour where a larger one in the same place still is.
    const bool mayShare = context.plan.neighbours == 0 || size == nullptr;
    if (context.plan.sharing != Sharing::kApart && shared != nullptr && mayShare)
      sheet_ = std::static_pointer_cast<Sheet<T>>(shared);
    else if (overlapping && context.block != nullptr)
      sheet_ = std::make_shared<Sheet<T>>(context.block, context.pitch);
    if (sheet_ == nullptr || !fits()) {
      const int room = context.plan.neighbours != 0 ? context.plan.neighbours * width + kLeft : 0;
      sheet_ = std::make_shared<Sheet<T>>(width + room + 5, height + 4, context, overlapping);
    }
    shared = sheet_;
    context.block = sheet_->bytes;
    context.pitch = sheet_->pitch;
    int x = context.plan.neighbours != 0 ? kLeft : 2, y = 2;
    if (overlapping) x += context.draw.In(-2, 2), y += context.draw.In(-2, 2);
    if (context.Hostile(64)) x = context.draw.In(-1, 99);
    roi_.emplace(&sheet_->image, x, y, width, height);
    passed_ = context.Hostile(64) ? nullptr : context.Hostile(64) ? &spare_ : &*roi_;
  }
  KyROI<T>* Pass() const { return passed_; }
  bool IsNull() const override { return passed_ == nullptr; }
  Bytes State() const override {
    if (attached_) return {};
    return Bytes(sheet_->bytes->data(), sheet_->bytes->data() + sheet_->bytes->size());
  }
  bool MayChange() const override { return !constant_; }
  const void* Memory() const override { return attached_ ? nullptr : sheet_->bytes.get(); }
  std::size_t PixelBytes() const override {
    const bool usable = passed_ == &*roi_ && passed_->GetPixelPtr(0, 0) != nullptr;
    if (!usable || KyPixelTraits<T>::kBits < 8) return 0;
    return static_cast<std::size_t>(roi_->GetWidth() * roi_->GetPixelSize() * roi_->GetHeight());
  }
  void MoveTo(void* memory, bool attach) override {
    const int width = roi_->GetWidth(), height = roi_->GetHeight();
    const int row = width * roi_->GetPixelSize();
    for (int y = 0; y < height; ++y)
      std::memcpy(static_cast<unsigned char*>(memory) + y * row, roi_->GetPixelPtr(0, y),
                  static_cast<std::size_t>(row));
    if (!attach) return;
    attached_ = true;
    elsewhere_.Attach(static_cast<typename KyPixelTraits<T>::Memory*>(memory), width, height, row);
    roi_.emplace(&elsewhere_, 0, 0, width, height);
  }
  bool Spoil(Fault fault) override {
    switch (fault) {
      case Fault::kNone: break;
      case Fault::kNull: passed_ = nullptr; break;
      case Fault::kNoImage: passed_ = &spare_; break;
      case Fault::kOffParent: roi_->SetPlacement(99, 1, roi_->GetWidth(), roi_->GetHeight()); break;
      case Fault::kOtherWidth: roi_->SetSize(roi_->GetWidth() - 1, roi_->GetHeight()); break;
      case Fault::kOtherHeight: roi_->SetSize(roi_->GetWidth(), roi_->GetHeight() - 1); break;
    }
    return true;
  }
  void Restore(Bytes& state, const Bytes& before) const override {
    constexpr int kBits = KyPixelTraits<T>::kBits;
    for (int y = 0; y < roi_->GetHeight(); ++y) {
      for (int bit = 0; bit < roi_->GetWidth() * kBits; ++bit) {
        const int at = roi_->GetX() * kBits + bit;
        const auto byte = static_cast<std::size_t>((roi_->GetY() + y) * sheet_->pitch + at / 8);
        if (byte >= state.size() || at < 0) return;
        const auto mask = static_cast<unsigned char>(kBits % 8 == 0 ? 255 : 128 >> at % 8);
        state[byte] = static_cast<unsigned char>((state[byte] & ~mask) | (before[byte] & mask));
        if (kBits % 8 == 0) bit += 7;
      }
    }
  }

 private:
  // Where ROIs with neighbours begin: at whole bytes, which only one of them writes.
  static constexpr int kLeft = KyPixelTraits<T>::kBits < 8 ? 8 : 2;

  bool constant_;
  std::shared_ptr<Sheet<T>> sheet_;
  std::optional<KyROI<T>> roi_;
  KyROI<T> spare_;
  KyImage<T> elsewhere_;
  bool attached_ = false;  // the pixels are not those of the sheet
  KyROI<T>* passed_ = nullptr;
};
template <class T>
class Holder<KyROI<T>*> : public RoiHolder<T> {
 public:
  explicit Holder(Context& context) : RoiHolder<T>(context, false) {}
};
template <class T>
class Holder<const KyROI<T>*> : public RoiHolder<T> {
 public:
  explicit Holder(Context& context) : RoiHolder<T>(context, true) {}
};

// An object, or null in its place.
template <class T>
class ObjectHolder : public Argument {
 public:
  bool Spoil(Fault fault) override {
    if (fault == Fault::kNull) passed_ = nullptr;
    return fault == Fault::kNull;
  }
  bool MayChange() const override { return !std::is_const_v<T>; }
  T* Pass() const { return passed_; }

 protected:
  ObjectHolder(Context& context, T* object) : passed_(context.Hostile(64) ? nullptr : object) {}

 private:
  T* passed_;
};

template <class T, class Image>
class ImageHolder : public ObjectHolder<Image> {
 public:
  explicit ImageHolder(Context& context)
      : ObjectHolder<Image>(context, &image_), sheet_(MakeSheet(context)) {
    image_.CopyFrom(sheet_.image);
  }
  void* Array(std::size_t bytes) override {
    const int has = image_.GetPitch() * image_.GetHeight();
    return static_cast<std::size_t>(has) < bytes ? nullptr : image_.GetPixelPtr(0, 0);
  }
  Bytes State() const override {
    Bytes bytes;
    Append(bytes, image_.GetWidth());
    Append(bytes, image_.GetHeight());
    const auto row =
        static_cast<std::size_t>((image_.GetWidth() * KyPixelTraits<T>::kBits + 7) / 8);
    for (int y = 0; y < image_.GetHeight() && row != 0; ++y)
      Append(bytes, static_cast<unsigned char*>(image_.GetPixelPtr(0, y)), row);
    return bytes;
  }

 private:
  static Sheet<T> MakeSheet(Context& context) {
    const int wider = context.Hostile(16) ? 1 : 0, higher = context.Hostile(16) ? 1 : 0;
    return Sheet<T>(context.plan.width + wider, context.plan.height + higher, context);
  }

  Sheet<T> sheet_;
  KyImage<T> image_;
};
template <class T>
class Holder<KyImage<T>*> : public ImageHolder<T, KyImage<T>> {
 public:
  using ImageHolder<T, KyImage<T>>::ImageHolder;
};
template <class T>
class Holder<const KyImage<T>*> : public ImageHolder<T, const KyImage<T>> {
 public:
  using ImageHolder<T, const KyImage<T>>::ImageHolder;
};

// A random element of a vector: numbers are any, positions lie about the ROI.
template <class T>
T DrawElement(Draw& draw) {
  T element;
  std::memset(static_cast<void*>(&element), 0, sizeof element);
  if constexpr (std::is_arithmetic_v<T>)
    element = static_cast<T>(sizeof(T) < 4 ? draw.Below(65536) : draw.Below(3000));
  else if constexpr (requires { element.x; })
    element.x = static_cast<decltype(element.x)>(draw.OneIn(900) ? -1 : draw.In(0, 14)),
    element.y = static_cast<decltype(element.y)>(draw.In(0, 10));
  else
    for (std::size_t i = 0; i < sizeof element; ++i)
      reinterpret_cast<unsigned char*>(&element)[i] = static_cast<unsigned char>(draw.Below(256));
  return element;
}

template <class T>
concept TypedVector = requires(T vector) {
  vector.AddElement(vector[0]);
  vector.GetMaxElements();
};
template <class V>
requires TypedVector<std::remove_const_t<V>>
class Holder<V*> : public ObjectHolder<V> {
 public:
  explicit Holder(Context& context) : ObjectHolder<V>(context, &vector_) {
    const Option* const option = context.Find(Option::Kind::kElements);
    int count = option != nullptr ? static_cast<int>(option->a)
                : std::is_same_v<std::remove_const_t<V>, KyBW8HistogramVector>
                    ? 256
                    : context.draw.In(0, 300);
    if (context.Hostile(16)) count += context.draw.In(-count, 2);
    vector_.SetNumElements(static_cast<unsigned>(count));
    SeededDraw random(context.draw.Below(65536));
    using Element = std::remove_cvref_t<decltype(vector_[0])>;
    for (unsigned i = 0; i < static_cast<unsigned>(count); ++i)
      vector_[i] = DrawElement<Element>(random);
  }
  void* Array(std::size_t bytes) override {
    if constexpr (std::is_const_v<V>) return nullptr;
    const auto elements = static_cast<unsigned>(bytes / sizeof(vector_[0]) + 1);
    if (vector_.GetMaxElements() < elements) vector_.SetMaxElements(elements);
    return vector_.GetDataPtr();
  }
  Bytes State() const override {
    Bytes bytes;
    Append(bytes, vector_.GetNumElements());
    Append(bytes, vector_.GetDataPtr(), vector_.GetNumElements());
    if constexpr (requires { vector_.GetClosed(); }) Append(bytes, vector_.GetClosed());
    return bytes;
  }

 private:
  std::remove_const_t<V> vector_;
};

template <class V>
requires std::is_same_v<std::remove_const_t<V>, KyVector>
class Holder<V*> : public ObjectHolder<V> {
 public:
  explicit Holder(Context& context) : ObjectHolder<V>(context, &vector_) {
    int type = context.draw.In(0, 4), groups = context.draw.In(0, 60), use = context.draw.In(0, 7);
    const Option* const option = context.Hostile(8) ? nullptr : context.Find(Option::Kind::kGroups);
    if (option != nullptr)
      type = static_cast<int>(option->a), groups = static_cast<int>(option->b),
      use = static_cast<int>(option->c);
    if (type == 0) {
      constexpr int kSizes[] = {2, 4, 8};
      const int kind = context.draw.In(1, 2);
      // A single group may hold all elements.
      const int length = option != nullptr ? groups : context.draw.In(1, 3);
      const int size = kSizes[context.draw.Below(3)];
      vector_.SetStructure(size, option != nullptr ? 1 : groups, length, kind);
      groups = vector_.GetNbMaxGroup();
    } else if (type == kFloats) {
      vector_.SetStructure(8, groups, 1, 4);
    } else {
      vector_.SetType(type, groups, 0);
    }
    vector_.SetNbGroup(groups);
    vector_.SetUse(use);
    auto* const bytes = static_cast<unsigned char*>(vector_.GetDataPtr());
    SeededDraw random(context.draw.Below(65536));
    for (int i = 0; i < vector_.GetAllocatedSize(); ++i) {
      // Groups of three are small: coordinates among them lie in an ROI.
      const bool small = type == 1 || type == 4;
      bytes[i] = static_cast<unsigned char>(!small       ? random.Below(256)
                                            : i % 4 == 0 ? random.Below(9)
                                                         : 0);
    }
  }
  void* Array(std::size_t bytes) override {
    const int size = static_cast<int>(bytes);
    if (vector_.GetAllocatedSize() < size) vector_.Reallocate(size);
    return vector_.GetAllocatedSize() < size ? nullptr : vector_.GetDataPtr();
  }
  Bytes State() const override {
    Bytes bytes;
    for (const int value : {vector_.GetVectType(), vector_.GetDataSize(), vector_.GetDataType(),
                            vector_.GetGroupLength(), vector_.GetNbGroup(), vector_.GetUse(),
                            vector_.GetAllocatedSize()})
      Append(bytes, value);
    Append(bytes, static_cast<unsigned char*>(vector_.GetDataPtr()),
           static_cast<std::size_t>(vector_.GetAllocatedSize()));
    return bytes;
  }

 private:
  KyVector vector_;
};

template <>
class Holder<const KyKernel*> : public ObjectHolder<const KyKernel> {
 public:
  explicit Holder(Context& context);
  Bytes State() const override;

 private:
  KyKernel kernel_;
};

template <>
class Holder<const KyColorLookup*> : public ObjectHolder<const KyColorLookup> {
 public:
  explicit Holder(Context& context)
      : ObjectHolder<const KyColorLookup>(context, Choose(context.draw.Below(3))) {}
  Bytes State() const override { return {}; }

 private:
  static const KyColorLookup* Choose(unsigned i) {
    static const KyColorLookup identity;
    static const KyColorMatrix luma = KyColorMatrix::Luma();
    return i == 0 ? nullptr : i == 1 ? &identity : &luma;
  }
};

// An object of any measures.
template <>
class Holder<const KyObject*> : public ObjectHolder<const KyObject> {
 public:
  explicit Holder(Context& context)
      : ObjectHolder<const KyObject>(context, &object_),
        object_(DrawElement<KyObject>(context.draw)) {
    object_.area = context.Hostile(8) ? 0 : static_cast<KyBW32>(context.draw.In(1, 9000));
    SeededDraw random(context.draw.Below(65536));
    for (std::uint64_t* const sum :
         {&object_.sumX, &object_.sumY, &object_.sumXX, &object_.sumXY}) {
      *sum = random.Below(65536);
      *sum *= context.Hostile(8) ? ~std::uint64_t{0} : random.Below(65536);
    }
  }
  Bytes State() const override {
    Bytes bytes;
    Append(bytes, object_);
    return bytes;
  }

 private:
  KyObject object_;
};

// A table of 256 levels.
template <>
class Holder<const KyBW8*> : public ObjectHolder<const KyBW8> {
 public:
  explicit Holder(Context& context) : ObjectHolder<const KyBW8>(context, levels_), levels_() {
    SeededDraw random(context.draw.Below(65536));
    for (KyBW8& level : levels_) level = static_cast<KyBW8>(random.Below(256));
  }
  Bytes State() const override { return Bytes(levels_, levels_ + 256); }

 private:
  KyBW8 levels_[256];
};

// Rows of bytes, as many as the pitch says that follows them.
template <>
class Holder<const void*> : public ObjectHolder<const void> {
 public:
  explicit Holder(Context& context) : Holder(context, BytesOf(context)) {}
  Bytes State() const override { return *bytes_; }

 private:
  Holder(Context& context, std::shared_ptr<Bytes> bytes)
      : ObjectHolder<const void>(context, bytes->data()), bytes_(std::move(bytes)) {}
  static std::shared_ptr<Bytes> BytesOf(Context& context) {
    const std::string_view pitch = context.call.parameters[context.index + 1].name;
    const double most = context.call.Find(Option::Kind::kMeasured, pitch)->b;
    auto bytes = std::make_shared<Bytes>(static_cast<std::size_t>(most) *
                                         static_cast<std::size_t>(context.plan.height + 4));
    SeededDraw random(context.draw.Below(65536));
    for (unsigned char& byte : *bytes) byte = static_cast<unsigned char>(random.Below(256));
    return bytes;
  }

  std::shared_ptr<Bytes> bytes_;
};

template <>
class Holder<KyMovingAverage*> : public Argument {
 public:
  explicit Holder(Context& context)
      : average_(static_cast<unsigned>(context.draw.In(1, 5)), context.plan.width,
                 context.plan.height, context.Find(Option::Kind::kKeepsSources) != nullptr) {}
  KyMovingAverage* Pass() { return &average_; }
  Bytes State() const override { return {}; }
  bool MayChange() const override { return true; }

 private:
  KyMovingAverage average_;
};

// A pyramid of two levels, of the type of the source that it is built from, and built once.
template <>
class Holder<KyPyramid*> : public Argument {
 public:
  explicit Holder(Context& context) {
    const auto& parameters = context.call.parameters;
    const bool color = parameters.size() > 1 && parameters[1].type.find("C24") != std::string::npos;
    pyramid_.SetNumLevels(2, color ? KY_IMAGE_C24 : KY_IMAGE_BW8);
    if (color)
      Build<KyC24>(context);
    else
      Build<KyBW8>(context);
  }
  KyPyramid* Pass() { return &pyramid_; }
  Bytes State() const override {
    Bytes bytes;
    for (int i = 0; i < pyramid_.GetNumLevels(); ++i) {
      const KyGenericROI* const level = pyramid_.GetLevel(i);
      const auto row = static_cast<std::size_t>(level->GetWidth() * level->GetPixelSize());
      Append(bytes, level->GetWidth());
      for (int y = 0; y < level->GetHeight() && row != 0; ++y)
        Append(bytes, static_cast<unsigned char*>(level->GetPixelPtr(0, y)), row);
    }
    return bytes;
  }
  bool MayChange() const override { return true; }

 private:
  template <class T>
  void Build(Context& context) {
    const Sheet<T> sheet(context.plan.width, context.plan.height, context);
    pyramid_.Build(&sheet.image);
  }

  KyPyramid pyramid_;
};

// The end of a range to draw from. Of a wide one the first numbers are what matters most: windows
// that are smaller than images, say.
inline double EndOf(double least, double most, Context& context) {
  constexpr double kNear[] = {3, 12, 60};
  if (most - least <= 1000 || context.draw.OneIn(4)) return most;
  return least + kNear[context.draw.Below(std::size(kNear))];
}

// A number: in the range of its option, or of a few small values; or, hostile, any.
template <class T>
T DrawNumber(Context& context) {
  if (const Option* const measured = context.Find(Option::Kind::kMeasured))
    return static_cast<T>(
        context.draw.In(static_cast<int>(measured->a), static_cast<int>(measured->b)));
  const Option* const range = context.Find(Option::Kind::kRange);
  if constexpr (std::is_floating_point_v<T>) {
    using Limits = std::numeric_limits<T>;
    const T odd[] = {0,
                     T(1e-30),
                     -T(1e-30),
                     Limits::infinity(),
                     -Limits::infinity(),
                     Limits::quiet_NaN(),
                     Limits::max(),
                     Limits::lowest(),
                     T(2147483648.0),
                     T(-0.0)};
    if (context.Hostile(12)) return odd[context.draw.Below(std::size(odd))];
    const double least = range != nullptr ? range->a : -2;
    const double most = range != nullptr ? EndOf(range->a, range->b, context) : 20;
    return static_cast<T>(least + (most - least) * context.draw.In(0, 400) / 400);
  } else {
    constexpr int kOdd[] = {-1, 0, 1, 2, 127, 128, 255, 256, 32767, 32768, 65535, INT_MAX, INT_MIN};
    if (context.Hostile(12)) return static_cast<T>(kOdd[context.draw.Below(std::size(kOdd))]);
    if (const Option* const some = context.Find(Option::Kind::kOneOf))
      return static_cast<T>(
          some->numbers[context.draw.Below(static_cast<unsigned>(some->numbers.size()))]);
    const bool level = sizeof(T) < 4;
    const double most = range != nullptr ? EndOf(range->a, range->b, context) : level ? 255 : 6;
    return static_cast<T>(
        context.draw.In(static_cast<int>(range != nullptr ? range->a : 0), static_cast<int>(most)));
  }
}

template <class T>
requires(std::is_arithmetic_v<T> || std::is_enum_v<T>) class Holder<T> : public Argument {
 public:
  explicit Holder(Context& context) {
    if constexpr (std::is_enum_v<T>)
      value_ = static_cast<T>(DrawNumber<int>(context));
    else
      value_ = DrawNumber<T>(context);
  }
  T Pass() const { return value_; }
  Bytes State() const override { return {}; }

 private:
  T value_;
};
template <>
class Holder<KyC24> : public Argument {
 public:
  explicit Holder(Context& context) : value_(DrawElement<KyC24>(context.draw)) {}
  KyC24 Pass() const { return value_; }
  Bytes State() const override { return {}; }

 private:
  KyC24 value_;
};

// A result, or several in an array or a record. Numbers may also be read.
template <class T>
class Holder<T&> : public Argument {
 public:
  explicit Holder(Context& context) {
    std::memset(static_cast<void*>(&value_), 0, sizeof value_);
    if constexpr (std::is_arithmetic_v<T>)
      value_ = DrawNumber<T>(context);
    else if constexpr (std::is_array_v<T>)
      for (auto& element : value_)
        element = DrawNumber<std::remove_cvref_t<decltype(element)>>(context);
  }
  T& Pass() { return value_; }
  Bytes State() const override {
    Bytes bytes;
    Append(bytes, value_);
    return bytes;
  }
  bool MayChange() const override { return !std::is_const_v<T>; }

 private:
  std::remove_const_t<T> value_;
};

}  // namespace ky::test
