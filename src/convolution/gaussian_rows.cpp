#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/gaussian_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/gaussian_rows.h"

#include "foundation/dispatch.h"
#include "foundation/registers-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/widen-inl.h"
#include "foundation/window_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Twice a sum along rows has 16 bits after units of 1/128 level, twice one along columns 23 bits
// after levels; one less where the weights add up to 2^14.
constexpr int kAlongBits = 16, kAcrossBits = 23;
// Rounds to such units, and adds half a level, with which the sums along columns need no rounding.
constexpr int32_t kHalves = (1 << 15) + (64 << 16);

#if HWY_TARGET == HWY_SCALAR

int32_t Lower(int32_t pair) { return static_cast<int16_t>(pair); }
int32_t Upper(int32_t pair) { return pair >> 16; }
int32_t PairOf(int32_t lower, int32_t upper) {
  return static_cast<int32_t>((static_cast<uint32_t>(lower) & 0xFFFF) | static_cast<uint32_t>(upper)
                                                                            << 16);
}

// Twice the sums at two neighbours. pairs(k, true) is a pair of places before them, and
// pairs(k, false) what mirrors it.
class Sums {
 public:
  template <class Pairs>
  Sums(const WeightPairs& weights, const Pairs& pairs) {
    for (ptrdiff_t k = 0; k < weights.count; ++k) {
      const int32_t before = pairs(k, true), after = pairs(k, false);
      const int32_t sum = *weights.Sums(k), difference = *weights.Differences(k);
      ofSums_ += Lower(sum) * (Lower(before) + Lower(after));
      ofSums_ += Upper(sum) * (Upper(before) + Upper(after));
      ofDifferences_ += Lower(difference) * (Lower(before) - Lower(after));
      ofDifferences_ += Upper(difference) * (Upper(before) - Upper(after));
    }
  }
  int32_t First() const { return ofSums_ + ofDifferences_; }
  int32_t Second() const { return ofSums_ - ofDifferences_; }

 private:
  int32_t ofSums_ = 0, ofDifferences_ = 0;
};

void Widen(int16_t* places, int16_t* swapped, const Margins& margins, size_t n, const KyBW8* in) {
  for (size_t x = 0; x < margins.before + n + margins.after; ++x) {
    const size_t at = x < margins.before ? 0 : HWY_MIN(x - margins.before, n - 1);
    places[x] = swapped[x ^ 1] = static_cast<int16_t>((in[at] - 128) * 128);
  }
}

template <int>
void Along(const PairRows& out, size_t n, const WideRow rows[2], const WeightPairs& weights) {
  const int missing = 15 - weights.bits;
  for (size_t x = 0; x < n; x += 2) {
    int32_t first[2], second[2];
    for (int r = 0; r < 2; ++r) {
      const Sums sums(weights, [&](ptrdiff_t k, bool before) {
        const int16_t* const at =
            (before ? rows[r].Before(weights.count, k) : rows[r].After(weights.count, k)) + x;
        return PairOf(at[0], at[1]);
      });
      first[r] = (sums.First() + (kHalves >> missing)) >> (kAlongBits - missing);
      second[r] = (sums.Second() + (kHalves >> missing)) >> (kAlongBits - missing);
    }
    out.Places(0, 0)[x / 2] = PairOf(first[0], first[1]);
    out.Places(0, 1)[x / 2] = PairOf(second[0], second[1]);
  }
}

template <int>
void Across(KyBW8* const out[2], size_t n, const PairRows& in, const WeightPairs& weights) {
  const int shift = kAcrossBits - (15 - weights.bits);
  for (size_t x = 0; x < n; ++x) {
    const Sums sums(weights, [&](ptrdiff_t k, bool before) {
      const int32_t pair =
          in.Places(before ? weights.count - 1 - k : weights.count + k, x % 2)[x / 2];
      return before ? pair : PairOf(Upper(pair), Lower(pair));
    });
    out[0][x] = static_cast<KyBW8>((sums.First() >> shift) + 128);
    out[1][x] = static_cast<KyBW8>((sums.Second() >> shift) + 128);
  }
}

#else

