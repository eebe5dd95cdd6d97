#include "ky/statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/frame.h"
#include "statistics/extended.h"
#include "statistics/pixels.h"
#include "statistics/statistics_rows.h"

namespace {

using ky::Call;
using ky::Extended;
using ky::Rows;

// Opens an ROI and gives the number of its pixels modulo 2^32, as a signed number;
// KY_ERROR_NO_PIXELS (1051) when that is 0.
template <class T>
KY_ERRORS OpenPixels(const KyROI<T>* roi, Rows<const T>& rows, std::int32_t& pixels) noexcept {
  if (const KY_ERRORS error = ky::Open(roi, rows)) return error;
  pixels = static_cast<std::int32_t>(static_cast<std::uint32_t>(rows.width) *
                                     static_cast<std::uint32_t>(rows.height));
  return pixels == 0 ? ky::Explain(KY_ERROR_NO_PIXELS, ky::kNoColumnsOrRows) : KY_OK;
}

// The laws of 32-bit sums, for grey levels and for each component of colours.
float MeanOf(std::uint32_t sum, std::int32_t pixels) noexcept {
  return (Extended(std::uint64_t{sum}) / Extended(pixels)).ToFloat();
}

// Takes the moments of rows, the squares of each modulo 2^32.
class Variance {
 public:
  explicit Variance(std::ptrdiff_t width) noexcept : isNarrow_(IsNarrow(width)) {}

  // Calls take(moments) for all rows at once where the squares of each fit, otherwise for each row.
  template <class Result, class T, class Take>
  static void ForRows(ky::ReduceAllKernel<Result, T> kernel, const Rows<const T>& rows,
                      const Take& take) noexcept {
    if (IsNarrow(rows.width)) return take(kernel(ky::Joined(rows)));
    for (std::ptrdiff_t y = 0; y < rows.height; ++y)
      take(kernel({rows.Row(y), rows.pitch, rows.width, 1}));
  }
  void Add(const ky::Moments& moments) noexcept {
    sum_ += static_cast<std::uint32_t>(moments.sum);
    squares_ += static_cast<double>(isNarrow_ ? moments.squares : moments.squares & UINT32_MAX);
  }
  void Write(std::int32_t pixels, float& variance, float& mean) const noexcept {
    const Extended n(pixels), s(std::uint64_t{sum_}), q(static_cast<std::uint64_t>(squares_));
    mean = static_cast<float>(sum_) / static_cast<float>(pixels);
    variance = std::max(((q * n - s * s) / (n * n)).ToFloat(), 0.0f);
  }

 private:
  static bool IsNarrow(std::ptrdiff_t width) noexcept { return width <= UINT32_MAX / (255 * 255); }

  bool isNarrow_;
  std::uint32_t sum_ = 0;
  double squares_ = 0;
};

float DeviationOf(float variance) noexcept {
  return static_cast<float>(std::sqrt(double{variance}));
}

// The variances and means of the components, which stay as they were on failure.
KY_ERRORS ComponentVariances(const KyROI<KyC24>* source, float (&variance)[3],
                             float (&mean)[3]) noexcept {
  Rows<const KyC24> rows;
  std::int32_t pixels;
  if (const KY_ERRORS error = OpenPixels(source, rows, pixels)) return error;
  Variance components[3] = {Variance(rows.width), Variance(rows.width), Variance(rows.width)};
  Variance::ForRows(ky::ChooseStatisticsKernels().componentMoments, rows,
                    [&](const ky::OfComponents<ky::Moments>& moments) {
                      for (int i = 0; i < 3; ++i) components[i].Add(moments.of[i]);
                    });
  for (int i = 0; i < 3; ++i) components[i].Write(pixels, variance[i], mean[i]);
  return KY_OK;
}

}  // namespace

KY_ERRORS ImgPixelAverage(const KyROI<KyBW8>* source, float& mean) noexcept {
  return Call("ImgPixelAverage (BW8)", [&] {
    Rows<const KyBW8> rows;
    std::int32_t pixels;
    if (const KY_ERRORS error = OpenPixels(source, rows, pixels)) return error;
    const std::uint64_t sum = ky::ChooseStatisticsKernels().sum(ky::Joined(rows));
    mean = MeanOf(static_cast<std::uint32_t>(sum), pixels);
    return KY_OK;
  });
}
KY_ERRORS ImgPixelAverage(const KyROI<KyC24>* source, float (&mean)[3]) noexcept {
  return Call("ImgPixelAverage (C24)", [&] {
    Rows<const KyC24> rows;
    std::int32_t pixels;
    if (const KY_ERRORS error = OpenPixels(source, rows, pixels)) return error;
    const auto sums = ky::ChooseStatisticsKernels().componentSum(ky::Joined(rows));
    for (int i = 0; i < 3; ++i) mean[i] = MeanOf(static_cast<std::uint32_t>(sums.of[i]), pixels);
    return KY_OK;
  });
}

KY_ERRORS ImgPixelVariance(const KyROI<KyBW8>* source, float& variance, float& mean) noexcept {
  return Call("ImgPixelVariance (BW8)", [&] {
    Rows<const KyBW8> rows;
    std::int32_t pixels;
    if (const KY_ERRORS error = OpenPixels(source, rows, pixels)) return error;
    Variance sums(rows.width);
    Variance::ForRows(ky::ChooseStatisticsKernels().moments, rows,
                      [&](const ky::Moments& moments) { sums.Add(moments); });
    sums.Write(pixels, variance, mean);
    return KY_OK;
  });
}
KY_ERRORS ImgPixelVariance(const KyROI<KyC24>* source, float (&variance)[3],
                           float (&mean)[3]) noexcept {
  return Call("ImgPixelVariance (C24)", [&] { return ComponentVariances(source, variance, mean); });
}

KY_ERRORS ImgPixelStdDev(const KyROI<KyBW8>* source, float& deviation, float& mean) noexcept {
  return Call("ImgPixelStdDev", [&] {
    float variance;
    if (const KY_ERRORS error = ImgPixelVariance(source, variance, mean)) return error;
    deviation = DeviationOf(variance);
    return KY_OK;
  });
}

KY_ERRORS ImgPixelStdDev(const KyROI<KyC24>* source, float (&deviation)[3],
                         float (&mean)[3]) noexcept {
  return Call("ImgPixelStdDev (C24)", [&] {
    if (const KY_ERRORS error = ComponentVariances(source, deviation, mean)) return error;
    for (float& component : deviation) component = DeviationOf(component);
    return KY_OK;
  });
}

KY_ERRORS ImgPixelStat(const KyROI<KyBW8>* source, KyBW8& minimum, KyBW8& maximum,
                       float& mean) noexcept {
  return Call("ImgPixelStat", [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (const KY_ERRORS error = ky::CheckPixels(rows)) return error;
    const auto all = ky::ChooseStatisticsKernels().extremes(rows);
    minimum = all.smallest;
    maximum = all.largest;
    mean = all.means / static_cast<float>(rows.height);
    return KY_OK;
  });
}
