// The row kernels of convolutions in integers.
#pragma once

#include "foundation/window.h"

namespace ky {

inline constexpr int kLargestRadius = 3;
inline constexpr int kLargestGrid = (2 * kLargestRadius + 1) * (2 * kLargestRadius + 1);

// level = Limit((sum of weight * pixel >> shift) + offset), where Limit gives min(|v|, 255) for a
// magnitude, else max(0, min(v, 255)).
//
// Sums are less than 2^30. The offset is at most kFurthestOffset on either side of 0, so that a sum
// that is limited to 16 bits first gives the same level.
//
// `pairs` has the weights as the paired kernels want them, low 16 bits and high 16 bits for two
// neighbours; pairs[1] is used by the split kernels alone. See PairWeights.
inline constexpr int kFurthestOffset = 32512;
struct FixedKernel {
  int radius, shift;
  std::int32_t offset;
  bool magnitude;
  std::int32_t weights[kLargestGrid];
  std::int32_t pairs[2][kLargestGrid];
};

// The paired kernels of colours multiply two taps at once in the order of the weights, the last
// with a weight of 0. Those of grey pixels multiply two taps of a row, two columns apart, as such
// pixels lie side by side in 16-bit lanes (see window_lanes-inl.h). By radius, the first of the
// taps of each pair; one tap, kSingleTap, remains, and is put with a weight of 0 before it or after
// it.
inline constexpr int kFirstTaps[kLargestRadius + 1][kLargestRadius] = {
    {}, {-1}, {-2, -1}, {-3, -2, 1}};
inline constexpr int kSingleTap[kLargestRadius + 1] = {0, 0, 2, 2};

using FixedRowKernel = void (*)(const FixedKernel& kernel, Rows<KyBW8> out,
                                const KyBW8* const* rows, const Layout& layout);

struct FixedRowKernels {
  std::size_t lanes;
  std::ptrdiff_t shortestWithEnds;  // for radius 1
  // For radius 1, when all sums stay in 16 bits, by two questions. Are all weights in -64..64? Are
  // the sums unsigned, with a shift of 1 or more? Signed ones are in -32512..32512.
  FixedRowKernel narrow[2][2];
  // By radius, and whether the weights are split.
  FixedRowKernel paired[kLargestRadius + 1][2];
  // The same for kernels that are symmetric under mirroring and the quarter turn.
  FixedRowKernel symmetric[kLargestRadius + 1][2];
};

// The same for rows of the components of colours.
struct FixedColorRowKernels : FixedRowKernels {};

// The kernels of the instruction set that this call may use.
const FixedRowKernels& ChooseFixedRowKernels() noexcept;
const FixedColorRowKernels& ChooseFixedColorRowKernels() noexcept;

}  // namespace ky
