#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/sizes_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/sizes_rows.h"

#include "foundation/dispatch.h"
#include "foundation/prefetch-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/widen-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Pixels of two rows, as many as two vectors have lanes, and their halves.
#if HWY_TARGET == HWY_SCALAR
template <class D>
HWY_INLINE hn::Vec<D> HalvesOf(D d, const hn::Vec<D> (&upper)[2], const hn::Vec<D> (&lower)[2]) {
  unsigned sum = 2;
  for (int i = 0; i < 2; ++i) sum += hn::GetLane(upper[i]) + unsigned{hn::GetLane(lower[i])};
  return hn::Set(d, static_cast<uint8_t>(sum >> 2));
}
#else
template <class D>
HWY_INLINE hn::Vec<D> HalvesOf(D d, const hn::Vec<D> (&upper)[2], const hn::Vec<D> (&lower)[2]) {
  const hn::Repartition<uint16_t, D> d16;
  const hn::RebindToSigned<decltype(d16)> signed16;
  hn::Vec<decltype(signed16)> halves[2];
  for (int i = 0; i < 2; ++i) {
#if KY_HAVE_MUL_ADD_BYTES
    const auto ones = hn::Set(d, 1);
    const auto sum =
        hn::BitCast(d16, hn::Add(MulAddBytes(upper[i], ones), MulAddBytes(lower[i], ones)));
#else
    const auto pairs = [&](auto v) HWY_ATTR {
      const auto wide = hn::BitCast(d16, v);
      return hn::Add(hn::And(wide, hn::Set(d16, 0xFF)), hn::ShiftRight<8>(wide));
    };
    const auto sum = hn::Add(pairs(upper[i]), pairs(lower[i]));
#endif
    // This is (sum + 2) >> 2, in one instruction.
    halves[i] = hn::MulFixedPoint15(hn::BitCast(signed16, sum), hn::Set(signed16, 1 << 13));
  }
  return NarrowInOrder(d, halves[0], halves[1]);
}
#endif

template <class D>
HWY_INLINE void HalveLanes(D d, KyBW8* out, const KyBW8* upper, const KyBW8* lower) {
  const size_t lanes = hn::Lanes(d);
  StoreLanes(HalvesOf<D>(d, {LoadLanes(d, upper), LoadLanes(d, upper + lanes)},
                         {LoadLanes(d, lower), LoadLanes(d, lower + lanes)}),
             out);
}
template <class D>
HWY_INLINE void HalveLanes(D d, KyC24* out, const KyC24* upper, const KyC24* lower) {
  const size_t lanes = hn::Lanes(d);
  const auto a = LoadLanes(d, upper), b = LoadLanes(d, upper + lanes);
  const auto e = LoadLanes(d, lower), f = LoadLanes(d, lower + lanes);
  StoreLanes(Planes3<hn::Vec<D>>{HalvesOf<D>(d, {a.c0, b.c0}, {e.c0, f.c0}),
                                 HalvesOf<D>(d, {a.c1, b.c1}, {e.c1, f.c1}),
                                 HalvesOf<D>(d, {a.c2, b.c2}, {e.c2, f.c2})},
             out);
}

template <class T>
void Halve(T* out, size_t n, const T* upper, const T* lower) {
  const hn::ScalableTag<uint8_t> d;
  const size_t lanes = hn::Lanes(d);
  if (n < lanes) {
    constexpr size_t kMost = hn::MaxLanes(d);
    HWY_ALIGN T in[2][2 * kMost], halves[kMost];
    ReadPart<2 * kMost>(in[0], upper, 2 * n);
    ReadPart<2 * kMost>(in[1], lower, 2 * n);
    HalveLanes(d, halves, in[0], in[1]);
    WritePart<kMost>(out, static_cast<const T*>(halves), n);
    return;
  }
  for (size_t i = 0; i < n - lanes; i += lanes)
    HalveLanes(d, out + i, upper + 2 * i, lower + 2 * i);
  HalveLanes(d, out + n - lanes, upper + 2 * (n - lanes), lower + 2 * (n - lanes));
}

HWY_INLINE void InterpolateEach(int32_t* out, const KyBW8* row, const PairsOfElements& pairs) {
  for (size_t x = 0; x < pairs.n; ++x) {
    const KyBW8* const left = row + pairs.left[x];
    const uint32_t first = pairs.pairs[x] & 0xFFFF, second = pairs.pairs[x] >> 16;
    out[x] = static_cast<int32_t>(left[0] * first + (second != 0 ? left[pairs.step] * second : 0));
  }
}

