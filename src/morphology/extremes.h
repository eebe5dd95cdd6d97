// Erosion and dilation: the extreme that each takes, and its row kernels.
#pragma once

#include <cstddef>

#include "morphology/across_rows.h"
#include "morphology/along_rows.h"
#include "morphology/join_rows.h"

namespace ky {

enum class Extreme { kMaximum, kMinimum };

// Bytes that are readable and writable after the rows of scratch that the kernels are given.
inline constexpr std::ptrdiff_t kRowSlack = 64;

struct ExtremeKernels {
  KyBW8 neutral;  // the level that is no extreme: what stands outside the ROI
  AlongKernel along, alongColor;
  AcrossKernel across;
  CrossKernel cross;
  JoinKernel join;
};

// The kernels of the instruction set that this call may use.
inline ExtremeKernels KernelsOf(Extreme extreme) noexcept {
  const AlongKernels& along = ChooseAlongKernels();
  const AcrossKernels& across = ChooseAcrossKernels();
  const JoinKernels& join = ChooseJoinKernels();
  if (extreme == Extreme::kMaximum)
    return {0,
            along.grey.maximum,
            along.color.maximum,
            across.across.maximum,
            across.cross.maximum,
            join.maximum};
  return {255,
          along.grey.minimum,
          along.color.minimum,
          across.across.minimum,
          across.cross.minimum,
          join.minimum};
}

}  // namespace ky
