// The row kernels of profiles.
#pragma once

#include "foundation/map.h"

namespace ky {

// Which ways through a threshold count, and how they are marked.
inline constexpr KyBW8 kRising = 1, kFalling = 2;

struct ProfileKernels {
  MapKernel<KyBW8, KyBW8, KyBW8> slope;            // of the elements before and behind
  MapKernel<KyBW8, KyBW8, KyBW8, KyBW8> binomial;  // of those, with the element itself in between
  // Marks where levels pass the threshold: kRising from below it to it or above, kFalling from
  // above it to it or below, of those in `edges`; else 0. levels[-1] comes first.
  void (*transitions)(KyBW8* marks, std::size_t n, const KyBW8* levels, KyBW8 threshold,
                      KyBW8 edges);
};

// The kernels of the instruction set that this call may use.
const ProfileKernels& ChooseProfileKernels() noexcept;

}  // namespace ky
