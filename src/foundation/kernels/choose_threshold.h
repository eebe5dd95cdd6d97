// The search for a threshold in the counts of 256 levels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/kernels/counts.h"
#include "ky/pixels.h"
#include "ky/status.h"

namespace ky {

// Levels min..max of a histogram.
struct LevelRange {
  unsigned min = 0, max = kLevels - 1;
};

// KY_OK for two levels of 0..255 in ascending order, otherwise the code of the first bad one or
// KY_ERROR_BAD_INTERVAL (1007).
KY_ERRORS CheckRange(LevelRange range, KY_ERRORS badMin, KY_ERRORS badMax) noexcept;

// A class of levels: its pixels and their level sum, or cost. Both are 32-bit and wrap.
struct LevelClass {
  std::uint32_t count = 0, sum = 0;

  // In single precision; `empty` for a class without pixels.
  float Average(unsigned empty) const noexcept {
    return count == 0 ? static_cast<float>(empty)
                      : static_cast<float>(sum) / static_cast<float>(count);
  }
};
// Both classes of a threshold; `found` once a criterion has chosen it.
struct ThresholdChoice {
  unsigned threshold = 0;
  LevelClass lower, upper;
  bool found = false;
};

// Finds the threshold that `threshold` stands for, a mode of IMG_THRESHOLD_MODES or a level of the
// range. Errors are those of ImgHistogramThreshold, whose `threshold` is called `name` elsewhere.
// Counts are 32-bit and wrap in all searches.
KY_ERRORS ChooseThreshold(const std::uint32_t* counts, LevelRange range, unsigned threshold,
                          float relative, ThresholdChoice& choice,
                          const char* name = "threshold") noexcept;

// The level that lies midway between the means of both classes, by iteration.
int IsodataLevel(const std::uint32_t* counts, LevelRange range) noexcept;
// The same among all levels from the pixels themselves, for few of them, without counting them.
int IsodataLevel(const KyBW8* pixels, std::ptrdiff_t n) noexcept;

// The searches over all levels; nothing is found where no threshold is better than none.
ThresholdChoice LeastResidueLevel(const std::uint32_t* counts) noexcept;
ThresholdChoice MostEntropyLevel(const std::uint32_t* counts) noexcept;

}  // namespace ky
