// The row kernels of shading correction.
#pragma once

#include "foundation/map.h"
#include "ky/pixels.h"

namespace ky {

struct UniformizeKernels {
  // Of the source, the light reference, its level.
  MapKernel<KyBW8, KyBW8, KyBW8, KyBW8> byLight;
  // Of these, the dark reference, its level.
  MapKernel<KyBW8, KyBW8, KyBW8, KyBW8, KyBW8, KyBW8> byBoth;
};

// The kernels of the instruction set that this call may use.
const UniformizeKernels& ChooseUniformizeKernels() noexcept;

}  // namespace ky
