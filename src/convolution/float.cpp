#include "convolution/float.h"

#include <algorithm>
#include <cstdint>

#include "convolution/float_rows.h"
#include "convolution/weights.h"
#include "foundation/scratch.h"

namespace ky {
namespace {

// The rows that the windows of some rows of results need, in single precision, with what stands
// outside on either side. Each row of the source is converted once, before results reach it.
class FloatRing {
 public:
  FloatRing(Rows<const KyBW8> source, std::ptrdiff_t sizeX, std::ptrdiff_t sizeY,
            float outside) noexcept
      : in_(source), left_(sizeX / 2), above_(sizeY / 2), sizeY_(sizeY), outside_(outside) {
    slots_ = std::clamp<std::ptrdiff_t>(sizeY + kFloatRowsAtOnce - 1, 1, source.height);
    pitch_ = source.width + sizeX + kFloatSlack;
  }

  bool Allocate() noexcept {
    if (!rows_.Allocate(sizeY_ + kFloatRowsAtOnce - 1)) return false;
    if (pitch_ > PTRDIFF_MAX / (slots_ + 1) || !ring_.Allocate((slots_ + 1) * pitch_)) return false;
    std::fill_n(ring_.get(), (slots_ + 1) * pitch_, outside_);
    return true;
  }

  // The rows of the windows around `count` results from row y on. They must be asked for in order.
  const float* const* Around(std::ptrdiff_t y, std::ptrdiff_t count,
                             const FloatRowKernels& kernels) noexcept {
    const std::ptrdiff_t rows = sizeY_ + count - 1;
    for (; fetched_ < std::min(y - above_ + rows, in_.height); ++fetched_)
      kernels.convert(Slot(fetched_) + left_, static_cast<std::size_t>(in_.width),
                      in_.Row(fetched_));
    for (std::ptrdiff_t j = 0; j < rows; ++j) {
      const std::ptrdiff_t row = y - above_ + j;
      rows_[j] = row < 0 || row >= in_.height ? Slot(-1) : Slot(row);
    }
    return rows_.get();
  }

 private:
  // That of row -1 holds nothing but the outside.
  float* Slot(std::ptrdiff_t row) const {
    return ring_.get() + (row < 0 ? slots_ : row % slots_) * pitch_;
  }

  Rows<const KyBW8> in_;
  std::ptrdiff_t left_, above_, sizeY_, slots_, pitch_, fetched_ = 0;
  float outside_;
  Scratch<float> ring_;
  Scratch<const float*> rows_;
};

}  // namespace

KY_ERRORS ConvolveFloat(Rows<KyBW8> destination, Rows<const KyBW8> source,
                        const KernelView& kernel) noexcept {
  if (destination.Empty()) return KY_OK;
  const bool empty = kernel.sizeX <= 0 || kernel.sizeY <= 0;
  const std::ptrdiff_t sizeX = empty ? 0 : kernel.sizeX, sizeY = empty ? 0 : kernel.sizeY;
  Input<KyBW8> input;
  Scratch<float> scaled;
  if (!input.Open(source, destination) || !scaled.Allocate(sizeX * sizeY))
    return KY_ERROR_NOT_ENOUGH_MEMORY;
  FloatRing ring(input.rows(), sizeX, sizeY, static_cast<float>(kernel.outsideValue));
  if (!ring.Allocate()) return KY_ERROR_NOT_ENOUGH_MEMORY;

  const float gain = empty ? 0 : EffectiveGainOf(kernel);
  double reach = 0;
  for (std::ptrdiff_t i = 0; i < sizeX * sizeY; ++i) {
    scaled[i] = NumberOr0(NumberOr0(kernel.data[i]) * gain);
    reach += std::fabs(scaled[i]);
  }
  // Rounding adds less than a half as long as that many coefficients are not a hundred thousand.
  const double furthest = std::max(255.0, std::fabs(static_cast<double>(kernel.outsideValue)));
  const bool fits = sizeX * sizeY < 100'000 && reach * furthest < 1e9;
  const auto to32Bits = [](std::int64_t v) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX));
  };
  // So far down no sum makes a level but 0, and one step less leaves lanes at 0, not at -1.
  const std::int64_t offset = std::max<std::int64_t>(kernel.offset, -INT32_MAX);
  const FloatKernel weights = {
      sizeX, sizeY, scaled.get(), to32Bits(-offset), to32Bits(255 - offset), to32Bits(offset)};
  const int rectifier =
      kernel.rectifier > 0 && kernel.rectifier < kRectifiers ? kernel.rectifier : 0;
  const FloatRowKernels& kernels = ChooseFloatRowKernels();
  const auto weigh = kernels.weigh[rectifier][fits];
  for (std::ptrdiff_t y = 0; y < destination.height; y += kFloatRowsAtOnce) {
    const std::ptrdiff_t count = std::min(kFloatRowsAtOnce, destination.height - y);
    weigh(weights, {destination.Row(y), destination.pitch, destination.width, count},
          ring.Around(y, count, kernels));
  }
  return KY_OK;
}

}  // namespace ky
