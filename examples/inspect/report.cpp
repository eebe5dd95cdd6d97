#include "inspect/report.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "support/drawing.h"
#include "support/program.h"
#include "support/text.h"

namespace inspect {
namespace {

constexpr KyC24 kContour{255, 150, 30}, kBox{70, 190, 220}, kAxes{255, 235, 90}, kLabel{20, 40, 60},
    kInk{255, 255, 255};
constexpr KyC24 kPaper{250, 250, 247}, kAxis{90, 90, 90}, kGround{120, 130, 140},
    kLevel{200, 30, 30};

// One line an object by `format`, which takes the number and the measures in order.
std::string Lines(const char* format, const std::vector<Measured>& objects) {
  std::string lines;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const auto& [o, shape, strips] = objects[i];
    lines += text::Format(format, i + 1, shape.x, shape.y, o.x, o.y, o.width, o.height, o.area,
                          shape.perimeter, shape.angle, shape.elongation, shape.circularity,
                          o.holes, shape.meanLevel, int{o.lowest}, int{o.highest}, strips);
  }
  return lines;
}

// The outer contour. That of a single pixel is empty.
void DrawContour(KyROI<KyC24>& picture, const KyROI<KyBW8>& mask, const KyObject& object) {
  KyPathVector contour;
  const KY_ERRORS error =
      ImgContour(&mask, KY_CONTOUR_CW_ALONG_BORDER, object.firstX, object.firstY,
                 KY_CONTOUR_ABOVE_THRESHOLD, kObjectLevel, KY_CONNEXITY_8, &contour);
  if (error != KY_ERROR_CONTOUR_ISOLATED) Must(error);
  draw::Contour(picture, contour, kContour);
}

// A line through the centre, `angle` degrees clockwise on the screen, for the moment along it.
void DrawAxis(KyROI<KyC24>& picture, const KyObjectShape& shape, double moment, double angle) {
  const double half = 2 * std::sqrt(moment), radians = angle * std::numbers::pi / 180;
  const auto end = [&](double distance) {
    return draw::Point{static_cast<int>(std::lround(shape.x + distance * std::cos(radians))),
                       static_cast<int>(std::lround(shape.y + distance * std::sin(radians)))};
  };
  draw::Line(picture, end(-half), end(half), kAxes);
}

}  // namespace

KyImage<KyC24> Annotate(const KyROI<KyBW8>& grey, const KyROI<KyBW8>& mask,
                        const std::vector<Measured>& objects) {
  auto picture = SameSize<KyC24>(grey);
  Must(ImgOper(KY_OPER_COPY, &grey, &picture));
  for (const auto& [object, shape, strips] : objects) {
    draw::Frame(picture, {object.x, object.y, object.width, object.height}, kBox);
    DrawContour(picture, mask, object);
    DrawAxis(picture, shape, shape.major, shape.angle);
    DrawAxis(picture, shape, shape.minor, shape.angle + 90);
  }
  for (unsigned int i = 0; i < objects.size(); ++i)
    draw::Label(picture, i + 1, {objects[i].object.x, objects[i].object.y}, kLabel, kInk);
  return picture;
}

KyImage<KyC24> DrawHistogram(const KyBW8HistogramVector& histogram, unsigned int level) {
  constexpr int kBar = 2, kHeight = 200, kMargin = 24, kTick = 4;
  constexpr int kBottom = kMargin + kHeight;
  auto picture = NewImage<KyC24>(256 * kBar + 2 * kMargin, kHeight + 2 * kMargin);
  Must(ImgOper(KY_OPER_COPY, kPaper, &picture));
  const auto left = [&](unsigned int k) { return kMargin + kBar * static_cast<int>(k); };
  const auto number = [&](unsigned int k, int y, KyC24 color) {
    draw::Number(picture, k, {left(k) + (kBar - draw::NumberWidth(k)) / 2, y}, color);
  };

  const double most = std::max(1u, *std::max_element(histogram.begin(), histogram.end()));
  for (unsigned int k = 0; k < histogram.GetNumElements(); ++k) {
    const int height = static_cast<int>(std::lround(kHeight * std::sqrt(histogram[k] / most)));
    draw::Fill(picture, {left(k), kBottom - height, kBar, height}, k < level ? kGround : kContour);
  }
  draw::Line(picture, {kMargin, kBottom}, {left(256), kBottom}, kAxis);
  for (const unsigned int k : {0u, 64u, 128u, 192u, 255u}) {
    draw::Line(picture, {left(k), kBottom}, {left(k), kBottom + kTick}, kAxis);
    number(k, kBottom + 2 * kTick, kAxis);
  }
  draw::Line(picture, {left(level), kMargin - kTick}, {left(level), kBottom}, kLevel);
  number(level, kMargin - 2 * kTick - draw::kNumberHeight + 2, kLevel);
  return picture;
}

std::string Csv(const std::vector<Measured>& objects) {
  return "object,x,y,left,top,width,height,area,perimeter,angle,elongation,circularity,holes,mean,"
         "lowest,highest,strips\n" +
         Lines("%zu,%.2f,%.2f,%d,%d,%d,%d,%u,%.1f,%.2f,%.3f,%.3f,%d,%.1f,%d,%d,%u\n", objects);
}

std::string Table(const std::vector<Measured>& objects) {
  return text::Format("%6s %7s %7s %5s %5s %5s %6s %6s %9s %6s %10s %11s %5s %6s %6s %7s %6s\n",
                      "object", "x", "y", "left", "top", "width", "height", "area", "perimeter",
                      "angle", "elongation", "circularity", "holes", "mean", "lowest", "highest",
                      "strips") +
         Lines(
             "%6zu %7.1f %7.1f %5d %5d %5d %6d %6u %9.1f %6.1f %10.2f %11.2f %5d %6.1f %6d %7d "
             "%6u\n",
             objects);
}

}  // namespace inspect
