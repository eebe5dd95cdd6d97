// Windows so large that their sums do not fit 32-bit lanes: the same results one pixel at a time.
#pragma once

#include "convolution/box_sums.h"

namespace ky {

// What a call works on: rows of `planes` components, the windows, and whether only pixels inside
// the image count, not the nearest one for those outside.
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

KY_ERRORS AverageOfLargeBoxes(const BoxJob& job) noexcept;
KY_ERRORS DeviationOfLargeBoxes(const BoxJob& job) noexcept;

}  // namespace ky
