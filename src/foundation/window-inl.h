// The vector loops of neighbourhood operations, for kernels that window.h walks. Compiled once per
// instruction set, as lanes-inl.h is.
//
// Sums of pixels need 16 bits. A vector of 8-bit places therefore falls into phases of 16-bit
// lanes: the even places and the odd ones, which takes no crossing of lanes, as the left neighbour
// of an even place is an odd one. The one-lane scalar target has a single phase.
#if defined(KY_FOUNDATION_WINDOW_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_WINDOW_INL_H_
#undef KY_FOUNDATION_WINDOW_INL_H_
#else
#define KY_FOUNDATION_WINDOW_INL_H_
#endif

#include <utility>

#include "foundation/lanes-inl.h"
#include "foundation/pinned-inl.h"
#include "foundation/pitch.h"
#include "foundation/prefetch-inl.h"
#include "foundation/widen-inl.h"
#include "foundation/window.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// The attributes of lambdas that are inlined however large what surrounds them grows.
#undef KY_INLINE_ATTR
#if (HWY_COMPILER_GCC || HWY_COMPILER_CLANG) && !KY_SANITIZED
#define KY_INLINE_ATTR HWY_ATTR __attribute__((always_inline))
#else
#define KY_INLINE_ATTR HWY_ATTR
#endif

// f(0), ... f(kCount - 1), each with a constant of its own: compilers leave loops of many steps as
// they are, and arrays of vectors in memory with them.
template <int kCount, class F>
HWY_INLINE void ForEach(const F& f) {
  [&]<int... k>(std::integer_sequence<int, k...>) KY_INLINE_ATTR {
    (f(std::integral_constant<int, k>()), ...);
  }
  (std::make_integer_sequence<int, kCount>());
}

// The base of formulas over windows of 2 * radius + 1 rows and columns.
template <int radius>
struct WindowOp {
  using Lane = int16_t;
  static constexpr int kRadius = radius;
};

using D8 = hn::ScalableTag<uint8_t>;
#if HWY_TARGET == HWY_SCALAR
constexpr int kPhases = 1;
using D16 = hn::Rebind<int16_t, D8>;
using D32 = hn::Rebind<int32_t, D8>;
#else
constexpr int kPhases = 2;
using D16 = hn::Repartition<int16_t, D8>;
using D32 = hn::Repartition<int32_t, D8>;
#endif
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;

// The lanes of formulas that stay within bytes. These do little with what they load, and most loads
// of neighbours cross a cache line: all that are 64 bytes wide, but half of those of 32.
using DBytes = hn::CappedTag<uint8_t, 32>;
using VBytes = hn::Vec<DBytes>;

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

// A vector that is loaded once. Compilers would rather read a vector that has several uses from
// memory for each of them, where every other one that is not aligned crosses a cache line.
HWY_INLINE hn::Vec<D8> LoadOnce(const uint8_t* from) { return Pinned(hn::LoadU(D8(), from)); }

// The pixels of one row around a vector of places: at[i] of a phase are those i pixels to the right
// of its places, which is kStep elements each.
template <int kRadius, int kStep = 1>
class Neighbours {
 public:
  HWY_INLINE Neighbours() {}
  HWY_INLINE explicit Neighbours(const uint8_t* places) {
    const D16 d16;
#if HWY_TARGET == HWY_SCALAR
    for (int i = 0; i < kColumns; ++i)
      columns_[i] = hn::PromoteTo(d16, hn::LoadU(D8(), places + kStep * (i - kRadius)));
#else
    const hn::Repartition<uint16_t, D8> unsigned16;
    ForEach<(kColumns + 1) / 2>([&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
      constexpr int kColumn = kStep == 1 ? 2 * i - kRadius : kStep * (i - kRadius);
      constexpr int kFirst = kStep == 1 ? 2 * i : i,
                    kSecond = kStep == 1 ? 2 * i + 1 : i + kSecondPhase;
      const auto pair = hn::BitCast(unsigned16, LoadOnce(places + kColumn));
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

// Lanes without a sign, shifted.
template <int kBits>
HWY_INLINE V16 ShiftRightUnsigned(V16 v) {
  const hn::Rebind<uint16_t, D16> d;
  return hn::BitCast(D16(), hn::ShiftRight<kBits>(hn::BitCast(d, v)));
}

// The phases as 8-bit places again. Their lanes must be 0 to 255.
HWY_INLINE hn::Vec<D8> JoinPhases(const V16 (&phases)[kPhases]) {
  const D8 d;
#if HWY_TARGET == HWY_SCALAR
  return hn::DemoteTo(d, phases[0]);
#else
  return hn::BitCast(d, hn::Or(phases[0], hn::ShiftLeft<8>(phases[1])));
#endif
}

#if HWY_TARGET != HWY_SCALAR
// sum + the products of 16-bit lanes with the halves of `weights`, the two products of each pair of
// lanes added up.
HWY_INLINE V32 MulAddPairs(V16 lanes, int32_t weights, V32 sum) {
  const D32 d32;
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128
  const V16 pairs = hn::BitCast(D16(), hn::Set(d32, weights));
#if HWY_TARGET == HWY_AVX3_DL
  __asm__("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(lanes.raw), "v"(pairs.raw));
  return sum;
#endif
  V32 unused = hn::Zero(d32);
  return hn::ReorderWidenMulAccumulate(d32, lanes, pairs, sum, unused);
#else
  const V32 both = hn::BitCast(d32, lanes);
  const auto low = hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(both)),
                           hn::Set(d32, static_cast<int16_t>(weights)));
  return hn::Add(sum, hn::Add(low, hn::Mul(hn::ShiftRight<16>(both), hn::Set(d32, weights >> 16))));
#endif
}
#endif

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
template <class Op, int kStep>
struct ByteRow {
  static constexpr int kRadius = Op::kRadius;
  const uint8_t* places;

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
    const uint8_t* const from = places + kStep * column;
    return kStep != 1 ? LoadOnce(from) : hn::LoadU(D8(), from);
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

  HWY_INLINE void Make(const Op& op, const uint8_t* places) {
#if KY_HAVE_MUL_ADD_BYTES
    if constexpr (kOfBytes) return ByteRow<Op, kStep>{places}.Make(part);
#endif
    const Neighbours<Op::kRadius, kStep> neighbours(places);
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

// Formulas that work on bytes say so by `using Lane = uint8_t`: op.Row(d, at), in lanes of DBytes,
// is what a row contributes, with at(right) as above.
template <int kStep>
struct BytesAround {
  const uint8_t* places;

  HWY_INLINE VBytes operator()(int right) const {
    return hn::LoadU(DBytes(), places + kStep * right);
  }
};
template <class Op, int kStep>
requires std::is_same_v<typename Op::Lane, uint8_t>
struct RowParts<Op, kStep> {
  using D = DBytes;
  using Around = BytesAround<kStep>;
  decltype(std::declval<Op>().Row(D(), Around())) part;

  HWY_INLINE void Make(const Op& op, const uint8_t* places) { part = op.Row(D(), Around{places}); }
  template <class... RowPart>
  HWY_INLINE static VBytes Result(const Op& op, const RowPart&... row) {
    return op(D(), row.part...);
  }
};

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
