#include "plot.h"

#include <algorithm>
#include <cmath>

namespace docs {
namespace {

constexpr KyC24 kPaper{250, 250, 247}, kGrid{222, 222, 218}, kAxis{90, 90, 90};
constexpr int kLeft = 40, kRight = 16, kTop = 14, kBottom = 24;

void Thick(Color& picture, draw::Point a, draw::Point b, KyC24 color) {
  draw::Line(picture, a, b, color);
  draw::Line(picture, {a.x, a.y + 1}, {b.x, b.y + 1}, color);
}

}  // namespace

Color Plot(int width, int height, const Axes& axes, const std::vector<Curve>& curves) {
  auto picture = NewImage<KyC24>(width, height);
  Must(ImgOper(KY_OPER_COPY, kPaper, &picture));
  const int right = width - kRight, bottom = height - kBottom;
  const auto place = [&](double x, double y) {
    const double tx = std::clamp(x / axes.mostX, 0.0, 1.0),
                 ty = std::clamp(y / axes.mostY, 0.0, 1.0);
    return draw::Point{static_cast<int>(std::lround(kLeft + tx * (right - kLeft))),
                       static_cast<int>(std::lround(bottom - ty * (bottom - kTop)))};
  };
  const auto number = [&](double value, bool isX) {
    const auto shown =
        static_cast<unsigned>(std::lround(value * (isX ? axes.factorX : axes.factorY)));
    const draw::Point at = isX ? place(value, 0) : place(0, value);
    const int size = draw::NumberWidth(shown);
    draw::Number(picture, shown,
                 isX ? draw::Point{at.x - size / 2, at.y + 7}
                     : draw::Point{at.x - size - 7, at.y - draw::kNumberHeight / 2},
                 kAxis);
  };
  const auto ticks = [](double most, double step) {
    return static_cast<int>(std::lround(most / step));
  };
  for (int i = 0; i <= ticks(axes.mostX, axes.stepX); ++i) {
    const double x = i * axes.stepX;
    draw::Line(picture, place(x, 0), place(x, axes.mostY), kGrid);
    number(x, true);
  }
  for (int i = 0; i <= ticks(axes.mostY, axes.stepY); ++i) {
    const double y = i * axes.stepY;
    draw::Line(picture, place(0, y), place(axes.mostX, y), kGrid);
    number(y, false);
  }
  draw::Line(picture, place(0, 0), place(axes.mostX, 0), kAxis);
  draw::Line(picture, place(0, 0), place(0, axes.mostY), kAxis);
  for (const Curve& curve : curves) {
    for (std::size_t i = 0; i < curve.x.size(); ++i) {
      const draw::Point at = place(curve.x[i], curve.y[i]);
      if (curve.dots || curve.x.size() < 40) Mark(picture, at.x, at.y, curve.color, 5);
      if (i > 0 && !curve.dots)
        Thick(picture, place(curve.x[i - 1], curve.y[i - 1]), at, curve.color);
    }
  }
  return picture;
}

}  // namespace docs
