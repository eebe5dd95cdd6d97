#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "point/uniformize_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "point/uniformize_rows.h"

#include "foundation/dispatch.h"
#include "foundation/kernels/division-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/widen-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// a / l for integers a and l of 1 to 255, one step of Newton's method later: too large by 2^-18 of
// it, and exact to 2^-21 otherwise. A quotient below 256 that is no integer misses the next one by
// 1/255 or more, so that its integer part is right.
template <class DF, class VF>
HWY_INLINE VF QuotientBelow256(DF df, VF a, VF l) {
  const VF estimate = RoughReciprocal(l);
  const VF factor = hn::Sub(hn::Set(df, 2 + 1.0f / (1 << 18)), hn::Mul(l, estimate));
  return hn::Mul(a, hn::Mul(estimate, factor));
}

// floor((a * b + more) / divisor), limited to 255, of bytes. The dividend fits 16 bits.
#if HWY_TARGET == HWY_SCALAR
template <class D, class V>
HWY_INLINE V QuotientOf(D d, V a, V b, V more, V divisor) {
  const hn::Rebind<int32_t, D> d32;
  const hn::Rebind<float, D> df;
  const auto wide = [&](V v) HWY_ATTR { return hn::PromoteTo(d32, v); };
  const auto dividend = hn::Add(hn::Mul(wide(a), wide(b)), wide(more));
  const auto quotient =
      QuotientBelow256(df, hn::ConvertTo(df, dividend), hn::ConvertTo(df, wide(divisor)));
  return hn::DemoteTo(d, TruncateFitting(df, quotient));
}
#else
// Lanes are widened within blocks, and go back to where they were. Every other quotient is a real
// division, as the divider would be idle otherwise; the integer part is the same.
template <class D16, class V>
HWY_INLINE auto WideQuotients(D16 d16, V dividend, V divisor) {
  const hn::Repartition<int32_t, D16> d32;
  const hn::Repartition<int16_t, D16> signed16;
  const hn::Repartition<float, D16> df;
  const V zero = hn::Zero(d16);
  const auto toFloat = [&](V v) HWY_ATTR { return hn::ConvertTo(df, hn::BitCast(d32, v)); };
  const auto lower = QuotientBelow256(df, toFloat(hn::InterleaveLower(d16, dividend, zero)),
                                      toFloat(hn::InterleaveLower(d16, divisor, zero)));
  const auto upper = hn::Div(toFloat(hn::InterleaveUpper(d16, dividend, zero)),
                             toFloat(hn::InterleaveUpper(d16, divisor, zero)));
  return hn::ReorderDemote2To(signed16, TruncateFitting(df, lower), TruncateFitting(df, upper));
}
template <class D, class V>
HWY_INLINE V QuotientOf(D d, V a, V b, V more, V divisor) {
  const hn::Repartition<uint16_t, D> d16;
  const V zero = hn::Zero(d);
  const auto lower = [&](V v)
                         HWY_ATTR { return hn::BitCast(d16, hn::InterleaveLower(d, v, zero)); };
  const auto upper = [&](V v)
                         HWY_ATTR { return hn::BitCast(d16, hn::InterleaveUpper(d, v, zero)); };
  return NarrowBlocks(
      d, WideQuotients(d16, hn::Add(hn::Mul(lower(a), lower(b)), lower(more)), lower(divisor)),
      WideQuotients(d16, hn::Add(hn::Mul(upper(a), upper(b)), upper(more)), upper(divisor)));
}
#endif

struct ByLight {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V light, V level) const {
    return QuotientOf(d, source, level, hn::ShiftRight<1>(light), hn::Max(light, hn::Set(d, 1)));
  }
};

// With the size n of the product and the range m, round(n / m) is floor((n + floor(m / 2)) / m),
// and round(-n / m) is -floor((n + floor((m - 1) / 2)) / m).
struct ByBoth {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V light, V level, V dark, V darkLevel) const {
    const V zero = hn::Zero(d);
    const V range = hn::SaturatedSub(light, dark), divisor = hn::Max(range, hn::Set(d, 1));
    const V below = hn::SaturatedSub(dark, source), loss = hn::SaturatedSub(darkLevel, level);
    const V isNegative =
        hn::Xor(hn::VecFromMask(d, hn::Eq(below, zero)), hn::VecFromMask(d, hn::Eq(loss, zero)));
    const V quotient = QuotientOf(d, hn::Or(hn::SaturatedSub(source, dark), below),
                                  hn::Or(hn::SaturatedSub(level, darkLevel), loss),
                                  hn::ShiftRight<1>(hn::Add(divisor, isNegative)), divisor);
    const V corrected = hn::IfVecThenElse(isNegative, hn::SaturatedSub(darkLevel, quotient),
                                          hn::SaturatedAdd(darkLevel, quotient));
    return hn::IfThenElse(hn::Eq(range, zero), darkLevel, corrected);
  }
};

template <class Op, class... In>
void Map(KyBW8* out, size_t n, const In*... in) {
  MapSpan(Op(), out, n, in...);
}
constexpr UniformizeKernels kKernels = {&Map<ByLight>, &Map<ByBoth>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(UniformizeKernels)
