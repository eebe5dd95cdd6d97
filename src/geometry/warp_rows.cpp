#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/warp_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/warp_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "geometry/gather-inl.h"
#include "geometry/pixel_windows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// True for the lanes whose position is a pixel of the source.
template <class D, class V, class T>
HWY_INLINE hn::Mask<D> IsInside(D d, const Rows<const T>& source, V x, V y) {
  const auto lastX = hn::Set(d, static_cast<uint32_t>(source.width - 1));
  const auto lastY = hn::Set(d, static_cast<uint32_t>(source.height - 1));
  return hn::And(hn::Eq(hn::Min(x, lastX), x), hn::Eq(hn::Min(y, lastY), y));
}

// The pixels of positions (x + shiftX, y + shiftY), 0 outside.
template <class T>
struct PixelsAt {
  using Lane = int32_t;
  const Rows<const T>& source;
  int shiftX, shiftY;

  template <class D, class V>
  HWY_INLINE auto operator()(D signedD, V column, V row) const {
    const hn::RebindToUnsigned<D> d;
    const auto x = hn::BitCast(d, hn::Add(column, hn::Set(signedD, shiftX)));
    const auto y = hn::BitCast(d, hn::Add(row, hn::Set(signedD, shiftY)));
    const auto inside = hn::VecFromMask(d, IsInside(d, source, x, y));
    const auto pixels = GatherPixels(d, source, hn::And(x, inside), hn::And(y, inside));
    return LowBytes<hn::Vec<decltype(d)>>{hn::And(pixels, inside)};
  }
};

#if HWY_TARGET != HWY_SCALAR
struct Place {
  ptrdiff_t x, y;
};

// Maps are smooth in general, so that neighbours come from windows of a few rows.
class NearPlaces {
 public:
  static constexpr size_t kPlaces = PixelWindows::kWindows * kWindowPlaces;
  using D = hn::RebindToSigned<PixelWindows::D16>;
  using V = hn::Vec<D>;

  explicit HWY_INLINE NearPlaces(const Rows<const KyBW8>& source)
      : source_(source), lastX_(source.width - kWindowWidth), lastY_(source.height - kMostRows) {}
  // False for sources too small, and too large for places that are limited to 16 bits.
  HWY_INLINE bool Suit() const {
    return lastX_ >= 0 && lastY_ >= 0 && source_.width <= INT16_MAX && source_.height <= INT16_MAX;
  }
  // Stores the pixels of kPlaces places, which x and y hold as vectors, and at(k) one by one.
  // Returns false, and stores none, unless all are inside the source and close together.
  template <class At>
  HWY_INLINE bool Store(KyBW8* out, V x, V y, const At& at) const {
    const D d;
    const PixelWindows::D16 d16;
    PixelWindows windows(source_.pitch);
    uint16_t left[PixelWindows::kWindows], top[PixelWindows::kWindows];
    for (size_t i = 0; i < PixelWindows::kWindows; ++i) {
      const Place first = at(kWindowPlaces * i), last = at(kWindowPlaces * (i + 1) - 1);
      const ptrdiff_t u = std::clamp<ptrdiff_t>(std::min(first.x, last.x), 0, lastX_);
      const ptrdiff_t v = std::clamp<ptrdiff_t>(std::min(first.y, last.y), 0, lastY_);
      windows.Start(i, source_.Row(v) + u);
      left[i] = static_cast<uint16_t>(u);
      top[i] = static_cast<uint16_t>(v);
    }
    const V column = hn::SaturatedSub(x, hn::BitCast(d, PixelWindows::PerWindow(left)));
    const V row = hn::SaturatedSub(y, hn::BitCast(d, PixelWindows::PerWindow(top)));
    // 0 for places from 0 to size - 1, where the size is a power of two, and only for these.
    const auto beyond = [=](V place, ptrdiff_t size) HWY_ATTR {
      return hn::And(place, hn::Set(d, static_cast<int16_t>(-size)));
    };
    const auto isZero = [=](V v) HWY_ATTR { return hn::AllTrue(d, hn::Eq(v, hn::Zero(d))); };
    if (!isZero(hn::Or(beyond(column, kWindowWidth), beyond(row, kMostRows)))) return false;
    const auto raised = [=](V place) HWY_ATTR { return hn::ShiftLeft<8>(hn::BitCast(d16, place)); };
    const ptrdiff_t rows = isZero(beyond(row, kFewRows)) ? kFewRows : kMostRows;
    const auto pixels = windows.At<false>(raised(column), raised(row), rows);
    StoreLanes(AsSigned(hn::And(pixels.above, hn::Set(d16, 0xFF))), out);
    return true;
  }

