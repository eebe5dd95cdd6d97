// The formulas of convolutions in integers, and the table of their row kernels for rows of pixels
// or of the components of colours. Included by row files like lanes-inl.h.
#if defined(KY_CONVOLUTION_FIXED_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVOLUTION_FIXED_INL_H_
#undef KY_CONVOLUTION_FIXED_INL_H_
#else
#define KY_CONVOLUTION_FIXED_INL_H_
#endif

#include "convolution/fixed_rows.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// What Limit cuts off first.
HWY_INLINE int16_t Lowest(const FixedKernel& kernel) { return kernel.magnitude ? -255 : 0; }

// Limit, for lanes of 16 and of 32 bits: the modulus changes nothing where `lowest` is 0.
template <class D, class V>
HWY_INLINE V Limit(D d, V v, V lowest) {
  return hn::Min(hn::Abs(hn::Max(v, lowest)), hn::Set(d, 255));
}

// 3x3 in 16 bits: the sums of both phases.
template <int kStep>
struct Weights16 {
  V16 weights[9];

  HWY_INLINE explicit Weights16(const FixedKernel& kernel) {
    for (int i = 0; i < 9; ++i)
      weights[i] = hn::Set(D16(), static_cast<int16_t>(kernel.weights[i]));
  }
  template <class At>
  HWY_INLINE void Sum(const At& at, V16* sums) const {
    const Neighbours<1, kStep> above(at.Row(-1)), own(at.Row(0)), below(at.Row(1));
    for (int p = 0; p < kPhases; ++p)
      sums[p] = hn::Add(hn::Add(Weigh(above.Phase(p), weights), Weigh(own.Phase(p), weights + 3)),
                        Weigh(below.Phase(p), weights + 6));
  }
  HWY_INLINE static V16 Weigh(const V16* at, const V16* by) {
    return hn::Add(hn::Add(hn::Mul(at[-1], by[0]), hn::Mul(at[0], by[1])), hn::Mul(at[1], by[2]));
  }
};

// The same for grey pixels and weights of 8 bits: of the three taps of a row, two are multiplied at
// once, one for each phase apart.
#if KY_HAVE_MUL_ADD_BYTES
template <int kStep>
struct Weights8 : Weights16<kStep> {
  HWY_INLINE explicit Weights8(const FixedKernel& kernel) : Weights16<kStep>(kernel) {}
};
template <>
struct Weights8<1> {
  struct Row {
    hn::Vec<D8> two, evenThird, oddThird;
  };
  Row rows[3];

  HWY_INLINE explicit Weights8(const FixedKernel& kernel) {
    const auto pair = [](int32_t first, int32_t second) HWY_ATTR {
      const hn::Repartition<uint16_t, D8> d16;
      const uint32_t both = (static_cast<uint32_t>(second) & 0xFF) << 8;
      return hn::BitCast(
          D8(), hn::Set(d16, static_cast<uint16_t>(both | (static_cast<uint32_t>(first) & 0xFF))));
    };
    for (int y = 0; y < 3; ++y) {
      const int32_t* const taps = kernel.weights + 3 * y;
      rows[y] = {pair(taps[0], taps[1]), pair(taps[2], 0), pair(0, taps[2])};
    }
  }
  template <class At>
  HWY_INLINE void Sum(const At& at, V16* sums) const {
    V16 even[3], odd[3];
    for (int y = 0; y < 3; ++y) {
      const auto right = Pinned(at(1, y - 1));
      even[y] =
          hn::Add(MulAddBytes(at(-1, y - 1), rows[y].two), MulAddBytes(right, rows[y].evenThird));
      odd[y] =
          hn::Add(MulAddBytes(at(0, y - 1), rows[y].two), MulAddBytes(right, rows[y].oddThird));
    }
    sums[0] = hn::Add(hn::Add(even[0], even[1]), even[2]);
    sums[1] = hn::Add(hn::Add(odd[0], odd[1]), odd[2]);
  }
};
#else
template <int kStep>
using Weights8 = Weights16<kStep>;
#endif

template <class Weights, bool kUnsigned>
struct Narrow : LongWindowOp<1> {
  Weights weights;
  V16 offset, lowest;
  int shift;

