// Distances between rows that do not fight the cache: rows a power of two apart compete for the
// same few places in it.
#pragma once

#include <cstdint>

namespace ky {

inline constexpr std::int64_t kCacheLine = 64;

// Bytes from row to row for an image with rows of so many bytes: whole lines of a cache, and no
// multiple of 2048.
constexpr std::int64_t ImagePitch(std::int64_t rowBytes) noexcept {
  const std::int64_t lines = (rowBytes + kCacheLine - 1) / kCacheLine;
  return kCacheLine * (lines % 32 == 0 && lines != 0 ? lines + 1 : lines);
}

// Bytes of an image's pixels: its rows and the spare row below them.
constexpr std::int64_t ImageBytes(std::int64_t pitch, int height) noexcept {
  return pitch * (std::int64_t{height} + 1);
}

// About the most that so many bytes take on the heap, with its own words, a boundary of 64 bytes
// and the rest of the last page of a large block.
constexpr std::int64_t HeapBytes(std::int64_t bytes) noexcept {
  constexpr std::int64_t kOwn = 32, kPage = 4096, kLarge = 1 << 16;
  return bytes + kOwn + kCacheLine + (bytes >= kLarge ? kPage : 0);
}

// The same as ImagePitch for rows of scratch, of which dozens may be in use at a time: an odd
// number of lines.
constexpr std::int64_t ScratchPitch(std::int64_t rowBytes) noexcept {
  return kCacheLine * ((rowBytes + kCacheLine - 1) / kCacheLine | 1);
}

// True when rows so far apart compete in a first cache, which has places for eight or twelve lines
// that lie a multiple of 4096 bytes from each other: a dozen such rows may drive each other out.
constexpr bool FightsCache(std::int64_t pitch) noexcept { return pitch % 1024 == 0; }

}  // namespace ky
