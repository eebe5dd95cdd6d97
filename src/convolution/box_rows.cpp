#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/box_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/box_rows.h"

#include "foundation/dispatch.h"
#include "foundation/shifts-inl.h"
#include "foundation/spans-inl.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using DU32 = hn::RebindToUnsigned<D32>;
using VU32 = hn::Vec<DU32>;
using DF32 = hn::Rebind<float, D32>;
using VF32 = hn::Vec<DF32>;

// The sums of windows, or what is made of them, for each phase: vectors of every fourth place.
#if HWY_TARGET == HWY_SCALAR
constexpr size_t kWindowPhases = 1;
#else
constexpr size_t kWindowPhases = 4;
#endif
struct WindowLanes {
  VU32 of[kWindowPhases];
};

#if HWY_TARGET != HWY_SCALAR
// Lane i is the sum of lanes 0 to i.
HWY_INLINE VU32 PrefixSums(VU32 v) {
  const DU32 d;
  const VU32 zero = hn::Zero(d);
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  v = hn::Add(v, Behind<15>(d, zero, v));
  v = hn::Add(v, Behind<14>(d, zero, v));
  v = hn::Add(v, Behind<12>(d, zero, v));
  return hn::Add(v, Behind<8>(d, zero, v));
#else
  v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
  v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
  if constexpr (hn::MaxLanes(d) == 8) v = hn::Add(v, Behind<4>(d, zero, hn::Broadcast<3>(v)));
  return v;
#endif
}
#endif

// How much windows at places x, x + 1 ... differ from the ones to their left: of[p] those of phase
// p + 1, and `all` four phases together.
struct Changes {
  VU32 of[3], all;
};
struct FewRows {
  using Columns = NarrowColumns;
#if HWY_TARGET != HWY_SCALAR
  static HWY_INLINE Changes At(const Windows<Columns>& windows, size_t x) {
    const hn::RebindToUnsigned<D16> d;
    const D32 d32;
    V16 changes[2];
    for (int p = 0; p < 2; ++p)
      changes[p] = hn::BitCast(D16(), hn::Sub(hn::LoadU(d, windows.entering.of[p] + x / 2),
                                              hn::LoadU(d, windows.leaving.of[p] + x / 2)));
    const V32 even = MulAddPairs(changes[0], 0x10001, hn::Zero(d32));
    const V32 odd = MulAddPairs(changes[1], 0x10001, hn::Zero(d32));
    const V32 second = hn::ShiftRight<16>(hn::BitCast(d32, changes[0]));
    const V32 third = hn::ShiftRight<16>(hn::BitCast(d32, changes[1]));
    const DU32 du;
    return {{hn::BitCast(du, hn::Sub(odd, third)), hn::BitCast(du, second), hn::BitCast(du, third)},
            hn::BitCast(du, hn::Add(even, odd))};
  }
#else
  static uint32_t Of(uint32_t column) { return column; }
#endif
};
#if HWY_TARGET != HWY_SCALAR
HWY_INLINE Changes SumOfChanges(VU32 a, VU32 b, VU32 c, VU32 d) {
  return {{b, c, d}, hn::Add(hn::Add(a, b), hn::Add(c, d))};
}
#endif
struct NarrowRows {
  using Columns = NarrowColumns;
#if HWY_TARGET != HWY_SCALAR
  static HWY_INLINE Changes At(const Windows<Columns>& windows, size_t x) {
    const hn::RebindToUnsigned<D16> d;
    const DU32 du;
    const VU32 lower = hn::Set(du, 0xFFFF);
    VU32 in[2], out[2];
    for (int p = 0; p < 2; ++p) {
      in[p] = hn::BitCast(du, hn::LoadU(d, windows.entering.of[p] + x / 2));
      out[p] = hn::BitCast(du, hn::LoadU(d, windows.leaving.of[p] + x / 2));
    }
    return SumOfChanges(hn::Sub(hn::And(in[0], lower), hn::And(out[0], lower)),
                        hn::Sub(hn::And(in[1], lower), hn::And(out[1], lower)),
                        hn::Sub(hn::ShiftRight<16>(in[0]), hn::ShiftRight<16>(out[0])),
                        hn::Sub(hn::ShiftRight<16>(in[1]), hn::ShiftRight<16>(out[1])));
  }
#else
  static uint32_t Of(uint32_t column) { return column; }
#endif
};
// The sums of columns in units of 2^kBits, each rounded down.
template <int kBits>
struct ScaledRows {
  using Columns = WideColumns;
#if HWY_TARGET != HWY_SCALAR
  static HWY_INLINE Changes At(const Windows<Columns>& windows, size_t x) {
    const DU32 d;
    const auto change = [&](int p) HWY_ATTR {
      return hn::Sub(hn::ShiftRight<kBits>(hn::LoadU(d, windows.entering.of[p] + x / 4)),
                     hn::ShiftRight<kBits>(hn::LoadU(d, windows.leaving.of[p] + x / 4)));
    };
    return SumOfChanges(change(0), change(1), change(2), change(3));
  }
#else
  static uint32_t Of(uint32_t column) { return column >> kBits; }
#endif
};
using WideRows = ScaledRows<0>;
using CoarseRows = ScaledRows<kCoarse>;

