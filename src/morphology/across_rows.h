// The row kernels of erosion and dilation across rows.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

// Windows that start in the n rows `first` and end in the n rows `last`, with others between, in
// columns from..to - 1 of every pointer:
//
//   out[i] = extreme(first[i], ..., first[n - 1], between..., last[0], ..., last[i])
//   total = extreme(last[0], ..., last[n - 1]), unless it is null
//
// for i < outputs. All rows but `out`, of which nothing but its columns is written, lie in scratch.
// `toEnds` is scratch of n * kStripWidth elements that starts a line of a cache.
struct RowBlock {
  std::ptrdiff_t from, to;
  std::ptrdiff_t n, betweenCount, outputs;
  const KyBW8* const* first;
  const KyBW8* const* between;
  const KyBW8* const* last;
  KyBW8* const* out;
  KyBW8* total;
  KyBW8* toEnds;
};
inline constexpr std::ptrdiff_t kStripWidth = 128;
using AcrossKernel = void (*)(const RowBlock& block);

// out[x] = extreme(above[x], row[x - 1], row[x], row[x + 1], below[x]) for n places. All rows but
// `out` lie in scratch.
using CrossKernel = void (*)(KyBW8* out, std::ptrdiff_t n, const KyBW8* above, const KyBW8* row,
                             const KyBW8* below);

struct AcrossKernels {
  struct {
    AcrossKernel maximum, minimum;
  } across;
  struct {
    CrossKernel maximum, minimum;
  } cross;
};

// The kernels of the instruction set that this call may use.
const AcrossKernels& ChooseAcrossKernels() noexcept;

}  // namespace ky
