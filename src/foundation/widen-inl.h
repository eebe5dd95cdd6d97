// Formulas on lanes wider or narrower than the vectors they are given. Included by row files like
// lanes-inl.h.
#if defined(KY_FOUNDATION_WIDEN_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_WIDEN_INL_H_
#undef KY_FOUNDATION_WIDEN_INL_H_
#else
#define KY_FOUNDATION_WIDEN_INL_H_
#endif

#include <hwy/highway.h>

#include <cstdint>
#include <type_traits>

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Runs `f(d16, v...)` on 8-bit lanes widened to 16 bits, without crossing lanes: first the even,
// then the odd ones. The results must be at most 255.
template <class D, class F, class... V>
HWY_INLINE hn::Vec<D> OnWide(D d, const F& f, V... v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<uint16_t, D> d16;
  const hn::Rebind<int16_t, D> signed16;
  return hn::DemoteTo(d, hn::BitCast(signed16, f(d16, hn::PromoteTo(d16, v)...)));
#else
  const hn::Repartition<uint16_t, D> d16;
  const auto low = hn::Set(d16, 0xFF);
  const auto even = f(d16, hn::And(hn::BitCast(d16, v), low)...);
  const auto odd = f(d16, hn::ShiftRight<8>(hn::BitCast(d16, v))...);
  return hn::BitCast(d, hn::Or(even, hn::ShiftLeft<8>(odd)));
#endif
}

// The formula of 8-bit lanes that computes in 16 bits, by one of 16-bit lanes.
template <class Formula>
struct OnWideLanes {
  using Lane = uint8_t;
  template <class D, class... V>
  HWY_INLINE hn::Vec<D> operator()(D d, V... v) const {
    return OnWide(d, Formula(), v...);
  }
};

// OnWide with 256 times the 8-bit lanes, and one formula for the even ones, another for the odd.
template <class D, class Even, class Odd>
HWY_INLINE hn::Vec<D> OnWideScaled(D d, const Even& ofEven, [[maybe_unused]] const Odd& ofOdd,
                                   hn::Vec<D> v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<uint16_t, D> d16;
  const hn::Rebind<int16_t, D> signed16;
  const auto scaled = hn::ShiftLeft<8>(hn::PromoteTo(d16, v));
  return hn::DemoteTo(d, hn::BitCast(signed16, ofEven(d16, scaled)));
#else
  const hn::Repartition<uint16_t, D> d16;
  const auto both = hn::BitCast(d16, v);
  const auto even = ofEven(d16, hn::ShiftLeft<8>(both));
  const auto odd = ofOdd(d16, hn::And(both, hn::Set(d16, 0xFF00)));
  return hn::BitCast(d, hn::Or(even, hn::ShiftLeft<8>(odd)));
#endif
}

// 32-bit lanes whose values fit 16 bits, in both 16-bit halves.
template <class D>
HWY_INLINE auto InHalves(D, hn::Vec<D> v) {
#if HWY_TARGET == HWY_SCALAR
  return hn::TruncateTo(hn::Rebind<uint16_t, D>(), v);
#else
  return hn::BitCast(hn::Repartition<uint16_t, D>(), hn::Or(v, hn::ShiftLeft<16>(v)));
#endif
}

// Runs `f(d8, v...)` on the bytes of 32-bit lanes.
template <class D, class F, class... V>
HWY_INLINE hn::Vec<D> OnBytes(D d, const F& f, V... v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<uint8_t, D> d8;
  uint32_t all = 0;
  for (int shift = 0; shift < 32; shift += 8)
    all |= uint32_t{hn::GetLane(f(d8, hn::TruncateTo(d8, hn::ShiftRightSame(v, shift))...))}
           << shift;
  return hn::Set(d, all);
#else
  const hn::Repartition<uint8_t, D> d8;
  return hn::BitCast(d, f(d8, hn::BitCast(d8, v)...));
#endif
}

// Runs `f(df, v...)` on 16-bit lanes converted to single precision. The results are the low 16 bits
// of the floats that it returns: adding 2^k to a smaller number of 0 or more, or 1.5 * 2^k to one
// that may be negative too, leaves it there as a multiple of 2^(k - 23), rounded to the nearest.
// That is cheaper than a conversion, which has to look for overflow.
template <class D16, class F, class... V>
HWY_INLINE hn::Vec<D16> InFloat(D16 d16, const F& f, V... v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<int32_t, D16> d32;
  const hn::Rebind<uint32_t, D16> unsigned32;
  const hn::Rebind<float, D16> df;
  const auto result = f(df, hn::ConvertTo(df, hn::PromoteTo(d32, v))...);
  return hn::TruncateTo(d16, hn::BitCast(unsigned32, result));
#else
  const hn::Repartition<uint32_t, D16> d32;
  const hn::Repartition<int32_t, D16> signed32;
  const hn::Repartition<float, D16> df;
  const auto toFloat = [&](auto wide)
                           HWY_ATTR { return hn::ConvertTo(df, hn::BitCast(signed32, wide)); };
  const auto mask = hn::Set(d32, 0xFFFF);
  const auto low = f(df, toFloat(hn::And(hn::BitCast(d32, v), mask))...);
  const auto high = f(df, toFloat(hn::ShiftRight<16>(hn::BitCast(d32, v)))...);
  return hn::OddEven(hn::ShiftLeftLanes<1>(d16, hn::BitCast(d16, high)), hn::BitCast(d16, low));
#endif
}

