// The vector loops of neighbourhood operations, for kernels that window.h walks. Included by row
// files like lanes-inl.h.
#if defined(KY_FOUNDATION_WINDOW_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_WINDOW_INL_H_
#undef KY_FOUNDATION_WINDOW_INL_H_
#else
#define KY_FOUNDATION_WINDOW_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <utility>

#include "foundation/pitch.h"
#include "foundation/prefetch-inl.h"
#include "foundation/registers-inl.h"
#include "foundation/window.h"
#include "foundation/window_lanes-inl.h"
#include "foundation/window_parts-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// The pixels around one vector of places in the rows of a window: at(right, down) are those that
// lie so many columns to the right and rows below. rowOf(k) is around the places in the k-th row.
template <int kRadius, int kStep, class RowOf>
struct Around {
  const RowOf& rowOf;

  HWY_INLINE auto Row(int down) const { return rowOf(kRadius + down); }
  HWY_INLINE V8 operator()(int right, int down) const { return Row(down)(kStep * right); }
};

// Prefetches to the second cache, once a line, what is read and written kRows rows further down:
// processors are late to see by themselves that several rows are gone through side by side.
template <int kRows>
HWY_INLINE void PrefetchBandBelow(const Rows<uint8_t>& out, const uint8_t* const* lastRows,
                                  ptrdiff_t pitch, ptrdiff_t x) {
  if (x % 64 != 0) return;
  for (int k = 0; k < kRows; ++k) {
    PrefetchToSecondCache(lastRows[k], kRows * pitch + x);
    PrefetchToSecondCache(out.Row(k), kRows * out.pitch + x);
  }
}

// One result is op(d, at), with at(right, down) as above.
template <class Op, int kStep, class RowOf>
HWY_INLINE V8 ResultOf(const Op& op, const RowOf& rowOf) {
  return op(D8(), Around<Op::kRadius, kStep, RowOf>{rowOf});
}
// Results within rows: kRows rows, as many times as there are.
template <class Op, int kStep, int kRows>
HWY_INLINE void MapBands(const Op& op, Rows<uint8_t>& out, const uint8_t* const*& rows,
                         const Layout& layout) {
  for (; out.height >= kRows; out.height -= kRows, rows += kRows, out.first = out.Row(kRows))
    GoWithin<kStep>(out.width, layout, [&](ptrdiff_t x) KY_INLINE_ATTR {
      if (kRows > 1) PrefetchBandBelow<kRows>(out, rows + 2 * Op::kRadius, layout.pitch, x);
      for (int y = 0; y < kRows; ++y) {
        const auto rowOf = [x, window = rows + y](int k)
                               KY_INLINE_ATTR { return InnerRow<Op>(window[k] + x); };
        hn::StoreU(ResultOf<Op, kStep>(op, rowOf), D8(), out.Row(y) + x);
      }
    });
}
// Results at the ends of rows. Each row of a window is needed for several results.
template <class Op, int kStep>
HWY_INLINE void MapEnds(const Op& op, const Rows<uint8_t>& out, const uint8_t* const* rows,
                        const Layout& layout) {
  constexpr int kBefore = 2 * Op::kRadius;
  GoToEnds<kStep>(out.width, layout, [&](const auto& end, ptrdiff_t) KY_INLINE_ATTR {
    decltype(end.Of(nullptr)) window[kBefore + 1];
    for (int k = 0; k < kBefore; ++k) window[k + 1] = end.Of(rows[k]);
    for (ptrdiff_t y = 0; y < out.height; ++y) {
      for (int k = 0; k < kBefore; ++k) window[k] = window[k + 1];
      window[kBefore] = end.Of(rows[y + kBefore]);
      const auto rowOf = [&](int k) KY_INLINE_ATTR { return window[k]; };
      end.Store(ResultOf<Op, kStep>(op, rowOf), out.Row(y));
    }
  });
}
template <class Op, int kStep = 1>
HWY_INLINE void MapWindows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows,
                           const Layout& layout) {
  if constexpr (kShortestRow<Op> != kNoRowsWithEnds) MapEnds<Op, kStep>(op, out, rows, layout);
  if (layout.prefetches) MapBands<Op, kStep, 3>(op, out, rows, layout);
  MapBands<Op, kStep, 1>(op, out, rows, layout);
}

