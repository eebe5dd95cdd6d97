// Pixels from scattered places of a source.
#pragma once

#include <cstdint>

#include "foundation/rows.h"

namespace ky {

// Accelerated kernels read up to eight bytes at a 32-bit distance from the first pixel. Narrower
// and larger sources are left to the plain path, which has no such limits.
template <class T>
bool CanGather(const Rows<const T>& source) noexcept {
  return source.RowBytes() >= 8 && source.height * source.pitch <= std::ptrdiff_t{INT32_MAX};
}

// A pixel of the source. Below 0 is far above any width or height.
struct Position {
  std::uint32_t x, y;
};

// Rows of the destination between prefetching the pixels of one and making it.
inline constexpr std::ptrdiff_t kFetchRows = 16;

// False for sources that lie in the cache anyhow.
template <class T>
bool IsWorthFetching(const Rows<const T>& source) noexcept {
  constexpr std::ptrdiff_t kInCache = 4 << 20;
  return source.height * source.pitch > kInCache;
}

// Prefetches the pixels at place(0), ... place(n - 1), those inside the source. A turned line
// touches new cache lines of a large source in an order that no processor foresees. (Inlined by
// force: GCC takes a function that does nothing else for one without effect.)
template <class T, class Place>
[[gnu::always_inline]] inline void FetchAhead(const Rows<const T>& source, std::ptrdiff_t n,
                                              const Place& place) noexcept {
  constexpr std::ptrdiff_t kStep = 8;
  for (std::ptrdiff_t x = 0; x < n; x += kStep) {
    const Position at = place(x);
    if (at.x < source.width && at.y < source.height) __builtin_prefetch(source.Row(at.y) + at.x);
  }
}

}  // namespace ky
