#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/warp_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/warp_rows.h"

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "geometry/gather-inl.h"

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

template <class T>
void FromTables(T* out, size_t n, const Rows<const T>& source, const KyBW16* xs, const KyBW16* ys,
                int shiftX, int shiftY) {
  MapSpan(PixelsAt<T>{source, shiftX, shiftY}, out, n, reinterpret_cast<const int16_t*>(xs),
          reinterpret_cast<const int16_t*>(ys));
}

// A loop of its own, as it ends at the first position outside.
template <class T>
size_t FromPacked(T* out, size_t n, const Rows<const T>& source, const ptrdiff_t* rowStarts,
                  const KyBW32* table) {
  size_t i = 0;
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

constexpr WarpKernels kKernels = {{&FromTables<KyBW8>, &FromPacked<KyBW8>},
                                  {&FromTables<KyC24>, &FromPacked<KyC24>}};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS_IF(WarpKernels)
