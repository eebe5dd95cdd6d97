#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "temporal/temporal_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "temporal/temporal_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"
#include "foundation/table-inl.h"
#include "foundation/widen-inl.h"

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
constexpr size_t kPiece = 256;
HWY_INLINE void RecurByTable(Several<int16_t*, KyBW8*> out, size_t n, const KyBW8* source,
                             const int16_t* state, const KyBW16* table) {
  HWY_ALIGN int16_t piece[kPiece];
  MapSpan(Place(), piece, n, source, state);
  LookUpEach(reinterpret_cast<uint16_t*>(piece), n, piece, table);
  MapSpan(Change(), out, n, state, piece);
}

// In a filtered sequence differences are small, except where something moves: most changes are
// found by shuffles, the fewer the smaller the differences are.
class NearChanges {
 public:
  explicit NearChanges(const KyBW8* near) : nearest_(near), nearer_(near), near_(near) {}

  // Gives the number of pixels up to the first vector with a difference that is not near.
  HWY_INLINE size_t Recur(Several<int16_t*, KyBW8*> out, size_t n, const KyBW8* source,
                          const int16_t* state) const {
#if HWY_TARGET == HWY_SCALAR
    (void)out, (void)n, (void)source, (void)state;
    return 0;
#else
    const D16 d16;
    const size_t lanes = hn::Lanes(D8()), half = hn::Lanes(d16);
    size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
      V16 a = hn::LoadU(d16, state + i), b = hn::LoadU(d16, state + i + half);
      if (!Step(a, b, LoadLanes(d16, source + i), LoadLanes(d16, source + i + half))) return i;
      hn::StoreU(a, d16, out.first + i);
      hn::StoreU(b, d16, out.first + i + half);
      StoreLanes(hn::ShiftRight<4>(a), out.more.first + i);
      StoreLanes(hn::ShiftRight<4>(b), out.more.first + i + half);
    }
    if (i == n) return n;
    const size_t first = HWY_MIN(n - i, half), more = n - i - first, j = i + first;
    V16 a = LoadPart(d16, state + i, first), b = LoadPart(d16, state + j, more);
    if (!Step(a, b, LoadPart(d16, source + i, first), LoadPart(d16, source + j, more))) return i;
    StorePart(d16, a, out.first + i, first);
    StorePart(d16, b, out.first + j, more);
    StorePart(d16, hn::ShiftRight<4>(a), out.more.first + i, first);
    StorePart(d16, hn::ShiftRight<4>(b), out.more.first + j, more);
    return n;
#endif
  }

 private:
  using D8 = hn::ScalableTag<uint8_t>;
  using V8 = hn::Vec<D8>;

#if HWY_TARGET != HWY_SCALAR
  using D16 = hn::ScalableTag<int16_t>;
  using V16 = hn::Vec<D16>;

  // Gives the states of two vectors their changes; false when one is not near.
  HWY_INLINE bool Step(V16& stateA, V16& stateB, V16 sourceA, V16 sourceB) const {
    const V16 a = hn::SaturatedSub(hn::ShiftLeft<4>(sourceA), stateA);
    const V16 b = hn::SaturatedSub(hn::ShiftLeft<4>(sourceB), stateB);
    const D8 d;
    V8 sizes = NarrowBlocks(d, hn::Abs(a), hn::Abs(b));
    if (!LookUp(sizes)) return false;
    const auto change = [](V8 size, V16 direction)
                            HWY_ATTR { return WithSign(hn::BitCast(D16(), size), direction); };
    stateA = hn::Add(stateA, change(hn::InterleaveLower(d, sizes, hn::Zero(d)), a));
    stateB = hn::Add(stateB, change(hn::InterleaveUpper(d, sizes, hn::Zero(d)), b));
    return true;
  }
#endif

  // The sizes of changes for those of differences, which are limited to 255; false when one is as
  // large.
  HWY_INLINE bool LookUp(V8& sizes) const {
    const D8 d;
    const auto areBelow = [&](uint8_t limit) HWY_ATTR {
      const V8 most = hn::Set(d, static_cast<uint8_t>(limit - 1));
      return hn::AllTrue(d, hn::Eq(hn::Max(sizes, most), most));
    };
    if (areBelow(64))
      sizes = nearest_(d, sizes);
    else if (areBelow(128))
      sizes = nearer_(d, sizes);
    else if (areBelow(255))
      sizes = near_(d, sizes);
    else
      return false;
    return true;
  }
#if HWY_TARGET != HWY_SCALAR
  // Sizes, which are 0 where the direction is, with the sign of the direction.
  template <class V>
  static HWY_INLINE V WithSign(V size, V direction) {
#if HWY_TARGET == HWY_AVX2
    return V{_mm256_sign_epi16(size.raw, direction.raw)};
#else
    const V sign = hn::BroadcastSignBit(direction);
    return hn::Sub(hn::Xor(size, sign), sign);
#endif
  }
#endif

  LowTable<64> nearest_;
  LowTable<128> nearer_;
  Table256 near_;
};

void Recur(Several<KyBW16*, KyBW8*> out, size_t n, const KyBW8* source, const KyBW16* state,
           const Changes* changes) {
  const auto* const old = reinterpret_cast<const int16_t*>(state);
  const Several<int16_t*, KyBW8*> to = {reinterpret_cast<int16_t*>(out.first), out.more};
  const NearChanges near(changes->near);
  for (size_t i = 0; i < n;) {
    if (changes->areOdd) i += near.Recur(to + i, n - i, source + i, old + i);
    if (i == n) return;
    const size_t length = std::min(kPiece, n - i);
    RecurByTable(to + i, length, source + i, old + i, changes->all);
    i += length;
  }
}

constexpr TemporalKernels kKernels = {&StartRow, &StepByShift, &StepByReciprocal, &Recur};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(TemporalKernels)
