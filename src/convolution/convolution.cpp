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

// The weights of the workers with 15 bits after the binary point, as a grid of `size` columns.
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
KY_ERRORS ConvolveAs(Out out, In in, int step, const KernelView& kernel,
                     Weights weightsOf) noexcept {
  if (kernel.data == nullptr) return KY_ERROR_KERNEL_SIZE;
  if (kernel.rectifier < 1 || kernel.rectifier > 3) return KY_OK;
  return ky::ConvolveFixed(out, in, step, weightsOf(kernel));
}

// The worker of 3x3 kernels with rectifier 2: 8 bits after the point, weights of 16 bits.
KY_ERRORS ConvolvePositive(Out out, In in, int step, const KernelView& kernel) noexcept {
  FixedWeights w = {};
  w.radius = 1;
  w.fraction = 8;
  const float scaledGain = 256.0f * ky::EffectiveGainOf(kernel);
  for (int i = 0; i < 9; ++i)
    w.weights[i] = static_cast<std::int16_t>(ky::FixedWeight(scaledGain, kernel.data[i]));
  return ky::ConvolveFixed(out, in, step, w);
}

// How calls are traced: their name, and those of the workers of 3x3, 5x5 and 7x7, which may be
// null.
struct Names {
  const char* call;
  const char* workers[3];
};
KY_ERRORS CallWorker(const Names& names, const KernelView& kernel, const auto& body) noexcept {
  const char* const worker = names.workers[kernel.sizeX / 2 - 1];
  return worker == nullptr ? body() : ky::Call(worker, body);
}

template <class Pixel>
KY_ERRORS ConvolveGeneral(const Names& names, const KyROI<Pixel>* source, KyROI<Pixel>* destination,
                          const KyKernel* kernel) noexcept {
  constexpr int kStep = sizeof(Pixel);
  return ky::Call(names.call, [&] {
    In in;
    Out out;
    if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
    if (kernel == nullptr) return KY_ERROR_KERNEL_SIZE;
    const KernelView view(*kernel);
    if (view.data == nullptr) return KY_ERROR_KERNEL_SIZE;
    if (view.rectifier == 0 || !HasFixedSize(view)) return ky::ConvolveFloat(out, in, kStep, view);
    if (view.sizeX == 3 && view.rectifier == 2) return ConvolvePositive(out, in, kStep, view);
    return CallWorker(names, view,
                      [&] { return ConvolveAs(out, in, kStep, view, GeneralWeights); });
  });
}

template <class Pixel>
KY_ERRORS ConvolveSymmetric(const Names& names, const KyROI<Pixel>* source,
                            KyROI<Pixel>* destination, const KyKernel* kernel) noexcept {
  return ky::Call(names.call, [&] {
    if (kernel == nullptr) return KY_ERROR_KERNEL_SIZE;
    const KernelView view(*kernel);
    if (view.rectifier == 0) return KY_ERROR_KERNEL_1702;
    if (!HasFixedSize(view)) return KY_ERROR_KERNEL_1703;
    return CallWorker(names, view, [&] {
      In in;
      Out out;
      if (const KY_ERRORS error = ky::OpenAll(source, in, destination, out)) return error;
      return ConvolveAs(out, in, sizeof(Pixel), view, SymmetricWeights);
    });
  });
}

}  // namespace

KY_ERRORS ImgConvolKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                          const KyKernel* kernel) noexcept {
  return ConvolveGeneral(
      {"ImgConvolKernel", {"ConvolKernel3x3", "ConvolKernel5x5", "ConvolKernel7x7"}}, source,
      destination, kernel);
}
KY_ERRORS ImgConvolKernel(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                          const KyKernel* kernel) noexcept {
  return ConvolveGeneral({"ImgConvolKernel (C24)", {}}, source, destination, kernel);
}

KY_ERRORS ImgConvolSymmetricKernel(const KyROI<KyBW8>* source, KyROI<KyBW8>* destination,
                                   const KyKernel* kernel) noexcept {
  return ConvolveSymmetric(
      {"ImgConvolSymmetricKernel", {"ConvolKernelS3xS3", "ConvolKernelS5xS5", "ConvolKernelS7xS7"}},
      source, destination, kernel);
}
KY_ERRORS ImgConvolSymmetricKernel(const KyROI<KyC24>* source, KyROI<KyC24>* destination,
                                   const KyKernel* kernel) noexcept {
  return ConvolveSymmetric({"ImgConvolSymmetricKernel (C24)", {}}, source, destination, kernel);
}
