#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "drawing/context.h"
#include "drawing/device.h"
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

// Paints a picture of `width` x `height` pixels, whose upper left corner lies at (x, y), row by
// row: fill(row, its pixels). One that could not be had puts the context in an error.
template <class Fill>
void Paint(cairo_t* context, std::ptrdiff_t width, std::ptrdiff_t height, double x, double y,
           const Fill& fill) noexcept {
  cairo_surface_t* const picture = cairo_image_surface_create(
      CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height));
  if (cairo_surface_status(picture) == CAIRO_STATUS_SUCCESS) {
    cairo_surface_flush(picture);
    const Rows<std::uint32_t> out = {
        reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(picture)),
        cairo_image_surface_get_stride(picture), width, height};
    for (std::ptrdiff_t row = 0; row < height; ++row) fill(row, out.Row(row));
    cairo_surface_mark_dirty(picture);
  }
  cairo_save(context);
  if (cairo_get_operator(context) != CAIRO_OPERATOR_OVER) {
    // Others may change what lies outside of a source.
    cairo_set_antialias(context, CAIRO_ANTIALIAS_NONE);
    cairo_rectangle(context, x, y, static_cast<double>(width), static_cast<double>(height));
    cairo_clip(context);
  }
  cairo_set_source_surface(context, picture, x, y);
  cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_NEAREST);
  cairo_paint(context);
  cairo_restore(context);
  cairo_surface_destroy(picture);
}

// Draws a part of the picture, whose upper left corner lies at (x, y).
template <class T>
void DrawPiece(cairo_t* context, const Rows<const T>& rows, const Area& area, double x,
               double y) noexcept {
  Paint(context, area.width, area.height, x + static_cast<double>(area.left),
        y + static_cast<double>(area.top), [&](std::ptrdiff_t row, std::uint32_t* out) {
          const T* const in = rows.Row(area.top + row) + area.left;
          std::transform(in, in + area.width, out, [](T pixel) { return PackedRgb(pixel); });
        });
}

// A picture that is shrunk on a surface of pixels, and not turned, is drawn from those of its
// pixels that show, so that a large picture in a small window costs what the window does. False for
// any other.
template <class T>
bool DrawShrunk(cairo_t* context, const Rows<const T>& rows, double x, double y) noexcept {
  ky::Device device;
  if (!device.Open(context)) return false;
  const cairo_matrix_t& m = device.fromUser;
  if (m.xy != 0 || m.yx != 0 || !(std::abs(m.xx) < 0.7) || !(std::abs(m.yy) < 0.7)) return false;
  ky::Axis across = {m.x0 + m.xx * x, m.xx, rows.width},
           down = {m.y0 + m.yy * y, m.yy, rows.height};
  if (!std::isfinite(across.origin) || !std::isfinite(down.origin)) return false;

  device.UsePixels(context);
  double left, top, right, bottom;
  cairo_clip_extents(context, &left, &top, &right, &bottom);
  across.ConfineTo(left, right);
  down.ConfineTo(top, bottom);
  if (across.first >= across.last || down.first >= down.last) return true;
  Paint(context, across.last - across.first, down.last - down.first,
        static_cast<double>(across.first), static_cast<double>(down.first),
        [&](std::ptrdiff_t row, std::uint32_t* out) {
          const T* const in = rows.Row(static_cast<std::ptrdiff_t>(down.At(down.first + row)));
          for (std::ptrdiff_t i = across.first; i < across.last; ++i)
            *out++ = PackedRgb(in[static_cast<std::ptrdiff_t>(across.At(i))]);
        });
  return true;
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
    if (!std::isfinite(x)) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "x");
    if (!std::isfinite(y)) return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "y");
    return ky::DrawKeepingState(context, [&] {
      if (!DrawShrunk(context, rows, x, y)) DrawVisible(context, rows, x, y);
    });
  });
}

}  // namespace

KY_ERRORS ImgDraw(cairo_t* context, const KyROI<KyBW8>* source, double x, double y) noexcept {
  return DrawPicture("ImgDraw (BW8)", context, source, x, y);
}
KY_ERRORS ImgDraw(cairo_t* context, const KyROI<KyC24>* source, double x, double y) noexcept {
  return DrawPicture("ImgDraw (C24)", context, source, x, y);
}
