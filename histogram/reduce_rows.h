// The row kernels of pixel statistics and projections.
#pragma once

#include "foundation/reduce.h"
#include "ky/pixels.h"

namespace ky {

struct ReduceKernels {
  ReduceKernel<std::uint32_t, KyBW8> sum;  // modulo 2^32
  ReduceKernel<std::uint32_t, KyBW16> sum16;
  ReduceKernel<Moments, KyBW8> moments;
  ReduceKernel<ExtremesAndSum, KyBW8> extremes;  // of at least one element
  ColumnKernel<KyBW8> columns;
  ColumnKernel<KyBW16> columns16;
};

// The kernels of the instruction set that this call may use.
const ReduceKernels& ChooseReduceKernels() noexcept;

}  // namespace ky
