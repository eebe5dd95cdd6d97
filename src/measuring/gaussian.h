// Smoothing of profiles.
#pragma once

#include <cstddef>

#include "foundation/scratch.h"

namespace ky {

// A Gaussian for profiles of one length.
class GaussianSmoothing {
 public:
  // For n samples, with a sigma in samples. False when there is no memory.
  bool Open(double sigma, std::ptrdiff_t n) noexcept;

  // Where the samples to smooth are to be put.
  double* Samples() const noexcept { return padded_.get() + reach_; }
  // Smooths them to `out`.
  void Run(double* out) noexcept;

 private:
  std::ptrdiff_t n_ = 0, reach_ = 0;
  double tail_ = 0;          // the weight of all samples further away, on either side
  Scratch<double> weights_;  // of the samples 0 to reach_ away
  Scratch<double> padded_;   // the samples, with reach_ more on either side
};

}  // namespace ky
