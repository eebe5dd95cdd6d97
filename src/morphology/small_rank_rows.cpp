#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/small_rank_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/small_rank_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using V8 = hn::Vec<D8>;

// Networks are written whole. What nobody takes of their results is not computed.
HWY_INLINE void Sort2(V8& a, V8& b) {
  const V8 least = hn::Min(a, b);
  b = hn::Max(a, b);
  a = least;
}
HWY_INLINE void Sort3(V8& a, V8& b, V8& c) {
  Sort2(a, b);
  Sort2(b, c);
  Sort2(a, b);
}
HWY_INLINE V8 Median3(V8 a, V8 b, V8 c) {
  return hn::Max(hn::Min(a, b), hn::Min(hn::Max(a, b), c));
}
HWY_INLINE void Sort5(V8& a, V8& b, V8& c, V8& d, V8& e) {
  Sort2(a, b);
  Sort2(d, e);
  Sort2(c, e);
  Sort2(c, d);
  Sort2(b, e);
  Sort2(a, d);
  Sort2(a, c);
  Sort2(b, d);
  Sort2(b, c);
}
// The greatest two in d and e, or the least two in a and b.
HWY_INLINE void SortGreatest2(V8 a, V8 b, V8 c, V8& d, V8& e) {
  Sort2(a, b);
  Sort2(c, d);
  const V8 losers = hn::Max(a, c);
  Sort2(b, d);
  Sort2(d, e);
  d = hn::Max(hn::Max(losers, b), d);
}
HWY_INLINE void SortLeast2(V8& a, V8& b, V8 c, V8 d, V8 e) {
  Sort2(d, e);
  Sort2(b, c);
  const V8 losers = hn::Min(e, c);
  Sort2(b, d);
  Sort2(a, b);
  b = hn::Min(hn::Min(losers, d), b);
}
HWY_INLINE V8 Median5(V8 a, V8 b, V8 c, V8 d, V8 e) {
  Sort2(a, b);
  Sort2(d, e);
  return Median3(c, hn::Max(a, d), hn::Min(b, e));
}

// The columns of two neighbouring rows of windows, each sorted. What the two have in common is
// sorted once, and the rows above and below it are put in.
template <int kRadius>
struct ColumnPair;
template <>
struct ColumnPair<2> {
  V8 upper[5], lower[5];

  template <class Load>
  HWY_INLINE explicit ColumnPair(const Load& load) {
    V8 a = load(1), b = load(2), c = load(3), d = load(4);
    Sort2(a, b);
    Sort2(c, d);
    Sort2(a, c);
    Sort2(b, d);
    Sort2(b, c);
    const auto insert = [&](V8 v, V8* column) HWY_ATTR {
      column[0] = hn::Min(v, a);
      v = hn::Max(v, a);
      column[1] = hn::Min(v, b);
      v = hn::Max(v, b);
      column[2] = hn::Min(v, c);
      v = hn::Max(v, c);
      column[3] = hn::Min(v, d);
      column[4] = hn::Max(v, d);
    };
    insert(load(0), upper);
    insert(load(5), lower);
  }
};

// One rank of sorted columns: at(i, k) is the i-th smallest of column k. Once the i-th smallest of
// all columns are sorted too, the ends of the nine are known, and five others remain.
template <int kRank, class At>
HWY_INLINE V8 RankOfColumns(std::integral_constant<int, 1>, const At& at) {
  V8 a0 = at(0, 0), a1 = at(0, 1), a2 = at(0, 2);
  V8 b0 = at(1, 0), b1 = at(1, 1), b2 = at(1, 2);
  V8 c0 = at(2, 0), c1 = at(2, 1), c2 = at(2, 2);
  if constexpr (kRank == 4)
    return Median3(hn::Max(hn::Max(a0, a1), a2), Median3(b0, b1, b2), hn::Min(hn::Min(c0, c1), c2));
  Sort3(a0, a1, a2);
  Sort3(b0, b1, b2);
  Sort3(c0, c1, c2);
  Sort2(b0, a1);
  Sort2(b2, c1);
  Sort5(a1, a2, b1, c0, b2);
  const V8 sorted[] = {a0, b0, a1, a2, b1, c0, b2, c1, c2};
  return sorted[kRank];
}
// The median of 25 in the same way: whatever has more than 12 others that are
// known to be no smaller, or no greater, is not the median: that leaves the middle one of the 5 x 5
// and the diagonals on either side of the long one, and of the upper left of these only its
// greatest can be, of the lower right its least, and of the long one its median.
template <int kRank, class At>
HWY_INLINE V8 RankOfColumns(std::integral_constant<int, 2>, const At& at) {
  static_assert(kRank == 12);
  V8 a0 = at(0, 0), a1 = at(0, 1), a2 = at(0, 2), a3 = at(0, 3), a4 = at(0, 4);
  SortGreatest2(a0, a1, a2, a3, a4);
  V8 b0 = at(1, 0), b1 = at(1, 1), b2 = at(1, 2), b3 = at(1, 3), b4 = at(1, 4);
  Sort5(b0, b1, b2, b3, b4);
  V8 least = hn::Max(a3, b2), greatest = b4;
  V8 e0 = at(4, 0), e1 = at(4, 1), e2 = at(4, 2), e3 = at(4, 3), e4 = at(4, 4);
  SortLeast2(e0, e1, e2, e3, e4);
  V8 d0 = at(3, 0), d1 = at(3, 1), d2 = at(3, 2), d3 = at(3, 3), d4 = at(3, 4);
  Sort5(d0, d1, d2, d3, d4);
  least = hn::Max(least, d0), greatest = hn::Min(greatest, hn::Min(e1, d2));
  V8 c0 = at(2, 0), c1 = at(2, 1), c2 = at(2, 2), c3 = at(2, 3), c4 = at(2, 4);
  Sort5(c0, c1, c2, c3, c4);
  least = hn::Max(least, c1), greatest = hn::Min(greatest, c3);
  return Median3(least, Median5(a4, b3, c2, d1, e0), greatest);
}

