// Images of complex numbers.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "foundation/frame.h"
#include "foundation/map.h"
#include "foundation/reduce.h"
#include "frequency/complex_rows.h"
#include "ky/frequency.h"

namespace ky {
namespace {

// Not a number where a part is not.
double ModulusOf(KyComplex64 z) noexcept {
  const double re = z.re, im = z.im;
  return std::sqrt(re * re + im * im);
}

// Of a level of 0 and more: rounded and limited.
KyBW8 Rounded(double level) noexcept {
  return static_cast<KyBW8>(std::isnan(level) ? 0 : std::min(255.0, std::floor(level + 0.5)));
}

}  // namespace

KyBW8 ModulusLevel(KyComplex64 z) noexcept { return Rounded(ModulusOf(z)); }

KyBW8 ArgumentLevel(KyComplex64 z) noexcept {
  const double steps = std::atan2(double{z.im}, double{z.re}) * (128 / std::numbers::pi);
  if (std::isnan(steps) || (z.re == 0 && z.im == 0)) return 0;
  return static_cast<KyBW8>(static_cast<int>(std::floor(steps + 0.5)) & 255);
}

KyBW8 ScaledModulusLevel(KyComplex64 z, const ModulusScale& scale) noexcept {
  const double modulus = ModulusOf(z);
  if (std::isinf(scale.largest)) return std::isinf(modulus) ? 255 : 0;
  if (scale.largest == 0) return 0;
  if (scale.logarithmic) return Rounded(255 * std::log1p(modulus) / std::log1p(scale.largest));
  // Two roots, a quotient and a product may leave what is halfway between two levels below it by
  // three units in the last place.
  return Rounded(255 * modulus / scale.largest * (1 + 0x1p-50));
}

namespace {

// The scale that makes the largest of all moduli white.
ModulusScale ScaleOf(double largest, bool logarithmic) noexcept {
  // Squares of single precision neither overflow nor vanish beside the largest one.
  const bool fits = largest == 0 || (largest > 0x1p-50 && largest < 0x1p60);
  const double white = logarithmic ? std::log1p(largest) : largest;
  const float factor = !fits          ? std::numeric_limits<float>::quiet_NaN()
                       : largest == 0 ? 0.0f
                                      : static_cast<float>(255 / white);
  return {largest, logarithmic, factor};
}

}  // namespace
}  // namespace ky

KY_ERRORS ImgComplexModulus(const KyROI<KyComplex64>* source, KyROI<KyBW8>* destination) noexcept {
  return ky::CallOn("ImgComplexModulus", source, destination, [](const auto& in, const auto& out) {
    return ky::MapRows(ky::ChooseComplexKernels().modulus, out, ky::FromRows(in));
  });
}

KY_ERRORS ImgComplexRescaledModulus(const KyROI<KyComplex64>* source, KyROI<KyBW8>* destination,
                                    bool logarithmic) noexcept {
  return ky::CallOn(
      "ImgComplexRescaledModulus", source, destination, [&](const auto& in, const auto& out) {
        const ky::ComplexKernels& kernels = ky::ChooseComplexKernels();
        double largest = 0;
        ky::ReduceRows(kernels.largest, in,
                       [&](double ofRow, std::ptrdiff_t) { largest = std::max(largest, ofRow); });
        const ky::ModulusScale scale = ky::ScaleOf(std::sqrt(largest), logarithmic);
        return ky::MapRows(logarithmic ? kernels.logarithmicModulus : kernels.scaledModulus, out,
                           ky::FromRows(in), ky::FromParameters(scale));
      });
}

KY_ERRORS ImgComplexArgument(const KyROI<KyComplex64>* source, KyROI<KyBW8>* destination) noexcept {
  return ky::CallOn("ImgComplexArgument", source, destination, [](const auto& in, const auto& out) {
    return ky::MapRows(ky::ChooseComplexKernels().argument, out, ky::FromRows(in));
  });
}

KY_ERRORS ImgComplexReal(const KyROI<KyComplex64>* source, KyROI<KyBW8>* destination) noexcept {
  return ky::CallOn("ImgComplexReal", source, destination, [](const auto& in, const auto& out) {
    return ky::MapRows(ky::ChooseComplexKernels().real, out, ky::FromRows(in));
  });
}

KY_ERRORS ImgComplexMultiply(const KyROI<KyComplex64>* a, const KyROI<KyComplex64>* b,
                             KyROI<KyComplex64>* destination, bool conjugate) noexcept {
  return ky::CallOn("ImgComplexMultiply", a, b, destination,
                    [&](const auto& inA, const auto& inB, const auto& out) {
                      const ky::ComplexKernels& kernels = ky::ChooseComplexKernels();
                      return ky::MapRows(conjugate ? kernels.multiplyConjugate : kernels.multiply,
                                         out, ky::FromRows(inA), ky::FromRows(inB));
                    });
}
