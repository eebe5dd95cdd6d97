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

// The sum, truncated. What does not fit is limited, what is not a number is 0, unless it is known
// that all sums fit.
template <bool kFits>
HWY_INLINE VI Truncate(VF sum) {
  const DI d32;
  if (kFits) return hn::ConvertTo(d32, sum);
  const DF d;
  const VF limit = hn::Set(d, 2147483520.0f);  // the last single below 2^31
  const VF number = hn::IfThenElseZero(hn::Eq(sum, sum), sum);
  return hn::ConvertTo(d32, hn::Min(hn::Max(number, hn::Neg(limit)), limit));
}

template <Rectifier kRectifier>
HWY_INLINE VI Rectify(VI r) {
  const VI zero = hn::Zero(DI());
  if (kRectifier == kNegative) return hn::Max(hn::Neg(r), zero);
  if (kRectifier == kPositive) return hn::Max(r, zero);
  if (kRectifier == kMagnitude) return hn::Max(r, hn::Neg(r));
  return r;
}

// Some vectors of results at a time. One tap comes after the other, as the order of the sum is part
// of the result; vectors go across pixels alone. kSize is the number of rows and columns of the
// kernel, or 0 for any.
template <Rectifier kRectifier, bool kFits, int kSize>
class Block {
 public:
  static constexpr int kVectors = 4;
  static constexpr int kMostPlaces = kVectors * static_cast<int>(hn::MaxLanes(DF()));

  HWY_INLINE static void Weigh(const FloatKernel& kernel, KyBW8* out, ptrdiff_t x,
                               const float* const* rows) {
    const DF d;
    const DI d32;
    const hn::Rebind<KyBW8, DF> d8;
    constexpr ptrdiff_t kLanes = kMostPlaces / kVectors;
    const ptrdiff_t sizeX = kSize != 0 ? kSize : kernel.sizeX;
    const ptrdiff_t sizeY = kSize != 0 ? kSize : kernel.sizeY;
    VF sums[kVectors] = {hn::Zero(d), hn::Zero(d), hn::Zero(d), hn::Zero(d)};
    const float* coefficient = kernel.coefficients;
    for (ptrdiff_t j = 0; j < sizeY; ++j) {
      const float* const row = rows[j] + x;
      for (ptrdiff_t i = 0; i < sizeX; ++i) {
        const VF c = hn::Set(d, *coefficient++);
        for (int v = 0; v < kVectors; ++v)
          sums[v] = hn::Add(sums[v], hn::Mul(c, hn::LoadU(d, row + i + v * kLanes)));
      }
    }
    for (int v = 0; v < kVectors; ++v) {
      const VI r = Rectify<kRectifier>(Truncate<kFits>(sums[v]));
      const VI limited =
          hn::Min(hn::Max(r, hn::Set(d32, kernel.least)), hn::Set(d32, kernel.greatest));
      hn::StoreU(hn::DemoteTo(d8, hn::Add(limited, hn::Set(d32, kernel.offset))), d8,
                 out + v * kLanes);
    }
  }
};

template <class B>
void WeighRow(const FloatKernel& kernel, KyBW8* out, ptrdiff_t n, const float* const* rows) {
  ptrdiff_t x = 0;
  for (; x + B::kMostPlaces <= n; x += B::kMostPlaces) B::Weigh(kernel, out + x, x, rows);
  if (x == n) return;
  KyBW8 last[B::kMostPlaces];
  B::Weigh(kernel, last, x, rows);
  std::memcpy(out + x, last, static_cast<size_t>(n - x));
}

template <Rectifier kRectifier, bool kFits>
void Weigh(const FloatKernel& kernel, KyBW8* out, ptrdiff_t n, const float* const* rows) {
  if (kernel.sizeX == 3 && kernel.sizeY == 3)
    WeighRow<Block<kRectifier, kFits, 3>>(kernel, out, n, rows);
  else
    WeighRow<Block<kRectifier, kFits, 0>>(kernel, out, n, rows);
}

constexpr FloatRowKernels kKernels = {&Convert,
                                      {{&Weigh<kLeave, false>, &Weigh<kLeave, true>},
                                       {&Weigh<kNegative, false>, &Weigh<kNegative, true>},
                                       {&Weigh<kPositive, false>, &Weigh<kPositive, true>},
                                       {&Weigh<kMagnitude, false>, &Weigh<kMagnitude, true>}}};

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
