// Erosion and dilation by a shape as a pass that goes down an image; see passes.h.
#pragma once

#include <cstddef>

#include "foundation/ring.h"
#include "foundation/scratch.h"
#include "morphology/extremes.h"
#include "morphology/shape_plan.h"

namespace ky {

// Keeps the rows of each level of a plan that are still needed, in a ring.
class ShapePass {
 public:
  // For rows of `width` pixels of `step` elements. False when there is no memory.
  bool Allocate(Extreme extreme, const Shape& shape, std::ptrdiff_t width, std::ptrdiff_t height,
                int step) noexcept;
  std::ptrdiff_t Advance(std::ptrdiff_t ready, Lines<const KyBW8> in, Lines<KyBW8> out) noexcept;
  // How many rows the results are behind.
  std::ptrdiff_t Lag() const noexcept { return plan_.down(); }

 private:
  // Column 0 of a level's rows. The slot of the row that comes last, which ends in row taken_ of
  // the source, moves along with that: divisions are slow.
  struct Ring {
    KyBW8* first;
    std::ptrdiff_t pitch, count, slot;
  };

  bool AllocateRings(KyBW8 neutral) noexcept;
  KyBW8* RowOf(std::ptrdiff_t level, std::ptrdiff_t y) const noexcept;
  void Join(KyBW8* out, std::ptrdiff_t n, const ShapePlan::Part* parts, std::ptrdiff_t count,
            std::ptrdiff_t x, std::ptrdiff_t y) noexcept;
  void MakeLevels() noexcept;
  void MoveOn() noexcept;

  JoinKernel join_ = nullptr;
  ShapePlan plan_;
  std::ptrdiff_t width_ = 0, height_ = 0, step_ = 0;  // in elements
  std::ptrdiff_t left_ = 0, padded_ = 0;              // where rows of levels start, and their width
  std::ptrdiff_t taken_ = 0;
  Scratch<KyBW8> memory_;
  Scratch<Ring> rings_;
  Scratch<const KyBW8*> joined_;  // the rows that a row is made of
  KyBW8* nothing_ = nullptr;      // the row that stands for those that do not exist
};

}  // namespace ky
