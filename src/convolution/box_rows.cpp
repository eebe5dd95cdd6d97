#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/box_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/box_rows.h"

#include "convolution/phases-inl.h"
#include "foundation/dispatch.h"
#include "foundation/shifts-inl.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// What a level counts: itself, or its square.
struct Level {
  template <class D, class V>
  static HWY_INLINE V Of(D, V v) {
    return v;
  }
  template <class D, class V>
  static HWY_INLINE V Change(D, V entering, V leaving) {
    return hn::Sub(entering, leaving);
  }
};
struct Square {
  template <class D, class V>
  static HWY_INLINE V Of(D d, V v) {
    const V centred = hn::Sub(v, hn::Set(d, kMiddleLevel));
    return hn::Mul(centred, centred);
  }
  // (a - m)^2 - (b - m)^2 = (a - b) (a + b - 2 m)
  template <class D, class V>
  static HWY_INLINE V Change(D d, V entering, V leaving) {
    return hn::Mul(hn::Sub(entering, leaving),
                   hn::Sub(hn::Add(entering, leaving), hn::Set(d, 2 * kMiddleLevel)));
  }
};

template <class Column, class Count>
struct AddOp {
  using Lane = Column;
  Column times;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V columns, V row) const {
    return hn::Add(columns, hn::Mul(Count::Of(d, row), hn::Set(d, times)));
  }
};
template <class Column, class Count>
struct SlideOp {
  using Lane = Column;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V columns, V entering, V leaving) const {
    return hn::Add(columns, Count::Change(d, entering, leaving));
  }
};
template <class Column, class Count>
void AddRow(Column* columns, size_t n, const KyBW8* row, Column times) {
  MapSpan(AddOp<Column, Count>{times}, columns, n, columns, row);
}
template <class Column, class Count>
void SlideRow(Column* columns, size_t n, const KyBW8* entering, const KyBW8* leaving) {
  MapSpan(SlideOp<Column, Count>(), columns, n, columns, entering, leaving);
}

using DU32 = hn::ScalableTag<uint32_t>;
using VU32 = hn::Vec<DU32>;

#if HWY_TARGET != HWY_SCALAR
// Lane i is the sum of lanes 0 to i.
HWY_INLINE VU32 PrefixSums(VU32 v) {
  const DU32 d;
  const VU32 zero = hn::Zero(d);
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  v = hn::Add(v, Behind<15>(d, zero, v));
  v = hn::Add(v, Behind<14>(d, zero, v));
  v = hn::Add(v, Behind<12>(d, zero, v));
  return hn::Add(v, Behind<8>(d, zero, v));
#else
  v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
  if constexpr (hn::MaxLanes(d) == 8) v = hn::Add(v, Behind<4>(d, zero, hn::Broadcast<3>(v)));
  return v;
#endif
}
// The columns of even and of odd places.
HWY_INLINE void LoadPhases(const uint16_t* columns, VU32& even, VU32& odd) {
  const DU32 d;
  const VU32 both = hn::BitCast(d, hn::LoadU(hn::Repartition<uint16_t, DU32>(), columns));
  even = hn::And(both, hn::Set(d, 0xFFFF));
  odd = hn::ShiftRight<16>(both);
}
HWY_INLINE void LoadPhases(const uint32_t* columns, VU32& even, VU32& odd) {
  hn::LoadInterleaved2(DU32(), columns, even, odd);
}
#endif

template <class Column>
void SumRow(Phases<uint32_t> sums, size_t n, const Column* columns) {
#if HWY_TARGET == HWY_SCALAR
  uint32_t sum = 0;
  for (size_t i = 0; i < n; ++i) *sums.At(static_cast<ptrdiff_t>(i)) = sum += columns[i];
#else
  const DU32 d;
  const size_t lanes = hn::Lanes(d);
  const auto last =
      hn::IndicesFromVec(d, hn::Set(hn::RebindToSigned<DU32>(), static_cast<int32_t>(lanes - 1)));
  VU32 before = hn::Zero(d);
  for (size_t i = 0; 2 * i < n; i += lanes) {
    VU32 even, odd;
    LoadPhases(columns + 2 * i, even, odd);
    const VU32 here = PrefixSums(hn::Add(even, odd));
    const VU32 all = hn::Add(here, before);
    before = hn::Add(before, hn::TableLookupLanes(here, last));
    hn::StoreU(all, d, sums.odd + i);
    hn::StoreU(hn::Sub(all, odd), d, sums.even + i);
  }
#endif
}

void Ramp(uint32_t* to, size_t n, uint32_t first, uint32_t step) {
  const DU32 d;
  const size_t lanes = hn::Lanes(d);
  const VU32 more = hn::Set(d, static_cast<uint32_t>(lanes) * step);
  VU32 v = hn::Add(hn::Set(d, first), hn::Mul(hn::Iota(d, 0), hn::Set(d, step)));
  for (size_t i = 0; i < n; i += lanes, v = hn::Add(v, more)) hn::StoreU(v, d, to + i);
}

template <class D>
HWY_INLINE hn::Vec<D> SumAt(D d, const WindowSums& sums, int phase, size_t i) {
  const hn::RebindToUnsigned<D> du;
  return hn::BitCast(
      d, hn::Sub(hn::LoadU(du, sums.front[phase] + i), hn::LoadU(du, sums.back[phase] + i)));
}

