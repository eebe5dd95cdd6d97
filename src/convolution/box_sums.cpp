#include "convolution/box_sums.h"

namespace ky {

bool RowAreas::Allocate(const Box& box, std::ptrdiff_t width, std::ptrdiff_t height,
                        bool inside) noexcept {
  box_ = box;
  width_ = width;
  height_ = height;
  inside_ = inside;
  rows_ = 0;
  all_.right = static_cast<std::size_t>(width + kAreaMargin);
  if (!inside) return true;
  constexpr std::ptrdiff_t kBoundary = 64;
  pitch_ = (width + kAreaMargin + kBoundary - 1) / kBoundary * kBoundary / 4;
  if (!columns_.Allocate(4 * pitch_) || !areas_.Allocate(4 * pitch_) ||
      !reciprocals_.Allocate(4 * pitch_))
    return false;
  const std::ptrdiff_t left = std::min(box.halfWidth, width);
  all_.left = static_cast<std::size_t>(left);
  all_.right = static_cast<std::size_t>(std::max(left, width - left));
  for (int phase = 0; phase < 4; ++phase) {
    all_.areas.of[phase] = areas_.get() + phase * pitch_;
    all_.reciprocals.of[phase] = reciprocals_.get() + phase * pitch_;
  }
  ForVarious([&](std::ptrdiff_t phase, std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      const std::ptrdiff_t x = std::min(4 * i + phase, width - 1);
      const std::ptrdiff_t columns = CountInside(x, box.halfWidth, width);
      columns_[phase * pitch_ + i] = static_cast<std::int32_t>(columns);
    }
  });
  return true;
}

const WindowAreas& RowAreas::At(std::ptrdiff_t y) noexcept {
  const std::ptrdiff_t rows =
      inside_ ? CountInside(y, box_.halfHeight, height_) : 2 * box_.halfHeight + 1;
  if (rows == rows_) return all_;
  rows_ = rows;
  all_.area = static_cast<std::int32_t>((2 * box_.halfWidth + 1) * rows);
  all_.reciprocal = 1 / static_cast<float>(all_.area);
  if (!inside_) return all_;
  ForVarious([&](std::ptrdiff_t phase, std::ptrdiff_t begin, std::ptrdiff_t end) {
    const std::int32_t* const columns = columns_.get() + phase * pitch_;
    std::int32_t* const areas = areas_.get() + phase * pitch_;
    float* const reciprocals = reciprocals_.get() + phase * pitch_;
    const auto times = static_cast<std::int32_t>(rows);
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      areas[i] = columns[i] * times;
      reciprocals[i] = 1 / static_cast<float>(areas[i]);
    }
  });
  return all_;
}

// Calls set(phase, begin, end) for all places 4 i + phase, i from begin to end - 1, that stand in
// the arrays.
template <class Set>
void RowAreas::ForVarious(const Set& set) const noexcept {
  const auto left = static_cast<std::ptrdiff_t>(all_.left);
  const auto right = static_cast<std::ptrdiff_t>(all_.right);
  for (std::ptrdiff_t phase = 0; phase < 4; ++phase) {
    set(phase, 0, std::min((left + kAreaMargin + 3) / 4, pitch_));
    set(phase, std::max<std::ptrdiff_t>(right - kAreaMargin, 0) / 4, pitch_);
  }
}

}  // namespace ky
