#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "drawing/context.h"
#include "foundation/rows.h"
#include "ky/drawing.h"

namespace {

using ky::Rows;

// Cairo's images are limited to 32767 pixels a side, and its coordinates inside them to 16 bits
// before the point; larger pictures are drawn in pieces.
constexpr std::ptrdiff_t kMostSide = 16384;

struct Area {
  std::ptrdiff_t left, top, width, height;
};

std::uint32_t PackedRgb(KyBW8 level) { return level * 0x010101u; }
std::uint32_t PackedRgb(KyC24 color) {
  return std::uint32_t{color.c0} << 16 | std::uint32_t{color.c1} << 8 | color.c2;
}

template <class T>
void CopyPixels(const Rows<const T>& from, const Area& area, cairo_surface_t* to) noexcept {
  cairo_surface_flush(to);
  const Rows<std::uint32_t> out = {
      reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(to)),
      cairo_image_surface_get_stride(to), area.width, area.height};
  for (std::ptrdiff_t y = 0; y < area.height; ++y)
    std::transform(from.Row(area.top + y) + area.left,
                   from.Row(area.top + y) + area.left + area.width, out.Row(y),
                   [](T pixel) { return PackedRgb(pixel); });
  cairo_surface_mark_dirty(to);
}

// Draws a part of the picture whose upper left corner lies at (x, y). A surface that could not be
// had puts the context in an error.
template <class T>
void DrawPiece(cairo_t* context, const Rows<const T>& rows, const Area& area, double x,
               double y) noexcept {
  cairo_surface_t* const piece = cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, static_cast<int>(area.width), static_cast<int>(area.height));
  if (cairo_surface_status(piece) == CAIRO_STATUS_SUCCESS) CopyPixels(rows, area, piece);
  cairo_set_source_surface(context, piece, x + static_cast<double>(area.left),
                           y + static_cast<double>(area.top));
  cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_NEAREST);
  cairo_paint(context);
  cairo_surface_destroy(piece);
}

// Of `size` pixels that begin at `origin`, those from `first` to before `last` that the clip from
// `low` to `high` may show.
struct Visible {
  std::ptrdiff_t first, last;
};
Visible VisibleOf(std::ptrdiff_t size, double origin, double low, double high) noexcept {
  const auto inside = [&](double position) {
    return static_cast<std::ptrdiff_t>(std::clamp(position, 0.0, static_cast<double>(size)));
  };
  return {inside(std::floor(low - origin) - 1), inside(std::ceil(high - origin) + 1)};
}

template <class T>
void DrawVisible(cairo_t* context, const Rows<const T>& rows, double x, double y) noexcept {
  double left, top, right, bottom;
  cairo_clip_extents(context, &left, &top, &right, &bottom);
  const Visible columns = VisibleOf(rows.width, x, left, right);
  const Visible lines = VisibleOf(rows.height, y, top, bottom);
  for (std::ptrdiff_t line = lines.first; line < lines.last; line += kMostSide)
    for (std::ptrdiff_t column = columns.first; column < columns.last; column += kMostSide)
      DrawPiece(context, rows,
                {column, line, std::min(kMostSide, columns.last - column),
                 std::min(kMostSide, lines.last - line)},
                x, y);
}

template <class T>
KY_ERRORS DrawPicture(const char* name, cairo_t* context, const KyROI<T>* source, double x,
                      double y) noexcept {
  return ky::Call(name, [&] {
    Rows<const T> rows;
    if (const KY_ERRORS error = ky::CheckContext(context)) return error;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (!std::isfinite(x)) return KY_ERROR_PARAMETER_1_OUT_OF_RANGE;
    if (!std::isfinite(y)) return KY_ERROR_PARAMETER_2_OUT_OF_RANGE;
    return ky::DrawKeepingState(context, [&] { DrawVisible(context, rows, x, y); });
  });
}

}  // namespace

KY_ERRORS ImgDraw(cairo_t* context, const KyROI<KyBW8>* source, double x, double y) noexcept {
  return DrawPicture("ImgDraw (BW8)", context, source, x, y);
}
KY_ERRORS ImgDraw(cairo_t* context, const KyROI<KyC24>* source, double x, double y) noexcept {
  return DrawPicture("ImgDraw (C24)", context, source, x, y);
}
