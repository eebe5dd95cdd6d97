// Means and variances of images of any size.
#include <cstdint>

#include "ky/statistics.h"
#include "statistics/pixels.h"
#include "statistics/statistics_rows.h"
#include "statistics/wide.h"

namespace {

using ky::Call;
using ky::Rows;

double PixelsOf(const Rows<const KyBW8>& rows) noexcept {
  return static_cast<double>(rows.width * rows.height);
}

}  // namespace

KY_ERRORS ImgAverage(const KyROI<KyBW8>* source, float& mean) noexcept {
  return Call("ImgAverage", [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::OpenSome(source, rows)) return error;
    const std::uint64_t sum = ky::ChooseStatisticsKernels().sum(ky::Joined(rows));
    mean = static_cast<float>(static_cast<double>(sum) / PixelsOf(rows));
    return KY_OK;
  });
}

KY_ERRORS ImgVariance(const KyROI<KyBW8>* source, float& variance, float& mean) noexcept {
  return Call("ImgVariance", [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::OpenSome(source, rows)) return error;
    const auto [sum, squares] = ky::ChooseStatisticsKernels().moments(ky::Joined(rows));
    const ky::Unsigned128 n =
        static_cast<std::uint64_t>(rows.width) * static_cast<std::uint64_t>(rows.height);
    variance = static_cast<float>(ky::ToDouble(squares * n - ky::Unsigned128{sum} * sum) /
                                  ky::ToDouble(n * n));
    mean = static_cast<float>(static_cast<double>(sum) / PixelsOf(rows));
    return KY_OK;
  });
}