// Truncated, of numbers that 32-bit integers hold: Highway's conversion also limits the others,
// which takes as long again.
template <class DF>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> TruncateFitting(DF, hn::Vec<DF> v) {
  using DI = hn::RebindToSigned<DF>;
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  if constexpr (sizeof(v) == 64) return hn::Vec<DI>{_mm512_cvttps_epi32(v.raw)};
#elif HWY_TARGET == HWY_AVX2
  if constexpr (sizeof(v) == 32) return hn::Vec<DI>{_mm256_cvttps_epi32(v.raw)};
#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
  return hn::Vec<DI>{_mm_cvttps_epi32(v.raw)};
#endif
  return hn::ConvertTo(DI(), v);
}

#if HWY_TARGET != HWY_SCALAR
// Signed 16-bit lanes, limited to 0..255: in each block of 16 bytes those of `lower`, then those of
// `upper`. This undoes InterleaveLower and InterleaveUpper with zeros.
template <class D8, class V16>
HWY_INLINE hn::Vec<D8> NarrowBlocks(D8 d, V16 lower, V16 upper) {
  (void)d;
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  return hn::Vec<D8>{_mm512_packus_epi16(lower.raw, upper.raw)};
#elif HWY_TARGET == HWY_AVX2
  return hn::Vec<D8>{_mm256_packus_epi16(lower.raw, upper.raw)};
#else
  const hn::Half<D8> half;
  return hn::Combine(d, hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
#endif
}

// The 16-bit lanes of `lower`, then those of `upper`, as bytes, which they have to fit.
template <class D8, class V16>
HWY_INLINE hn::Vec<D8> NarrowInOrder(D8 d, V16 lower, V16 upper) {
#if HWY_TARGET == HWY_AVX2
  if constexpr (hn::MaxLanes(D8()) == 32) {
    const __m256i blocks = std::is_signed_v<hn::TFromD<D8>>
                               ? _mm256_packs_epi16(lower.raw, upper.raw)
                               : _mm256_packus_epi16(lower.raw, upper.raw);
    return hn::Vec<D8>{_mm256_permute4x64_epi64(blocks, _MM_SHUFFLE(3, 1, 2, 0))};
  }
#endif
  return hn::ConcatEven(d, hn::BitCast(d, upper), hn::BitCast(d, lower));
}
#endif

// The lanes of floats that lanes of bytes are widened to, a few vectors for each one of bytes.
#if HWY_TARGET == HWY_SCALAR
template <class D>
using FloatsOfBytes = hn::Rebind<float, D>;
#else
template <class D>
using FloatsOfBytes = hn::Repartition<float, D>;

// The bytes of the lower or the upper half of each block in 16 bits.
template <bool kUpper, class D>
HWY_INLINE auto WordsOf(D d, hn::Vec<D> v) {
  const hn::Repartition<uint16_t, D> d16;
  if constexpr (kUpper)
    return hn::BitCast(d16, hn::InterleaveUpper(d, v, hn::Zero(d)));
  else
    return hn::BitCast(d16, hn::InterleaveLower(d, v, hn::Zero(d)));
}
// Numbers of 32 bits, from the lower 16 and the higher 16 of each, as floats: those of the lower or
// the upper half of each block.
template <bool kUpper, class V16>
HWY_INLINE auto FloatsOfWords(V16 low, V16 high) {
  const hn::DFromV<V16> d16;
  const hn::Repartition<int32_t, decltype(d16)> d32;
  const hn::Repartition<float, decltype(d16)> df;
  if constexpr (kUpper)
    return hn::ConvertTo(df, hn::BitCast(d32, hn::InterleaveUpper(d16, low, high)));
  else
    return hn::ConvertTo(df, hn::BitCast(d32, hn::InterleaveLower(d16, low, high)));
}
#endif

// Writes the bytes as floats to as many vectors as there are.
template <class D, class VF>
HWY_INLINE void FloatsOf(D d, hn::Vec<D> v, VF* floats) {
#if HWY_TARGET == HWY_SCALAR
  (void)d;
  const hn::Rebind<int32_t, D> d32;
  *floats = hn::ConvertTo(FloatsOfBytes<D>(), hn::PromoteTo(d32, v));
#else
  const auto zero = hn::Zero(hn::Repartition<uint16_t, D>());
  const auto lower = WordsOf<false>(d, v), upper = WordsOf<true>(d, v);
  floats[0] = FloatsOfWords<false>(lower, zero);
  floats[1] = FloatsOfWords<true>(lower, zero);
  floats[2] = FloatsOfWords<false>(upper, zero);
  floats[3] = FloatsOfWords<true>(upper, zero);
#endif
}
// The bytes that f(df, v) makes of bytes v as floats: integers, which are limited to 0..255.
template <class D, class F>
HWY_INLINE hn::Vec<D> OnFloats(D d, const F& f, hn::Vec<D> v) {
  const FloatsOfBytes<D> df;
  hn::Vec<FloatsOfBytes<D>> floats[hn::MaxLanes(D()) / hn::MaxLanes(df)];
  FloatsOf(d, v, floats);
#if HWY_TARGET == HWY_SCALAR
  return hn::DemoteTo(d, f(df, floats[0]));
#else
  const hn::Repartition<int16_t, D> d16;
  return NarrowBlocks(d, hn::ReorderDemote2To(d16, f(df, floats[0]), f(df, floats[1])),
                      hn::ReorderDemote2To(d16, f(df, floats[2]), f(df, floats[3])));
#endif
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
