// The rectangle that a chart fills, and its axes.
#pragma once

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace ky {

// `samples` values side by side, each at the middle of its share of the width, from 0 at the bottom
// to `highest`, above 0, at the top.
struct Chart {
  double width, height;
  unsigned samples, highest;

  double Left(double sample) const noexcept { return sample / samples * width; }
  double Middle(double sample) const noexcept { return Left(sample + 0.5); }
  double Up(double value) const noexcept { return height - value / highest * height; }
};

// Calls body(first, end) for all samples in order: one by one or, where there are many of them to
// a unit of the device (a pixel, a point of paper), those of each half unit at once. Cairo takes
// seconds for curves of ten thousands of samples, and a pixel shows no more than their extremes.
template <class Body>
void ForEachColumn(cairo_t* context, const Chart& chart, const Body& body) noexcept {
  double right = chart.width, down = 0;
  cairo_user_to_device_distance(context, &right, &down);
  const double halves = std::max(1.0, std::ceil(2 * std::hypot(right, down)));
  const std::uint64_t samples = chart.samples;
  const bool many = chart.samples > 2 * halves;
  const auto columns = many ? static_cast<std::uint64_t>(halves) : samples;
  for (std::uint64_t i = 0; i < columns; ++i)
    body(static_cast<unsigned>(i * samples / columns),
         static_cast<unsigned>((i + 1) * samples / columns));
}

// Draws axes with ticks and numbers to the left of the chart and below it, without touching it;
// none in a font of thousands of the device's units, whose numbers nobody would see as such.
void DrawAxes(cairo_t* context, const Chart& chart) noexcept;

}  // namespace ky