  HWY_INLINE explicit Narrow(const FixedKernel& kernel)
      : weights(kernel),
        offset(hn::Set(D16(), static_cast<int16_t>(kernel.offset))),
        lowest(hn::Set(D16(), Lowest(kernel))),
        shift(kernel.shift) {}
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    const D16 d16;
    V16 sums[kPhases];
    weights.Sum(at, sums);
    for (V16& sum : sums) sum = Limit(d16, hn::SaturatedAdd(Shifted(sum), offset), lowest);
    return JoinPhases(sums);
  }
  HWY_INLINE V16 Shifted(V16 sum) const {
    const hn::Rebind<uint16_t, D16> unsigned16;
    if (!kUnsigned) return hn::ShiftRightSame(sum, shift);
    return hn::BitCast(D16(), hn::ShiftRightSame(hn::BitCast(unsigned16, sum), shift));
  }
};
template <template <int> class Weights, bool kUnsigned, int kStep>
void NarrowRows(const FixedKernel& kernel, Rows<KyBW8> out, const KyBW8* const* rows,
                const Layout& layout) {
  using Op = Narrow<Weights<kStep>, kUnsigned>;
  MapWindows<Op, kStep>(Op(kernel), out, rows, layout);
}

#if HWY_TARGET == HWY_SCALAR

template <int kRadius, bool kSplit, int kStep>
struct Paired : LongWindowOp<kRadius> {
  const FixedKernel& kernel;

  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D d, const At& at) const {
    const D32 d32;
    V32 sum = hn::Zero(d32);
    const int32_t* weight = kernel.weights;
    for (int down = -kRadius; down <= kRadius; ++down)
      for (int right = -kRadius; right <= kRadius; ++right)
        sum = hn::Add(sum, hn::Mul(hn::PromoteTo(d32, at(right, down)), hn::Set(d32, *weight++)));
    const V32 v = hn::Add(hn::ShiftRightSame(sum, kernel.shift), hn::Set(d32, kernel.offset));
    return hn::DemoteTo(d, Limit(d32, v, hn::Set(d32, Lowest(kernel))));
  }
};
template <int kRadius, bool kSplit, int kStep>
using Symmetric = Paired<kRadius, kSplit, kStep>;

#else

// What two halves of the weights have summed up to. All but the highest 17 bits of a weight are in
// the low half.
template <bool kSplit>
struct Sum {
  V32 low, high;

  HWY_INLINE Sum() : low(hn::Zero(D32())), high(low) {}
  HWY_INLINE void Add(V16 pixels, const FixedKernel& kernel, int pair) {
    low = MulAddPairs(pixels, kernel.pairs[0][pair], low);
    if (kSplit) high = MulAddPairs(pixels, kernel.pairs[1][pair], high);
  }
  HWY_INLINE V32 All() const { return kSplit ? hn::Add(hn::ShiftLeft<15>(high), low) : low; }
};

// The levels of two vectors of sums, in 16 bits: those of `a` in the lower half of each block of
// 128 bits, those of `b` in the upper half.
HWY_INLINE V16 Levels(const FixedKernel& kernel, V32 a, V32 b) {
  const D16 d16;
  const V16 v = hn::ReorderDemote2To(d16, hn::ShiftRightSame(a, kernel.shift),
                                     hn::ShiftRightSame(b, kernel.shift));
  const V16 offset = hn::Set(d16, static_cast<int16_t>(kernel.offset));
  return Limit(d16, hn::SaturatedAdd(v, offset), hn::Set(d16, Lowest(kernel)));
}

