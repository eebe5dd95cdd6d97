#include "convolution/box_sums.h"

namespace ky {

bool RowAreas::Allocate(const Box& box, std::ptrdiff_t width, std::ptrdiff_t height,
                        bool inside) noexcept {
  box_ = box;
  width_ = width;
  height_ = height;
  inside_ = inside;
  rows_ = 0;
  all_.right = static_cast<std::size_t>(width) + kAreaPlaces;
  if (!inside) return true;
  const auto places = static_cast<std::ptrdiff_t>(kAreaPlaces);
  const auto roundUp = [&](std::ptrdiff_t n) { return (n + places - 1) / places * places; };
  pitch_ = roundUp(width) / 4;
  if (!areas_.Allocate(4 * pitch_) || !reciprocals_.Allocate(4 * pitch_)) return false;
  const std::ptrdiff_t left = std::min(box.halfWidth, width);
  all_.left = static_cast<std::size_t>(left);
  all_.right = static_cast<std::size_t>(std::max(left, width - left));
  for (int phase = 0; phase < 4; ++phase) {
    all_.areas.of[phase] = areas_.get() + phase * pitch_;
    all_.reciprocals.of[phase] = reciprocals_.get() + phase * pitch_;
  }
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
  const SamePlaces same = SamePlacesOf(all_, kAreaPlaces);
  Set(0, static_cast<std::ptrdiff_t>(same.begin));
  Set(static_cast<std::ptrdiff_t>(same.end), 4 * pitch_);
  return all_;
}

// Those of places begin to end - 1, which may lie beyond the row.
void RowAreas::Set(std::ptrdiff_t begin, std::ptrdiff_t end) noexcept {
  for (std::ptrdiff_t x = begin; x < end; ++x) {
    const std::ptrdiff_t columns = CountInside(std::min(x, width_ - 1), box_.halfWidth, width_);
    const std::ptrdiff_t at = x % 4 * pitch_ + x / 4;
    areas_[at] = static_cast<std::int32_t>(columns * rows_);
    reciprocals_[at] = 1 / static_cast<float>(areas_[at]);
  }
}

}  // namespace ky
