#include "ky/convolution.h"

#include "convolution/fixed.h"
#include "convolution/float.h"
#include "foundation/frame.h"
#include "foundation/kernels/kernel_view.h"
#include "foundation/kernels/weights.h"

namespace {

using ky::FixedWeights;
using ky::KernelView;
using In = ky::Rows<const KyBW8>;
using Out = ky::Rows<KyBW8>;

bool IsSquareOf(const KernelView& kernel, int size) {
  return kernel.sizeX == size && kernel.sizeY == size;
}
bool HasFixedSize(const KernelView& kernel) {
  return IsSquareOf(kernel, 3) || IsSquareOf(kernel, 5) || IsSquareOf(kernel, 7);
}

// The weights of the workers with 15 bits behind the binary point, as a grid of `size` columns.
// Rectifier 1 turns the sense.
FixedWeights WeightsOf(const KernelView& kernel, float effectiveGain) {
  const bool turned = kernel.rectifier == 1;
  FixedWeights w = {};
  w.radius = kernel.sizeX / 2;
  w.fraction = 15;
  w.offset = turned ? -std::int64_t{kernel.offset} : kernel.offset;
  w.magnitude = kernel.rectifier == 3;
  const float scaledGain = 32768.0f * (turned ? -effectiveGain : effectiveGain);
  for (int i = 0; i < kernel.sizeX * kernel.sizeX; ++i)
    w.weights[i] = ky::FixedWeight(scaledGain, kernel.data[i]);
  return w;
}
FixedWeights GeneralWeights(const KernelView& kernel) {
  return WeightsOf(kernel, ky::EffectiveGainOf(kernel));
}

// One coefficient stands for all positions that the symmetry makes equal.
FixedWeights SymmetricWeights(const KernelView& kernel) {
  const int size = kernel.sizeX, r = size / 2;
  ky::EffectiveGain gain;
  for (int y = 0; y <= r; ++y)
    for (int x = y; x <= r; ++x)
      gain.Add(kernel.data[y * size + x], x == r ? (y == r ? 1 : 4) : (x == y ? 4 : 8));
  const FixedWeights read = WeightsOf(kernel, gain.Of(kernel.gain));
  FixedWeights all = read;
  for (int i = 0; i < size * size; ++i) {
    const int x = std::min(i % size, size - 1 - i % size),
              y = std::min(i / size, size - 1 - i / size);
    all.weights[i] = read.weights[std::min(x, y) * size + std::max(x, y)];
  }
  return all;
}

// The dedicated workers. A rectifier that is none of theirs has nothing done.
using Weights = FixedWeights (*)(const KernelView&);
KY_ERRORS ConvolveAs(Out out, In in, const KernelView& kernel, Weights weightsOf) noexcept {
  if (kernel.data == nullptr) return KY_ERROR_KERNEL_SIZE;
  if (kernel.rectifier < 1 || kernel.rectifier > 3) return KY_OK;
  return ky::ConvolveFixed(out, in, weightsOf(kernel));
}

// The worker of 3x3 kernels with rectifier 2: 8 bits behind the point, weights of 16 bits.
KY_ERRORS ConvolvePositive(Out out, In in, const KernelView& kernel) noexcept {
  FixedWeights w = {};
  w.radius = 1;
  w.fraction = 8;
  const float scaledGain = 256.0f * ky::EffectiveGainOf(kernel);
  for (int i = 0; i < 9; ++i)
    w.weights[i] = static_cast<std::int16_t>(ky::FixedWeight(scaledGain, kernel.data[i]));
  return ky::ConvolveFixed(out, in, w);
}

}  // namespace

KY_ERRORS ImgConvolKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                          const KyKernel* kernel) noexcept {
  return ky::Call("ImgConvolKernel", [&] {
    In in;
    Out out;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (kernel == nullptr) return KY_ERROR_KERNEL_SIZE;
    const KernelView view(*kernel);
    if (view.data == nullptr) return KY_ERROR_KERNEL_SIZE;
    if (view.rectifier == 0 || !HasFixedSize(view)) return ky::ConvolveFloat(out, in, view);
    if (view.sizeX == 3 && view.rectifier == 2) return ConvolvePositive(out, in, view);
    constexpr const char* kWorkers[] = {"ConvolKernel3x3", "ConvolKernel5x5", "ConvolKernel7x7"};
    return ky::Call(kWorkers[view.sizeX / 2 - 1],
                    [&] { return ConvolveAs(out, in, view, GeneralWeights); });
  });
}

KY_ERRORS ImgConvolSymmetricKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   const KyKernel* kernel) noexcept {
  return ky::Call("ImgConvolSymmetricKernel", [&] {
    if (kernel == nullptr) return KY_ERROR_KERNEL_SIZE;
    const KernelView view(*kernel);
    if (view.rectifier == 0) return KY_ERROR_KERNEL_1702;
    if (!HasFixedSize(view)) return KY_ERROR_KERNEL_1703;
    constexpr const char* kWorkers[] = {"ConvolKernelS3xS3", "ConvolKernelS5xS5",
                                        "ConvolKernelS7xS7"};
    return ky::Call(kWorkers[view.sizeX / 2 - 1], [&] {
      In in;
      Out out;
      if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
      return ConvolveAs(out, in, view, SymmetricWeights);
    });
  });
}
