// Sums over boxes at a cost that does not depend on their size: columns slide down the image, and
// the sum of a window is the difference of two prefix sums of its columns.
#pragma once

#include <algorithm>
#include <cstdint>

#include "convolution/box_rows.h"
#include "convolution/planes.h"
#include "foundation/pitch.h"
#include "foundation/scratch.h"

namespace ky {

struct Box {
  std::ptrdiff_t halfWidth, halfHeight;

  std::int64_t Area() const noexcept { return (2 * halfWidth + 1) * (2 * halfHeight + 1); }
  // The part of it that can lie in an image.
  Box On(std::ptrdiff_t width, std::ptrdiff_t height) const noexcept {
    return {std::min(halfWidth, width - 1), std::min(halfHeight, height - 1)};
  }
};

// What kernels read and write beyond a row, in elements.
inline constexpr std::ptrdiff_t kSumSlack = 64;

// The sum of each column over the rows of the windows, for each plane.
template <class Column>
class ColumnSums {
 public:
  bool Allocate(const ColumnKernels<Column>& kernels, const PlaneRows& source, int planes,
                std::ptrdiff_t halfHeight) noexcept {
    kernels_ = kernels;
    width_ = static_cast<std::size_t>(source.width());
    halfHeight_ = halfHeight;
    pitch_ = source.width() + kSumSlack;
    if (!columns_.Allocate(planes * pitch_)) return false;
    std::fill_n(columns_.get(), planes * pitch_, Column{0});
    return true;
  }
  // Those of row y, after those of the row before it.
  Column* Advance(const PlaneRows& source, std::ptrdiff_t y, int plane) noexcept {
    Column* const columns = columns_.get() + plane * pitch_;
    if (y == 0)
      Start(columns, source, plane);
    else
      kernels_.slide(columns, width_, source.Row(y + halfHeight_, plane),
                     source.Row(y - halfHeight_ - 1, plane));
    return columns;
  }
  const ColumnKernels<Column>& kernels() const noexcept { return kernels_; }

 private:
  void Start(Column* columns, const PlaneRows& source, int plane) const noexcept {
    const auto add = [&](std::ptrdiff_t y, std::ptrdiff_t times) {
      if (times > 0)
        kernels_.add(columns, width_, source.Row(y, plane), static_cast<Column>(times));
    };
    const std::ptrdiff_t last = std::min(halfHeight_, source.height() - 1);
    add(-1, halfHeight_);
    for (std::ptrdiff_t y = 0; y <= last; ++y) add(y, 1);
    add(source.height(), halfHeight_ - last);
  }

  ColumnKernels<Column> kernels_ = {};
  std::size_t width_ = 0;
  std::ptrdiff_t halfHeight_ = 0, pitch_ = 0;
  Scratch<Column> columns_;
};

// The prefix sums of a row of columns, continued on both sides. What lies so far outside that no
// window has anything else on that side is left to a constant.
class RowSums {
 public:
  bool Allocate(const BoxKernels& kernels, std::ptrdiff_t halfWidth,
                std::ptrdiff_t width) noexcept {
    kernels_ = &kernels;
    width_ = width;
    half_ = std::min(halfWidth, width);
    beyond_ = static_cast<std::uint32_t>(halfWidth - half_);
    margin_ = half_ / 2 + 1;
    const std::ptrdiff_t phase = (width + 2 * half_) / 2 + 2 + kSumSlack;
    if (!memory_.Allocate(2 * phase)) return false;
    std::fill_n(memory_.get(), 2 * phase, 0u);
    sums_ = {memory_.get() + margin_, memory_.get() + phase + margin_};
    return true;
  }
  // The sums of all windows of a row. Outside stands the first or the last column, or 0.
  template <class Column>
  WindowSums Make(const ColumnKernels<Column>& kernels, const Column* columns,
                  bool nearest) const noexcept {
    const std::uint32_t first = nearest ? columns[0] : 0u;
    const std::uint32_t last = nearest ? columns[width_ - 1] : 0u;
    // Place -1 - k holds -k times the first column.
    const auto before = static_cast<std::uint32_t>(2 * margin_);
    const auto margin = static_cast<std::size_t>(margin_);
    kernels_->ramp(sums_.even - margin_, margin, first * (1 - before), 2 * first);
    kernels_->ramp(sums_.odd - margin_, margin, first * (2 - before), 2 * first);
    kernels.sum(sums_, static_cast<std::size_t>(width_), columns);
    const std::uint32_t all = *sums_.At(width_ - 1) + beyond_ * (first + last);
    const auto after = static_cast<std::size_t>(half_ / 2 + 1);
    kernels_->ramp(sums_.At(width_), after, all + last, 2 * last);
    kernels_->ramp(sums_.At(width_ + 1), after, all + 2 * last, 2 * last);
    return {{sums_.At(half_), sums_.At(half_ + 1)}, {sums_.At(-half_ - 1), sums_.At(-half_)}};
  }

 private:
  const BoxKernels* kernels_ = nullptr;
  std::ptrdiff_t width_ = 0, half_ = 0, margin_ = 0;
  std::uint32_t beyond_ = 0;
  Phases<std::uint32_t> sums_;
  Scratch<std::uint32_t> memory_;
};

// What the windows of a row count: how many of their pixels lie inside the image, or all.
class RowAreas {
 public:
  // With deviations, rows outside the image are of kMiddleLevel.
  bool Allocate(const Box& box, std::ptrdiff_t width, std::ptrdiff_t height, bool inside,
                bool deviations) noexcept;
  const WindowAreas& At(std::ptrdiff_t y) noexcept;

 private:
  void Set(std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t columns) noexcept;

  Box box_ = {};
  std::ptrdiff_t width_ = 0, height_ = 0, rows_ = 0;
  bool inside_ = false;
  std::ptrdiff_t pitch_ = 0;
  Scratch<std::int32_t> areas_, biases_;
  Scratch<float> reciprocals_;
  Scratch<double> precise_;
  WindowAreas all_ = {};
};

}  // namespace ky
