// Edges of profiles.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "ky/vector_transitions.h"

namespace ky {

// Position and signed strength, in samples and levels a sample.
struct FoundEdge {
  double position, strength;
};

// The slope of a profile, and its extremes.
template <class T>
class Slope {
 public:
  // The noise is by how much slopes that are the same may differ.
  Slope(const T* profile, std::ptrdiff_t n, double noise = 0) noexcept
      : profile_(profile), n_(n), noise_(noise) {
    for (std::ptrdiff_t i = 1; i < n - 1; ++i) largest_ = std::max(largest_, std::abs(At(i)));
  }

  // Values that differ by no more count as equal.
  double Tolerance() const noexcept { return std::max(1e-6 * largest_, noise_); }

  // Gives the edges of the polarity that are at least so strong to `visit`, in order.
  template <class Visit>
  void FindEdges(TRANS_SCAN_EDGE polarity, double minStrength, Visit&& visit) const noexcept {
    const double tolerance = Tolerance();
    // The extremes since the slope last turned by more than the tolerance. A maximum is known to
    // be one when the slope has fallen below it by more than that, and so are minima.
    bool rises = false, falls = false;
    double high = 0, low = 0;
    std::ptrdiff_t highest = 0, lowest = 0;
    const auto report = [&](std::ptrdiff_t at, std::ptrdiff_t end, TRANS_SCAN_EDGE kind) {
      const double sign = kind == TRANS_SCAN_RISING ? 1 : -1, extreme = sign * At(at);
      if ((polarity & kind) != 0 && extreme > 0 && extreme >= minStrength)
        visit(EdgeAround(at, end, sign, tolerance));
    };
    for (std::ptrdiff_t i = 1; i < n_; ++i) {
      const double v = At(i);
      if (v > high) high = v, highest = i;
      if (v < low) low = v, lowest = i;
      if (!falls && v < high - tolerance) {
        if (rises) report(highest, i, TRANS_SCAN_RISING);
        rises = false, falls = true;
        low = v, lowest = i;
      } else if (!rises && v > low + tolerance) {
        if (falls) report(lowest, i, TRANS_SCAN_FALLING);
        rises = true, falls = false;
        high = v, highest = i;
      }
    }
  }

 private:
  double At(std::ptrdiff_t i) const noexcept {
    const bool between = i > 0 && i < n_ - 1;
    return between ? (static_cast<double>(profile_[i + 1]) - profile_[i - 1]) / 2 : 0;
  }

  // The edge of the extreme `at`, whose run ends before `end`.
  FoundEdge EdgeAround(std::ptrdiff_t at, std::ptrdiff_t end, double sign,
                       double tolerance) const noexcept {
    std::ptrdiff_t first = at;
    const double least = sign * At(at) - tolerance;
    while (first > 1 && sign * At(first - 1) >= least) --first;
    if (end - first > 2) return {static_cast<double>(first + end - 1) / 2, At(at)};
    const double left = At(first - 1), middle = At(first), right = At(first + 1);
    // The extreme of the parabola through the three values. Where they are nearly equal, it may lie
    // anywhere and means nothing.
    const double bend = sign * (left - 2 * middle + right);
    const double shift = sign * (left - right) / (2 * bend);
    if (!(bend < 0) || !(std::abs(shift) <= 1))
      return {static_cast<double>(first + end - 1) / 2, At(at)};
    return {static_cast<double>(first) + shift, middle - (left - right) * shift / 4};
  }

  const T* profile_;
  std::ptrdiff_t n_;
  double noise_, largest_ = 0;
};

}  // namespace ky
