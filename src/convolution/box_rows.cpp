#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/box_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/box_rows.h"

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
  HWY_INLINE WindowLanes operator()(const Areas& areas, size_t x, const WindowLanes& sums) const {
    const DF32 df;
    WindowLanes levels;
    for (size_t p = 0; p < kWindowPhases; ++p) {
      VF32 sum = hn::ConvertTo(df, hn::BitCast(D32(), sums.of[p]));
      if constexpr (!kOddAreas) sum = hn::Add(sum, hn::Set(df, 0.25f));
      const VF32 quotient = hn::Mul(sum, areas.At(p, x).reciprocal);
      levels.of[p] = hn::BitCast(DU32(), hn::Add(quotient, hn::Set(df, kInteger)));
    }
    return levels;
  }
};

// Estimates in units of 2^-kFraction levels are off by less than kOff units. Half a level and kOff
// units more, they are the level, or one above it where their fraction is below 2 kOff: there
// isAbove(phase, level) computes who is right.
constexpr int kFraction = 15, kOff = 4;
constexpr float kUnits = 1 << kFraction;
HWY_INLINE VU32 RoundedEstimate(VF32 v) {
  const DF32 df;
  return hn::BitCast(DU32(), hn::Add(v, hn::Set(df, kInteger + kUnits / 2 + kOff)));
}
template <class IsAbove>
HWY_INLINE WindowLanes LevelsOf(const WindowLanes& estimates, const IsAbove& isAbove) {
  const DU32 d;
  const D32 di;
  WindowLanes levels;
  V32 fractions[kWindowPhases];
  for (size_t p = 0; p < kWindowPhases; ++p) {
    const VU32 fraction = hn::And(estimates.of[p], hn::Set(d, (1u << kFraction) - 1));
    fractions[p] = hn::BitCast(di, fraction);
    levels.of[p] = hn::And(hn::ShiftRight<kFraction>(estimates.of[p]), hn::Set(d, 0xFF));
  }
  const V32 unsure = hn::Set(di, 2 * kOff);
  V32 least = fractions[0];
  for (size_t p = 1; p < kWindowPhases; ++p) least = hn::Min(least, fractions[p]);
  if (HWY_LIKELY(hn::AllFalse(di, hn::Lt(least, unsure)))) return levels;
  for (size_t p = 0; p < kWindowPhases; ++p) {
    const auto tooHigh = hn::And(hn::Lt(fractions[p], unsure), isAbove(p, levels.of[p]));
    const VU32 change = hn::BitCast(d, hn::VecFromMask(di, tooHigh));  // -1 where it is
    levels.of[p] = hn::Add(levels.of[p], change);
  }
  return levels;
}
HWY_INLINE auto IsNegative(VU32 v) { return hn::Lt(hn::BitCast(D32(), v), hn::Zero(D32())); }

// Quotients of larger sums, which floats round: three roundings of up to 255 levels, each off by
// 2^-24 of them, and that of the result make 2 units.
struct AverageOfLargeOp {
  template <class Areas>
  HWY_INLINE WindowLanes operator()(const Areas& areas, size_t x, const WindowLanes& sums) const {
    const DF32 df;
    WindowLanes estimates;
    for (size_t p = 0; p < kWindowPhases; ++p) {
      const VF32 sum = hn::ConvertTo(df, hn::BitCast(D32(), sums.of[p]));
      estimates.of[p] =
          RoundedEstimate(hn::Mul(sum, hn::Mul(areas.At(p, x).reciprocal, hn::Set(df, kUnits))));
    }
    // A level k is too high where 2 S < (2 k - 1) n.
    return LevelsOf(estimates, [&](size_t p, VU32 level) HWY_ATTR {
      const VU32 area = areas.At(p, x).area, rest = hn::Sub(sums.of[p], hn::Mul(level, area));
      return IsNegative(hn::Add(hn::Add(rest, rest), area));
    });
  }
};

