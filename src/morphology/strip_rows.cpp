#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/strip_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/strip_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Levels between two bounds, and so many counts. Vectors are of at most as many bytes.
constexpr int kLevels = 32;
using D = hn::CappedTag<uint8_t, kLevels>;
using V = hn::Vec<D>;
constexpr ptrdiff_t kLanes = hn::MaxLanes(D());

// What a pixel of each level adds to the counts: from the level on, all bits.
struct Stairs {
  alignas(64) uint8_t steps[256 * kLevels];
};
constexpr Stairs kStairs = [] {
  Stairs stairs{};
  for (int level = 0; level < 256; ++level)
    for (int i = level % kLevels; i < kLevels; ++i) stairs.steps[level * kLevels + i] = 0xFF;
  return stairs;
}();

// All bits where pixels are below the k-th bound.
HWY_INLINE V IsBelow(V pixels, ptrdiff_t k) {
  const D d;
  const V most = hn::Set(d, static_cast<uint8_t>(kLevels * (k + 1) - 1));
  return hn::VecFromMask(d, hn::Eq(hn::Max(pixels, most), most));
}

// Calls change(counts, stairs) for the counts of n columns that the pixels of a row are among.
// Their places are made first, for all columns at once.
template <class Change>
HWY_INLINE void ChangeCounts(uint8_t* columns, ptrdiff_t n, const KyBW8* row,
                             const Change& change) {
  const D d;
  for (; n > 0; n -= kLanes, row += kLanes) {
    HWY_ALIGN uint8_t blocks[kLanes];
    HWY_ALIGN uint16_t steps[kLanes];
    const V pixels = hn::LoadU(d, row);
    hn::StoreU(hn::And(pixels, hn::Set(d, 256 - kLevels)), d, blocks);
    const hn::CappedTag<uint16_t, kLevels / 2> d16;
    for (ptrdiff_t i = 0; i < kLanes; i += hn::MaxLanes(d16))
      hn::StoreU(hn::ShiftLeft<5>(LoadLanes(d16, row + i)), d16, steps + i);
    const ptrdiff_t end = std::min(n, kLanes);
    for (ptrdiff_t i = 0; i < end; ++i, columns += RankStrip::kColumn) {
      for (ptrdiff_t k = 0; k < kLevels; k += kLanes) {
        uint8_t* const counts = columns + blocks[i] + k;
        const V step = hn::LoadU(d, kStairs.steps + steps[i] + k);
        hn::StoreU(change(hn::LoadU(d, counts), step), d, counts);
      }
    }
  }
}

void Add(const RankStrip& strip, const KyBW8* row, uint8_t times) {
  const D d;
  const V factor = hn::Set(d, times);
  for (ptrdiff_t k = 0; k < RankStrip::kBounds; ++k)
    for (ptrdiff_t x = 0; x < strip.pitch; x += kLanes) {
      uint8_t* const below = strip.below + k * strip.pitch + x;
      const V more = hn::And(IsBelow(hn::LoadU(d, row + x), k), factor);
      hn::StoreU(hn::Add(hn::LoadU(d, below), more), d, below);
    }
  ChangeCounts(strip.histograms, strip.columns, row,
               [=](V counts, V step) HWY_ATTR { return hn::Add(counts, hn::And(step, factor)); });
}

// The two rows change some columns each in turn: what one has stored takes a while to be read.
void Slide(const RankStrip& strip, const KyBW8* leaving, const KyBW8* coming) {
  const D d;
  for (ptrdiff_t k = 0; k < RankStrip::kBounds; ++k)
    for (ptrdiff_t x = 0; x < strip.pitch; x += kLanes) {
      uint8_t* const below = strip.below + k * strip.pitch + x;
      const V less = IsBelow(hn::LoadU(d, leaving + x), k);
      const V more = IsBelow(hn::LoadU(d, coming + x), k);
      hn::StoreU(hn::Sub(hn::Add(hn::LoadU(d, below), less), more), d, below);
    }
  for (ptrdiff_t x = 0; x < strip.columns; x += kLevels) {
    const ptrdiff_t n = std::min<ptrdiff_t>(strip.columns - x, kLevels);
    uint8_t* const columns = strip.histograms + x * RankStrip::kColumn;
    ChangeCounts(columns, n, coming + x,
                 [](V counts, V step) HWY_ATTR { return hn::Sub(counts, step); });
    ChangeCounts(columns, n, leaving + x,
                 [](V counts, V step) HWY_ATTR { return hn::Add(counts, step); });
  }
}

// Every lane plus all before it; the last lane in all.
#if HWY_TARGET == HWY_SCALAR
HWY_INLINE V Accumulate(V v) { return v; }
HWY_INLINE V BroadcastLast(V v) { return v; }
#else
HWY_INLINE V LastOfBlocks(V v) { return hn::TableLookupBytes(v, hn::Set(D(), 15)); }
HWY_INLINE V Accumulate(V v) {
  const D d;
  v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<4>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<8>(d, v));
  if constexpr (kLanes == 32) v = hn::Add(v, LastOfBlocks(hn::ConcatLowerLower(d, v, hn::Zero(d))));
  return v;
}
HWY_INLINE V BroadcastLast(V v) {
  if constexpr (kLanes == 32) v = hn::ConcatUpperUpper(D(), v, v);
  return LastOfBlocks(v);
}
#endif

