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

// Prefetches kBytes that stand `bytes` further on than a place in a row. They may lie beyond the
// pixels, where a pointer may not point. (Inlined always: g++ 12 drops calls of functions that do
// nothing but prefetch.)
template <size_t kBytes>
HWY_INLINE void PrefetchAhead([[maybe_unused]] const void* place,
                              [[maybe_unused]] ptrdiff_t bytes) {
#if HWY_TARGET != HWY_SCALAR
  const uintptr_t from = reinterpret_cast<uintptr_t>(place) + static_cast<uintptr_t>(bytes);
  for (size_t i = 0; i < kBytes; i += 64) hwy::Prefetch(reinterpret_cast<const uint8_t*>(from + i));
#endif
}
// Prefetches the line of a cache that stands there, to the second cache.
HWY_INLINE void PrefetchToSecondCache([[maybe_unused]] const void* place,
                                      [[maybe_unused]] ptrdiff_t bytes) {
#if HWY_TARGET != HWY_SCALAR && HWY_COMPILER_GCC
  const uintptr_t from = reinterpret_cast<uintptr_t>(place) + static_cast<uintptr_t>(bytes);
  __builtin_prefetch(reinterpret_cast<const void*>(from), 0, 2);
#endif
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
