// The row kernels of projections.
#pragma once

#include "foundation/reduce.h"
#include "ky/pixels.h"

namespace ky {

struct ProjectionKernels {
  ReduceKernel<std::uint64_t, KyBW8> sum;
  ReduceKernel<std::uint64_t, KyBW16> sum16;
  ColumnKernel<KyBW8> columns;
  ColumnKernel<KyBW16> columns16;
};

// The kernels of the instruction set that this call may use.
const ProjectionKernels& ChooseProjectionKernels() noexcept;

}  // namespace ky
