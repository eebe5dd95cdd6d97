// The row kernels of the arithmetic and logic operators.
#pragma once

#include "foundation/map.h"
#include "ky/operators.h"

namespace ky {

// Null where an operation has no kernel.
struct OperatorKernels {
  MapKernel<KyBW8, KyBW8> invert;
  RowKernel<KyBW8, KyBW8> streamInvert;
  MapKernel<KyC24, KyBW8> triple, tripleInverse;  // a grey level into three components
  // By operation, all but these two on components. For the shifts, whose counts are constants, the
  // second operand is made of the count by ShiftOperand.
  MapKernel<KyBW8, KyBW8, KyBW8> combine[KY_OPER_OVERLAY + 1];
  // The same for whole lines of a cache, which they write past the caches; null where the
  // destination is read, and where the processor decides by itself.
  RowKernel<KyBW8, KyBW8, KyBW8> stream[KY_OPER_OVERLAY + 1];
  MapKernel<KyC24, KyC24, KyC24> overlay;              // b where it is not black, else a
  MapKernel<KyBW8, KyBW8, KyBW8, KyBW8> overlayWhere;  // c where b is not 0, else a
  MapKernel<KyBW16, KyBW8, KyBW8> combine8To16[KY_OPER_OVERLAY + 1];
  MapKernel<KyBW16, KyBW16, KyBW8> combine16[KY_OPER_OVERLAY + 1];
};

// The kernels of the instruction set that this call may use.
const OperatorKernels& ChooseOperatorKernels() noexcept;

// What stands for a shift by `count` in the kernels of the two shifts: a << count is a * 2^count,
// and a >> count is a * 2^(8 - count) / 256, whose factor is stored less 1 to fit a byte.
constexpr KyBW8 ShiftOperand(ARITH_LOGIC_OPERATIONS operation, KyBW8 count) noexcept {
  const int bits = std::min(count % 32, 8);
  return static_cast<KyBW8>(operation == KY_OPER_SHIFT_LEFT ? 1 << bits : (256 >> bits) - 1);
}

}  // namespace ky
