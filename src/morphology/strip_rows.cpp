#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/strip_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/strip_rows.h"

#include <algorithm>
#include <cstring>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"
#include "foundation/registers-inl.h"
#include "morphology/strip_bounds-inl.h"
#include "morphology/strip_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
constexpr StripKernels kKernels = {};
#else
// Bytes less 128, which are compared as signed numbers.
using DSigned = hn::RebindToSigned<D>;
HWY_INLINE hn::Vec<DSigned> ToSigned(V v) {
  return hn::BitCast(DSigned(), hn::Xor(v, hn::Set(D(), 0x80)));
}
// All bits where pixels are below the k-th bound.
HWY_INLINE V IsBelow(hn::Vec<DSigned> pixels, int k) {
  const DSigned d;
  const auto bound = hn::Set(d, static_cast<int8_t>(kLevels * (k + 1) - 128));
  return hn::BitCast(D(), hn::VecFromMask(d, hn::Lt(pixels, bound)));
}

// What a pixel of each level adds to the counts: from the level on, all bits.
struct AllStairs {
  alignas(64) uint8_t steps[kLevels * kLevels];
};
constexpr AllStairs kStairs = [] {
  AllStairs stairs{};
  for (int level = 0; level < kLevels; ++level)
    for (int i = level; i < kLevels; ++i) stairs.steps[level * kLevels + i] = 0xFF;
  return stairs;
}();
// Those from the count `first` on. Vectors of all counts are compared instead, as it is loads that
// take the time.
HWY_INLINE V Stairs(const int8_t* level, ptrdiff_t first) {
  const hn::RebindToSigned<D> d;
  if constexpr (kLanes == kLevels)
    return hn::BitCast(D(), hn::VecFromMask(d, hn::Gt(hn::Iota(d, 1), hn::Set(d, *level))));
  else
    return hn::Load(D(), kStairs.steps + kLevels * ptrdiff_t{*level} + first);
}

// Where the counts of some columns that the pixels of a row are among begin, and the levels that
// the pixels have there. These are made first, for all columns at once; places in units of 8 bytes,
// so that 16 bits hold them.
class Places {
 public:
  static constexpr ptrdiff_t kColumns = 64;

  // Of n columns, up to whole vectors.
  HWY_INLINE void Make(const KyBW8* row, ptrdiff_t n, ptrdiff_t plane) {
    const D d;
    const hn::Repartition<uint16_t, D> d16;
    const hn::Rebind<uint8_t, decltype(d16)> half;
    const auto planes = hn::Set(d16, static_cast<uint16_t>(plane / kUnit));
    for (ptrdiff_t i = 0; i < n; i += kLanes) {
      const V level = hn::And(hn::LoadU(d, row + i), hn::Set(d, kLevels - 1));
      hn::Store(hn::BitCast(hn::RebindToSigned<D>(), level), hn::RebindToSigned<D>(), levels_ + i);
    }
    for (ptrdiff_t i = 0; i < n; i += hn::MaxLanes(d16)) {
      const auto bound = hn::ShiftRight<5>(hn::PromoteTo(d16, hn::LoadU(half, row + i)));
      const auto column = hn::Load(d16, kOfColumns.places + i);
      hn::Store(hn::Add(hn::Mul(bound, planes), column), d16, places_ + i);
    }
  }
  // Those of some columns from the given one on, in registers: loads would wait for what is stored
  // to other columns before them.
  static constexpr int kAtOnce = 8;
  struct Loaded {
    uint64_t fours[kAtOnce / 4];
  };
  HWY_INLINE Loaded Load(ptrdiff_t first) const {
    Loaded loaded;
    std::memcpy(&loaded, places_ + first, sizeof(loaded));
    return loaded;
  }
  // Calls change(counts, stairs) for these columns.
  template <class Change>
  HWY_INLINE void Update(uint8_t* columns, ptrdiff_t first, const Loaded& loaded,
                         const Change& change) const {
    const D d;
    ForEach<kAtOnce>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
      const auto place = static_cast<uint16_t>(loaded.fours[i / 4] >> (16 * (i % 4)));
      uint8_t* const counts = columns + kUnit * ptrdiff_t{place};
      for (ptrdiff_t k = 0; k < kLevels; k += kLanes) {
        const V stairs = Stairs(levels_ + first + i, k);
        hn::StoreU(change(hn::LoadU(d, counts + k), stairs), d, counts + k);
      }
    });
  }

 private:
  static constexpr ptrdiff_t kUnit = 8;
  struct OfColumns {
    alignas(64) uint16_t places[kColumns];
  };
  static constexpr OfColumns kOfColumns = [] {
    OfColumns columns{};
    for (ptrdiff_t i = 0; i < kColumns; ++i)
      columns.places[i] = static_cast<uint16_t>(i * RankStrip::kColumn / kUnit);
    return columns;
  }();

  HWY_ALIGN uint16_t places_[kColumns];
  HWY_ALIGN int8_t levels_[kColumns];
};

