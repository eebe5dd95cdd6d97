// Where the pixels of a destination come from, in fixed point.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "geometry/gather.h"

namespace ky {

// Source positions are 16.16 fixed point, modulo 2^32: pixel floor(u / 2^16), read as signed.
inline constexpr std::uint32_t kOnePixel = 1u << 16;

// Positions along a row of the destination: (u, v), (u + du, v + dv), ...
struct SourceLine {
  std::uint32_t u, v, du, dv;

  SourceLine Advance(std::ptrdiff_t columns) const noexcept {
    const auto n = static_cast<std::uint32_t>(columns);
    return {u + n * du, v + n * dv, du, dv};
  }
  Position Pixel() const noexcept {
    return {static_cast<std::uint32_t>(static_cast<std::int32_t>(u) >> 16),
            static_cast<std::uint32_t>(static_cast<std::int32_t>(v) >> 16)};
  }
};

// u = ux * column + uy * row + u0, and v likewise.
struct InverseMap {
  std::uint32_t ux, uy, u0, vx, vy, v0;

  SourceLine At(std::ptrdiff_t column, std::ptrdiff_t row) const noexcept {
    const auto y = static_cast<std::uint32_t>(row);
    return SourceLine{uy * y + u0, vy * y + v0, ux, vx}.Advance(column);
  }
  // True when no position has a fraction.
  bool OnPixels() const noexcept { return ((ux | uy | u0 | vx | vy | v0) & (kOnePixel - 1)) == 0; }
};

// A float in 16.16, truncated toward zero, modulo 2^32: 0 where 2^16 times the float is 2^55 or
// more. Infinities and NaN count as 0 too.
inline std::uint32_t ToFixed(float value) noexcept {
  const float scaled = value * 65536.0f;
  if (!(std::fabs(scaled) < 0x1p63f)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(scaled));
}

// The steps k of 0..n - 1, from `first` up to but not including `end`, that meet a condition.
struct Steps {
  std::ptrdiff_t first, end;
};

// Where 0 <= at + k * step < limit.
inline Steps StepsInside(std::int64_t at, std::int64_t step, std::int64_t limit,
                         std::ptrdiff_t n) noexcept {
  if (limit <= 0) return {0, 0};
  if (step < 0) return StepsInside(limit - 1 - at, -step, limit, n);
  if (step == 0) return {0, at >= 0 && at < limit ? n : 0};
  const std::int64_t first = at >= 0 ? 0 : (step - 1 - at) / step;
  const std::int64_t end = at >= limit ? 0 : (limit - 1 - at) / step + 1;
  return {std::min<std::int64_t>(first, n), std::min<std::int64_t>(end, n)};
}

// The number of places, the current one included, that `at` takes before it wraps around.
inline std::int64_t StepsToWrap(std::int64_t at, std::int64_t step) noexcept {
  if (step == 0) return PTRDIFF_MAX;
  return (step > 0 ? INT32_MAX - at : at - INT32_MIN) / std::abs(step) + 1;
}

// Splits the n places of a line at the edges of a source of `width` x `height` pixels: calls
// inside(first, count, line from there on) and outside(first, count), neither for 0 places. This
// is all the bounds testing there is.
template <class Inside, class Outside>
void SplitLine(SourceLine line, std::ptrdiff_t n, std::ptrdiff_t width, std::ptrdiff_t height,
               const Inside& inside, const Outside& outside) {
  const auto signedOf = [](std::uint32_t value) {
    return std::int64_t{static_cast<std::int32_t>(value)};
  };
  const std::int64_t du = signedOf(line.du), dv = signedOf(line.dv);
  for (std::ptrdiff_t x = 0; x < n;) {
    const std::int64_t u = signedOf(line.u), v = signedOf(line.v);
    const std::ptrdiff_t straight = std::min({n - x, StepsToWrap(u, du), StepsToWrap(v, dv)});
    const Steps byColumn = StepsInside(u, du, width * std::int64_t{kOnePixel}, straight);
    const Steps byRow = StepsInside(v, dv, height * std::int64_t{kOnePixel}, straight);
    const std::ptrdiff_t first = std::max(byColumn.first, byRow.first);
    const std::ptrdiff_t end = std::max(first, std::min(byColumn.end, byRow.end));
    if (first > 0) outside(x, first);
    if (end > first) inside(x + first, end - first, line.Advance(first));
    if (straight > end) outside(x + end, straight - end);
    x += straight;
    line = line.Advance(straight);
  }
}

}  // namespace ky
