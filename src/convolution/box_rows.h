// Row kernels of sums over boxes: sums of columns, sums of these along a row, and what is made of
// the sum of a window.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/map.h"
#include "ky/pixels.h"

namespace ky {

// Elements of even and of odd places of a row apart, as sums of neighbours are computed in lanes
// twice as wide as what they are made of. Places may be negative.
template <class T>
struct Phases {
  T* even = nullptr;
  T* odd = nullptr;

  T* At(std::ptrdiff_t place) const noexcept {
    return (place % 2 == 0 ? even : odd) + (place >> 1);
  }
};

// The sums of each column over the rows of a window.
template <class Column>
struct ColumnKernels {
  // columns[i] += times * (what row[i] counts)
  void (*add)(Column* columns, std::size_t n, const KyBW8* row, Column times);
  // columns[i] += (what entering[i] counts) - (what leaving[i] counts)
  void (*slide)(Column* columns, std::size_t n, const KyBW8* entering, const KyBW8* leaving);
  // sums(i) = columns[0] + ... + columns[i], modulo 2^32. Columns and sums are readable and
  // writable for a vector more.
  void (*sum)(Phases<std::uint32_t> sums, std::size_t n, const Column* columns);
};

// The sum of the window at place 2 i + p is front[p][i] - back[p][i].
struct WindowSums {
  const std::uint32_t *front[2], *back[2];
};

// What a window counts, at place 2 i + p in [p][i]. The arrays that a kernel does not need are
// null.
struct WindowAreas {
  const std::int32_t* area[2];
  const float* reciprocal[2];
  // Of deviations: 1 / area, and what has been added to the sum of every window.
  const double* precise[2];
  const std::int32_t* bias[2];
};

using AverageKernel = void (*)(KyBW8* out, std::size_t n, const WindowSums& sums,
                               const WindowAreas& areas);
using DeviationKernel = void (*)(KyBW8* out, std::size_t n, const WindowSums& sums,
                                 const WindowSums& squares, const WindowAreas& areas);

// round(sum / area), half a level upwards: for odd areas below kMostOddArea, for any below
// kMostSmallArea, and for any up to kMostArea.
inline constexpr std::int64_t kMostOddArea = 1 << 14, kMostSmallArea = 1 << 13;
inline constexpr std::int64_t kMostArea = INT32_MAX / 255;
// round(sqrt(area * squares - sum^2) / area) for areas up to this.
inline constexpr std::int64_t kMostDeviationArea = 1 << 16;
// Deviations are computed of levels less this, which leaves them as they are and makes squares
// smaller.
inline constexpr KyBW8 kMiddleLevel = 128;

struct LocalThreshold {
  std::int16_t offset;  // -256 to 256
  KyBW8 low, high;
};

struct BoxKernels {
  ColumnKernels<std::uint16_t> narrow;
  ColumnKernels<std::uint32_t> wide;
  ColumnKernels<std::uint32_t> squares;  // of levels less kMiddleLevel
  // to[i] = first + i * step; a vector more may be written.
  void (*ramp)(std::uint32_t* to, std::size_t n, std::uint32_t first, std::uint32_t step);
  AverageKernel averageOdd, averageSmall, average;
  DeviationKernel deviation;
  void (*threshold)(KyBW8* out, std::size_t n, const KyBW8* source, const KyBW8* average,
                    const LocalThreshold& parameters);
};
const BoxKernels& ChooseBoxKernels() noexcept;

}  // namespace ky
