// Running extremes over windows of n rows, down columns or diagonals.
#pragma once

#include <cstddef>

#include "foundation/scratch.h"
#include "morphology/extremes_rows.h"

namespace ky {

// Row y is at first + (y mod count) * pitch: an image of `count` rows, or a ring of them.
template <class T>
struct Lines {
  T* first;
  std::ptrdiff_t pitch, count;

  T* operator()(std::ptrdiff_t y) const noexcept { return first + y % count * pitch; }
};

// Which windows: result row o is the extreme of input rows o - lead to o - lead + n - 1, each
// `slope` columns further to the right than the one above it:
//
//   result(x, o) = extreme of input(x + slope * i, o - lead + i) for 0 <= i < n
//
// Rows that do not exist count for nothing. Results are wanted in columns from..to - 1.
struct RowWindows {
  std::ptrdiff_t n, lead, slope;
  std::ptrdiff_t inputs, results;
  std::ptrdiff_t from, to;

  // Columns that slots and results have on either side of the wanted ones, enough for the results
  // of windows of one slope to be the inputs of windows of the other.
  std::ptrdiff_t Margin() const noexcept { return slope == 0 ? 0 : 3 * n; }
  // Bytes of a row of scratch with those columns; never a multiple of large powers of two, which
  // would make rows compete for the same places in a cache.
  std::ptrdiff_t Pitch() const noexcept;
  // Rows of scratch: two blocks of n, and one for the rows that do not exist.
  std::ptrdiff_t Slots() const noexcept;
};

// The method of van Herk, Gil and Werman by whole rows. For every block of n input rows, the
// extremes from each of its rows to its end are kept; going through the next block, they are
// joined with those from its start.
class RunningRows {
 public:
  // False when there is no memory for windows like these, or smaller ones.
  bool Allocate(const ExtremeKernels& kernels, const RowWindows& windows) noexcept;
  // Forgets all inputs, and takes windows of which no number exceeds those that it was allocated
  // for.
  void Start(const RowWindows& windows) noexcept;

  // Column 0 of the place for input row t. Only the row that MakeBlock asks for next and the n - 1
  // after it have one. All columns that the wanted results need must be put there.
  KyBW8* Slot(std::ptrdiff_t t) const noexcept;

  // Makes the next results, up to n rows, if the first `taken` inputs suffice for them. `results`
  // gives column 0 of the place for row o: with a slope, the margins of that row are overwritten
  // with levels of no meaning. True when it should be asked again.
  template <class Results>
  bool MakeBlock(std::ptrdiff_t taken, const Results& results) noexcept {
    if (!HasInputs(taken)) return false;
    for (std::ptrdiff_t i = 0; i < Outputs(); ++i)
      results_[i] = results(made_ + i) + windows_.slope * i;
    RunBlock();
    return true;
  }
  // Result rows so far.
  std::ptrdiff_t made() const noexcept { return made_; }

 private:
  std::ptrdiff_t Outputs() const noexcept;
  bool HasInputs(std::ptrdiff_t taken) const noexcept;
  void RunBlock() noexcept;

  const ExtremeKernels* kernels_ = nullptr;
  RowWindows windows_ = {};
  std::ptrdiff_t blockStart_ = 0;  // first input row of the block that comes next
  std::ptrdiff_t made_ = 0;
  bool leads_ = false;  // that block is the one before the first results
  Lines<KyBW8> slots_ = {};
  KyBW8* nothing_ = nullptr;  // the row that stands for those that do not exist
  Scratch<KyBW8> memory_;
  Scratch<KyBW8*> rows_, results_;
  Scratch<const KyBW8*> before_;
};

}  // namespace ky
