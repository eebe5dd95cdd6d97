#include "ky/statistics.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>

#include "foundation/frame.h"
#include "statistics/statistics_rows.h"

namespace {

using ky::Call;
using ky::Rows;

// Results are the same to the last bit only where this is wider than double.
using Extended = long double;
#if defined(__x86_64__)
static_assert(LDBL_MANT_DIG > DBL_MANT_DIG);
#endif

// Opens an ROI and gives the number of its pixels as a signed 32-bit product;
// KY_ERROR_NO_PIXELS (1051) when that is 0.
KY_ERRORS OpenPixels(const KyROI<KyBW8>* roi, Rows<const KyBW8>& rows,
                     std::int32_t& pixels) noexcept {
  if (const KY_ERRORS error = ky::Open(roi, rows)) return error;
  pixels = static_cast<std::int32_t>(static_cast<std::uint32_t>(rows.width) *
                                     static_cast<std::uint32_t>(rows.height));
  return pixels == 0 ? KY_ERROR_NO_PIXELS : KY_OK;
}

}  // namespace

KY_ERRORS ImgPixelAverage(const KyROI<KyBW8>* source, float& mean) noexcept {
  return Call("ImgPixelAverage (BW8)", [&] {
    Rows<const KyBW8> rows;
    std::int32_t pixels;
    if (const KY_ERRORS error = OpenPixels(source, rows, pixels)) return error;
    std::uint32_t sum = 0;
    ky::ReduceRows(
        ky::ChooseStatisticsKernels().sum, rows.Joined() ? rows.AsOneRow() : rows,
        [&](std::uint64_t row, std::ptrdiff_t) { sum += static_cast<std::uint32_t>(row); });
    mean = static_cast<float>(static_cast<Extended>(sum) / static_cast<Extended>(pixels));
    return KY_OK;
  });
}

KY_ERRORS ImgPixelVariance(const KyROI<KyBW8>* source, float& variance, float& mean) noexcept {
  return Call("ImgPixelVariance (BW8)", [&] {
    Rows<const KyBW8> rows;
    std::int32_t pixels;
    if (const KY_ERRORS error = OpenPixels(source, rows, pixels)) return error;
    std::uint32_t sum = 0;
    double squares = 0;
    ky::ReduceRows(ky::ChooseStatisticsKernels().moments, rows,
                   [&](const ky::Moments& row, std::ptrdiff_t) {
                     sum += static_cast<std::uint32_t>(row.sum);
                     squares += static_cast<std::uint32_t>(row.squares);
                   });
    const Extended n = static_cast<Extended>(pixels), s = sum;
    mean = static_cast<float>(sum) / static_cast<float>(pixels);
    variance = std::max(static_cast<float>((squares * n - s * s) / (n * n)), 0.0f);
    return KY_OK;
  });
}

KY_ERRORS ImgPixelStdDev(const KyROI<KyBW8>* source, float& deviation, float& mean) noexcept {
  return Call("ImgPixelStdDev", [&] {
    float variance;
    if (const KY_ERRORS error = ImgPixelVariance(source, variance, mean)) return error;
    deviation = static_cast<float>(std::sqrt(double{variance}));
    return KY_OK;
  });
}

KY_ERRORS ImgPixelStat(const KyROI<KyBW8>* source, KyBW8& minimum, KyBW8& maximum,
                       float& mean) noexcept {
  return Call("ImgPixelStat", [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (rows.Empty()) return KY_ERROR_NO_PIXELS;
    KyBW8 smallest = 255, largest = 0;
    float rowMeans = 0;
    ky::ReduceRows(ky::ChooseStatisticsKernels().extremes, rows,
                   [&](const ky::ExtremesAndSum& row, std::ptrdiff_t) {
                     smallest = std::min(smallest, row.smallest);
                     largest = std::max(largest, row.largest);
                     rowMeans += static_cast<float>(static_cast<std::uint32_t>(row.sum)) /
                                 static_cast<float>(rows.width);
                   });
    minimum = smallest;
    maximum = largest;
    mean = rowMeans / static_cast<float>(rows.height);
    return KY_OK;
  });
}
