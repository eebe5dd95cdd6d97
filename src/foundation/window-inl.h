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
#undef KY_HAVE_MUL_ADD_BYTES

#include <utility>

#include "foundation/prefetch-inl.h"
#include "foundation/window.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// The pixels around one vector of places in the rows of a window: at(right, down) are those that
// lie so many columns to the right and rows below.
template <class D, int kRadius>
struct Around {
  D d;
  const uint8_t* const* rows;
  ptrdiff_t x;

  HWY_INLINE const uint8_t* Row(int down) const { return rows[kRadius + down] + x; }
  HWY_INLINE hn::Vec<D> operator()(int right, int down) const {
    return hn::LoadU(d, Row(down) + right);
  }
};

// Asks for what the next band reads and writes at row y of this one and column x. Processors are
// late to see by themselves that a dozen rows are gone through side by side.
template <int kRadius, class T, class Out>
HWY_INLINE void AskAhead(const Rows<Out>& out, const T* const* rows, ptrdiff_t y, ptrdiff_t x) {
  constexpr size_t kLanes = hn::MaxLanes(hn::ScalableTag<uint8_t>());
  AskFor<kLanes * sizeof(T)>(rows[out.height + 2 * kRadius + y], x * ptrdiff_t{sizeof(T)});
  AskFor<kLanes * sizeof(Out)>(out.Row(y), out.height * out.pitch + x * ptrdiff_t{sizeof(Out)});
}

// Every result is op(d, at).
template <int kRadius, class Op>
HWY_INLINE void MapWindows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows) {
  const hn::ScalableTag<uint8_t> d;
  for (ptrdiff_t y = 0; y < out.height; ++y)
    for (ptrdiff_t x = 0; x < out.width; x += static_cast<ptrdiff_t>(hn::Lanes(d)))
      hn::StoreU(op(d, Around<decltype(d), kRadius>{d, rows + y, x}), d, out.Row(y) + x);
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

// The pixels of one row around a vector of places: at[i] of a phase are those i columns to the
// right of its places.
template <int kRadius>
class Neighbours {
 public:
  HWY_INLINE explicit Neighbours(const uint8_t* places) {
    const D8 d;
    const D16 d16;
#if HWY_TARGET == HWY_SCALAR
    for (int i = 0; i < kColumns; ++i)
      columns_[i] = hn::PromoteTo(d16, hn::LoadU(d, places + i - kRadius));
#else
    const hn::Repartition<uint16_t, D8> unsigned16;
    for (int i = 0; i < kColumns; i += 2) {
      const auto pair = hn::BitCast(unsigned16, hn::LoadU(d, places + i - kRadius));
      columns_[i] = hn::BitCast(d16, hn::And(pair, hn::Set(unsigned16, 0xFF)));
      columns_[i + 1] = hn::BitCast(d16, hn::ShiftRight<8>(pair));
    }
#endif
  }
  HWY_INLINE const V16* Phase(int phase) const { return columns_ + kRadius + phase; }
  // The pixels `right` columns to the right of the first phase's places.
  HWY_INLINE V16 Column(int right) const { return columns_[kRadius + right]; }

 private:
  static constexpr int kColumns = 2 * kRadius + kPhases;
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

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
#define KY_HAVE_MUL_ADD_BYTES 1
// The products of 8-bit lanes with signed 8-bit weights, the two products of each pair of lanes
// added up. The sums must fit 16 bits.
HWY_INLINE V16 MulAddBytes(hn::Vec<D8> lanes, hn::Vec<D8> weights) {
#if HWY_TARGET < HWY_AVX2
  return V16{_mm512_maddubs_epi16(lanes.raw, weights.raw)};
#elif HWY_TARGET == HWY_AVX2
  return V16{_mm256_maddubs_epi16(lanes.raw, weights.raw)};
#else
  return V16{_mm_maddubs_epi16(lanes.raw, weights.raw)};
#endif
}
#else
#define KY_HAVE_MUL_ADD_BYTES 0
#endif

// What a row contributes, for each phase.
template <class Op>
struct RowParts {
  using Part = decltype(std::declval<Op>().Row(D16(), nullptr));
  Part part[kPhases];

  HWY_INLINE RowParts(const Op& op, const uint8_t* places) {
    const Neighbours<1> neighbours(places);
    for (int p = 0; p < kPhases; ++p) part[p] = op.Row(D16(), neighbours.Phase(p));
  }
};

// Windows of 3 x 3 pixels, by the row: op.Row(d16, at) is what a row contributes to the results
// around it, and a result is op(d16, the row above, its own, the row below). What a row contributes
// is made once.
template <class Op>
HWY_INLINE void RollWindows(const Op& op, Rows<uint8_t> out, const uint8_t* const* rows) {
  const D8 d;
  const D16 d16;
  for (ptrdiff_t x = 0; x < out.width; x += static_cast<ptrdiff_t>(hn::Lanes(d))) {
    RowParts<Op> above(op, rows[0] + x), here(op, rows[1] + x);
    for (ptrdiff_t y = 0; y < out.height; ++y) {
      AskAhead<1>(out, rows, y, x);
      const RowParts<Op> below(op, rows[y + 2] + x);
      V16 results[kPhases];
      for (int p = 0; p < kPhases; ++p)
        results[p] = op(d16, above.part[p], here.part[p], below.part[p]);
      hn::StoreU(JoinPhases(results), d, out.Row(y) + x);
      above = here;
      here = below;
    }
  }
}

// The kernels of operations that need no arguments.
template <int kRadius, class Op>
WindowKernel<WindowRun> MappedWindows() {
  return {kRadius, hn::MaxLanes(D8()), [](Rows<uint8_t> out, const uint8_t* const* rows) HWY_ATTR {
            MapWindows<kRadius>(Op(), out, rows);
          }};
}
template <class Op>
WindowKernel<WindowRun> RolledWindows() {
  return {1, hn::MaxLanes(D8()), [](Rows<uint8_t> out, const uint8_t* const* rows) HWY_ATTR {
            RollWindows(Op(), out, rows);
          }};
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
