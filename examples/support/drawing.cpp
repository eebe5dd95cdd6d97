#include "drawing.h"

#include <algorithm>
#include <string>

#include "ky/operators.h"
#include "ky/path_sampling.h"
#include "program.h"

namespace draw {
namespace {

// The strokes of a digit, each from one point of a grid of 3 x 5 points to another, in the form
// "x0 y0 x1 y1" without the blanks. Points are kScale pixels apart.
constexpr const char* kDigits[10][5] = {
    {"0020", "2024", "0424", "0004"},          // 0
    {"0110", "1014", "0424"},                  // 1
    {"0020", "2022", "0222", "0204", "0424"},  // 2
    {"0020", "2024", "0222", "0424"},          // 3
    {"0002", "0222", "2024"},                  // 4
    {"0020", "0002", "0222", "2224", "0424"},  // 5
    {"0020", "0004", "0222", "2224", "0424"},  // 6
    {"0020", "2014"},                          // 7
    {"0020", "0004", "2024", "0222", "0424"},  // 8
    {"0020", "0002", "2024", "0222", "0424"},  // 9
};
constexpr int kScale = 2;
constexpr int kDigitWidth = 2 * kScale + 1, kDigitGap = 2;
static_assert(kNumberHeight == 4 * kScale + 1);

bool IsInside(const KyGenericROI& picture, Point p) {
  return p.x >= 0 && p.y >= 0 && p.x < picture.GetWidth() && p.y < picture.GetHeight();
}

void Digit(KyROI<KyC24>& picture, int digit, Point at, KyC24 color) {
  for (const char* stroke : kDigits[digit]) {
    if (stroke == nullptr) break;
    const auto on = [&](int i) { return kScale * (stroke[i] - '0'); };
    Line(picture, {at.x + on(0), at.y + on(1)}, {at.x + on(2), at.y + on(3)}, color);
  }
}

}  // namespace

void Line(KyROI<KyC24>& picture, Point from, Point to, KyC24 color) {
  if (IsInside(picture, from) && IsInside(picture, to))
    Must(ImgLineSegmentToImage(&picture, color, from.x, from.y, to.x, to.y));
}

void Frame(KyROI<KyC24>& picture, const Box& box, KyC24 color) {
  const int right = box.x + box.width - 1, bottom = box.y + box.height - 1;
  Line(picture, {box.x, box.y}, {right, box.y}, color);
  Line(picture, {right, box.y}, {right, bottom}, color);
  Line(picture, {right, bottom}, {box.x, bottom}, color);
  Line(picture, {box.x, bottom}, {box.x, box.y}, color);
}

void Fill(KyROI<KyC24>& picture, const Box& box, KyC24 color) {
  const int left = std::max(box.x, 0), top = std::max(box.y, 0);
  const int right = std::min(box.x + box.width, picture.GetWidth());
  const int bottom = std::min(box.y + box.height, picture.GetHeight());
  if (left >= right || top >= bottom) return;
  KyROI<KyC24> inside(&picture, left, top, right - left, bottom - top);
  Must(ImgOper(KY_OPER_COPY, color, &inside));
}

void Contour(KyROI<KyC24>& picture, const KyPathVector& contour, KyC24 color) {
  Must(ImgPathToImage(&picture, &contour, color));
}

int NumberWidth(unsigned int number) {
  const int digits = static_cast<int>(std::to_string(number).size());
  return digits * (kDigitWidth + kDigitGap) - kDigitGap;
}

void Number(KyROI<KyC24>& picture, unsigned int number, Point at, KyC24 color) {
  for (const char digit : std::to_string(number)) {
    Digit(picture, digit - '0', at, color);
    at.x += kDigitWidth + kDigitGap;
  }
}

void Label(KyROI<KyC24>& picture, unsigned int number, Point at, KyC24 plate, KyC24 ink) {
  constexpr int kMargin = 2;
  const int width = NumberWidth(number) + 2 * kMargin, height = kNumberHeight + 2 * kMargin;
  const int x = std::clamp(at.x, 0, std::max(picture.GetWidth() - width, 0));
  const int y = std::clamp(at.y - height / 2, 0, std::max(picture.GetHeight() - height, 0));
  Fill(picture, {x, y, width, height}, plate);
  Number(picture, number, {x + kMargin, y + kMargin}, ink);
}

}  // namespace draw
