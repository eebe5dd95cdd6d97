#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/frame.h"
#include "foundation/kernels/kernel_view.h"
#include "foundation/kernels/weights.h"
#include "foundation/scratch.h"
#include "ky/vector_arithmetic.h"
#include "vectors/elements.h"

namespace {

using ky::KernelView;
using ky::NumberOr0;
using std::ptrdiff_t;

// The element that a sum becomes.
template <class T>
T ElementOf(double sum, const KernelView& kernel) noexcept {
  using Limits = std::numeric_limits<T>;
  if (std::isnan(sum)) sum = 0;
  switch (kernel.rectifier) {
    case 1: sum = std::max(-sum, 0.0); break;
    case 2: sum = std::max(sum, 0.0); break;
    case 3: sum = std::fabs(sum); break;
    default: break;
  }
  const double level = sum + kernel.offset, whole = std::floor(level);
  const double rounded = level - whole >= 0.5 ? whole + 1 : whole;
  return static_cast<T>(
      std::clamp(rounded, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}

// Writes n results, `outStep` elements apart, from n elements that lie one after the other.
template <class T>
void Convolve(T* out, ptrdiff_t outStep, const T* in, ptrdiff_t n, const double* coefficients,
              ptrdiff_t count, const KernelView& kernel) noexcept {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const ptrdiff_t first = i - count / 2;
    double sum = 0;
    if (first >= 0 && first + count <= n) {
      for (ptrdiff_t k = 0; k < count; ++k) sum += coefficients[k] * in[first + k];
    } else {
      for (ptrdiff_t k = 0; k < count; ++k)
        sum += coefficients[k] * in[std::clamp<ptrdiff_t>(first + k, 0, n - 1)];
    }
    out[i * outStep] = ElementOf<T>(sum, kernel);
  }
}

}  // namespace

KY_ERRORS ImgConvolVect(const KyVector* source, const KyKernel* kernel, KyVector* result) noexcept {
  return ky::Call("ImgConvolVect", [&] {
    if (source == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;
    if (const KY_ERRORS error = ky::CheckElements(*source, ky::kUnsigned | ky::kSigned))
      return error;
    if (kernel == nullptr) return KY_ERROR_KERNEL_SIZE;
    const KernelView view(*kernel);
    if (view.data == nullptr || view.sizeX <= 0 || view.sizeY <= 0) return KY_ERROR_KERNEL_SIZE;
    if (std::min(view.sizeX, view.sizeY) != 1) return KY_ERROR_KERNEL_1701;
    if (result == nullptr) return KY_ERROR_BAD_VECTOR_TYPE;

    const ptrdiff_t count = std::max(view.sizeX, view.sizeY);
    ky::Scratch<double> coefficients;
    if (!coefficients.Allocate(count)) return KY_ERROR_NOT_ENOUGH_MEMORY;
    const float gain = ky::EffectiveGainOf(view);
    for (ptrdiff_t k = 0; k < count; ++k)
      coefficients[k] = NumberOr0(NumberOr0(view.data[k]) * gain);

    return ky::ForElements(*source, [&](auto type) {
      using T = decltype(type);
      const int groups = source->GetNbGroup();
      const ptrdiff_t length = source->GetGroupLength();
      ky::Scratch<T> elements;
      if (!elements.Allocate(groups)) return KY_ERROR_NOT_ENOUGH_MEMORY;
      const T* const first = static_cast<const T*>(source->GetDataPtr());
      for (ptrdiff_t i = 0; i < groups; ++i) elements[i] = first[i * length];
      if (result != source &&
          result->SetStructure(source->GetDataSize(), groups, 1, source->GetDataType()) != KY_OK) {
        KyOk();  // the function's own name stands in the trace, not that of this step
        return KY_ERROR_NOT_ENOUGH_MEMORY;
      }
      Convolve(static_cast<T*>(result->GetDataPtr()), result->GetGroupLength(), elements.get(),
               groups, coefficients.get(), count, view);
      return result->SetNbGroup(groups);
    });
  });
}
