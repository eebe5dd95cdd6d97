// Sums over boxes at a cost that does not depend on their size: columns slide down the image, and
// windows along their sums.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "convolution/box_job.h"
#include "convolution/box_rows.h"
#include "convolution/planes.h"
#include "foundation/pitch.h"
#include "foundation/scratch.h"

namespace ky {

// The sums of each column over the rows of the windows, for each plane. Outside, on both sides,
// stands the first or the last of them, or 0.
template <class Columns>
class ColumnSums {
 public:
  using Element = typename Columns::Element;

  bool Allocate(const ColumnSumKernels<Columns>& kernels, const PlaneRows& source, int planes,
                const Box& box, bool nearest) noexcept {
    kernels_ = kernels;
    width_ = source.width();
    halfHeight_ = box.halfHeight;
    half_ = std::min(box.halfWidth, width_);
    beyond_ = static_cast<std::uint32_t>(box.halfWidth - half_);
    nearest_ = nearest;
    // Rows begin at a boundary that suits vectors.
    constexpr std::ptrdiff_t kBoundary = 4 * kCacheLine;
    margin_ = (half_ + kBoundary) / kBoundary * kBoundary;
    pitch_ = (margin_ + width_ + half_ + kColumnSlack + kBoundary - 1) / kBoundary * kBoundary;
    if (!memory_.Allocate(planes * pitch_)) return false;
    std::fill_n(memory_.get(), planes * pitch_, Element{0});
    return true;
  }
  // Those of row y, after those of the row before it.
  SlidingWindows<Columns> Advance(const PlaneRows& source, std::ptrdiff_t y, int plane) noexcept {
    if (y == 0)
      Start(source, plane);
    else
      kernels_.slide(At(plane), static_cast<std::size_t>(width_),
                     source.Row(y + halfHeight_, plane), source.Row(y - halfHeight_ - 1, plane));
    return Along(plane);
  }
  // Those of the first row.
  void Start(const PlaneRows& source, int plane) const noexcept {
    const Columns columns = At(plane);
    AddFirstWindow(halfHeight_, source.height(), nearest_,
                   [&](std::ptrdiff_t y, std::uint64_t times) {
                     const KyBW8* const row = source.Row(y, plane);
                     if (times == 1)
                       return kernels_.add(columns, static_cast<std::size_t>(width_), row);
                     for (std::ptrdiff_t x = 0; x < width_; ++x)
                       *columns.At(x) = static_cast<Element>(*columns.At(x) + times * row[x]);
                   });
  }
  // The windows along a row, whose columns are there.
  SlidingWindows<Columns> Along(int plane) const noexcept {
    const Columns columns = At(plane);
    std::uint32_t before = kernels_.sum(columns, static_cast<std::size_t>(half_));
    if (nearest_) {
      const Element first = *columns.At(0), last = *columns.At(width_ - 1);
      columns.Fill(-half_ - 1, 0, first);
      columns.Fill(width_, width_ + half_, last);
      before += (static_cast<std::uint32_t>(half_) + beyond_ + 1) * first + beyond_ * last;
    }
    return {columns.From(half_), columns.From(-half_ - 1), before};
  }
  // From the first column of the image on.
  Columns At(int plane) const noexcept {
    Element* const at = memory_.get() + plane * pitch_;
    Columns columns;
    const auto phases = std::ssize(columns.of);
    for (std::ptrdiff_t p = 0; p < phases; ++p)
      columns.of[p] = at + (p * pitch_ + margin_) / phases;
    return columns;
  }

 private:
  ColumnSumKernels<Columns> kernels_ = {};
  std::ptrdiff_t width_ = 0, halfHeight_ = 0;
  // What lies so far outside that all windows have it, or none, is not kept: beyond_ columns.
  std::ptrdiff_t half_ = 0;
  std::uint32_t beyond_ = 0;
  bool nearest_ = false;
  std::ptrdiff_t margin_ = 0, pitch_ = 0;
  Scratch<Element> memory_;
};

// What the windows of a row count: how many of their pixels lie inside the image, or all.
class RowAreas {
 public:
  bool Allocate(const Box& box, std::ptrdiff_t width, std::ptrdiff_t height, bool inside) noexcept;
  const WindowAreas& At(std::ptrdiff_t y) noexcept;

 private:
  template <class Set>
  void ForVarious(const Set& set) const noexcept;

  Box box_ = {};
  std::ptrdiff_t width_ = 0, height_ = 0, rows_ = 0;
  bool inside_ = false;
  std::ptrdiff_t pitch_ = 0;
  Scratch<std::int32_t> columns_, areas_;
  Scratch<float> reciprocals_;
  WindowAreas all_ = {};
};

}  // namespace ky
