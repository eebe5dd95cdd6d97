// The row kernels of interlaced frames.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

struct InterlacedKernels {
  // The sum of (a[i] - b[i])^2, modulo 2^32.
  std::uint32_t (*squaredDistance)(const KyBW8* a, const KyBW8* b, std::size_t n);
};

// The kernels of the instruction set that this call may use.
const InterlacedKernels& ChooseInterlacedKernels() noexcept;

}  // namespace ky
