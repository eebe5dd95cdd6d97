#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/box_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/box_rows.h"

#include <type_traits>

#include "convolution/box_windows-inl.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Floats between 2^23 and 2^24 have the lower bits of the integer that they are.
constexpr float kInteger = 8388608.0f;

// Quotients S / n of sums up to 255 n. The product of S, which floats hold exactly, with the
// rounded reciprocal is off by less than 2^-15. For odd n the quotient is at least 1 / 2n away from
// where rounding changes: enough for n up to 2^14. For even n it may be right there, so that a
// quarter of 1 / n is added, which is then the distance: enough for n up to 2^13.
template <bool kOddAreas>
struct AverageOp {
  template <class Areas>
  HWY_INLINE hn::Vec<D8> operator()(const Areas& areas, size_t x, const WindowLanes& sums) const {
    const DF32 df;
    WindowLanes levels;
    for (size_t p = 0; p < kWindowPhases; ++p) {
      VF32 sum = hn::ConvertTo(df, hn::BitCast(D32(), sums.of[p]));
      if constexpr (!kOddAreas) sum = hn::Add(sum, hn::Set(df, 0.25f));
      const VF32 quotient = hn::Mul(sum, areas.At(p, x).reciprocal);
      levels.of[p] = hn::BitCast(DU32(), hn::Add(quotient, hn::Set(df, kInteger)));
    }
    return JoinBytes<0>(levels);
  }
};

// Estimates in units of 2^-kFraction levels are off by less than kOff units. Half a level and kOff
// units more, they are the level, or one above it where their fraction is below 2 kOff: there
// isAbove(phase, level) computes who is right.
constexpr int kOff = 4;
template <int kFraction>
HWY_INLINE VU32 RoundedEstimate(VF32 v) {
  constexpr float kHalf = 1 << (kFraction - 1);
  return hn::BitCast(DU32(), hn::Add(v, hn::Set(DF32(), kInteger + kHalf + kOff)));
}
// For each lane, the least fraction of all phases.
template <int kFraction>
HWY_INLINE VU32 LeastFractions(const WindowLanes& estimates) {
  const VU32 mask = hn::Set(DU32(), (1u << kFraction) - 1);
#if HWY_TARGET == HWY_SCALAR
  return hn::And(estimates.of[0], mask);
#else
  using D = std::conditional_t<kFraction == 16, hn::RebindToUnsigned<D16>, DU32>;
  const auto fraction = [&](size_t p) HWY_ATTR {
    const VU32 v = estimates.of[p];
    return hn::BitCast(D(), kFraction == 16 ? v : hn::And(v, mask));
  };
  const auto least = hn::Min(hn::Min(fraction(0), fraction(1)), hn::Min(fraction(2), fraction(3)));
  return hn::And(hn::BitCast(DU32(), least), mask);
#endif
}
template <int kFraction, class IsAbove>
HWY_INLINE hn::Vec<D8> LevelsOf(const WindowLanes& estimates, const IsAbove& isAbove) {
  const DU32 d;
  const D32 di;
  const auto isUnsure = [&](VU32 fractions) HWY_ATTR {
    return hn::Lt(hn::BitCast(di, fractions), hn::Set(di, 2 * kOff));
  };
  if (HWY_LIKELY(hn::AllFalse(di, isUnsure(LeastFractions<kFraction>(estimates)))))
    return JoinBytes<kFraction>(estimates);
  WindowLanes levels;
  for (size_t p = 0; p < kWindowPhases; ++p) {
    const VU32 fraction = hn::And(estimates.of[p], hn::Set(d, (1u << kFraction) - 1));
    const VU32 level = hn::And(hn::ShiftRight<kFraction>(estimates.of[p]), hn::Set(d, 0xFF));
    const auto tooHigh = hn::And(isUnsure(fraction), isAbove(p, level));
    const VU32 change = hn::BitCast(d, hn::VecFromMask(di, tooHigh));  // -1 where it is
    levels.of[p] = hn::Add(level, change);
  }
  return JoinBytes<0>(levels);
}
HWY_INLINE auto IsNegative(VU32 v) { return hn::Lt(hn::BitCast(D32(), v), hn::Zero(D32())); }

