#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/rolling_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/rolling_rows.h"

#include <algorithm>
#include <type_traits>

#include "convolution/local_thresholds-inl.h"
#include "foundation/dispatch.h"
#include "foundation/registers-inl.h"
#include "foundation/shifts-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/window_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Pixels of a row of which n are left.
HWY_INLINE hn::Vec<D8> LoadSome(const KyBW8* from, size_t n) {
  const D8 d;
  return HWY_LIKELY(n >= hn::Lanes(d)) ? hn::LoadU(d, from) : LoadPart(d, from, n);
}
HWY_INLINE void StoreSome(hn::Vec<D8> v, KyBW8* to, size_t n) {
  const D8 d;
  if (HWY_LIKELY(n >= hn::Lanes(d)))
    hn::StoreU(v, d, to);
  else
    StorePart(d, v, to, n);
}

#if HWY_TARGET == HWY_SCALAR

void SumChanges(RowSums sums, size_t n, size_t margin, bool nearest, const KyBW8* entering,
                const KyBW8* leaving) {
  const auto width = static_cast<ptrdiff_t>(n), beyond = static_cast<ptrdiff_t>(margin);
  // Wraps in long rows: differences of sums are what counts.
  auto sum =
      static_cast<uint32_t>(nearest ? static_cast<int>(margin) * (leaving[0] - entering[0]) : 0);
  for (ptrdiff_t x = -beyond; x < width + beyond; ++x) {
    const ptrdiff_t place = std::clamp<ptrdiff_t>(x, 0, width - 1);
    if (nearest || place == x) sum += static_cast<uint32_t>(entering[place] - leaving[place]);
    *sums.At(x) = static_cast<uint16_t>(sum);
  }
}

// Calls put(x, levels from x on, n - x) for the levels of n windows.
template <class Put>
HWY_INLINE void RollLevels(size_t n, RowSums upTo, RowSums before, const KyBW8* above,
                           RowSums rests, const MeanDivision& division, const Put& put) {
  for (size_t i = 0; i < n; ++i) {
    const auto x = static_cast<ptrdiff_t>(i);
    uint16_t& rest = *rests.At(x);
    const auto sum = static_cast<int16_t>(*upTo.At(x) - *before.At(x) + rest);
    const int quotient = ((sum * division.factor >> 16) * division.round + (1 << 14)) >> 15;
    rest = static_cast<uint16_t>(sum - quotient * division.area);
    put(i, hn::Set(D8(), static_cast<KyBW8>(above[i] + quotient)), n - i);
  }
}

#else

using DU16 = hn::RebindToUnsigned<D16>;
using VU16 = hn::Vec<DU16>;

// to[i] = first + i step for n elements, and some more.
HWY_INLINE void StoreRamp(uint16_t* to, size_t n, int first, int step) {
  const DU16 d;
  const size_t lanes = hn::Lanes(d);
  const auto set = [&](int v) HWY_ATTR { return hn::Set(d, static_cast<uint16_t>(v)); };
  VU16 v = hn::Add(hn::Mul(hn::Iota(d, 0), set(step)), set(first));
  for (size_t i = 0; i < n; i += lanes) {
    hn::StoreU(v, d, to + i);
    v = hn::Add(v, set(step * static_cast<int>(lanes)));
  }
}
// sums(begin + i) = first + i step.
HWY_INLINE void StoreRamps(RowSums sums, ptrdiff_t begin, size_t n, int first, int step) {
  const RowSums from = sums.From(begin);
  for (int p = 0; p < 2; ++p) StoreRamp(from.of[p], (n + 1) / 2, first + p * step, 2 * step);
}

// The sums of the lanes up to each, after `before`, the sum of all lanes up to these: it moves on.
HWY_INLINE VU16 PrefixSums(VU16 v, VU16& before) {
  const DU16 d;
  const hn::Repartition<uint32_t, DU16> d32;
  v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<4>(d, v));
  constexpr size_t kLanes = hn::MaxLanes(d), kBlock = 8;
  const auto last = hn::BitCast(d, hn::Set(hn::RebindToUnsigned<D16>(), 0x0F0E));
  const VU16 blocks = hn::TableLookupBytes(v, last);
  if constexpr (kLanes == kBlock) {
    const VU16 sums = hn::Add(v, before);
    before = hn::Add(before, blocks);
    return sums;
  } else {
    const VU16 zero = hn::Zero(d);
    VU16 blocksBefore = After<kLanes - kBlock>(d, zero, blocks),
         upTo = hn::Add(blocks, blocksBefore);
    if constexpr (kLanes == 4 * kBlock) {
      upTo = hn::Add(upTo, After<kLanes - 2 * kBlock>(d, zero, upTo));
      blocksBefore = hn::Sub(upTo, blocks);
    }
    const VU16 sums = hn::Add(hn::Add(v, blocksBefore), before);
    const auto lastLane =
        hn::IndicesFromVec(d32, hn::Set(D32(), static_cast<int32_t>(hn::Lanes(d32) - 1)));
    before =
        hn::Add(before, hn::BitCast(d, hn::TableLookupLanes(hn::BitCast(d32, upTo), lastLane)));
    return sums;
  }
}

