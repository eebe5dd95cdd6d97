// Convolution in integers.
#pragma once

#include "foundation/ring.h"
#include "foundation/rows.h"
#include "ky/status.h"

namespace ky {

// A grid of 2 * radius + 1 rows and columns of integer weights, row by row.
struct FixedWeights {
  int radius;
  int fraction;  // bits of the weights after the binary point
  std::int64_t offset;
  bool magnitude;
  std::int32_t weights[49];
};

// destination = floor(sum of weight * pixel / 2^fraction) + offset, as a magnitude limited to 255
// or limited to 0..255. 1303 when there is no scratch memory.
// Neighbours in a row are `step` elements apart, 1 or 3.
KY_ERRORS ConvolveFixed(Rows<KyBW8> destination, Rows<const KyBW8> source, int step,
                        const FixedWeights& weights,
                        const Border& border = Border::Nearest()) noexcept;

}  // namespace ky