// The products of the lanes, the two of each pair of lanes added up.
template <class V, class D = hn::RepartitionToWide<hn::DFromV<V> > >
HWY_INLINE hn::Vec<D> Products(V lanes, V weights) {
  const D d;
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  auto unused = hn::Zero(d);
  return hn::ReorderWidenMulAccumulate(d, lanes, weights, hn::Zero(d), unused);
#else
  const auto pairs = hn::BitCast(d, lanes), factors = hn::BitCast(d, weights);
  const auto lower = [](auto v) HWY_ATTR { return hn::ShiftRight<16>(hn::ShiftLeft<16>(v)); };
  return hn::Add(hn::Mul(lower(pairs), lower(factors)),
                 hn::Mul(hn::ShiftRight<16>(pairs), hn::ShiftRight<16>(factors)));
#endif
}
// sum += Products(lanes, weights)
template <class V, class Sum>
HWY_INLINE void Accumulate(V lanes, V weights, Sum& sum) {
#if HWY_TARGET == HWY_AVX3_DL
  __asm__("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(lanes.raw), "vm"(weights.raw));
#elif HWY_TARGET == HWY_AVX2
  // Left to itself, g++ multiplies first and adds later, for which there are not enough registers.
  Sum products;
  __asm__("vpmaddwd %3, %2, %1\n\tvpaddd %1, %0, %0"
          : "+x"(sum.raw), "=&x"(products.raw)
          : "x"(lanes.raw), "xm"(weights.raw));
#else
  sum = hn::Add(sum, Products(lanes, weights));
#endif
}

// Weights of kCount pairs, which are unrolled, or, where that is 0, of any number.
template <class D, int kCount>
class Weighing {
  using D32 = hn::RepartitionToWide<D>;
  using V16 = hn::Vec<D>;
  using V32 = hn::Vec<D32>;

 public:
  HWY_INLINE explicit Weighing(const WeightPairs& weights) : weights_(weights) {
    if constexpr (kCount > 0)
      ForEach<kCount>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
        sums_[k] = Dup(weights_.Sums(k));
        differences_[k] = Dup(weights_.Differences(k));
      });
  }
  HWY_INLINE ptrdiff_t count() const { return kCount > 0 ? kCount : weights_.count; }
  // f(whether this is the first pair, k, the weights of sums, those of differences)
  template <class F>
  HWY_INLINE void ForPairs(const F& f) const {
    if constexpr (kCount > 0) {
      ForEach<kCount>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
        f(std::bool_constant<k == 0>(), k, sums_[k], differences_[k]);
      });
    } else {
      f(std::true_type(), 0, Dup(weights_.Sums(0)), Dup(weights_.Differences(0)));
      for (ptrdiff_t k = 1; k < count(); ++k)
        f(std::false_type(), k, Dup(weights_.Sums(k)), Dup(weights_.Differences(k)));
    }
  }
  // Two sums without their kBits lowest bits, or one less, as the lower and the upper halves of
  // lanes.
  template <int kBits>
  HWY_INLINE V16 Shifted(V32 lower, V32 upper) const {
    const D d;
    if constexpr (kCount == 0) {
      const int bits = kBits - 15 + weights_.bits;
      lower = hn::ShiftRightSame(lower, bits);
      upper = hn::ShiftLeft<16>(hn::ShiftRightSame(upper, bits));
    } else {
      lower = hn::ShiftRight<kBits>(lower);
      if constexpr (kBits > 16) upper = hn::ShiftRight<kBits - 16>(upper);
    }
    return hn::OddEven(hn::BitCast(d, upper), hn::BitCast(d, lower));
  }
  HWY_INLINE V32 Halves() const {
    return hn::Set(D32(), kCount > 0 ? kHalves : kHalves >> (15 - weights_.bits));
  }

 private:
  HWY_INLINE static V16 Dup(const int32_t* pair) {
    return hn::BitCast(D(), hn::LoadDup128(D32(), pair));
  }
  const WeightPairs weights_;
  V16 sums_[HWY_MAX(kCount, 1)], differences_[HWY_MAX(kCount, 1)];
};

