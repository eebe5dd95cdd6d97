#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/gaussian_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/gaussian_rows.h"

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct SameOp {
  using Lane = int16_t;
  template <class D, class V>
  HWY_INLINE V operator()(D, V v) const {
    return v;
  }
};
void Widen(int16_t* out, size_t n, const KyBW8* in) { MapSpan(SameOp(), out, n, in); }

#if HWY_TARGET == HWY_SCALAR

int32_t Lower(int32_t pair) { return static_cast<int16_t>(pair); }
int32_t Upper(int32_t pair) { return pair >> 16; }

void Along(const PairRows& out, size_t n, const int16_t* const rows[2],
           const WeightPairs weights[2]) {
  const int shift = weights[0].bits - 7;
  for (size_t x = 0; x < n; ++x) {
    const WeightPairs& w = weights[x % 2];
    const auto weighted = [&](const int16_t* at) {
      int32_t sum = 1 << (shift - 1);
      for (ptrdiff_t k = 0; k < w.count; ++k)
        sum += Lower(*w.At(k)) * at[2 * k] + Upper(*w.At(k)) * at[2 * k + 1];
      return sum >> shift;
    };
    const size_t first = x - x % 2;
    const int32_t pair = weighted(rows[0] + first) | weighted(rows[1] + first) << 16;
    (out.rows[0] + (x % 2 == 0 ? 0 : out.phase))[x / 2] = static_cast<uint32_t>(pair);
  }
}

void Across(KyBW8* const out[4], size_t n, const PairRows& in, const WeightPairs weights[2]) {
  const int shift = weights[0].bits + 7;
  for (int r = 0; r < 4; ++r) {
    const WeightPairs& w = weights[r % 2];
    for (size_t x = 0; x < n; ++x) {
      int32_t sum = 1 << (shift - 1);
      for (ptrdiff_t k = 0; k < w.count; ++k) {
        const auto pair =
            static_cast<int32_t>((in.rows[k + r / 2] + (x % 2 == 0 ? 0 : in.phase))[x / 2]);
        sum += Lower(*w.At(k)) * Lower(pair) + Upper(*w.At(k)) * Upper(pair);
      }
      out[r][x] = static_cast<KyBW8>(sum >> shift);
    }
  }
}

#else

HWY_INLINE V16 WeightsAt(const WeightPairs& weights, ptrdiff_t k) {
  return hn::BitCast(D16(), hn::LoadDup128(D32(), weights.At(k)));
}

