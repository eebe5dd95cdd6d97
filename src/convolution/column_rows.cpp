#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/column_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/column_rows.h"

#include <iterator>

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "foundation/window_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET != HWY_SCALAR
using DU16 = hn::RebindToUnsigned<D16>;
using DU32 = hn::RebindToUnsigned<D32>;

// The elements of even places and of odd ones.
struct Halves {
  V16 even, odd;
};
HWY_INLINE Halves HalvesOf(hn::Vec<D8> v) {
  const DU16 d;
  const auto pairs = hn::BitCast(d, v);
  return {hn::BitCast(D16(), hn::And(pairs, hn::Set(d, 0xFF))),
          hn::BitCast(D16(), hn::ShiftRight<8>(pairs))};
}
// The lanes of even and of odd places, with their signs.
HWY_INLINE V32 EvenOf(V16 v) {
  return hn::ShiftRight<16>(hn::ShiftLeft<16>(hn::BitCast(D32(), v)));
}
HWY_INLINE V32 OddOf(V16 v) { return hn::ShiftRight<16>(hn::BitCast(D32(), v)); }

HWY_INLINE void Add(uint16_t* to, V16 v) {
  const DU16 d;
  hn::StoreU(hn::Add(hn::LoadU(d, to), hn::BitCast(d, v)), d, to);
}
HWY_INLINE void Add(uint32_t* to, V32 v) {
  const DU32 d;
  hn::StoreU(hn::Add(hn::LoadU(d, to), hn::BitCast(d, v)), d, to);
}
#endif

// columns(i) += op of row[i]..., for n places.
template <class Op, class Columns, class... Row>
HWY_INLINE void AddToColumns(const Op& op, const Columns& columns, size_t n, const Row*... rows) {
#if HWY_TARGET == HWY_SCALAR
  using T = typename Columns::Element;
  for (size_t i = 0; i < n; ++i) {
    T& column = *columns.At(static_cast<ptrdiff_t>(i));
    column = static_cast<T>(column + static_cast<T>(op.Of(rows[i]...)));
  }
#else
  const D8 d;
  const size_t lanes = hn::Lanes(d);
  size_t i = 0;
  for (; i + lanes <= n; i += lanes)
    op.Add(columns.From(static_cast<ptrdiff_t>(i)), HalvesOf(hn::LoadU(d, rows + i))...);
  if (i < n)
    op.Add(columns.From(static_cast<ptrdiff_t>(i)), HalvesOf(LoadPart(d, rows + i, n - i))...);
#endif
}

// Adds one value for each lane, which are those of places 0, 2, 4 ... and 1, 3, 5 ...
#if HWY_TARGET != HWY_SCALAR
HWY_INLINE void AddHalves(const NarrowColumns& columns, V16 even, V16 odd) {
  Add(columns.of[0], even);
  Add(columns.of[1], odd);
}
HWY_INLINE void AddHalves(const WideColumns& columns, V16 even, V16 odd) {
  Add(columns.of[0], EvenOf(even));
  Add(columns.of[1], EvenOf(odd));
  Add(columns.of[2], OddOf(even));
  Add(columns.of[3], OddOf(odd));
}
// The products of the lanes of even, and of odd, places: those of the others would be added to
// them.
HWY_INLINE V32 ProductsOfEven(V16 a, V16 b) {
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  const D32 d;
  const V16 lower = hn::BitCast(D16(), hn::Set(d, 0xFFFF));
  V32 unused = hn::Zero(d);
  return hn::ReorderWidenMulAccumulate(d, hn::And(a, lower), b, hn::Zero(d), unused);
#else
  return hn::Mul(EvenOf(a), EvenOf(b));
#endif
}
HWY_INLINE V32 ProductsOfOdd(V16 a, V16 b) {
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  const D32 d;
  const V16 lower = hn::BitCast(D16(), hn::Set(d, 0xFFFF));
  V32 unused = hn::Zero(d);
  return hn::ReorderWidenMulAccumulate(d, hn::AndNot(lower, a), b, hn::Zero(d), unused);
#else
  return hn::Mul(OddOf(a), OddOf(b));
#endif
}
HWY_INLINE void AddProducts(const WideColumns& columns, Halves a, Halves b) {
  Add(columns.of[0], ProductsOfEven(a.even, b.even));
  Add(columns.of[1], ProductsOfEven(a.odd, b.odd));
  Add(columns.of[2], ProductsOfOdd(a.even, b.even));
  Add(columns.of[3], ProductsOfOdd(a.odd, b.odd));
}
#endif

