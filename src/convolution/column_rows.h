// Row kernels of the sums of columns over the rows of a window.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// The sums of few rows, side by side. Places may be negative.
struct NarrowColumns {
  using Element = std::uint16_t;
  Element* all = nullptr;

  Element* At(std::ptrdiff_t place) const noexcept { return all + place; }
  // These from the given place on.
  NarrowColumns From(std::ptrdiff_t place) const noexcept { return {all + place}; }
  void Fill(std::ptrdiff_t begin, std::ptrdiff_t end, Element value) const noexcept {
    std::fill(all + begin, all + end, value);
  }
};
// The sums of more, or of squares, modulo 2^32: those of even and of odd places apart, as they are
// added up in lanes twice as wide as what comes from a row of narrow ones.
struct WideColumns {
  using Element = std::uint32_t;
  Element* even = nullptr;
  Element* odd = nullptr;

  Element* At(std::ptrdiff_t place) const noexcept {
    return (place % 2 == 0 ? even : odd) + (place >> 1);
  }
  WideColumns From(std::ptrdiff_t place) const noexcept { return {At(place), At(place + 1)}; }
  void Fill(std::ptrdiff_t begin, std::ptrdiff_t end, Element value) const noexcept {
    if (begin >= end) return;
    for (std::ptrdiff_t place = begin; place < std::min(begin + 2, end); ++place)
      std::fill_n(At(place), (end - place + 1) / 2, value);
  }
};

// All columns have room for kColumnSlack places more, which may be written.
inline constexpr std::ptrdiff_t kColumnSlack = 128;
// The sums of so many rows fit narrow columns.
inline constexpr std::int64_t kNarrowRows = UINT16_MAX / 255;

template <class Columns>
struct ColumnKernels {
  // columns(i) += times * (what row[i] counts)
  void (*add)(const Columns& columns, std::size_t n, const KyBW8* row, std::uint32_t times);
  // columns(i) += (what entering[i] counts) - (what leaving[i] counts)
  void (*slide)(const Columns& columns, std::size_t n, const KyBW8* entering, const KyBW8* leaving);
  // columns(0) + ... + columns(n - 1), modulo 2^32.
  std::uint32_t (*sum)(const Columns& columns, std::size_t n);
};

struct AllColumnKernels {
  ColumnKernels<NarrowColumns> narrow;
  ColumnKernels<WideColumns> wide, squares;
};
const AllColumnKernels& ChooseAllColumnKernels() noexcept;

}  // namespace ky
