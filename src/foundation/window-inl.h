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
// lie so many columns to the right and rows below.
template <class D, int kRadius, int kStep = 1>
struct Around {
  D d;
  const uint8_t* const* rows;
  ptrdiff_t x;

  HWY_INLINE const uint8_t* Row(int down) const { return rows[kRadius + down] + x; }
  HWY_INLINE hn::Vec<D> operator()(int right, int down) const {
    return hn::LoadU(d, Row(down) + kStep * right);
  }
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

// kRows rows of results, as many times as there are: every one is op(d, at), with at(right, down)
// as above.
template <class Op, int kStep, int kRows, class D>
HWY_INLINE void MapBands(const Op& op, Rows<uint8_t>& out, const uint8_t* const*& rows,
                         ptrdiff_t pitch) {
  const D d;
  for (; out.height >= kRows; out.height -= kRows, rows += kRows, out.first = out.Row(kRows))
    for (ptrdiff_t x = 0; x < out.width; x += static_cast<ptrdiff_t>(hn::Lanes(d))) {
      if (kRows > 1) PrefetchBandBelow<kRows>(out, rows + 2 * Op::kRadius, pitch, x);
      for (int y = 0; y < kRows; ++y)
        hn::StoreU(op(d, Around<D, Op::kRadius, kStep>{d, rows + y, x}), d, out.Row(y) + x);
    }
}
template <class Op, int kStep = 1, class D = D8>
HWY_INLINE void MapWindows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows,
                           const Layout& layout) {
  if (layout.prefetches) MapBands<Op, kStep, 3, D>(op, out, rows, layout.pitch);
  MapBands<Op, kStep, 1, D>(op, out, rows, layout.pitch);
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
  for (ptrdiff_t x = 0; x < out.width; x += static_cast<ptrdiff_t>(hn::Lanes(d))) {
    if (kRows > 1 && layout.prefetches)
      PrefetchBandBelow<kRows>(out, in + 2 * Op::kRadius, layout.pitch, x);
    RowParts<Op, kStep> parts[kIn];
    const auto result = [&]<int y, int... k>(std::integral_constant<int, y>,
                                             std::integer_sequence<int, k...>) KY_INLINE_ATTR {
      hn::StoreU(RowParts<Op, kStep>::Result(op, parts[y + k]...), d, to[y] + x);
    };
    ForEach<kIn>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
      parts[k].Make(op, in[k] + x);
      if constexpr (k >= kSize - 1)
        result(std::integral_constant<int, k - (kSize - 1)>(),
               std::make_integer_sequence<int, kSize>());
    });
  }
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
  static_assert(kStep == 1 || kStep == 3);
  const auto run = [](Rows<uint8_t> out, const uint8_t* const* rows, const Layout& layout)
                       HWY_ATTR { MapWindows<Op, kStep, DBytes>(Op(), out, rows, layout); };
  return {Op::kRadius, hn::MaxLanes(DBytes()), run, kStep};
}
template <class Op, int kStep = 1>
constexpr WindowKernel<WindowRun> RolledWindows() {
  static_assert(kStep == 1 || kStep == 3);
  const auto run = [](Rows<uint8_t> out, const uint8_t* const* rows, const Layout& layout)
                       HWY_ATTR { RollWindows<Op, kStep>(Op(), out, rows, layout); };
  return {Op::kRadius, hn::MaxLanes(typename RowParts<Op, kStep>::D()), run, kStep};
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
