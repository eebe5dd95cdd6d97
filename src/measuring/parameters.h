// The checks of numeric parameters.
#pragma once

#include <algorithm>
#include <cfloat>

#include "foundation/frame.h"
#include "ky/status.h"
#include "ky/vector_transitions.h"

namespace ky {

inline constexpr unsigned kMostSamples = 1 << 24, kMostCalipers = 1 << 20,
                          kMostHalfThickness = 1 << 15;
inline constexpr float kLongestHalf = 1 << 15, kLargestSigma = 1 << 15;

// Takes the parameters in the order of the declaration and keeps the error of the first one that
// is out of its range.
class Parameters {
 public:
  // Finite, and from `least` to `most`.
  Parameters& Real(const char* name, float value, float least = -FLT_MAX,
                   float most = FLT_MAX) noexcept {
    return Next(value >= least && value <= most, Numbered(), name);
  }
  Parameters& Count(const char* name, unsigned value, unsigned least, unsigned most) noexcept {
    return Next(value >= least && value <= most, Numbered(), name);
  }
  Parameters& Polarity(TRANS_SCAN_EDGE value) noexcept {
    return Next(value >= TRANS_SCAN_RISING && value <= TRANS_SCAN_BOTH,
                KY_ERROR_UNSUPPORTED_OPERATION, "polarity");
  }
  // For the body of a call: numbers are named to KyGetErrorMessage.
  KY_ERRORS Error() const noexcept { return name_ == nullptr ? error_ : OutOfRange(error_, name_); }

 private:
  // 1011 to 1016; the seventh parameter and later ones have 1016, too.
  KY_ERRORS Numbered() const noexcept {
    return static_cast<KY_ERRORS>(
        std::min(KY_ERROR_PARAMETER_1_OUT_OF_RANGE + count_, +KY_ERROR_PARAMETER_6_OUT_OF_RANGE));
  }
  Parameters& Next(bool good, KY_ERRORS error, const char* name = nullptr) noexcept {
    if (!good && error_ == KY_OK) {
      error_ = error;
      name_ = name;
    }
    ++count_;
    return *this;
  }

  KY_ERRORS error_ = KY_OK;
  const char* name_ = nullptr;
  int count_ = 0;  // of those taken
};

}  // namespace ky
