// A kernel's fields, read without touching the status.
#pragma once

#include "ky/kernel.h"

namespace ky {

struct KernelView {
  explicit KernelView(const KyKernel& kernel) noexcept
      : sizeX(kernel.sizeX_),
        sizeY(kernel.sizeY_),
        rectifier(kernel.rectifier_),
        gain(kernel.gain_),
        offset(static_cast<std::int32_t>(kernel.offset_)),
        outsideValue(static_cast<std::int32_t>(kernel.outsideValue_)),
        data(kernel.Coefficients()) {}

  int sizeX, sizeY, rectifier;
  float gain;
  std::int32_t offset, outsideValue;
  const float* data;
};

}  // namespace ky
