// Prefetches of rows, for walks that read several at a time: processors do not see by themselves
// what comes next then.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "foundation/cache_size.h"
#include "foundation/pitch.h"
#include "ky/pixels.h"

namespace ky {

// Whether all that is read and written, so many bytes, exceeds a second cache, or the part of a
// third one that a core may count on.
constexpr bool ExceedsSecondCache(std::ptrdiff_t bytes) noexcept { return bytes > 2 << 20; }
constexpr bool ExceedsThirdCache(std::ptrdiff_t bytes) noexcept { return bytes > 4 << 20; }

// Whether walks that read and write so many bytes, several rows side by side, gain from prefetches.
// Processors with a larger first cache follow such rows by themselves for as long as a third cache
// holds them: on Zen 5 prefetches cost windows of 3 x 3 pixels a tenth there, and save a quarter to
// a half beyond; on Zen 4 they save time wherever a second cache is exceeded.
inline bool GainFromPrefetches(std::ptrdiff_t bytes) noexcept {
  constexpr std::int64_t kLargeFirst = 48 << 10, kMost = 16 << 20;
  const CacheSizes& caches = SizesOfCaches();
  return caches.firstOfData < kLargeFirst ? ExceedsSecondCache(bytes)
                                          : bytes > std::min(caches.largest / 2, kMost);
}

// To the second cache.
inline void PrefetchRow(const KyBW8* bytes, std::ptrdiff_t n) noexcept {
  for (std::ptrdiff_t i = 0; i < n; i += kCacheLine) __builtin_prefetch(bytes + i, 0, 2);
}

}  // namespace ky
