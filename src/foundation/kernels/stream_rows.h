// The kernel that writes past the caches.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

struct StreamKernels {
  // Copies n bytes; whole cache lines of the destination are not brought into caches. Null where
  // processors decide by themselves.
  void (*write)(KyBW8* to, std::size_t n, const KyBW8* from);
  // After this, other threads see what has been written as they see ordinary stores.
  void (*finish)();
};

// The kernels of the instruction set that this call may use.
const StreamKernels& ChooseStreamKernels() noexcept;

}  // namespace ky
