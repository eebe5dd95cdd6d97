// A quality record on paper: picture, contours, profile and histogram of a part, as PDF and SVG.
//
//   report [FOLDER]
//
// draws a washer whose hole is out of centre, finds its contours and the thickness of its wall on
// both sides of the hole, prints them, and writes record.pdf and record.svg to FOLDER (demo): one
// page with the picture, its contours, the profile along a segment, and the histogram.
#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "ky/drawing.h"
#include "ky/ky.h"
#include "support/program.h"
#include "support/scene.h"

namespace {

using Grey = KyImage<KyBW8>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;
using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;

constexpr int kWidth = 320, kHeight = 240;
constexpr float kRadius = 92;
// The scene draws holes of half the radius, and those of faulty washers a fifth of it to the right.
constexpr double kLeftWall = (1 - 0.5 + 0.2) * kRadius, kRightWall = (1 - 0.5 - 0.2) * kRadius;

constexpr double kAllowed = 4;  // between the walls

struct Record {
  Grey picture;
  unsigned threshold = 0;
  KyPathVector outside, hole;
  KyPath from = {}, to = {};  // the segment
  KyBW8PathVector profile;    // the levels along it
  KyPeaksVector walls;
  KyBW8HistogramVector histogram;
  KyObjectShape shape = {};
  unsigned area = 0;
};

Grey Picture() {
  scene::Scene scene{.width = kWidth, .height = kHeight, .parts = {}, .seed = 1};
  scene.parts = {{scene::Kind::kWasher, 160, 120, kRadius, 0, true}};
  Grey picture = scene::Draw(scene);
  Must(KyGetError());
  Must(ImgConvolGaussian3x3(&picture, &picture));
  return picture;
}

// The hole is dark: its contour starts where a walk to the left from its middle ends.
void FindContours(Record& record, const KyObject& part) {
  Must(ImgContour(&record.picture, KY_CONTOUR_CW_ALONG_BORDER, part.firstX, part.firstY,
                  KY_CONTOUR_ABOVE_THRESHOLD, record.threshold, KY_CONNEXITY_8, &record.outside));
  int x = part.x + part.width / 2;
  const int y = part.y + part.height / 2;
  while (record.picture.GetPixel(x - 1, y) < record.threshold) --x;
  Must(ImgContour(&record.picture, KY_CONTOUR_CW_ALONG_BORDER, x, y, KY_CONTOUR_BELOW_THRESHOLD,
                  record.threshold - 1, KY_CONNEXITY_8, &record.hole));
}

// The profile of the row through the middle of the part, and its peaks, which are the walls.
void MeasureWalls(Record& record, const KyObject& part) {
  const auto y = static_cast<std::int16_t>(part.y + part.height / 2);
  record.from = {static_cast<std::int16_t>(part.x - 20), y};
  record.to = {static_cast<std::int16_t>(part.x + part.width + 20), y};
  for (std::int16_t x = record.from.x; x <= record.to.x; ++x)
    Must(record.profile.AddElement({x, y, 0}));
  Must(ImgImageToPath(&record.picture, &record.profile));
  KyBW8Vector levels;
  Must(ImgImageToLineSegment(&record.picture, &levels, record.from.x, y, record.to.x, y));
  Must(ImgGetProfilePeaks(&levels, &record.walls, 0, record.threshold - 1, 20, 100));
}

Record Measure() {
  Record record;
  record.picture = Picture();
  Must(ImgHistogram(&record.picture, &record.histogram));
  record.threshold = ImgAutoThreshold(&record.picture, IMG_THRESHOLD_MIN_RESIDUE);
  Must(KyGetError());
  KyObjectsVector objects;
  Must(ImgFindObjects(&record.picture, static_cast<KyBW8>(record.threshold), 255, KY_CONNEXITY_8,
                      &objects));
  Must(ImgSelectObjects(&objects, {.minArea = 1000, .touching = false}));
  if (objects.GetNumElements() != 1) throw std::runtime_error("there should be one part");
  record.area = objects[0].area;
  Must(ImgGetObjectShape(&objects[0], record.shape));
  FindContours(record, objects[0]);
  MeasureWalls(record, objects[0]);
  if (record.walls.GetNumElements() != 2) throw std::runtime_error("there should be two walls");
  return record;
}

double Wall(const Record& record, unsigned i) { return record.walls[i].length; }
double Difference(const Record& record) { return std::abs(Wall(record, 0) - Wall(record, 1)); }

// The page, in points: A4.
constexpr double kPageWidth = 595, kPageHeight = 842, kMargin = 56;

struct Ink {
  double red, green, blue;
};
constexpr Ink kBlack{0.1, 0.1, 0.12}, kGrey{0.45, 0.45, 0.5}, kContour{0.9, 0.25, 0.05},
    kHole{0.1, 0.6, 0.25}, kSegment{0.05, 0.35, 0.8};

void Take(cairo_t* page, Ink ink) { cairo_set_source_rgb(page, ink.red, ink.green, ink.blue); }

void Write(cairo_t* page, double x, double y, double size, Ink ink, const std::string& text) {
  cairo_set_font_size(page, size);
  Take(page, ink);
  cairo_move_to(page, x, y);
  cairo_show_text(page, text.c_str());
}

std::string Number(const char* format, double value) {
  char text[64];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// In the picture's own pixels.
void DrawPicture(cairo_t* page, const Record& record) {
  Must(ImgDraw(page, &record.picture, 0, 0));
  cairo_set_line_width(page, 1.6);
  Take(page, kContour);
  Must(KyDraw(page, &record.outside));
  Take(page, kHole);
  Must(KyDraw(page, &record.hole));
  KyPathVector segment;
  Must(segment.AddElement(record.from));
  Must(segment.AddElement(record.to));
  const double dashes[] = {5, 3};
  cairo_set_dash(page, dashes, 2, 0);
  Take(page, kSegment);
  Must(KyDraw(page, &segment));
  cairo_set_dash(page, nullptr, 0, 0);
}

void WriteTable(cairo_t* page, const Record& record, double x, double y) {
  const struct {
    const char* name;
    std::string value;
  } lines[] = {
      {"Area", Number("%.0f px", record.area)},
      {"Centre", Number("%.1f, ", record.shape.x) + Number("%.1f", record.shape.y)},
      {"Circularity", Number("%.3f", record.shape.circularity)},
      {"Threshold", Number("%.0f", record.threshold)},
      {"Wall on the left", Number("%.0f px", Wall(record, 0))},
      {"Wall on the right", Number("%.0f px", Wall(record, 1))},
      {"Difference", Number("%.0f px", Difference(record))},
      {"Allowed", Number("%.0f px", kAllowed)},
  };
  for (const auto& [name, value] : lines) {
    Write(page, x, y, 9, kGrey, name);
    Write(page, x + 84, y, 9, kBlack, value);
    y += 17;
  }
  const bool accepted = Difference(record) <= kAllowed;
  Write(page, x, y + 14, 15, accepted ? kHole : kContour, accepted ? "accepted" : "rejected");
}

void DrawPage(cairo_t* page, const Record& record) {
  constexpr double kCharts = 420, kChartWidth = kPageWidth - 2 * kMargin - 20;
  cairo_select_font_face(page, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  Write(page, kMargin, 76, 20, kBlack, "Inspection record");
  Write(page, kMargin, 96, 10, kGrey, "Washer, concentricity of its hole");

  cairo_save(page);
  cairo_translate(page, kMargin, 120);
  DrawPicture(page, record);
  cairo_restore(page);
  WriteTable(page, record, kMargin + kWidth + 24, 132);

  Write(page, kMargin, kCharts - 24, 10, kBlack,
        "Levels along the dashed segment; the walls of the washer are marked");
  cairo_save(page);
  cairo_translate(page, kMargin + 20, kCharts);
  cairo_set_font_size(page, 8);
  cairo_set_line_width(page, 0.8);
  Take(page, kSegment);
  Must(KyDraw(page, &record.profile, kChartWidth, 110));
  Take(page, kContour);
  Must(KyDraw(page, &record.walls, static_cast<int>(record.profile.GetNumElements()), kChartWidth,
              110));
  cairo_restore(page);

  Write(page, kMargin, kCharts + 156, 10, kBlack, "Histogram, with the threshold");
  cairo_save(page);
  cairo_translate(page, kMargin + 20, kCharts + 180);
  cairo_set_font_size(page, 8);
  Take(page, kGrey);
  Must(KyDraw(page, &record.histogram, kChartWidth, 110));
  const double at = record.threshold * kChartWidth / record.histogram.GetNumElements();
  cairo_set_line_width(page, 0.8);
  Take(page, kContour);
  cairo_move_to(page, at, 0);
  cairo_line_to(page, at, 110);
  cairo_stroke(page);
  cairo_restore(page);
}

// Cairo reports what became of a file when its surface is finished.
void WriteFile(const Record& record, Surface surface, const std::string& path) {
  {
    const Context page(cairo_create(surface.get()), &cairo_destroy);
    DrawPage(page.get(), record);
    cairo_show_page(page.get());
  }
  cairo_surface_finish(surface.get());
  if (const cairo_status_t status = cairo_surface_status(surface.get());
      status != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error(path + ": " + cairo_status_to_string(status));
  std::printf("%s\n", path.c_str());
}

void Run(const std::string& folder) {
  const Record record = Measure();
  std::printf("walls of %.0f and %.0f pixels; drawn with %.1f and %.1f\n", Wall(record, 0),
              Wall(record, 1), kLeftWall, kRightWall);
  if (std::abs(Wall(record, 0) - kLeftWall) > 1.5 || std::abs(Wall(record, 1) - kRightWall) > 1.5)
    throw std::runtime_error("the walls have not been measured rightly");

  std::filesystem::create_directories(folder);
  const std::string pdf = folder + "/record.pdf", svg = folder + "/record.svg";
  WriteFile(
      record,
      {cairo_pdf_surface_create(pdf.c_str(), kPageWidth, kPageHeight), &cairo_surface_destroy},
      pdf);
  WriteFile(
      record,
      {cairo_svg_surface_create(svg.c_str(), kPageWidth, kPageHeight), &cairo_surface_destroy},
      svg);
}

}  // namespace

int main(int argc, char** argv) {
  return RunProgram(argc, argv, 1, "[FOLDER]", [&] { Run(argc > 1 ? argv[1] : kOutputFolder); });
}
