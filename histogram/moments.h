// The moments of histograms.
#pragma once

#include <algorithm>
#include <cstdint>

#include "foundation/frame.h"
#include "histogram/counts.h"

namespace ky {

// The mean level of bins `first` to `last`, those beyond the histogram being empty: the sum of k
// h[k] divided by that of h[k], both modulo 2^32. Errors: 1601, 1613, 1051 for a sum of 0; the
// outputs are untouched then.
inline KY_ERRORS HistogramMoments(const KyBW8HistogramVector* histogram, float& mean,
                                  unsigned int first, unsigned int last) noexcept {
  return Call("ImgHistogramMoments (1)", [&] {
    if (const KY_ERRORS error = HasLevels(histogram)) return error;
    std::uint32_t count = 0, sum = 0;
    for (unsigned int k = first; k <= std::min(last, kLevels - 1u); ++k) {
      const unsigned int h = (*histogram)[k];
      count += h;
      sum += h * k;
    }
    if (count == 0) return KY_ERROR_NO_PIXELS;
    mean = static_cast<float>(double(sum) / double(count));
    return KY_OK;
  });
}

// The same and the population variance. The sum of k k h[k] is that of k (k + 1) h[k], in double
// precision, less that of k h[k].
inline KY_ERRORS HistogramCenteredMoments(const KyBW8HistogramVector* histogram, float& mean,
                                          float& variance, unsigned int first,
                                          unsigned int last) noexcept {
  return Call("ImgHistogramCenteredMoments (2)", [&] {
    if (const KY_ERRORS error = HasLevels(histogram)) return error;
    std::uint32_t count = 0, sum = 0, triangular = first * (first + 1) / 2;
    double triangularSum = 0;
    for (unsigned int k = first; k <= std::min(last, kLevels - 1u); ++k) {
      const unsigned int h = (*histogram)[k];
      count += h;
      sum += h * k;
      triangularSum += double(h) * double(triangular);
      triangular += k + 1;
    }
    if (count == 0) return KY_ERROR_NO_PIXELS;
    const double n = count, exactMean = sum / n;
    mean = static_cast<float>(exactMean);
    variance = static_cast<float>((2 * triangularSum - sum) / n - exactMean * exactMean);
    return KY_OK;
  });
}

}  // namespace ky
