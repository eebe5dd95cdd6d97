// Row kernels of the sums of columns over the rows of a window.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// Elements of a row of which those of every kPhases-th place lie side by side, as neighbours are
// added up in lanes wider than what they are made of. Places may be negative.
template <class T, int kPhases>
struct Phases {
  using Element = T;
  T* of[kPhases];

  T* At(std::ptrdiff_t place) const noexcept {
    return of[place & (kPhases - 1)] + (place >> kLog2);
  }
  // These from the given place on.
  Phases From(std::ptrdiff_t place) const noexcept {
    Phases phases;
    for (int p = 0; p < kPhases; ++p) phases.of[p] = At(place + p);
    return phases;
  }
  void Fill(std::ptrdiff_t begin, std::ptrdiff_t end, T value) const noexcept {
    for (std::ptrdiff_t place = begin; place < std::min(begin + kPhases, end); ++place)
      std::fill_n(At(place), (end - place + kPhases - 1) / kPhases, value);
  }

 private:
  static_assert(kPhases == 2 || kPhases == 4);
  static constexpr int kLog2 = kPhases / 2;
};

// The sums of few rows, and those of more, or of squares, modulo 2^32.
using NarrowColumns = Phases<std::uint16_t, 2>;
using WideColumns = Phases<std::uint32_t, 4>;
// Sums along a row, modulo 2^16.
using RowSums = Phases<std::uint16_t, 2>;

// All columns have room for kColumnSlack places more, which may be written.
inline constexpr std::ptrdiff_t kColumnSlack = 256;
// The sums of so many rows fit narrow columns, and those of so many squares wide ones.
inline constexpr std::int64_t kNarrowRows = UINT16_MAX / 255;
inline constexpr std::int64_t kSquareRows = UINT32_MAX / (255 * 255);

template <class Columns>
struct ColumnSumKernels {
  // columns(i) += (what row[i] counts)
  void (*add)(const Columns& columns, std::size_t n, const KyBW8* row);
  // columns(i) += (what entering[i] counts) - (what leaving[i] counts)
  void (*slide)(const Columns& columns, std::size_t n, const KyBW8* entering, const KyBW8* leaving);
  // The same for the sums of levels and for those of their squares.
  void (*slideBoth)(const Columns& levels, const WideColumns& squares, std::size_t n,
                    const KyBW8* entering, const KyBW8* leaving);
  // columns(0) + ... + columns(n - 1), modulo 2^32.
  std::uint32_t (*sum)(const Columns& columns, std::size_t n);
};

struct AllColumnSumKernels {
  ColumnSumKernels<NarrowColumns> narrow;
  ColumnSumKernels<WideColumns> wide, squares;  // squares slide with levels only
  // The sum of columns(0) >> shift to columns(n - 1) >> shift.
  std::uint32_t (*sumShifted)(const WideColumns& columns, std::size_t n, int shift);
};
const AllColumnSumKernels& ChooseAllColumnSumKernels() noexcept;

}  // namespace ky