struct AddLevels {
  static int32_t Of(KyBW8 v) { return v; }
#if HWY_TARGET != HWY_SCALAR
  template <class Columns>
  HWY_INLINE void Add(const Columns& columns, Halves v) const {
    AddHalves(columns, v.even, v.odd);
  }
#endif
};
struct SlideLevels {
  static int32_t Of(KyBW8 a, KyBW8 b) { return a - b; }
#if HWY_TARGET != HWY_SCALAR
  template <class Columns>
  HWY_INLINE void Add(const Columns& columns, Halves a, Halves b) const {
    AddHalves(columns, hn::Sub(a.even, b.even), hn::Sub(a.odd, b.odd));
  }
#endif
};
struct AddSquares {
  static int32_t Of(KyBW8 v) { return v * v; }
#if HWY_TARGET != HWY_SCALAR
  HWY_INLINE void Add(const WideColumns& columns, Halves v) const { AddProducts(columns, v, v); }
#endif
};
// a^2 - b^2 = (a - b) (a + b)
struct SlideSquares {
  static int32_t Of(KyBW8 a, KyBW8 b) { return (a - b) * (a + b); }
};
#if HWY_TARGET != HWY_SCALAR
template <class Columns>
struct LevelsAndSquares {
  Columns levels;
  WideColumns squares;

  HWY_INLINE LevelsAndSquares From(ptrdiff_t place) const {
    return {levels.From(place), squares.From(place)};
  }
};
struct SlideBoth {
  template <class Columns>
  HWY_INLINE void Add(const LevelsAndSquares<Columns>& columns, Halves a, Halves b) const {
    const Halves change = {hn::Sub(a.even, b.even), hn::Sub(a.odd, b.odd)};
    AddHalves(columns.levels, change.even, change.odd);
    AddProducts(columns.squares, change, {hn::Add(a.even, b.even), hn::Add(a.odd, b.odd)});
  }
};
#endif

template <class Op, class Columns>
void AddRow(const Columns& columns, size_t n, const KyBW8* row) {
  AddToColumns(Op(), columns, n, row);
}
template <class Op, class Columns>
void SlideRow(const Columns& columns, size_t n, const KyBW8* entering, const KyBW8* leaving) {
  AddToColumns(Op(), columns, n, entering, leaving);
}
template <class Columns>
void SlideBothRow(const Columns& levels, const WideColumns& squares, size_t n,
                  const KyBW8* entering, const KyBW8* leaving) {
#if HWY_TARGET == HWY_SCALAR
  AddToColumns(SlideLevels(), levels, n, entering, leaving);
  AddToColumns(SlideSquares(), squares, n, entering, leaving);
#else
  AddToColumns(SlideBoth(), LevelsAndSquares<Columns>{levels, squares}, n, entering, leaving);
#endif
}
template <class Columns>
uint32_t SumShifted(const Columns& columns, size_t n, int shift) {
  const size_t phases = std::size(columns.of);
  uint32_t sum = 0;
  for (size_t p = 0; p < phases; ++p)
    for (size_t i = 0; phases * i + p < n; ++i) sum += uint32_t{columns.of[p][i]} >> shift;
  return sum;
}
template <class Columns>
uint32_t SumOf(const Columns& columns, size_t n) {
  return SumShifted(columns, n, 0);
}

template <class Columns>
constexpr ColumnSumKernels<Columns> KernelsOf() {
  return {&AddRow<AddLevels, Columns>, &SlideRow<SlideLevels, Columns>, &SlideBothRow<Columns>,
          &SumOf<Columns>};
}
constexpr AllColumnSumKernels kKernels = {
    KernelsOf<NarrowColumns>(),
    KernelsOf<WideColumns>(),
    {&AddRow<AddSquares, WideColumns>, nullptr, nullptr, &SumOf<WideColumns>},
    &SumShifted<WideColumns>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(AllColumnSumKernels)
