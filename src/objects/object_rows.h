// The row kernels of objects.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"
#include "objects/runs.h"

namespace ky {

struct ObjectKernels {
  // Writes where the runs of levels low to high begin and end, and returns the number of runs.
  std::size_t (*findRuns)(const KyBW8* row, std::size_t n, KyBW8 low, KyBW8 high,
                          std::int32_t* ends);
  // Takes `count` runs of a row of n pixels by their ends.
  void (*measureLevels)(const KyBW8* row, std::size_t n, const std::int32_t* ends,
                        std::size_t count, RunLevels* levels);
  // Writes table[label] over each run and 0 elsewhere.
  void (*paintRuns)(KyBW32* row, std::size_t n, const Run* runs, std::size_t count,
                    const KyBW32* table);
  // Writes each x > 0 whose pixel differs from the one before it, and returns their number.
  std::size_t (*findChanges)(const KyBW32* row, std::size_t n, std::int32_t* places);
};

// Places that findRuns and findChanges may write for a row of n pixels.
constexpr std::ptrdiff_t EndsOfRow(std::ptrdiff_t n) noexcept { return n + 2; }

const ObjectKernels& ChooseObjectKernels() noexcept;

}  // namespace ky