// Every fourth place has its sums in one vector of 32-bit lanes: four quarters.
template <int kRadius, bool kSplit, int kStep>
struct Paired : LongWindowOp<kRadius> {
  const FixedKernel& kernel;

  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D d, const At& at) const {
    Sum<kSplit> sums[4];
    constexpr int kSingle = kSingleTap[kRadius];
    int pair = 0;
    for (int down = -kRadius; down <= kRadius; ++down) {
      const Neighbours<kRadius> row(at.Row(down));
      for (int q = 0; q < 4; ++q) {
        for (int i = 0; i < kRadius; ++i)
          sums[q].Add(row.Column(q + kFirstTaps[kRadius][i]), kernel, pair + i);
        if (q + kSingle <= kRadius + 1)
          sums[q].Add(row.Column(q + kSingle), kernel, pair + kRadius);
        else
          sums[q].Add(row.Column(q + kSingle - 2), kernel, pair + kRadius + 1);
      }
      pair += kRadius + 2;
    }
    const V16 even = Levels(kernel, sums[0].All(), sums[2].All());
    const V16 odd = Levels(kernel, sums[1].All(), sums[3].All());
    const V16 phases[] = {even, odd};
    // Places 0 and 1 of the four quarters, then 2 and 3.
    HWY_ALIGN static constexpr uint8_t kOrder[16] = {0, 1, 8,  9,  2, 3, 10, 11,
                                                     4, 5, 12, 13, 6, 7, 14, 15};
    return hn::TableLookupBytes(JoinPhases(phases), hn::LoadDup128(d, kOrder));
  }
};

// The same for the components of colours, where neighbours do not lie side by side: the taps in the
// order of the weights, in pairs of bytes that are put together first.
template <int kRadius, bool kSplit>
struct Paired<kRadius, kSplit, 3> : LongWindowOp<kRadius> {
  const FixedKernel& kernel;

  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D d, const At& at) const {
    constexpr int kSize = 2 * kRadius + 1, kTaps = kSize * kSize;
    const auto zero = hn::Zero(d);
    const auto tap = [&]<int i>(std::integral_constant<int, i>) KY_INLINE_ATTR {
      if constexpr (i == kTaps)
        return zero;
      else
        return at(i % kSize - kRadius, i / kSize - kRadius);
    };
    Sum<kSplit> sums[4];
    ForEach<(kTaps + 1) / 2>([&]<int pair>(std::integral_constant<int, pair>) KY_INLINE_ATTR {
      const auto first = tap(std::integral_constant<int, 2 * pair>());
      const auto second = tap(std::integral_constant<int, 2 * pair + 1>());
      const auto lower = hn::InterleaveLower(d, first, second);
      const auto upper = hn::InterleaveUpper(d, first, second);
      const D16 d16;
      sums[0].Add(hn::BitCast(d16, hn::InterleaveLower(d, lower, zero)), kernel, pair);
      sums[1].Add(hn::BitCast(d16, hn::InterleaveUpper(d, lower, zero)), kernel, pair);
      sums[2].Add(hn::BitCast(d16, hn::InterleaveLower(d, upper, zero)), kernel, pair);
      sums[3].Add(hn::BitCast(d16, hn::InterleaveUpper(d, upper, zero)), kernel, pair);
    });
    const V16 halves[] = {Levels(kernel, sums[0].All(), sums[1].All()),
                          Levels(kernel, sums[2].All(), sums[3].All())};
    // The places of either half of a block.
    HWY_ALIGN static constexpr uint8_t kOrder[16] = {0, 2, 4, 6, 8, 10, 12, 14,
                                                     1, 3, 5, 7, 9, 11, 13, 15};
    return hn::TableLookupBytes(JoinPhases(halves), hn::LoadDup128(d, kOrder));
  }
};

// Pixels that share a weight are added up first.
template <int kRadius, bool kSplit, int kStep>
struct Symmetric : LongWindowOp<kRadius> {
  const FixedKernel& kernel;

  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    constexpr int kSets = (kRadius + 1) * (kRadius + 2) / 2;
    // By distance, the rows above and below together.
    Neighbours<kRadius, kStep> rows[kRadius + 1];
    rows[0] = Neighbours<kRadius, kStep>(at.Row(0));
    for (int down = 1; down <= kRadius; ++down) {
      rows[down] = Neighbours<kRadius, kStep>(at.Row(down));
      rows[down].Add(Neighbours<kRadius, kStep>(at.Row(-down)));
    }
    const D16 d16;
    V16 phases[kPhases];
    for (int p = 0; p < kPhases; ++p) {
      // The sets in the order of their first members in the grid.
      V16 sets[kSets + 1];
      int n = 0;
      for (int far = kRadius; far >= 0; --far)
        for (int near = far; near >= 0; --near) {
          const auto both = [&](int row, int column) HWY_ATTR {
            const V16* const centre = rows[row].Phase(p);
            return column == 0 ? centre[0] : hn::Add(centre[-column], centre[column]);
          };
          sets[n++] = near == far ? both(far, near) : hn::Add(both(far, near), both(near, far));
        }
      sets[n] = hn::Zero(d16);
      Sum<kSplit> lower, upper;
      for (int i = 0; i < (kSets + 1) / 2; ++i) {
        lower.Add(hn::InterleaveLower(d16, sets[2 * i], sets[2 * i + 1]), kernel, i);
        upper.Add(hn::InterleaveUpper(d16, sets[2 * i], sets[2 * i + 1]), kernel, i);
      }
      phases[p] = Levels(kernel, lower.All(), upper.All());
    }
    return JoinPhases(phases);
  }
};

