#include "morphology/passes.h"

#include <algorithm>
#include <cstring>

namespace ky {

namespace {

// Scratch of boxes that stays in a third cache, and of diamonds that stays in a second one, as they
// go through theirs more often. What would need more goes by tiles or rounds, of some least size.
constexpr std::ptrdiff_t kBoxBytes = 8 << 20, kDiamondBytes = 3 << 19;
constexpr std::ptrdiff_t kLeastTileWidth = 256, kLeastRound = 32;

void CopyRow(KyBW8* to, const KyBW8* from, std::ptrdiff_t n) noexcept {
  if (to != from) std::memcpy(to, from, static_cast<std::size_t>(n));
}

Lines<const KyBW8> ReadOnly(Lines<KyBW8> lines) noexcept {
  return {lines.first, lines.pitch, lines.count};
}

RowWindows Columns(std::ptrdiff_t half, std::ptrdiff_t width, std::ptrdiff_t height) noexcept {
  return {2 * half + 1, half, 0, height, height, 0, width};
}

// The windows of n pixels down a diagonal to the right, whose results begin n - 1 rows above the
// first, and those of these to the left.
RowWindows Falling(std::ptrdiff_t n, std::ptrdiff_t width, std::ptrdiff_t height) noexcept {
  return {n, n - 1, 1, height, height + n - 1, 1 - n, width};
}
RowWindows Rising(std::ptrdiff_t n, std::ptrdiff_t width, std::ptrdiff_t height) noexcept {
  return {n, 0, -1, height + n - 1, height, 0, width};
}

}  // namespace

Element Element::On(std::ptrdiff_t width, std::ptrdiff_t height) const noexcept {
  const std::ptrdiff_t right = std::max<std::ptrdiff_t>(width - 1, 0);
  const std::ptrdiff_t down = std::max<std::ptrdiff_t>(height - 1, 0);
  const Element box = {std::min(halfWidth, right), std::min(halfHeight, down), 0, step};

  const bool boxCoversAll = box.halfWidth == right && box.halfHeight == down;
  if (boxCoversAll || crosses == 0) return box;
  if (crosses >= right + down) return {right, down, 0};
  return {box.halfWidth, box.halfHeight, crosses};
}

bool BoxPass::Allocate(const ExtremeKernels& kernels, const Element& element, std::ptrdiff_t width,
                       std::ptrdiff_t height) noexcept {
  kernels_ = kernels;
  width_ = tileWidth_ = width;
  height_ = height;
  halfWidth_ = element.halfWidth;
  halfHeight_ = element.halfHeight;
  step_ = element.step;
  const std::ptrdiff_t padded = width + 2 * halfWidth_ * step_ + kRowSlack;
  const std::ptrdiff_t front = kRowFront + 64 + kLeastRow;
  if (halfWidth_ > 0 && (!row_.Allocate(front + padded) || !spare_.Allocate(padded))) return false;
  if (halfHeight_ == 0) return true;
  const RowWindows whole = Columns(halfHeight_, width, height);
  if (whole.Rows() * whole.Pitch() > kBoxBytes) {
    const std::ptrdiff_t fitting = kBoxBytes / whole.Rows() - 2 * kRowSlack;
    const std::ptrdiff_t most = std::max(fitting, kLeastTileWidth);
    const std::ptrdiff_t tiles = (width + most - 1) / most;
    tileWidth_ = std::min(width, ((width + tiles - 1) / tiles + 63) / 64 * 64);
  }
  return columns_.Allocate(kernels, Columns(halfHeight_, tileWidth_, height));
}

// Row y along, into a place in scratch, and where it is then; `soon` is what is stored to next.
const KyBW8* BoxPass::MakeRow(KyBW8* slot, const KyBW8* in, const KyBW8* soon) noexcept {
  if (halfWidth_ == 0) return in;
  // The row's own elements start a line of a cache.
  KyBW8* const row = row_.get() + kRowFront + (-halfWidth_ * step_ & 63);
  const AlongKernel along = step_ == 1 ? kernels_.along : kernels_.alongColor;
  along(slot, width_, in, row, spare_.get(), halfWidth_, soon);
  return slot;
}

std::ptrdiff_t BoxPass::Advance(std::ptrdiff_t ready, Lines<const KyBW8> in,
                                Lines<KyBW8> out) noexcept {
  const bool alongOnly = halfHeight_ == 0 || IsTall();
  for (; taken_ < ready; ++taken_) {
    KyBW8* const slot = alongOnly ? row_.get() : columns_.Slot(taken_);
    const KyBW8* const soon =
        out(alongOnly ? taken_ : std::max(taken_ - halfHeight_, std::ptrdiff_t{0}));
    CopyRow(alongOnly ? out(taken_) : slot, MakeRow(slot, in(taken_), soon), width_);
    if (alongOnly) continue;
    while (columns_.MakeBlock(taken_ + 1, out)) {
    }
  }
  if (!alongOnly) return columns_.made();
  if (halfHeight_ == 0) return taken_;
  if (taken_ < height_) return 0;
  RunTiles(out);
  return height_;
}

void BoxPass::RunTiles(Lines<KyBW8> out) noexcept {
  for (std::ptrdiff_t x = 0; x < width_; x += tileWidth_) {
    const std::ptrdiff_t width = std::min(tileWidth_, width_ - x);
    const Lines<KyBW8> tile = {out.first + x, out.pitch, out.count};
    columns_.Start(Columns(halfHeight_, width, height_));
    for (std::ptrdiff_t y = 0; y < height_; ++y) {
      CopyRow(columns_.Slot(y), tile(y), width);
      while (columns_.MakeBlock(y + 1, tile)) {
      }
    }
  }
}

bool DiamondPass::Allocate(const ExtremeKernels& kernels, std::ptrdiff_t steps,
                           std::ptrdiff_t width, std::ptrdiff_t height) noexcept {
  kernels_ = kernels;
  steps_ = steps;
  width_ = width;
  height_ = height;
  const auto bytes = [&](std::ptrdiff_t n) {
    const RowWindows falling = Falling(n, width, height), rising = Rising(n, width, height);
    return falling.Rows() * falling.Pitch() + rising.Rows() * rising.Pitch();
  };
  longest_ = std::min(steps, kLeastRound);
  while (longest_ < steps && bytes(longest_ + 1) <= kDiamondBytes) ++longest_;
  const std::ptrdiff_t n = std::max<std::ptrdiff_t>(longest_, 2);
  const RowWindows rising = Rising(n, width, height);
  // A block, two rows more for the crosses around it, and the one of nothing.
  const std::ptrdiff_t rows = n + 2;
  const std::ptrdiff_t margin = rising.Margin() + 1, pitch = rising.Pitch() + kRowSlack;
  if (!falling_.Allocate(kernels, Falling(n, width, height)) ||
      !rising_.Allocate(kernels, rising) || !memory_.Allocate(rows * pitch))
    return false;
  std::fill_n(memory_.get(), rows * pitch, kernels.neutral);
  nothing_ = memory_.get() + margin;
  diagonals_ = {nothing_ + pitch, pitch, rows - 1};
  // The first round is the one that has the odd steps.
  inRound_ = (steps - 1) % longest_ + 1;
  StartRound();
  return true;
}

void DiamondPass::StartRound() noexcept {
  taken_ = made_ = 0;
  if (inRound_ == 1) return;
  falling_.Start(Falling(inRound_, width_, height_));
  rising_.Start(Rising(inRound_, width_, height_));
}

std::ptrdiff_t DiamondPass::Advance(std::ptrdiff_t ready, Lines<const KyBW8> in,
                                    Lines<KyBW8> out) noexcept {
  const std::ptrdiff_t made = AdvanceRound(ready, in, out);
  if (!NeedsRounds()) return made;
  if (made < height_) return 0;
  for (std::ptrdiff_t done = inRound_; done < steps_; done += longest_) {
    inRound_ = longest_;
    StartRound();
    AdvanceRound(height_, ReadOnly(out), out);
  }
  return height_;
}

std::ptrdiff_t DiamondPass::AdvanceRound(std::ptrdiff_t ready, Lines<const KyBW8> in,
                                         Lines<KyBW8> out) noexcept {
  const auto falling = [&](std::ptrdiff_t t) { return rising_.Slot(t); };
  while (taken_ < ready) {
    if (inRound_ == 1) {
      CopyRow(diagonals_(taken_), in(taken_), width_);
      MakeCrosses(++taken_, out);
      continue;
    }
    PutInput(taken_, in(taken_));
    ++taken_;
    while (falling_.MakeBlock(taken_, falling))
      while (rising_.MakeBlock(falling_.made(), diagonals_)) MakeCrosses(rising_.made(), out);
  }
  return made_;
}

// An earlier round, of other windows, may have had its rows in the columns outside.
void DiamondPass::PutInput(std::ptrdiff_t t, const KyBW8* row) noexcept {
  KyBW8* const slot = falling_.Slot(t);
  const auto outside = static_cast<std::size_t>(inRound_ - 1);
  std::memset(slot - outside, kernels_.neutral, outside);
  CopyRow(slot, row, width_);
  std::memset(slot + width_, kernels_.neutral, outside);
}

// The crosses whose rows are all there.
void DiamondPass::MakeCrosses(std::ptrdiff_t ready, Lines<KyBW8> out) noexcept {
  for (; made_ < ready && (made_ + 1 < ready || ready == height_); ++made_) {
    KyBW8* const row = diagonals_(made_);
    row[-1] = row[width_] = kernels_.neutral;
    kernels_.cross(out(made_), width_, made_ > 0 ? diagonals_(made_ - 1) : nothing_, row,
                   made_ + 1 < height_ ? diagonals_(made_ + 1) : nothing_);
  }
}

bool ExtremePass::Allocate(Extreme extreme, const Element& element, std::ptrdiff_t width,
                           std::ptrdiff_t height) noexcept {
  width_ = width;
  height_ = height;
  element_ = element;
  if (element.shape != nullptr)
    return shape_.Allocate(extreme, *element.shape, width / element.step, height, element.step);
  element_ = element.On(width / element.step, height);
  const ExtremeKernels kernels = KernelsOf(extreme);
  return (!element_.HasBox() || box_.Allocate(kernels, element_, width, height)) &&
         (element_.crosses == 0 || diamond_.Allocate(kernels, element_.crosses, width, height));
}

std::ptrdiff_t ExtremePass::Advance(std::ptrdiff_t ready, Lines<const KyBW8> in,
                                    Lines<KyBW8> out) noexcept {
  if (element_.shape != nullptr) return shape_.Advance(ready, in, out);
  if (element_.IsPoint()) return Copy(ready, in, out);
  if (!element_.HasBox()) return diamond_.Advance(ready, in, out);
  const std::ptrdiff_t boxes = box_.Advance(ready, in, out);
  return element_.crosses == 0 ? boxes : diamond_.Advance(boxes, ReadOnly(out), out);
}

std::ptrdiff_t ExtremePass::Copy(std::ptrdiff_t ready, Lines<const KyBW8> in,
                                 Lines<KyBW8> out) noexcept {
  for (; copied_ < ready; ++copied_) CopyRow(out(copied_), in(copied_), width_);
  return copied_;
}

std::ptrdiff_t ExtremePass::RowsInUse(std::ptrdiff_t step) const noexcept {
  if (element_.shape != nullptr) return std::min(height_, step + shape_.Lag());
  const bool hasBox = element_.HasBox(), hasCrosses = element_.crosses > 0;
  if ((hasBox && box_.IsTall()) || (hasCrosses && diamond_.NeedsRounds())) return height_;
  const std::ptrdiff_t lag = (hasBox ? box_.Lag() : 0) + (hasCrosses ? diamond_.Lag() : 0);
  return std::min(height_, step + lag);
}

}  // namespace ky
