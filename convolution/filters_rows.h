// The row kernels of the named 3x3 filters.
#pragma once

#include "foundation/window.h"

namespace ky {

struct FilterKernels {
  using Kernel = WindowKernel<KyBW8, KyBW8>;

  std::size_t lanes;
  Kernel uniform, uniformPlain, binomial, ring;
  Kernel highpass1, highpass2, highpass2Frame;
  Kernel sobelX, sobelY, sobel;
  Kernel prewittX, prewittY, prewitt;
  Kernel laplacian4, laplacian8;
};

// The kernels of the instruction set that this call may use.
const FilterKernels& ChooseFilterKernels() noexcept;

}  // namespace ky
