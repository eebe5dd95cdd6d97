// Means, deviations and thresholds by the sums over boxes.
#include <algorithm>
#include <cstdint>
#include <optional>

#include "convolution/box_sums.h"
#include "convolution/filters_rows.h"
#include "convolution/large_boxes.h"
#include "convolution/rolling_means.h"
#include "foundation/frame.h"
#include "ky/neighbourhoods.h"

namespace {

using namespace ky;  // NOLINT(google-build-using-namespace)

constexpr unsigned kMostHalf = 1 << 20;

template <class Columns>
AverageKernel<Columns> AverageKernelOf(const ResultKernels<Columns>& kernels,
                                       const BoxJob& job) noexcept {
  const std::int64_t area = job.box.Area();
  if (!job.inside && area < kMostOddArea) return kernels.averageOdd;
  return area < kMostSmallArea ? kernels.averageSmall : kernels.average;
}

// The kernels for windows of some height: of their columns' sums, of what these sums give, and of
// thresholds by the sums and by averages.
template <class Columns>
struct HeightKernels {
  const ColumnSumKernels<Columns>& columns;
  const ResultKernels<Columns>& results;
  LocalThresholdKernel<Columns> threshold;
  decltype(LocalThresholdKernels::compare) compare;
};

// run(the HeightKernels of a window).
template <class Run>
KY_ERRORS ForHeight(std::ptrdiff_t halfHeight, const Run& run) noexcept {
  const AllColumnSumKernels& columns = ChooseAllColumnSumKernels();
  const BoxKernels& results = ChooseBoxKernels();
  const LocalThresholdKernels& thresholds = ChooseLocalThresholdKernels();
  const std::ptrdiff_t rows = 2 * halfHeight + 1;
  using Narrow = HeightKernels<NarrowColumns>;
  if (rows <= kFewRows)
    return run(Narrow{columns.narrow, results.few, thresholds.few, thresholds.compare});
  if (rows <= kNarrowRows)
    return run(Narrow{columns.narrow, results.narrow, thresholds.narrow, thresholds.compare});
  return run(
      HeightKernels<WideColumns>{columns.wide, results.wide, thresholds.wide, thresholds.compare});
}

template <class Columns>
KY_ERRORS AverageWith(const HeightKernels<Columns>& kernels, const BoxJob& job) noexcept {
  const std::ptrdiff_t width = job.Width(), height = job.in.height;
  PlaneRows source;
  PlaneResults results;
  ColumnSums<Columns> columns;
  RowAreas areas;
  Scratch<KyBW8> averages;
  if (!source.Open(job.in, job.out, job.planes,
                   job.inside ? Border::Constant(0) : Border::Nearest(), job.RowsAtOnce()) ||
      !results.Open(job.out, job.planes) ||
      !columns.Allocate(kernels.columns, source, job.planes, job.box, !job.inside) ||
      !areas.Allocate(job.box, width, height, job.inside) ||
      !averages.Allocate(job.threshold != nullptr ? width : 0))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  const AverageKernel<Columns> average = AverageKernelOf(kernels.results, job);
  const bool isDirect = job.threshold != nullptr && job.box.Area() < kMostThresholdArea;
  const auto n = static_cast<std::size_t>(width);
  MakePlanes(source, results, job.planes, job.box.halfHeight, [&](std::ptrdiff_t y, int plane) {
    const SlidingWindows<Columns> windows = columns.Advance(source, y, plane);
    KyBW8* const row = results.Row(y, plane);
    if (isDirect)
      return kernels.threshold(row, n, windows, areas.At(y), source.whole().Row(y), *job.threshold);
    average(job.threshold != nullptr ? averages.get() : row, n, windows, areas.At(y));
    if (job.threshold != nullptr)
      kernels.compare(row, n, source.whole().Row(y), averages.get(), *job.threshold);
  });
  return KY_OK;
}

// The kernels of the windows that a function of their own serves faster; null for others.
const WindowKernels* SmallWindows(const BoxJob& job) noexcept {
  const LargeSmoothingKernels& kernels = ChooseLargeSmoothingKernels();
  if (job.inside || job.box.halfWidth != job.box.halfHeight) return nullptr;
  return job.box.halfWidth == 2   ? &kernels.uniform5x5
         : job.box.halfWidth == 3 ? &kernels.uniform7x7
                                  : nullptr;
}

KY_ERRORS Average(const BoxJob& job) noexcept {
  if (const WindowKernels* const small = SmallWindows(job))
    return FilterWindows(job.out, job.in, Border::Nearest(),
                         job.planes == 1 ? small->grey : small->color);
  if (const std::optional<KY_ERRORS> error = RollMeans(job)) return *error;
  if (job.box.Area() > kMostArea) return AverageOfLargeBoxes(job);
  return ForHeight(job.box.halfHeight,
                   [&](const auto& kernels) { return AverageWith(kernels, job); });
}

// make(out, n, windows of levels, those of squares, these squares' columns, areas) makes a row.
template <class Columns, class Make>
KY_ERRORS DeviationWith(const ColumnSumKernels<Columns>& columnKernels,
                        const ColumnSumKernels<WideColumns>& squareKernels, const BoxJob& job,
                        const Make& make) noexcept {
  const std::ptrdiff_t width = job.Width(), height = job.in.height;
  PlaneRows source;
  PlaneResults results;
  ColumnSums<Columns> columns;
  ColumnSums<WideColumns> squareColumns;
  RowAreas areas;
  if (!source.Open(job.in, job.out, job.planes, Border::Constant(0), job.RowsAtOnce()) ||
      !results.Open(job.out, job.planes) ||
      !columns.Allocate(columnKernels, source, job.planes, job.box, false) ||
      !squareColumns.Allocate(squareKernels, source, job.planes, job.box, false) ||
      !areas.Allocate(job.box, width, height, true))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  const auto n = static_cast<std::size_t>(width);
  const std::ptrdiff_t half = job.box.halfHeight;
  MakePlanes(source, results, job.planes, half, [&](std::ptrdiff_t y, int plane) {
    if (y == 0) {
      columns.Start(source, plane);
      squareColumns.Start(source, plane);
    } else {
      columnKernels.slideBoth(columns.At(plane), squareColumns.At(plane), n,
                              source.Row(y + half, plane), source.Row(y - half - 1, plane));
    }
    make(results.Row(y, plane), n, columns.Along(plane), squareColumns.Along(plane),
         squareColumns.At(plane), areas.At(y));
  });
  return KY_OK;
}

KY_ERRORS Deviation(const BoxJob& job) noexcept {
  const std::int64_t area = job.box.Area();
  if (area > kMostLargeDeviationArea || 2 * job.box.halfHeight + 1 > kSquareRows)
    return DeviationOfLargeBoxes(job);
  const AllColumnSumKernels& all = ChooseAllColumnSumKernels();
  if (area > kMostDeviationArea) {
    const BoxKernels& results = ChooseBoxKernels();
    const auto half = static_cast<std::size_t>(job.box.halfWidth);
    return DeviationWith(all.wide, all.squares, job,
                         [&](KyBW8* out, std::size_t n, const auto& levels, const auto& squares,
                             const WideColumns& columns, const WindowAreas& areas) {
                           const std::uint32_t before = all.sumShifted(columns, half, kCoarse);
                           results.deviationOfLarge(out, n, levels, squares, before, areas);
                         });
  }
  return ForHeight(job.box.halfHeight, [&](const auto& kernels) {
    const auto& results = kernels.results;
    const auto make = area > kMostSmallDeviationArea ? results.deviation : results.deviationOfSmall;
    return DeviationWith(
        kernels.columns, all.squares, job,
        [&](KyBW8* out, std::size_t n, const auto& levels, const auto& squares, const WideColumns&,
            const WindowAreas& areas) { make(out, n, levels, squares, areas); });
  });
}

// The frame of all functions: what stands outside, and what is made of the windows.
struct Operation {
  bool inside;
  KY_ERRORS (*run)(const BoxJob& job) noexcept;
  const LocalThreshold* threshold = nullptr;
};
constexpr Operation kUniform = {false, &Average}, kAverage = {true, &Average},
                    kDeviation = {true, &Deviation};

template <class Pixel>
KY_ERRORS OverBoxes(const char* name, const KyROI<Pixel>* source, KyROI<Pixel>* destination,
                    unsigned halfWidth, unsigned halfHeight, const Operation& operation) noexcept {
  return Call(name, [&] {
    destination = DestinationOf(source, destination);
    BoxJob job = {};
    if (const KY_ERRORS error = OpenAll(source, job.in, destination, job.out)) return error;
    if (halfHeight == KY_HALF_HEIGHT_AS_WIDTH) halfHeight = halfWidth;
    if (halfWidth > kMostHalf)
      return ky::OutOfRange(KY_ERROR_PARAMETER_1_OUT_OF_RANGE, "halfWidth");
    if (halfHeight > kMostHalf)
      return ky::OutOfRange(KY_ERROR_PARAMETER_2_OUT_OF_RANGE, "halfHeight");
    if (job.out.Empty()) return KY_OK;
    job.planes = static_cast<int>(sizeof(Pixel));
    job.box = {halfWidth, halfHeight};
    job.inside = operation.inside;
    job.threshold = operation.threshold;
    if (job.inside) job.box = job.box.On(job.Width(), job.in.height);
    return operation.run(job);
  });
}

}  // namespace

