// Convolution in single precision, of any size.
#pragma once

#include "foundation/kernels/kernel_view.h"
#include "foundation/rows.h"
#include "ky/status.h"

namespace ky {

// destination = offset + the rectified sum of scaled coefficient * pixel, limited to 0..255, with
// the outside value outside the source. 1303 when there is no scratch memory.
// Neighbours in a row are `step` elements apart.
KY_ERRORS ConvolveFloat(Rows<KyBW8> destination, Rows<const KyBW8> source, int step,
                        const KernelView& kernel) noexcept;

}  // namespace ky
