// Results of even and of odd places, which are computed apart, as levels side by side. Included by
// row files like lanes-inl.h.
#if defined(KY_CONVOLUTION_PHASES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVOLUTION_PHASES_INL_H_
#undef KY_CONVOLUTION_PHASES_INL_H_
#else
#define KY_CONVOLUTION_PHASES_INL_H_
#endif

#include <hwy/highway.h>

#include <cstring>

#include "ky/pixels.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// out[2 i + p] = op(d, p, i), 0 to 255, in 32-bit lanes of D. `op` may be asked for places of a
// whole vector.
template <class D, class Op>
HWY_INLINE void MapPhases(const Op& op, KyBW8* out, size_t n) {
  const D d;
#if HWY_TARGET == HWY_SCALAR
  for (size_t i = 0; i < n; ++i)
    out[i] = static_cast<KyBW8>(hn::GetLane(op(d, static_cast<int>(i % 2), i / 2)));
#else
  const size_t places = 2 * hn::Lanes(d);
  const hn::Repartition<int16_t, D> d16;
  const hn::Rebind<uint8_t, decltype(d16)> d8;
  const auto at = [&](size_t i) HWY_ATTR {
    const auto both = hn::Or(op(d, 0, i), hn::ShiftLeft<16>(op(d, 1, i)));
    return hn::DemoteTo(d8, hn::BitCast(d16, both));
  };
  size_t x = 0;
  for (; x + places <= n; x += places) hn::StoreU(at(x / 2), d8, out + x);
  if (x < n) {
    HWY_ALIGN KyBW8 rest[hn::MaxLanes(d8)];
    hn::StoreU(at(x / 2), d8, rest);
    std::memcpy(out + x, rest, n - x);
  }
#endif
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
