// Digital line segments (Bresenham).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include "foundation/kernels/mirror_rows.h"
#include "foundation/point.h"
#include "foundation/rows.h"

namespace ky {

// The points from one position to another: as many as there are steps along the longer axis, and
// one more. A step goes straight along that axis or, too, one along the other.
class LineSegment {
 public:
  LineSegment(Point from, Point to) noexcept
      : from_(from),
        right_(to.x < from.x ? -1 : 1),
        down_(to.y < from.y ? -1 : 1),
        major_(std::abs(to.x - from.x)),
        minor_(std::abs(to.y - from.y)),
        steep_(major_ < minor_) {
    if (steep_) std::swap(major_, minor_);
  }

  std::ptrdiff_t Count() const noexcept { return major_ + 1; }
  Point At(std::ptrdiff_t i) const noexcept {
    const std::ptrdiff_t across = minor_ > 0 ? (major_ / 2 + i * minor_) / major_ : 0;
    return {from_.x + right_ * (steep_ ? across : i), from_.y + down_ * (steep_ ? i : across)};
  }
  // A piece of a row: 1 from left to right, -1 from right to left, otherwise 0.
  std::ptrdiff_t AlongRow() const noexcept { return !steep_ && minor_ == 0 ? right_ : 0; }

 private:
  template <class Visit>
  friend void TraceLineSegment(const LineSegment& line, std::ptrdiff_t begin, std::ptrdiff_t end,
                               Visit&& visit) noexcept;

  Point from_;
  std::ptrdiff_t right_, down_;
  std::ptrdiff_t major_, minor_;
  bool steep_;
};

// visit(x, y) for the points from number `begin` to before `end`, in order.
template <class Visit>
void TraceLineSegment(const LineSegment& line, std::ptrdiff_t begin, std::ptrdiff_t end,
                      Visit&& visit) noexcept {
  if (begin >= end) return;
  const Point straight = line.steep_ ? Point{0, line.down_} : Point{line.right_, 0};
  const Point aside = line.steep_ ? Point{line.right_, 0} : Point{0, line.down_};
  const std::ptrdiff_t major = std::max<std::ptrdiff_t>(line.major_, 1), minor = line.minor_;
  auto [x, y] = line.At(begin);
  std::ptrdiff_t e = (major / 2 + begin * minor) % major - major;  // aside when it reaches 0
  for (std::ptrdiff_t i = begin; i < end; ++i) {
    visit(x, y);
    e += minor;
    const std::ptrdiff_t turns = e < 0 ? 0 : -1;
    e -= major & turns;
    x += straight.x + (aside.x & turns);
    y += straight.y + (aside.y & turns);
  }
}

// The same with the pixels of the points, which lie inside; `row(pixels, n)` where they are n
// pixels of a row, from its left end on even when the line comes from the right.
template <class T, class Visit, class Row>
void TraceLineSegment(const Rows<T>& rows, const LineSegment& line, std::ptrdiff_t begin,
                      std::ptrdiff_t end, Visit&& visit, Row&& row) noexcept {
  if (line.AlongRow() != 0) {
    const Point left = line.At(line.AlongRow() > 0 ? begin : end - 1);
    row(rows.Row(left.y) + left.x, end - begin);
  } else {
    TraceLineSegment(line, begin, end,
                     [&](std::ptrdiff_t x, std::ptrdiff_t y) { visit(rows.Row(y)[x]); });
  }
}

inline void ReverseOrder(KyBW8* pixels, std::ptrdiff_t n) noexcept {
  ChooseMirrorKernels().reverse(pixels, static_cast<std::size_t>(n));
}
inline void ReverseOrder(KyC24* pixels, std::ptrdiff_t n) noexcept {
  ChooseMirrorKernels().reverseColors(pixels, static_cast<std::size_t>(n));
}
inline void ReverseOrder(KyBW16* pixels, std::ptrdiff_t n) noexcept {
  std::reverse(pixels, pixels + n);
}

// Reads, writes or fills the pixels of the points from number `begin` to before `end`.
template <class T>
void ReadSegment(const Rows<const T>& rows, const LineSegment& line, std::ptrdiff_t begin,
                 std::ptrdiff_t end, T* to) noexcept {
  TraceLineSegment(
      rows, line, begin, end, [&](const T& pixel) { *to++ = pixel; },
      [&](const T* pixels, std::ptrdiff_t n) {
        std::copy_n(pixels, n, to);
        if (line.AlongRow() < 0) ReverseOrder(to, n);
      });
}
template <class T>
void WriteSegment(const Rows<T>& rows, const LineSegment& line, std::ptrdiff_t begin,
                  std::ptrdiff_t end, const T* from) noexcept {
  TraceLineSegment(
      rows, line, begin, end, [&](T& pixel) { pixel = *from++; },
      [&](T* pixels, std::ptrdiff_t n) {
        std::copy_n(from, n, pixels);
        if (line.AlongRow() < 0) ReverseOrder(pixels, n);
      });
}
template <class T>
void FillSegment(const Rows<T>& rows, const LineSegment& line, std::ptrdiff_t begin,
                 std::ptrdiff_t end, T value) noexcept {
  TraceLineSegment(
      rows, line, begin, end, [&](T& pixel) { pixel = value; },
      [&](T* pixels, std::ptrdiff_t n) { std::fill_n(pixels, n, value); });
}

}  // namespace ky