// The sums of windows, from the left to the right.
template <class Rows>
class WindowScan {
 public:
  using Columns = typename Rows::Columns;

  HWY_INLINE explicit WindowScan(const Windows<Columns>& windows)
      : windows_(windows), before_(hn::Set(DU32(), windows.before)) {}

  // All sums from here on are so much larger, modulo 2^32.
  HWY_INLINE void Add(uint32_t more) { before_ = hn::Add(before_, hn::Set(DU32(), more)); }
  // Those at the places from x on, which follows the places before.
  HWY_INLINE WindowLanes Next(size_t x) {
    const DU32 d;
#if HWY_TARGET == HWY_SCALAR
    const auto place = static_cast<ptrdiff_t>(x);
    const uint32_t entering = Rows::Of(*windows_.entering.At(place));
    before_ = hn::Add(before_, hn::Set(d, entering - Rows::Of(*windows_.leaving.At(place))));
    return {{before_}};
#else
    const auto last = hn::IndicesFromVec(
        d, hn::Set(hn::RebindToSigned<DU32>(), static_cast<int32_t>(hn::Lanes(d) - 1)));
    const Changes changes = Rows::At(windows_, x);
    const VU32 here = PrefixSums(changes.all), third = hn::Add(here, before_);
    before_ = hn::Add(before_, hn::TableLookupLanes(here, last));
    const VU32 second = hn::Sub(third, changes.of[2]), first = hn::Sub(second, changes.of[1]);
    return {{hn::Sub(first, changes.of[0]), first, second, third}};
#endif
  }

 private:
  const Windows<Columns> windows_;
  VU32 before_;
};

// The areas of a vector of windows of one phase.
struct Area {
  VU32 area;
  VF32 reciprocal;
};
class SameAreas {
 public:
  HWY_INLINE explicit SameAreas(const WindowAreas& areas)
      : area_{hn::Set(DU32(), static_cast<uint32_t>(areas.area)),
              hn::Set(DF32(), areas.reciprocal)} {}
  HWY_INLINE Area At(size_t, size_t) const { return area_; }

 private:
  Area area_;
};
class VariousAreas {
 public:
  HWY_INLINE explicit VariousAreas(const WindowAreas& areas) : areas_(areas) {}
  HWY_INLINE Area At(size_t phase, size_t x) const {
    const auto place = static_cast<ptrdiff_t>(x + phase);
    return {hn::BitCast(DU32(), hn::LoadU(D32(), areas_.areas.At(place))),
            hn::LoadU(DF32(), areas_.reciprocals.At(place))};
  }

 private:
  const WindowAreas& areas_;
};

// The lowest bytes of the lanes, side by side. The next two are 0.
HWY_INLINE hn::Vec<D8> JoinLevels(const WindowLanes& lanes) {
  const D8 d8;
#if HWY_TARGET == HWY_SCALAR
  return hn::Set(d8, static_cast<KyBW8>(hn::GetLane(lanes.of[0])));
#else
  const DU32 d;
  const VU32 lower = hn::Or(hn::And(lanes.of[0], hn::Set(d, 0xFF)), hn::ShiftLeft<8>(lanes.of[1]));
  const VU32 upper = hn::Or(hn::ShiftLeft<16>(lanes.of[2]), hn::ShiftLeft<24>(lanes.of[3]));
  return hn::BitCast(d8, hn::Or(lower, upper));
#endif
}

