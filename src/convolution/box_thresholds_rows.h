// Row kernels of thresholds by the averages of boxes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "convolution/box_rows.h"
#include "ky/pixels.h"

namespace ky {

// Where x > y + offset, `above` is the result, elsewhere `other`.
struct Comparison {
  KyBW8 offset, above, other;
};

// `high` where a level is at least the average around it and `offset`, else `low`.
struct LocalThreshold {
  int offset;  // -256 to 256
  KyBW8 low, high;

  // Whether the source is compared with averages, and not these with the source.
  bool ComparesSource() const noexcept { return offset > 0; }
  // source > average + (offset - 1), or unless average > source + (-offset)
  Comparison ToCompare() const noexcept {
    if (ComparesSource()) return {static_cast<KyBW8>(offset - 1), high, low};
    return {static_cast<KyBW8>(std::min(-offset, 255)), low, high};
  }
};

// Thresholds of sums, for areas below kMostThresholdArea.
inline constexpr std::int64_t kMostThresholdArea = 1 << 15;
template <class Columns>
using LocalThresholdKernel = void (*)(KyBW8* out, std::size_t n,
                                      const SlidingWindows<Columns>& windows,
                                      const WindowAreas& areas, const KyBW8* source,
                                      const LocalThreshold& threshold);

struct LocalThresholdKernels {
  LocalThresholdKernel<NarrowColumns> few, narrow;
  LocalThresholdKernel<WideColumns> wide;
  // Thresholds of kept windows.
  void (*kept)(KyBW8* out, std::size_t n, const KeptWindows& windows, const WindowAreas& areas,
               RowSpan span, const KyBW8* source, const LocalThreshold& threshold);
  // Thresholds of averages.
  void (*compare)(KyBW8* out, std::size_t n, const KyBW8* source, const KyBW8* averages,
                  const LocalThreshold& threshold);
};
const LocalThresholdKernels& ChooseLocalThresholdKernels() noexcept;

}  // namespace ky