#if HWY_TARGET == HWY_SCALAR
constexpr size_t kGroup = 4;
void Interpolate(int32_t* out, const KyBW8* row, const PairsOfElements& pairs, ptrdiff_t) {
  InterpolateEach(out, row, pairs);
}
#else
using DPairs = hn::CappedTag<uint32_t, kMostAtOnce>;
using VPairs = hn::Vec<DPairs>;
// The products of 16-bit lanes with 16-bit weights below 2^15, the two of each pair added up.
HWY_INLINE VPairs MultiplyPairs(VPairs v, VPairs weights) {
#if HWY_TARGET < HWY_AVX2 && HWY_ARCH_X86
  return VPairs{_mm512_madd_epi16(v.raw, weights.raw)};
#elif HWY_TARGET == HWY_AVX2 && HWY_ARCH_X86
  return VPairs{_mm256_madd_epi16(v.raw, weights.raw)};
#elif HWY_TARGET <= HWY_SSSE3 && HWY_ARCH_X86
  return VPairs{_mm_madd_epi16(v.raw, weights.raw)};
#else
  const DPairs d;
  const auto low = hn::Set(d, 0xFFFF);
  return hn::Add(hn::Mul(hn::And(v, low), hn::And(weights, low)),
                 hn::Mul(hn::ShiftRight<16>(v), hn::ShiftRight<16>(weights)));
#endif
}

// The pairs of 16 bits that a vector of results needs, picked out of the bytes of its groups.
#if HWY_TARGET == HWY_AVX3_DL  // which picks out of 64 bytes
constexpr size_t kGroup = 16;
HWY_INLINE VPairs Pick(const KyBW8* row, const ptrdiff_t* starts, const uint8_t* picks) {
  const hn::Repartition<uint8_t, DPairs> d8;
  const auto places = hn::LoadU(d8, picks), bytes = hn::LoadU(d8, row + starts[0]);
  constexpr uint64_t kFirstOfTwo = 0x5555555555555555;
  return VPairs{_mm512_maskz_permutexvar_epi8(kFirstOfTwo, places.raw, bytes.raw)};
}
#else
constexpr size_t kGroup = 4;
HWY_INLINE VPairs Pick(const KyBW8* row, const ptrdiff_t* starts, const uint8_t* picks) {
  const hn::Repartition<uint8_t, DPairs> d8;
#if HWY_TARGET == HWY_AVX2
  const hn::Half<decltype(d8)> group;
  const auto bytes =
      hn::Combine(d8, hn::LoadU(group, row + starts[1]), hn::LoadU(group, row + starts[0]));
#else
  const auto bytes = hn::LoadU(d8, row + starts[0]);
#endif
  return hn::BitCast(DPairs(), hn::TableLookupBytesOr0(bytes, hn::LoadU(d8, picks)));
}
#endif

void Interpolate(int32_t* out, const KyBW8* row, const PairsOfElements& pairs, ptrdiff_t ahead) {
  if (pairs.starts == nullptr) return InterpolateEach(out, row, pairs);
  const DPairs d;
  const hn::RebindToSigned<DPairs> result;
  for (size_t x = 0; x < pairs.n; x += hn::Lanes(d)) {
    const ptrdiff_t* const starts = pairs.starts + x / kGroup;
    if (ahead != 0) PrefetchAhead<1>(row + starts[0], ahead);
    const auto picked = Pick(row, starts, pairs.picks + x * kPairBytes);
    const auto sums = MultiplyPairs(picked, hn::LoadU(d, pairs.pairs + x));
    hn::StoreU(hn::BitCast(result, sums), result, out + x);
  }
}
#endif

struct BlendOp {
  using Lane = int32_t;
  int32_t g;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V upper, V lower) const {
    const auto change = hn::Mul(hn::Sub(lower, upper), hn::Set(d, g));
    const auto rounding = hn::Set(d, kWeightOne * kWeightOne / 2);
    return hn::ShiftRight<2 * kWeightBits>(
        hn::Add(hn::Add(hn::ShiftLeft<kWeightBits>(upper), rounding), change));
  }
};
// Four vectors of results become one of bytes, which takes fewer steps than four of a quarter each.
void Blend(KyBW8* out, size_t n, const int32_t* upper, const int32_t* lower, int32_t g) {
  const BlendOp op{g};
  size_t x = 0;
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<int32_t> d;
  const hn::Repartition<uint16_t, decltype(d)> d16;
  const hn::Repartition<uint8_t, decltype(d)> d8;
  for (; x + hn::Lanes(d8) <= n; x += hn::Lanes(d8)) {
    const auto at = [&](size_t vectors) HWY_ATTR {
      const size_t i = x + vectors * hn::Lanes(d);
      return hn::BitCast(d16, op(d, hn::LoadU(d, upper + i), hn::LoadU(d, lower + i)));
    };
    const auto left = hn::BitCast(d8, hn::ConcatEven(d16, at(1), at(0)));
    const auto right = hn::BitCast(d8, hn::ConcatEven(d16, at(3), at(2)));
    hn::StoreU(hn::ConcatEven(d8, right, left), d8, out + x);
  }
#endif
  MapSpan(op, out + x, n - x, upper + x, lower + x);
}

constexpr SizeKernels kKernels = {kGroup, &Halve<KyBW8>, &Halve<KyC24>, &Interpolate, &Blend};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SizeKernels)
