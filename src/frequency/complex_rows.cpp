#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frequency/complex_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "frequency/complex_rows.h"

#include <hwy/contrib/math/math-inl.h>

#include <limits>

#include "foundation/dispatch.h"
#include "foundation/widen-inl.h"
#include "frequency/complex-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

template <class D>
using Integers = hn::Vec<hn::RebindToSigned<D>>;

// The levels of the lanes that are not `certain`, by the law of double precision.
template <class D, class V, class Law>
HWY_NOINLINE void ApplyLaw(D d, const Numbers<V>& z, const Law& law, Integers<D> certain,
                           Integers<D>& levels) {
  const hn::RebindToSigned<D> di;
  KyComplex64 numbers[hn::MaxLanes(d)];
  HWY_ALIGN int32_t results[hn::MaxLanes(d)], keep[hn::MaxLanes(d)];
  StoreLanes(z, numbers);
  hn::Store(levels, di, results);
  hn::Store(certain, di, keep);
  for (size_t i = 0; i < hn::Lanes(d); ++i)
    if (keep[i] == 0) results[i] = law(numbers[i]);
  levels = hn::Load(di, results);
}

// round(level), limited to 256, where `level` is exact to 2^-kExact and not negative. Where it is
// closer to the middle between two integers than that, or not a number, the law decides.
template <int kExact, class D, class V, class Law>
HWY_INLINE Integers<D> RoundLevels(D d, V level, const Numbers<V>& z, const Law& law) {
  constexpr float kDoubt = 1.0f / (1 << kExact);
  const V above = hn::Add(hn::Min(level, hn::Set(d, 256)), hn::Set(d, 0.5f));
  auto levels = TruncateFitting(d, above);
  const V rest = hn::Sub(above, hn::ConvertTo(d, levels));
  const auto certain = hn::And(hn::Eq(level, level), hn::And(hn::Gt(rest, hn::Set(d, kDoubt)),
                                                             hn::Lt(rest, hn::Set(d, 1 - kDoubt))));
  if (HWY_UNLIKELY(!hn::AllTrue(d, certain))) {
    // Copies, so that the vectors themselves need no place in memory.
    const Numbers<V> numbers = z;
    Integers<D> changed = levels;
    ApplyLaw(d, numbers, law, hn::BitCast(hn::RebindToSigned<D>(), hn::VecFromMask(d, certain)),
             changed);
    levels = changed;
  }
  return levels;
}
// What moduli and arguments are exact to: a few times the distance of floats below 256, 2^-16.
constexpr int kBits = 14;
// The same after a logarithm and a product.
constexpr int kBitsScaled = 12;

template <class V>
HWY_INLINE V SquareOf(const Numbers<V>& z) {
  return hn::Add(hn::Mul(z.re, z.re), hn::Mul(z.im, z.im));
}

struct Modulus {
  using Lane = float;
  template <class D, class V>
  HWY_INLINE Integers<D> operator()(D d, const Numbers<V>& z) const {
    return RoundLevels<kBits>(d, hn::Sqrt(SquareOf(z)), z, ModulusLevel);
  }
};

template <bool kLogarithmic>
struct ScaledModulus {
  using Lane = float;
  const ModulusScale& scale;
  template <class D, class V>
  HWY_INLINE Integers<D> operator()(D d, const Numbers<V>& z) const {
    V modulus = hn::Sqrt(SquareOf(z));
    if constexpr (kLogarithmic)
      modulus = hn::IfThenElse(hn::Eq(modulus, modulus), hn::Log1p(d, modulus), modulus);
    const ModulusScale& by = scale;
    return RoundLevels<kBitsScaled>(d, hn::Mul(modulus, hn::Set(d, scale.factor)), z,
                                    [&by](KyComplex64 one) { return ScaledModulusLevel(one, by); });
  }
};

