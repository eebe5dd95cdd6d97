// Prefetches of what a row kernel comes to later. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_PREFETCH_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_PREFETCH_INL_H_
#undef KY_FOUNDATION_PREFETCH_INL_H_
#else
#define KY_FOUNDATION_PREFETCH_INL_H_
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Asks for kBytes that stand `bytes` further on than a place in a row. They may lie beyond the
// pixels, where a pointer may not point. (Inlined always: g++ 12 drops calls of functions that
// only ask.)
template <size_t kBytes>
HWY_INLINE void AskFor([[maybe_unused]] const void* place, [[maybe_unused]] ptrdiff_t bytes) {
#if HWY_TARGET != HWY_SCALAR
  const uintptr_t from = reinterpret_cast<uintptr_t>(place) + static_cast<uintptr_t>(bytes);
  for (size_t i = 0; i < kBytes; i += 64) hwy::Prefetch(reinterpret_cast<const uint8_t*>(from + i));
#endif
}
// Asks for the places that stores will come to: a store waits for the line that it changes, and
// processors go ahead of loads, not of stores. Large images are written a quarter faster.
template <size_t kBytes>
HWY_INLINE void AskToStore(const void* place) {
  AskFor<kBytes>(place, 1024);
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
