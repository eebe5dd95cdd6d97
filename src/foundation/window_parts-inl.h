// What one row contributes to the results of the windows that it is part of. Included by row files
// like lanes-inl.h.
#if defined(KY_FOUNDATION_WINDOW_PARTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_WINDOW_PARTS_INL_H_
#undef KY_FOUNDATION_WINDOW_PARTS_INL_H_
#else
#define KY_FOUNDATION_WINDOW_PARTS_INL_H_
#endif

#include <cstdint>
#include <type_traits>
#include <utility>

#include "foundation/registers-inl.h"
#include "foundation/widen-inl.h"
#include "foundation/window_lanes-inl.h"
#include "foundation/window_rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// The base of formulas over windows of 2 * radius + 1 rows and columns.
template <int radius>
struct WindowOp {
  static_assert(radius <= 3, "a PickedRow reaches no further");
  using Lane = int16_t;
  static constexpr int kRadius = radius;
  static constexpr bool kIsLong = false;
};

// The same for formulas that do so much that they hide what loads take.
template <int radius>
struct LongWindowOp : WindowOp<radius> {
  static constexpr bool kIsLong = true;
};

// The pixels of one row around a vector of places: at[i] of a phase are those i pixels to the right
// of its places, which is kStep elements each.
template <int kRadius, int kStep = 1>
class Neighbours {
 public:
  HWY_INLINE Neighbours() {}
  template <class Row>
  HWY_INLINE explicit Neighbours(const Row& row) {
    const D16 d16;
#if HWY_TARGET == HWY_SCALAR
    for (int i = 0; i < kColumns; ++i) columns_[i] = hn::PromoteTo(d16, row(kStep * (i - kRadius)));
#else
    const hn::Repartition<uint16_t, D8> unsigned16;
    ForEach<(kColumns + 1) / 2>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
      constexpr int kColumn = kStep == 1 ? 2 * i - kRadius : kStep * (i - kRadius);
      constexpr int kFirst = kStep == 1 ? 2 * i : i,
                    kSecond = kStep == 1 ? 2 * i + 1 : i + kSecondPhase;
      const auto pair = hn::BitCast(unsigned16, Pinned(row(kColumn)));
      columns_[kFirst] = hn::BitCast(d16, hn::And(pair, hn::Set(unsigned16, 0xFF)));
      columns_[kSecond] = hn::BitCast(d16, hn::ShiftRight<8>(pair));
    });
#endif
  }
  HWY_INLINE void Add(const Neighbours& others) {
    for (int i = 0; i < kColumns; ++i) columns_[i] = hn::Add(columns_[i], others.columns_[i]);
  }
  HWY_INLINE const V16* Phase(int phase) const { return columns_ + kRadius + phase * kSecondPhase; }
  // The pixels `right` columns to the right of the first phase's places, in rows of grey pixels.
  HWY_INLINE V16 Column(int right) const {
    static_assert(kStep == 1);
    return columns_[kRadius + right];
  }

 private:
  // The odd places' left neighbours are even places in rows of grey pixels: the phases share all
  // columns but the outermost.
  static constexpr int kSize = 2 * kRadius + 1;
  static constexpr int kSecondPhase = kStep == 1 ? 1 : kSize;
  static constexpr int kColumns = kStep == 1 ? kSize + kPhases - 1 : kSize * kPhases;
  V16 columns_[kColumns];
};

// Formulas in which a row contributes its pixels under weights that are symmetric about the centre:
// SymmetricRow<6, 4, 1> has 1 4 6 4 1. Two neighbouring weights add up to 128 at most.
template <int... kWeights>
struct SymmetricRow : WindowOp<sizeof...(kWeights) - 1> {
  using RowBase = SymmetricRow;
  static constexpr int kRadius = sizeof...(kWeights) - 1;