// The two of each pair of lanes swapped.
template <class V>
HWY_INLINE V Swapped(V v) {
  const hn::DFromV<V> d;
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  return hn::Reverse2(d, v);
#else
  const hn::Repartition<uint8_t, decltype(d)> d8;
  alignas(16) static constexpr uint8_t kPlaces[16] = {2,  3,  0, 1, 6,  7,  4,  5,
                                                      10, 11, 8, 9, 14, 15, 12, 13};
  return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(d8, v), hn::LoadDup128(d8, kPlaces)));
#endif
}

// Twice the sums at two neighbours. Take adds pairs of places before them, and what mirrors these.
template <class D>
class TwoSums {
  using V16 = hn::Vec<D>;
  using V32 = hn::Vec<hn::RepartitionToWide<D> >;

 public:
  template <bool kFirst>
  HWY_INLINE void Take(std::bool_constant<kFirst>, V16 before, V16 after, V16 sums,
                       V16 differences) {
    before = Pinned(before);
    after = Pinned(after);
    const V16 sum = hn::Add(before, after), difference = hn::Sub(before, after);
    if constexpr (kFirst) {
      ofSums_ = Products(sum, sums);
      ofDifferences_ = Products(difference, differences);
    } else {
      Accumulate(sum, sums, ofSums_);
      Accumulate(difference, differences, ofDifferences_);
    }
  }
  // Adds `halves` to both.
  HWY_INLINE void Add(V32 halves) { ofSums_ = hn::Add(ofSums_, halves); }
  HWY_INLINE V32 First() const { return hn::Add(ofSums_, ofDifferences_); }
  HWY_INLINE V32 Second() const { return hn::Sub(ofSums_, ofDifferences_); }

 private:
  V32 ofSums_, ofDifferences_;
};

void Widen(int16_t* places, int16_t* swapped, const Margins& margins, size_t n, const KyBW8* in) {
  const D16 d;
  const size_t lanes = hn::Lanes(d);
  const auto put = [&](size_t at, V16 v) HWY_ATTR {
    const V16 centered = hn::Sub(hn::ShiftLeft<7>(v), hn::Set(d, 128 << 7));
    hn::StoreU(centered, d, places + at);
    hn::StoreU(Swapped(centered), d, swapped + at);
  };
  const auto fill = [&](size_t from, size_t to, KyBW8 level) HWY_ATTR {
    for (; from < to; from += lanes) put(from, hn::Set(d, level));
  };
  // Pairs begin at even places. Where margins end within a pair, both are the same.
  const size_t odd = margins.before % 2, end = margins.before + n;
  fill(0, margins.before, in[0]);
  const KyBW8* const from = in + odd;
  const size_t pairs = n > odd ? (n - odd) / 2 * 2 : 0;
  const size_t first = margins.before + odd;
  const hn::Rebind<uint8_t, D16> d8;
  const auto widen = [&](size_t x)
                         HWY_ATTR { put(first + x, hn::PromoteTo(d, hn::LoadU(d8, from + x))); };
  size_t x = 0;
  for (; x + lanes <= pairs; x += lanes) widen(x);
  if (x < pairs && pairs >= lanes) widen(pairs - lanes);
  if (pairs < lanes && pairs > 0) put(first, hn::PromoteTo(d, LoadPart(d8, from, pairs)));
  fill(first + pairs, end + margins.after, in[n - 1]);
}

// Windows along rows begin anywhere: longer vectors would all cross lines of the cache.
using DAlong = hn::CappedTag<int16_t, 16>;