 private:
  static constexpr ptrdiff_t kFewRows = 4, kMostRows = 8;

  const Rows<const KyBW8>& source_;
  ptrdiff_t lastX_, lastY_;
};
#endif

template <class T>
void FromTables(T* out, size_t n, const Rows<const T>& source, const KyBW16* xs, const KyBW16* ys,
                int shiftX, int shiftY) {
  const PixelsAt<T> pixels = {source, shiftX, shiftY};
  const auto* const columns = reinterpret_cast<const int16_t*>(xs);
  const auto* const rows = reinterpret_cast<const int16_t*>(ys);
  size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
  if constexpr (sizeof(T) == 1) {
    const NearPlaces::D d;
    const NearPlaces near(source);
    const auto x16 = static_cast<int16_t>(shiftX), y16 = static_cast<int16_t>(shiftY);
    const bool suits = near.Suit() && x16 == shiftX && y16 == shiftY;
    for (; suits && i + NearPlaces::kPlaces <= n; i += NearPlaces::kPlaces) {
      const auto x = hn::SaturatedAdd(hn::LoadU(d, columns + i), hn::Set(d, x16));
      const auto y = hn::SaturatedAdd(hn::LoadU(d, rows + i), hn::Set(d, y16));
      const auto at = [=](size_t k) { return Place{columns[i + k] + x16, rows[i + k] + y16}; };
      if (!near.Store(out + i, x, y, at))
        MapSpan(pixels, out + i, NearPlaces::kPlaces, columns + i, rows + i);
    }
  }
#endif
  MapSpan(pixels, out + i, n - i, columns + i, rows + i);
}

// Pixels i.. n - 1 from packed positions, up to the first that lies outside; gives its place.
template <class T>
HWY_INLINE size_t FromEachPacked(T* out, size_t i, size_t n, const Rows<const T>& source,
                                 const ptrdiff_t* rowStarts, const KyBW32* table) {
  if constexpr (kGathers) {
    const hn::ScalableTag<uint32_t> d;
    const size_t lanes = hn::Lanes(d);
    for (; i + lanes <= n; i += lanes) {
      const auto entry = hn::LoadU(d, table + i);
      const auto x = hn::And(entry, hn::Set(d, 0xFFFF)), y = hn::ShiftRight<16>(entry);
      if (!hn::AllTrue(d, IsInside(d, source, x, y))) break;
      StorePixels(d, GatherPixels(d, source, x, y), out + i);
    }
  }
  const auto* const bytes = reinterpret_cast<const uint8_t*>(source.first);
  for (; i < n; ++i) {
    const ptrdiff_t x = table[i] & 0xFFFF, y = table[i] >> 16;
    if (x >= source.width || y >= source.height) break;
    out[i] = reinterpret_cast<const T*>(bytes + rowStarts[y])[x];
  }
  return i;
}

// A loop of its own, as it ends at the first position outside.
template <class T>
size_t FromPacked(T* out, size_t n, const Rows<const T>& source, const ptrdiff_t* rowStarts,
                  const KyBW32* table) {
  size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
  if constexpr (sizeof(T) == 1) {
    const PixelWindows::D16 d16;
    const NearPlaces::D d;
    const NearPlaces near(source);
    while (near.Suit() && i + NearPlaces::kPlaces <= n) {
      const auto* const entries = reinterpret_cast<const uint16_t*>(table + i);
      const auto first = hn::LoadU(d16, entries), second = hn::LoadU(d16, entries + hn::Lanes(d16));
      const auto x = hn::BitCast(d, hn::ConcatEven(d16, second, first));
      const auto y = hn::BitCast(d, hn::ConcatOdd(d16, second, first));
      const auto at = [=](size_t k) { return Place{table[i + k] & 0xFFFF, table[i + k] >> 16}; };
      const size_t end = i + NearPlaces::kPlaces;
      if (!near.Store(out + i, x, y, at) &&
          FromEachPacked(out, i, end, source, rowStarts, table) < end)
        break;
      i = end;
    }
  }
#endif
  return FromEachPacked(out, i, n, source, rowStarts, table);
}

constexpr WarpKernels kKernels = {{&FromTables<KyBW8>, &FromPacked<KyBW8>},
                                  {&FromTables<KyC24>, &FromPacked<KyC24>}};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS_IF(WarpKernels)
