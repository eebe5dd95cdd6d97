// The divisions of 8-bit levels: a / b, 255 where b = 0; a mod b, 0 where b = 0; 256 a / b, 255
// where that is more or b = 0. Quotients are truncated. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_KERNELS_DIVISION_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_KERNELS_DIVISION_INL_H_
#undef KY_FOUNDATION_KERNELS_DIVISION_INL_H_
#else
#define KY_FOUNDATION_KERNELS_DIVISION_INL_H_
#endif

#include "foundation/lanes-inl.h"
#include "foundation/widen-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// 1 / v within 1.5 * 2^-12 of it; infinite for 0.
template <class VF>
HWY_INLINE VF RoughReciprocal(VF v) {
  const VF rough = hn::ApproximateReciprocal(v);
#if HWY_TARGET == HWY_NEON  // within 2^-8 only, so that one step of Newton's method follows
  return hn::Mul(rough, VF{vrecpsq_f32(rough.raw, v.raw)});
#else
  return rough;
#endif
}

// Rounded to the nearest, of numbers that 32-bit integers hold and that no halves are among.
template <class VF>
HWY_INLINE auto RoundFitting(VF v) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
  using VI = hn::Vec<hn::RebindToSigned<hn::DFromV<VF>>>;
#if HWY_TARGET < HWY_AVX2
  return VI{_mm512_cvtps_epi32(v.raw)};
#elif HWY_TARGET == HWY_AVX2
  return VI{_mm256_cvtps_epi32(v.raw)};
#else
  return VI{_mm_cvtps_epi32(v.raw)};
#endif
#else
  return hn::NearestInt(v);
#endif
}

// The difference of two bytes as a dividend.
template <class V>
struct Difference {
  V from, take;
};

// finish(df, i, a factor / b), limited to 0..255, for bytes b other than 0; a is bytes, or a
// Difference of bytes. `finish` makes integers of floats, whose relative error is below 2^-21. It
// gets vector i of the floats that bytes are widened to, in the order in which `FloatsOf` (of
// widen-inl.h) writes those of other bytes.
#if HWY_TARGET == HWY_SCALAR
template <class D>
HWY_INLINE auto DividendOf(D, hn::Vec<D> v) {
  return hn::PromoteTo(hn::Rebind<int32_t, D>(), v);
}
template <class D>
HWY_INLINE auto DividendOf(D d, const Difference<hn::Vec<D>>& v) {
  return hn::Sub(DividendOf(d, v.from), DividendOf(d, v.take));
}
template <class D, class A, class VF, class F>
HWY_INLINE hn::Vec<D> QuotientsOf(D d, const A& a, hn::Vec<D> b, VF factor, const F& finish) {
  const FloatsOfBytes<D> df;
  const auto ratio = hn::Div(factor, hn::ConvertTo(df, DividendOf(d, b)));
  return hn::DemoteTo(d, finish(df, 0, hn::Mul(hn::ConvertTo(df, DividendOf(d, a)), ratio)));
}
#else
template <bool kUpper, class D>
HWY_INLINE auto DividendOf(D d, hn::Vec<D> v) {
  return WordsOf<kUpper>(d, v);
}
template <bool kUpper, class D>
HWY_INLINE auto DividendOf(D d, const Difference<hn::Vec<D>>& v) {
  return AsSigned(hn::Sub(WordsOf<kUpper>(d, v.from), WordsOf<kUpper>(d, v.take)));
}
template <bool kUpper, class V16>
HWY_INLINE auto FloatsOfProduct(V16 a, V16 b) {
  if constexpr (hwy::IsSigned<hn::TFromV<V16>>())
    return FloatsOfWords<kUpper>(hn::Mul(a, b), hn::MulHigh(a, b));
  else
    return FloatsOfWords<kUpper>(hn::Mul(a, b), hn::Zero(hn::DFromV<V16>()));
}
// The product of two divisors serves the quotients of both: a / b is a c / (b c), and d / c is
// d b / (b c). So half as many divisions do, and the products fit 16 bits, or 17 with a sign.
template <class D, class A, class VF, class F>
HWY_INLINE hn::Vec<D> QuotientsOf(D d, const A& a, hn::Vec<D> b, VF factor, const F& finish) {
  const FloatsOfBytes<D> df;
  const auto lower = WordsOf<false>(d, b), upper = WordsOf<true>(d, b);
  const VF first = hn::Div(factor, FloatsOfProduct<false>(lower, upper));
  const VF second = hn::Div(factor, FloatsOfProduct<true>(lower, upper));
  const auto both = [&](auto dividend, auto other, size_t i) HWY_ATTR {
    const auto factors = hn::BitCast(hn::DFromV<decltype(dividend)>(), other);
    return hn::ReorderDemote2To(
        hn::Repartition<int16_t, D>(),
        finish(df, i, hn::Mul(FloatsOfProduct<false>(dividend, factors), first)),
        finish(df, i + 1, hn::Mul(FloatsOfProduct<true>(dividend, factors), second)));
  };
  return NarrowBlocks(d, both(DividendOf<false>(d, a), upper, 0),
                      both(DividendOf<true>(d, a), lower, 2));
}
#endif

