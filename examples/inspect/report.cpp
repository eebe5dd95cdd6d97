#include "inspect/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "support/drawing.h"
#include "support/program.h"

namespace inspect {
namespace {

constexpr KyC24 kContour{255, 150, 30}, kBox{70, 190, 220}, kLabel{20, 40, 60}, kInk{255, 255, 255};
constexpr KyC24 kPaper{250, 250, 247}, kAxis{90, 90, 90}, kGround{120, 130, 140},
    kLevel{200, 30, 30};

// The number on a plate at the upper left corner of the object's box, moved into the picture.
void Label(KyROI<KyC24>& picture, unsigned int number, const Box& box) {
  constexpr int kMargin = 2;
  const int width = draw::NumberWidth(number) + 2 * kMargin,
            height = draw::kNumberHeight + 2 * kMargin;
  const int x = std::clamp(box.x, 0, std::max(picture.GetWidth() - width, 0));
  const int y = std::clamp(box.y - height / 2, 0, std::max(picture.GetHeight() - height, 0));
  draw::Fill(picture, {x, y, width, height}, kLabel);
  draw::Number(picture, number, {x + kMargin, y + kMargin}, kInk);
}

template <class... T>
std::string Format(const char* format, T... values) {
  char line[256];
  std::snprintf(line, sizeof line, format, values...);
  return line;
}

// One line an object by `format`, which takes the number and the measures in order.
std::string Lines(const char* format, const std::vector<Measures>& measures) {
  std::string lines;
  for (std::size_t i = 0; i < measures.size(); ++i) {
    const Measures& m = measures[i];
    lines += Format(format, i + 1, m.x, m.y, m.box.x, m.box.y, m.box.width, m.box.height, m.area,
                    m.perimeter, double{m.mean}, double{m.deviation}, m.strips);
  }
  return lines;
}

}  // namespace

KyImage<KyC24> Annotate(const KyROI<KyBW8>& grey, const std::vector<Object>& objects) {
  auto picture = SameSize<KyC24>(grey);
  Must(ImgOper(KY_OPER_COPY, &grey, &picture));
  for (const Object& object : objects) {
    draw::Frame(picture, object.box, kBox);
    draw::Contour(picture, object.contour, kContour);
  }
  for (unsigned int i = 0; i < objects.size(); ++i) Label(picture, i + 1, objects[i].box);
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

std::string Csv(const std::vector<Measures>& measures) {
  return "object,x,y,left,top,width,height,area,perimeter,mean,deviation,strips\n" +
         Lines("%zu,%.2f,%.2f,%d,%d,%d,%d,%.0f,%.1f,%.1f,%.1f,%u\n", measures);
}

std::string Table(const std::vector<Measures>& measures) {
  return Format("%6s %7s %7s %5s %5s %5s %6s %8s %9s %6s %9s %6s\n", "object", "x", "y", "left",
                "top", "width", "height", "area", "perimeter", "mean", "deviation", "strips") +
         Lines("%6zu %7.1f %7.1f %5d %5d %5d %6d %8.0f %9.1f %6.1f %9.1f %6u\n", measures);
}

}  // namespace inspect
