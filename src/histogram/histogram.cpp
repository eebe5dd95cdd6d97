#include "ky/histogram.h"

#include <algorithm>
#include <cstdint>

#include "foundation/frame.h"
#include "foundation/rows.h"
#include "foundation/scratch.h"
#include "histogram/counts.h"

namespace {

using ky::Call;
using ky::CheckImage;

// Counts 16-bit pixels in up to four tables in turn, for the reason that 8-bit ones are; only in
// one where so many tables would cost more than that.
class BinCounter {
 public:
  // Pixels of bin `lastBin` and above are counted in it.
  bool Open(int shift, std::ptrdiff_t lastBin, std::ptrdiff_t pixels) noexcept {
    shift_ = shift;
    bins_ = lastBin + 1;
    tables_ = pixels / 16 < bins_ ? 1 : kMostTables;
    if (!counts_.Allocate(tables_ * Pitch())) return false;
    std::fill_n(counts_.get(), tables_ * Pitch(), 0u);
    return true;
  }
  void Count(const KyBW16* pixels, std::ptrdiff_t n) noexcept {
    std::uint32_t* tables[kMostTables];
    for (int k = 0; k < kMostTables; ++k) tables[k] = counts_.get() + k % tables_ * Pitch();
    const auto bin = [shift = shift_, last = bins_ - 1](KyBW16 pixel) {
      return std::min<std::ptrdiff_t>(pixel >> shift, last);
    };
    std::ptrdiff_t i = 0;
    for (; i + kMostTables <= n; i += kMostTables)
      for (int k = 0; k < kMostTables; ++k) ++tables[k][bin(pixels[i + k])];
    for (; i < n; ++i) ++tables[0][bin(pixels[i])];
  }
  std::uint32_t Sum(std::ptrdiff_t bin) const noexcept {
    std::uint32_t sum = 0;
    for (int k = 0; k < tables_; ++k) sum += counts_[k * Pitch() + bin];
    return sum;
  }

 private:
  static constexpr int kMostTables = 4, kApart = 16;
  std::ptrdiff_t Pitch() const noexcept { return bins_ + kApart; }

  int shift_ = 0, tables_ = 1;
  std::ptrdiff_t bins_ = 0;
  ky::Scratch<std::uint32_t> counts_;
};

}  // namespace

KY_ERRORS ImgHistogram(const KyROI<KyBW8>* source, KyBW8HistogramVector* histogram) noexcept {
  return Call("ImgHistogram", [&] {
    if (const KY_ERRORS error = CheckImage(source, "source")) return error;
    if (histogram == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    ky::Counts counts;
    ky::CountLevels(source, counts);
    if (const KY_ERRORS error = histogram->SetNumElements(ky::kLevels)) return error;
    std::copy_n(counts, ky::kLevels, histogram->begin());
    return KY_OK;
  });
}

KY_ERRORS ImgHistogram(const KyROI<KyBW16>* source, KyBW8HistogramVector* histogram,
                       unsigned int mostSignificantBit, unsigned int bits, int saturate) noexcept {
  return Call("ImgHistogram (KyBW16)", [&] {
    if (mostSignificantBit >= 16)
      return ky::OutOfRange(KY_ERROR_PARAMETER_3_OUT_OF_RANGE, "mostSignificantBit");
    if (bits > mostSignificantBit + 1)
      return ky::OutOfRange(KY_ERROR_PARAMETER_4_OUT_OF_RANGE, "bits");
    ky::Rows<const KyBW16> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (histogram == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    const unsigned int bins = 1u << bits;
    // Without saturation what lies above the bins goes to one more, which is dropped.
    const bool saturates = saturate != 0 && mostSignificantBit < 15;
    BinCounter counter;
    if (!counter.Open(static_cast<int>(mostSignificantBit + 1 - bits), saturates ? bins - 1 : bins,
                      rows.width * rows.height))
      return KY_ERROR_NOT_ENOUGH_MEMORY;
    for (std::ptrdiff_t y = 0; y < rows.height; ++y) counter.Count(rows.Row(y), rows.width);
    if (const KY_ERRORS error = histogram->SetNumElements(bins)) return error;
    for (unsigned int bin = 0; bin < bins; ++bin) histogram->begin()[bin] = counter.Sum(bin);
    return KY_OK;
  });
}

KY_ERRORS ImgHistogram(const KyROI<KyBW8>* source, KyVector* histogram) noexcept {
  return Call("ImgHistogram (KyVector)", [&] {
    if (const KY_ERRORS error = CheckImage(source, "source")) return error;
    if (histogram != nullptr && !histogram->IsSameVectType(ky::kCountVector))
      histogram->SetType(ky::kCountVector, 0, 0);
    std::uint32_t* counts;
    if (const KY_ERRORS error = ky::CountsOf(histogram, KY_ERROR_BAD_VECTOR_TYPE, counts))
      return error;
    ky::Counts all;
    ky::CountLevels(source, all);
    std::copy_n(all, ky::kLevels, counts);
    ky::UseElements(histogram, ky::kLevels);
    return KY_OK;
  });
}
