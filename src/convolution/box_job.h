// What the filters by boxes work on.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "convolution/box_thresholds_rows.h"
#include "foundation/rows.h"

namespace ky {

struct Box {
  std::ptrdiff_t halfWidth, halfHeight;

  std::int64_t Area() const noexcept { return (2 * halfWidth + 1) * (2 * halfHeight + 1); }
  // The part of it that can lie in an image.
  Box On(std::ptrdiff_t width, std::ptrdiff_t height) const noexcept {
    return {std::min(halfWidth, width - 1), std::min(halfHeight, height - 1)};
  }
};

// Rows of `planes` components, the windows, and whether only pixels inside the image count, not the
// nearest one for those outside.
struct BoxJob {
  Rows<const KyBW8> in;
  Rows<KyBW8> out;
  int planes;
  Box box;
  bool inside;
  // The destination is thresholded by the averages; null where it is to hold these.
  const LocalThreshold* threshold = nullptr;

  std::ptrdiff_t Width() const noexcept { return in.width / planes; }
  std::ptrdiff_t RowsAtOnce() const noexcept { return 2 * box.halfHeight + 2; }
};

// Calls add(position, times) for what the window around the first of n positions counts, which is
// no position it does not reach.
template <class Add>
void AddFirstWindow(std::ptrdiff_t half, std::ptrdiff_t n, bool nearest, const Add& add) noexcept {
  const std::ptrdiff_t last = std::min(half, n - 1);
  for (std::ptrdiff_t i = 0; i <= last; ++i) add(i, 1);
  if (!nearest) return;
  add(0, static_cast<std::uint64_t>(half));
  if (last < half) add(last, static_cast<std::uint64_t>(half - last));
}

}  // namespace ky
