// The bounds that windows' results lie between. Included by row files like lanes-inl.h.
#if defined(KY_MORPHOLOGY_STRIP_BOUNDS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_MORPHOLOGY_STRIP_BOUNDS_INL_H_
#undef KY_MORPHOLOGY_STRIP_BOUNDS_INL_H_
#else
#define KY_MORPHOLOGY_STRIP_BOUNDS_INL_H_
#endif

#include <algorithm>

#include "foundation/registers-inl.h"
#include "morphology/strip_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
// The last lane of each block.
template <class DSum, class VSum>
HWY_INLINE VSum LastOfBlocks(DSum d, VSum v) {
  const hn::Repartition<uint8_t, DSum> d8;
  const hn::Repartition<uint16_t, DSum> d16;
  const auto places =
      sizeof(hn::TFromD<DSum>) == 1 ? hn::Set(d8, 15) : hn::BitCast(d8, hn::Set(d16, 0x0F0E));
  return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(d8, v), places));
}
// Every lane plus all before it; the last lane in all.
template <class DSum, class VSum>
HWY_INLINE VSum Accumulate(DSum d, VSum v) {
  if constexpr (sizeof(hn::TFromD<DSum>) == 1) v = hn::Add(v, hn::ShiftLeftBytes<1>(d, v));
  v = hn::Add(v, hn::ShiftLeftBytes<2>(d, v));
  v = hn::Add(v, hn::ShiftLeftBytes<4>(d, v));
  v = hn::Add(v, hn::ShiftLeftBytes<8>(d, v));
  if constexpr (kLanes == 32)
    v = hn::Add(v, LastOfBlocks(d, hn::ConcatLowerLower(d, v, hn::Zero(d))));
  return v;
}
template <class DSum, class VSum>
HWY_INLINE VSum BroadcastLast(DSum d, VSum v) {
  if constexpr (kLanes == 32) v = hn::ConcatUpperUpper(d, v, v);
  return LastOfBlocks(d, v);
}

// Of the bounds that no more pixels of a window are below than the rank: how many there are, and
// how many pixels are below the highest. In 8 bits, totals of columns wrap, but their differences
// are right.
HWY_INLINE void FindBounds(const RankStrip& strip, int rank, uint8_t* bounds, uint8_t* below) {
  const D d;
  uint8_t* const totals = below + strip.pitch + kLevels;
  const ptrdiff_t columns = strip.pitch, width = strip.width, size = 2 * strip.half + 1;
  const ptrdiff_t pitch = columns + 64;
  for (ptrdiff_t k = 0; k < RankStrip::kBounds; ++k) {
    const uint8_t* const counts = strip.below + k * columns;
    uint8_t* const total = totals + k * pitch;  // of the columns before the i-th
    total[0] = 0;
    auto carry = hn::Zero(d);
    for (ptrdiff_t x = 0; x < columns; x += kLanes) {
      const auto sum = Accumulate(d, hn::LoadU(d, counts + x));
      hn::StoreU(hn::Add(carry, sum), d, total + 1 + x);
      carry = hn::Add(carry, BroadcastLast(d, sum));
    }
  }
  const auto most = hn::Set(d, static_cast<uint8_t>(rank));
  for (ptrdiff_t x = 0; x < width; x += kLanes) {
    auto bound = hn::Zero(d), highest = hn::Zero(d);
    for (ptrdiff_t k = 0; k < RankStrip::kBounds; ++k) {
      const uint8_t* const total = totals + k * pitch + x;
      const auto count = hn::Sub(hn::LoadU(d, total + size), hn::LoadU(d, total));
      const auto isReached = hn::VecFromMask(d, hn::Eq(hn::Max(count, most), most));
      bound = hn::Sub(bound, isReached);
      highest = hn::Max(highest, hn::And(isReached, count));
    }
    StoreLanes(bound, bounds + x);
    hn::StoreU(highest, d, below + x);
  }
}

// Whole vectors are read.
HWY_INLINE uint64_t SumOfBytes(const uint8_t* from, ptrdiff_t n) {
  const D d;
  const ptrdiff_t rest = n % kLanes;
  const V last = hn::LoadU(d, from + n - rest);
  auto sums = hn::SumsOf8(hn::IfThenElseZero(hn::FirstN(d, static_cast<size_t>(rest)), last));
  for (ptrdiff_t i = 0; i + kLanes <= n; i += kLanes)
    sums = hn::Add(sums, hn::SumsOf8(hn::LoadU(d, from + i)));
  return hn::GetLane(hn::SumOfLanes(hn::Repartition<uint64_t, D>(), sums));
}

// The same in 16 bits, for some windows side by side. Their results lie between few bounds, mostly
// the same ones as in the row above: only these are looked at, down to one that all windows reach
// and up to one that none reaches.
class BoundsOfWindows {
 public:
  static constexpr ptrdiff_t kVectors = 2, kCount = kVectors * kLanes;

