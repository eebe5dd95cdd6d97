// A flat element of any shape, as runs of its rows.
#pragma once

#include <cstddef>

#include "foundation/kernels/kernel_view.h"
#include "foundation/scratch.h"

namespace ky {

// `length` positions of row `row` from column `left` on, relative to the pixel that a result is
// for.
struct ShapeRun {
  std::ptrdiff_t row, left, length;
};

class Shape {
 public:
  // The coefficients that are not 0, around the one at (sizeX / 2, sizeY / 2).
  explicit Shape(const KernelView& kernel) noexcept : kernel_(kernel) {}

  bool HasMembers() const noexcept;
  // True of a rectangle around the pixel, of which the half sizes are given.
  bool IsBox(unsigned& halfWidth, unsigned& halfHeight) const noexcept;
  // True of the pixel and its four neighbours.
  bool IsCross() const noexcept;
  // Runs of the members on images of this size, for an extreme over source(p + b), or over
  // source(p - b) when reflected. Members so far away that they never meet a pixel are left out.
  // Null `runs` only count.
  std::ptrdiff_t FindRuns(std::ptrdiff_t width, std::ptrdiff_t height, bool reflected,
                          ShapeRun* runs) const noexcept;

 private:
  bool Has(std::ptrdiff_t i, std::ptrdiff_t j) const noexcept {
    return kernel_.data[j * kernel_.sizeX + i] != 0;
  }

  KernelView kernel_;
};

}  // namespace ky
