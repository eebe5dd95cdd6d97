// The row kernels of convolutions in single precision.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

enum Rectifier : int { kLeave, kNegative, kPositive, kMagnitude, kRectifiers };

// out[x] = level of the sum of coefficient (i, j) * rows[j][x + i], j from 0 to sizeY - 1, i from 0
// to sizeX - 1, x from 0 to n - 1. Rows are readable for kFloatSlack elements more.
struct FloatKernel {
  std::ptrdiff_t sizeX, sizeY;
  const float* coefficients;
  // The least and the greatest rectified sum that make a difference, and what is added to it.
  std::int32_t least, greatest, offset;
};
inline constexpr std::ptrdiff_t kFloatSlack = 64;

struct FloatRowKernels {
  void (*convert)(float* out, std::size_t n, const KyBW8* in);
  // By rectifier, and whether all sums are known to be numbers that 32-bit integers hold.
  void (*weigh[kRectifiers][2])(const FloatKernel& kernel, KyBW8* out, std::ptrdiff_t n,
                                const float* const* rows);
};

// The kernels of the instruction set that this call may use.
const FloatRowKernels& ChooseFloatRowKernels() noexcept;

}  // namespace ky
