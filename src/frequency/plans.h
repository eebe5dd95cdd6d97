// Fourier transforms of one row of complex numbers, by FFTW.
#pragma once

#include <cstddef>

#include "ky/pixels.h"

namespace ky {

// A transform of n numbers from one row of scratch to another. Plans are kept for the lengths that
// were used last, and shared by all threads. As each is made for rows at 64-byte boundaries, none
// depends on where an image lies in memory, and neither do results.
class FourierPlan {
 public:
  FourierPlan() = default;
  FourierPlan(const FourierPlan&) = delete;
  FourierPlan& operator=(const FourierPlan&) = delete;
  ~FourierPlan();

  // False when there is no memory.
  bool Open(std::ptrdiff_t n, bool inverse) noexcept;
  // Rows at 64-byte boundaries, apart from each other. `in` is spoilt: plans that may do so are a
  // third faster for lengths such as 1000. The inverse is not scaled.
  void Run(KyComplex64* in, KyComplex64* out) const noexcept;

 private:
  std::ptrdiff_t n_ = 0;
  void* plan_ = nullptr;  // FFTW's; null for one number, which is its own transform
};

}  // namespace ky