  // The weight of the pixel i columns to the right; 0 outside the window.
  static constexpr int WeightOf(int i) {
    constexpr int kAll[] = {kWeights...};
    return i < -kRadius || i > kRadius ? 0 : kAll[i < 0 ? -i : i];
  }
  HWY_INLINE V16 Row(D16 d, const V16* at) const {
    V16 sum = Times<WeightOf(0)>(d, at[0]);
    ForEach<kRadius>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
      sum = hn::Add(sum, Times<WeightOf(i + 1)>(d, hn::Add(at[-i - 1], at[i + 1])));
    });
    return sum;
  }

 private:
  template <int kWeight>
  HWY_INLINE static V16 Times(D16 d, V16 v) {
    if (kWeight == 1) return v;
    return kWeight == 2 ? hn::Add(v, v) : hn::Mul(v, hn::Set(d, static_cast<int16_t>(kWeight)));
  }
};
// Whether Op's row is that of a SymmetricRow, and not one of its own.
template <class Op>
constexpr bool kHasSymmetricRow = requires {
  requires std::is_same_v<decltype(&Op::Row), V16 (Op::RowBase::*)(D16, const V16*) const>;
};

#if KY_HAVE_MUL_ADD_BYTES
// first * even bytes + second * odd bytes.
template <int kFirst, int kSecond>
HWY_INLINE V16 WeighBytes(hn::Vec<D8> v) {
  const hn::Repartition<uint16_t, D8> d16;
  if constexpr (kFirst == 1 && kSecond == 0)
    return hn::BitCast(D16(), hn::And(hn::BitCast(d16, v), hn::Set(d16, 0xFF)));
  if constexpr (kFirst == 0 && kSecond == 1)
    return hn::BitCast(D16(), hn::ShiftRight<8>(hn::BitCast(d16, v)));
  return MulAddBytes(v, hn::BitCast(D8(), hn::Set(d16, uint16_t{kFirst + 256 * kSecond})));
}
HWY_INLINE V16 SumOf(V16 first) { return first; }
template <class... V>
HWY_INLINE V16 SumOf(V16 first, V... others) {
  return hn::Add(first, SumOf(others...));
}

// What a SymmetricRow contributes, from products of bytes in pairs: to the even and the odd places
// in rows of grey pixels, otherwise to the lower and the upper half of each block of 16 bytes.
template <class Op, int kStep, class Row>
struct ByteRow {
  static constexpr int kRadius = Op::kRadius;
  const Row& row;

  HWY_INLINE void Make(V16 (&part)[kPhases]) const {
    if constexpr (kStep != 1)
      MakeBlocks(part);
    else if constexpr (kIsUniform)
      MakeUniform(part, std::make_integer_sequence<int, kRadius - 1>());
    else if constexpr (kRadius == 1 && Op::WeightOf(0) == 2 && Op::WeightOf(1) == 1)
      MakeBinomial(part);
    else
      MakePhases(part, std::make_integer_sequence<int, kRadius + 1>());
  }

 private:
  static constexpr bool kIsUniform = [] {
    for (int i = 0; i <= kRadius; ++i)
      if (Op::WeightOf(i) != 1) return false;
    return true;
  }();

  // Blocks have two uses for each vector.
  HWY_INLINE hn::Vec<D8> At(int column) const {
    const auto v = row(kStep * column);
    return kStep != 1 ? Pinned(v) : v;
  }

  // The pairs lie so many columns to the right of the even places, and one column less to the right
  // of the odd ones.
  template <int... k>
  HWY_INLINE void MakePhases(V16 (&part)[kPhases], std::integer_sequence<int, k...>) const {
    part[0] = SumOf(WeighPair<2 * k - kRadius>(At(2 * k - kRadius))...);
    part[1] = SumOf(WeighPair<2 * k - kRadius - 1>(At(2 * k - kRadius))...);
  }
  // Even and odd places have all but their outermost columns in common.
  template <int... k>
  HWY_INLINE void MakeUniform(V16 (&part)[kPhases], std::integer_sequence<int, k...>) const {
    const V16 inner =
        SumOf(WeighBytes<1, 1>(At(1 - kRadius)), WeighBytes<1, 1>(At(2 * k + 3 - kRadius))...);
    part[0] = hn::Add(inner, WeighBytes<1, 0>(At(-kRadius)));
    part[1] = hn::Add(inner, WeighBytes<0, 1>(At(kRadius)));
  }
  // Sums of neighbouring sums of two.
  HWY_INLINE void MakeBinomial(V16 (&part)[kPhases]) const {
    const V16 inner = WeighBytes<1, 1>(At(0));
    part[0] = hn::Add(WeighBytes<1, 1>(At(-1)), inner);
    part[1] = hn::Add(inner, WeighBytes<1, 1>(At(1)));
  }
  // One pair after the other, or there are not enough registers.
  HWY_INLINE void MakeBlocks(V16 (&part)[kPhases]) const {
    static_assert(Op::WeightOf(kRadius) == 1);
    const D8 d;
    const auto last = At(kRadius), zero = hn::Zero(d);
    part[0] = hn::BitCast(D16(), hn::InterleaveLower(d, last, zero));
    part[1] = hn::BitCast(D16(), hn::InterleaveUpper(d, last, zero));
    ForEach<kRadius>([&]<int k>(std::integral_constant<int, k>) KY_INLINE_ATTR {
      constexpr int kColumn = 2 * k - kRadius;
      const auto first = At(kColumn), second = At(kColumn + 1);
      const V16 lower = WeighPair<kColumn>(hn::InterleaveLower(d, first, second));
      const V16 upper = WeighPair<kColumn>(hn::InterleaveUpper(d, first, second));
      part[0] = Pinned(hn::Add(part[0], lower));
      part[1] = Pinned(hn::Add(part[1], upper));
    });
  }
  // Under the weights of a column and of the next.
  template <int kColumn>
  HWY_INLINE static V16 WeighPair(hn::Vec<D8> pair) {
    return WeighBytes<Op::WeightOf(kColumn), Op::WeightOf(kColumn + 1)>(pair);
  }
};
#endif

