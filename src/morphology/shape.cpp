#include "morphology/shape.h"

#include <algorithm>

namespace ky {

bool Shape::HasMembers() const noexcept {
  const std::ptrdiff_t count = std::ptrdiff_t{kernel_.sizeX} * kernel_.sizeY;
  return std::any_of(kernel_.data, kernel_.data + count, [](float c) { return c != 0; });
}

bool Shape::IsBox(unsigned& halfWidth, unsigned& halfHeight) const noexcept {
  const std::ptrdiff_t centerX = kernel_.sizeX / 2, centerY = kernel_.sizeY / 2;
  if (!Has(centerX, centerY)) return false;
  std::ptrdiff_t right = 0, down = 0;
  while (centerX + right + 1 < kernel_.sizeX && Has(centerX + right + 1, centerY)) ++right;
  while (centerY + down + 1 < kernel_.sizeY && Has(centerX, centerY + down + 1)) ++down;
  halfWidth = static_cast<unsigned>(right);
  halfHeight = static_cast<unsigned>(down);
  for (std::ptrdiff_t j = 0; j < kernel_.sizeY; ++j)
    for (std::ptrdiff_t i = 0; i < kernel_.sizeX; ++i)
      if (Has(i, j) != (std::abs(i - centerX) <= right && std::abs(j - centerY) <= down))
        return false;
  return true;
}

bool Shape::IsCross() const noexcept {
  const std::ptrdiff_t centerX = kernel_.sizeX / 2, centerY = kernel_.sizeY / 2;
  std::ptrdiff_t members = 0;
  for (std::ptrdiff_t j = 0; j < kernel_.sizeY; ++j)
    for (std::ptrdiff_t i = 0; i < kernel_.sizeX; ++i) {
      if (!Has(i, j)) continue;
      if (std::abs(i - centerX) + std::abs(j - centerY) > 1) return false;
      ++members;
    }
  return members == 5;
}

std::ptrdiff_t Shape::FindRuns(std::ptrdiff_t width, std::ptrdiff_t height, bool reflected,
                               ShapeRun* runs) const noexcept {
  const std::ptrdiff_t centerX = kernel_.sizeX / 2, centerY = kernel_.sizeY / 2;
  const std::ptrdiff_t left = std::max<std::ptrdiff_t>(0, centerX - width + 1);
  const std::ptrdiff_t right = std::min<std::ptrdiff_t>(kernel_.sizeX, centerX + width);
  const std::ptrdiff_t top = std::max<std::ptrdiff_t>(0, centerY - height + 1);
  const std::ptrdiff_t low = std::min<std::ptrdiff_t>(kernel_.sizeY, centerY + height);
  std::ptrdiff_t count = 0;
  for (std::ptrdiff_t j = top; j < low; ++j)
    for (std::ptrdiff_t i = left; i < right; ++i) {
      if (!Has(i, j)) continue;
      const std::ptrdiff_t first = i;
      while (i + 1 < right && Has(i + 1, j)) ++i;
      if (runs != nullptr)
        runs[count] = {reflected ? centerY - j : j - centerY,
                       reflected ? centerX - i : first - centerX, i - first + 1};
      ++count;
    }
  return count;
}

}  // namespace ky