// Quotients of larger sums, which floats round: three roundings of up to 255 levels, each off by
// 2^-24 of them, and that of the result make 2 units.
struct AverageOfLargeOp {
  template <class Areas>
  HWY_INLINE hn::Vec<D8> operator()(const Areas& areas, size_t x, const WindowLanes& sums) const {
    constexpr int kFraction = 15;
    const DF32 df;
    WindowLanes estimates;
    for (size_t p = 0; p < kWindowPhases; ++p) {
      const VF32 sum = hn::ConvertTo(df, hn::BitCast(D32(), sums.of[p]));
      const VF32 unit = hn::Mul(areas.At(p, x).reciprocal, hn::Set(df, 1 << kFraction));
      estimates.of[p] = RoundedEstimate<kFraction>(hn::Mul(sum, unit));
    }
    // A level k is too high where 2 S < (2 k - 1) n.
    return LevelsOf<kFraction>(estimates, [&](size_t p, VU32 level) HWY_ATTR {
      const VU32 area = areas.At(p, x).area, rest = hn::Sub(sums.of[p], hn::Mul(level, area));
      return IsNegative(hn::Add(hn::Add(rest, rest), area));
    });
  }
};

// Roots of variances are at most 127.5 levels, so that their fractions may have a bit more. 127.5
// comes out as 128 with a fraction next to 0: from 2^24 on, floats have the bits that come next.
constexpr int kRootFraction = 16;
constexpr float kRootUnits = 1 << kRootFraction;

// Whether V = n Q - S^2, of which the lower bits suffice, is below ((2 k - 1) n)^2 / 4, or the
// integer above that, for levels k. Half of an odd (2 k - 1) n is half above one integer and half
// below another, whose product is that square less 1/4. Near a change of rounding, both sides
// differ by less than 2^31.
HWY_INLINE auto IsBelowLevel(VU32 variance, VU32 level, VU32 area) {
  const DU32 du;
  const VU32 odd = hn::Sub(hn::Mul(hn::Add(level, level), area), area);
  const VU32 lower = hn::ShiftRight<1>(odd);
  const VU32 product = hn::Mul(lower, hn::Sub(odd, lower));
  return IsNegative(hn::Sub(hn::Sub(variance, product), hn::And(area, hn::Set(du, 1))));
}

// round(sqrt(V) / n) where V = n Q - S^2 fits 32 bits; `most` is the largest area of a row.
//
// V that may be 2^31 or more are halved, rounded down. No area of the row is then below half of
// `most`, and no root below n / 2 where rounding changes, so that this takes less than n^-2 levels,
// or 2 units, from a root of half a level, and ever less from larger ones. The other roundings make
// an error of less than 6 * 2^-24 of the root, or 3 units, and half a unit more.
class SmallDeviationOp {
 public:
  HWY_INLINE explicit SmallDeviationOp(int32_t most)
      : halvings_(most <= kMostWithSign ? 0 : 1),
        unit_(halvings_ == 0 ? kRootUnits : kRootUnits * 1.41421356f) {}

  template <class Areas>
  HWY_INLINE hn::Vec<D8> operator()(const Areas& areas, size_t x, const WindowLanes& sums,
                                    const WindowLanes& squares) const {
    const DF32 df;
    const D32 di;
    WindowLanes variances, estimates;
    for (size_t p = 0; p < kWindowPhases; ++p) {
      const Area area = areas.At(p, x);
      variances.of[p] = hn::Sub(hn::Mul(squares.of[p], area.area), hn::Mul(sums.of[p], sums.of[p]));
      const V32 halved = hn::BitCast(di, hn::ShiftRightSame(variances.of[p], halvings_));
      const VF32 unit = hn::Mul(area.reciprocal, hn::Set(df, unit_));
      estimates.of[p] =
          RoundedEstimate<kRootFraction>(hn::Mul(hn::Sqrt(hn::ConvertTo(df, halved)), unit));
    }
    return LevelsOf<kRootFraction>(estimates, [&](size_t p, VU32 level) HWY_ATTR {
      return IsBelowLevel(variances.of[p], level, areas.At(p, x).area);
    });
  }

 private:
  static constexpr int32_t kMostWithSign = 363;  // (127.5 * 363)^2 < 2^31
  int halvings_;
  float unit_;
};

