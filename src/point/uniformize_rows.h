// The row kernels of shading correction.
#pragma once

#include "foundation/map.h"
#include "ky/pixels.h"

namespace ky {

// The levels of the references: of each component, or three times that of grey pixels.
struct ShadingLevels {
  KyBW8 light[3], dark[3];
};
struct UniformizeKernels {
  // Of the source, the light reference.
  MapKernel<KyBW8, KyBW8, KyBW8, ShadingLevels> byLight;
  // Of these, the dark reference.
  MapKernel<KyBW8, KyBW8, KyBW8, KyBW8, ShadingLevels> byBoth;
};

// The kernels of the instruction set that this call may use.
const UniformizeKernels& ChooseUniformizeKernels() noexcept;

}  // namespace ky