// With an integer m next to the mean S / n, and R = S - m n and P = Q - m (S + R), the sums of the
// levels less m and of their squares, the variance is P / n - (R / n)^2. All integers are computed
// modulo 2^32; P is below 2^31, as no variance is above 127.5^2, and R no larger than about n / 2.
//
// With u = 2^-24, P / n is off by 3 u of itself and (R / n)^2, about 1/4 at most, by 5 u of itself.
// Where rounding changes, roots are 1/2 or more, and therefore off by 3 u of themselves and 2 u, or
// a unit, and half a unit once they are rounded.
struct DeviationOp {
  template <class Areas>
  HWY_INLINE WindowLanes operator()(const Areas& areas, size_t x, const WindowLanes& sums,
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
      const VF32 reciprocal = hn::Mul(area.reciprocal, hn::Set(df, kUnits));
      const VF32 rest = hn::Mul(hn::ConvertTo(df, hn::BitCast(di, rests.of[p])), reciprocal);
      const VF32 square = hn::Mul(hn::ConvertTo(df, hn::BitCast(di, centred.of[p])),
                                  hn::Mul(reciprocal, hn::Set(df, kUnits)));
      estimates.of[p] = RoundedEstimate(hn::Sqrt(hn::Sub(square, hn::Mul(rest, rest))));
    }
    // A level k is too high where n P - R^2 < ((2 k - 1) n)^2 / 4, or the integer above that. Half
    // of an odd (2 k - 1) n is half above one integer and half below another, whose product is that
    // square less 1/4. Near a change of rounding, both sides differ by less than 2^31.
    return LevelsOf(estimates, [&](size_t p, VU32 level) HWY_ATTR {
      const VU32 area = areas.At(p, x).area;
      const VU32 odd = hn::Sub(hn::Mul(hn::Add(level, level), area), area);
      const VU32 lower = hn::BitCast(du, hn::ShiftRight<1>(hn::BitCast(di, odd)));
      const VU32 product = hn::Mul(lower, hn::Sub(odd, lower));
      const VU32 variance =
          hn::Sub(hn::Mul(area, centred.of[p]), hn::Mul(rests.of[p], rests.of[p]));
      const VU32 above = hn::Sub(hn::Sub(variance, product), hn::And(area, hn::Set(du, 1)));
      return IsNegative(above);
    });
  }
};

// The same for larger areas. P has up to 36 bits: those above 32 follow from a rough value, which
// the sums of squares in coarse units give. Variances may come out just below 0.
struct DeviationOfLargeOp {
  template <class Areas>
  HWY_INLINE WindowLanes operator()(const Areas& areas, size_t x, const WindowLanes& sums,
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
      const VF32 reciprocal = hn::Mul(area.reciprocal, hn::Set(df, kUnits));
      const VF32 rest = hn::Mul(asFloat(rests.of[p]), reciprocal);
      const VF32 square = hn::Mul(sum, hn::Mul(reciprocal, hn::Set(df, kUnits)));
      const VF32 variance = hn::Max(hn::Sub(square, hn::Mul(rest, rest)), hn::Zero(df));
      estimates.of[p] = RoundedEstimate(hn::Sqrt(variance));
    }
    // A level k is too high where 4 (n P - R^2) < ((2 k - 1) n)^2, one place after the other.
    return LevelsOf(estimates, [&](size_t p, VU32 level) HWY_ATTR {
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
void AverageRow(KyBW8* out, size_t n, const Windows<typename Rows::Columns>& windows,
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
void DeviationRow(KyBW8* out, size_t n, const Windows<typename Rows::Columns>& levels,
                  const Windows<WideColumns>& squares, const WindowAreas& areas) {
  MapSums(DeviationOp(), out, n, areas, RowSpan::kAll, WindowScan<Rows>(levels),
          WindowScan<WideRows>(squares));
}

void DeviationOfLargeRow(KyBW8* out, size_t n, const Windows<WideColumns>& levels,
                         const Windows<WideColumns>& squares, uint32_t coarseBefore,
                         const WindowAreas& areas) {
  const Windows<WideColumns> coarse = {squares.entering, squares.leaving, coarseBefore};
  MapSums(DeviationOfLargeOp(), out, n, areas, RowSpan::kAll, WindowScan<WideRows>(levels),
          WindowScan<WideRows>(squares), WindowScan<CoarseRows>(coarse));
}

template <class Rows>
constexpr ResultKernels<typename Rows::Columns> ResultsOf() {
  return {&AverageRow<Rows, AverageOp<true>>, &AverageRow<Rows, AverageOp<false>>,
          &AverageRow<Rows, AverageOfLargeOp>, &DeviationRow<Rows>};
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