// With an integer m next to the mean S / n, and R = S - m n and P = Q - m (S + R), the sums of the
// levels less m and of their squares, the variance is P / n - (R / n)^2. All integers are computed
// modulo 2^32; P is below 2^31, as no variance is above 127.5^2, and R no larger than about n / 2.
//
// With u = 2^-24, P / n is off by 3 u of itself and (R / n)^2, about 1/4 at most, by 5 u of itself.
// Where rounding changes, roots are 1/2 or more, and therefore off by 3 u of themselves and 2 u, or
// two units, and half a unit once they are rounded.
struct DeviationOp {
  template <class Areas>
  HWY_INLINE hn::Vec<D8> operator()(const Areas& areas, size_t x, const WindowLanes& sums,
                                    const WindowLanes& squares) const {
    const DF32 df;
    const DU32 du;
    const D32 di;
    WindowLanes rests, centred, estimates;
    for (size_t p = 0; p < kWindowPhases; ++p) {
      const Area area = areas.At(p, x);
      const VF32 sum = hn::ConvertTo(df, hn::BitCast(di, sums.of[p]));
      const VF32 quotient = hn::Add(hn::Mul(sum, area.reciprocal), hn::Set(df, kInteger));
      const VU32 mean = hn::And(hn::BitCast(du, quotient), hn::Set(du, 0xFF));
      rests.of[p] = hn::Sub(sums.of[p], hn::Mul(mean, area.area));
      centred.of[p] = hn::Sub(squares.of[p], hn::Mul(mean, hn::Add(sums.of[p], rests.of[p])));
      const VF32 reciprocal = hn::Mul(area.reciprocal, hn::Set(df, kRootUnits));
      const VF32 rest = hn::Mul(hn::ConvertTo(df, hn::BitCast(di, rests.of[p])), reciprocal);
      const VF32 square = hn::Mul(hn::ConvertTo(df, hn::BitCast(di, centred.of[p])),
                                  hn::Mul(reciprocal, hn::Set(df, kRootUnits)));
      estimates.of[p] =
          RoundedEstimate<kRootFraction>(hn::Sqrt(hn::Sub(square, hn::Mul(rest, rest))));
    }
    return LevelsOf<kRootFraction>(estimates, [&](size_t p, VU32 level) HWY_ATTR {
      const VU32 area = areas.At(p, x).area;
      const VU32 variance =
          hn::Sub(hn::Mul(area, centred.of[p]), hn::Mul(rests.of[p], rests.of[p]));
      return IsBelowLevel(variance, level, area);
    });
  }
};

// The same for larger areas. P has up to 36 bits: those above 32 follow from a rough value, which
// the sums of squares in coarse units give. Variances may come out just below 0.
struct DeviationOfLargeOp {
  template <class Areas>
  HWY_INLINE hn::Vec<D8> operator()(const Areas& areas, size_t x, const WindowLanes& sums,
                                    const WindowLanes& squares, const WindowLanes& coarse) const {
    const DF32 df;
    const DU32 du;
    const D32 di;
    constexpr float kTwo32 = 4294967296.0f;
    const VF32 integer = hn::Set(df, 1.5f * kInteger);
    const auto asFloat = [&](VU32 v) HWY_ATTR { return hn::ConvertTo(df, hn::BitCast(di, v)); };
    WindowLanes rests, centred, estimates;
    VF32 high[kWindowPhases];
    for (size_t p = 0; p < kWindowPhases; ++p) {
      const Area area = areas.At(p, x);
      const VF32 quotient =
          hn::Add(hn::Mul(asFloat(sums.of[p]), area.reciprocal), hn::Set(df, kInteger));
      const VU32 mean = hn::And(hn::BitCast(du, quotient), hn::Set(du, 0xFF));
      rests.of[p] = hn::Sub(sums.of[p], hn::Mul(mean, area.area));
      const VU32 both = hn::Add(sums.of[p], rests.of[p]);
      centred.of[p] = hn::Sub(squares.of[p], hn::Mul(mean, both));
      const VF32 rough = hn::Sub(hn::Mul(asFloat(coarse.of[p]), hn::Set(df, 1 << kCoarse)),
                                 hn::Mul(asFloat(mean), asFloat(both)));
      const VF32 low = asFloat(centred.of[p]);
      const VF32 more = hn::Mul(hn::Sub(rough, low), hn::Set(df, 1 / kTwo32));
      high[p] = hn::Sub(hn::Add(more, integer), integer);
      const VF32 sum = hn::Add(low, hn::Mul(high[p], hn::Set(df, kTwo32)));
      const VF32 reciprocal = hn::Mul(area.reciprocal, hn::Set(df, kRootUnits));
      const VF32 rest = hn::Mul(asFloat(rests.of[p]), reciprocal);
      const VF32 square = hn::Mul(sum, hn::Mul(reciprocal, hn::Set(df, kRootUnits)));
      const VF32 variance = hn::Max(hn::Sub(square, hn::Mul(rest, rest)), hn::Zero(df));
      estimates.of[p] = RoundedEstimate<kRootFraction>(hn::Sqrt(variance));
    }
    // A level k is too high where 4 (n P - R^2) < ((2 k - 1) n)^2, one place after the other.
    return LevelsOf<kRootFraction>(estimates, [&](size_t p, VU32 level) HWY_ATTR {
      constexpr size_t kLanes = hn::MaxLanes(du);
      HWY_ALIGN uint32_t levels[kLanes], lower[kLanes], rest[kLanes], area[kLanes];
      HWY_ALIGN float upper[kLanes];
      HWY_ALIGN int32_t above[kLanes];
      hn::Store(level, du, levels);
      hn::Store(centred.of[p], du, lower);
      hn::Store(rests.of[p], du, rest);
      hn::Store(areas.At(p, x).area, du, area);
      hn::Store(high[p], df, upper);
      for (size_t i = 0; i < kLanes; ++i) {
        const int64_t n = area[i], r = static_cast<int32_t>(rest[i]);
        const uint64_t sum = static_cast<uint64_t>(int64_t{static_cast<int32_t>(lower[i])}) +
                             (static_cast<uint64_t>(static_cast<int64_t>(upper[i])) << 32);
        const uint64_t variance = static_cast<uint64_t>(n) * sum - static_cast<uint64_t>(r * r);
        const int64_t odd = (2 * int64_t{levels[i]} - 1) * n;
        above[i] = static_cast<int64_t>(4 * variance) < odd * odd ? -1 : 0;
      }
      return hn::Lt(hn::Load(di, above), hn::Zero(di));
    });
  }
};

