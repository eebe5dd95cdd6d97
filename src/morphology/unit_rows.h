// The row kernels of erosion, dilation and gradient by the elements of radius 1.
#pragma once

#include "foundation/window.h"

namespace ky {

// For windows whose pixels outside count for nothing, which those are that repeat the nearest one.
struct ExtremeWindows {
  WindowKernels maximum, minimum;
  WindowKernels range;  // the largest less the smallest
};

struct UnitKernels {
  ExtremeWindows square, cross;  // 3 x 3 pixels, and the five in the middle of them
};

// The kernels of the instruction set that this call may use.
const UnitKernels& ChooseUnitKernels() noexcept;

}  // namespace ky