// What a row contributes, for each phase, and results of it.
template <class Op, int kStep>
struct RowParts {
  using D = D8;
  using Part = decltype(std::declval<Op>().Row(D16(), nullptr));
  Part part[kPhases];

#if KY_HAVE_MUL_ADD_BYTES
  static constexpr bool kOfBytes = kHasSymmetricRow<Op>;
#else
  static constexpr bool kOfBytes = false;
#endif

  template <class Row>
  HWY_INLINE void Make(const Op& op, const Row& row) {
#if KY_HAVE_MUL_ADD_BYTES
    if constexpr (kOfBytes) return ByteRow<Op, kStep, Row>{row}.Make(part);
#endif
    const Neighbours<Op::kRadius, kStep> neighbours(row);
    for (int p = 0; p < kPhases; ++p) part[p] = op.Row(D16(), neighbours.Phase(p));
  }
  template <class... RowPart>
  HWY_INLINE static hn::Vec<D8> Result(const Op& op, const RowPart&... row) {
    V16 results[kPhases];
    for (int p = 0; p < kPhases; ++p) results[p] = op(D16(), row.part[p]...);
    return Join(results);
  }
  // Results, for each phase, as bytes: of lanes from 0 to 255, or of the upper halves of lanes.
  HWY_INLINE static hn::Vec<D8> Join(const V16 (&results)[kPhases]) {
#if KY_HAVE_MUL_ADD_BYTES
    if constexpr (kOfBytes && kStep != 1) return NarrowBlocks(D8(), results[0], results[1]);
#endif
    return JoinPhases(results);
  }
  HWY_INLINE static hn::Vec<D8> JoinUpperBytes(const V16 (&results)[kPhases]) {
#if HWY_TARGET != HWY_SCALAR
    if constexpr (!kOfBytes || kStep == 1)
      return hn::OddEven(hn::BitCast(D8(), results[1]),
                         hn::BitCast(D8(), ShiftRightUnsigned<8>(results[0])));
#endif
    V16 levels[kPhases];
    for (int p = 0; p < kPhases; ++p) levels[p] = ShiftRightUnsigned<8>(results[p]);
    return Join(levels);
  }
};

// Formulas that work on bytes say so by `using Lane = uint8_t`: op.Row(d, at), in lanes of D8,
// is what a row contributes, with at(right) as above.
template <int kStep, class Row>
struct BytesAround {
  const Row& row;

  HWY_INLINE V8 operator()(int right) const { return row(kStep * right); }
};
template <class Op, int kStep>
requires std::is_same_v<typename Op::Lane, uint8_t>
struct RowParts<Op, kStep> {
  using D = D8;
  template <class Row>
  using Around = BytesAround<kStep, Row>;
  decltype(std::declval<Op>().Row(D(), std::declval<Around<LoadedRow>>())) part;

  template <class Row>
  HWY_INLINE void Make(const Op& op, const Row& row) {
    part = op.Row(D(), Around<Row>{row});
  }
  template <class... RowPart>
  HWY_INLINE static V8 Result(const Op& op, const RowPart&... row) {
    return op(D(), row.part...);
  }
};

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
