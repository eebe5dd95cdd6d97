// Prefetches of rows, for walks that read several at a time: processors do not see by themselves
// what comes next then.
#pragma once

#include <cstddef>

#include "foundation/pitch.h"
#include "ky/pixels.h"

namespace ky {

// Whether all that is read and written, so many bytes, exceeds a second cache, or the part of a
// third one that a core may count on.
constexpr bool ExceedsSecondCache(std::ptrdiff_t bytes) noexcept { return bytes > 2 << 20; }
constexpr bool ExceedsThirdCache(std::ptrdiff_t bytes) noexcept { return bytes > 4 << 20; }

// To the second cache.
inline void PrefetchRow(const KyBW8* bytes, std::ptrdiff_t n) noexcept {
  for (std::ptrdiff_t i = 0; i < n; i += kCacheLine) __builtin_prefetch(bytes + i, 0, 2);
}

}  // namespace ky