// Of the bounds that no more pixels of a window are below than the rank: how many there are, and
// how many pixels are below the highest. Totals of columns wrap, but their differences are right.
HWY_INLINE void FindBounds(const RankStrip& strip, int rank, uint8_t* bounds, uint8_t* below,
                           uint8_t* totals) {
  const D d;
  const ptrdiff_t pitch = strip.pitch + 64;
  for (ptrdiff_t k = 0; k < RankStrip::kBounds; ++k) {
    uint8_t* const total = totals + k * pitch;  // of the columns before the i-th
    total[0] = 0;
    V carry = hn::Zero(d);
    for (ptrdiff_t x = 0; x < strip.pitch; x += kLanes) {
      const V sum = hn::Add(carry, Accumulate(hn::LoadU(d, strip.below + k * strip.pitch + x)));
      hn::StoreU(sum, d, total + 1 + x);
      carry = BroadcastLast(sum);
    }
  }
  const V most = hn::Set(d, static_cast<uint8_t>(rank));
  for (ptrdiff_t x = 0; x < strip.width; x += kLanes) {
    V bound = hn::Zero(d), highest = hn::Zero(d);
    for (ptrdiff_t k = 0; k < RankStrip::kBounds; ++k) {
      const uint8_t* const total = totals + k * pitch + x;
      const V count = hn::Sub(hn::LoadU(d, total + 2 * strip.half + 1), hn::LoadU(d, total));
      const V isReached = hn::VecFromMask(d, hn::Eq(hn::Max(count, most), most));
      bound = hn::Sub(bound, isReached);
      highest = hn::Max(highest, hn::And(isReached, count));
    }
    hn::StoreU(bound, d, bounds + x);
    hn::StoreU(highest, d, below + x);
  }
}

// The sums of a window's counts between two bounds, and so much that those above the rank have
// their highest bit set.
class Sums {
 public:
  HWY_INLINE explicit Sums(const uint8_t* from) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v_[k] = hn::LoadU(D(), from + k * kLanes);
  }
  HWY_INLINE explicit Sums(uint8_t value) {
    for (V& v : v_) v = hn::Set(D(), value);
  }
  HWY_INLINE void Put(uint8_t* to) const {
    for (ptrdiff_t k = 0; k < kVectors; ++k) hn::StoreU(v_[k], D(), to + k * kLanes);
  }
  HWY_INLINE void Add(const uint8_t* coming) {
    for (ptrdiff_t k = 0; k < kVectors; ++k)
      v_[k] = hn::Add(v_[k], hn::LoadU(D(), coming + k * kLanes));
  }
  HWY_INLINE void Slide(const uint8_t* leaving, const uint8_t* coming) {
    for (ptrdiff_t k = 0; k < kVectors; ++k)
      v_[k] = hn::Add(v_[k], hn::Sub(hn::LoadU(D(), coming + k * kLanes),
                                     hn::LoadU(D(), leaving + k * kLanes)));
  }
  // How many are at most the rank, with so many pixels below.
  HWY_INLINE size_t CountUpTo(uint8_t below) const {
    const hn::RebindToSigned<D> d;
    size_t above = 0;
    for (const V& v : v_) {
      const auto sum = hn::BitCast(d, hn::Add(v, hn::Set(D(), below)));
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3  // only the highest bits count
      above += hn::CountTrue(d, hn::MaskFromVec(sum));
#else
      above += hn::CountTrue(d, hn::Lt(sum, hn::Zero(d)));
#endif
    }
    return kLevels - above;
  }

 private:
  static constexpr ptrdiff_t kVectors = kLevels / kLanes;
  V v_[kVectors];
};

// Windows between the same two bounds follow each other mostly. The sums of each two are kept, and
// brought to the present window when they are met again.
void Run(const RankStrip& strip, int rank, uint8_t* work, KyBW8* results) {
  uint8_t *const bounds = work, *const below = work + strip.pitch;
  FindBounds(strip, rank, bounds, below, below + strip.pitch);
  constexpr ptrdiff_t kStep = RankStrip::kColumn;
  const ptrdiff_t size = 2 * strip.half + 1;
  HWY_ALIGN uint8_t kept[256];
  ptrdiff_t keptAt[256 / kLevels];
  std::fill_n(keptAt, 256 / kLevels, -strip.half - 2);
  for (ptrdiff_t x = 0; x < strip.width;) {
    const uint8_t bound = bounds[x];
    const int level = kLevels * bound;
    const uint8_t* const columns = strip.histograms + level;
    Sums sums(static_cast<uint8_t>(127 - rank));
    if (x - keptAt[bound] > strip.half) {
      for (ptrdiff_t i = x - 1; i < x - 1 + size; ++i) sums.Add(columns + i * kStep);
    } else {
      sums = Sums(kept + level);
      for (ptrdiff_t i = keptAt[bound]; i < x - 1; ++i)
        sums.Slide(columns + i * kStep, columns + (i + size) * kStep);
    }
    const uint8_t *leaving = columns + (x - 1) * kStep, *coming = leaving + size * kStep;
    do {
      sums.Slide(leaving, coming);
      leaving += kStep, coming += kStep;
      results[x] = static_cast<KyBW8>(static_cast<size_t>(level) + sums.CountUpTo(below[x]));
      ++x;
    } while (x < strip.width && bounds[x] == bound);
    sums.Put(kept + level);
    keptAt[bound] = x - 1;
  }
}

constexpr StripKernels kKernels = {HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128, &Add,
                                   &Slide, &Run};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(StripKernels)
