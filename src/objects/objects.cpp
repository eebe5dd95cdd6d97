#include "ky/objects.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/angle.h"
#include "foundation/elementary.h"
#include "foundation/frame.h"
#include "ky/typed_vector-inl.h"
#include "objects/object_rows.h"

template struct KyPlaceHolder<KyObject>;
template class KyVectorTemplate<KyObject>;

namespace {

using ky::Call;
using ky::Scratch;

constexpr ky::RoiNames kDrawing = {{"labels", "destination"},
                                   "labels and destination differ in size"};

template <class T>
struct Interval {
  T least, most;
  bool IsEmpty() const noexcept { return least > most; }
  bool Has(T value) const noexcept { return least <= value && value <= most; }
};

// The labels of objects, in order.
class LabelSet {
 public:
  // False when there is no memory.
  bool Open(const KyObjectsVector& objects) noexcept {
    if (!labels_.Allocate(objects.GetNumElements())) return false;
    end_ = std::transform(objects.begin(), objects.end(), labels_.get(),
                          [](const KyObject& object) { return object.label; });
    if (!std::is_sorted(labels_.get(), end_)) std::sort(labels_.get(), end_);
    return true;
  }
  bool Has(KyBW32 label) const noexcept {
    return label != 0 && std::binary_search(labels_.get(), end_, label);
  }

 private:
  Scratch<KyBW32> labels_;
  KyBW32* end_ = nullptr;
};

__extension__ using Wide = __int128;
__extension__ using UnsignedWide = unsigned __int128;

// Sums of products of distances from the centre, times the area: area^2 times the moments. They may
// be anything for an object that a caller has made up.
struct CentralSums {
  Wide xx, xy, yy;

  explicit CentralSums(const KyObject& o) noexcept
      : xx(Central(o.area, o.sumXX, o.sumX, o.sumX)),
        xy(Central(o.area, o.sumXY, o.sumX, o.sumY)),
        yy(Central(o.area, o.sumYY, o.sumY, o.sumY)) {}
  // xx yy - xy^2, exact where the products fit.
  double Determinant() const noexcept {
    if (IsSmall(xx) && IsSmall(xy) && IsSmall(yy)) return static_cast<double>(xx * yy - xy * xy);
    const auto a = static_cast<double>(xx), b = static_cast<double>(xy),
               c = static_cast<double>(yy);
    return a * c - b * b;
  }

 private:
  static Wide Central(std::uint64_t area, std::uint64_t product, std::uint64_t a,
                      std::uint64_t b) noexcept {
    return static_cast<Wide>(UnsignedWide{area} * product - UnsignedWide{a} * b);
  }
  static bool IsSmall(Wide v) noexcept {
    constexpr Wide kLimit = Wide{1} << 62;
    return -kLimit < v && v < kLimit;
  }
};

void ComputeAxes(const KyObject& object, KyObjectShape& shape) noexcept {
  const CentralSums sums(object);
  const auto xx = static_cast<double>(sums.xx), xy = static_cast<double>(sums.xy),
             yy = static_cast<double>(sums.yy);
  const double major = (xx + yy + ky::Hypot(xx - yy, 2 * xy)) / 2;
  const double minor = major != 0 ? sums.Determinant() / major : 0;
  const double square = static_cast<double>(object.area) * object.area;
  shape.major = major / square;
  shape.minor = minor / square;
  shape.elongation = major != 0 ? std::sqrt(major / minor) : 1;
  // The sign of what is not a number differs from one processor to another.
  if (std::isnan(shape.elongation)) shape.elongation = std::numeric_limits<double>::quiet_NaN();
  double direction = ky::Atan2(2 * xy, xx - yy);
  if (direction <= -std::numbers::pi) direction = std::numbers::pi;
  shape.angle = ky::FromRadians(direction / 2);
}

}  // namespace

KY_ERRORS ImgSelectObjects(KyObjectsVector* objects, const KyObjectLimits& limits) noexcept {
  return Call("ImgSelectObjects", [&] {
    if (objects == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    const Interval<KyBW32> area{limits.minArea, limits.maxArea};
    const Interval<int> width{limits.minWidth, limits.maxWidth},
        height{limits.minHeight, limits.maxHeight}, holes{limits.minHoles, limits.maxHoles};
    if (area.IsEmpty() || width.IsEmpty() || height.IsEmpty() || holes.IsEmpty())
      return ky::Explain(KY_ERROR_BAD_INTERVAL, "a minimum of limits exceeds its maximum");
    const auto drop = [&](const KyObject& object) {
      return !area.Has(object.area) || !width.Has(object.width) || !height.Has(object.height) ||
             !holes.Has(object.holes) || (object.touches != 0 && !limits.touching);
    };
    const KyObject* const end = std::remove_if(objects->begin(), objects->end(), drop);
    return objects->SetNumElements(static_cast<unsigned>(end - objects->begin()));
  });
}

KY_ERRORS ImgDrawObjects(const KyROI<KyBW32>* labels, const KyObjectsVector* objects, KyBW8 level,
                         KyROI<KyBW8>* destination) noexcept {
  return Call("ImgDrawObjects", [&] {
    if (const KY_ERRORS error = ky::CheckImage(labels, "labels")) return error;
    if (objects == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    ky::Rows<const KyBW32> in;
    ky::Rows<KyBW8> out;
    if (const KY_ERRORS error = ky::OpenAll(kDrawing, labels, in, destination, out)) return error;
    ky::Input<KyBW32> input;
    LabelSet drawn;
    Scratch<std::int32_t> places;
    if (!input.OpenApart(in, out) || !drawn.Open(*objects) ||
        !places.Allocate(ky::EndsOfRow(in.width)))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    const auto findChanges = ky::ChooseObjectKernels().findChanges;
    for (std::ptrdiff_t y = 0; y < in.height && in.width != 0; ++y) {
      const KyBW32* const row = input.rows().Row(y);
      const std::size_t changes =
          findChanges(row, static_cast<std::size_t>(in.width), places.get());
      places[static_cast<std::ptrdiff_t>(changes)] = static_cast<std::int32_t>(in.width);
      std::ptrdiff_t x = 0;
      for (std::size_t i = 0; i <= changes; ++i) {
        const std::ptrdiff_t end = places[static_cast<std::ptrdiff_t>(i)];
        if (drawn.Has(row[x])) std::fill(out.Row(y) + x, out.Row(y) + end, level);
        x = end;
      }
    }
    return KY_OK;
  });
}

KY_ERRORS ImgGetObjectShape(const KyObject* object, KyObjectShape& shape) noexcept {
  return Call("ImgGetObjectShape", [&] {
    if (object == nullptr) return ky::Explain(KY_ERROR_NO_IMAGE, "object is null");
    if (object->area == 0) return ky::Explain(KY_ERROR_NO_PIXELS, "the area of object is 0");
    const double area = object->area;
    shape.x = static_cast<double>(object->sumX) / area;
    shape.y = static_cast<double>(object->sumY) / area;
    shape.meanLevel = static_cast<double>(object->sumLevels) / area;
    ComputeAxes(*object, shape);
    shape.compactness = area / (static_cast<double>(object->width) * object->height);
    shape.perimeter =
        std::numbers::pi / 8 * (object->straight + object->diagonal / std::numbers::sqrt2);
    shape.circularity = 4 * std::numbers::pi * area / (shape.perimeter * shape.perimeter);
    return KY_OK;
  });
}