// out[x] = op(x, the lanes of each scan), for all places from x to `end` of a row of n.
template <class Op, class... Scan>
HWY_INLINE void MapRange(const Op& op, KyBW8* out, size_t& x, size_t end, size_t n,
                         Scan&... scans) {
  const D8 d8;
  const size_t lanes = hn::Lanes(d8);
  for (; x < end; x += lanes) {
    const auto levels = op(x, scans.Next(x)...);
    if (HWY_LIKELY(n - x >= lanes))
      hn::StoreU(levels, d8, out + x);
    else
      StorePart(d8, levels, out + x, n - x);
  }
}

// out[x] = op(areas, x, the lanes of each scan) for all x.
template <class Op, class... Scan>
HWY_INLINE void MapSums(const Op& op, KyBW8* out, size_t n, const WindowAreas& areas,
                        Scan... scans) {
  size_t x = 0;
  const auto mapTo = [&](size_t end, const auto& areasHere) KY_INLINE_ATTR {
    const auto levels = [&](size_t at, const auto&... lanes)
                            KY_INLINE_ATTR { return JoinLevels(op(areasHere, at, lanes...)); };
    MapRange(levels, out, x, HWY_MIN(end, n), n, scans...);
  };
  mapTo(areas.left, VariousAreas(areas));
  mapTo(areas.right, SameAreas(areas));
  mapTo(n, VariousAreas(areas));
}

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
  MapSums(Op(), out, n, areas, WindowScan<Rows>(windows));
}
template <class Rows>
void DeviationRow(KyBW8* out, size_t n, const Windows<typename Rows::Columns>& levels,
                  const Windows<WideColumns>& squares, const WindowAreas& areas) {
  MapSums(DeviationOp(), out, n, areas, WindowScan<Rows>(levels), WindowScan<WideRows>(squares));
}

void DeviationOfLargeRow(KyBW8* out, size_t n, const Windows<WideColumns>& levels,
                         const Windows<WideColumns>& squares, uint32_t coarseBefore,
                         const WindowAreas& areas) {
  const Windows<WideColumns> coarse = {squares.entering, squares.leaving, coarseBefore};
  MapSums(DeviationOfLargeOp(), out, n, areas, WindowScan<WideRows>(levels),
          WindowScan<WideRows>(squares), WindowScan<CoarseRows>(coarse));
}

// A level p is at least round(S / n) + offset where (p - offset) n + (n + 1) / 2, rounded down, is
// above S.
class ThresholdOp {
 public:
  HWY_INLINE ThresholdOp(const KyBW8* source, size_t n, const LocalThreshold& threshold)
      : source_(source), n_(n), threshold_(threshold) {}

  template <class Areas>
  HWY_INLINE hn::Vec<D8> operator()(const Areas& areas, size_t x, const WindowLanes& sums) const {
    const D32 d;
    const auto pixels = PixelsAt(x);
    V32 above[kWindowPhases];
    for (size_t p = 0; p < kWindowPhases; ++p) {
      const V32 area = hn::BitCast(d, areas.At(p, x).area);
      const V32 level = hn::Sub(LevelsOf(pixels, p), hn::Set(d, threshold_.offset));
      const V32 half = hn::ShiftRight<1>(hn::Add(area, hn::Set(d, 1)));
      above[p] = IsAbove(hn::Add(hn::Mul(level, area), half), sums.of[p]);
    }
    return Choose(above);
  }

  // The same where all windows have an area that fits 16 bits, and sums include Rest(area).
  HWY_INLINE hn::Vec<D8> OverSame(int32_t area, size_t x, const WindowLanes& sums) const {
    const auto pixels = PixelsAt(x);
#if HWY_TARGET == HWY_SCALAR
    V32 above[] = {IsAbove(hn::Mul(LevelsOf(pixels, 0), hn::Set(D32(), area)), sums.of[0])};
#else
    const V32 zero = hn::Zero(D32());
    const V16 even = Even(pixels), odd = Odd(pixels);
    V32 above[] = {IsAbove(MulAddPairs(even, area, zero), sums.of[0]),
                   IsAbove(MulAddPairs(odd, area, zero), sums.of[1]),
                   IsAbove(MulAddPairs(even, area << 16, zero), sums.of[2]),
                   IsAbove(MulAddPairs(odd, area << 16, zero), sums.of[3])};
#endif
    return Choose(above);
  }
  HWY_INLINE uint32_t Rest(int32_t area) const {
    return static_cast<uint32_t>(threshold_.offset * area - (area + 1) / 2);
  }

