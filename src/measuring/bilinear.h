// Levels between the centres of pixels.
#pragma once

#include <algorithm>
#include <cstddef>

#include "foundation/rows.h"
#include "measuring/vector2.h"

namespace ky {

// Interpolates between the four nearest pixels of a picture that has some. Positions outside are
// moved to the nearest one inside.
class Bilinear {
 public:
  explicit Bilinear(const Rows<const KyBW8>& rows) noexcept
      : rows_(rows),
        last_{static_cast<double>(rows.width - 1), static_cast<double>(rows.height - 1)},
        right_(rows.width > 1 ? 1 : 0),
        below_(rows.height > 1 ? rows.pitch : 0) {}

  bool IsInside(Vector2 p) const noexcept {
    return p.x >= 0 && p.x <= last_.x && p.y >= 0 && p.y <= last_.y;
  }

  double At(Vector2 p) const noexcept {
    return AtInside({std::clamp(p.x, 0.0, last_.x), std::clamp(p.y, 0.0, last_.y)});
  }

  // The mean of 2 half + 1 values, `step` apart, with the middle one at `p`.
  double MeanAt(Vector2 p, Vector2 step, std::ptrdiff_t half) const noexcept {
    const Vector2 reach = static_cast<double>(half) * step;
    double sum = 0;
    const auto add = [&](const auto& value) {
      for (std::ptrdiff_t j = -half; j <= half; ++j)
        sum += value(p + static_cast<double>(j) * step);
    };
    if (IsInside(p - reach) && IsInside(p + reach))
      add([this](Vector2 at) { return AtInside(at); });
    else
      add([this](Vector2 at) { return At(at); });
    return sum / static_cast<double>(2 * half + 1);
  }

 private:
  double AtInside(Vector2 p) const noexcept {
    // The last column and row are those to the right of, and below, the ones before.
    const auto x = std::min(static_cast<std::ptrdiff_t>(p.x), rows_.width - 1 - right_);
    const auto y =
        std::min(static_cast<std::ptrdiff_t>(p.y), rows_.height - 1 - (below_ != 0 ? 1 : 0));
    const double toRight = p.x - static_cast<double>(x), down = p.y - static_cast<double>(y);
    const KyBW8* const upper = rows_.Row(y) + x;
    const KyBW8* const lower = upper + below_;
    const double above = upper[0] + toRight * (upper[right_] - upper[0]);
    const double beneath = lower[0] + toRight * (lower[right_] - lower[0]);
    return above + down * (beneath - above);
  }

  Rows<const KyBW8> rows_;
  Vector2 last_;
  std::ptrdiff_t right_, below_;  // to the neighbours
};

}  // namespace ky
