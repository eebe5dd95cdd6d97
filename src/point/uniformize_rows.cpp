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

// floor(n / m + 1/2) of integers is floor((n + floor(m / 2)) / m). It is estimated in single
// precision and corrected by the remainder. Quotients are limited to +-256, where a reciprocal to
// 1.5 * 2^-12 is off by less than 0.095, and rounded to a multiple of 1/16. With 11/16 instead of
// the 1/2, what is then truncated is the quotient or one more.
constexpr float kInSixteenths = 1.5f * (1 << 19) + 11 / 16.0f;
template <class DF, class VF>
HWY_INLINE VF EstimateQuotient(DF df, VF n, VF m) {
  const VF quotient = hn::Mul(n, RoughReciprocal(m));
  const VF limited = hn::Max(hn::Min(quotient, hn::Set(df, 256)), hn::Set(df, -256));
  return hn::Add(limited, hn::Set(df, kInSixteenths));
}
// Where the estimate was limited, the remainder tells nothing, and the quotient is beyond 255 or
// -255 whether it is corrected or not.
template <class D16, class V>
HWY_INLINE V CorrectQuotient(D16 d16, V estimate, V n, V m) {
  const hn::RebindToSigned<D16> signed16;
  const V quotient = hn::BitCast(d16, hn::ShiftRight<4>(hn::BitCast(signed16, estimate)));
  const V dividend = hn::Add(n, hn::ShiftRight<1>(m));
  return hn::Add(quotient, Borrow(d16, dividend, hn::Mul(quotient, m)));
}

// a / l for integers a and l of 1 to 255, one step of Newton's method later: too large by 2^-18 of
// it, and exact to 2^-21 otherwise. A quotient below 256 that is no integer misses the next one by
// 1/255 or more, so that its integer part is right.
template <class DF, class VF>
HWY_INLINE VF QuotientBelow256(DF df, VF a, VF l) {
  const VF estimate = RoughReciprocal(l);
  const VF factor = hn::Sub(hn::Set(df, 2 + 1.0f / (1 << 18)), hn::Mul(l, estimate));
  return hn::Mul(a, hn::Mul(estimate, factor));
}
struct ByLight {
  using Lane = uint8_t;
  // The dividend fits 16 bits.
  template <class D16, class V>
  static HWY_INLINE V Dividend(D16, V source, V light, V level) {
    return hn::Add(hn::Mul(source, level), hn::ShiftRight<1>(light));
  }
#if HWY_TARGET == HWY_SCALAR
  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V light, V level) const {
    const hn::Rebind<int32_t, D> d32;
    const hn::Rebind<float, D> df;
    const auto wide = [&](V v) HWY_ATTR { return hn::PromoteTo(d32, v); };
    const auto divisor = wide(hn::Max(light, hn::Set(d, 1)));
    const auto dividend = Dividend(d32, wide(source), divisor, wide(level));
    const auto quotient =
        QuotientBelow256(df, hn::ConvertTo(df, dividend), hn::ConvertTo(df, divisor));
    return hn::DemoteTo(d, TruncateFitting(df, quotient));
  }
#else
  // Lanes are widened within blocks, and go back to where they were. Every other quotient is a real
  // division, as the divider would be idle otherwise; the integer part is the same.
  template <class D16, class V>
  static HWY_INLINE auto Quotients(D16 d16, V dividend, V divisor) {
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
  HWY_INLINE V operator()(D d, V source, V light, V level) const {
    const hn::Repartition<uint16_t, D> d16;
    const V zero = hn::Zero(d), divisor = hn::Max(light, hn::Set(d, 1));
    const auto lower = [&](V v)
                           HWY_ATTR { return hn::BitCast(d16, hn::InterleaveLower(d, v, zero)); };
    const auto upper = [&](V v)
                           HWY_ATTR { return hn::BitCast(d16, hn::InterleaveUpper(d, v, zero)); };
    const auto lowerDivisor = lower(divisor), upperDivisor = upper(divisor);
    return NarrowBlocks(
        d, Quotients(d16, Dividend(d16, lower(source), lowerDivisor, lower(level)), lowerDivisor),
        Quotients(d16, Dividend(d16, upper(source), upperDivisor, upper(level)), upperDivisor));
  }
#endif
};

struct ByBoth {
  using Lane = uint8_t;
  static constexpr int kBias = 256;  // keeps differences above 0 on their way to floats
  struct Estimate {
    template <class DF, class VF>
    HWY_INLINE VF operator()(DF df, VF above, VF gain, VF range) const {
      const VF bias = hn::Set(df, kBias);
      return EstimateQuotient(df, hn::Mul(hn::Sub(above, bias), hn::Sub(gain, bias)), range);
    }
  };
  struct Wide {
    template <class D16, class V>
    HWY_INLINE V operator()(D16 d16, V source, V level, V dark, V darkLevel, V range) const {
      const hn::RebindToSigned<D16> signed16;
      const V bias = hn::Set(d16, kBias);
      const V above = hn::Sub(source, dark), gain = hn::Sub(level, darkLevel);
      const V estimate = InFloat(d16, Estimate(), hn::Add(above, bias), hn::Add(gain, bias), range);
      const V quotient = CorrectQuotient(d16, estimate, hn::Mul(above, gain), range);
      const auto sum = hn::BitCast(signed16, hn::Add(darkLevel, quotient));
      const auto limited = hn::Max(hn::Min(sum, hn::Set(signed16, 255)), hn::Zero(signed16));
      return hn::BitCast(d16, limited);
    }
  };
  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V light, V level, V dark, V darkLevel) const {
    const V range = hn::SaturatedSub(light, dark);
    const V corrected =
        OnWide(d, Wide(), source, level, dark, darkLevel, hn::Max(range, hn::Set(d, 1)));
    return hn::IfThenElse(hn::Eq(range, hn::Zero(d)), darkLevel, corrected);
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
