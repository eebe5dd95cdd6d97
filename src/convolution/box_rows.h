// Row kernels of sums over boxes: what is made of the sum of a window, which is that of its
// columns.
#pragma once

#include <cstddef>
#include <cstdint>

#include "convolution/column_rows.h"
#include "ky/pixels.h"

namespace ky {

// The sum of window i is that of window i - 1, and what entering.At(i) has more than
// leaving.At(i). Columns are readable for a vector more.
template <class Columns>
struct SlidingWindows {
  Columns entering, leaving;
  std::uint32_t before;  // the sum of window -1
};

// How many pixels the windows count. Those of places `left` to `right` - 1 are all alike. The
// arrays have those of all other places, of kAreaMargin places next to these, and of as many after
// the row: for place 4 i + p in [p][i]. They may be null where all are alike.
inline constexpr std::ptrdiff_t kAreaMargin = 68;
struct WindowAreas {
  std::size_t left, right;
  std::int32_t area;
  float reciprocal;
  Phases<const std::int32_t, 4> areas;
  Phases<const float, 4> reciprocals;
};

// Windows whose sums are kept from row to row: sums(x) grows by what upTo(x) has more than
// before(x).
struct KeptWindows {
  RowSums upTo, before;
  WideColumns sums;
};
// The places that are made: all, or those at either end of a row, whose areas are not alike, and
// some next to these.
enum class RowSpan { kAll, kEnds };

template <class Columns>
using AverageKernel = void (*)(KyBW8* out, std::size_t n, const SlidingWindows<Columns>& windows,
                               const WindowAreas& areas);
template <class Columns>
using DeviationKernel = void (*)(KyBW8* out, std::size_t n, const SlidingWindows<Columns>& levels,
                                 const SlidingWindows<WideColumns>& squares,
                                 const WindowAreas& areas);

// round(sum / area), half a level upwards: for an area that is odd and the same everywhere and is
// below kMostOddArea, for any below kMostSmallArea, and for any up to kMostArea.
inline constexpr std::int64_t kMostOddArea = 1 << 14, kMostSmallArea = 1 << 13;
inline constexpr std::int64_t kMostArea = INT32_MAX / 255;
// round(sqrt(area * squares - sum^2) / area) for areas up to each of these: (127.5 * 514)^2 fits 32
// bits. Sums of squares are in units of 2^kCoarse where their lower 32 bits do not tell enough of
// them.
inline constexpr std::int64_t kMostSmallDeviationArea = 514;
inline constexpr std::int64_t kMostDeviationArea = 1 << 17, kMostLargeDeviationArea = 1 << 22;
inline constexpr int kCoarse = 8;

template <class Columns>
struct ResultKernels {
  AverageKernel<Columns> averageOdd, averageSmall, average;
  DeviationKernel<Columns> deviationOfSmall, deviation;
};

using KeptAverageKernel = void (*)(KyBW8* out, std::size_t n, const KeptWindows& windows,
                                   const WindowAreas& areas, RowSpan span);

struct BoxKernels {
  ResultKernels<NarrowColumns> few, narrow;  // of kFewRows rows, and of kNarrowRows
  ResultKernels<WideColumns> wide;
  // The sum of window -1 in coarse units is that of its columns, each rounded down to these.
  void (*deviationOfLarge)(KyBW8* out, std::size_t n, const SlidingWindows<WideColumns>& levels,
                           const SlidingWindows<WideColumns>& squares, std::uint32_t coarseBefore,
                           const WindowAreas& areas);
  // Means of kept windows, of areas below kMostSmallArea and of others; and their sums alone.
  KeptAverageKernel keptSmall, kept;
  void (*keep)(std::size_t n, const KeptWindows& windows);
};
// The columns of so many rows differ by what fits 16 bits with a sign.
inline constexpr std::int64_t kFewRows = INT16_MAX / 255;
const BoxKernels& ChooseBoxKernels() noexcept;

}  // namespace ky
