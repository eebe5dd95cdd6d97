// What is drawn on Cairo.
#include "ky/drawing.h"

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <stdexcept>

#include "families.h"
#include "sheet.h"

namespace docs {
namespace {

constexpr int kSheetWidth = 660, kSheetHeight = 410;
constexpr double kChartWidth = 176, kChartHeight = 120;
constexpr int kRow = 75;  // that of the profiles

struct Shown {
  Grey picture;
  Color color;
  KyPathVector outside, hole;
  KyBW8PathVector levels;
  KyC24PathVector colors;
  KyPeaksVector peaks;
  KyBW8HistogramVector histogram;
};

// A washer, and the same in the colour of brass.
Shown Measured() {
  Shown shown;
  shown.picture = Washer();
  const Grey& picture = shown.picture;
  shown.color = InColor(picture);
  Must(ImgGainOffset(&shown.color, &shown.color, {1.15F, 0.85F, 0.35F}, {0, 0, 30}));
  const unsigned threshold = ImgAutoThreshold(&picture, IMG_THRESHOLD_MIN_RESIDUE);
  Must(KyGetError());

  int x = 0, middle = kWidth / 2;
  while (picture.GetPixel(x, kRow) < threshold) ++x;
  while (picture.GetPixel(middle - 1, kRow) < threshold) --middle;
  Must(ImgContour(&picture, KY_CONTOUR_CW_ALONG_BORDER, x, kRow, KY_CONTOUR_ABOVE_THRESHOLD,
                  threshold, KY_CONNEXITY_8, &shown.outside));
  Must(ImgContour(&picture, KY_CONTOUR_CW_ALONG_BORDER, middle, kRow, KY_CONTOUR_BELOW_THRESHOLD,
                  threshold - 1, KY_CONNEXITY_8, &shown.hole));

  for (std::int16_t i = 0; i < kWidth; ++i) {
    Must(shown.levels.AddElement({i, kRow, 0}));
    Must(shown.colors.AddElement({i, kRow, KyC24(0, 0, 0)}));
  }
  Must(ImgImageToPath(&picture, &shown.levels));
  Must(ImgImageToPath(&shown.color, &shown.colors));
  KyBW8Vector profile;
  Must(ImgImageToLineSegment(&picture, &profile, 0, kRow, kWidth - 1, kRow));
  Must(ImgGetProfilePeaks(&profile, &shown.peaks, 0, threshold, 20, 100));
  Must(ImgHistogram(&picture, &shown.histogram));
  return shown;
}

// Runs `draw` with the origin at (x, y) and `zoom` times as large.
template <class Draw>
void At(cairo_t* sheet, double x, double y, double zoom, const Draw& draw) {
  cairo_save(sheet);
  cairo_translate(sheet, x, y);
  cairo_scale(sheet, zoom, zoom);
  draw();
  cairo_restore(sheet);
}

// The picture in the pixels' own coordinates, its contours and the row of the profiles.
void DrawPicture(cairo_t* sheet, const Shown& shown, double line) {
  Must(ImgDraw(sheet, &shown.picture, 0, 0));
  cairo_set_line_width(sheet, line);
  cairo_set_source_rgb(sheet, 1, 0.35, 0.1);
  Must(KyDraw(sheet, &shown.outside));
  cairo_set_source_rgb(sheet, 0.2, 0.8, 0.4);
  Must(KyDraw(sheet, &shown.hole));
  KyPathVector row;
  Must(row.AddElement({0, kRow}));
  Must(row.AddElement({kWidth - 1, kRow}));
  const double dashes[] = {4 * line, 3 * line};
  cairo_set_dash(sheet, dashes, 2, 0);
  cairo_set_source_rgb(sheet, 0.3, 0.6, 1);
  Must(KyDraw(sheet, &row));
}

void DrawSheet(cairo_t* sheet, const Shown& shown) {
  constexpr double kTop = 245, kStep = 222, kLeft = 32, kZoomed = 16;
  cairo_set_source_rgb(sheet, 1, 1, 1);
  cairo_paint(sheet);
  At(sheet, 2, 2, 1.6, [&] { DrawPicture(sheet, shown, 1.2); });
  // A part of it, so large that its pixels show.
  cairo_save(sheet);
  cairo_rectangle(sheet, 338, 2, 320, 240);
  cairo_clip(sheet);
  At(sheet, 338 - 70 * kZoomed, 2 - 67 * kZoomed, kZoomed,
     [&] { DrawPicture(sheet, shown, 0.25); });
  cairo_restore(sheet);

  cairo_set_font_size(sheet, 10);
  cairo_set_line_width(sheet, 1.4);
  At(sheet, kLeft, kTop + 18, 1, [&] {
    cairo_set_source_rgb(sheet, 0.1, 0.25, 0.55);
    Must(KyDraw(sheet, &shown.levels, kChartWidth, kChartHeight));
    cairo_set_source_rgb(sheet, 0.9, 0.35, 0.1);
    const auto samples = static_cast<int>(shown.levels.GetNumElements());
    Must(KyDraw(sheet, &shown.peaks, samples, kChartWidth, kChartHeight));
  });
  cairo_set_source_rgb(sheet, 0.2, 0.2, 0.25);
  At(sheet, kLeft + kStep, kTop + 18, 1,
     [&] { Must(KyDraw(sheet, &shown.colors, kChartWidth, kChartHeight)); });
  At(sheet, kLeft + 2 * kStep, kTop + 18, 1,
     [&] { Must(KyDraw(sheet, &shown.histogram, kChartWidth, kChartHeight)); });
}

}  // namespace

void Drawing(const std::string& folder) {
  const Shown shown = Measured();
  const std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> surface(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, kSheetWidth, kSheetHeight),
      &cairo_surface_destroy);
  const std::unique_ptr<cairo_t, decltype(&cairo_destroy)> sheet(cairo_create(surface.get()),
                                                                 &cairo_destroy);
  DrawSheet(sheet.get(), shown);
  const std::string path = folder + "/drawing.png";
  if (cairo_surface_write_to_png(surface.get(), path.c_str()) != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error("cannot write " + path);
}

}  // namespace docs
