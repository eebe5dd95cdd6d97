// The row kernel of Bayer mosaics.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

// What the row under a mosaic consists of.
struct MosaicRow {
  const KyBW8 *above, *here, *below;
  bool hasRed;         // else blue
  bool startsOnGreen;  // its first pixel is a green one
};

struct BayerKernels {
  // Two pixels or more; beyond both ends of the rows stand the pixels mirrored about the last ones.
  void (*demosaic)(KyC24* out, std::size_t n, const MosaicRow& row);
};

// The kernels of the instruction set that this call may use.
const BayerKernels& ChooseBayerKernels() noexcept;

}  // namespace ky
