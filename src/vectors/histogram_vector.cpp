#include "ky/histogram_vector.h"

#include <algorithm>
#include <cstdint>

#include "foundation/elementary.h"
#include "foundation/frame.h"

KyBW8HistogramVector::KyBW8HistogramVector(unsigned int bins) noexcept { Reserve(bins); }

KyBW8HistogramVector::~KyBW8HistogramVector() = default;

void KyBW8HistogramVector::Clear() noexcept { std::fill(begin(), end(), 0u); }

float KyBW8HistogramVector::Entropy(unsigned int first, unsigned int last) const noexcept {
  float result = 0;
  ky::Call("KyBW8HistogramVector::Entropy", [&] {
    const unsigned int bins = GetNumElements();
    if (first >= bins) return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "first");
    if (last != ~0u && last >= bins)
      return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "last");
    std::uint32_t count = 0, levels = 0, least = ~0u, greatest = 0;
    float sum = 0;
    for (unsigned int k = first; k <= std::min(last, bins - 1); ++k) {
      const unsigned int h = (*this)[k];
      if (h == 0) continue;
      count += h;
      ++levels;
      least = std::min(least, h);
      greatest = std::max(greatest, h);
      sum += static_cast<float>(h) * static_cast<float>(ky::Log(static_cast<float>(h)));
    }
    if (count == 0) return KY_OK;
    // The entropy of equally frequent levels is the logarithm of their number, 0 of one and 1 of
    // two, which rounding would miss.
    const bool equal = least == greatest && std::uint64_t{levels} * greatest == count;
    const double n = count;
    const double entropy = equal ? ky::Log(levels) : ky::Log(n) - double(sum) / n;
    result = static_cast<float>(entropy / ky::Log(2.0));
    return KY_OK;
  });
  return result;
}
