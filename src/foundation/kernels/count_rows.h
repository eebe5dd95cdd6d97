// The kernel that counts levels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// Adds the levels of `blocks` times kCountBlock pixels of each of `height` rows, `pitch` bytes
// apart, to 256 counts.
inline constexpr std::ptrdiff_t kCountBlock = 512;
using CountKernel = void (*)(std::uint32_t* counts, std::ptrdiff_t blocks, const KyBW8* first,
                             std::ptrdiff_t pitch, std::ptrdiff_t height);

struct CountKernels {
  CountKernel count;  // null where tables are faster
};

// The kernels of the instruction set that this call may use.
const CountKernels& ChooseCountKernels() noexcept;

}  // namespace ky
