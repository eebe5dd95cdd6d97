// The row kernels of 4:2:2.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

// Rows of one pixel or more, whose pairs start with their first pixel.
struct ChromaKernels {
  void (*toPairs)(KyBW16* out, std::size_t n, const KyC24* in);
  void (*toColors)(KyC24* out, std::size_t n, const KyBW16* in);
};

// The kernels of the instruction set that this call may use.
const ChromaKernels& ChooseChromaKernels() noexcept;

}  // namespace ky
