// The grey level of a colour. Included by row files like lanes-inl.h.
#if defined(KY_CONVERSION_LUMA_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVERSION_LUMA_INL_H_
#undef KY_CONVERSION_LUMA_INL_H_
#else
#define KY_CONVERSION_LUMA_INL_H_
#endif

#include "foundation/lanes-inl.h"
#include "foundation/pick-inl.h"
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

#if KY_HAVE_MUL_ADD_BYTES
// From bytes in which components 0 and 1 stand side by side, and component 2 beside any.
template <class D, class V = hn::Vec<D>>
HWY_INLINE auto LumaOfPairs(D d, V firstTwo, V thirdAndAny) {
  const hn::Repartition<int16_t, D> d16;
  const auto sum = [&](const int* factors) HWY_ATTR {
    const auto pair = [&](int first, int second) HWY_ATTR {
      return hn::BitCast(d, hn::Set(d16, static_cast<int16_t>((first & 255) | second * 256)));
    };
    return hn::Add(MulAddBytes(firstTwo, pair(factors[0], factors[1])),
                   MulAddBytes(thirdAndAny, pair(factors[2], 0)));
  };
  const auto low = hn::ShiftRight<8>(sum(LumaFactors::kLow));
  // The product rounds: (v 2^8 + 2^14) >> 15 is (v + 64) >> 7.
  return hn::MulFixedPoint15(hn::Add(sum(LumaFactors::kHigh), low), hn::Set(d16, 1 << 8));
}
// Blocks are taken apart and put together again, so that lanes need not cross them.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V Luma(D d, const Planes3<V>& color) {
  return NarrowBlocks(d,
                      LumaOfPairs(d, hn::InterleaveLower(d, color.c0, color.c1),
                                  hn::InterleaveLower(d, color.c2, color.c2)),
                      LumaOfPairs(d, hn::InterleaveUpper(d, color.c0, color.c1),
                                  hn::InterleaveUpper(d, color.c2, color.c2)));
}

// The grey levels of as many colours as there are lanes.
#if HWY_TARGET == HWY_AVX3_DL
// Of 32 colours, which begin so many bytes into a.
template <size_t kBegin>
HWY_INLINE hn::Vec<hn::ScalableTag<int16_t>> LumaOf32(Bytes64 a, Bytes64 b) {
  static constexpr BytePlaces kFirstTwo =
      MakeBytePlaces([](size_t i) { return kBegin + i / 2 * 3 + i % 2; });
  static constexpr BytePlaces kThird =
      MakeBytePlaces([](size_t i) { return kBegin + i / 2 * 3 + 2; });
  return LumaOfPairs(hn::ScalableTag<uint8_t>(), PickBytes(kFirstTwo, a, b),
                     PickBytes(kThird, a, b));
}
template <class D>
HWY_INLINE hn::Vec<D> LumaOf(D d, const KyC24* colors) {
  static constexpr BytePlaces kLowBytes = MakeBytePlaces([](size_t i) { return 2 * i; });
  const uint8_t* const bytes = &colors->c0;
  const auto a = hn::LoadU(d, bytes), b = hn::LoadU(d, bytes + 64), c = hn::LoadU(d, bytes + 128);
  return PickBytes(kLowBytes, hn::BitCast(d, LumaOf32<0>(a, b)),
                   hn::BitCast(d, LumaOf32<32>(b, c)));
}
#else
// 16 bytes for each block, from places 48 bytes apart.
template <class D>
HWY_INLINE hn::Vec<D> LoadEvery48(D d, const uint8_t* from) {
  if constexpr (hn::MaxLanes(D()) == 16) {
    return hn::LoadU(d, from);
  } else {
    const hn::Half<D> half;
    constexpr size_t kBytes = 3 * hn::MaxLanes(half);
    return hn::Combine(d, LoadEvery48(half, from + kBytes), LoadEvery48(half, from));
  }
}
// A shuffle brings the pairs of four colours, which are 12 bytes, into place.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V LumaOf(D d, const KyC24* colors) {
  alignas(16) static constexpr uint8_t kFirst4[16] = {0, 1, 3, 4, 6, 7, 9,  10,
                                                      2, 2, 5, 5, 8, 8, 11, 11};
  alignas(16) static constexpr uint8_t kLast4[16] = {4, 5, 7, 8, 10, 11, 13, 14,
                                                     6, 6, 9, 9, 12, 12, 15, 15};
  const auto* const bytes = reinterpret_cast<const uint8_t*>(colors);
  const hn::Repartition<uint64_t, D> d64;
  const auto eight = [&](const uint8_t* from) HWY_ATTR {
    const auto first =
        hn::BitCast(d64, hn::TableLookupBytes(LoadEvery48(d, from), hn::LoadDup128(d, kFirst4)));
    const auto last =
        hn::BitCast(d64, hn::TableLookupBytes(LoadEvery48(d, from + 8), hn::LoadDup128(d, kLast4)));
    return LumaOfPairs(d, hn::BitCast(d, hn::InterleaveLower(d64, first, last)),
                       hn::BitCast(d, hn::InterleaveUpper(d64, first, last)));
  };
  return NarrowBlocks(d, eight(bytes), eight(bytes + 24));
}
#endif
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
template <class D, class V = hn::Vec<D>>
HWY_INLINE V LumaOf(D d, const KyC24* colors) {
  return Luma(d, LoadLanes(d, colors));
}
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
