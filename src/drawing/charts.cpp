#include <algorithm>

#include "drawing/chart.h"
#include "drawing/context.h"
#include "ky/drawing.h"

namespace {

using ky::Chart;

// Far inside what Cairo's coordinates hold, and far beyond any paper.
constexpr double kMostSide = 4194304;

// `first` is the code of the width; the one after it is that of the height.
KY_ERRORS CheckSides(double width, double height, KY_ERRORS first) noexcept {
  const auto isSide = [](double side) { return side >= 0 && side <= kMostSide; };
  if (!isSide(width)) return ky::OutOfRange(first, "width");
  return isSide(height) ? KY_OK : ky::OutOfRange(static_cast<KY_ERRORS>(first + 1), "height");
}

// The frame of a chart of a vector with one value or several for each sample.
template <class Vector, class Draw>
KY_ERRORS DrawChart(const char* name, cairo_t* context, const Vector* vector, double width,
                    double height, const Draw& draw) noexcept {
  return ky::Call(name, [&] {
    if (const KY_ERRORS error = ky::CheckContext(context)) return error;
    if (vector == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = CheckSides(width, height, KY_ERROR_PARAMETER_1_OUT_OF_RANGE))
      return error;
    const unsigned samples = vector->GetNumElements();
    if (samples == 0) return KY_OK;
    return ky::DrawKeepingState(context, [&] { draw(Chart{width, height, samples, 255}); });
  });
}

// The levels as a curve in the context's colour. Joins are round: mitres would lengthen spikes.
template <class Element, class LevelOf>
void DrawCurve(cairo_t* context, const Chart& chart, const Element* elements,
               const LevelOf& levelOf) noexcept {
  const auto less = [&](const Element& a, const Element& b) { return levelOf(a) < levelOf(b); };
  const auto lineTo = [&](const Element* element) {
    cairo_line_to(context, chart.Middle(static_cast<double>(element - elements)),
                  chart.Up(levelOf(*element)));
  };
  cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
  cairo_move_to(context, 0, chart.Up(levelOf(elements[0])));
  ky::ForEachColumn(context, chart, [&](unsigned first, unsigned end) {
    const auto [low, high] = std::minmax_element(elements + first, elements + end, less);
    lineTo(std::min(low, high));
    if (low != high) lineTo(std::max(low, high));
  });
  cairo_line_to(context, chart.width, chart.Up(levelOf(elements[chart.samples - 1])));
  cairo_stroke(context);
}

// As one area, so that no seams show between the bars.
void DrawBars(cairo_t* context, const Chart& chart, const unsigned* counts) noexcept {
  cairo_move_to(context, 0, chart.height);
  ky::ForEachColumn(context, chart, [&](unsigned first, unsigned end) {
    const double up = chart.Up(*std::max_element(counts + first, counts + end));
    cairo_line_to(context, chart.Left(first), up);
    cairo_line_to(context, chart.Left(end), up);
  });
  cairo_line_to(context, chart.width, chart.height);
  cairo_close_path(context);
  cairo_fill(context);
}

// What lies outside the profile is cut off, and the line by the band that it stands in.
void DrawPeak(cairo_t* context, const Chart& chart, const KyPeak& peak) noexcept {
  const auto inside = [&](double sample) {
    return chart.Left(std::min(sample, static_cast<double>(chart.samples)));
  };
  const double start = peak.start, left = inside(start), right = inside(start + peak.length),
               center = chart.Middle(static_cast<double>(peak.center));
  cairo_save(context);
  cairo_rectangle(context, left, 0, right - left, chart.height);
  cairo_clip(context);
  cairo_paint_with_alpha(context, 0.25);
  if (center >= left && center <= right) {
    cairo_move_to(context, center, 0);
    cairo_line_to(context, center, chart.height);
    cairo_stroke(context);
  }
  cairo_restore(context);
}

void DrawPath(cairo_t* context, const KyPathVector& path) noexcept {
  if (path.GetNumElements() == 1) cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
  for (const KyPath& point : path) cairo_line_to(context, point.x + 0.5, point.y + 0.5);
  if (path.GetClosed() != 0 || path.GetNumElements() == 1) cairo_close_path(context);
  cairo_stroke(context);
}

}  // namespace

KY_ERRORS KyDraw(cairo_t* context, const KyPathVector* path) noexcept {
  return ky::Call("KyDraw (KyPathVector)", [&] {
    if (const KY_ERRORS error = ky::CheckContext(context)) return error;
    if (path == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (path->GetNumElements() == 0) return KY_OK;
    return ky::DrawKeepingState(context, [&] { DrawPath(context, *path); });
  });
}

KY_ERRORS KyDraw(cairo_t* context, const KyBW8PathVector* path, double width,
                 double height) noexcept {
  const auto draw = [&](const Chart& chart) {
    ky::DrawAxes(context, chart);
    DrawCurve(context, chart, path->GetDataPtr(), [](const KyBW8Path& p) { return p.pixel; });
  };
  return DrawChart("KyDraw (KyBW8PathVector)", context, path, width, height, draw);
}

KY_ERRORS KyDraw(cairo_t* context, const KyC24PathVector* path, double width,
                 double height) noexcept {
  const auto draw = [&](const Chart& chart) {
    ky::DrawAxes(context, chart);
    KyBW8 KyC24::*const components[] = {&KyC24::c0, &KyC24::c1, &KyC24::c2};
    for (int i = 0; i < 3; ++i) {
      cairo_set_source_rgb(context, i == 0, i == 1, i == 2);
      DrawCurve(context, chart, path->GetDataPtr(),
                [&](const KyC24Path& p) { return p.pixel.*components[i]; });
    }
  };
  return DrawChart("KyDraw (KyC24PathVector)", context, path, width, height, draw);
}

KY_ERRORS KyDraw(cairo_t* context, const KyPeaksVector* peaks, int samples, double width,
                 double height) noexcept {
  return ky::Call("KyDraw (KyPeaksVector)", [&] {
    if (const KY_ERRORS error = ky::CheckContext(context)) return error;
    if (peaks == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (samples < 0) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "samples");
    if (const KY_ERRORS error = CheckSides(width, height, KY_ERROR_PARAMETER_2_OUT_OF_RANGE))
      return error;
    if (samples == 0 || peaks->GetNumElements() == 0) return KY_OK;
    const Chart chart = {width, height, static_cast<unsigned>(samples), 255};
    return ky::DrawKeepingState(context, [&] {
      for (const KyPeak& peak : *peaks) DrawPeak(context, chart, peak);
    });
  });
}

KY_ERRORS KyDraw(cairo_t* context, const KyBW8HistogramVector* histogram, double width,
                 double height) noexcept {
  const auto draw = [&](Chart chart) {
    const unsigned* const counts = histogram->GetDataPtr();
    chart.highest = std::max(1u, *std::max_element(counts, counts + chart.samples));
    ky::DrawAxes(context, chart);
    DrawBars(context, chart, counts);
  };
  return DrawChart("KyDraw (KyBW8HistogramVector)", context, histogram, width, height, draw);
}
