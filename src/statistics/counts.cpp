// Extremes, counts of levels and of differences.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "ky/statistics.h"
#include "statistics/pixels.h"
#include "statistics/statistics_rows.h"

namespace {

using ky::Call;
using ky::Rows;

template <class T>
KY_ERRORS FindSmallest(const char* trace, const KyROI<T>* source,
                       const ky::LevelKernels<T>& kernels, T& minimum) noexcept {
  return Call(trace, [&] {
    Rows<const T> rows;
    if (const KY_ERRORS error = ky::OpenSome(source, rows)) return error;
    T smallest = std::numeric_limits<T>::max();
    ky::ReduceRows(kernels.smallest, ky::Joined(rows),
                   [&](T row, std::ptrdiff_t) { smallest = std::min(smallest, row); });
    minimum = smallest;
    return KY_OK;
  });
}
template <class T>
KY_ERRORS FindLargest(const char* trace, const KyROI<T>* source, const ky::LevelKernels<T>& kernels,
                      T& maximum) noexcept {
  return Call(trace, [&] {
    Rows<const T> rows;
    if (const KY_ERRORS error = ky::OpenSome(source, rows)) return error;
    T largest = 0;
    ky::ReduceRows(kernels.largest, ky::Joined(rows),
                   [&](T row, std::ptrdiff_t) { largest = std::max(largest, row); });
    maximum = largest;
    return KY_OK;
  });
}

// The number of pixels from `low` to `high`; 0 when low is the higher.
std::uint64_t CountBetween(const Rows<const KyBW8>& rows, int low, int high) noexcept {
  if (low > high) return 0;
  const auto kernel = ky::ChooseStatisticsKernels().between;
  const Rows<const KyBW8> joined = ky::Joined(rows);
  std::uint64_t count = 0;
  for (std::ptrdiff_t y = 0; y < joined.height; ++y)
    count += kernel(joined.Row(y), static_cast<std::size_t>(joined.width), static_cast<KyBW8>(low),
                    static_cast<KyBW8>(high));
  return count;
}

// Writes the number of pixels from `low` to `high`.
KY_ERRORS Count(const char* trace, const KyROI<KyBW8>* source, KyBW8 low, KyBW8 high,
                KyBW32& count) noexcept {
  return Call(trace, [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (low > high) return ky::Explain(KY_ERROR_BAD_INTERVAL, "low exceeds high");
    if (const KY_ERRORS error = ky::CheckPixels(rows)) return error;
    count = ky::LimitedCount(CountBetween(rows, low, high));
    return KY_OK;
  });
}

template <class T>
KY_ERRORS Compare(const char* trace, const KyROI<T>* a, const KyROI<T>* b,
                  ky::DifferenceKernel<T> kernel, KyBW32& different) noexcept {
  return Call(trace, [&] {
    Rows<const T> inA, inB;
    if (const KY_ERRORS error = ky::OpenSome(ky::kPair, a, inA, b, inB)) return error;
    std::uint64_t count = 0;
    ky::ReducePairs(kernel, inA, inB, [&](std::uint64_t row) { count += row; });
    different = ky::LimitedCount(count);
    return KY_OK;
  });
}

}  // namespace

KY_ERRORS ImgPixelMin(const KyROI<KyBW8>* source, KyBW8& minimum) noexcept {
  return FindSmallest("ImgPixelMin (BW8)", source, ky::ChooseStatisticsKernels().grey, minimum);
}
KY_ERRORS ImgPixelMin(const KyROI<KyBW16>* source, KyBW16& minimum) noexcept {
  return FindSmallest("ImgPixelMin (BW16)", source, ky::ChooseStatisticsKernels().deep, minimum);
}
KY_ERRORS ImgMinimum(const KyROI<KyBW8>* source, KyBW8& minimum) noexcept {
  return FindSmallest("ImgMinimum", source, ky::ChooseStatisticsKernels().grey, minimum);
}
KY_ERRORS ImgPixelMax(const KyROI<KyBW8>* source, KyBW8& maximum) noexcept {
  return FindLargest("ImgPixelMax (BW8)", source, ky::ChooseStatisticsKernels().grey, maximum);
}
KY_ERRORS ImgPixelMax(const KyROI<KyBW16>* source, KyBW16& maximum) noexcept {
  return FindLargest("ImgPixelMax (BW16)", source, ky::ChooseStatisticsKernels().deep, maximum);
}
KY_ERRORS ImgMaximum(const KyROI<KyBW8>* source, KyBW8& maximum) noexcept {
  return FindLargest("ImgMaximum", source, ky::ChooseStatisticsKernels().grey, maximum);
}

KY_ERRORS ImgPixelCompare(const KyROI<KyBW8>* a, const KyROI<KyBW8>* b,
                          KyBW32& different) noexcept {
  return Compare("ImgPixelCompare (BW8)", a, b, ky::ChooseStatisticsKernels().differentGrey,
                 different);
}
KY_ERRORS ImgPixelCompare(const KyROI<KyBW16>* a, const KyROI<KyBW16>* b,
                          KyBW32& different) noexcept {
  return Compare("ImgPixelCompare (BW16)", a, b, ky::ChooseStatisticsKernels().differentDeep,
                 different);
}
KY_ERRORS ImgPixelCompare(const KyROI<KyC24>* a, const KyROI<KyC24>* b,
                          KyBW32& different) noexcept {
  return Compare("ImgPixelCompare (C24)", a, b, ky::ChooseStatisticsKernels().differentColor,
                 different);
}

KY_ERRORS ImgCount(const KyROI<KyBW8>* source, KyBW8 level, KyBW32& count) noexcept {
  return Count("ImgCount", source, level, level, count);
}
KY_ERRORS ImgArea(const KyROI<KyBW8>* source, KyBW8 threshold, KyBW32& area) noexcept {
  return Count("ImgArea", source, threshold, 255, area);
}
KY_ERRORS ImgAreaDoubleThreshold(const KyROI<KyBW8>* source, KyBW8 low, KyBW8 high,
                                 KyBW32& area) noexcept {
  return Count("ImgAreaDoubleThreshold", source, low, high, area);
}

KY_ERRORS ImgPixelCount(const KyROI<KyBW8>* source, KyBW8 low, KyBW8 high, KyBW32& below,
                        KyBW32& between, KyBW32& above) noexcept {
  return Call("ImgPixelCount", [&] {
    Rows<const KyBW8> rows;
    if (const KY_ERRORS error = ky::Open(source, rows)) return error;
    if (low > high) return ky::Explain(KY_ERROR_BAD_INTERVAL, "low exceeds high");
    if (const KY_ERRORS error = ky::CheckPixels(rows)) return error;
    const auto all = static_cast<std::uint64_t>(rows.width * rows.height);
    const std::uint64_t lower = CountBetween(rows, 0, low - 1);
    const std::uint64_t middle = CountBetween(rows, low, high);
    below = ky::LimitedCount(lower);
    between = ky::LimitedCount(middle);
    above = ky::LimitedCount(all - lower - middle);
    return KY_OK;
  });
}
