// The row kernels of the named filters, a table for each kind.
#pragma once

#include "foundation/window.h"

namespace ky {

struct SmoothingKernels {
  WindowKernels uniform, uniformPlain, binomial, neighbours;
};
struct LargeSmoothingKernels {
  WindowKernels uniform5x5, uniform7x7, binomial5x5, binomial7x7;
};
struct SharpeningKernels {
  WindowKernels highpass1, highpass2, highpass2AtBorder;
  WindowKernels laplacian4, laplacian8, laplacianX, laplacianY;
};
struct EdgeKernels {
  WindowKernels sobelX, sobelY, sobel, prewittX, prewittY, prewitt;
  WindowKernels gradientX, gradientY, gradient, roberts;
};

// The kernels of the instruction set that this call may use.
const SmoothingKernels& ChooseSmoothingKernels() noexcept;
const LargeSmoothingKernels& ChooseLargeSmoothingKernels() noexcept;
const SharpeningKernels& ChooseSharpeningKernels() noexcept;
const EdgeKernels& ChooseEdgeKernels() noexcept;

}  // namespace ky
