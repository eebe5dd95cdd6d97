// Coefficients of a kernel, and the gain that they are multiplied by. All in single precision, each
// operation rounded: what follows from it is part of the contract.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "foundation/kernels/kernel_view.h"

namespace ky {

// A coefficient that is not a number counts as 0.
inline float NumberOr0(float c) noexcept { return std::isnan(c) ? 0.0f : c; }

// gain / S when the sum S of the coefficients is not small beside the sum of their magnitudes, else
// the gain.
class EffectiveGain {
 public:
  // Adds a coefficient that stands `count` times in the grid.
  void Add(float coefficient, int count = 1) noexcept {
    const float all = static_cast<float>(count) * NumberOr0(coefficient);
    sum_ = sum_ + all;
    magnitudes_ = magnitudes_ + std::fabs(all);
  }
  float Of(float gain) const noexcept {
    return std::fabs(sum_) > 0.00001f * magnitudes_ ? gain / sum_ : gain;
  }

 private:
  float sum_ = 0, magnitudes_ = 0;
};

inline float EffectiveGainOf(const KernelView& kernel) noexcept {
  EffectiveGain gain;
  const std::ptrdiff_t count = std::ptrdiff_t{kernel.sizeX} * kernel.sizeY;
  for (std::ptrdiff_t i = 0; i < count; ++i) gain.Add(kernel.data[i]);
  return gain.Of(kernel.gain);
}

// trunc(scaledGain * coefficient), limited to the floats within 32 bits: +-2147483520.
inline std::int32_t FixedWeight(float scaledGain, float coefficient) noexcept {
  constexpr float kLargest = 2147483520.0f;  // the last single below 2^31
  const float weight = NumberOr0(scaledGain * NumberOr0(coefficient));
  return static_cast<std::int32_t>(std::fmin(std::fmax(weight, -kLargest), kLargest));
}

}  // namespace ky
