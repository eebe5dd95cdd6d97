// The row kernels of pixel statistics.
#pragma once

#include "foundation/reduce.h"
#include "ky/pixels.h"

namespace ky {

struct StatisticsKernels {
  ReduceKernel<std::uint64_t, KyBW8> sum;
  ReduceKernel<Moments, KyBW8> moments;
  ReduceKernel<ExtremesAndSum, KyBW8> extremes;  // of at least one element
};

// The kernels of the instruction set that this call may use.
const StatisticsKernels& ChooseStatisticsKernels() noexcept;

}  // namespace ky
