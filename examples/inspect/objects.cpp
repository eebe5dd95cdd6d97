#include "inspect/objects.h"

#include <algorithm>
#include <cstdlib>

#include "support/program.h"

namespace inspect {
namespace {

constexpr KyBW8 kObject = 255;

KyPathVector FollowContour(const KyImage<KyBW8>& mask, int x, int y) {
  KyPathVector contour;
  const KY_ERRORS error = ImgContour(&mask, KY_CONTOUR_CW_ALONG_BORDER, x, y,
                                     KY_CONTOUR_ABOVE_THRESHOLD, kObject, KY_CONNEXITY_8, &contour);
  if (error == KY_ERROR_CONTOUR_ISOLATED)
    Must(contour.AddElement({static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)}));
  else
    Must(error);
  return contour;
}

// The element that follows, around the contour.
const KyPath& Next(const KyPathVector& contour, unsigned int i) {
  return contour[i + 1 == contour.GetNumElements() ? 0 : i + 1];
}

Box BoxOf(const KyPathVector& contour) {
  const auto [left, right] = std::minmax_element(
      contour.begin(), contour.end(), [](const KyPath& a, const KyPath& b) { return a.x < b.x; });
  const auto [top, bottom] = std::minmax_element(
      contour.begin(), contour.end(), [](const KyPath& a, const KyPath& b) { return a.y < b.y; });
  return {left->x, top->y, right->x - left->x + 1, bottom->y - top->y + 1};
}

// The polygon through the centres of the contour's pixels has A by the shoelace formula, and by
// Pick's theorem (1899) A = inner + steps / 2 - 1; the pixels are the inner ones and the steps.
double AreaOf(const KyPathVector& contour) {
  const unsigned int count = contour.GetNumElements();
  if (count == 1) return 1;
  double twice = 0;
  for (unsigned int i = 0; i < count; ++i) {
    const KyPath &a = contour[i], &b = Next(contour, i);
    twice += a.x * b.y - b.x * a.y;
  }
  return std::abs(twice) / 2 + count / 2.0 + 1;
}

// Takes what the contour encloses out of the mask, row by row. A pixel is inside when the contour
// winds around it: when the steps down and up through its row, left of it, do not cancel out.
std::vector<KyRun> TakeRuns(KyImage<KyBW8>& mask, const KyPathVector& contour, const Box& box) {
  struct Cell {
    int turns = 0;
    bool onContour = false;
  };
  std::vector<Cell> cells(static_cast<std::size_t>(box.width) * box.height);
  const auto cell = [&](const KyPath& p) -> Cell& {
    return cells[static_cast<std::size_t>(p.y - box.y) * box.width + (p.x - box.x)];
  };
  for (unsigned int i = 0; i < contour.GetNumElements(); ++i) {
    const KyPath &from = contour[i], &to = Next(contour, i);
    cell(from).onContour = true;
    if (to.y > from.y) ++cell(from).turns;
    if (to.y < from.y) --cell(to).turns;
  }

  std::vector<KyRun> runs;
  const Cell* at = cells.data();
  for (int y = box.y; y < box.y + box.height; ++y) {
    const auto row = static_cast<KyBW8*>(mask.GetPixelPtr(0, y));
    int winding = 0;
    bool inRun = false;
    for (int x = box.x; x < box.x + box.width; ++x, ++at) {
      winding += at->turns;
      const bool enclosed = winding != 0 || at->onContour;
      const bool taken = enclosed && row[x] == kObject;
      if (taken && !inRun) runs.push_back({x, y, 0});
      if (taken) ++runs.back().length;
      if (enclosed) row[x] = 0;
      inRun = taken;
    }
  }
  return runs;
}

Object TakeObject(KyImage<KyBW8>& mask, int x, int y) {
  Object object;
  object.contour = FollowContour(mask, x, y);
  object.box = BoxOf(object.contour);
  object.area = AreaOf(object.contour);
  object.runs = TakeRuns(mask, object.contour, object.box);
  return object;
}

}  // namespace

std::vector<Object> TakeObjects(KyImage<KyBW8>& mask, double minArea) {
  std::vector<Object> objects;
  for (int y = 0; y < mask.GetHeight(); ++y) {
    const auto row = static_cast<const KyBW8*>(mask.GetPixelPtr(0, y));
    const KyBW8* const end = row + mask.GetWidth();
    for (const KyBW8* at = row; (at = std::find(at, end, kObject)) != end; ++at) {
      Object object = TakeObject(mask, static_cast<int>(at - row), y);
      if (object.area >= minArea) objects.push_back(std::move(object));
    }
  }
  return objects;
}

}  // namespace inspect
