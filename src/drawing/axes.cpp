#include <algorithm>
#include <array>
#include <cstdio>

#include "drawing/chart.h"

namespace ky {
namespace {

using Label = std::array<char, 24>;

// A multiple of `step`, which is 1, 2 or 5 times a power of ten: 0, 200, 4k, 20M.
Label LabelOf(double value, double step) noexcept {
  struct Unit {
    double size;
    const char* name;
  };
  constexpr Unit kUnits[] = {{1e9, "G"}, {1e6, "M"}, {1e3, "k"}, {1, ""}};
  const Unit& unit = *std::ranges::find_if(kUnits, [&](const Unit& u) { return step >= u.size; });
  Label label;
  std::snprintf(label.data(), label.size(), "%.0f%s", value / unit.size,
                value == 0 ? "" : unit.name);
  return label;
}

// The least of 1, 2, 5, 10, 20, 50, ... that `fits`, or one above `last`, of which only 0 remains.
template <class Fits>
double StepOf(double last, const Fits& fits) noexcept {
  for (double power = 1;; power *= 10)
    for (const double digit : {1, 2, 5})
      if (const double step = digit * power; step > last || fits(step)) return step;
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

double WidthOf(cairo_t* context, const Label& label) noexcept {
  cairo_text_extents_t extents;
  cairo_text_extents(context, label.data(), &extents);
  return extents.x_advance;
}

// However small the font is, there are no more ticks than this.
constexpr double kMostTicks = 40;

// Below: sample numbers.
double DrawSamples(cairo_t* context, const Chart& chart, const Style& style) noexcept {
  const double last = chart.samples - 1.0;
  const double step = StepOf(last, [&](double s) {
    const double needed = WidthOf(context, LabelOf(last, s)) + 4 * style.gap;
    return chart.Left(s) >= needed && last / s <= kMostTicks;
  });
  const double bottom = chart.height + style.tick + style.gap + style.font.ascent;
  for (double sample = 0; sample <= last; sample += step) {
    const Label label = LabelOf(sample, step);
    cairo_move_to(context, chart.Middle(sample) - WidthOf(context, label) / 2, bottom);
    cairo_show_text(context, label.data());
  }
  return step;
}

// To the left: values.
double DrawValues(cairo_t* context, const Chart& chart, const Style& style) noexcept {
  const double step = StepOf(chart.highest, [&](double s) {
    return s / chart.highest * chart.height >= style.distance && chart.highest / s <= kMostTicks;
  });
  const double middle = (style.font.ascent - style.font.descent) / 2;
  for (double value = 0; value <= chart.highest; value += step) {
    const Label label = LabelOf(value, step);
    cairo_move_to(context, -style.tick - style.gap - WidthOf(context, label),
                  chart.Up(value) + middle);
    cairo_show_text(context, label.data());
  }
  return step;
}

}  // namespace

// Lines are rectangles, so that they need no line width and no dashes.
void DrawAxes(cairo_t* context, const Chart& chart) noexcept {
  const Style style(context);
  const double line = style.line, sampleStep = DrawSamples(context, chart, style),
               valueStep = DrawValues(context, chart, style);
  cairo_new_path(context);
  for (double sample = 0; sample < chart.samples; sample += sampleStep)
    cairo_rectangle(context, chart.Middle(sample) - line / 2, chart.height + line, line,
                    style.tick - line);
  for (double value = 0; value <= chart.highest; value += valueStep)
    cairo_rectangle(context, -style.tick, chart.Up(value) - line / 2, style.tick - line, line);
  cairo_rectangle(context, -line, -line / 2, line, chart.height + 1.5 * line);
  cairo_rectangle(context, 0, chart.height, chart.width, line);
  cairo_fill(context);
}

}  // namespace ky
