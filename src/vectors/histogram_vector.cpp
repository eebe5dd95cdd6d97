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
    std::uint32_t count = 0, levels = 0;
    float sum = 0;
    for (unsigned int k = first; k <= std::min(last, bins - 1); ++k) {
      const unsigned int h = (*this)[k];
      if (h == 0) continue;
      count += h;
      ++levels;
      sum += static_cast<float>(h) * static_cast<float>(ky::Log(static_cast<float>(h)));
    }
    // The entropy of a single level is 0, which rounding would miss.
    if (count == 0 || levels == 1) return KY_OK;
    const double n = count;
    result = static_cast<float>((ky::Log(n) - double(sum) / n) / ky::Log(2.0));
    return KY_OK;
  });
  return result;
}
