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

// What becomes of the sum, and the mean, whose low 8 bits count.
template <class V>
struct Updated {
  V sum, mean;
};

struct Start {
  KyBW16 others;

  template <class D, class V>
  HWY_INLINE Updated<V> operator()(D d, V current, V, V) const {
    return {hn::Mul(current, hn::Set(d, others)), current};
  }
};
template <class Divide>
struct Step {
  Divide divide;

  template <class D, class V>
  HWY_INLINE Updated<V> operator()(D d, V current, V oldest, V sum) const {
    const V total = hn::Add(sum, current);
    return {hn::Sub(total, oldest), divide(d, total)};
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

template <bool kCopies, class Op>
HWY_INLINE void UpdateRow(const Op& op, const MovingRow& row) {
  const hn::ScalableTag<uint16_t> d;
  const hn::Rebind<uint8_t, decltype(d)> d8;
  const size_t lanes = hn::Lanes(d);
  const auto update = [&](size_t i, const auto& load, const auto& store) HWY_ATTR {
    const auto current = load(d8, row.current + i);
    const auto updated =
        op(d, hn::PromoteTo(d, current), load(d, row.oldest + i), load(d, row.sum + i));
    store(d, updated.sum, row.sum + i);
    store(d, hn::And(updated.mean, hn::Set(d, 0xFF)), row.destination + i);
    if constexpr (kCopies) store(d8, current, row.slot + i);
  };
  size_t i = 0;
  for (; i + lanes <= row.width; i += lanes)
    update(
        i, [](auto tag, auto* from) HWY_ATTR { return LoadLanes(tag, from); },
        [](auto tag, auto v, auto* to) HWY_ATTR { StoreLanes(tag, v, to); });
  const size_t rest = row.width - i;
  if (rest == 0) return;
  update(
      i, [=](auto tag, auto* from) HWY_ATTR { return LoadPart(tag, from, rest); },
      [=](auto tag, auto v, auto* to) HWY_ATTR { StorePart(tag, v, to, rest); });
}
template <class Op>
void UpdateRow(const Op& op, const MovingRow& row) {
  if (row.slot != nullptr)
    UpdateRow<true>(op, row);
  else
    UpdateRow<false>(op, row);
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
struct Change {
  using Lane = int16_t;

  template <class D, class V>
  HWY_INLINE V operator()(D, V state, V change) const {
    return hn::Add(state, change);
  }
};
struct Level {
  using Lane = int16_t;

  template <class D, class V>
  HWY_INLINE V operator()(D, V state) const {
    return hn::ShiftRight<4>(state);
  }
};

// The table is read between vector loops over a piece that stays in the first cache.
void Recur(const KyBW8* source, KyBW16* state, KyBW8* destination, size_t n,
           const KyBW16* changes) {
  constexpr size_t kPiece = 512;
  HWY_ALIGN int16_t piece[kPiece];
  for (size_t i = 0; i < n; i += kPiece) {
    const size_t length = std::min(kPiece, n - i);
    auto* const states = reinterpret_cast<int16_t*>(state + i);
    MapSpan(Place(), piece, length, source + i, states);
    LookUpEach(reinterpret_cast<uint16_t*>(piece), length, piece, changes);
    MapSpan(Change(), states, length, states, piece);
    MapSpan(Level(), destination + i, length, states);
  }
}

constexpr TemporalKernels kKernels = {&StartRow, &StepByShift, &StepByReciprocal, &Recur};

}  // namespace

const TemporalKernels* TableOfTemporalKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfTemporalKernels);
const TemporalKernels& ChooseTemporalKernels() noexcept {
  return *KY_DISPATCH(TableOfTemporalKernels)();
}
}  // namespace ky
#endif
