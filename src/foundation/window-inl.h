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
#include "foundation/pitch.h"
#include "foundation/prefetch-inl.h"
#include "foundation/window.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// From one row to another, which may lie in different arrays.
HWY_INLINE ptrdiff_t BytesBetween(const uint8_t* from, const uint8_t* to) {
  return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(to) -
                                reinterpret_cast<uintptr_t>(from));
}

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

// Every result is op(d, at).
template <int kRadius, int kStep = 1, class Op>
HWY_INLINE void MapWindows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows) {
  const hn::ScalableTag<uint8_t> d;
  for (ptrdiff_t y = 0; y < out.height; ++y)
    for (ptrdiff_t x = 0; x < out.width; x += static_cast<ptrdiff_t>(hn::Lanes(d)))
      hn::StoreU(op(d, Around<decltype(d), kRadius, kStep>{d, rows + y, x}), d, out.Row(y) + x);
}

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

// The pixels of one row around a vector of places: at[i] of a phase are those i pixels to the right
// of its places, which is kStep elements each.
template <int kRadius, int kStep = 1>
class Neighbours {
 public:
  HWY_INLINE explicit Neighbours(const uint8_t* places) {
    const D8 d;
    const D16 d16;
#if HWY_TARGET == HWY_SCALAR
    for (int i = 0; i < kColumns; ++i)
      columns_[i] = hn::PromoteTo(d16, hn::LoadU(d, places + kStep * (i - kRadius)));
#else
    const hn::Repartition<uint16_t, D8> unsigned16;
    for (int i = 0; i < kColumns; i += 2) {
      const int column = kStep == 1 ? i - kRadius : kStep * (i / 2 - kRadius);
      const auto pair = hn::BitCast(unsigned16, hn::LoadU(d, places + column));
      const int second = kStep == 1 ? i + 1 : i / 2 + kSecondPhase;
      columns_[kStep == 1 ? i : i / 2] = hn::BitCast(d16, hn::And(pair, hn::Set(unsigned16, 0xFF)));
      columns_[second] = hn::BitCast(d16, hn::ShiftRight<8>(pair));
    }
#endif
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

// What a row contributes, for each phase.
template <int kRadius, int kStep, class Op>
struct RowParts {
  using Part = decltype(std::declval<Op>().Row(D16(), nullptr));
  Part part[kPhases];

  HWY_INLINE void Make(const Op& op, const uint8_t* places) {
#if KY_HAVE_MUL_ADD_BYTES
    // Weights 1, kMiddle, 1: two of the three by products of bytes in pairs.
    if constexpr (kRadius == 1 && kStep == 1 && requires { Op::kMiddle; }) {
      const D8 d;
      const hn::Repartition<uint16_t, D8> d16;
      const auto left = hn::LoadU(d, places - 1), right = hn::LoadU(d, places + 1);
      const auto weights = [](int first, int second) HWY_ATTR {
        return hn::BitCast(D8(), hn::Set(hn::Repartition<uint16_t, D8>(),
                                         static_cast<uint16_t>(first + 256 * second)));
      };
      const auto last = hn::And(hn::BitCast(d16, right), hn::Set(d16, 0xFF));
      const auto first = hn::ShiftRight<8>(hn::BitCast(d16, left));
      part[0] = hn::Add(MulAddBytes(left, weights(1, Op::kMiddle)), hn::BitCast(D16(), last));
      part[1] = hn::Add(MulAddBytes(right, weights(Op::kMiddle, 1)), hn::BitCast(D16(), first));
      return;
    }
#endif
    const Neighbours<kRadius, kStep> neighbours(places);
    for (int p = 0; p < kPhases; ++p) part[p] = op.Row(D16(), neighbours.Phase(p));
  }
};

// Whether what the next rows will read and write is prefetched, and to where: processors are late
// to see by themselves that so many rows are gone through side by side.
enum class Ahead { kNo, kToFirstCache, kToSecondCache };

// kRows rows of windows. What a row contributes stays in registers while it is needed.
template <int kRadius, int kStep, int kRows, Ahead kAhead, class Op>
HWY_INLINE void RollRows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows) {
  constexpr int kSize = 2 * kRadius + 1, kIn = kRows + 2 * kRadius;
  const D8 d;
  const uint8_t* in[kIn];
  for (int k = 0; k < kIn; ++k) in[k] = rows[k];
  uint8_t* to[kRows];
  for (int y = 0; y < kRows; ++y) to[y] = out.Row(y);
  const ptrdiff_t inAhead = kRows * BytesBetween(in[kIn - 2], in[kIn - 1]);
  const ptrdiff_t outAhead = kRows * out.pitch;
  for (ptrdiff_t x = 0; x < out.width; x += static_cast<ptrdiff_t>(hn::Lanes(d))) {
    RowParts<kRadius, kStep, Op> parts[kIn];
    const auto result = [&]<size_t... k>(int y, std::index_sequence<k...>) HWY_ATTR {
      if constexpr (kAhead == Ahead::kToFirstCache) {
        PrefetchAhead<hn::MaxLanes(d)>(in[kIn - kRows + y], inAhead + x);
        PrefetchAhead<hn::MaxLanes(d)>(to[y], outAhead + x);
      } else if constexpr (kAhead == Ahead::kToSecondCache) {
        PrefetchToSecondCache(in[kIn - kRows + y], inAhead + x);
        PrefetchToSecondCache(to[y], outAhead + x);
      }
      V16 results[kPhases];
      for (int p = 0; p < kPhases; ++p)
        results[p] = op(D16(), parts[y + static_cast<int>(k)].part[p]...);
      hn::StoreU(JoinPhases(results), d, to[y] + x);
    };
    const auto row = [&]<int k>(std::integral_constant<int, k>) HWY_ATTR {
      parts[k].Make(op, in[k] + x);
      if constexpr (k >= kSize - 1) result(k - (kSize - 1), std::make_index_sequence<kSize>());
    };
    [&]<int... k>(std::integer_sequence<int, k...>) HWY_ATTR {
      (row(std::integral_constant<int, k>()), ...);
    }
    (std::make_integer_sequence<int, kIn>());
  }
}

// As many bands of kRows rows as there are.
template <int kRadius, int kStep, int kRows, Ahead kAhead, class Op>
HWY_INLINE void RollBands(const Op& op, Rows<uint8_t>& out, const uint8_t* const*& rows) {
  for (; out.height >= kRows; out.height -= kRows, rows += kRows, out.first = out.Row(kRows))
    RollRows<kRadius, kStep, kRows, kAhead>(op, out, rows);
}

// Windows by the row: op.Row(d16, at) is what a row contributes to the results around it, and a
// result is op(d16, the rows' contributions from the highest down). What a row contributes is made
// once in a band. A Row of weights 1, kMiddle, 1 tells so by the constant's name.
//
// Six rows of results share more of their work than three, but three are all that a first cache has
// room for when the pitch fights it, and prefetches have to go to the second.
template <int kRadius, int kStep = 1, class Op>
HWY_INLINE void RollWindows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows,
                            bool isLarge = false) {
  if (!FightsCache(out.pitch) && !FightsCache(BytesBetween(rows[0], rows[1]))) {
    if (isLarge)
      RollBands<kRadius, kStep, 6, Ahead::kToFirstCache>(op, out, rows);
    else
      RollBands<kRadius, kStep, 6, Ahead::kNo>(op, out, rows);
  } else if (isLarge) {
    RollBands<kRadius, kStep, 3, Ahead::kToSecondCache>(op, out, rows);
  }
  RollBands<kRadius, kStep, 3, Ahead::kNo>(op, out, rows);
  RollBands<kRadius, kStep, 1, Ahead::kNo>(op, out, rows);
}

// The kernels of operations that need no arguments, for rows of pixels, or of components where
// kStep is 3.
template <int kRadius, class Op, int kStep = 1>
WindowKernel<WindowRun> MappedWindows() {
  const auto run = [](Rows<uint8_t> out, const uint8_t* const* rows, bool)
                       HWY_ATTR { MapWindows<kRadius, kStep>(Op(), out, rows); };
  return {kRadius, hn::MaxLanes(D8()), run, kStep};
}
template <class Op, int kStep = 1, int kRadius = 1>
WindowKernel<WindowRun> RolledWindows() {
  const auto run = [](Rows<uint8_t> out, const uint8_t* const* rows, bool isLarge)
                       HWY_ATTR { RollWindows<kRadius, kStep>(Op(), out, rows, isLarge); };
  return {kRadius, hn::MaxLanes(D8()), run, kStep};
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
