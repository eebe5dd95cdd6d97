// Squared Euclidean distances along a row, from those along the columns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "foundation/scratch.h"

namespace ky {

// The column at i is down[i] from its nearest 0, so that x is (x - i)^2 + down[i]^2 from that one:
// the squared distance is the lower envelope of parabolas. Less x^2 these are the lines h_i - 2 i x
// with h_i = i^2 + down[i]^2, of which the lower envelope has those on the lower convex hull of the
// points (i, h_i).
//
// Squares are 32 bits wide below 2^15 columns and rows, else 64.
template <class Square>
class Envelope {
 public:
  bool Allocate(std::ptrdiff_t width) noexcept { return hull_.Allocate(width); }

  // squares[x] for n columns. One of them at least is not kFar from a 0.
  template <class Distance>
  void Run(Square* squares, const Distance* down, std::ptrdiff_t n) const noexcept {
    constexpr Distance kFar = static_cast<Distance>(-1);
    Point* const hull = hull_.get();
    std::ptrdiff_t last = -1;
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      if (down[i] == kFar) continue;
      const Point next = {i, i * i + std::int64_t{down[i]} * down[i]};
      while (last >= 1 && !IsBelow(hull[last - 1], hull[last], next)) --last;
      hull[++last] = next;
    }
    std::ptrdiff_t k = 0;
    for (std::ptrdiff_t x = 0; x < n; ++x) {
      while (k < last &&
             hull[k + 1].height - hull[k].height <= 2 * x * (hull[k + 1].column - hull[k].column))
        ++k;
      squares[x] = static_cast<Square>(x * x + hull[k].height - 2 * x * hull[k].column);
    }
  }

 private:
  struct Point {
    std::int64_t column, height;
  };
  using Product = std::conditional_t<sizeof(Square) == 4, std::int64_t, __int128>;

  // Whether b lies below the line from a to c.
  static bool IsBelow(const Point& a, const Point& b, const Point& c) noexcept {
    return Product{b.height - a.height} * (c.column - b.column) <
           Product{c.height - b.height} * (b.column - a.column);
  }

  Scratch<Point> hull_;
};

}  // namespace ky