// The same for 3 x 3 pixels: pairs are of what a row adds to the results around it, its ends
// together and its middle. The row of the result weighs them as edges and centre, the others as
// corners and edge.
template <bool kSplit>
struct Symmetric3x3 : LongWindowOp<1> {
  const FixedKernel& kernel;

  struct Part {
    V16 lower, upper;
  };
  HWY_INLINE Part Row(D16 d, const V16* at) const {
    const V16 ends = hn::Add(at[-1], at[1]);
    return {hn::InterleaveLower(d, ends, at[0]), hn::InterleaveUpper(d, ends, at[0])};
  }
  HWY_INLINE V16 operator()(D16, const Part& above, const Part& own, const Part& below) const {
    Sum<kSplit> lower, upper;
    lower.Add(hn::Add(above.lower, below.lower), kernel, 0);
    lower.Add(own.lower, kernel, 1);
    upper.Add(hn::Add(above.upper, below.upper), kernel, 0);
    upper.Add(own.upper, kernel, 1);
    return Levels(kernel, lower.All(), upper.All());
  }
};

#endif

template <template <int, bool, int> class Op, int kRadius, bool kSplit, int kStep>
void WeighRows(const FixedKernel& kernel, Rows<KyBW8> out, const KyBW8* const* rows,
               const Layout& layout) {
  using Weighted = Op<kRadius, kSplit, kStep>;
  MapWindows<Weighted, kStep>({{}, kernel}, out, rows, layout);
}
#if HWY_TARGET != HWY_SCALAR
template <bool kSplit, int kStep>
void WeighSymmetric3x3Rows(const FixedKernel& kernel, Rows<KyBW8> out, const KyBW8* const* rows,
                           const Layout& layout) {
  RollWindows<Symmetric3x3<kSplit>, kStep>({{}, kernel}, out, rows, layout);
}
#endif

template <int kRadius, int kStep>
constexpr void Enter(FixedRowKernels& kernels) {
  kernels.paired[kRadius][0] = &WeighRows<Paired, kRadius, false, kStep>;
  kernels.paired[kRadius][1] = &WeighRows<Paired, kRadius, true, kStep>;
  kernels.symmetric[kRadius][0] = &WeighRows<Symmetric, kRadius, false, kStep>;
  kernels.symmetric[kRadius][1] = &WeighRows<Symmetric, kRadius, true, kStep>;
}
template <class Kernels, int kStep>
constexpr Kernels MakeFixedKernels() {
  Kernels kernels = {};
  kernels.lanes = hn::MaxLanes(D8());
  kernels.shortestWithEnds = kShortestRow<Narrow<Weights8<kStep>, false>>;
  kernels.narrow[0][0] = &NarrowRows<Weights16, false, kStep>;
  kernels.narrow[0][1] = &NarrowRows<Weights16, true, kStep>;
  kernels.narrow[1][0] = &NarrowRows<Weights8, false, kStep>;
  kernels.narrow[1][1] = &NarrowRows<Weights8, true, kStep>;
  Enter<1, kStep>(kernels);
  Enter<2, kStep>(kernels);
  Enter<3, kStep>(kernels);
#if HWY_TARGET != HWY_SCALAR
  kernels.symmetric[1][0] = &WeighSymmetric3x3Rows<false, kStep>;
  kernels.symmetric[1][1] = &WeighSymmetric3x3Rows<true, kStep>;
#endif
  return kernels;
}

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
