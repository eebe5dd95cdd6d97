// The row kernels of moments.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/rows.h"
#include "ky/pixels.h"

namespace ky {

// The sums of level x^p y^q over pixels, with x and y counted from the first of them: of up to
// kMomentSide columns and rows, so that all fit.
inline constexpr std::ptrdiff_t kMomentSide = 2048;
struct TileMoments {
  std::uint64_t m00, m10, m01, m20, m11, m02, m30, m21, m12, m03;
};

// Binary moments take the level 1 for pixels of the threshold and above, 0 for the others; weighed
// ones ignore it.
using MomentKernel = TileMoments (*)(const Rows<const KyBW8>& tile, KyBW8 threshold);

struct MomentKernels {
  MomentKernel weighed, binary;
};

// The kernels of the instruction set that this call may use.
const MomentKernels& ChooseMomentKernels() noexcept;

}  // namespace ky
