// The grey level of a colour. Included by row files like lanes-inl.h.
#if defined(KY_CONVERSION_LUMA_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVERSION_LUMA_INL_H_
#undef KY_CONVERSION_LUMA_INL_H_
#else
#define KY_CONVERSION_LUMA_INL_H_
#endif

#include "foundation/lanes-inl.h"
#include "foundation/widen-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// (9798 c0 + 19235 c1 + 3735 c2 + 16384) >> 15 in lanes of 16 bits. The factors are 256 times those
// of `high` plus those of `low`, so that the sum is 256 high + low; what low adds to it is
// floor(low / 256), and 64 stands for the half. All terms and their sums fit signed lanes.
struct LumaFactors {
  static constexpr int kHigh[3] = {38, 75, 15}, kLow[3] = {70, 35, -105}, kHalf = 64;
};
static_assert(256 * LumaFactors::kHigh[0] + LumaFactors::kLow[0] == 9798);
static_assert(256 * LumaFactors::kHigh[1] + LumaFactors::kLow[1] == 19235);
static_assert(256 * LumaFactors::kHigh[2] + LumaFactors::kLow[2] == 3735);

#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
// Sums of two neighbouring products of bytes, the second factors signed.
template <class V>
HWY_INLINE V SumOfPairs(V bytes, V factors) {
#if HWY_TARGET < HWY_AVX2
  if constexpr (sizeof(V) == 64) return V{_mm512_maddubs_epi16(bytes.raw, factors.raw)};
#endif
#if HWY_TARGET <= HWY_AVX2
  if constexpr (sizeof(V) == 32) return V{_mm256_maddubs_epi16(bytes.raw, factors.raw)};
#endif
  if constexpr (sizeof(V) == 16) return V{_mm_maddubs_epi16(bytes.raw, factors.raw)};
}
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Luma(D d, const Planes3<V>& color) {
  using F = LumaFactors;
  const hn::Repartition<int16_t, D> d16;
  const auto pair = [&](int first, int second) HWY_ATTR {
    return hn::BitCast(d, hn::Set(d16, static_cast<int16_t>((first & 255) | second * 256)));
  };
  const V one = hn::Set(d, 1);
  const auto half = [&](V firstTwo, V third) HWY_ATTR {
    const auto sum = [&](const int* factors, int constant) HWY_ATTR {
      const auto a = hn::BitCast(d16, SumOfPairs(firstTwo, pair(factors[0], factors[1])));
      const auto b = hn::BitCast(d16, SumOfPairs(third, pair(factors[2], constant)));
      return hn::Add(a, b);
    };
    const auto low = hn::ShiftRight<8>(sum(F::kLow, 0));
    return hn::ShiftRight<7>(hn::Add(sum(F::kHigh, F::kHalf), low));
  };
  // Blocks are taken apart and put together again, so that lanes need not cross them.
  const auto lower =
      half(hn::InterleaveLower(d, color.c0, color.c1), hn::InterleaveLower(d, color.c2, one));
  const auto upper =
      half(hn::InterleaveUpper(d, color.c0, color.c1), hn::InterleaveUpper(d, color.c2, one));
  return NarrowBlocks(d, lower, upper);
}
#else
struct WideLuma {
  template <class D16, class V>
  HWY_INLINE V operator()(D16 d16, V c0, V c1, V c2) const {
    using F = LumaFactors;
    const hn::RebindToSigned<D16> signed16;
    const auto sum = [&](const int* factors) HWY_ATTR {
      const auto times = [&](V v, int factor) HWY_ATTR {
        return hn::Mul(hn::BitCast(signed16, v), hn::Set(signed16, static_cast<int16_t>(factor)));
      };
      return hn::Add(hn::Add(times(c0, factors[0]), times(c1, factors[1])), times(c2, factors[2]));
    };
    const auto low = hn::Add(hn::ShiftRight<8>(sum(F::kLow)), hn::Set(signed16, F::kHalf));
    return hn::BitCast(d16, hn::ShiftRight<7>(hn::Add(sum(F::kHigh), low)));
  }
};
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Luma(D d, const Planes3<V>& color) {
  return OnWide(d, WideLuma(), color.c0, color.c1, color.c2);
}
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
