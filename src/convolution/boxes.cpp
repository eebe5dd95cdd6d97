// Means, deviations and thresholds by the sums over boxes.
#include <algorithm>
#include <cstdint>

#include "convolution/box_sums.h"
#include "convolution/large_boxes.h"
#include "foundation/frame.h"
#include "ky/neighbourhoods.h"

namespace {

using namespace ky;  // NOLINT(google-build-using-namespace)

constexpr unsigned kMostHalf = 1 << 20;
// The sums of columns of more rows do not fit 16 bits.
constexpr std::ptrdiff_t kMostNarrowHalf = 128;

AverageKernel AverageKernelOf(const BoxKernels& kernels, const BoxJob& job) noexcept {
  const std::int64_t area = job.box.Area();
  if (!job.inside && area < kMostOddArea) return kernels.averageOdd;
  return area < kMostSmallArea ? kernels.averageSmall : kernels.average;
}

template <class Column>
KY_ERRORS AverageWith(const ColumnKernels<Column>& columnKernels, const BoxKernels& kernels,
                      const BoxJob& job) noexcept {
  const std::ptrdiff_t width = job.Width(), height = job.in.height;
  PlaneRows source;
  PlaneResults results;
  ColumnSums<Column> columns;
  RowSums rowSums;
  RowAreas areas;
  Scratch<KyBW8> averages;
  if (!source.Open(job.in, job.out, job.planes,
                   job.inside ? Border::Constant(0) : Border::Nearest(), job.RowsAtOnce()) ||
      !results.Open(job.out, job.planes) ||
      !columns.Allocate(columnKernels, source, job.planes, job.box.halfHeight) ||
      !rowSums.Allocate(kernels, job.box.halfWidth, width) ||
      !areas.Allocate(job.box, width, height, job.inside, false) ||
      !averages.Allocate(job.threshold != nullptr ? width : 0))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  const AverageKernel average = AverageKernelOf(kernels, job);
  const auto n = static_cast<std::size_t>(width);
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    source.FetchTo(y + job.box.halfHeight + 1);
    for (int plane = 0; plane < job.planes; ++plane) {
      const WindowSums sums =
          rowSums.Make(columnKernels, columns.Advance(source, y, plane), !job.inside);
      KyBW8* const row = results.Row(y, plane);
      average(job.threshold != nullptr ? averages.get() : row, n, sums, areas.At(y));
      if (job.threshold != nullptr)
        kernels.threshold(row, n, source.whole().Row(y), averages.get(), *job.threshold);
    }
    results.Done(y);
  }
  return KY_OK;
}

KY_ERRORS Average(const BoxJob& job) noexcept {
  if (job.box.Area() > kMostArea) return AverageOfLargeBoxes(job);
  const BoxKernels& kernels = ChooseBoxKernels();
  if (job.box.halfHeight <= kMostNarrowHalf) return AverageWith(kernels.narrow, kernels, job);
  return AverageWith(kernels.wide, kernels, job);
}

KY_ERRORS Deviation(const BoxJob& job) noexcept {
  if (job.box.Area() > kMostDeviationArea) return DeviationOfLargeBoxes(job);
  const std::ptrdiff_t width = job.Width(), height = job.in.height;
  const BoxKernels& kernels = ChooseBoxKernels();
  PlaneRows source;
  PlaneResults results;
  ColumnSums<std::uint32_t> columns, squareColumns;
  RowSums rowSums, squareSums;
  RowAreas areas;
  if (!source.Open(job.in, job.out, job.planes, Border::Constant(kMiddleLevel), job.RowsAtOnce()) ||
      !results.Open(job.out, job.planes) ||
      !columns.Allocate(kernels.wide, source, job.planes, job.box.halfHeight) ||
      !squareColumns.Allocate(kernels.squares, source, job.planes, job.box.halfHeight) ||
      !rowSums.Allocate(kernels, job.box.halfWidth, width) ||
      !squareSums.Allocate(kernels, job.box.halfWidth, width) ||
      !areas.Allocate(job.box, width, height, true, true))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    source.FetchTo(y + job.box.halfHeight + 1);
    for (int plane = 0; plane < job.planes; ++plane) {
      const WindowSums sums = rowSums.Make(kernels.wide, columns.Advance(source, y, plane), false);
      const WindowSums squares =
          squareSums.Make(kernels.squares, squareColumns.Advance(source, y, plane), false);
      kernels.deviation(results.Row(y, plane), static_cast<std::size_t>(width), sums, squares,
                        areas.At(y));
    }
    results.Done(y);
  }
  return KY_OK;
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
KY_ERRORS OverBoxes(const char* name, const KyROI<Pixel>* source, const KyROI<Pixel>* destination,
                    unsigned halfWidth, unsigned halfHeight, const Operation& operation) noexcept {
  return Call(name, [&] {
    if (destination == nullptr) destination = source;
    BoxJob job = {};
    // A source is const for its rectangle, not for its pixels.
    auto* const written = const_cast<KyROI<Pixel>*>(destination);
    if (const KY_ERRORS error = OpenAll(source, job.in, written, job.out)) return error;
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
  const LocalThreshold threshold = {static_cast<std::int16_t>(std::clamp(offset, -256, 256)), low,
                                    high};
  return OverBoxes("ImgLocalThreshold", source, destination, halfWidth, halfHeight,
                   {true, &Average, &threshold});
}