// kRows rows of windows. What a row contributes stays in registers while it is needed. Whether
// something is prefetched is asked at run time: a copy of the code for each answer would double
// what compilers have to do.
template <class Op, int kStep, int kRows>
HWY_INLINE void RollRows(const Op& op, const Rows<uint8_t>& out, const uint8_t* const* rows,
                         const Layout& layout) {
  constexpr int kSize = 2 * Op::kRadius + 1, kIn = kRows + 2 * Op::kRadius;
  const typename RowParts<Op, kStep>::D d;
  const uint8_t* in[kIn];
  for (int k = 0; k < kIn; ++k) in[k] = rows[k];
  uint8_t* to[kRows];
  for (int y = 0; y < kRows; ++y) to[y] = out.Row(y);
  // rowOf(k) is around the places in the k-th row, store(v, y) stores results of the y-th.
  const auto make = [&](const auto& rowOf, const auto& store) KY_INLINE_ATTR {
    RowParts<Op, kStep> parts[kIn];
    const auto result = [&]<int y, int... k>(std::integral_constant<int, y>,
                                             std::integer_sequence<int, k...>) KY_INLINE_ATTR {
      store(RowParts<Op, kStep>::Result(op, parts[y + k]...), y);
    };
    ForEach<kIn>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
      parts[k].Make(op, rowOf(k));
      if constexpr (k >= kSize - 1)
        result(std::integral_constant<int, k - (kSize - 1)>(),
               std::make_integer_sequence<int, kSize>());
    });
  };
  const auto prefetch = [&](ptrdiff_t x) KY_INLINE_ATTR {
    if (kRows > 1 && layout.prefetches)
      PrefetchBandBelow<kRows>(out, in + 2 * Op::kRadius, layout.pitch, x);
  };
  const auto inner = [&](ptrdiff_t x) KY_INLINE_ATTR {
    prefetch(x);
    make([&](int k) KY_INLINE_ATTR { return InnerRow<Op>(in[k] + x); },
         [&](auto v, int y) KY_INLINE_ATTR { hn::StoreU(v, d, to[y] + x); });
  };
  GoAlong<kStep>(out.width, layout, inner, [&](const auto& end, ptrdiff_t x) KY_INLINE_ATTR {
    prefetch(x);
    make([&](int k) KY_INLINE_ATTR { return end.Of(in[k]); },
         [&](auto v, int y) KY_INLINE_ATTR { end.Store(v, to[y]); });
  });
}

// As many bands of kRows rows as there are.
template <class Op, int kStep, int kRows>
HWY_INLINE void RollBands(const Op& op, Rows<uint8_t>& out, const uint8_t* const*& rows,
                          const Layout& layout) {
  for (; out.height >= kRows; out.height -= kRows, rows += kRows, out.first = out.Row(kRows))
    RollRows<Op, kStep, kRows>(op, out, rows, layout);
}

// Windows by the row: op.Row(d16, at) is what a row contributes to the results around it, and a
// result is op(d16, the rows' contributions from the highest down). What a row contributes is made
// once in a band.
//
// Six rows of results share more of their work than three, but three are all that a first cache has
// room for when the pitch fights it.
template <class Op, int kStep = 1>
HWY_INLINE void RollWindows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows,
                            const Layout& layout) {
#if !KY_SANITIZED  // compilers take minutes over long code that they instrument: one row at a time
  if (!FightsCache(out.pitch) && !FightsCache(layout.pitch))
    RollBands<Op, kStep, 6>(op, out, rows, layout);
  RollBands<Op, kStep, 3>(op, out, rows, layout);
#endif
  RollBands<Op, kStep, 1>(op, out, rows, layout);
}

// The kernels of operations that need no arguments, in rows where neighbours are kStep elements
// apart.
template <class Op, int kStep = 1>
constexpr WindowKernel<WindowRun> MappedWindows() {
  return KernelOf<Op, kStep>([](Rows<uint8_t> out, const uint8_t* const* rows, const Layout& layout)
                                 HWY_ATTR { MapWindows<Op, kStep>(Op(), out, rows, layout); });
}
template <class Op, int kStep = 1>
constexpr WindowKernel<WindowRun> RolledWindows() {
  return KernelOf<Op, kStep>([](Rows<uint8_t> out, const uint8_t* const* rows, const Layout& layout)
                                 HWY_ATTR { RollWindows<Op, kStep>(Op(), out, rows, layout); });
}
// Both of a formula, for a table.
template <class Op>
constexpr WindowKernels MappedKernels() {
  return {MappedWindows<Op, 1>(), MappedWindows<Op, 3>()};
}
template <class Op>
constexpr WindowKernels RolledKernels() {
  return {RolledWindows<Op, 1>(), RolledWindows<Op, 3>()};
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
