// The loops of per-pixel kernels for more bytes than a second cache holds: those that write past
// the caches, and those that do not. Included by row files like lanes-inl.h.
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
#include "foundation/prefetch.h"
#include "foundation/spans-inl.h"

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

// MapSpan of bytes. Vectors of 64 bytes are loaded by halves where a row is long enough for that to
// pay; such rows are images without gaps.
template <class Op, class... In>
HWY_INLINE void MapLongSpan(const Op& op, uint8_t* out, size_t n, const In*... in) {
  size_t i = 0;
#if KY_STREAMS && HWY_TARGET < HWY_AVX2
  if constexpr (!Keeping<Op>) {
    const hn::ScalableTag<uint8_t> d;
    if (ExceedsSecondCache(static_cast<ptrdiff_t>(n * (1 + sizeof...(In))))) {
      HWY_UNROLL(2)
      for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d))
        hn::StoreU(op(d, LoadByHalves(d, in + i)...), d, out + i);
    }
  }
#endif
  MapSpan(op, out + i, n - i, (in + i)...);
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
