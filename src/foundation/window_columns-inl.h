// The vector loop of windows whose results follow from a few sums that roll down a column of
// places. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_WINDOW_COLUMNS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_WINDOW_COLUMNS_INL_H_
#undef KY_FOUNDATION_WINDOW_COLUMNS_INL_H_
#else
#define KY_FOUNDATION_WINDOW_COLUMNS_INL_H_
#endif

#include "foundation/prefetch-inl.h"
#include "foundation/registers-inl.h"
#include "foundation/window.h"
#include "foundation/window_parts-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// The sum of the last kCount + 1 vectors under binomial weights: sums of neighbours, of which the
// neighbours are added up, and so on.
template <class D, int kCount>
class BinomialColumn {
 public:
  HWY_INLINE BinomialColumn() {
    for (auto& v : before_) v = hn::Zero(D());
  }
  HWY_INLINE hn::Vec<D> Next(hn::Vec<D> v) {
    ForEach<kCount>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
      const hn::Vec<D> sum = hn::Add(before_[i], v);
      before_[i] = v;
      v = sum;
    });
    return v;
  }

 private:
  hn::Vec<D> before_[kCount];
};

// The sum of the last kCount vectors, and of what it starts with.
template <class D, int kCount>
class SumColumn {
 public:
  HWY_INLINE SumColumn() {}
  HWY_INLINE void Start(hn::Vec<D> sum) {
    sum_ = sum;
    for (auto& v : before_) v = hn::Zero(D());
  }
  HWY_INLINE hn::Vec<D> Next(hn::Vec<D> v) {
    const hn::Vec<D> all = hn::Add(sum_, v);
    sum_ = hn::Sub(all, before_[0]);
    ForEach<kCount - 2>([&]<int i>(std::integral_constant<int, i>)
                            KY_INLINE_ATTR { before_[i] = before_[i + 1]; });
    before_[kCount - 2] = v;
    return all;
  }

 private:
  hn::Vec<D> sum_, before_[kCount - 1];
};

// Goes down the column of a vector of places. Op::Columns() starts without a row.
// columns.Next(parts) gets what the next row contributes, and puts the results of the window that
// ends with that row in its place, one vector for each phase: in the upper bytes of the lanes where
// Op::kInUpperBytes is true, else in whole lanes.
//
// rowOf(k) is around the places in the k-th row, and store(v, y) stores results of the y-th. Before
// each row but the first, prefetch(y) is called.
template <class Op, int kStep, class RowOf, class Store, class Prefetch>
HWY_INLINE void Descend(ptrdiff_t height, const RowOf& rowOf, const Store& store,
                        const Prefetch& prefetch) {
  constexpr int kBefore = 2 * Op::kRadius, kUnrolled = 4;
  using Parts = RowParts<Op, kStep>;
  const Op op;
  typename Op::Columns columns;
  Parts row;
  for (int k = 0; k < kBefore; ++k) {
    row.Make(op, rowOf(k));
    columns.Next(row.part);
  }
  const auto next = [&](ptrdiff_t y) KY_INLINE_ATTR {
    prefetch(y);
    row.Make(op, rowOf(kBefore + y));
    columns.Next(row.part);
    store(Op::kInUpperBytes ? Parts::JoinUpperBytes(row.part) : Parts::Join(row.part), y);
  };
  ptrdiff_t y = 0;
  for (; y + kUnrolled <= height; y += kUnrolled)
    ForEach<kUnrolled>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR { next(y + k); });
  for (; y < height; ++y) next(y);
}

// One vector of places after another.
//
// Where the layout says so, what comes next is prefetched: processors do not see by themselves what
// comes next where so many rows are gone through. It lies in strips so narrow that what is
// prefetched for the next one, which may be the first of the rows below, is still in a second cache
// when its turn comes.
template <class Op, int kStep>
HWY_INLINE void DescendWindows(Rows<uint8_t> out, const uint8_t* const* rows,
                               const Layout& layout) {
  constexpr ptrdiff_t kMost = 2048, kLine = 64;
  constexpr int kBefore = 2 * Op::kRadius;
  if (out.width == 0) return;
  const ptrdiff_t count = (out.width - 1) / kMost + 1;
  const ptrdiff_t strip = ((out.width - 1) / count / kLine + 1) * kLine;
  const auto prefetchAt = [&](ptrdiff_t x) KY_INLINE_ATTR {
    const ptrdiff_t begin = x / strip * strip;
    const bool isLast = begin + strip >= out.width;
    const ptrdiff_t inAhead = isLast ? out.height * layout.pitch - begin : strip;
    const ptrdiff_t outAhead = isLast ? out.height * out.pitch - begin : strip;
    const bool prefetches = layout.prefetches && x % kLine == 0;
    return [=](ptrdiff_t y) KY_INLINE_ATTR {
      if (!prefetches) return;
      PrefetchToSecondCache(rows[kBefore + y] + x, inAhead);
      PrefetchToSecondCache(out.Row(y) + x, outAhead);
    };
  };
  GoToEnds<kStep>(out.width, layout, [&](const auto& end, ptrdiff_t x) KY_INLINE_ATTR {
    Descend<Op, kStep>(
        out.height, [&](ptrdiff_t k) KY_INLINE_ATTR { return end.Of(rows[k]); },
        [&](V8 v, ptrdiff_t y) KY_INLINE_ATTR { end.Store(v, out.Row(y)); }, prefetchAt(x));
  });
  GoWithin<kStep>(out.width, layout, [&](ptrdiff_t x) KY_INLINE_ATTR {
    Descend<Op, kStep>(
        out.height, [=](ptrdiff_t k) KY_INLINE_ATTR { return LoadedRow(rows[k] + x); },
        [=](V8 v, ptrdiff_t y) KY_INLINE_ATTR { hn::StoreU(v, D8(), out.Row(y) + x); },
        prefetchAt(x));
  });
}

template <class Op, int kStep>
constexpr WindowKernel<WindowRun> DescendedWindows() {
  const auto run = [](Rows<uint8_t> out, const uint8_t* const* rows, const Layout& layout)
                       HWY_ATTR { DescendWindows<Op, kStep>(out, rows, layout); };
  return KernelOf<Op, kStep>(run, true);
}
// Both of a formula, for a table.
template <class Op>
constexpr WindowKernels DescendedKernels() {
  return {DescendedWindows<Op, 1>(), DescendedWindows<Op, 3>()};
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
