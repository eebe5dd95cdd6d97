#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/small_rank_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/small_rank_rows.h"

#include "foundation/dispatch.h"
#include "foundation/registers-inl.h"
#include "foundation/window-inl.h"
#include "morphology/exchanges-inl.h"
#include "morphology/median5x5-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// One rank of sorted columns: at(i, k) is the i-th smallest of column k. Once the i-th smallest of
// all columns are sorted too, the ends of the nine are known, and five others remain.
template <int kRank, class At>
HWY_INLINE V8 RankOfColumns(const At& at) {
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

#if HWY_TARGET != HWY_SCALAR
// Of two vectors that follow each other: the lanes of the first, but from the given one on.
class Neighbours {
 public:
  HWY_INLINE Neighbours(V8 first, V8 second) : first_(first) {
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
    next_ = V8{_mm512_alignr_epi64(second.raw, first.raw, 2)};  // blocks
#else
    if constexpr (hn::MaxLanes(D8()) >= 32)
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
      case 6: return hn::CombineShiftRightBytes<6>(d, next_, first_);
      default: return first_;
    }
  }

 private:
  V8 first_, next_;
};
#endif

// The columns of a window by themselves, each sorted.
template <int kRank>
struct RankOf3 : WindowOp<1> {
  template <class At>
  HWY_INLINE V8 operator()(D8, const At& at) const {
    V8 columns[3][3];
    for (int k = 0; k < 3; ++k) {
      for (int i = 0; i < 3; ++i) columns[k][i] = at(k - 1, i - 1);
      Sort3(columns[k][0], columns[k][1], columns[k][2]);
    }
    const auto sorted = [&](int i, int k) HWY_ATTR { return columns[k][i]; };
    return RankOfColumns<kRank>(sorted);
  }
};

// Results of one row of 3 x 3, of whole vectors, from column `begin` on; `rows` is the first of its
// windows. Every column is sorted once: neighbours are shifted from the sorted ones.
template <int kStep, int kRank>
HWY_INLINE void RankOf3Rows(uint8_t* to, ptrdiff_t begin, ptrdiff_t n, const uint8_t* const* rows) {
  const D8 d;
  constexpr ptrdiff_t kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
  ptrdiff_t x = begin;
  const ptrdiff_t end = begin + n;
#if HWY_TARGET != HWY_SCALAR
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
  const auto put = [&](const Column& column, const Column& next) KY_INLINE_ATTR {
    const Neighbours around[3] = {
        {column.v[0], next.v[0]}, {column.v[1], next.v[1]}, {column.v[2], next.v[2]}};
    const auto at = [&](int i, int k) KY_INLINE_ATTR { return around[i].At(k * kStep); };
    hn::StoreU(RankOfColumns<kRank>(at), d, to + x);
    x += kLanes;
  };
  Column column = sort(x);
  while (x + 2 * kLanes < end) {
    const Column next = sort(x + kLanes);
    put(column, next);
    column = sort(x + kLanes);
    put(next, column);
  }
  if (x + kLanes < end) put(column, sort(x + kLanes));
#endif
  for (; x < end; x += kLanes) {  // no more is readable than its windows
    const auto rowOf = [=](int k) HWY_ATTR { return LoadedRow(rows[k] + x); };
    hn::StoreU(ResultOf<RankOf3<kRank>, kStep>(RankOf3<kRank>(), rowOf), d, to + x);
  }
}

template <int kStep, int kRank>
void RankOf3x3(Rows<uint8_t> out, const uint8_t* const* rows, const Layout& layout) {
  using Op = RankOf3<kRank>;
  MapEnds<Op, kStep>(Op(), out, rows, layout);
  ForEachStretch(out.width, layout, [&](ptrdiff_t x, ptrdiff_t n) HWY_ATTR {
    for (ptrdiff_t y = 0; y < out.height; ++y)
      RankOf3Rows<kStep, kRank>(out.Row(y), x, n, rows + y);
  });
}
template <int kStep>
void MedianOf5x5(Rows<uint8_t> out, const uint8_t* const* rows, const Layout&) {
  MediansOf5x5<kStep> medians;
  medians.Run(out, rows);
}

template <int kRank>
constexpr WindowKernels kRankOf3x3 = {KernelOf<RankOf3<kRank>, 1>(&RankOf3x3<1, kRank>),
                                      KernelOf<RankOf3<kRank>, 3>(&RankOf3x3<3, kRank>)};
constexpr SmallRankKernels kKernels = {
    {kRankOf3x3<0>, kRankOf3x3<1>, kRankOf3x3<2>, kRankOf3x3<3>, kRankOf3x3<4>, kRankOf3x3<5>,
     kRankOf3x3<6>, kRankOf3x3<7>, kRankOf3x3<8>},
    {{2, hn::MaxLanes(D8()), &MedianOf5x5<1>, 1}, {2, hn::MaxLanes(D8()), &MedianOf5x5<3>, 3}},
};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SmallRankKernels)