template <int kCount>
void Along(const PairRows& out, size_t n, const WideRow rows[2], const WeightPairs& weights) {
  using D = DAlong;
  using V16 = hn::Vec<D>;
  using V32 = hn::Vec<hn::RepartitionToWide<D> >;
  const Weighing<D, kCount> weighing(weights);
  const D d;
  const hn::RepartitionToWide<D> d32;
  const size_t lanes = hn::Lanes(d);
  const V32 halves = weighing.Halves();
  const WideRow above = rows[0], below = rows[1];
  int32_t* const places[2] = {out.Places(0, 0), out.Places(0, 1)};
  for (size_t x = 0; x < n; x += 2 * lanes) {
    // Two vectors of the upper row, and two of the lower one.
    TwoSums<D> a0, a1, b0, b1;
    weighing.ForPairs([&](auto first, ptrdiff_t k, V16 sums, V16 differences) KY_INLINE_ATTR {
      const auto take = [&](TwoSums<D>& two, const WideRow& row, size_t at) KY_INLINE_ATTR {
        two.Take(first, hn::LoadU(d, row.Before(weighing.count(), k) + at),
                 hn::LoadU(d, row.After(weighing.count(), k) + at), sums, differences);
      };
      take(a0, above, x);
      take(a1, above, x + lanes);
      take(b0, below, x);
      take(b1, below, x + lanes);
    });
    const auto store = [&](size_t at, TwoSums<D>& a, TwoSums<D>& b) KY_INLINE_ATTR {
      a.Add(halves);
      b.Add(halves);
      const auto put = [&](int32_t* to, V32 lower, V32 upper) KY_INLINE_ATTR {
        const V16 pairs = weighing.template Shifted<kAlongBits>(lower, upper);
        hn::StoreU(hn::BitCast(d32, pairs), d32, to + at);
      };
      put(places[0], a.First(), b.First());
      put(places[1], a.Second(), b.Second());
    };
    store(x / 2, a0, b0);
    store((x + lanes) / 2, a1, b1);
  }
}

// The places of a pair of rows above results, and of the one that mirrors it.
struct PairAt {
  const int32_t *before, *after;
};

template <int kCount>
void Across(KyBW8* const out[2], size_t n, const PairRows& in, const WeightPairs& weights) {
  const Weighing<D16, kCount> weighing(weights);
  const D8 d8;
  const hn::RebindToSigned<D8> signed8;
  const D16 d;
  const size_t lanes = hn::Lanes(d);
  const auto pairAt = [&](ptrdiff_t k) KY_INLINE_ATTR {
    return PairAt{in.Places(weighing.count() - 1 - k, 0), in.Places(weighing.count() + k, 0)};
  };
  PairAt pairs[HWY_MAX(kCount, 1)];
  for (ptrdiff_t k = 0; k < kCount; ++k) pairs[k] = pairAt(k);
  const ptrdiff_t phase = in.phase, next = static_cast<ptrdiff_t>(lanes / 2);
  KyBW8* const to[2] = {out[0], out[1]};
  for (size_t x = 0; x < n; x += 2 * lanes) {
    // The even and the odd places of a vector, and those of the next.
    TwoSums<D16> a0, a1, b0, b1;
    weighing.ForPairs([&](auto first, ptrdiff_t k, V16 sums, V16 differences) KY_INLINE_ATTR {
      const PairAt at = kCount > 0 ? pairs[k] : pairAt(k);
      const auto take = [&](TwoSums<D16>& two, ptrdiff_t offset) KY_INLINE_ATTR {
        const auto load = [&](const int32_t* from) KY_INLINE_ATTR {
          return hn::BitCast(d, hn::LoadU(D32(), from + x / 2 + offset));
        };
        two.Take(first, load(at.before), Swapped(load(at.after)), sums, differences);
      };
      take(a0, 0);
      take(a1, phase);
      take(b0, next);
      take(b1, phase + next);
    });
    const auto store = [&](KyBW8* row, V16 a, V16 b) KY_INLINE_ATTR {
      const auto centered = hn::BitCast(d8, NarrowInOrder(signed8, a, b));
      const auto levels = hn::Xor(centered, hn::Set(d8, 128));
      if (x + 2 * lanes <= n)
        hn::StoreU(levels, d8, row + x);
      else
        StorePart(d8, levels, row + x, n - x);
    };
    const auto shifted = [&](V32 even, V32 odd) KY_INLINE_ATTR {
      return weighing.template Shifted<kAcrossBits>(even, odd);
    };
    store(to[0], shifted(a0.First(), a1.First()), shifted(b0.First(), b1.First()));
    store(to[1], shifted(a0.Second(), a1.Second()), shifted(b0.Second(), b1.Second()));
  }
}

#endif

constexpr GaussianKernels kKernels = {
    &Widen,
    {&Along<0>, &Along<2>, &Along<3>, &Along<4>, &Along<5>, &Along<6>, &Along<7>, &Along<8>},
    {&Across<0>, &Across<2>, &Across<3>, &Across<4>, &Across<5>, &Across<6>, &Across<7>,
     &Across<8>}};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(GaussianKernels)
