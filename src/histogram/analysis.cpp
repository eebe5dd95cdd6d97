#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/frame.h"
#include "histogram/counts.h"
#include "ky/histogram.h"

namespace {

using ky::Call;

// The features of the levels from `first` to `last` of a histogram of 256 bins.
class Analysis {
 public:
  Analysis(const std::uint32_t* counts, int first, int last) noexcept
      : counts_(counts), first_(first), last_(last) {}

  // Features 0 to 6, counts as signed numbers.
  std::int32_t Integer(unsigned int feature) const noexcept {
    switch (feature) {
      case IMG_HISTOGRAM_MOST_FREQUENT_LEVEL: return MostFrequent().level;
      case IMG_HISTOGRAM_MOST_FREQUENT_COUNT: return Signed(MostFrequent().count);
      case IMG_HISTOGRAM_LEAST_FREQUENT_LEVEL: return LeastFrequent().level;
      case IMG_HISTOGRAM_LEAST_FREQUENT_COUNT: return Signed(LeastFrequent().count);
      case IMG_HISTOGRAM_LOWEST_LEVEL: return Lowest();
      case IMG_HISTOGRAM_HIGHEST_LEVEL: return Highest();
      default: return Signed(Sums().count);
    }
  }
  // Features 7 and 8.
  float Real(unsigned int feature) const noexcept {
    return feature == IMG_HISTOGRAM_MEAN ? Mean() : Deviation();
  }

 private:
  struct Bin {
    std::int32_t level;
    std::uint32_t count;
  };
  struct CountAndSum {
    std::uint32_t count, sum;
  };
  static std::int32_t Signed(std::uint32_t value) noexcept {
    return static_cast<std::int32_t>(value);
  }
  std::int32_t Level(std::int64_t j) const noexcept {
    return static_cast<std::int32_t>(first_ + j);
  }
  // The number of bins from 0 to last - first that exist.
  std::int64_t Bins() const noexcept {
    return std::min<std::int64_t>(last_ - first_ + 1, ky::kLevels);
  }

  Bin MostFrequent() const noexcept {
    Bin most{0, 0};
    for (std::int64_t j = 0; j < Bins(); ++j)
      if (counts_[j] > most.count) most = {Level(j), counts_[j]};
    return most;
  }
  Bin LeastFrequent() const noexcept {
    Bin least{0, UINT32_MAX};
    for (std::int64_t j = 0; j < Bins(); ++j)
      if (counts_[j] < least.count) least = {Level(j), counts_[j]};
    // The first bin beyond the histogram is empty.
    if (last_ - first_ >= ky::kLevels && least.count > 0) least = {Level(ky::kLevels), 0};
    return least;
  }
  std::int32_t Lowest() const noexcept {
    for (std::int64_t j = 0; j < Bins(); ++j)
      if (counts_[j] != 0) return Level(j);
    return Signed(static_cast<std::uint32_t>(last_ < first_ ? first_ : last_ + 1));
  }
  std::int32_t Highest() const noexcept {
    if (first_ < last_) return Level(last_ - first_);
    std::int64_t level = std::min<std::int64_t>(last_, ky::kLevels - 1);
    while (level > 0 && counts_[level] == 0) --level;
    return static_cast<std::int32_t>(std::max<std::int64_t>(level, 0));
  }
  CountAndSum Sums() const noexcept {
    CountAndSum sums{0, 0};
    const std::int64_t end = std::min<std::int64_t>(last_ + 1, ky::kLevels);
    for (std::int64_t k = std::max<std::int64_t>(first_, 0); k < end; ++k) {
      sums.count += counts_[k];
      sums.sum += counts_[k] * static_cast<std::uint32_t>(k);
    }
    return sums;
  }
  float Mean() const noexcept {
    const CountAndSum sums = Sums();
    const double sum = sums.sum, count = sums.count;
    return sums.count == 0 ? 0 : static_cast<float>(sum / count);
  }
  float Deviation() const noexcept {
    std::uint32_t count = 0, levels = 0;
    float sum = 0, squares = 0;
    for (std::int64_t j = 0; j < Bins(); ++j) {
      const float distance = static_cast<float>(last_ - j);
      const float term = static_cast<float>(counts_[j]) * distance;
      count += counts_[j];
      levels += counts_[j] != 0;
      sum += term;
      squares += term * distance;
    }
    // A single level does not deviate, which rounded squares would miss.
    if (count == 0 || levels == 1) return 0;
    // The difference of nearly equal numbers needs more digits than the sums have.
    const double n = count, mean = double(sum) / n;
    return static_cast<float>(std::sqrt(std::fabs(double(squares) / n - mean * mean)));
  }

  const std::uint32_t* counts_;
  std::int64_t first_, last_;
};

// The two generic forms: `lowest` to `highest` are the features that `compute` knows.
template <class Result, class Compute>
KY_ERRORS AnalyseGeneric(const KyVector* histogram, int first, int last, unsigned int feature,
                         unsigned int lowest, unsigned int highest, Result& result,
                         Compute compute) noexcept {
  return Call("ImgAnalyseHistogram (KyVector)", [&] {
    std::uint32_t* counts;
    if (const KY_ERRORS error = ky::CountsOf(histogram, KY_ERROR_VECTOR_1602, counts)) return error;
    if (feature >= lowest && feature <= highest)
      result = (Analysis(counts, first, last).*compute)(feature);
    return KY_OK;
  });
}

}  // namespace

float ImgAnalyseHistogram(const KyBW8HistogramVector* histogram, IMG_HISTOGRAM_FEATURE feature,
                          int first, int last) noexcept {
  float result = 0;
  Call("ImgAnalyseHistogram", [&] {
    if (const KY_ERRORS error = ky::CheckLevels(histogram)) return error;
    const Analysis analysis(histogram->begin(), first, last);
    const auto index = static_cast<unsigned int>(feature);
    if (index <= IMG_HISTOGRAM_PIXEL_COUNT)
      result = static_cast<float>(analysis.Integer(index));
    else if (index <= IMG_HISTOGRAM_STD_DEV)
      result = analysis.Real(index);
    return KY_OK;
  });
  return result;
}

KY_ERRORS ImgAnalyseHistogram(const KyVector* histogram, int first, int last, unsigned int feature,
                              int& result) noexcept {
  return AnalyseGeneric(histogram, first, last, feature, IMG_HISTOGRAM_MOST_FREQUENT_LEVEL,
                        IMG_HISTOGRAM_PIXEL_COUNT, result, &Analysis::Integer);
}
KY_ERRORS ImgAnalyseHistogram(const KyVector* histogram, int first, int last, unsigned int feature,
                              float& result) noexcept {
  return AnalyseGeneric(histogram, first, last, feature, IMG_HISTOGRAM_MEAN, IMG_HISTOGRAM_STD_DEV,
                        result, &Analysis::Real);
}