// Kept from being loaded again by each instruction that may have an operand in memory.
HWY_INLINE V8 LoadOnce(const uint8_t* from) {
  V8 v = hn::LoadU(D8(), from);
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3 && HWY_COMPILER_GCC_ACTUAL
  __asm__("" : "+x"(v.raw));
#endif
  return v;
}

// Long vectors that cross lines of a cache take twice as long to load, and so are made of whole
// ones by shuffles; some are loaded, as both can be done at once.
constexpr bool kShifts = hn::MaxLanes(D8()) >= 32;

#if HWY_TARGET == HWY_SCALAR
HWY_INLINE V8 LoadShifted(const uint8_t* from, int by) { return hn::LoadU(D8(), from + by); }
#else
// Of two vectors that follow each other: the lanes of the first, but from the given one on.
class Neighbours {
 public:
  HWY_INLINE Neighbours(V8 first, V8 second) : first_(first) {
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
    next_ = V8{_mm512_alignr_epi64(second.raw, first.raw, 2)};  // blocks
#else
    if constexpr (kShifts)
      next_ = hn::ConcatLowerUpper(D8(), second, first);
    else
      next_ = second;
#endif
  }
  HWY_INLINE V8 At(int by) const {
    const D8 d;
    switch (by) {
      case 1: return hn::CombineShiftRightBytes<1>(d, next_, first_);
      case 2: return hn::CombineShiftRightBytes<2>(d, next_, first_);
      case 3: return hn::CombineShiftRightBytes<3>(d, next_, first_);
      case 4: return hn::CombineShiftRightBytes<4>(d, next_, first_);
      case 6: return hn::CombineShiftRightBytes<6>(d, next_, first_);
      case 9: return hn::CombineShiftRightBytes<9>(d, next_, first_);
      case 12: return hn::CombineShiftRightBytes<12>(d, next_, first_);
      default: return first_;
    }
  }

 private:
  V8 first_, next_;
};
// From an aligned place and a few bytes further on.
HWY_INLINE V8 LoadShifted(const uint8_t* from, int by) {
  const D8 d;
  return Neighbours(hn::Load(d, from), hn::Load(d, from + hn::MaxLanes(d))).At(by);
}
#endif

