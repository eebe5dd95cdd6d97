#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/float_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/float_rows.h"

#include "foundation/dispatch.h"
#include "foundation/rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using DF = hn::ScalableTag<float>;
using DI = hn::RebindToSigned<DF>;
using VF = hn::Vec<DF>;
using VI = hn::Vec<DI>;

void Convert(float* out, size_t n, const KyBW8* in) {
  const DF d;
  const DI d32;
  const size_t lanes = hn::Lanes(d);
  size_t x = 0;
  for (; x + lanes <= n; x += lanes)
    hn::StoreU(hn::ConvertTo(d, hn::PromoteTo(d32, hn::LoadU(hn::Rebind<KyBW8, DF>(), in + x))), d,
               out + x);
  for (; x < n; ++x) out[x] = static_cast<float>(in[x]);
}

// The sum, truncated; what does not fit is limited, what is not a number is 0.
HWY_INLINE VI Truncate(VF sum) {
  const DF d;
  const VF limit = hn::Set(d, 2147483520.0f);  // the last single below 2^31
  const VF number = hn::IfThenElseZero(hn::Eq(sum, sum), sum);
  return hn::ConvertTo(DI(), hn::Min(hn::Max(number, hn::Neg(limit)), limit));
}

template <Rectifier kRectifier>
HWY_INLINE VI Rectify(VI r) {
  const VI zero = hn::Zero(DI());
  if (kRectifier == kNegative) return hn::Max(hn::Neg(r), zero);
  if (kRectifier == kPositive) return hn::Max(r, zero);
  if (kRectifier == kMagnitude) return hn::Max(r, hn::Neg(r));
  return r;
}

// One tap after the other, as the order of the sum is part of the result; vectors go across pixels
// alone.
template <Rectifier kRectifier>
void Weigh(const FloatKernel& kernel, KyBW8* out, ptrdiff_t n, const float* const* rows) {
  constexpr int kVectors = 4;
  const DF d;
  const DI d32;
  const hn::Rebind<KyBW8, DF> d8;
  const ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::Lanes(d));
  for (ptrdiff_t x = 0; x < n; x += kVectors * lanes) {
    VF sums[kVectors] = {hn::Zero(d), hn::Zero(d), hn::Zero(d), hn::Zero(d)};
    const float* coefficient = kernel.coefficients;
    for (ptrdiff_t j = 0; j < kernel.sizeY; ++j) {
      const float* const row = rows[j] + x;
      for (ptrdiff_t i = 0; i < kernel.sizeX; ++i) {
        const VF c = hn::Set(d, *coefficient++);
        for (int v = 0; v < kVectors; ++v)
          sums[v] = hn::Add(sums[v], hn::Mul(c, hn::LoadU(d, row + i + v * lanes)));
      }
    }
    KyBW8 levels[kVectors * hn::MaxLanes(d)];
    for (int v = 0; v < kVectors; ++v) {
      const VI r = Rectify<kRectifier>(Truncate(sums[v]));
      const VI limited =
          hn::Min(hn::Max(r, hn::Set(d32, kernel.least)), hn::Set(d32, kernel.greatest));
      hn::StoreU(hn::DemoteTo(d8, hn::Add(limited, hn::Set(d32, kernel.offset))), d8,
                 levels + v * lanes);
    }
    std::memcpy(out + x, levels, static_cast<size_t>(HWY_MIN(n - x, kVectors * lanes)));
  }
}

constexpr FloatRowKernels kKernels = {
    &Convert, {&Weigh<kLeave>, &Weigh<kNegative>, &Weigh<kPositive>, &Weigh<kMagnitude>}};

}  // namespace

const FloatRowKernels* TableOfFloatRowKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfFloatRowKernels);
const FloatRowKernels& ChooseFloatRowKernels() noexcept {
  return *KY_DISPATCH(TableOfFloatRowKernels)();
}
}  // namespace ky
#endif