void Add(const RankStrip& strip, const KyBW8* row, uint8_t times) {
  const D d;
  const V factor = hn::Set(d, times);
  for (ptrdiff_t x = 0; x < strip.pitch; x += kLanes) {
    const auto pixels = ToSigned(hn::LoadU(d, row + x));
    ForEach<RankStrip::kBounds>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
      uint8_t* const below = strip.below + k * strip.pitch + x;
      hn::StoreU(hn::Add(hn::LoadU(d, below), hn::And(IsBelow(pixels, k), factor)), d, below);
    });
  }
  Places places;
  for (ptrdiff_t x = 0; x < strip.pitch; x += Places::kColumns) {
    const ptrdiff_t n = std::min(strip.pitch - x, Places::kColumns);
    places.Make(row + x, n, strip.plane);
    for (ptrdiff_t i = 0; i < n; i += Places::kAtOnce)
      places.Update(strip.histograms + x * RankStrip::kColumn, i, places.Load(i),
                    [=](V counts, V stairs)
                        HWY_ATTR { return hn::Add(counts, hn::And(stairs, factor)); });
  }
}

// The two rows change some columns each in turn: what one has stored takes a while to be read.
void Slide(const RankStrip& strip, const KyBW8* leaving, const KyBW8* coming) {
  const D d;
  for (ptrdiff_t x = 0; x < strip.pitch; x += kLanes) {
    const auto less = ToSigned(hn::LoadU(d, leaving + x));
    const auto more = ToSigned(hn::LoadU(d, coming + x));
    ForEach<RankStrip::kBounds>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
      uint8_t* const below = strip.below + k * strip.pitch + x;
      const V change = hn::Sub(IsBelow(less, k), IsBelow(more, k));
      hn::StoreU(hn::Add(hn::LoadU(d, below), change), d, below);
    });
  }
  Places from, to;
  for (ptrdiff_t x = 0; x < strip.pitch; x += Places::kColumns) {
    const ptrdiff_t n = std::min(strip.pitch - x, Places::kColumns);
    uint8_t* const columns = strip.histograms + x * RankStrip::kColumn;
    from.Make(leaving + x, n, strip.plane);
    to.Make(coming + x, n, strip.plane);
    for (ptrdiff_t i = 0; i < n; i += Places::kAtOnce) {
      const Places::Loaded ofFrom = from.Load(i), ofTo = to.Load(i);
      to.Update(columns, i, ofTo,
                [](V counts, V stairs) HWY_ATTR { return hn::Sub(counts, stairs); });
      from.Update(columns, i, ofFrom,
                  [](V counts, V stairs) HWY_ATTR { return hn::Add(counts, stairs); });
    }
  }
}

// The place of the first of a row's bounds that differs from the one at x.
HWY_INLINE ptrdiff_t EndOfRun(const uint8_t* bounds, ptrdiff_t x, ptrdiff_t width) {
  const D d;
  const V bound = hn::Set(d, bounds[x]);
  for (; x < width; x += kLanes) {
    const auto place = hn::FindFirstTrue(d, hn::Ne(hn::LoadU(d, bounds + x), bound));
    if (place >= 0) return std::min<ptrdiff_t>(x + place, width);
  }
  return width;
}

