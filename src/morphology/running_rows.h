// Running extremes over windows of n rows, down columns or diagonals.
#pragma once

#include <algorithm>
#include <cstddef>

#include "foundation/ring.h"
#include "foundation/scratch.h"
#include "morphology/extremes.h"

namespace ky {

// Which windows: result row o is the extreme of input rows o - lead to o - lead + n - 1, each
// `slope` columns further to the right than the one above it:
//
//   result(x, o) = extreme of input(x + slope * i, o - lead + i) for 0 <= i < n
//
// Rows that do not exist count for nothing. Results are wanted in columns from..to - 1. n is 2 or
// more.
struct RowWindows {
  std::ptrdiff_t n, lead, slope;
  std::ptrdiff_t inputs, results;
  std::ptrdiff_t from, to;

  // Columns that slots and results have on either side of the wanted ones, enough for the results
  // of windows of one slope to be the inputs of windows of the other.
  std::ptrdiff_t Margin() const noexcept { return slope == 0 ? 0 : 2 * n; }
  // Bytes of a row of scratch with those columns.
  std::ptrdiff_t Pitch() const noexcept;
  // Rows of a block, n - 1 or fewer.
  std::ptrdiff_t BlockRows() const noexcept;
  // Blocks between the first and the last rows of a window.
  std::ptrdiff_t Totals() const noexcept;
  // Rows of scratch for inputs, and all: also the totals, and one for the rows that do not exist.
  std::ptrdiff_t Slots() const noexcept;
  std::ptrdiff_t Rows() const noexcept { return Slots() + Totals() + 1; }
};

// The method of van Herk, Gil and Werman by whole rows, in blocks that may be shorter than the
// windows. Windows that end in one block of rows start in the same number of rows n - 1 further up.
// Each joins three extremes: from its start to the end of those rows, of the rows between, which
// are the same for all, and from the start of the block to its own end. Most of the rows between
// are whole blocks, whose extremes have been kept as totals.
class RunningRows {
 public:
  // False when there is no memory for windows like these, for narrower ones, and for those of fewer
  // rows if there is a slope.
  bool Allocate(const ExtremeKernels& kernels, const RowWindows& windows) noexcept;
  // Forgets all inputs, and takes windows that it was allocated for.
  void Start(const RowWindows& windows) noexcept;

  // Column 0 of the place for input row t, which is one up to the end of the block that MakeBlock
  // makes next. All columns that the wanted results need must be put there.
  KyBW8* Slot(std::ptrdiff_t t) const noexcept;

  // Makes the next results, a block of rows or the rest, if the first `taken` inputs suffice for
  // them. `results` gives column 0 of the place for row o: with a slope, the margins of that row
  // are overwritten with levels of no meaning. True when it should be asked again.
  template <class Results>
  bool MakeBlock(std::ptrdiff_t taken, const Results& results) noexcept {
    if (!HasInputs(taken)) return false;
    for (std::ptrdiff_t i = 0; i < Outputs(); ++i)
      results_[i] = results(made_ + i) + windows_.slope * i;
    RunBlock();
    return true;
  }
  // How many rows the results are behind the inputs, at most.
  std::ptrdiff_t Lag() const noexcept { return windows_.n - windows_.lead + block_ - 2; }
  // Result rows so far.
  std::ptrdiff_t made() const noexcept { return std::max<std::ptrdiff_t>(made_, 0); }

 private:
  void FindRows(const KyBW8** rows, std::ptrdiff_t count, std::ptrdiff_t i) const noexcept;
  std::ptrdiff_t Outputs() const noexcept;
  bool HasInputs(std::ptrdiff_t taken) const noexcept;
  void RunBlock() noexcept;

  ExtremeKernels kernels_ = {};
  RowWindows windows_ = {};
  // The first row of the next results. Before those, the blocks above are gone through for their
  // totals.
  std::ptrdiff_t made_ = 0;
  std::ptrdiff_t block_ = 0;
  KyBW8* nothing_ = nullptr;  // the row that stands for those that do not exist
  Lines<KyBW8> slots_ = {}, totals_ = {};
  Scratch<KyBW8> memory_, toEnds_;
  Scratch<const KyBW8*> first_, between_, last_;
  Scratch<KyBW8*> results_;
};

}  // namespace ky
