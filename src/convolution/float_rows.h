// The row kernels of convolutions in single precision.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/rows.h"

namespace ky {

enum Rectifier : int { kLeave, kNegative, kPositive, kMagnitude, kRectifiers };

// Result (x, y) = level of the sum of coefficient (i, j) * rows[y + j][x + step * i], j from 0 to
// sizeY - 1, i from 0 to sizeX - 1. Source rows are readable for kFloatSlack elements more.
struct FloatKernel {
  std::ptrdiff_t sizeX, sizeY, step;
  const float* coefficients;
  // The least and the greatest rectified sum that make a difference, and what is added to it.
  std::int32_t least, greatest, offset;
};
inline constexpr std::ptrdiff_t kFloatSlack = 64;
inline constexpr std::ptrdiff_t kFloatRowsAtOnce = 2;

struct FloatRowKernels {
  void (*convert)(float* out, std::size_t n, const KyBW8* in);
  // By rectifier, and whether all sums are known to be numbers that 32-bit integers hold, also with
  // the offset. Rows of results at once, up to kFloatRowsAtOnce, share what they read.
  void (*weigh[kRectifiers][2])(const FloatKernel& kernel, Rows<KyBW8> out,
                                const float* const* rows);
};

// The kernels of the instruction set that this call may use.
const FloatRowKernels& ChooseFloatRowKernels() noexcept;

}  // namespace ky
