// The row kernels of projections.
#pragma once

#include "foundation/reduce.h"
#include "ky/pixels.h"

namespace ky {

// sums[y] = the sum of row y, modulo 2^32.
template <class T>
using RowSumsKernel = void (*)(const Rows<const T>& rows, std::uint32_t* sums);

struct ProjectionKernels {
  RowSumsKernel<KyBW8> sums;
  RowSumsKernel<KyBW16> sums16;
  ReduceColumnsKernel<KyBW8> columns;
  ReduceColumnsKernel<KyBW16> columns16;
};

// The kernels of the instruction set that this call may use.
const ProjectionKernels& ChooseProjectionKernels() noexcept;

}  // namespace ky
