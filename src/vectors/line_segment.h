// Digital line segments (Bresenham).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "foundation/kernels/mirror_rows.h"
#include "foundation/point.h"
#include "foundation/rows.h"

namespace ky {

// The points from one position to another: one more than there are steps along the longer axis.
// Each step goes one pixel along that axis, and some go one pixel along the other as well.
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
  // The step along the longer axis, and the one along the other.
  Point Along() const noexcept { return steep_ ? Point{0, down_} : Point{right_, 0}; }
  Point Aside() const noexcept { return steep_ ? Point{right_, 0} : Point{0, down_}; }
  // A piece of a row: 1 from left to right, -1 from right to left, otherwise 0.
  std::ptrdiff_t AlongRow() const noexcept { return !steep_ && minor_ == 0 ? right_ : 0; }

 private:
  template <class Visit>
  friend void TraceSteps(const LineSegment& line, std::ptrdiff_t begin, std::ptrdiff_t end,
                         Visit&& visit) noexcept;

  Point from_;
  std::ptrdiff_t right_, down_;
  std::ptrdiff_t major_, minor_;
  bool steep_;
};

// visit(i, across) for the points from number `begin` to before `end`, in order: i steps along the
// longer axis and `across` steps along the other lead to each. `across`, (major / 2 + i minor) /
// major, is summed up in units of 2^-32 from terms that are rounded up. Each point makes the sum
// too large by one unit at most, and an excess of 2^32 / major units could be wrong, so the sum
// starts anew before that. (A sum waits for nothing but the one before it, so that many pixels are
// under way at the same time.)
template <class Visit>
void TraceSteps(const LineSegment& line, std::ptrdiff_t begin, std::ptrdiff_t end,
                Visit&& visit) noexcept {
  constexpr int kBits = 32;
  const auto major = static_cast<std::uint64_t>(std::max<std::ptrdiff_t>(line.major_, 1));
  const auto minor = static_cast<std::uint64_t>(line.minor_);
  const std::uint64_t step = (minor << kBits) / major + 1;
  const auto most = static_cast<std::ptrdiff_t>((std::uint64_t{1} << kBits) / major) - 1;
  while (begin < end) {
    const std::uint64_t numerator = major / 2 + static_cast<std::uint64_t>(begin) * minor;
    const auto whole = static_cast<std::ptrdiff_t>(numerator / major);
    std::uint64_t sum = ((numerator % major) << kBits) / major + 1;
    const std::ptrdiff_t stop = begin + std::min(end - begin, most);
    for (; begin < stop; ++begin, sum += step)
      visit(begin, whole + static_cast<std::ptrdiff_t>(sum >> kBits));
  }
}

// visit(x, y) for the same points.
template <class Visit>
void TraceLineSegment(const LineSegment& line, std::ptrdiff_t begin, std::ptrdiff_t end,
                      Visit&& visit) noexcept {
  const Point from = line.At(0), along = line.Along(), aside = line.Aside();
  TraceSteps(line, begin, end, [&](std::ptrdiff_t i, std::ptrdiff_t across) {
    visit(from.x + i * along.x + across * aside.x, from.y + i * along.y + across * aside.y);
  });
}

// The same with the pixels of the points, which lie inside; `row(pixels, n)` where they are n
// pixels of a row, from its left end on even when the line comes from the right.
template <class T, class Visit, class Row>
void TraceLineSegment(const Rows<T>& rows, const LineSegment& line, std::ptrdiff_t begin,
                      std::ptrdiff_t end, Visit&& visit, Row&& row) noexcept {
  if (line.AlongRow() != 0) {
    const Point left = line.At(line.AlongRow() > 0 ? begin : end - 1);
    row(rows.Row(left.y) + left.x, end - begin);
    return;
  }
  const Point from = line.At(0);
  const Rows<T> bytes = {rows.Row(from.y) + from.x, 1, 0, 0};  // its rows start at every byte
  const auto bytesOf = [&](Point step) {
    return step.x * std::ptrdiff_t{sizeof(T)} + step.y * rows.pitch;
  };
  const std::ptrdiff_t along = bytesOf(line.Along()), aside = bytesOf(line.Aside());
  TraceSteps(line, begin, end, [&](std::ptrdiff_t i, std::ptrdiff_t across) {
    visit(*bytes.Row(i * along + across * aside));
  });
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