  // `least` and `greatest` are the windows' numbers of bounds, before the call those of the row
  // above.
  HWY_INLINE void Find(const RankStrip& strip, int rank, ptrdiff_t x, uint8_t& least,
                       uint8_t& greatest) {
    for (ptrdiff_t i = 0; i < kVectors; ++i) {
      bounds_[i] = hn::Zero(D());
      even_[i] = odd_[i] = hn::Zero(d);
    }
    ptrdiff_t first = std::max(least - 1, 0), byAll = 0, byAny = 0;
    ptrdiff_t end = std::min<ptrdiff_t>(greatest + 1, RankStrip::kBounds);
    const auto reach = [&](ptrdiff_t k) KY_INLINE_ATTR {
      Reach(strip.below + k * strip.pitch + x, 2 * strip.half + 1, rank, byAll, byAny);
    };
    for (ptrdiff_t k = first; k < end; ++k) reach(k);
    while (first > 0 && byAll == 0) reach(--first);
    while (end < RankStrip::kBounds && byAny == end - first) reach(end++);
    least = static_cast<uint8_t>(first + byAll);
    greatest = static_cast<uint8_t>(first + byAny);
    for (V& bounds : bounds_) bounds = hn::Add(bounds, hn::Set(D(), static_cast<uint8_t>(first)));
  }
  HWY_INLINE void Store(uint8_t* bounds, uint16_t* below) const {
    for (ptrdiff_t i = 0; i < kVectors; ++i) {
      hn::StoreU(bounds_[i], D(), bounds + i * kLanes);
      auto lower = hn::InterleaveLower(d, even_[i], odd_[i]);
      auto upper = hn::InterleaveUpper(d, even_[i], odd_[i]);
      if constexpr (kLanes == 32) {
        const auto blocks = lower;
        lower = hn::ConcatLowerLower(d, upper, blocks);
        upper = hn::ConcatUpperUpper(d, upper, blocks);
      }
      hn::StoreU(lower, d, below + i * kLanes);
      hn::StoreU(upper, d, below + i * kLanes + kLanes / 2);
    }
  }

 private:
  static constexpr hn::Repartition<uint16_t, D> d{};
  using VSum = hn::Vec<hn::Repartition<uint16_t, D>>;

  // Takes one more bound, by the counts of the columns from the first window's on.
  HWY_INLINE void Reach(const uint8_t* columns, ptrdiff_t size, int rank, ptrdiff_t& byAll,
                        ptrdiff_t& byAny) {
    const hn::RebindToSigned<decltype(d)> di;
    const auto most = hn::Set(d, static_cast<uint16_t>(rank));
    auto first = hn::Set(d, static_cast<uint16_t>(SumOfBytes(columns, size)));
    auto all = hn::Not(hn::Zero(d)), any = hn::Zero(d);
    for (ptrdiff_t i = 0; i < kVectors; ++i) {
      const uint8_t* const at = columns + i * kLanes;
      // From one count to the next one, and from one at an even place to the next such.
      const auto steps = hn::BitCast(di, hn::Sub(hn::LoadU(D(), at + size), hn::LoadU(D(), at)));
      const auto fromEven = hn::BitCast(d, hn::ShiftRight<8>(hn::ShiftLeft<8>(steps)));
      const auto both = hn::Add(fromEven, hn::BitCast(d, hn::ShiftRight<8>(steps)));
      const auto sums = Accumulate(d, both);
      const auto even = hn::Add(first, hn::Sub(sums, both)), odd = hn::Add(even, fromEven);
      first = hn::Add(first, BroadcastLast(d, sums));
      const auto evenReached = hn::VecFromMask(d, hn::Eq(hn::Max(even, most), most));
      const auto oddReached = hn::VecFromMask(d, hn::Eq(hn::Max(odd, most), most));
      even_[i] = hn::Max(even_[i], hn::And(evenReached, even));
      odd_[i] = hn::Max(odd_[i], hn::And(oddReached, odd));
      bounds_[i] = hn::Sub(
          bounds_[i], hn::OddEven(hn::BitCast(D(), oddReached), hn::BitCast(D(), evenReached)));
      all = hn::And(all, hn::And(evenReached, oddReached));
      any = hn::Or(any, hn::Or(evenReached, oddReached));
    }
    byAll += hn::AllTrue(d, hn::MaskFromVec(all));
    byAny += !hn::AllFalse(d, hn::MaskFromVec(any));
  }

  V bounds_[kVectors];
  VSum even_[kVectors], odd_[kVectors];
};
HWY_INLINE void FindBounds(const RankStrip& strip, int rank, uint8_t* bounds, uint16_t* below) {
  uint8_t* range = strip.ranges;
  for (ptrdiff_t x = 0; x < strip.width; x += BoundsOfWindows::kCount, range += 2) {
    BoundsOfWindows windows;
    windows.Find(strip, rank, x, range[0], range[1]);
    windows.Store(bounds + x, below + x);
  }
}
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
