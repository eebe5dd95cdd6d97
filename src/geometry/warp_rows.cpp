#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/warp_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/warp_rows.h"

#include "foundation/dispatch.h"
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

template <class T>
void FromTables(T* out, size_t n, const Rows<const T>& source, const KyBW16* xs, const KyBW16* ys,
                int shiftX, int shiftY) {
  const hn::ScalableTag<uint32_t> d;
  const hn::RebindToSigned<decltype(d)> signedD;
  const size_t lanes = hn::Lanes(d);
  const auto* const columns = reinterpret_cast<const int16_t*>(xs);
  const auto* const rows = reinterpret_cast<const int16_t*>(ys);
  const auto addX = hn::Set(signedD, shiftX), addY = hn::Set(signedD, shiftY);
  const auto sample = [&](auto column, auto row) HWY_ATTR {
    const auto x = hn::BitCast(d, hn::Add(column, addX));
    const auto y = hn::BitCast(d, hn::Add(row, addY));
    const auto inside = hn::VecFromMask(d, IsInside(d, source, x, y));
    return hn::And(GatherPixels(d, source, hn::And(x, inside), hn::And(y, inside)), inside);
  };
  size_t i = 0;
  for (; i + lanes <= n; i += lanes)
    StorePixels(d, sample(LoadLanes(signedD, columns + i), LoadLanes(signedD, rows + i)), out + i);
  const size_t rest = n - i;
  if (rest == 0) return;
  T part[hn::MaxLanes(d)];
  StorePixels(d, sample(LoadPart(signedD, columns + i, rest), LoadPart(signedD, rows + i, rest)),
              part);
  std::memcpy(static_cast<void*>(out + i), part, rest * sizeof(T));
}

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

constexpr AllWarpKernels kKernels = {{&FromTables<KyBW8>, &FromPacked<KyBW8>},
                                     {&FromTables<KyC24>, &FromPacked<KyC24>}};

}  // namespace

const AllWarpKernels* TableOfWarpKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfWarpKernels);
const AllWarpKernels& ChooseWarpKernels(bool gathers) noexcept {
  return *(gathers ? KY_DISPATCH(TableOfWarpKernels)() : KY_PLAIN(TableOfWarpKernels)());
}
}  // namespace ky
#endif
