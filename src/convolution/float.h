// Convolution in single precision, of any size.
#pragma once

#include "foundation/kernels/kernel_view.h"
#include "foundation/rows.h"
#include "ky/status.h"

namespace ky {

// destination = offset + the rectified sum of scaled coefficient * pixel, limited to 0..255, with
// the outside value outside the source. 1303 when there is no scratch memory.
KY_ERRORS ConvolveFloat(Rows<KyBW8> destination, Rows<const KyBW8> source,
                        const KernelView& kernel) noexcept;

}  // namespace ky