void SumChanges(RowSums sums, size_t n, size_t margin, bool nearest, const KyBW8* entering,
                const KyBW8* leaving) {
  const D8 d8;
  const DU16 d;
  const size_t lanes = hn::Lanes(d8);
  const int first = nearest ? entering[0] - leaving[0] : 0;
  const int last = nearest ? entering[n - 1] - leaving[n - 1] : 0;
  const auto width = static_cast<ptrdiff_t>(n), beyond = static_cast<ptrdiff_t>(margin);
  StoreRamps(sums, -beyond, margin, first * (1 - static_cast<int>(margin)), first);
  VU16 before = hn::Zero(d);
  for (size_t x = 0; x < n; x += lanes) {
    const auto in = LoadSome(entering + x, n - x), out = LoadSome(leaving + x, n - x);
    const VU16 odd =
        hn::Sub(hn::ShiftRight<8>(hn::BitCast(d, in)), hn::ShiftRight<8>(hn::BitCast(d, out)));
#if KY_HAVE_MUL_ADD_BYTES
    const auto ones = hn::Set(d8, 1);
    const VU16 both = hn::BitCast(d, hn::Sub(MulAddBytes(in, ones), MulAddBytes(out, ones)));
#else
    const VU16 lower = hn::Set(d, 0xFF);
    const VU16 even =
        hn::Sub(hn::And(hn::BitCast(d, in), lower), hn::And(hn::BitCast(d, out), lower));
    const VU16 both = hn::Add(even, odd);
#endif
    const VU16 second = PrefixSums(both, before);
    hn::StoreU(second, d, sums.of[1] + x / 2);
    hn::StoreU(hn::Sub(second, odd), d, sums.of[0] + x / 2);
  }
  StoreRamps(sums, width, margin, static_cast<int>(*sums.At(width - 1)) + last, last);
}

// Calls put(x, levels from x on, n - x) for the levels of n windows.
template <class Put>
HWY_INLINE void RollLevels(size_t n, RowSums upTo, RowSums before, const KyBW8* above,
                           RowSums rests, const MeanDivision& division, const Put& put) {
  const D8 d8;
  const DU16 du;
  const D16 d;
  const size_t lanes = hn::Lanes(d8);
  const V16 area = hn::Set(d, division.area), factor = hn::Set(d, division.factor);
  const V16 round = hn::Set(d, division.round);
  const auto quotient = [&](int p, size_t at) KY_INLINE_ATTR {
    const VU16 change = hn::Sub(hn::LoadU(du, upTo.of[p] + at), hn::LoadU(du, before.of[p] + at));
    uint16_t* const rest = rests.of[p] + at;
    const V16 sum = hn::BitCast(d, hn::Add(change, hn::LoadU(du, rest)));
    const V16 more = hn::MulFixedPoint15(hn::MulHigh(sum, factor), round);
    hn::StoreU(hn::BitCast(du, hn::Sub(sum, hn::Mul(more, area))), du, rest);
    return more;
  };
  for (size_t x = 0; x < n; x += lanes) {
    const V16 even = quotient(0, x / 2), odd = quotient(1, x / 2);
    const auto more = hn::OddEven(hn::BitCast(d8, hn::ShiftLeft<8>(odd)), hn::BitCast(d8, even));
    put(x, hn::Add(LoadSome(above + x, n - x), more), n - x);
  }
}

#endif

void Roll(KyBW8* out, size_t n, RowSums upTo, RowSums before, const KyBW8* above, RowSums rests,
          const MeanDivision& division) {
  RollLevels(n, upTo, before, above, rests, division,
             [&](size_t x, hn::Vec<D8> levels, size_t left)
                 KY_INLINE_ATTR { StoreSome(levels, out + x, left); });
}
void RollThresholds(KyBW8* out, size_t n, RowSums upTo, RowSums before, KyBW8* averages,
                    RowSums rests, const MeanDivision& division, const KyBW8* source,
                    const LocalThreshold& threshold) {
  const CompareOp op = {threshold.ToCompare()};
  const auto roll = [&](auto comparesSource) KY_INLINE_ATTR {
    RollLevels(n, upTo, before, averages, rests, division,
               [&](size_t x, hn::Vec<D8> levels, size_t left) KY_INLINE_ATTR {
                 StoreSome(levels, averages + x, left);
                 const auto pixels = LoadSome(source + x, left);
                 StoreSome(comparesSource ? op(D8(), pixels, levels) : op(D8(), levels, pixels),
                           out + x, left);
               });
  };
  if (threshold.ComparesSource())
    roll(std::true_type());
  else
    roll(std::false_type());
}

constexpr RollingKernels kKernels = {&SumChanges, &Roll, &RollThresholds, HWY_TARGET != HWY_SCALAR};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(RollingKernels)
