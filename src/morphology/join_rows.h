// The row kernel of extremes over several rows.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

// out[x] = extreme(rows[0][x], ..., rows[count - 1][x]) for n places; there are one or more rows,
// in scratch. `out` may be one of them as long as none lies in front of it.
using JoinKernel = void (*)(KyBW8* out, std::ptrdiff_t n, const KyBW8* const* rows,
                            std::ptrdiff_t count);

struct JoinKernels {
  JoinKernel maximum, minimum;
};

// The kernels of the instruction set that this call may use.
const JoinKernels& ChooseJoinKernels() noexcept;

}  // namespace ky