// Windows between the same two bounds follow each other mostly. Their sums are added up anew where
// others come between: branches that cannot be foreseen would take longer than a few columns. Of
// wide windows the sums between each two bounds are kept, and brought to the present window when
// these are met again.
//
// A run is gone through some windows at a time; those beyond its end belong to the next one, which
// comes to them again.
template <class Sum, bool kTwo = false>
void Run(const RankStrip& strip, int rank, uint8_t* work, KyBW8* results) {
  uint8_t *const bounds = work, *const levels = work + strip.pitch + kLevels;
  Sum* const below = reinterpret_cast<Sum*>(levels + strip.pitch + kLevels);
  FindBounds(strip, rank, bounds, below);
  constexpr ptrdiff_t kStep = RankStrip::kColumn, kAtOnce = RankStrip::kBeyond;
  const ptrdiff_t size = 2 * strip.half + 1;
  const size_t mostPassed = size <= 64 ? 0 : static_cast<size_t>(strip.half);
  HWY_ALIGN Sum kept[256 / kLevels][kLevels];
  ptrdiff_t keptAt[256 / kLevels];
  std::fill_n(keptAt, 256 / kLevels, -strip.half - 2);
  for (ptrdiff_t x = 0; x < strip.width;) {
    const uint8_t bound = bounds[x];
    const uint8_t* const columns = strip.histograms + bound * strip.plane;
    Sums<Sum> sums;
    const ptrdiff_t passed = x - 1 - keptAt[bound];
    if (static_cast<size_t>(passed) >= mostPassed) {  // or below 0
      sums.Set(Sums<Sum>::StartFor(rank));
      sums.Add(columns + (x - 1) * kStep, size, strip.rows);
    } else {
      sums.Get(kept[bound]);
      sums.Remove(columns + keptAt[bound] * kStep, passed, strip.rows);
      sums.Add(columns + (keptAt[bound] + size) * kStep, passed, strip.rows);
    }
    const uint8_t *leaving = columns + (x - 1) * kStep, *coming = leaving + size * kStep;
    const ptrdiff_t end = EndOfRun(bounds, x, strip.width);
    if constexpr (kTwo) {
      typename Sums<Sum>::Steps pending;
      for (V& v : pending) v = hn::Zero(D());
      for (; x < end; x += kAtOnce, leaving += kAtOnce * kStep, coming += kAtOnce * kStep)
        ForEach<kAtOnce / 2>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
          constexpr int i = 2 * k;
          sums.SlideTwo(leaving + i * kStep, coming + i * kStep, below + x + i, levels + x + i,
                        pending);
        });
      sums.MakeUpFor(pending);
    } else {
      for (; x < end; x += kAtOnce, leaving += kAtOnce * kStep, coming += kAtOnce * kStep)
        ForEach<kAtOnce>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
          sums.Slide(leaving + i * kStep, coming + i * kStep);
          levels[x + i] = static_cast<uint8_t>(sums.CountUpToRank(below[x + i]));
        });
    }
    if (mostPassed > 0) {
      sums.Put(kept[bound]);
      keptAt[bound] = x - 1;
    }
    x = end;
  }
  const D d;
  const hn::Repartition<uint16_t, D> d16;
  for (ptrdiff_t x = 0; x < strip.width; x += kLanes) {
    const auto first = hn::ShiftLeft<5>(hn::BitCast(d16, hn::LoadU(d, bounds + x)));  // up to 224
    hn::StoreU(hn::Add(hn::BitCast(d, first), hn::LoadU(d, levels + x)), d, results + x);
  }
}

// Windows of few rows two at a time.
void RunLarge(const RankStrip& strip, int rank, uint8_t* work, KyBW8* results) {
  if (Sums<uint16_t>::kPacks && strip.rows <= 63)
    Run<uint16_t, Sums<uint16_t>::kPacks>(strip, rank, work, results);
  else
    Run<uint16_t>(strip, rank, work, results);
}

constexpr StripKernels kKernels = {true, &Add, &Slide, &Run<uint8_t>, &RunLarge};
#endif

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(StripKernels)
