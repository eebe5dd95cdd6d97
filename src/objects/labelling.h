// Connected objects out of runs, row by row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/growing.h"
#include "foundation/scratch.h"
#include "ky/objects.h"
#include "objects/runs.h"

namespace ky {

// Runs of neighbouring rows that touch belong together. A run that touches none above it founds a
// component; one that touches runs of several components unites them. The oldest component of a
// union is its root: its first pixel is that of the whole, so that roots stand in the order of
// their first pixels. Components collect the measures of their runs, which follow from the ends of
// the runs; a union adds them up.
//
// Holes: by Euler's formula, components less holes are the runs less the pairs of runs that touch.
// So each pair that touches without uniting anything closes one hole.
class Labelling {
 public:
  // `keepRuns` keeps all runs for painting, not just those of the last two rows. False when there
  // is no memory.
  bool Start(std::ptrdiff_t width, std::ptrdiff_t height, CONNEXITY connexity,
             bool keepRuns) noexcept;
  // The next row, by the ends of its runs and their levels. False when there is no memory.
  bool AddRow(const std::int32_t* ends, const RunLevels* levels, std::size_t count) noexcept;
  // Numbers the objects after the last row, and returns how many there are.
  KyBW32 Number() noexcept;
  // Stores them, in the order of their labels.
  void Store(KyObject* objects) noexcept;

  // After Number: the runs of row y, and the labels of objects by those of runs.
  const Run* RunsOf(std::ptrdiff_t y) noexcept { return runs_.begin() + starts_[y]; }
  std::size_t CountOf(std::ptrdiff_t y) const noexcept { return starts_[y + 1] - starts_[y]; }
  const KyBW32* Labels() noexcept { return parents_.begin(); }

 private:
  // Two components that meet at a corner without being connected by it.
  struct Corner {
    KyBW32 a, b;
  };
  // What a run adds with the runs above it: pairs of pixels of the object that are neighbours
  // vertically and along diagonals, and holes that close.
  struct Contacts {
    KyBW32 straight = 0, diagonal = 0;
    std::int32_t holes = 0;
  };
  static constexpr KyBW32 kNone = 0xFFFFFFFF;

  bool Reserve(std::size_t count) noexcept;
  KyBW32 Found(std::int32_t x) noexcept;
  KyBW32 RootOf(KyBW32 component) noexcept;
  KyBW32 Unite(KyBW32 a, KyBW32 b) noexcept;
  void MeasureRun(KyObject& object, const Run& run, const RunLevels& levels,
                  const Contacts& contacts) const noexcept;

  bool eight_ = false, keepRuns_ = false;
  std::int32_t y_ = 0, width_ = 0, height_ = 0;
  Growing<KyObject> components_;  // while they grow, width and height are the ends of the box
  Growing<KyBW32> parents_;       // of components; from Number on, labels
  Growing<Run> runs_;             // the labels of runs are components
  Growing<Corner> corners_;
  Scratch<std::size_t> starts_;  // of rows in runs_
  std::size_t above_ = 0;        // where the runs of the last row start
};

}  // namespace ky
