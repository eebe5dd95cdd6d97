#include <cmath>
#include <cstdint>

#include "foundation/frame.h"
#include "foundation/kernels/counts.h"
#include "ky/statistics.h"
#include "statistics/wide.h"

namespace {

// The smallest level with at least half of the pixels at or below it.
int MedianOf(const unsigned int* counts, int first, std::uint64_t all) noexcept {
  int level = first;
  for (std::uint64_t upTo = counts[level]; upTo < all - upTo; upTo += counts[level]) ++level;
  return level;
}

}  // namespace

KY_ERRORS ImgLevelStatistics(const KyBW8HistogramVector* histogram, int first, int last,
                             KyLevelStatistics& statistics) noexcept {
  return ky::Call("ImgLevelStatistics", [&] {
    if (histogram == nullptr || histogram->GetNumElements() != ky::kLevels)
      return KY_ERROR_NOT_256_ENTRIES;
    if (first < 0 || first > last || last >= ky::kLevels)
      return ky::Explain(KY_ERROR_BAD_INTERVAL, "first and last are no interval within 0 to 255");
    const unsigned int* const counts = histogram->GetDataPtr();
    std::uint64_t count = 0, sum = 0, squares = 0;
    int lowest = -1, highest = -1, most = first, least = first;
    for (int level = first; level <= last; ++level) {
      const std::uint64_t here = counts[level], value = static_cast<std::uint64_t>(level);
      count += here;
      sum += here * value;
      squares += here * value * value;
      if (here != 0 && lowest < 0) lowest = level;
      if (here != 0) highest = level;
      if (here > counts[most]) most = level;
      if (here < counts[least]) least = level;
    }
    if (count == 0)
      return ky::Explain(KY_ERROR_NO_PIXELS, "no pixel has a level from first to last");
    const ky::Unsigned128 n = count;
    statistics.count = count;
    statistics.lowest = lowest;
    statistics.highest = highest;
    statistics.mostFrequent = most;
    statistics.leastFrequent = least;
    statistics.median = MedianOf(counts, first, count);
    statistics.mean = static_cast<double>(sum) / static_cast<double>(count);
    statistics.deviation =
        std::sqrt(ky::ToDouble(n * squares - ky::Unsigned128{sum} * sum) / ky::ToDouble(n * n));
    return KY_OK;
  });
}
