#include "morphology/shape_pass.h"

#include <algorithm>
#include <cstring>

#include "foundation/pitch.h"

namespace ky {

bool ShapePass::Allocate(Extreme extreme, const Shape& shape, std::ptrdiff_t width,
                         std::ptrdiff_t height, int step) noexcept {
  const ExtremeKernels kernels = KernelsOf(extreme);
  if (!plan_.Make(shape, extreme == Extreme::kMaximum, width, height)) return false;
  join_ = kernels.join;
  width_ = width * step;
  height_ = height;
  step_ = step;
  // Column 0 starts a line of a cache.
  left_ = -((-plan_.left() * step + 63) / 64 * 64);
  padded_ = width_ + plan_.right() * step - left_;
  return AllocateRings(kernels.neutral);
}

// Level l has its row y when row y + tall - 1 of the source has come, and keeps it until the last
// result and the last other level that need it are made.
bool ShapePass::AllocateRings(KyBW8 neutral) noexcept {
  const std::ptrdiff_t levels = plan_.levels();
  std::ptrdiff_t mostParts = std::max<std::ptrdiff_t>(plan_.results(), 1);
  Scratch<std::ptrdiff_t> oldest;  // before the row of the source that has come last
  if (!rings_.Allocate(levels) || !oldest.Allocate(levels)) return false;
  const auto needs = [&](const ShapePlan::Part& part, std::ptrdiff_t row) {
    oldest[part.level] = std::max(oldest[part.level], row - part.down);
  };
  std::fill_n(oldest.get(), levels, 0);
  for (std::ptrdiff_t i = 0; i < plan_.results(); ++i) needs(plan_.result(i), plan_.down());
  std::ptrdiff_t rows = 1;
  const std::ptrdiff_t pitch = ScratchPitch(padded_ + kRowSlack);
  for (std::ptrdiff_t l = levels - 1; l >= 0; --l) {
    const ShapePlan::Level& level = plan_.level(l);
    for (std::ptrdiff_t i = 0; i < level.parts; ++i) needs(plan_.PartsOf(level)[i], level.tall - 1);
    mostParts = std::max(mostParts, level.parts);
    const std::ptrdiff_t reach = level.tall - 1;
    const std::ptrdiff_t count = std::min(std::max(oldest[l], reach) - reach + 1, height_ + reach);
    rings_[l] = {nullptr, pitch, count, 0};
    rows += count;
  }
  if (!joined_.Allocate(mostParts) || !memory_.Allocate(rows * pitch)) return false;
  std::fill_n(memory_.get(), rows * pitch, neutral);
  nothing_ = memory_.get() - left_;
  KyBW8* next = nothing_ + pitch;
  for (std::ptrdiff_t l = 0; l < levels; ++l) {
    rings_[l].first = next;
    next += rings_[l].count * pitch;
  }
  return true;
}

KyBW8* ShapePass::RowOf(std::ptrdiff_t level, std::ptrdiff_t y) const noexcept {
  const std::ptrdiff_t end = y + plan_.level(level).tall - 1;
  if (end < 0 || y >= height_) return nothing_;
  const Ring& ring = rings_[level];
  const std::ptrdiff_t slot = ring.slot - (taken_ - end);
  return ring.first + (slot < 0 ? slot + ring.count : slot) * ring.pitch;
}

// out[i] = the extreme of the parts around (x + i, y) for n elements.
void ShapePass::Join(KyBW8* out, std::ptrdiff_t n, const ShapePlan::Part* parts,
                     std::ptrdiff_t count, std::ptrdiff_t x, std::ptrdiff_t y) noexcept {
  joined_[0] = nothing_;
  for (std::ptrdiff_t i = 0; i < count; ++i)
    joined_[i] = RowOf(parts[i].level, y + parts[i].down) + x + parts[i].right * step_;
  join_(out, n, joined_.get(), std::max<std::ptrdiff_t>(count, 1));
}

// The rows of all levels that end in row taken_.
void ShapePass::MakeLevels() noexcept {
  for (std::ptrdiff_t l = 1; l < plan_.levels(); ++l) {
    const ShapePlan::Level& level = plan_.level(l);
    const std::ptrdiff_t y = taken_ - level.tall + 1, n = padded_ - (level.length - 1) * step_;
    if (y < height_) Join(RowOf(l, y) + left_, n, plan_.PartsOf(level), level.parts, left_, y);
  }
}

void ShapePass::MoveOn() noexcept {
  ++taken_;
  for (std::ptrdiff_t l = 0; l < plan_.levels(); ++l)
    if (Ring& ring = rings_[l]; ++ring.slot == ring.count) ring.slot = 0;
}

std::ptrdiff_t ShapePass::Advance(std::ptrdiff_t ready, Lines<const KyBW8> in,
                                  Lines<KyBW8> out) noexcept {
  const std::ptrdiff_t end = ready == height_ ? height_ + Lag() : ready;
  while (taken_ < end) {
    if (taken_ < height_)
      std::memcpy(RowOf(0, taken_), in(taken_), static_cast<std::size_t>(width_));
    MakeLevels();
    if (const std::ptrdiff_t y = taken_ - Lag(); y >= 0)
      Join(out(y), width_, plan_.results() > 0 ? &plan_.result(0) : nullptr, plan_.results(), 0, y);
    MoveOn();
  }
  return std::max<std::ptrdiff_t>(taken_ - Lag(), 0);
}

}  // namespace ky