// A factor of slightly more than 1 (by less than 2^-18, and more than 2^-20): quotients a / b of
// numbers below 2^16 whose integer part is wanted are whole, or miss the next whole number by 2^-16
// of them or more; rounded to the nearest, they are halves, or miss the next half by 2^-17 of them
// or more. So neither is wrong, and halves are rounded up.
inline constexpr float kJustAbove1 = 1 + 1.0f / (1 << 19);

// 2^15 / b - 13 in 16-bit lanes, for b of 1 to 255, within 1/2 + 2^3.6 / b. 0 for b = 0.
struct LessenedReciprocal {
  template <class DF, class VF>
  HWY_INLINE VF operator()(DF df, VF b) const {
    constexpr int kBits = 15, kLess = 13;
    constexpr float kShift = (1 << (23 - kBits)) - kLess / float{1 << kBits};
    return hn::Add(RoughReciprocal(b), hn::Set(df, kShift));
  }
};
// -1 where the difference a - b of 16-bit lanes, of a size below 2^15, is negative, else 0.
template <class D16, class V>
HWY_INLINE V Borrow(D16 d16, V a, V b) {
  const hn::RebindToSigned<D16> signed16;
  return hn::BitCast(d16, hn::BroadcastSignBit(hn::BitCast(signed16, hn::Sub(a, b))));
}

// Divisions estimate the quotient by a reciprocal, which need not be exact, and correct it by
// the remainder. Here the reciprocal is off by less than 26, the estimate before rounding by less
// than 255 * 26 / 2^15 < 1/4: rounded to the nearest, it is the quotient or one more.
template <class D16, class V>
HWY_INLINE V QuotientOrOneMore(D16 d16, V a, V b) {
  const hn::RebindToSigned<D16> signed16;
  const V reciprocal = InFloat(d16, LessenedReciprocal(), b);
  return hn::BitCast(
      d16, hn::MulFixedPoint15(hn::BitCast(signed16, a), hn::BitCast(signed16, reciprocal)));
}
struct WideDivide {
  template <class D16, class V>
  HWY_INLINE V operator()(D16 d16, V a, V b) const {
    const V quotient = QuotientOrOneMore(d16, a, b);
    return hn::Add(quotient, Borrow(d16, a, hn::Mul(quotient, b)));
  }
};

#if HWY_TARGET == HWY_AVX3_DL
// Here shuffles look reciprocals up, 64 at a time and exactly, by their low and their high bytes.
struct ReciprocalTable {
  alignas(64) uint8_t low[256], high[128];
};
// floor(65535 / b) + kMore for every b but 0, in whose place stands that of 128. From 129 on, the
// high byte is 1.
template <int kMore>
inline constexpr ReciprocalTable kReciprocals = [] {
  ReciprocalTable table{};
  for (int b = 1; b < 256; ++b) {
    const int reciprocal = 65535 / b + kMore, place = b == 128 ? 0 : b;
    table.low[place] = static_cast<uint8_t>(reciprocal);
    if (place < 128) table.high[place] = static_cast<uint8_t>(reciprocal >> 8);
  }
  return table;
}();

struct DivisionOfBytes {
  using Lane = uint8_t;
  using D = hn::ScalableTag<uint8_t>;
  using D16 = hn::ScalableTag<uint16_t>;
  using V = hn::Vec<D>;
  using V16 = hn::Vec<D16>;

  // Half of a table, looked up by the low seven bits of each lane.
  struct Half {
    explicit Half(const uint8_t* table)
        : first(hn::LoadU(D(), table)), second(hn::LoadU(D(), table + 64)) {}
    HWY_INLINE V At(V v) const { return V{_mm512_permutex2var_epi8(first.raw, v.raw, second.raw)}; }
    HWY_INLINE V AtWhere(hn::Mask<D> mask, V v) const {
      return V{_mm512_maskz_permutex2var_epi8(mask.raw, first.raw, v.raw, second.raw)};
    }
    V first, second;
  };

  // Low and high bytes as words: those of the even lanes, and those of the odd ones.
  static HWY_INLINE V16 EvenWords(V low, V high) {
    const V raised = hn::BitCast(D(), hn::ShiftLeft<8>(hn::BitCast(D16(), high)));
    return hn::BitCast(D16(), hn::OddEven(raised, low));
  }
  static HWY_INLINE V16 OddWords(V low, V high) {
    const V lowered = hn::BitCast(D(), hn::ShiftRight<8>(hn::BitCast(D16(), low)));
    return hn::BitCast(D16(), hn::OddEven(high, lowered));
  }
  // The low bytes of the first words as even lanes, the high bytes of the second as odd ones.
  static HWY_INLINE V Lanes(V16 evenLow, V16 oddHigh) {
    return hn::OddEven(hn::BitCast(D(), oddHigh), hn::BitCast(D(), evenLow));
  }
  static HWY_INLINE V16 Low(V v) { return hn::And(hn::BitCast(D16(), v), hn::Set(D16(), 0x00FF)); }
  static HWY_INLINE V16 High(V v) { return hn::And(hn::BitCast(D16(), v), hn::Set(D16(), 0xFF00)); }
};

