// The row kernels of gradients.
#pragma once

#include "foundation/window.h"

namespace ky {

// A lookup image. Offsets into it fit 32 bits. `near`, unless it is null, holds the entries of
// differences from -128 to 127 once more, in rows of 256.
struct GradientTable {
  const KyBW8* first;
  std::int32_t pitch;
  const KyBW8* near;
};

struct GradientKernels {
  std::size_t lanes;
  void (*store)(Rows<KyBW32> out, const KyBW8* const* rows);
  void (*lookUp)(Rows<KyBW8> out, const KyBW8* const* rows, const GradientTable& table);
  void (*lookUpStored)(KyBW8* out, std::size_t n, const KyBW32* gradients,
                       const GradientTable& table);
};

// The kernels of the instruction set that this call may use.
const GradientKernels& ChooseGradientKernels() noexcept;

}  // namespace ky
