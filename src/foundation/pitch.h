// Distances between rows that do not fight the cache.
#pragma once

#include <cstdint>

namespace ky {

// Bytes from row to row for rows of so many bytes: whole lines of a cache, and no multiple of
// 2048, where the rows above each other would compete for the same few places in a first cache.
constexpr std::int64_t PitchApart(std::int64_t rowBytes) noexcept {
  const std::int64_t pitch = (rowBytes + 63) / 64 * 64;
  return pitch % 2048 == 0 && pitch != 0 ? pitch + 64 : pitch;
}

// True when rows this far apart compete so: three dozen rows and fewer fill all of its ways.
constexpr bool FightsCache(std::int64_t pitch) noexcept { return pitch % 1024 == 0; }

}  // namespace ky