 private:
  HWY_INLINE hn::Vec<D8> PixelsAt(size_t x) const {
    const D8 d;
    return HWY_LIKELY(n_ - x >= hn::Lanes(d)) ? hn::LoadU(d, source_ + x)
                                              : LoadPart(d, source_ + x, n_ - x);
  }
#if HWY_TARGET == HWY_SCALAR
  HWY_INLINE static V32 LevelsOf(hn::Vec<D8> pixels, size_t) {
    return hn::PromoteTo(D32(), pixels);
  }
#else
  HWY_INLINE static V16 Even(hn::Vec<D8> v) {
    return hn::And(hn::BitCast(D16(), v), hn::Set(D16(), 0xFF));
  }
  HWY_INLINE static V16 Odd(hn::Vec<D8> v) { return ShiftRightUnsigned<8>(hn::BitCast(D16(), v)); }
  HWY_INLINE static V32 LevelsOf(hn::Vec<D8> pixels, size_t phase) {
    const V32 pairs = hn::BitCast(D32(), phase % 2 == 0 ? Even(pixels) : Odd(pixels));
    return phase < 2 ? hn::And(pairs, hn::Set(D32(), 0xFF)) : hn::ShiftRight<16>(pairs);
  }
#endif
  HWY_INLINE static V32 IsAbove(V32 v, VU32 sum) {
    const D32 d;
    return hn::VecFromMask(d, hn::Gt(v, hn::BitCast(d, sum)));
  }
  HWY_INLINE hn::Vec<D8> Choose(const V32 (&above)[kWindowPhases]) const {
    const D8 d;
#if HWY_TARGET == HWY_SCALAR
    return hn::Set(d, hn::GetLane(above[0]) != 0 ? threshold_.high : threshold_.low);
#else
    const auto halves = [](V32 upper, V32 lower) HWY_ATTR {
      return hn::BitCast(D8(), hn::OddEven(hn::BitCast(D16(), upper), hn::BitCast(D16(), lower)));
    };
    const auto all = hn::OddEven(halves(above[3], above[1]), halves(above[2], above[0]));
    return hn::IfThenElse(hn::MaskFromVec(all), hn::Set(d, threshold_.high),
                          hn::Set(d, threshold_.low));
#endif
  }

  const KyBW8* source_;
  size_t n_;
  LocalThreshold threshold_;
};
template <class Rows>
void ThresholdRow(KyBW8* out, size_t n, const Windows<typename Rows::Columns>& windows,
                  const WindowAreas& areas, const KyBW8* source, const LocalThreshold& threshold) {
  const ThresholdOp op(source, n, threshold);
  const int32_t area = areas.area;
  WindowScan<Rows> scan(windows);
  size_t x = 0;
  const auto various = [&](size_t at, const WindowLanes& sums)
                           KY_INLINE_ATTR { return op(VariousAreas(areas), at, sums); };
  const auto same = [&](size_t at, const WindowLanes& sums)
                        KY_INLINE_ATTR { return op.OverSame(area, at, sums); };
  MapRange(various, out, x, HWY_MIN(areas.left, n), n, scan);
  scan.Add(op.Rest(area));
  MapRange(same, out, x, HWY_MIN(areas.right, n), n, scan);
  scan.Add(0 - op.Rest(area));
  MapRange(various, out, x, n, n, scan);
}

struct CompareOp {
  using Lane = uint8_t;
  Comparison comparison;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V x, V y) const {
    const V least = hn::SaturatedAdd(y, hn::Set(d, comparison.offset));
    const auto isOther = hn::Eq(hn::SaturatedSub(x, least), hn::Zero(d));
    return hn::IfThenElse(isOther, hn::Set(d, comparison.other), hn::Set(d, comparison.above));
  }
};
void CompareRow(KyBW8* out, size_t n, const KyBW8* x, const KyBW8* y,
                const Comparison& comparison) {
  MapSpan(CompareOp{comparison}, out, n, x, y);
}

template <class Rows>
constexpr ResultKernels<typename Rows::Columns> ResultsOf() {
  return {&AverageRow<Rows, AverageOp<true>>, &AverageRow<Rows, AverageOp<false>>,
          &AverageRow<Rows, AverageOfLargeOp>, &ThresholdRow<Rows>, &DeviationRow<Rows>};
}
constexpr BoxKernels kKernels = {ResultsOf<FewRows>(), ResultsOf<NarrowRows>(),
                                 ResultsOf<WideRows>(), &DeviationOfLargeRow, &CompareRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(BoxKernels)
