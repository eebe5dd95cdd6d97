#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/rank_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/rank_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// 16 counts as vectors. They may wrap on the way.
template <class Count>
struct Counts {
  using D = hn::CappedTag<Count, 16>;
  static constexpr ptrdiff_t kLanes = hn::MaxLanes(D()), kVectors = 16 / kLanes;
  hn::Vec<D> v[kVectors];

  HWY_INLINE explicit Counts(const Count* from) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v[k] = hn::LoadU(D(), from + k * kLanes);
  }
  HWY_INLINE void Add(const Counts& more) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v[k] = hn::Add(v[k], more.v[k]);
  }
  HWY_INLINE void Sub(const Counts& less) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v[k] = hn::Sub(v[k], less.v[k]);
  }
  HWY_INLINE void Put(Count* to) const {
    for (ptrdiff_t k = 0; k < kVectors; ++k) hn::StoreU(v[k], D(), to + k * kLanes);
  }
};

// What a pixel adds to cumulative counts: At(level) is `times` from the level on.
template <class Count>
class Stairs {
 public:
  explicit Stairs(Count times) {
    for (int level = 0; level < 16; ++level)
      for (int i = 0; i < 16; ++i) steps_[16 * level + i] = i < level ? Count{0} : times;
  }
  HWY_INLINE Counts<Count> At(int level) const { return Counts<Count>(steps_ + 16 * level); }

 private:
  HWY_ALIGN Count steps_[256];
};

// The fine counts that a pixel is among.
template <class Count>
HWY_INLINE Count* FineOf(Count* column, int pixel) {
  return column + 16 + 16 * (pixel >> 4);
}

template <class Count>
void Add(Count* columns, ptrdiff_t n, const KyBW8* row, Count times) {
  const Stairs<Count> stairs(times);
  const auto add = [&](Count* counts, int level) HWY_ATTR {
    Counts<Count> sum(counts);
    sum.Add(stairs.At(level));
    sum.Put(counts);
  };
  for (ptrdiff_t x = 0; x < n; ++x, columns += kColumnCounts) {
    add(columns, row[x] >> 4);
    add(FineOf(columns, row[x]), row[x] & 15);
  }
}

template <class Count>
void Slide(Count* columns, ptrdiff_t n, const KyBW8* leaving, const KyBW8* coming) {
  const Stairs<Count> stairs(1);
  for (ptrdiff_t x = 0; x < n; ++x, columns += kColumnCounts) {
    const int out = leaving[x], in = coming[x];
    Counts<Count> coarse(columns);
    coarse.Add(stairs.At(in >> 4));
    coarse.Sub(stairs.At(out >> 4));
    coarse.Put(columns);
    Counts<Count> up(FineOf(columns, in));
    up.Add(stairs.At(in & 15));
    up.Put(FineOf(columns, in));
    Counts<Count> down(FineOf(columns, out));
    down.Sub(stairs.At(out & 15));
    down.Put(FineOf(columns, out));
  }
}

// 16 sums of the counts of a window's columns, in signed lanes.
template <class Count, class Sum>
class Sums {
 public:
  using D = hn::CappedTag<Sum, 16>;
  using V = hn::Vec<D>;

  HWY_INLINE Sums() { Set(0); }
  HWY_INLINE void Set(Sum value) {
    for (V& v : v_) v = hn::Set(D(), value);
  }
  HWY_INLINE void Add(const Count* counts) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v_[k] = hn::Add(v_[k], Load(counts, k));
  }
  HWY_INLINE void Sub(const Count* counts) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v_[k] = hn::Sub(v_[k], Load(counts, k));
  }
  // The same many times. Sums wrap on the way.
  void Add(const Count* counts, int64_t times) {
    Sum sums[16];
    Put(sums);
    for (int i = 0; i < 16; ++i)
      sums[i] = static_cast<Sum>(static_cast<uint64_t>(sums[i]) +
                                 static_cast<uint64_t>(times) * counts[i]);
    Get(sums);
  }
  HWY_INLINE void Get(const Sum* from) {
    for (ptrdiff_t k = 0; k < kVectors; ++k) v_[k] = hn::LoadU(D(), from + k * kLanes);
  }
  HWY_INLINE void Put(Sum* to) const {
    for (ptrdiff_t k = 0; k < kVectors; ++k) hn::StoreU(v_[k], D(), to + k * kLanes);
  }
  // How many are below 0, after `more` has been added.
  HWY_INLINE size_t CountNegative() const {
    size_t count = 0;
    for (const V& v : v_) count += hn::CountTrue(D(), hn::Lt(v, hn::Zero(D())));
    return count;
  }
  HWY_INLINE size_t CountNegative(Sum more) const {
    size_t count = 0;
    for (const V& v : v_)
      count += hn::CountTrue(D(), hn::Lt(hn::Add(v, hn::Set(D(), more)), hn::Zero(D())));
    return count;
  }

 private:
  static constexpr ptrdiff_t kLanes = hn::MaxLanes(D()), kVectors = 16 / kLanes;

  HWY_INLINE static V Load(const Count* counts, ptrdiff_t k) {
    const hn::RebindToUnsigned<D> unsignedD;
    const hn::Rebind<Count, D> narrow;
    return hn::BitCast(D(), hn::PromoteTo(unsignedD, hn::LoadU(narrow, counts + k * kLanes)));
  }

  V v_[kVectors];
};

