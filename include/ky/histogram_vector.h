// Histograms as typed vectors of 32-bit counts.
#pragma once

#include "ky/export.h"
#include "ky/typed_vector.h"

/// A histogram: one count a grey level.
class KY_API KyBW8HistogramVector : public KyVectorTemplate<unsigned int> {
 public:
  /// A histogram with room for `bins` bins, none in use. 1303 when the memory cannot be had.
  explicit KyBW8HistogramVector(unsigned int bins = 0) noexcept;
  KyBW8HistogramVector(KyBW8HistogramVector&&) noexcept = default;
  KyBW8HistogramVector& operator=(KyBW8HistogramVector&) noexcept = default;
  KyBW8HistogramVector& operator=(KyBW8HistogramVector&&) noexcept = default;
  ~KyBW8HistogramVector() override;

  /// Sets every bin in use to 0.
  void Clear() noexcept;

  /// Shannon's entropy, in bits, of the distribution that bins `first` to `last` describe, ~0u
  /// being the last one in use: (ln N - L / N) / ln 2, where N is the sum of the counts h (modulo
  /// 2^32) and L that of h ln h, in single precision; 0 when N is 0. Errors: 1011 and 1012 for bins
  /// that are not in use; the result is 0 then. Trace "KyBW8HistogramVector::Entropy".
  float Entropy(unsigned int first = 0, unsigned int last = ~0u) const noexcept;
};
