#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/column_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/column_rows.h"

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using DU32 = hn::RebindToUnsigned<D32>;

struct AddOp {
  using Lane = uint16_t;
  uint16_t times;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V columns, V row) const {
    return hn::Add(columns, hn::Mul(row, hn::Set(d, times)));
  }
};
struct SlideOp {
  using Lane = uint16_t;

  template <class D, class V>
  HWY_INLINE V operator()(D, V columns, V entering, V leaving) const {
    return hn::Add(columns, hn::Sub(entering, leaving));
  }
};
void AddNarrow(const NarrowColumns& columns, size_t n, const KyBW8* row, uint32_t times) {
  MapSpan(AddOp{static_cast<uint16_t>(times)}, columns.all, n, columns.all, row);
}
void SlideNarrow(const NarrowColumns& columns, size_t n, const KyBW8* entering,
                 const KyBW8* leaving) {
  MapSpan(SlideOp(), columns.all, n, columns.all, entering, leaving);
}

#if HWY_TARGET != HWY_SCALAR
// The lanes of either phase, where one of 16 bits has its sign.
HWY_INLINE V32 EvenOf(V16 v) {
  return hn::ShiftRight<16>(hn::ShiftLeft<16>(hn::BitCast(D32(), v)));
}
HWY_INLINE V32 OddOf(V16 v) { return hn::ShiftRight<16>(hn::BitCast(D32(), v)); }
#endif

// Adds what op(d16, row[i]...) returns, 32-bit lanes of each phase, to the columns.
template <class Op, class... Row>
HWY_INLINE void AddToColumns(const Op& op, const WideColumns& columns, size_t n,
                             const Row*... rows) {
#if HWY_TARGET == HWY_SCALAR
  for (size_t i = 0; i < n; ++i)
    *columns.At(static_cast<ptrdiff_t>(i)) += static_cast<uint32_t>(op.Of(rows[i]...));
#else
  const D16 d16;
  const DU32 du;
  const size_t lanes = hn::Lanes(d16);
  const auto add = [&](size_t i, const auto&... v) HWY_ATTR {
    V32 changes[2];
    op(v..., changes);
    uint32_t* const to[2] = {columns.even + i / 2, columns.odd + i / 2};
    for (int p = 0; p < 2; ++p)
      hn::StoreU(hn::Add(hn::LoadU(du, to[p]), hn::BitCast(du, changes[p])), du, to[p]);
  };
  size_t i = 0;
  for (; i + lanes <= n; i += lanes) add(i, LoadLanes(d16, rows + i)...);
  if (i < n) add(i, LoadPart(d16, rows + i, n - i)...);
#endif
}

struct AddLevels {
  int32_t times;
  int32_t Of(KyBW8 v) const { return v * times; }
#if HWY_TARGET != HWY_SCALAR
  HWY_INLINE void operator()(V16 v, V32 (&changes)[2]) const {
    const V32 weight = hn::Set(D32(), times);
    changes[0] = hn::Mul(EvenOf(v), weight);
    changes[1] = hn::Mul(OddOf(v), weight);
  }
#endif
};
struct SlideLevels {
  static int32_t Of(KyBW8 a, KyBW8 b) { return a - b; }
#if HWY_TARGET != HWY_SCALAR
  HWY_INLINE void operator()(V16 a, V16 b, V32 (&changes)[2]) const {
    const V16 v = hn::Sub(a, b);
    changes[0] = EvenOf(v);
    changes[1] = OddOf(v);
  }
#endif
};

#if HWY_TARGET != HWY_SCALAR
// The products of the lanes of either phase. Those of the other would be added to them.
HWY_INLINE void MultiplyPhases(V16 a, V16 b, V32 (&products)[2]) {
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  const D32 d32;
  const V32 lower = hn::Set(d32, 0xFFFF);
  const V32 lanes = hn::BitCast(d32, a);
  const V16 even = hn::BitCast(D16(), hn::And(lanes, lower));
  const V16 odd = hn::BitCast(D16(), hn::AndNot(lower, lanes));
  V32 unused = hn::Zero(d32);
  products[0] = hn::ReorderWidenMulAccumulate(d32, even, b, hn::Zero(d32), unused);
  products[1] = hn::ReorderWidenMulAccumulate(d32, odd, b, hn::Zero(d32), unused);
#else
  products[0] = hn::Mul(EvenOf(a), EvenOf(b));
  products[1] = hn::Mul(OddOf(a), OddOf(b));
#endif
}
#endif
struct AddSquares {
  int32_t times;
  int32_t Of(KyBW8 v) const { return v * v * times; }
#if HWY_TARGET != HWY_SCALAR
  HWY_INLINE void operator()(V16 v, V32 (&changes)[2]) const {
    MultiplyPhases(v, v, changes);
    for (V32& change : changes) change = hn::Mul(change, hn::Set(D32(), times));
  }
#endif
};
// a^2 - b^2 = (a - b) (a + b)
struct SlideSquares {
  static int32_t Of(KyBW8 a, KyBW8 b) { return (a - b) * (a + b); }
#if HWY_TARGET != HWY_SCALAR
  HWY_INLINE void operator()(V16 a, V16 b, V32 (&changes)[2]) const {
    MultiplyPhases(hn::Sub(a, b), hn::Add(a, b), changes);
  }
#endif
};

template <class Op>
void AddWide(const WideColumns& columns, size_t n, const KyBW8* row, uint32_t times) {
  AddToColumns(Op{static_cast<int32_t>(times)}, columns, n, row);
}
template <class Op>
void SlideWide(const WideColumns& columns, size_t n, const KyBW8* entering, const KyBW8* leaving) {
  AddToColumns(Op(), columns, n, entering, leaving);
}

template <class T>
uint32_t Sum(const T* values, size_t n) {
  uint32_t sum = 0;
  for (size_t i = 0; i < n; ++i) sum += values[i];
  return sum;
}
uint32_t SumNarrow(const NarrowColumns& columns, size_t n) { return Sum(columns.all, n); }
uint32_t SumWide(const WideColumns& columns, size_t n) {
  return Sum(columns.even, (n + 1) / 2) + Sum(columns.odd, n / 2);
}

constexpr AllColumnKernels kKernels = {
    {&AddNarrow, &SlideNarrow, &SumNarrow},
    {&AddWide<AddLevels>, &SlideWide<SlideLevels>, &SumWide},
    {&AddWide<AddSquares>, &SlideWide<SlideSquares>, &SumWide},
};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(AllColumnKernels)
