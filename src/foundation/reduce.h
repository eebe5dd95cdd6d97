// Reductions: numbers from the elements of each row, or of each column. Exact integers throughout,
// so that no path can differ.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "foundation/rows.h"

namespace ky {

// Results that are computed together.
struct Moments {
  std::uint64_t sum, squares;

  Moments& operator+=(const Moments& more) noexcept {
    sum += more.sum;
    squares += more.squares;
    return *this;
  }
};
struct ExtremesAndSum {
  KyBW8 smallest, largest;
  std::uint64_t sum;
};

// One result from the n elements of a row.
template <class Result, class T>
using ReduceKernel = Result (*)(const T* row, std::size_t n);

// The sum of such results of all rows.
template <class Result, class T>
using ReduceAllKernel = Result (*)(const Rows<const T>& rows);

// Adds `height` rows, at most kColumnRows and `pitch` bytes apart, to the sums of n columns, modulo
// 2^32.
inline constexpr std::ptrdiff_t kColumnRows = 256;
template <class T>
using ReduceColumnsKernel = void (*)(std::uint32_t* sums, std::size_t n, const T* first,
                                     std::ptrdiff_t pitch, std::ptrdiff_t height);

// take(kernel of row y, y) for all rows from top to bottom.
template <class Result, class T, class Take>
void ReduceRows(ReduceKernel<Result, T> kernel, Rows<const T> rows, Take&& take) noexcept {
  for (std::ptrdiff_t y = 0; y < rows.height; ++y)
    take(kernel(rows.Row(y), static_cast<std::size_t>(rows.width)), y);
}

// sums[x] = the sum of column x, modulo 2^32.
template <class T>
void SumColumns(ReduceColumnsKernel<T> kernel, Rows<const T> rows, std::uint32_t* sums) noexcept {
  std::fill_n(sums, rows.width, 0u);
  for (std::ptrdiff_t y = 0; y < rows.height; y += kColumnRows)
    kernel(sums, static_cast<std::size_t>(rows.width), rows.Row(y), rows.pitch,
           std::min(kColumnRows, rows.height - y));
}

}  // namespace ky
