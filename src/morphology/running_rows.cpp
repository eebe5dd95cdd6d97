#include "morphology/running_rows.h"

#include <algorithm>

namespace ky {

std::ptrdiff_t RowWindows::Pitch() const noexcept {
  return ScratchPitch(to - from + 2 * Margin() + kRowSlack);
}

// A dozen rows or so make what is done once for a block cost little, and as many as the square root
// of the window's keep the totals few. Of such numbers, the one that leaves the fewest rows over.
// Totals would have to move along a slope, and so lines of slope go without.
std::ptrdiff_t RowWindows::BlockRows() const noexcept {
  if (slope != 0) return n - 1;
  std::ptrdiff_t least = 14;
  while (least * least < n - 1) ++least;
  if (n - 1 < 2 * least) return n - 1;
  std::ptrdiff_t best = least;
  for (std::ptrdiff_t rows = least + 1; rows < 2 * least; ++rows)
    if ((n - 1) % rows < (n - 1) % best) best = rows;
  return best;
}

std::ptrdiff_t RowWindows::Totals() const noexcept { return (n - 1) / BlockRows() - 1; }

std::ptrdiff_t RowWindows::Slots() const noexcept { return std::min(n - 1 + BlockRows(), inputs); }

bool RunningRows::Allocate(const ExtremeKernels& kernels, const RowWindows& windows) noexcept {
  const std::ptrdiff_t block = windows.BlockRows(), between = windows.n - 1 - block;
  if (!memory_.Allocate(windows.Rows() * windows.Pitch()) || !first_.Allocate(block) ||
      !between_.Allocate(between) || !last_.Allocate(block) || !results_.Allocate(block) ||
      !toEnds_.Allocate(block * kStripWidth))
    return false;
  kernels_ = kernels;
  // Columns outside count for nothing; without a slope, none is looked at.
  if (windows.slope != 0)
    std::fill_n(memory_.get(), windows.Rows() * windows.Pitch(), kernels.neutral);
  Start(windows);
  return true;
}

void RunningRows::Start(const RowWindows& windows) noexcept {
  windows_ = windows;
  block_ = windows.BlockRows();
  const std::ptrdiff_t pitch = windows.Pitch(), left = windows.Margin() - windows.from;
  std::fill_n(memory_.get(), pitch, kernels_.neutral);
  nothing_ = memory_.get() + left;
  slots_ = {nothing_ + pitch, pitch, windows.Slots()};
  totals_ = {slots_.first + windows.Slots() * pitch, pitch, windows.Totals()};
  made_ = -totals_.count * block_;
}

KyBW8* RunningRows::Slot(std::ptrdiff_t t) const noexcept { return slots_(t); }

std::ptrdiff_t RunningRows::Outputs() const noexcept {
  return made_ < 0 ? 0 : std::min(block_, windows_.results - made_);
}

bool RunningRows::HasInputs(std::ptrdiff_t taken) const noexcept {
  const std::ptrdiff_t end = made_ - windows_.lead + windows_.n - 1 + block_;
  return taken >= std::min(end, windows_.inputs) && made_ < windows_.results;
}

// Rows are addressed by their lines of slope: in the coordinates of the block, row i is the i-th
// from the first row of its first window on, and stands so much further right.
void RunningRows::FindRows(const KyBW8** rows, std::ptrdiff_t count,
                           std::ptrdiff_t i) const noexcept {
  std::ptrdiff_t t = made_ - windows_.lead + i;
  std::ptrdiff_t slot = std::max<std::ptrdiff_t>(t, 0) % slots_.count;
  for (std::ptrdiff_t k = 0; k < count; ++k, ++t) {
    rows[k] = nothing_;
    if (t < 0 || t >= windows_.inputs) continue;
    rows[k] = slots_.first + slot * slots_.pitch + windows_.slope * (i + k);
    if (++slot == slots_.count) slot = 0;
  }
}

void RunningRows::RunBlock() noexcept {
  const auto& [n, lead, slope, inputs, results, from, to] = windows_;
  FindRows(first_.get(), block_, 0);
  FindRows(last_.get(), block_, n - 1);
  const std::ptrdiff_t left = n - 1 - block_ - totals_.count * block_;
  if (left > 0) FindRows(between_.get(), left, block_);
  for (std::ptrdiff_t i = 0; i < totals_.count; ++i) between_[left + i] = totals_(i);

  const std::ptrdiff_t outputs = Outputs(), reach = block_ - 1;
  // The total of this block takes the place of the oldest one, which is not wanted again.
  KyBW8* const total = totals_.count == 0 ? nullptr : totals_(made_ / block_ + totals_.count);
  kernels_.across({from - (slope > 0 ? reach : 0), to + (slope < 0 ? reach : 0), block_,
                   left + totals_.count, outputs, first_.get(), between_.get(), last_.get(),
                   results_.get(), total, toEnds_.get()});
  made_ += made_ < 0 ? block_ : outputs;
}

}  // namespace ky