// Of the ratio q of the smaller to the larger part, the angle of 0 to 32 steps is the polynomial
// q P(q^2) that meets 128 atan(q) / pi at seven Chebyshev nodes; it is off by less than 2^-15.
struct Argument {
  using Lane = float;
  template <class D, class V>
  HWY_INLINE Integers<D> operator()(D d, const Numbers<V>& z) const {
    constexpr float kTerms[] = {40.743633879186504f, -13.578102763292438f, 8.096597601299429f,
                                -5.479152739513994f, 3.386876389790998f,   -1.4814572297931998f,
                                0.31162197349251425f};
    const V zero = hn::Zero(d), width = hn::Abs(z.re), height = hn::Abs(z.im);
    // 0 is divided by the least number there is.
    const V divisor =
        hn::Max(hn::Max(width, height), hn::Set(d, std::numeric_limits<float>::denorm_min()));
    const V ratio = hn::Div(hn::Min(width, height), divisor);
    const V square = hn::Mul(ratio, ratio);
    V sum = hn::Set(d, kTerms[6]);
    for (int i = 5; i >= 0; --i) sum = hn::Add(hn::Mul(sum, square), hn::Set(d, kTerms[i]));
    const V octant = hn::Mul(sum, ratio);
    const V quadrant =
        hn::IfThenElse(hn::Gt(height, width), hn::Sub(hn::Set(d, 64), octant), octant);
    const V half = hn::IfThenElse(hn::Lt(z.re, zero), hn::Sub(hn::Set(d, 128), quadrant), quadrant);
    const V whole = hn::IfThenElse(hn::Lt(z.im, zero), hn::Sub(hn::Set(d, 256), half), half);
    // Not a number where a part is not, which may be lost in a maximum.
    const V level = hn::Add(whole, hn::Mul(hn::Add(z.re, z.im), zero));
    const auto levels = RoundLevels<kBits>(d, level, z, ArgumentLevel);
    return hn::And(levels, hn::Set(hn::RebindToSigned<D>(), 255));
  }
};

struct Real {
  using Lane = float;
  template <class D, class V>
  HWY_INLINE Integers<D> operator()(D d, const Numbers<V>& z) const {
    // The sum makes a signalling NaN quiet: otherwise its maximum with 0 is a NaN on Arm, and
    // compilers take comparisons for maxima.
    const V number = hn::Add(z.re, hn::Zero(d));
    const V limited = hn::Min(hn::Max(number, hn::Zero(d)), hn::Set(d, 255));
    const auto whole = TruncateFitting(d, limited);
    const V rest = hn::Sub(limited, hn::ConvertTo(d, whole));
    // All ones, which is -1, where the rest counts.
    const auto up = hn::VecFromMask(d, hn::Ge(rest, hn::Set(d, 0.5f)));
    return hn::Sub(whole, hn::BitCast(hn::RebindToSigned<D>(), up));
  }
};

// Numbers that are none have the same bits on every path and processor.
template <class D, class V>
HWY_INLINE Numbers<V> WithOneNan(D d, V re, V im) {
  const V nan = hn::Set(d, std::numeric_limits<float>::quiet_NaN());
  return {hn::IfThenElse(hn::Eq(re, re), re, nan), hn::IfThenElse(hn::Eq(im, im), im, nan)};
}
struct Multiply {
  using Lane = float;
  template <class D, class V>
  HWY_INLINE Numbers<V> operator()(D d, const Numbers<V>& a, const Numbers<V>& b) const {
    return WithOneNan(d, hn::Sub(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
                      hn::Add(hn::Mul(a.im, b.re), hn::Mul(a.re, b.im)));
  }
};
struct MultiplyConjugate {
  using Lane = float;
  template <class D, class V>
  HWY_INLINE Numbers<V> operator()(D d, const Numbers<V>& a, const Numbers<V>& b) const {
    return WithOneNan(d, hn::Add(hn::Mul(a.re, b.re), hn::Mul(a.im, b.im)),
                      hn::Sub(hn::Mul(a.im, b.re), hn::Mul(a.re, b.im)));
  }
};

template <class Op>
void MapScaled(KyBW8* out, size_t n, const KyComplex64* in, const ModulusScale* scale) {
  MapSpan(Op{*scale}, out, n, in);
}

double LargestOfRow(const KyComplex64* row, size_t n) {
  const hn::ScalableTag<double> d;
  const hn::Rebind<float, decltype(d)> df;
  const size_t lanes = hn::Lanes(d);
  auto largest = hn::Zero(d);
  const auto take = [&](const auto& z) HWY_ATTR {
    const Numbers<hn::Vec<decltype(d)>> wide{hn::PromoteTo(d, z.re), hn::PromoteTo(d, z.im)};
    const auto square = SquareOf(wide);
    largest = hn::Max(largest, hn::IfThenElseZero(hn::Eq(square, square), square));
  };
  size_t i = 0;
  for (; i + lanes <= n; i += lanes) take(LoadLanes(df, row + i));
  if (i < n) take(LoadPart(df, row + i, n - i));
  return hn::GetLane(hn::MaxOfLanes(d, largest));
}

constexpr ComplexKernels kKernels = {
    .modulus = &MapFormula<Modulus>,
    .argument = &MapFormula<Argument>,
    .real = &MapFormula<Real>,
    .scaledModulus = kEachRow<&MapScaled<ScaledModulus<false>>>,
    .logarithmicModulus = kEachRow<&MapScaled<ScaledModulus<true>>>,
    .multiply = &MapFormula<Multiply>,
    .multiplyConjugate = &MapFormula<MultiplyConjugate>,
    .largest = &LargestOfRow,
};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ComplexKernels)
