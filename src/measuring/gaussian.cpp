#include "measuring/gaussian.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/elementary.h"

namespace ky {
namespace {

double WeightAt(double sigma, std::ptrdiff_t distance) noexcept {
  if (distance == 0) return 1;
  const double ratio = static_cast<double>(distance) / sigma;
  return ky::Exp(-0.5 * ratio * ratio);
}

// The sum of the weights from `first` to `last` away.
double WeightBetween(double sigma, std::ptrdiff_t first, double last) noexcept {
  constexpr double kMostTerms = 1 << 20;
  if (last <= kMostTerms) {
    double sum = 0;
    for (std::ptrdiff_t k = first; static_cast<double>(k) <= last; ++k) sum += WeightAt(sigma, k);
    return sum;
  }
  // Of so wide a Gaussian the integral does not differ.
  const auto below = [&](double x) { return std::erf(x / (sigma * std::numbers::sqrt2)); };
  return sigma * std::sqrt(std::numbers::pi / 2) *
         (below(last + 0.5) - below(static_cast<double>(first) - 0.5));
}

}  // namespace

// Weights further away than the length of the profile all meet its first or its last sample.
bool GaussianSmoothing::Open(double sigma, std::ptrdiff_t n) noexcept {
  n_ = n;
  const double radius = std::ceil(3 * sigma),
               longest = static_cast<double>(std::max<std::ptrdiff_t>(n - 1, 0));
  reach_ = static_cast<std::ptrdiff_t>(std::min(radius, longest));
  if (!weights_.Allocate(reach_ + 1) || !padded_.Allocate(n + 2 * reach_)) return false;
  double sum = 0;
  for (std::ptrdiff_t k = 0; k <= reach_; ++k) {
    weights_[k] = WeightAt(sigma, k);
    sum += k == 0 ? 1 : 2 * weights_[k];
  }
  tail_ = radius > longest ? WeightBetween(sigma, reach_ + 1, radius) : 0;
  sum += 2 * tail_;
  for (std::ptrdiff_t k = 0; k <= reach_; ++k) weights_[k] /= sum;
  tail_ /= sum;
  return true;
}

void GaussianSmoothing::Run(double* out) noexcept {
  if (n_ == 0) return;
  double* const samples = Samples();
  std::fill(padded_.get(), samples, samples[0]);
  std::fill_n(samples + n_, reach_, samples[n_ - 1]);
  const double far = tail_ > 0 ? tail_ * (samples[0] + samples[n_ - 1]) : 0;
  for (std::ptrdiff_t i = 0; i < n_; ++i) out[i] = far + weights_[0] * samples[i];
  for (std::ptrdiff_t k = 1; k <= reach_; ++k) {
    const double weight = weights_[k];
    for (std::ptrdiff_t i = 0; i < n_; ++i) out[i] += weight * (samples[i - k] + samples[i + k]);
  }
}

}  // namespace ky
