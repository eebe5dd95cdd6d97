// The loop of per-pixel kernels that write past the caches. Included by row files like
// lanes-inl.h.
#if defined(KY_FOUNDATION_STREAM_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_STREAM_INL_H_
#undef KY_FOUNDATION_STREAM_INL_H_
#else
#define KY_FOUNDATION_STREAM_INL_H_
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "foundation/pitch.h"

#undef KY_STREAMS
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
#define KY_STREAMS 1
#else
#define KY_STREAMS 0
#endif

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if KY_STREAMS
// A vector of 64 bytes as two halves: Zen 4 takes up to a fifth longer to load as many from beyond
// the second cache at once.
template <class D>
HWY_INLINE hn::Vec<D> LoadByHalves(D d, const uint8_t* from) {
#if HWY_TARGET < HWY_AVX2
  const hn::Half<D> half;
  return hn::Combine(d, hn::LoadU(half, from + hn::MaxLanes(half)), hn::LoadU(half, from));
#else
  return hn::LoadU(d, from);
#endif
}

// out[i] = op(in[i]...) for n bytes, in whole lines of a cache, none of which is read.
template <class Op, class... In>
HWY_INLINE void StreamSpan(const Op& op, uint8_t* out, size_t n, In... in) {
  const hn::ScalableTag<uint8_t> d;
  constexpr size_t kLanes = hn::MaxLanes(d), kVectors = kCacheLine / kLanes;
  for (size_t i = 0; i < n; i += kCacheLine) {
    hn::Vec<decltype(d)> line[kVectors];
    for (size_t k = 0; k < kVectors; ++k) line[k] = op(d, LoadByHalves(d, in + i + k * kLanes)...);
    for (size_t k = 0; k < kVectors; ++k) hn::Stream(line[k], d, out + i + k * kLanes);
  }
}
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
