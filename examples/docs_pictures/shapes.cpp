// Morphology by elements of any shape, thinning and skeletons.
#include <algorithm>
#include <cmath>
#include <functional>

#include "families.h"
#include "sheet.h"
#include "support/drawing.h"

namespace docs {
namespace {

constexpr double kPi = 3.14159265358979;

/// All pixels within `radius` of (x, y) become `level`.
void Dot(Grey& picture, double x, double y, double radius, KyBW8 level) {
  const int reach = static_cast<int>(radius) + 1;
  for (int j = static_cast<int>(y) - reach; j <= static_cast<int>(y) + reach; ++j)
    for (int i = static_cast<int>(x) - reach; i <= static_cast<int>(x) + reach; ++i)
      if (i >= 0 && j >= 0 && i < picture.GetWidth() && j < picture.GetHeight() &&
          (i - x) * (i - x) + (j - y) * (j - y) <= radius * radius)
        *static_cast<KyBW8*>(picture.GetPixelPtr(i, j)) = level;
}

void Bar(Grey& picture, double x, double y, double length, double angle, KyBW8 level) {
  for (int i = 0; i <= static_cast<int>(2 * length); ++i) {
    const double t = (i - length) / 2;
    Dot(picture, x + t * std::cos(angle), y + t * std::sin(angle), 2, level);
  }
}

/// Needles in three directions, specks and a large spot on a dark ground.
Grey Needles() {
  Grey picture = Panel();
  Must(ImgCopy(KyBW8{40}, &picture));
  const double angles[] = {0, kPi / 2, -kPi / 4};
  for (int i = 0; i < 8; ++i) {
    const int row = i / 3;
    Bar(picture, 36 + i % 3 * 58 + row * 7, 36 + row * 42, 44, angles[(i + i / 3) % 3],
        static_cast<KyBW8>(150 + 12 * i));
  }
  for (int i = 0; i < 14; ++i)
    Dot(picture, 8 + i * 37 % 186, 26 + i * 53 % 108, 1.5, static_cast<KyBW8>(255 - 8 * i));
  Dot(picture, 172, 122, 16, 200);
  return picture;
}

/// Loops of a pen that is pressed down more on its way down.
Grey Handwriting() {
  Grey picture = Panel();
  Must(ImgCopy(KyBW8{0}, &picture));
  for (int i = 0; i < 3100; ++i) {
    const double t = 0.01 * i;
    const double height = 16 + 20 * std::pow(std::sin(t / 4), 2);
    Dot(picture, 18 + 5.2 * t - 11 * std::sin(t), 88 - height * std::cos(t) - height / 2,
        2.8 + 1.2 * std::sin(t), 255);
  }
  return picture;
}

void Shape(KyKernel& kernel, int size, const std::function<bool(int i, int j)>& has) {
  Must(kernel.SetSizeX(static_cast<std::int16_t>(size)));
  Must(kernel.SetSizeY(static_cast<std::int16_t>(size)));
  for (int j = 0; j < size; ++j)
    for (int i = 0; i < size; ++i)
      Must(kernel.SetKernelData(i, j, has(i - size / 2, j - size / 2) ? 1.0F : 0.0F));
}

/// The panel in colour, every pixel a square of 2 x 2, with its number in a corner.
Color Numbered(const Color& panel, unsigned number) {
  auto large = NewImage<KyC24>(2 * panel.GetWidth(), 2 * panel.GetHeight());
  for (int y = 0; y < large.GetHeight(); ++y)
    for (int x = 0; x < large.GetWidth(); ++x)
      *static_cast<KyC24*>(large.GetPixelPtr(x, y)) =
          *static_cast<const KyC24*>(panel.GetPixelPtr(x / 2, y / 2));
  draw::Fill(large, {4, 4, draw::NumberWidth(number) + 8, draw::kNumberHeight + 8}, {0, 0, 0});
  draw::Number(large, number, {8, 8}, {255, 255, 255});
  return large;
}
Color Numbered(const Grey& panel, unsigned number) { return Numbered(InColor(panel), number); }

/// `strokes` pale, and what has been made of them over it.
Color Over(const Grey& strokes, const Grey& made, KyC24 color) {
  Color picture = InColor(strokes);
  Must(ImgOper(KY_OPER_AND, &picture, KyC24{96, 112, 128}, &picture));
  for (int y = 0; y < made.GetHeight(); ++y)
    for (int x = 0; x < made.GetWidth(); ++x)
      if (*static_cast<const KyBW8*>(made.GetPixelPtr(x, y)) != 0) Mark(picture, x, y, color);
  return picture;
}

}  // namespace

void Shapes(const std::string& folder) {
  const Grey source = Needles();
  Grey along = Panel(), slanting = Panel(), crosses = Panel(), rings = Panel(), alone = Panel();
  KyKernel line, cross, ring;
  Shape(line, 31, [](int, int j) { return j == 0; });
  Must(ImgOpen(&source, &along, &line));
  Shape(line, 23, [](int i, int j) { return i == -j; });
  Must(ImgOpen(&source, &slanting, &line));
  Shape(cross, 13, [](int i, int j) { return i == 0 || j == 0; });
  Must(ImgDilate(&source, &crosses, &cross));
  Shape(ring, 13, [](int i, int j) { return i * i + j * j >= 26 && i * i + j * j <= 42; });
  Must(ImgDilate(&source, &rings, &ring));
  Must(ImgOper(KY_OPER_SUBTRACT, &source, &rings, &alone));
  const Color panels[] = {Numbered(source, 1),  Numbered(along, 2), Numbered(slanting, 3),
                          Numbered(crosses, 4), Numbered(rings, 5), Numbered(alone, 6)};
  Write(folder, "shapes", 2,
        {&panels[0], &panels[1], &panels[2], &panels[3], &panels[4], &panels[5]});
}

void Thinning(const std::string& folder) {
  const Grey strokes = Handwriting();
  Grey skeleton = Panel(), pruned = Panel(), ends = Panel(), hull = Panel();
  Must(ImgSkeleton(&strokes, &skeleton));
  // The end of a line; each iteration removes a pixel of it.
  KyKernel end, fill;
  Must(end.SetKernelData(-1, -1, -1, -1, 1, -1, 0, 1, 0));
  Must(ImgThin(&skeleton, &pruned, &end, KERNEL_ROTATION_CLOCKWISE, 6));
  Must(ImgOper(KY_OPER_SUBTRACT, &skeleton, &pruned, &ends));
  Must(fill.SetKernelData(1, 1, 0, 1, -1, 0, 1, 0, -1));
  Must(ImgThick(&strokes, &hull, &fill, KERNEL_ROTATION_CLOCKWISE, 0));
  Color shortened = Over(strokes, pruned, {255, 216, 64});
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if (*static_cast<const KyBW8*>(ends.GetPixelPtr(x, y)) != 0)
        Mark(shortened, x, y, {255, 64, 64});
  Color around = InColor(hull);
  Must(ImgOper(KY_OPER_AND, &around, KyC24{64, 96, 160}, &around));
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      if (*static_cast<const KyBW8*>(strokes.GetPixelPtr(x, y)) != 0)
        Mark(around, x, y, {255, 255, 255});
  const Color panels[] = {Numbered(strokes, 1),
                          Numbered(Over(strokes, skeleton, {255, 216, 64}), 2),
                          Numbered(shortened, 3), Numbered(around, 4)};
  Write(folder, "thinning", 2, {&panels[0], &panels[1], &panels[2], &panels[3]});
}

}  // namespace docs
