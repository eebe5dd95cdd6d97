// The row kernels of the mirrors.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

struct MirrorKernels {
  void (*exchange)(KyBW8* a, KyBW8* b, std::size_t n);  // the elements of two rows
  void (*reverse)(KyBW8* row, std::size_t n);           // the order of a row's pixels
  void (*reverseColors)(KyC24* row, std::size_t n);
};

// The kernels of the instruction set that this call may use.
const MirrorKernels& ChooseMirrorKernels() noexcept;

}  // namespace ky
