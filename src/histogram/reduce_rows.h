// The row kernels of pixel statistics, projections and histograms.
#pragma once

#include "foundation/reduce.h"
#include "ky/pixels.h"

namespace ky {

// Adds the levels of `blocks` times kCountBlock pixels of each of `height` rows, `pitch` bytes
// apart, to 256 counts.
inline constexpr std::ptrdiff_t kCountBlock = 512;
using CountKernel = void (*)(std::uint32_t* counts, std::ptrdiff_t blocks, const KyBW8* first,
                             std::ptrdiff_t pitch, std::ptrdiff_t height);

struct ReduceKernels {
  ReduceKernel<std::uint32_t, KyBW8> sum;  // modulo 2^32
  ReduceKernel<std::uint32_t, KyBW16> sum16;
  ReduceKernel<Moments, KyBW8> moments;
  ReduceKernel<ExtremesAndSum, KyBW8> extremes;  // of at least one element
  ColumnKernel<KyBW8> columns;
  ColumnKernel<KyBW16> columns16;
  CountKernel count;  // null where tables are faster
};

// The kernels of the instruction set that this call may use.
const ReduceKernels& ChooseReduceKernels() noexcept;

}  // namespace ky
