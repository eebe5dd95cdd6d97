// Levels between the centres of pixels.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

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
    const double px = std::clamp(p.x, 0.0, last_.x), py = std::clamp(p.y, 0.0, last_.y);
    // In the last column and row, the neighbours are those to the left and above.
    const auto x = std::min(static_cast<std::ptrdiff_t>(px), rows_.width - 1 - right_);
    const auto y =
        std::min(static_cast<std::ptrdiff_t>(py), rows_.height - 1 - (below_ != 0 ? 1 : 0));
    const double toRight = px - static_cast<double>(x), down = py - static_cast<double>(y);
    const KyBW8* const upper = rows_.Row(y) + x;
    const KyBW8* const lower = upper + below_;
    const double above = upper[0] + toRight * (upper[right_] - upper[0]);
    const double beneath = lower[0] + toRight * (lower[right_] - lower[0]);
    return above + down * (beneath - above);
  }

  // The mean of 2 half + 1 values, `step` apart, with the middle one at `p`, to within
  // ErrorOf(half) levels. A step is at most one pixel long.
  double MeanAt(Vector2 p, Vector2 step, std::ptrdiff_t half) const noexcept {
    const Vector2 reach = static_cast<double>(half) * step;
    const double count = static_cast<double>(2 * half + 1);
    if (half <= kMostFixed && IsInside(p - reach) && IsInside(p + reach)) {
      const Fixed from = ToFixed(p - reach), by = ToFixed(step);
      const Fixed to = {from.x + 2 * half * by.x, from.y + 2 * half * by.y};
      if (HasNeighbours(from) && HasNeighbours(to))
        return SumInside(from, by, 2 * half + 1) / count;
    }
    double sum = 0;
    for (std::ptrdiff_t j = -half; j <= half; ++j) sum += At(p + static_cast<double>(j) * step);
    return sum / count;
  }

  // By how much means are off at most: values by what is cut off from them, and by up to 512 levels
  // a pixel where their positions are off, which is one unit more at each step.
  static double ErrorOf(std::ptrdiff_t half) noexcept {
    return half > kMostFixed ? 0 : (kCutOff + 512 * static_cast<double>(half + 1)) / kUnits;
  }

 private:
  // Units of fixed point, of pixels and of levels.
  static constexpr int kPlace = 32;
  static constexpr double kUnits = std::int64_t{1} << kPlace;
  // Of differences of levels, so that products with 32 bits fit 64.
  static constexpr int kCut = 13;
  static constexpr double kCutOff = 1 << kCut;
  // Thicker means would be off by more than 2^-13 levels.
  static constexpr std::ptrdiff_t kMostFixed = 960;
  struct Fixed {
    std::int64_t x, y;
  };
  static Fixed ToFixed(Vector2 p) noexcept {
    return {static_cast<std::int64_t>(kUnits * p.x), static_cast<std::int64_t>(kUnits * p.y)};
  }
  // Inside, with a column to the right and a row below.
  bool HasNeighbours(Fixed p) const noexcept {
    return p.x >= 0 && p.x >> kPlace < rows_.width - 1 && p.y >= 0 &&
           p.y >> kPlace < rows_.height - 1;
  }
  // The sum of `count` values from one place on; both ends have neighbours. Integers are twice as
  // fast here.
  double SumInside(Fixed from, Fixed step, std::ptrdiff_t count) const noexcept {
    std::int64_t sum = 0;
    for (std::ptrdiff_t j = 0; j < count; ++j) {
      const KyBW8* const upper = rows_.Row(from.y >> kPlace) + (from.x >> kPlace);
      const KyBW8* const lower = upper + rows_.pitch;
      const std::int64_t right = static_cast<std::uint32_t>(from.x),
                         down = static_cast<std::uint32_t>(from.y);
      const std::int64_t above = (std::int64_t{upper[0]} << kPlace) + right * (upper[1] - upper[0]);
      const std::int64_t beneath =
          (std::int64_t{lower[0]} << kPlace) + right * (lower[1] - lower[0]);
      sum += above + ((down * ((beneath - above) >> kCut)) >> (kPlace - kCut));
      from.x += step.x;
      from.y += step.y;
    }
    return static_cast<double>(sum) / kUnits;
  }

  Rows<const KyBW8> rows_;
  Vector2 last_;
  std::ptrdiff_t right_, below_;  // to the neighbours
};

}  // namespace ky
