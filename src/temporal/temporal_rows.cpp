#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "temporal/temporal_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "temporal/temporal_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Of each pixel: what becomes of the sum, the mean, and the pixel itself.
struct Start {
  using Lane = uint16_t;
  KyBW16 others;

  template <class D, class V>
  HWY_INLINE auto operator()(D d, V current, V, V) const {
    const auto level = AsSigned(current);
    return Several{hn::Mul(current, hn::Set(d, others)), level, level};
  }
};
template <class Divide>
struct Step {
  using Lane = uint16_t;
  Divide divide;

  template <class D, class V>
  HWY_INLINE auto operator()(D d, V current, V oldest, V sum) const {
    const V total = hn::Add(sum, current);
    const V mean = hn::And(divide(d, total), hn::Set(d, 0xFF));
    return Several{hn::Sub(total, oldest), AsSigned(mean), AsSigned(current)};
  }
};
struct ShiftBy {
  int shift;

  template <class D, class V>
  HWY_INLINE V operator()(D, V total) const {
    return hn::ShiftRightSame(total, shift);
  }
};
struct MultiplyBy {
  Reciprocal reciprocal;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V total) const {
    const V high = hn::MulHigh(total, hn::Set(d, reciprocal.multiplier));
    const V rest = hn::ShiftRightSame(hn::Sub(total, high), reciprocal.before);
    return hn::ShiftRightSame(hn::Add(high, rest), reciprocal.after);
  }
};

template <class Op>
HWY_INLINE void UpdateRow(const Op& op, const MovingRow& row) {
  if (row.slot != nullptr)
    MapSpan(op, Several{row.sum, row.destination, row.slot}, row.width, row.current, row.oldest,
            row.sum);
  else
    MapSpan(op, Several{row.sum, row.destination}, row.width, row.current, row.oldest, row.sum);
}

void StartRow(const MovingRow& row, KyBW16 others) { UpdateRow(Start{others}, row); }
void StepByShift(const MovingRow& row, int shift) { UpdateRow(Step<ShiftBy>{{shift}}, row); }
void StepByReciprocal(const MovingRow& row, const Reciprocal& reciprocal) {
  UpdateRow(Step<MultiplyBy>{{reciprocal}}, row);
}

// The place of a pixel's change in the table.
struct Place {
  using Lane = int16_t;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V source, V state) const {
    const V farthest = hn::Set(d, kFarthest);
    const V difference = hn::SaturatedSub(hn::ShiftLeft<4>(source), state);
    return hn::Add(hn::Max(hn::Min(difference, farthest), hn::Neg(farthest)), farthest);
  }
};
// The state after its change, and the level that it stands for.
struct Change {
  using Lane = int16_t;

  template <class D, class V>
  HWY_INLINE Several<V, V> operator()(D, V state, V change) const {
    const V changed = hn::Add(state, change);
    return {changed, {hn::ShiftRight<4>(changed)}};
  }
};

// The table is read between vector loops over a piece that stays in the first cache.
void Recur(Several<KyBW16*, KyBW8*> out, size_t n, const KyBW8* source, const KyBW16* state,
           const KyBW16* const* changes) {
  constexpr size_t kPiece = 512;
  HWY_ALIGN int16_t piece[kPiece];
  for (size_t i = 0; i < n; i += kPiece) {
    const size_t length = std::min(kPiece, n - i);
    const auto* const old = reinterpret_cast<const int16_t*>(state + i);
    MapSpan(Place(), piece, length, source + i, old);
    LookUpEach(reinterpret_cast<uint16_t*>(piece), length, piece, *changes);
    MapSpan(Change(), Several{reinterpret_cast<int16_t*>(out.first + i), out.more.first + i},
            length, old, piece);
  }
}

constexpr TemporalKernels kKernels = {&StartRow, &StepByShift, &StepByReciprocal, &Recur};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(TemporalKernels)
