/// @file
/// @ingroup typed_vectors
/// Histograms as typed vectors of 32-bit counts.
#pragma once

#include "ky/export.h"
#include "ky/typed_vector.h"

/// A histogram: one 32-bit count for each grey level.
class KY_API KyBW8HistogramVector : public KyVectorTemplate<unsigned int> {
 public:
  /// Makes a histogram with room for `bins` bins, none of them in use. `KY_ERROR_NOT_ENOUGH_MEMORY`
  /// (1303) when memory runs out.
  explicit KyBW8HistogramVector(unsigned int bins = 0) noexcept;
  KyBW8HistogramVector(KyBW8HistogramVector&&) noexcept = default;
  KyBW8HistogramVector& operator=(KyBW8HistogramVector&) noexcept = default;
  KyBW8HistogramVector& operator=(KyBW8HistogramVector&&) noexcept = default;
  ~KyBW8HistogramVector() override;

  /// Sets every bin in use to 0.
  void Clear() noexcept;

  /// Returns Shannon's entropy, in bits, of the distribution that bins `first` to `last` describe,
  /// where ~0u stands for the last one in use: (ln N - L / N) / ln 2, where N is the sum of the
  /// counts h (modulo 2^32) and L that of h ln h, computed in single precision; 0 when N is 0, and
  /// log2 n, such as 0 or 1, when n bins have the same count and the others none. Errors:
  /// `KY_ERROR_PARAMETER_1_OUT_OF_RANGE` (1011) for a `first`, `KY_ERROR_PARAMETER_2_OUT_OF_RANGE`
  /// (1012) for a `last` that is not in use; the result is 0 then. Trace:
  /// "KyBW8HistogramVector::Entropy".
  float Entropy(unsigned int first = 0, unsigned int last = ~0u) const noexcept;
};
