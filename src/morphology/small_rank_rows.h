// The row kernels of all ranks of 3 x 3 pixels and of the median of 5 x 5.
#pragma once

#include "foundation/window.h"

namespace ky {

struct SmallRankKernels {
  WindowKernels ranks3x3[9], median5x5;
};

// The kernels of the instruction set that this call may use.
const SmallRankKernels& ChooseSmallRankKernels() noexcept;

}  // namespace ky
