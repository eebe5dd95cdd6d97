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

// Goes down the columns of one vector of places after another, from column `begin` to `end` - 1.
// Op::Columns() starts without a row. columns.Next(parts) gets what the next row contributes, and
// puts the results of the window that ends with that row in its place, one vector for each phase:
// in the upper bytes of the lanes where Op::kInUpperBytes is true, else in whole lanes.
//
// What comes next is inAhead and outAhead bytes further on than the rows and the results. It is
// prefetched where these are not 0: processors do not see by themselves what comes next where so
// many rows are gone through.
template <class Op, int kStep>
HWY_INLINE void DescendStrip(const Rows<uint8_t>& out, const uint8_t* const* rows, ptrdiff_t begin,
                             ptrdiff_t end, ptrdiff_t inAhead, ptrdiff_t outAhead) {
  constexpr int kBefore = 2 * Op::kRadius, kUnrolled = 4;
  using Parts = RowParts<Op, kStep>;
  const D8 d;
  const Op op;
  for (ptrdiff_t x = begin; x < end; x += static_cast<ptrdiff_t>(hn::Lanes(d))) {
    typename Op::Columns columns;
    Parts row;
    for (int k = 0; k < kBefore; ++k) {
      row.Make(op, rows[k] + x);
      columns.Next(row.part);
    }
    const bool prefetches = inAhead != 0 && x % 64 == 0;
    const uint8_t* const* in = rows + kBefore;
    const auto next = [&](ptrdiff_t y) KY_INLINE_ATTR {
      const uint8_t* const places = in[y] + x;
      uint8_t* const to = out.Row(y) + x;
      if (prefetches) {
        PrefetchToSecondCache(places, inAhead);
        PrefetchToSecondCache(to, outAhead);
      }
      row.Make(op, places);
      columns.Next(row.part);
      const auto results =
          Op::kInUpperBytes ? Parts::JoinUpperBytes(row.part) : Parts::Join(row.part);
      hn::StoreU(results, d, to);
    };
    ptrdiff_t y = 0;
    for (; y + kUnrolled <= out.height; y += kUnrolled)
      ForEach<kUnrolled>([&]<int k>(std::integral_constant<int, k>)
                             KY_INLINE_ATTR { next(y + k); });
    for (; y < out.height; ++y) next(y);
  }
}

// In strips so narrow that what is prefetched for the next one, which may be the first of the rows
// below, is still in a second cache when its turn comes.
template <class Op, int kStep>
HWY_INLINE void DescendWindows(const Rows<uint8_t>& out, const uint8_t* const* rows,
                               const Layout& layout) {
  constexpr ptrdiff_t kMost = 2048, kLine = 64;
  if (out.width == 0) return;
  const ptrdiff_t count = (out.width - 1) / kMost + 1;
  const ptrdiff_t strip = ((out.width - 1) / count / kLine + 1) * kLine;
  for (ptrdiff_t begin = 0; begin < out.width; begin += strip) {
    const ptrdiff_t end = HWY_MIN(begin + strip, out.width);
    ptrdiff_t inAhead = 0, outAhead = 0;
    if (layout.prefetches) {
      const bool isLast = end == out.width;
      inAhead = isLast ? out.height * layout.pitch - begin : strip;
      outAhead = isLast ? out.height * out.pitch - begin : strip;
    }
    DescendStrip<Op, kStep>(out, rows, begin, end, inAhead, outAhead);
  }
}

template <class Op, int kStep>
constexpr WindowKernel<WindowRun> DescendedWindows() {
  static_assert(kStep == 1 || kStep == 3);
  const auto run = [](Rows<uint8_t> out, const uint8_t* const* rows, const Layout& layout)
                       HWY_ATTR { DescendWindows<Op, kStep>(out, rows, layout); };
  return {Op::kRadius, hn::MaxLanes(D8()), run, kStep, true};
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