KY_ERRORS ImgConvolUniform(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                           unsigned halfWidth, unsigned halfHeight) noexcept {
  return OverBoxes("ImgConvolUniform (BW8)", source, destination, halfWidth, halfHeight, kUniform);
}
KY_ERRORS ImgConvolUniform(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                           unsigned halfWidth, unsigned halfHeight) noexcept {
  return OverBoxes("ImgConvolUniform (C24)", source, destination, halfWidth, halfHeight, kUniform);
}
KY_ERRORS ImgLocalAverage(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination, unsigned halfWidth,
                          unsigned halfHeight) noexcept {
  return OverBoxes("ImgLocalAverage (BW8)", source, destination, halfWidth, halfHeight, kAverage);
}
KY_ERRORS ImgLocalAverage(const KyROI<KyC24>* source, KyROI<KyC24>* destination, unsigned halfWidth,
                          unsigned halfHeight) noexcept {
  return OverBoxes("ImgLocalAverage (C24)", source, destination, halfWidth, halfHeight, kAverage);
}
KY_ERRORS ImgLocalDeviation(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                            unsigned halfWidth, unsigned halfHeight) noexcept {
  return OverBoxes("ImgLocalDeviation (BW8)", source, destination, halfWidth, halfHeight,
                   kDeviation);
}
KY_ERRORS ImgLocalDeviation(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                            unsigned halfWidth, unsigned halfHeight) noexcept {
  return OverBoxes("ImgLocalDeviation (C24)", source, destination, halfWidth, halfHeight,
                   kDeviation);
}
KY_ERRORS ImgLocalThreshold(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                            unsigned halfWidth, unsigned halfHeight, int offset, KyBW8 low,
                            KyBW8 high) noexcept {
  // No level is 256 above or below another.
  const LocalThreshold threshold = {std::clamp(offset, -256, 256), low, high};
  return OverBoxes("ImgLocalThreshold", source, destination, halfWidth, halfHeight,
                   {true, &Average, &threshold});
}
