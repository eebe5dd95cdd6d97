// The row kernels of packed pixels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// Makes n pixels of a row, of which no byte but its own is read.
template <class T>
using UnpackKernel = void (*)(T* out, std::size_t n, const std::uint8_t* row);

struct UnpackKernels {
  UnpackKernel<KyBW16> toDeep[4];  // by KY_PACKED_FORMAT
  UnpackKernel<KyBW8> toGrey[4];
};

// The kernels of the instruction set that this call may use.
const UnpackKernels& ChooseUnpackKernels() noexcept;

}  // namespace ky
