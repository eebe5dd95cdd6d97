// The row kernels of medians of 3 x 3 and 5 x 5 pixels.
#pragma once

#include "foundation/window.h"

namespace ky {

// Kernels of radius 1 and 2, for grey pixels and for the components of colours.
struct MedianKernels {
  struct OfRadius {
    WindowKernel<WindowRun> grey, color;
  } radius1, radius2;
};

// The kernels of the instruction set that this call may use.
const MedianKernels& ChooseMedianKernels() noexcept;

}  // namespace ky
