// The row kernels of two images: noise, regression, sharpness.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ky/pixels.h"

namespace ky {

// The sums of the squares of a reference and of the differences from it, which are in 1/256 levels
// where the reference is. Rows of up to 2^31 elements fit.
struct Energies {
  std::uint64_t reference, error;

  Energies& operator+=(const Energies& more) noexcept {
    reference += more.reference;
    error += more.error;
    return *this;
  }
};
// Sums of levels and of their products.
struct PairSums {
  std::uint64_t a, b, aa, bb, ab;

  PairSums& operator+=(const PairSums& more) noexcept {
    a += more.a;
    b += more.b;
    aa += more.aa;
    bb += more.bb;
    ab += more.ab;
    return *this;
  }
};

template <class Result, class A, class B>
using PairKernel = Result (*)(const A* a, const B* b, std::size_t n);

struct QualityKernels {
  PairKernel<std::uint64_t, KyBW8, KyBW8> error8;  // the energy of the difference alone
  PairKernel<std::uint64_t, KyBW16, KyBW16> error16;
  PairKernel<std::uint64_t, KyBW8, KyBW16> error8From16;
  PairKernel<Energies, KyBW8, KyBW8> energies8;
  PairKernel<Energies, KyBW16, KyBW16> energies16;
  PairKernel<Energies, KyBW8, KyBW16> energies8From16;
  PairKernel<PairSums, KyBW8, KyBW8> pairSums;
  // The squares of the differences of n pixels from their right and lower neighbours.
  PairKernel<std::uint64_t, KyBW8, KyBW8> sharpness;  // (row, row below)
};

// The kernels of the instruction set that this call may use.
const QualityKernels& ChooseQualityKernels() noexcept;

}  // namespace ky