// r = floor(65535 / b) is (2^16 - f) / b with an f of 1 to b. Truncated, (a + e) r / 2^16 is the
// quotient for e = 1 and e = 255/256, as e makes up for f. From b = 128 on it is 1 for a >= b.
struct Quotients : DivisionOfBytes {
  HWY_INLINE V operator()(V a, V b) const {
    const D d;
    const D16 d16;
    const auto isLower = hn::Lt(b, hn::Set(d, 128));
    const V rLow = low.AtWhere(isLower, b), rHigh = high.AtWhere(isLower, b);
    const V16 even = hn::MulHigh(hn::Add(Low(a), hn::Set(d16, 1)), EvenWords(rLow, rHigh));
    const V16 odd =
        hn::MulHigh(hn::Or(hn::BitCast(d16, a), hn::Set(d16, 255)), OddWords(rLow, rHigh));
    const V quotient = Lanes(even, odd);
    return hn::IfThenElse(hn::Lt(a, b), quotient, hn::Max(quotient, hn::Set(d, 1)));
  }
  Half low{kReciprocals<0>.low}, high{kReciprocals<0>.high};
};
struct Divide : DivisionOfBytes {
  HWY_INLINE V operator()(D d, V a, V b) const {
    return hn::IfThenElse(hn::Eq(b, hn::Zero(d)), hn::Set(d, 255), quotients(a, b));
  }
  Quotients quotients;
};
struct Modulo : DivisionOfBytes {
  HWY_INLINE V operator()(D d, V a, V b) const {
    const D16 d16;
    const V quotient = quotients(a, b);
    const V16 even = hn::Mul(hn::BitCast(d16, quotient), hn::BitCast(d16, b));
    const V16 odd = hn::Mul(High(quotient), hn::ShiftRight<8>(hn::BitCast(d16, b)));
    return hn::IfThenElseZero(hn::Ne(b, hn::Zero(d)), hn::Sub(a, Lanes(even, odd)));
  }
  Quotients quotients;
};
// Truncated, 256 a r / 2^16 with r = ceil(2^16 / b) is the quotient of a < b, or one more.
struct ScaledDivide : DivisionOfBytes {
  HWY_INLINE V operator()(D d, V a, V b) const {
    const D16 d16;
    const auto isUpper = hn::Gt(b, hn::Set(d, 128));
    const V rLow = hn::IfThenElse(isUpper, lowUpper.At(b), low.At(b));
    const V rHigh = hn::IfThenElse(isUpper, hn::Set(d, 1), high.At(b));
    const auto quotient = [&](V16 dividend, V16 divisor, V16 reciprocal) HWY_ATTR {
      const V16 estimate = hn::MulHigh(dividend, reciprocal);
      const auto isMore = hn::Gt(hn::Mul(estimate, divisor), dividend);
      return hn::IfThenElse(isMore, hn::Sub(estimate, hn::Set(d16, 1)), estimate);
    };
    const V16 even =
        quotient(hn::ShiftLeft<8>(hn::BitCast(d16, a)), Low(b), EvenWords(rLow, rHigh));
    const V16 odd =
        quotient(High(a), hn::ShiftRight<8>(hn::BitCast(d16, b)), OddWords(rLow, rHigh));
    const V joined = Lanes(even, hn::ShiftLeft<8>(odd));
    return hn::IfThenElse(hn::Lt(a, b), joined, hn::Set(d, 255));
  }
  Half low{kReciprocals<1>.low}, lowUpper{kReciprocals<1>.low + 128}, high{kReciprocals<1>.high};
};
#else
struct WideModulo {
  template <class D16, class V>
  HWY_INLINE V operator()(D16 d16, V a, V b) const {
    const V remainder = hn::Sub(a, hn::Mul(QuotientOrOneMore(d16, a, b), b));
    return hn::Min(remainder, hn::Add(remainder, b));
  }
};
// The integer part of a factor / b, limited to 255, which also stands for a division by 0.
template <int kFactor>
struct TruncatedQuotient {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    const V isZero = hn::VecFromMask(d, hn::Eq(b, hn::Zero(d)));
    const auto factor = hn::Set(FloatsOfBytes<D>(), kFactor * kJustAbove1);
    const auto truncate = [](auto df, size_t, auto quotient)
                              HWY_ATTR { return TruncateFitting(df, quotient); };
    return hn::Or(isZero, QuotientsOf(d, a, hn::Sub(b, isZero), factor, truncate));
  }
};
using Divide = TruncatedQuotient<1>;
using ScaledDivide = TruncatedQuotient<256>;
struct Modulo {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D d, V a, V b) const {
    const V zero = hn::VecFromMask(d, hn::Eq(b, hn::Zero(d)));
    return hn::AndNot(zero, OnWide(d, WideModulo(), a, b));
  }
};
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
