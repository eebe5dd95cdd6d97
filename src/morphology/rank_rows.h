// The row kernels of rank filters: cumulative histograms of columns, in two levels.
//
// A column holds the pixels of its window's rows. Its first 16 counts are coarse and say how many
// have upper four bits of at most i. 16 blocks of 16 fine counts follow, of those with the block's
// upper bits and lower bits of at most i.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

inline constexpr std::ptrdiff_t kColumnCounts = 16 + 256;

// The windows of one row, or of one component of it. Columns are `step` columns apart; windows at
// their first or last one count these more often.
struct RankWindows {
  std::ptrdiff_t columns;
  std::ptrdiff_t first, end;  // those with results
  std::ptrdiff_t half;
  std::int64_t rank;
  int step;
};

template <class Count>
struct RankKernelsOf {
  // Takes one pixel into each of n columns so many times.
  void (*add)(Count* columns, std::ptrdiff_t n, const KyBW8* row, Count times);
  // One pixel leaves each column and another comes.
  void (*slide)(Count* columns, std::ptrdiff_t n, const KyBW8* leaving, const KyBW8* coming);
  // The results of windows first to end - 1, `step` elements apart.
  void (*run)(const Count* columns, const RankWindows& windows, KyBW8* out);
};

struct RankKernels {
  // Counts of up to 255 rows, whose windows must have ranks below 2^15 from either end; and any.
  RankKernelsOf<std::uint8_t> small;
  RankKernelsOf<std::uint32_t> large;
};

// The kernels of the instruction set that this call may use.
const RankKernels& ChooseRankKernels() noexcept;

}  // namespace ky
