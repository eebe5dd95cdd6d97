#include "morphology/running_rows.h"

#include <algorithm>

namespace ky {

std::ptrdiff_t RowWindows::Pitch() const noexcept {
  const std::ptrdiff_t lines = (to - from + 2 * Margin() + kRowSlack + 63) / 64;
  return 64 * (lines | 1);
}

std::ptrdiff_t RowWindows::Slots() const noexcept { return std::min(2 * n, inputs) + 1; }

bool RunningRows::Allocate(const ExtremeKernels& kernels, const RowWindows& windows) noexcept {
  kernels_ = &kernels;
  if (!memory_.Allocate(windows.Slots() * windows.Pitch()) || !rows_.Allocate(windows.n) ||
      !results_.Allocate(windows.n) || !before_.Allocate(windows.n))
    return false;
  std::fill_n(memory_.get(), windows.Slots() * windows.Pitch(), kernels.neutral);
  Start(windows);
  return true;
}

void RunningRows::Start(const RowWindows& windows) noexcept {
  windows_ = windows;
  const std::ptrdiff_t pitch = windows.Pitch(), count = windows.Slots();
  KyBW8* const last = memory_.get() + (count - 1) * pitch;
  std::fill_n(last, pitch, kernels_->neutral);
  const std::ptrdiff_t left = windows.Margin() - windows.from;
  slots_ = {memory_.get() + left, pitch, count - 1};
  nothing_ = last + left;
  std::fill_n(before_.get(), windows.n, nothing_);
  blockStart_ = -1 - windows.lead;
  made_ = 0;
  leads_ = true;
}

KyBW8* RunningRows::Slot(std::ptrdiff_t t) const noexcept { return slots_(t); }

std::ptrdiff_t RunningRows::Outputs() const noexcept {
  return leads_ ? 0 : std::min(windows_.n, windows_.results - made_);
}

bool RunningRows::HasInputs(std::ptrdiff_t taken) const noexcept {
  return taken >= std::min(blockStart_ + windows_.n, windows_.inputs) && made_ < windows_.results;
}

// Rows are addressed by their lines of slope: in the coordinates of the block, row i stands n - 1
// rows below the first row of the window of the block's first result, and so much further right.
void RunningRows::RunBlock() noexcept {
  const auto [n, lead, slope, inputs, results, from, to] = windows_;
  const std::ptrdiff_t firstRow = std::max<std::ptrdiff_t>(0, -blockStart_);
  const std::ptrdiff_t endRow = std::min(n, inputs - blockStart_);
  const auto exists = [&](std::ptrdiff_t i) { return i >= firstRow && i < endRow; };
  for (std::ptrdiff_t i = 0; i < n; ++i)
    rows_[i] = exists(i) ? Slot(blockStart_ + i) + slope * (n - 1 + i) : nothing_;

  const std::ptrdiff_t outputs = Outputs();
  const bool more = made_ + outputs < results;
  // The next block's lines start n further left or right: their ends must be kept too.
  const std::ptrdiff_t reach = 2 * n - 1;
  kernels_->across({from - (slope > 0 ? reach : 0), to + (slope < 0 ? reach : 0), before_.get(),
                    rows_.get(), results_.get(), outputs, std::max<std::ptrdiff_t>(1, firstRow),
                    more ? endRow : 0});

  // A window that starts above the first row has what is kept for that row.
  for (std::ptrdiff_t i = 1; i < n; ++i) {
    const std::ptrdiff_t from0 = std::max(i, firstRow);
    before_[i - 1] = exists(from0) ? rows_[from0] - slope * n : nothing_;
  }
  made_ += outputs;
  blockStart_ += n;
  leads_ = false;
}

}  // namespace ky
