// The row kernels of profiles.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/map.h"

namespace ky {

// Which ways through a threshold count.
inline constexpr KyBW8 kRising = 1, kFalling = 2;

// The most levels whose mean 16 bits are enough for: the quotient by 203 would not be exact.
inline constexpr std::ptrdiff_t kLongestMean = 201;

struct ProfileKernels {
  RowKernel<KyBW8, KyBW8, KyBW8> slope;            // of the elements before and after
  RowKernel<KyBW8, KyBW8, KyBW8, KyBW8> binomial;  // of those, with the element itself in between
  // The truncated means of the `length` levels from each on, an odd number up to kLongestMean, for
  // which there is room for n + length - 1 sums.
  void (*uniform)(KyBW8* out, std::size_t n, const KyBW8* levels, std::size_t length,
                  std::uint16_t* sums);
  // Finds where levels pass the threshold in the ways of `edges`: from below it to it or above,
  // from above it to it or below. levels[-1] comes first. Returns the number of places; up to seven
  // more are written, and levels are read up to a multiple of 64.
  std::size_t (*transitions)(std::uint16_t* places, std::size_t n, const KyBW8* levels,
                             KyBW8 threshold, KyBW8 edges);
};

// The kernels of the instruction set that this call may use.
const ProfileKernels& ChooseProfileKernels() noexcept;

}  // namespace ky
