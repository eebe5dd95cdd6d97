// The lanes of neighbourhood operations. Included by row files like lanes-inl.h.
//
// Sums of pixels need 16 bits. A vector of 8-bit places therefore falls into phases of 16-bit
// lanes: the even places and the odd ones, which takes no crossing of lanes, as the left neighbour
// of an even place is an odd one. The one-lane scalar target has a single phase.
#if defined(KY_FOUNDATION_WINDOW_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_WINDOW_LANES_INL_H_
#undef KY_FOUNDATION_WINDOW_LANES_INL_H_
#else
#define KY_FOUNDATION_WINDOW_LANES_INL_H_
#endif

#include <cstdint>

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

using D8 = hn::ScalableTag<uint8_t>;
#if HWY_TARGET == HWY_SCALAR
constexpr int kPhases = 1;
using D16 = hn::Rebind<int16_t, D8>;
using D32 = hn::Rebind<int32_t, D8>;
#else
constexpr int kPhases = 2;
using D16 = hn::Repartition<int16_t, D8>;
using D32 = hn::Repartition<int32_t, D8>;
#endif
using V8 = hn::Vec<D8>;
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;

// Lanes without a sign, shifted.
template <int kBits>
HWY_INLINE V16 ShiftRightUnsigned(V16 v) {
  const hn::Rebind<uint16_t, D16> d;
  return hn::BitCast(D16(), hn::ShiftRight<kBits>(hn::BitCast(d, v)));
}

// The phases as 8-bit places again. Their lanes must be 0 to 255.
HWY_INLINE hn::Vec<D8> JoinPhases(const V16 (&phases)[kPhases]) {
  const D8 d;
#if HWY_TARGET == HWY_SCALAR
  return hn::DemoteTo(d, phases[0]);
#else
  return hn::BitCast(d, hn::Or(phases[0], hn::ShiftLeft<8>(phases[1])));
#endif
}

#if HWY_TARGET != HWY_SCALAR
// sum + the products of 16-bit lanes with the halves of `weights`, the two products of each pair of
// lanes added up.
HWY_INLINE V32 MulAddPairs(V16 lanes, int32_t weights, V32 sum) {
  const D32 d32;
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  const V16 pairs = hn::BitCast(D16(), hn::Set(d32, weights));
#if HWY_TARGET == HWY_AVX3_DL
  __asm__("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(lanes.raw), "v"(pairs.raw));
  return sum;
#endif
  V32 unused = hn::Zero(d32);
  return hn::ReorderWidenMulAccumulate(d32, lanes, pairs, sum, unused);
#else
  const V32 both = hn::BitCast(d32, lanes);
  const auto low = hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(both)),
                           hn::Set(d32, static_cast<int16_t>(weights)));
  return hn::Add(sum, hn::Add(low, hn::Mul(hn::ShiftRight<16>(both), hn::Set(d32, weights >> 16))));
#endif
}
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
