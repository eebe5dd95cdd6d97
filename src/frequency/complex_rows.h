// Row kernels of images of complex numbers.
#pragma once

#include "foundation/map.h"
#include "foundation/reduce.h"
#include "ky/pixels.h"

namespace ky {

// What a modulus is scaled by.
struct ModulusScale {
  double largest;    // what becomes 255
  bool logarithmic;  // ln(1 + |z|) instead of |z|
  float factor;      // 255 over either; not a number where single precision would not do
};

// The levels that numbers become, in double precision. Row kernels compute in single precision, and
// ask for these where a result is too close to the middle between two levels: so levels are those
// of double precision on every path.
KyBW8 ModulusLevel(KyComplex64 z) noexcept;
KyBW8 ArgumentLevel(KyComplex64 z) noexcept;
KyBW8 ScaledModulusLevel(KyComplex64 z, const ModulusScale& scale) noexcept;

struct ComplexKernels {
  MapKernel<KyBW8, KyComplex64> modulus, argument, real;
  MapKernel<KyBW8, KyComplex64, ModulusScale> scaledModulus, logarithmicModulus;
  MapKernel<KyComplex64, KyComplex64, KyComplex64> multiply, multiplyConjugate;
  // The largest |z|^2, in double precision, of those that are numbers; 0 if there are none.
  ReduceKernel<double, KyComplex64> largest;
};

// The kernels of the instruction set that this call may use.
const ComplexKernels& ChooseComplexKernels() noexcept;

}  // namespace ky