// Results of one row of 3 x 3, of whole vectors; `rows` is the first of its windows. Every column
// is sorted once: neighbours are shifted from the sorted ones.
template <int kStep, int kRank>
HWY_INLINE void RankOf3Rows(uint8_t* to, ptrdiff_t n, const uint8_t* const* rows) {
  const D8 d;
  constexpr ptrdiff_t kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
  const uint8_t *const above = rows[0] - kStep, *const middle = rows[1] - kStep,
                       *const below = rows[2] - kStep;
  struct Column {
    V8 v[3];
  };
  const auto sort = [&](ptrdiff_t i) KY_INLINE_ATTR {
    Column c = {LoadOnce(above + i), LoadOnce(middle + i), LoadOnce(below + i)};
    Sort3(c.v[0], c.v[1], c.v[2]);
    return c;
  };
  using Radius = std::integral_constant<int, 1>;
  ptrdiff_t x = 0;
#if HWY_TARGET != HWY_SCALAR
  const auto put = [&](const Column& column, const Column& next) KY_INLINE_ATTR {
    const Neighbours around[3] = {
        {column.v[0], next.v[0]}, {column.v[1], next.v[1]}, {column.v[2], next.v[2]}};
    const auto at = [&](int i, int k) KY_INLINE_ATTR { return around[i].At(k * kStep); };
    hn::StoreU(RankOfColumns<kRank>(Radius(), at), d, to + x);
    x += kLanes;
  };
  Column column = sort(0);
  while (x + 2 * kLanes < n) {
    const Column next = sort(x + kLanes);
    put(column, next);
    column = sort(x + kLanes);
    put(next, column);
  }
  if (x + kLanes < n) put(column, sort(x + kLanes));
#endif
  for (; x < n; x += kLanes) {  // no more is readable than its windows
    const Column columns[3] = {sort(x), sort(x + kStep), sort(x + 2 * kStep)};
    const auto at = [&](int i, int k) HWY_ATTR { return columns[k].v[i]; };
    hn::StoreU(RankOfColumns<kRank>(Radius(), at), d, to + x);
  }
}

// Results of one or two rows, `rows` being the first of their windows. A chunk of columns is sorted
// first, so that neighbours share the work.
template <int kRadius, int kStep, int kRank>
HWY_INLINE void RankOfRows(Rows<uint8_t> out, const uint8_t* const* rows) {
  constexpr int kSize = 2 * kRadius + 1;
  constexpr ptrdiff_t kReach = ptrdiff_t{kRadius} * kStep, kChunk = 1024;
  constexpr ptrdiff_t kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D8()));
  static_assert(kChunk % kLanes == 0);
  const D8 d;
  HWY_ALIGN uint8_t columns[2][kSize][kChunk + 64];
  const bool isPair = out.height > 1;
  const uint8_t* in[kSize + 1];
  for (int k = 0; k <= kSize; ++k) in[k] = rows[isPair ? k : std::min(k, kSize - 1)] - kReach;
  for (ptrdiff_t first = 0; first < out.width; first += kChunk) {
    const ptrdiff_t n = std::min(kChunk, out.width - first), end = n + 2 * kReach;
    const auto sort = [&](ptrdiff_t x) HWY_ATTR {
      const ColumnPair<kRadius> sorted([&](int k) HWY_ATTR { return LoadOnce(in[k] + first + x); });
      const auto put = [&]<int... k>(std::integer_sequence<int, k...>) HWY_ATTR {
        (hn::StoreU(sorted.upper[k], d, columns[0][k] + x), ...);
        (hn::StoreU(sorted.lower[k], d, columns[1][k] + x), ...);
      };
      put(std::make_integer_sequence<int, kSize>());
    };
    for (ptrdiff_t x = 0; x + kLanes <= end; x += kLanes) sort(x);
    sort(end - kLanes);  // no more is readable
    for (int y = 0; y < (isPair ? 2 : 1); ++y) {
      uint8_t* const to = out.Row(y) + first;
      for (ptrdiff_t x = 0; x < n; x += kLanes) {
        const auto at = [&](int i, int k) HWY_ATTR {
          const uint8_t* const column = columns[y][i] + x;
          return kShifts && i % 2 != 0 ? LoadShifted(column, k * kStep)
                                       : hn::LoadU(d, column + k * kStep);
        };
        hn::StoreU(RankOfColumns<kRank>(std::integral_constant<int, kRadius>(), at), d, to + x);
      }
    }
  }
}

template <int kRadius, int kStep, int kRank>
void RankRun(Rows<uint8_t> out, const uint8_t* const* rows, const Layout&) {
  if constexpr (kRadius == 1)
    for (; out.height > 0; --out.height, ++rows, out.first = out.Row(1))
      RankOf3Rows<kStep, kRank>(out.first, out.width, rows);
  else
    for (; out.height > 0; out.height -= 2, rows += 2, out.first = out.Row(2))
      RankOfRows<kRadius, kStep, kRank>(out, rows);
}

template <int kRadius, int kRank>
constexpr WindowKernels kRankOf = {
    {kRadius, hn::MaxLanes(D8()), &RankRun<kRadius, 1, kRank>, 1},
    {kRadius, hn::MaxLanes(D8()), &RankRun<kRadius, 3, kRank>, 3},
};
constexpr SmallRankKernels kKernels = {
    {kRankOf<1, 0>, kRankOf<1, 1>, kRankOf<1, 2>, kRankOf<1, 3>, kRankOf<1, 4>, kRankOf<1, 5>,
     kRankOf<1, 6>, kRankOf<1, 7>, kRankOf<1, 8>},
    kRankOf<2, 12>,
};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SmallRankKernels)
