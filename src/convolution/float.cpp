#include "convolution/float.h"

#include <algorithm>
#include <cstdint>

#include "convolution/fixed.h"
#include "convolution/float_rows.h"
#include "foundation/kernels/weights.h"
#include "foundation/ring.h"
#include "foundation/scratch.h"

namespace ky {
namespace {

// The rows that the windows of some rows of results need, in single precision. Each row of the
// source is converted once, before results reach it.
class FloatRows {
 public:
  bool Allocate(Rows<const KyBW8> source, int step, std::ptrdiff_t sizeX, std::ptrdiff_t sizeY,
                std::int32_t outside) noexcept {
    in_ = source;
    sizeY_ = sizeY;
    left_ = sizeX / 2 * step;
    const std::ptrdiff_t left = sizeX / 2, rows = sizeY + kFloatRowsAtOnce - 1;
    const std::ptrdiff_t width = source.width / step;
    return ring_.Allocate({width, source.height, left, sizeX - left, rows, step, kFloatSlack,
                           Border::Constant(outside), width}) &&
           rows_.Allocate(rows);
  }

  // The rows of the windows around `count` results from row y on, from the first column of the
  // first window. They must be wanted in order.
  const float* const* Around(std::ptrdiff_t y, std::ptrdiff_t count,
                             const FloatRowKernels& kernels) noexcept {
    const std::ptrdiff_t rows = sizeY_ + count - 1, top = y - sizeY_ / 2;
    ring_.FetchTo(top + rows, [&](float* slot, std::ptrdiff_t row) {
      kernels.convert(slot, static_cast<std::size_t>(in_.width), in_.Row(row));
    });
    for (std::ptrdiff_t j = 0; j < rows; ++j) rows_[j] = ring_(top + j) - left_;
    return rows_.get();
  }

 private:
  Rows<const KyBW8> in_;
  std::ptrdiff_t sizeY_ = 0, left_ = 0;
  RowRing<float> ring_;
  Scratch<const float*> rows_;
};

// Finds the integers that do the same, which takes a third of the time: true when no sum is
// rounded, as for small multiples of a power of two. Truncated and rounded down, sums below 0
// differ, but not what they are limited to, unless there is an offset above 0.
bool FindExactWeights(const KernelView& kernel, const float* coefficients,
                      FixedWeights& w) noexcept {
  constexpr int kPrecision = 24;
  if (kernel.sizeX != kernel.sizeY || kernel.rectifier != 0) return false;
  if (kernel.sizeX != 3 && kernel.sizeX != 5 && kernel.sizeX != 7) return false;
  if (kernel.outsideValue < 0 || kernel.outsideValue > 255) return false;
  if (kernel.offset < -255 || kernel.offset > 255) return false;
  const float* const end = coefficients + kernel.sizeX * kernel.sizeY;
  const bool hasNegative = std::any_of(coefficients, end, [](float c) { return c < 0; });
  if (hasNegative && kernel.offset > 0) return false;
  float scale = 1;
  w = {kernel.sizeX / 2, 0, kernel.offset, false, {}};
  const auto isWhole = [&](float c) { return c * scale == std::trunc(c * scale); };
  for (; !std::all_of(coefficients, end, isWhole); scale *= 2)
    if (++w.fraction == kPrecision) return false;
  double reach = 0;
  for (const float* c = coefficients; c != end; ++c) reach += 255.0 * std::fabs(*c * scale);
  if (!(reach < 1 << kPrecision)) return false;
  std::transform(coefficients, end, w.weights,
                 [scale](float c) { return static_cast<std::int32_t>(c * scale); });
  return true;
}

}  // namespace

KY_ERRORS ConvolveFloat(Rows<KyBW8> destination, Rows<const KyBW8> source, int step,
                        const KernelView& kernel) noexcept {
  if (destination.Empty()) return KY_OK;
  const bool empty = kernel.sizeX <= 0 || kernel.sizeY <= 0;
  const std::ptrdiff_t sizeX = empty ? 0 : kernel.sizeX, sizeY = empty ? 0 : kernel.sizeY;
  Scratch<float> scaled;
  if (!scaled.Allocate(sizeX * sizeY)) return KY_ERROR_NOT_ENOUGH_MEMORY;
  const float gain = empty ? 0 : EffectiveGainOf(kernel);
  double reach = 0;
  for (std::ptrdiff_t i = 0; i < sizeX * sizeY; ++i) {
    scaled[i] = NumberOr0(NumberOr0(kernel.data[i]) * gain);
    reach += std::fabs(scaled[i]);
  }
  FixedWeights exact;
  if (FindExactWeights(kernel, scaled.get(), exact))
    return ConvolveFixed(destination, source, step, exact, Border::Constant(kernel.outsideValue));

  Input<KyBW8> input;
  FloatRows rows;
  if (!input.Open(source, destination) ||
      !rows.Allocate(input.rows(), step, sizeX, sizeY, kernel.outsideValue))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  // Rounding adds less than a half as long as that many coefficients are not a hundred thousand.
  const double furthest = std::max(255.0, std::fabs(static_cast<double>(kernel.outsideValue)));
  const bool fits = sizeX * sizeY < 100'000 && reach * furthest + std::fabs(kernel.offset) < 1e9;
  const auto to32Bits = [](std::int64_t v) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX));
  };
  // So far down no sum makes a level but 0, and one step less leaves lanes at 0, not at -1.
  const std::int64_t offset = std::max<std::int64_t>(kernel.offset, -INT32_MAX);
  const FloatKernel weights = {
      sizeX,           sizeY, step, scaled.get(), to32Bits(-offset), to32Bits(255 - offset),
      to32Bits(offset)};
  const int rectifier =
      kernel.rectifier > 0 && kernel.rectifier < kRectifiers ? kernel.rectifier : 0;
  const FloatRowKernels& kernels = ChooseFloatRowKernels();
  const auto weigh = kernels.weigh[rectifier][fits];
  for (std::ptrdiff_t y = 0; y < destination.height; y += kFloatRowsAtOnce) {
    const std::ptrdiff_t count = std::min(kFloatRowsAtOnce, destination.height - y);
    weigh(weights, {destination.Row(y), destination.pitch, destination.width, count},
          rows.Around(y, count, kernels));
  }
  return KY_OK;
}

}  // namespace ky
