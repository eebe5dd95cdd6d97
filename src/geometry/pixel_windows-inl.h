// Grey pixels from places that lie close together, such as those of a line through an image: eight
// of them in a window of a few rows of 16 pixels, from which shuffles pick them. That takes a third
// of the time of loads from scattered places. Compiled once per instruction set, as lanes-inl.h is.
#if defined(KY_GEOMETRY_PIXEL_WINDOWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_GEOMETRY_PIXEL_WINDOWS_INL_H_
#undef KY_GEOMETRY_PIXEL_WINDOWS_INL_H_
#else
#define KY_GEOMETRY_PIXEL_WINDOWS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "foundation/lanes-inl.h"
#include "foundation/rows.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR
inline constexpr ptrdiff_t kWindowWidth = 16, kWindowPlaces = 8;

// One window for each block of 16 bytes in a vector, and two vectors at most.
class PixelWindows {
 public:
  using D16 = hn::CappedTag<uint16_t, 2 * kWindowPlaces>;
  using D8 = hn::Repartition<uint8_t, D16>;
  using D32 = hn::Repartition<uint32_t, D16>;
  using V16 = hn::Vec<D16>;
  using V8 = hn::Vec<D8>;
  static constexpr size_t kWindows = hn::MaxLanes(D16()) / kWindowPlaces;

  explicit HWY_INLINE PixelWindows(ptrdiff_t pitch) : pitch_(pitch) {}
  // Window i starts at a pixel.
  HWY_INLINE void Start(size_t i, const KyBW8* pixel) { first_[i] = pixel; }

  // A number for the lanes of each window.
  static HWY_INLINE V16 PerWindow(const uint16_t (&numbers)[kWindows]) {
    const D16 d;
    if constexpr (kWindows == 1) {
      return hn::Set(d, numbers[0]);
    } else {
      const hn::Half<D16> half;
      return hn::Combine(d, hn::Set(half, numbers[1]), hn::Set(half, numbers[0]));
    }
  }

  // A pixel in the low byte of each lane and its right neighbour in the high one.
  struct Pixels {
    V16 above, below;
  };
  // The pixels (x, y) of the windows, y being less than `rows`, and for kBelow those of the row
  // below, too. Columns and rows are the high bytes of their lanes.
  template <bool kBelow>
  HWY_INLINE Pixels At(V16 x, V16 y, ptrdiff_t rows) const {
    const D8 d;
    const D16 d16;
    const V8 pair =
        hn::BitCast(d, hn::Add(hn::BitCast(d16, TwiceHighBytes(x)), hn::Set(d16, 0x0100)));
    const V8 row = TwiceHighBytes(y);
    const auto pick = [&](ptrdiff_t i) HWY_ATTR { return hn::TableLookupBytes(Row(i), pair); };
    V8 above = pick(0), next = kBelow ? pick(1) : above, below = next;
    for (ptrdiff_t i = 1; i < rows; ++i) {
      const auto here = hn::Eq(row, hn::Set(d, static_cast<uint8_t>(i)));
      if constexpr (kBelow) {
        above = hn::IfThenElse(here, next, above);
        next = pick(i + 1);
        below = hn::IfThenElse(here, next, below);
      } else {
        above = hn::IfThenElse(here, pick(i), above);
      }
    }
    return {hn::BitCast(d16, above), hn::BitCast(d16, below)};
  }

 private:
  static HWY_INLINE V8 TwiceHighBytes(V16 v) {
    const D8 d;
    alignas(16) static constexpr uint8_t kHigh[16] = {1, 1, 3,  3,  5,  5,  7,  7,
                                                      9, 9, 11, 11, 13, 13, 15, 15};
    return hn::TableLookupBytes(hn::BitCast(d, v), hn::LoadDup128(d, kHigh));
  }
  HWY_INLINE V8 Row(ptrdiff_t i) const {
    const D8 d;
    if constexpr (kWindows == 1) {
      return hn::LoadU(d, first_[0] + i * pitch_);
    } else {
      const hn::Half<D8> half;
      return hn::Combine(d, hn::LoadU(half, first_[1] + i * pitch_),
                         hn::LoadU(half, first_[0] + i * pitch_));
    }
  }

  ptrdiff_t pitch_;
  const KyBW8* first_[kWindows];
};
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
