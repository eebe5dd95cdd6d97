// A kernel's fields, read without touching the status.
#pragma once

#include <algorithm>
#include <cstdint>

#include "ky/kernel.h"

namespace ky {

struct KernelView {
  explicit KernelView(const KyKernel& kernel) noexcept
      : sizeX(kernel.sizeX_),
        sizeY(kernel.sizeY_),
        rectifier(std::max<int>(kernel.rectifier_, 0)),
        gain(kernel.gain_),
        offset(static_cast<std::int32_t>(kernel.offset_)),
        outsideValue(static_cast<std::int32_t>(kernel.outsideValue_)),
        data(kernel.Coefficients()) {}

  int sizeX, sizeY, rectifier;  // a negative rectifier acts like 0
  float gain;
  std::int32_t offset, outsideValue;
  const float* data;
};

}  // namespace ky
