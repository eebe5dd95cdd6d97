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

template <int>
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

template <int>
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

// Sums under kCount pairs of weights, which are unrolled, or, where that is 0, of any number. They
// are rounded by kBits bits, and by one less where the weights add up to 2^14.
template <int kCount, int kBits>
class WeighedSums {
 public:
  HWY_INLINE explicit WeighedSums(const WeightPairs weights[2])
      : weights_{weights[0], weights[1]}, bits_(weights[0].bits - 15 + kBits) {}

  HWY_INLINE ptrdiff_t count() const { return kCount > 0 ? kCount : weights_[0].count; }
  HWY_INLINE V16 WeightAt(size_t first, ptrdiff_t k) const {
    return hn::BitCast(D16(), hn::LoadDup128(D32(), weights_[first].At(k)));
  }
  // What all sums begin with.
  HWY_INLINE V32 Half() const { return hn::Set(D32(), 1 << ((kCount > 0 ? kBits : bits_) - 1)); }
  // f(1), ... f(count() - 1)
  template <class F>
  HWY_INLINE void ForOthers(const F& f) const {
    if constexpr (kCount > 0)
      return ForEach<kCount - 1>([&]<int k>(std::integral_constant<int, k>)
                                     KY_INLINE_ATTR { f(k + 1); });
    constexpr int kUnrolled = 4;
    ptrdiff_t k = 1;
    for (; k + kUnrolled <= count(); k += kUnrolled)
      ForEach<kUnrolled>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR { f(k + i); });
    for (; k < count(); ++k) f(k);
  }
  // Two sums, rounded, as the lower and the upper halves of lanes.
  HWY_INLINE V16 Rounded(V32 lower, V32 upper) const {
    const D16 d;
    if constexpr (kCount == 0) {
      const V32 shifted = hn::ShiftLeft<16>(hn::ShiftRightSame(upper, bits_));
      return hn::BitCast(d, hn::Or(hn::ShiftRightSame(lower, bits_), shifted));
    } else if constexpr (kBits < 16) {
      return hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16 - kBits>(upper)),
                         hn::BitCast(d, hn::ShiftRight<kBits>(lower)));
    } else {
      return hn::OddEven(hn::BitCast(d, hn::ShiftRight<kBits - 16>(upper)),
                         hn::BitCast(d, hn::ShiftRight<kBits>(lower)));
    }
  }

 private:
  const WeightPairs weights_[2];
  int bits_;
};

// Both phases of a block of two vectors each, of two rows. A pair of neighbours belongs to the
// places of either phase, under weights that are one tap apart.
template <class Sums>
HWY_INLINE void AlongBlock(const Sums& sums, const PairRows& out, const int16_t* const rows[2],
                           size_t x) {
  const D16 d16;
  constexpr size_t kVectors = 2;
  const size_t lanes = hn::Lanes(D32());
  V32 of[2][2][kVectors];
  for (auto& row : of)
    for (auto& phase : row)
      for (V32& sum : phase) sum = sums.Half();
  const auto add = [&](ptrdiff_t k) KY_INLINE_ATTR {
    const V16 here[2] = {sums.WeightAt(0, k), sums.WeightAt(1, k)};
    for (size_t r = 0; r < 2; ++r)
      for (size_t v = 0; v < kVectors; ++v) {
        const V16 pairs = hn::LoadU(d16, rows[r] + x + 2 * static_cast<size_t>(k) + 2 * v * lanes);
        for (size_t p = 0; p < 2; ++p) Accumulate(pairs, here[p], of[r][p][v]);
      }
  };
  add(0);
  sums.ForOthers(add);
  const hn::RebindToUnsigned<D32> du;
  for (size_t p = 0; p < 2; ++p)
    for (size_t v = 0; v < kVectors; ++v)
      hn::StoreU(hn::BitCast(du, sums.Rounded(of[0][p][v], of[1][p][v])), du,
                 out.rows[0] + (p == 0 ? 0 : out.phase) + x / 2 + v * lanes);
}
template <int kCount>
void Along(const PairRows& out, size_t n, const int16_t* const rows[2],
           const WeightPairs weights[2]) {
  const WeighedSums<kCount, 8> sums(weights);
  for (size_t x = 0; x < n; x += 4 * hn::Lanes(D32())) AlongBlock(sums, out, rows, x);
}

// Four rows of results at a vector of places of either phase: store(row, results).
template <class Sums, class Store>
HWY_INLINE void AcrossVector(const Sums& sums, size_t x, const PairRows& in, const Store& store) {
  const hn::RebindToUnsigned<D32> du;
  const D16 d16;
  // The places of the even phase, and of the odd one, for each row.
  V32 even0 = sums.Half(), even1 = even0, even2 = even0, even3 = even0;
  V32 odd0 = even0, odd1 = even0, odd2 = even0, odd3 = even0;
  // The first pair of rows is that of the first two results alone, the last that of the others.
  const auto add = [&](ptrdiff_t k, auto toFirst, auto toOthers) KY_INLINE_ATTR {
    const uint32_t* const from = in.rows[k] + x / 2;
    const V16 even = hn::BitCast(d16, hn::LoadU(du, from));
    const V16 odd = hn::BitCast(d16, hn::LoadU(du, from + in.phase));
    if constexpr (toFirst) {
      V16 weight = sums.WeightAt(0, k);
      Accumulate(even, weight, even0);
      Accumulate(odd, weight, odd0);
      weight = sums.WeightAt(1, k);
      Accumulate(even, weight, even1);
      Accumulate(odd, weight, odd1);
    }
    if constexpr (toOthers) {
      V16 weight = sums.WeightAt(0, k - 1);
      Accumulate(even, weight, even2);
      Accumulate(odd, weight, odd2);
      weight = sums.WeightAt(1, k - 1);
      Accumulate(even, weight, even3);
      Accumulate(odd, weight, odd3);
    }
  };
  add(0, std::true_type(), std::false_type());
  sums.ForOthers([&](ptrdiff_t k) KY_INLINE_ATTR { add(k, std::true_type(), std::true_type()); });
  add(sums.count(), std::false_type(), std::true_type());
  store(0, sums.Rounded(even0, odd0));
  store(1, sums.Rounded(even1, odd1));
  store(2, sums.Rounded(even2, odd2));
  store(3, sums.Rounded(even3, odd3));
}
template <int kCount>
void Across(KyBW8* const out[4], size_t n, const PairRows& in, const WeightPairs weights[2]) {
  const WeighedSums<kCount, 22> sums(weights);
  const hn::Rebind<uint8_t, D16> d8;
  const size_t lanes = hn::Lanes(d8);
  size_t x = 0;
  const auto store = [&](int row, V16 levels)
                         KY_INLINE_ATTR { hn::StoreU(hn::DemoteTo(d8, levels), d8, out[row] + x); };
  for (; x + lanes <= n; x += lanes) AcrossVector(sums, x, in, store);
  if (x == n) return;
  const auto storePart = [&](int row, V16 levels) KY_INLINE_ATTR {
    StorePart(d8, hn::DemoteTo(d8, levels), out[row] + x, n - x);
  };
  AcrossVector(WeighedSums<0, 22>(weights), x, in, storePart);
}

#endif

constexpr GaussianKernels kKernels = {
    &Widen,
    {&Along<0>, &Along<3>, &Along<4>, &Along<5>, &Along<6>, &Along<7>, &Along<8>},
    {&Across<0>, &Across<3>, &Across<4>, &Across<5>, &Across<6>, &Across<7>, &Across<8>}};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(GaussianKernels)
