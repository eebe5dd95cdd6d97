#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "drawing/chart.h"

namespace ky {
namespace {

using Label = std::array<char, 24>;

// A multiple of `step`, which is 1, 2 or 5 times a power of ten: 0, 200, 4k, 20M.
Label LabelOf(std::uint64_t value, std::uint64_t step) noexcept {
  struct Unit {
    std::uint64_t size;
    const char* name;
  };
  constexpr Unit kUnits[] = {{1000000000, "G"}, {1000000, "M"}, {1000, "k"}, {1, ""}};
  const Unit& unit = *std::ranges::find_if(kUnits, [&](const Unit& u) { return step >= u.size; });
  Label label;
  std::snprintf(label.data(), label.size(), "%" PRIu64 "%s", value / unit.size,
                value == 0 ? "" : unit.name);
  return label;
}

// However small the font is, there are no more ticks than this.
constexpr unsigned kMostTicks = 40;

// The least of 1, 2, 5, 10, 20, 50, ... that `fits`, or one above `last`, of which only 0 remains.
template <class Fits>
std::uint64_t StepOf(std::uint64_t last, const Fits& fits) noexcept {
  for (std::uint64_t power = 1;; power *= 10)
    for (const std::uint64_t digit : {1, 2, 5}) {
      const std::uint64_t step = digit * power;
      if (step > last || (last / step <= kMostTicks && fits(step))) return step;
    }
}

// Measures of axes, all from the font.
struct Style {
  explicit Style(cairo_t* context) noexcept {
    cairo_font_extents(context, &font);
    const double size = font.ascent + font.descent;
    line = 0.06 * size;
    tick = 0.3 * size;
    gap = 0.2 * size;
    distance = 1.5 * size;
  }

  cairo_font_extents_t font;
  double line, tick, gap;  // widths and lengths of lines, and from a tick to its number
  double distance;         // between ticks above each other, at least
};

// Cairo 1.16 fails to make fonts larger than about 65536 units of the device, and makes none of
// that face any more in the process when it has failed once.
bool CanMakeFont(cairo_t* context) noexcept {
  constexpr double kMost = 4096;
  cairo_matrix_t font, user;
  cairo_get_font_matrix(context, &font);
  cairo_get_matrix(context, &user);
  cairo_matrix_multiply(&font, &font, &user);
  return std::hypot(font.xx, font.yx) <= kMost && std::hypot(font.xy, font.yy) <= kMost;
}

double WidthOf(cairo_t* context, const Label& label) noexcept {
  cairo_text_extents_t extents;
  cairo_text_extents(context, label.data(), &extents);
  return extents.x_advance;
}

// Below: sample numbers. Returns how far they are apart.
std::uint64_t DrawSamples(cairo_t* context, const Chart& chart, const Style& style) noexcept {
  const std::uint64_t last = chart.samples - 1;
  const std::uint64_t step = StepOf(last, [&](std::uint64_t s) {
    return chart.Left(static_cast<double>(s)) >= WidthOf(context, LabelOf(last, s)) + 4 * style.gap;
  });
  const double bottom = chart.height + style.tick + style.gap + style.font.ascent;
  for (std::uint64_t sample = 0; sample <= last; sample += step) {
    const Label label = LabelOf(sample, step);
    const double middle = chart.Middle(static_cast<double>(sample));
    cairo_move_to(context, middle - WidthOf(context, label) / 2, bottom);
    cairo_show_text(context, label.data());
  }
  return step;
}

// To the left: values. Returns how far they are apart.
std::uint64_t DrawValues(cairo_t* context, const Chart& chart, const Style& style) noexcept {
  const std::uint64_t step = StepOf(chart.highest, [&](std::uint64_t s) {
    return chart.Up(0) - chart.Up(static_cast<double>(s)) >= style.distance;
  });
  const double middle = (style.font.ascent - style.font.descent) / 2;
  for (std::uint64_t value = 0; value <= chart.highest; value += step) {
    const Label label = LabelOf(value, step);
    cairo_move_to(context, -style.tick - style.gap - WidthOf(context, label),
                  chart.Up(static_cast<double>(value)) + middle);
    cairo_show_text(context, label.data());
  }
  return step;
}

}  // namespace

// Lines are rectangles, so that they need no line width and no dashes.
void DrawAxes(cairo_t* context, const Chart& chart) noexcept {
  if (!CanMakeFont(context)) return;
  const Style style(context);
  const std::uint64_t sampleStep = DrawSamples(context, chart, style),
                      valueStep = DrawValues(context, chart, style);
  const double line = style.line, length = style.tick - line;
  cairo_new_path(context);
  for (std::uint64_t sample = 0; sample < chart.samples; sample += sampleStep)
    cairo_rectangle(context, chart.Middle(static_cast<double>(sample)) - line / 2,
                    chart.height + line, line, length);
  for (std::uint64_t value = 0; value <= chart.highest; value += valueStep)
    cairo_rectangle(context, -style.tick, chart.Up(static_cast<double>(value)) - line / 2, length,
                    line);
  cairo_rectangle(context, -line, -line / 2, line, chart.height + 1.5 * line);
  cairo_rectangle(context, 0, chart.height, chart.width, line);
  cairo_fill(context);
}

}  // namespace ky
