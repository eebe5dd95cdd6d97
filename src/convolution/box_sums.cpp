#include "convolution/box_sums.h"

namespace ky {

bool RowAreas::Allocate(const Box& box, std::ptrdiff_t width, std::ptrdiff_t height, bool inside,
                        bool deviations) noexcept {
  box_ = box;
  width_ = width;
  height_ = height;
  inside_ = inside;
  rows_ = 0;
  pitch_ = width / 2 + 1 + kSumSlack;
  if (!areas_.Allocate(2 * pitch_) || !reciprocals_.Allocate(2 * pitch_) ||
      (deviations && (!precise_.Allocate(2 * pitch_) || !biases_.Allocate(2 * pitch_))))
    return false;
  // Lanes beyond a row divide by these.
  std::fill_n(areas_.get(), 2 * pitch_, 1);
  std::fill_n(reciprocals_.get(), 2 * pitch_, 1.0f);
  for (int phase = 0; phase < 2; ++phase) {
    const std::ptrdiff_t at = phase * pitch_;
    all_.area[phase] = areas_.get() + at;
    all_.reciprocal[phase] = reciprocals_.get() + at;
    if (!deviations) continue;
    std::fill_n(precise_.get() + at, pitch_, 1.0);
    std::fill_n(biases_.get() + at, pitch_, 0);
    all_.precise[phase] = precise_.get() + at;
    all_.bias[phase] = biases_.get() + at;
  }
  return true;
}

const WindowAreas& RowAreas::At(std::ptrdiff_t y) noexcept {
  const std::ptrdiff_t rows =
      inside_ ? CountInside(y, box_.halfHeight, height_) : 2 * box_.halfHeight + 1;
  if (rows == rows_) return all_;
  rows_ = rows;
  if (!inside_) {
    Set(0, width_, 2 * box_.halfWidth + 1);
    return all_;
  }
  const std::ptrdiff_t left = std::min(box_.halfWidth, width_);
  const std::ptrdiff_t right = std::max(left, width_ - box_.halfWidth);
  const auto setEach = [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t x = begin; x < end; ++x)
      Set(x, x + 1, CountInside(x, box_.halfWidth, width_));
  };
  setEach(0, left);
  if (left < right) Set(left, right, 2 * box_.halfWidth + 1);
  setEach(right, width_);
  return all_;
}

// The same number of columns for places begin to end - 1.
void RowAreas::Set(std::ptrdiff_t begin, std::ptrdiff_t end, std::ptrdiff_t columns) noexcept {
  const auto area = static_cast<std::int32_t>(columns * rows_);
  for (int phase = 0; phase < 2; ++phase) {
    const std::ptrdiff_t first = (begin + 1 - phase) / 2, n = (end + 1 - phase) / 2 - first;
    const std::ptrdiff_t at = phase * pitch_ + first;
    std::fill_n(areas_.get() + at, n, area);
    std::fill_n(reciprocals_.get() + at, n, 1 / static_cast<float>(area));
    if (precise_.get() == nullptr) continue;
    std::fill_n(precise_.get() + at, n, 1 / static_cast<double>(area));
    std::fill_n(biases_.get() + at, n,
                static_cast<std::int32_t>(kMiddleLevel * (2 * box_.halfHeight + 1) * columns));
  }
}

}  // namespace ky