using DI32 = hn::ScalableTag<int32_t>;
using DF32 = hn::ScalableTag<float>;

// The integer nearest to a quotient of 0 to 255: next to 1.5 * 2^23, floats are the integers.
template <class V>
HWY_INLINE hn::Vec<DI32> NearestLevel(V v) {
  const DF32 df;
  const DI32 d;
  const auto bits = hn::BitCast(d, hn::Add(v, hn::Set(df, 12582912.0f)));
  return hn::And(bits, hn::Set(d, 0xFFFF));
}

// Quotients S / n of sums up to 255 n. The product of S, which floats hold exactly, with the
// rounded reciprocal is off by less than 2^-15. For odd n the quotient is at least 1 / 2n away from
// where rounding changes: enough for n up to 2^14. For even n it may be right there, so that a
// quarter of 1 / n is added, which is then the distance: enough for n up to 2^13.
template <bool kOddAreas>
void AverageRow(KyBW8* out, size_t n, const WindowSums& sums, const WindowAreas& areas) {
  const DF32 df;
  MapPhases<DI32>(
      [&](DI32 d, int phase, size_t i) HWY_ATTR {
        auto sum = hn::ConvertTo(df, SumAt(d, sums, phase, i));
        if constexpr (!kOddAreas) sum = hn::Add(sum, hn::Set(df, 0.25f));
        return NearestLevel(hn::Mul(sum, hn::LoadU(df, areas.reciprocal[phase] + i)));
      },
      out, n);
}
// For larger areas the estimate may be one off, either way, which the remainder tells.
void AverageOfLarge(KyBW8* out, size_t n, const WindowSums& sums, const WindowAreas& areas) {
  const DF32 df;
  MapPhases<DI32>(
      [&](DI32 d, int phase, size_t i) HWY_ATTR {
        const auto sum = SumAt(d, sums, phase, i), area = hn::LoadU(d, areas.area[phase] + i);
        const auto reciprocal = hn::LoadU(df, areas.reciprocal[phase] + i);
        const auto estimate = NearestLevel(hn::Mul(hn::ConvertTo(df, sum), reciprocal));
        const auto rest = hn::Sub(sum, hn::Mul(estimate, area)), twice = hn::Add(rest, rest);
        const auto tooLarge = hn::VecFromMask(d, hn::Lt(twice, hn::Neg(area)));
        const auto tooSmall = hn::VecFromMask(d, hn::Gt(hn::Add(twice, hn::Set(d, 1)), area));
        return hn::Sub(hn::Add(estimate, tooLarge), tooSmall);
      },
      out, n);
}

// D = n Q - S^2 is an integer below 2^46. Rounding changes at m / 2 with odd m, and 4 D is (m n)^2
// or differs from it by 1 or more. With an eighth added to D, it differs by a half or more, always
// to its own side: sqrt(D) / n is 1 / (2044 n^2) > 2^-43 away from m / 2 then. The root and the
// product with the rounded reciprocal are off by less than 2^-44.
void DeviationRow(KyBW8* out, size_t n, const WindowSums& sums, const WindowSums& squares,
                  const WindowAreas& areas) {
  using D64 = hn::ScalableTag<double>;
  const D64 df;
  MapPhases<hn::Rebind<int32_t, D64>>(
      [&](auto d, int phase, size_t i) HWY_ATTR {
        const auto bias = hn::LoadU(d, areas.bias[phase] + i);
        const auto sum = hn::PromoteTo(df, hn::Sub(SumAt(d, sums, phase, i), bias));
        const auto square = hn::PromoteTo(df, SumAt(d, squares, phase, i));
        const auto area = hn::PromoteTo(df, hn::LoadU(d, areas.area[phase] + i));
        const auto variance =
            hn::Add(hn::Sub(hn::Mul(area, square), hn::Mul(sum, sum)), hn::Set(df, 0.125));
        // What lies beyond the end of the row may be negative.
        const auto root = hn::Mul(hn::Sqrt(hn::Max(variance, hn::Zero(df))),
                                  hn::LoadU(df, areas.precise[phase] + i));
        return hn::DemoteTo(d, hn::Add(root, hn::Set(df, 0.5)));
      },
      out, n);
}

struct ThresholdOp {
  using Lane = int16_t;
  LocalThreshold parameters;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V average) const {
    const V least = hn::Add(average, hn::Set(d, parameters.offset));
    return hn::IfThenElse(hn::Lt(source, least), hn::Set(d, parameters.low),
                          hn::Set(d, parameters.high));
  }
};
void ThresholdRow(KyBW8* out, size_t n, const KyBW8* source, const KyBW8* average,
                  const LocalThreshold& parameters) {
  MapSpan(ThresholdOp{parameters}, out, n, source, average);
}

template <class Column, class Count>
constexpr ColumnKernels<Column> ColumnsOf() {
  return {&AddRow<Column, Count>, &SlideRow<Column, Count>, &SumRow<Column>};
}
constexpr BoxKernels kKernels = {ColumnsOf<uint16_t, Level>(),
                                 ColumnsOf<uint32_t, Level>(),
                                 ColumnsOf<uint32_t, Square>(),
                                 &Ramp,
                                 &AverageRow<true>,
                                 &AverageRow<false>,
                                 &AverageOfLarge,
                                 &DeviationRow,
                                 &ThresholdRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(BoxKernels)
