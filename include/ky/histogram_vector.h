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
};
