// Erosion and dilation as passes that go down an image. A pass is told how many rows of its input
// are ready and returns how many of its results are, all of them once all rows are ready, after
// which it is done. It never writes a row before it has read it, so its output may be its input,
// and passes on the same rows may follow each other closely.
#pragma once

#include <cstddef>

#include "foundation/rows.h"
#include "morphology/running_rows.h"
#include "morphology/shape_pass.h"

namespace ky {

// A dilation step by step: so many by the 3 x 3 square first, then by the cross of five pixels. The
// squares may be fewer in one direction. Or a dilation by a shape, which then says everything.
struct Element {
  std::ptrdiff_t halfWidth, halfHeight;
  std::ptrdiff_t crosses;
  int step = 1;  // elements of a pixel; more than one without crosses, or with one alone
  const Shape* shape = nullptr;

  static Element Box(unsigned halfWidth, unsigned halfHeight, int step = 1) noexcept {
    return {halfWidth, halfHeight, 0, step};
  }
  // A shape that is a box or a cross of five takes their way.
  static Element Of(const Shape& shape, int step) noexcept {
    unsigned halfWidth = 0, halfHeight = 0;
    if (shape.IsBox(halfWidth, halfHeight)) return Box(halfWidth, halfHeight, step);
    if (shape.IsCross()) return {0, 0, 1, step};
    return {0, 0, 0, step, &shape};
  }
  static Element Disk(unsigned radius) noexcept {
    const unsigned crosses = radius / 2 + radius % 2;
    return {radius - crosses, radius - crosses, crosses};
  }
  bool HasBox() const noexcept { return halfWidth > 0 || halfHeight > 0; }
  bool IsPoint() const noexcept { return !HasBox() && crosses == 0; }
  // One square, or one cross.
  bool IsUnit() const noexcept {
    return shape == nullptr &&
           (crosses == 0 ? halfWidth == 1 && halfHeight == 1 : crosses == 1 && !HasBox());
  }
  // The smallest element that does the same on an image of this size, in pixels.
  Element On(std::ptrdiff_t width, std::ptrdiff_t height) const noexcept;
};

// The running extremes of a box: along the rows, then down the columns. The width is one of
// elements, of which a pixel has element.step.
class BoxPass {
 public:
  bool Allocate(const ExtremeKernels& kernels, const Element& element, std::ptrdiff_t width,
                std::ptrdiff_t height) noexcept;
  std::ptrdiff_t Advance(std::ptrdiff_t ready, Lines<const KyBW8> in, Lines<KyBW8> out) noexcept;
  // True when the results can only be made after all rows have been read, whose extremes along the
  // rows wait in the output.
  bool IsTall() const noexcept { return tileWidth_ < width_; }
  // How many rows the results are behind otherwise, at most.
  std::ptrdiff_t Lag() const noexcept { return halfHeight_ == 0 ? 0 : columns_.Lag(); }

 private:
  const KyBW8* MakeRow(KyBW8* slot, const KyBW8* in, const KyBW8* soon) noexcept;
  void RunTiles(Lines<KyBW8> out) noexcept;

  ExtremeKernels kernels_ = {};
  std::ptrdiff_t width_ = 0, height_ = 0, halfWidth_ = 0, halfHeight_ = 0, step_ = 1;
  std::ptrdiff_t tileWidth_ = 0, taken_ = 0;
  Scratch<KyBW8> row_, spare_;
  RunningRows columns_;
};

// n cross steps: the extremes of diamonds, |i| + |j| <= n. Running extremes of n pixels down both
// diagonals make the extremes over every second pixel of the diamond of radius n - 1, and one cross
// step those of all pixels of the next larger one.
class DiamondPass {
 public:
  bool Allocate(const ExtremeKernels& kernels, std::ptrdiff_t steps, std::ptrdiff_t width,
                std::ptrdiff_t height) noexcept;
  std::ptrdiff_t Advance(std::ptrdiff_t ready, Lines<const KyBW8> in, Lines<KyBW8> out) noexcept;
  // True when the diamond is too large for one round through the rows: the results are there after
  // the last.
  bool NeedsRounds() const noexcept { return steps_ > longest_; }
  // How many rows the results are behind otherwise, at most.
  std::ptrdiff_t Lag() const noexcept {
    return 1 + (inRound_ == 1 ? 0 : falling_.Lag() + rising_.Lag());
  }

 private:
  void StartRound() noexcept;
  std::ptrdiff_t AdvanceRound(std::ptrdiff_t ready, Lines<const KyBW8> in,
                              Lines<KyBW8> out) noexcept;
  void PutInput(std::ptrdiff_t t, const KyBW8* row) noexcept;
  void MakeCrosses(std::ptrdiff_t ready, Lines<KyBW8> out) noexcept;

  ExtremeKernels kernels_ = {};
  std::ptrdiff_t width_ = 0, height_ = 0;
  std::ptrdiff_t steps_ = 0, longest_ = 0;
  std::ptrdiff_t inRound_ = 0, taken_ = 0, made_ = 0;
  RunningRows falling_, rising_;
  Scratch<KyBW8> memory_;
  Lines<KyBW8> diagonals_ = {};  // the extremes over every second pixel
  KyBW8* nothing_ = nullptr;
};

// An erosion or a dilation. The width is one of elements.
class ExtremePass {
 public:
  // False when there is no memory. A point needs none.
  bool Allocate(Extreme extreme, const Element& element, std::ptrdiff_t width,
                std::ptrdiff_t height) noexcept;
  std::ptrdiff_t Advance(std::ptrdiff_t ready, Lines<const KyBW8> in, Lines<KyBW8> out) noexcept;
  // How many rows of its output are in use at a time when it advances by `step` rows at most.
  std::ptrdiff_t RowsInUse(std::ptrdiff_t step) const noexcept;

 private:
  std::ptrdiff_t Copy(std::ptrdiff_t ready, Lines<const KyBW8> in, Lines<KyBW8> out) noexcept;

  Element element_ = {};
  std::ptrdiff_t width_ = 0, height_ = 0, copied_ = 0;
  BoxPass box_;
  DiamondPass diamond_;
  ShapePass shape_;
};

}  // namespace ky
