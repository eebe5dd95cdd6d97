// The row kernels of erosion and dilation.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

enum class Extreme { kMaximum, kMinimum };

// Readable and writable bytes that the kernels want behind the rows of scratch that they are given.
inline constexpr std::ptrdiff_t kRowSlack = 64;
// Those that they want in front of the scratch `row`, and the elements that this has room for even
// when there are fewer.
inline constexpr std::ptrdiff_t kRowFront = 384, kLeastRow = 128;

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

struct ExtremeKernels {
  KyBW8 neutral;  // the level that is no extreme: what stands outside the ROI
  // out[x] = extreme(in[x - half], ..., in[x + half]) for n places, of the elements that there are.
  // `row` and `spare` are scratch of n + 2 half elements, and `out` is scratch too, perhaps `row`
  // or in front of it. The n elements at `soon` are about to be stored to: windows that are
  // long enough ask for them.
  void (*along)(KyBW8* out, std::ptrdiff_t n, const KyBW8* in, KyBW8* row, KyBW8* spare,
                std::ptrdiff_t half, const KyBW8* soon);
  void (*across)(const RowBlock& block);
  // out[x] = extreme(above[x], row[x - 1], row[x], row[x + 1], below[x]) for n places. All rows but
  // `out` lie in scratch.
  void (*cross)(KyBW8* out, std::ptrdiff_t n, const KyBW8* above, const KyBW8* row,
                const KyBW8* below);
};

// The kernels of the instruction set that this call may use.
const ExtremeKernels& ChooseExtremeKernels(Extreme extreme) noexcept;

}  // namespace ky