// The counts at one place of all columns, those of the whole window.
template <class Count, class Sum>
HWY_INLINE void AddWindow(Sums<Count, Sum>& sums, const Count* counts, ptrdiff_t step,
                          const RankWindows& windows, ptrdiff_t x) {
  const ptrdiff_t last = windows.columns - 1, half = windows.half;
  for (ptrdiff_t i = std::max<ptrdiff_t>(x - half, 0); i <= std::min(x + half, last); ++i)
    sums.Add(counts + i * step);
  if (x < half) sums.Add(counts, half - x);
  if (x + half > last) sums.Add(counts + last * step, x + half - last);
}

// The level's upper bits are the number of coarse sums that are at most the rank, and its lower
// bits the number of fine ones. The coarse sums start at -1 - rank, so that such sums are those
// below 0. Fine sums are kept for each upper level, and brought to the present window when that is
// met again.
template <class Count, class Sum>
void Run(const Count* columns, const RankWindows& windows, KyBW8* out) {
  const ptrdiff_t step = kColumnCounts * windows.step, half = windows.half;
  const ptrdiff_t end = windows.end, outStep = windows.step;  // out may point anywhere
  const Count* const last = columns + (windows.columns - 1) * step;
  Sum kept[16][16];
  ptrdiff_t keptAt[16];
  std::fill_n(keptAt, 16, windows.first - half - 1);
  Sum before[17];  // what the fine sums of each upper level start from
  before[0] = static_cast<Sum>(-1 - windows.rank);
  Sums<Count, Sum> coarse, fine;
  coarse.Set(before[0]);
  AddWindow(coarse, columns, step, windows, windows.first);
  size_t present = 16;
  const auto bring = [&](size_t upper, ptrdiff_t x) HWY_ATTR {
    const Count* const counts = columns + 16 + 16 * upper;
    if (x - keptAt[upper] > half) {
      fine.Set(0);
      AddWindow(fine, counts, step, windows, x);
      return;
    }
    fine.Get(kept[upper]);
    for (ptrdiff_t i = keptAt[upper] + 1; i <= x; ++i) {
      fine.Add(counts + std::min(i + half, windows.columns - 1) * step);
      fine.Sub(counts + std::max<ptrdiff_t>(i - half - 1, 0) * step);
    }
  };
  // The column that comes to the window around the next x, and the one that leaves it.
  const Count* coming = columns + std::min(windows.first + half, windows.columns - 1) * step;
  const Count* leaving = columns + std::max<ptrdiff_t>(windows.first - half - 1, 0) * step;
  for (ptrdiff_t x = windows.first; x < end; ++x, out += outStep) {
    if (x > windows.first) {
      coming += coming < last ? step : 0;
      leaving += x - half - 1 > 0 ? step : 0;
      coarse.Add(coming);
      coarse.Sub(leaving);
    }
    coarse.Put(before + 1);
    const size_t upper = coarse.CountNegative();
    if (HWY_LIKELY(upper == present)) {
      fine.Add(coming + 16 + 16 * upper);
      fine.Sub(leaving + 16 + 16 * upper);
    } else {
      if (present < 16) {
        fine.Put(kept[present]);
        keptAt[present] = x - 1;
      }
      bring(upper, x);
      present = upper;
    }
    *out = static_cast<KyBW8>(16 * upper + fine.CountNegative(before[upper]));
  }
}

constexpr RankKernels kKernels = {
    {&Add<uint8_t>, &Slide<uint8_t>, &Run<uint8_t, int16_t>},
    {&Add<uint32_t>, &Slide<uint32_t>, &Run<uint32_t, int64_t>},
};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(RankKernels)