template <class Rows, class Op>
void AverageRow(KyBW8* out, size_t n, const SlidingWindows<typename Rows::Columns>& windows,
                const WindowAreas& areas) {
  MapSums(Op(), out, n, areas, RowSpan::kAll, WindowScan<Rows>(windows));
}
template <class Op>
void KeptAverageRow(KyBW8* out, size_t n, const KeptWindows& windows, const WindowAreas& areas,
                    RowSpan span) {
  MapSums(Op(), out, n, areas, span, KeptSums(windows));
}
void KeepRow(size_t n, const KeptWindows& windows) {
  KeptSums sums(windows);
  for (size_t x = 0; x < n; x += hn::Lanes(D8())) sums.Next(x);
}
template <class Rows>
void SmallDeviationRow(KyBW8* out, size_t n, const SlidingWindows<typename Rows::Columns>& levels,
                       const SlidingWindows<WideColumns>& squares, const WindowAreas& areas) {
  MapSums(SmallDeviationOp(areas.area), out, n, areas, RowSpan::kAll, WindowScan<Rows>(levels),
          WindowScan<WideRows>(squares));
}
template <class Rows>
void DeviationRow(KyBW8* out, size_t n, const SlidingWindows<typename Rows::Columns>& levels,
                  const SlidingWindows<WideColumns>& squares, const WindowAreas& areas) {
  MapSums(DeviationOp(), out, n, areas, RowSpan::kAll, WindowScan<Rows>(levels),
          WindowScan<WideRows>(squares));
}

void DeviationOfLargeRow(KyBW8* out, size_t n, const SlidingWindows<WideColumns>& levels,
                         const SlidingWindows<WideColumns>& squares, uint32_t coarseBefore,
                         const WindowAreas& areas) {
  const SlidingWindows<WideColumns> coarse = {squares.entering, squares.leaving, coarseBefore};
  MapSums(DeviationOfLargeOp(), out, n, areas, RowSpan::kAll, WindowScan<WideRows>(levels),
          WindowScan<WideRows>(squares), WindowScan<CoarseRows>(coarse));
}

template <class Rows>
constexpr ResultKernels<typename Rows::Columns> ResultsOf() {
  return {&AverageRow<Rows, AverageOp<true>>, &AverageRow<Rows, AverageOp<false>>,
          &AverageRow<Rows, AverageOfLargeOp>, &SmallDeviationRow<Rows>, &DeviationRow<Rows>};
}
constexpr BoxKernels kKernels = {ResultsOf<FewRows>(),
                                 ResultsOf<NarrowRows>(),
                                 ResultsOf<WideRows>(),
                                 &DeviationOfLargeRow,
                                 &KeptAverageRow<AverageOp<false>>,
                                 &KeptAverageRow<AverageOfLargeOp>,
                                 &KeepRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(BoxKernels)