// sum += the products of the lanes, the two of each pair of lanes added up.
HWY_INLINE void Accumulate(V16 lanes, V16 weights, V32& sum) {
  [[maybe_unused]] const D32 d;
#if HWY_TARGET == HWY_AVX3_DL
  __asm__("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(lanes.raw), "v"(weights.raw));
#elif HWY_TARGET == HWY_AVX2
  // Left to itself, g++ multiplies first and adds later, for which there are not enough registers.
  V32 products;
  __asm__("vpmaddwd %3, %2, %1\n\tvpaddd %1, %0, %0"
          : "+x"(sum.raw), "=&x"(products.raw)
          : "x"(lanes.raw), "x"(weights.raw));
#elif HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  V32 unused = hn::Zero(d);
  sum = hn::ReorderWidenMulAccumulate(d, lanes, weights, sum, unused);
#else
  const V32 pairs = hn::BitCast(d, lanes), factors = hn::BitCast(d, weights);
  const auto lower = [](V32 v) HWY_ATTR { return hn::ShiftRight<16>(hn::ShiftLeft<16>(v)); };
  sum = hn::Add(sum, hn::Mul(lower(pairs), lower(factors)));
  sum = hn::Add(sum, hn::Mul(hn::ShiftRight<16>(pairs), hn::ShiftRight<16>(factors)));
#endif
}

// Both phases of a block of kVectors vectors each. A pair of neighbours belongs to the places of
// either phase, under weights that are one tap apart.
template <size_t kVectors>
HWY_INLINE void AlongBlock(const PairRows& out, const int16_t* const rows[2],
                           const WeightPairs weights[2], size_t x) {
  const D32 d;
  const D16 d16;
  const size_t lanes = hn::Lanes(d);
  const int shift = weights[0].bits - 7;
  V32 sums[2][2][kVectors];
  for (auto& row : sums)
    for (auto& phase : row)
      for (V32& sum : phase) sum = hn::Set(d, 1 << (shift - 1));
  for (ptrdiff_t k = 0; k < weights[0].count; ++k) {
    const V16 here[2] = {WeightsAt(weights[0], k), WeightsAt(weights[1], k)};
    for (size_t r = 0; r < 2; ++r)
      for (size_t v = 0; v < kVectors; ++v) {
        const V16 pairs = hn::LoadU(d16, rows[r] + x + 2 * static_cast<size_t>(k) + 2 * v * lanes);
        for (size_t p = 0; p < 2; ++p) Accumulate(pairs, here[p], sums[r][p][v]);
      }
  }
  const hn::RebindToUnsigned<D32> du;
  for (size_t p = 0; p < 2; ++p)
    for (size_t v = 0; v < kVectors; ++v) {
      const V32 first = hn::ShiftRightSame(sums[0][p][v], shift);
      const V32 second = hn::ShiftRightSame(sums[1][p][v], shift);
      const auto pairs = hn::BitCast(du, hn::Or(first, hn::ShiftLeft<16>(second)));
      hn::StoreU(pairs, du, out.rows[0] + (p == 0 ? 0 : out.phase) + x / 2 + v * lanes);
    }
}
void Along(const PairRows& out, size_t n, const int16_t* const rows[2],
           const WeightPairs weights[2]) {
  constexpr size_t kVectors = 2;
  for (size_t x = 0; x < n; x += 2 * kVectors * hn::Lanes(D32()))
    AlongBlock<kVectors>(out, rows, weights, x);
}

// Four rows of results at a vector of places of either phase.
HWY_INLINE void AcrossVector(KyBW8* const out[4], size_t x, size_t n, const PairRows& in,
                             const WeightPairs weights[2]) {
  const D32 d;
  const hn::RebindToUnsigned<D32> du;
  const D16 d16;
  const hn::Rebind<uint8_t, D16> d8;
  const int shift = weights[0].bits + 7;
  const V32 half = hn::Set(d, 1 << (shift - 1));
  // The places of the even phase, and of the odd one, for each row.
  V32 even0 = half, even1 = half, even2 = half, even3 = half;
  V32 odd0 = half, odd1 = half, odd2 = half, odd3 = half;
  // The first pair of rows is that of the first two results alone, the last that of the others.
  const ptrdiff_t last = weights[0].count;
  const auto add = [&](ptrdiff_t k, auto toFirst, auto toOthers) KY_INLINE_ATTR {
    const uint32_t* const from = in.rows[k] + x / 2;
    const V16 even = hn::BitCast(d16, hn::LoadU(du, from));
    const V16 odd = hn::BitCast(d16, hn::LoadU(du, from + in.phase));
    if constexpr (toFirst) {
      V16 weight = WeightsAt(weights[0], k);
      Accumulate(even, weight, even0);
      Accumulate(odd, weight, odd0);
      weight = WeightsAt(weights[1], k);
      Accumulate(even, weight, even1);
      Accumulate(odd, weight, odd1);
    }
    if constexpr (toOthers) {
      V16 weight = WeightsAt(weights[0], k - 1);
      Accumulate(even, weight, even2);
      Accumulate(odd, weight, odd2);
      weight = WeightsAt(weights[1], k - 1);
      Accumulate(even, weight, even3);
      Accumulate(odd, weight, odd3);
    }
  };
  add(0, std::true_type(), std::false_type());
  for (ptrdiff_t k = 1; k < last; ++k) add(k, std::true_type(), std::true_type());
  add(last, std::false_type(), std::true_type());
  const auto store = [&](KyBW8* to, V32 evenSum, V32 oddSum) KY_INLINE_ATTR {
    const V32 both = hn::Or(hn::ShiftRightSame(evenSum, shift),
                            hn::ShiftLeft<16>(hn::ShiftRightSame(oddSum, shift)));
    const auto result = hn::DemoteTo(d8, hn::BitCast(d16, both));
    if (HWY_LIKELY(x + hn::Lanes(d16) <= n))
      hn::StoreU(result, d8, to + x);
    else
      StorePart(d8, result, to + x, n - x);
  };
  store(out[0], even0, odd0);
  store(out[1], even1, odd1);
  store(out[2], even2, odd2);
  store(out[3], even3, odd3);
}
void Across(KyBW8* const out[4], size_t n, const PairRows& in, const WeightPairs weights[2]) {
  for (size_t x = 0; x < n; x += hn::Lanes(D16())) AcrossVector(out, x, n, in, weights);
}

#endif

constexpr GaussianKernels kKernels = {&Widen, &Along, &Across};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(GaussianKernels)
