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

void Along(const PairRow& out, size_t n, const int16_t* const rows[2], const WeightPairs& weights) {
  const int shift = weights.bits - 7;
  const auto weighted = [&](const int16_t* at) {
    int32_t sum = 1 << (shift - 1);
    for (ptrdiff_t k = 0; k < weights.count; ++k)
      sum += Lower(weights.pairs[k]) * at[2 * k] + Upper(weights.pairs[k]) * at[2 * k + 1];
    return sum >> shift;
  };
  for (size_t x = 0; x < n; ++x) {
    const int32_t pair = weighted(rows[0] + x) | weighted(rows[1] + x) << 16;
    (x % 2 == 0 ? out.even : out.odd)[x / 2] = static_cast<uint32_t>(pair);
  }
}

void Across(KyBW8* const out[2], size_t n, const PairRow* in, const WeightPairs weights[2]) {
  for (int r = 0; r < 2; ++r) {
    const int shift = weights[r].bits + 7;
    for (size_t x = 0; x < n; ++x) {
      int32_t sum = 1 << (shift - 1);
      for (ptrdiff_t k = 0; k < weights[r].count; ++k) {
        const auto pair = static_cast<int32_t>((x % 2 == 0 ? in[k].even : in[k].odd)[x / 2]);
        sum += Lower(weights[r].pairs[k]) * Lower(pair) + Upper(weights[r].pairs[k]) * Upper(pair);
      }
      out[r][x] = static_cast<KyBW8>(sum >> shift);
    }
  }
}

#else

// What accumulators of a block of kVectors vectors each start with and end as.
template <size_t kVectors>
HWY_INLINE void AlongBlock(const PairRow& out, const int16_t* const rows[2],
                           const WeightPairs& weights, size_t x) {
  const D32 d;
  const D16 d16;
  const size_t lanes = hn::Lanes(d);
  const int shift = weights.bits - 7;
  // Of rows and phases: what lanes stand for is two places apart.
  V32 sums[2][2][kVectors];
  for (auto& row : sums)
    for (auto& phase : row)
      for (V32& sum : phase) sum = hn::Set(d, 1 << (shift - 1));
  for (ptrdiff_t k = 0; k < weights.count; ++k)
    for (size_t r = 0; r < 2; ++r)
      for (size_t p = 0; p < 2; ++p)
        for (size_t v = 0; v < kVectors; ++v)
          sums[r][p][v] = MulAddPairs(
              hn::LoadU(d16, rows[r] + x + 2 * static_cast<size_t>(k) + p + 2 * v * lanes),
              weights.pairs[k], sums[r][p][v]);
  const hn::RebindToUnsigned<D32> du;
  for (size_t p = 0; p < 2; ++p)
    for (size_t v = 0; v < kVectors; ++v) {
      const V32 first = hn::ShiftRightSame(sums[0][p][v], shift);
      const V32 second = hn::ShiftRightSame(sums[1][p][v], shift);
      const auto pairs = hn::BitCast(du, hn::Or(first, hn::ShiftLeft<16>(second)));
      hn::StoreU(pairs, du, (p == 0 ? out.even : out.odd) + x / 2 + v * lanes);
    }
}
void Along(const PairRow& out, size_t n, const int16_t* const rows[2], const WeightPairs& weights) {
  constexpr size_t kVectors = 2;
  for (size_t x = 0; x < n; x += 2 * kVectors * hn::Lanes(D32()))
    AlongBlock<kVectors>(out, rows, weights, x);
}

// The levels of two rows at a vector of places of either phase.
struct Levels {
  V32 of[2][2];
};
HWY_INLINE Levels LevelsAt(const PairRow* in, const WeightPairs weights[2], size_t i) {
  const D32 d;
  const int shift = weights[0].bits + 7;
  Levels sums;
  for (auto& row : sums.of)
    for (V32& sum : row) sum = hn::Set(d, 1 << (shift - 1));
  for (ptrdiff_t k = 0; k < weights[0].count; ++k)
    for (int p = 0; p < 2; ++p) {
      const hn::RebindToUnsigned<D32> du;
      const V16 pairs = hn::BitCast(D16(), hn::LoadU(du, (p == 0 ? in[k].even : in[k].odd) + i));
      for (int r = 0; r < 2; ++r)
        sums.of[r][p] = MulAddPairs(pairs, weights[r].pairs[k], sums.of[r][p]);
    }
  for (auto& row : sums.of)
    for (V32& sum : row) sum = hn::ShiftRightSame(sum, shift);
  return sums;
}
void Across(KyBW8* const out[2], size_t n, const PairRow* in, const WeightPairs weights[2]) {
  const D16 d16;
  const hn::Rebind<uint8_t, D16> d8;
  const size_t places = hn::Lanes(d16);
  for (size_t x = 0; x < n; x += places) {
    const Levels levels = LevelsAt(in, weights, x / 2);
    for (int r = 0; r < 2; ++r) {
      const V32 both = hn::Or(levels.of[r][0], hn::ShiftLeft<16>(levels.of[r][1]));
      const auto result = hn::DemoteTo(d8, hn::BitCast(d16, both));
      if (x + places <= n)
        hn::StoreU(result, d8, out[r] + x);
      else
        StorePart(d8, result, out[r] + x, n - x);
    }
  }
}

#endif

constexpr GaussianKernels kKernels = {&Widen, &Along, &Across};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(GaussianKernels)
