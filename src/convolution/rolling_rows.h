// Row kernels of means over boxes that roll down an image: a row's sums follow from those above it,
// of which only what division leaves over is kept.
#pragma once

#include <cstddef>
#include <cstdint>

#include "convolution/box_thresholds_rows.h"
#include "convolution/column_rows.h"
#include "ky/pixels.h"

namespace ky {

// Divides by an odd area and rounds: the quotient of u is (u factor / 2^16 round + 2^14) / 2^15,
// each division rounded down.
struct MeanDivision {
  std::int16_t area, factor, round;
};

struct RollingKernels {
  // sums(x) = (entering[0] - leaving[0]) + ... (entering[x] - leaving[x]) for n places, and for so
  // many more on either side, where the first and the last pixels are repeated, or nothing stands.
  // All sums are writable for kColumnSlack places after these.
  void (*sumChanges)(RowSums sums, std::size_t n, std::size_t margin, bool nearest,
                     const KyBW8* entering, const KyBW8* leaving);
  // Windows whose sums were `area` times the levels above[x] and rests(x) grow by what upTo(x) has
  // more than before(x): out[x] is their level, and the rest remains, which is at most half the
  // area, upwards or downwards. out and `above` may be the same row.
  void (*roll)(KyBW8* out, std::size_t n, RowSums upTo, RowSums before, const KyBW8* above,
               RowSums rests, const MeanDivision& division);
  // The same for levels in place, averages[x], of which it makes the thresholds of source[x].
  void (*rollThresholds)(KyBW8* out, std::size_t n, RowSums upTo, RowSums before, KyBW8* averages,
                         RowSums rests, const MeanDivision& division, const KyBW8* source,
                         const LocalThreshold& threshold);
  // Whether that is faster than thresholds of sums.
  bool rollsThresholds;
};
const RollingKernels& ChooseRollingKernels() noexcept;

}  // namespace ky
