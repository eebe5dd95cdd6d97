// The row kernels of erosion, dilation and gradient by 3 x 3 pixels.
#pragma once

#include "foundation/window.h"

namespace ky {

// For windows whose pixels outside count for nothing, which those are that repeat the nearest one.
struct SquareKernels {
  WindowKernels maximum, minimum;
  WindowKernels range;  // the largest less the smallest
};

// The kernels of the instruction set that this call may use.
const SquareKernels& ChooseSquareKernels() noexcept;

}  // namespace ky
