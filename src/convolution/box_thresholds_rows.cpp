#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/box_thresholds_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/box_thresholds_rows.h"

#include "convolution/box_windows-inl.h"
#include "convolution/local_thresholds-inl.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

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
void ThresholdRow(KyBW8* out, size_t n, const SlidingWindows<typename Rows::Columns>& windows,
                  const WindowAreas& areas, const KyBW8* source, const LocalThreshold& threshold) {
  const ThresholdOp op(source, n, threshold);
  const int32_t area = areas.area;
  const SamePlaces same = SamePlacesOf(areas);
  WindowScan<Rows> scan(windows);
  size_t x = 0;
  const auto various = [&](size_t at, const WindowLanes& sums)
                           KY_INLINE_ATTR { return op(VariousAreas(areas), at, sums); };
  const auto overSame = [&](size_t at, const WindowLanes& sums)
                            KY_INLINE_ATTR { return op.OverSame(area, at, sums); };
  MapRange(various, out, x, HWY_MIN(same.begin, n), n, scan);
  scan.Add(op.Rest(area));
  MapRange(overSame, out, x, HWY_MIN(same.end, n), n, scan);
  scan.Add(0 - op.Rest(area));
  MapRange(various, out, x, n, n, scan);
}

void KeptThresholdRow(KyBW8* out, size_t n, const KeptWindows& windows, const WindowAreas& areas,
                      RowSpan span, const KyBW8* source, const LocalThreshold& threshold) {
  MapSums(ThresholdOp(source, n, threshold), out, n, areas, span, KeptSums(windows));
}
void CompareRow(KyBW8* out, size_t n, const KyBW8* source, const KyBW8* averages,
                const LocalThreshold& threshold) {
  const bool first = threshold.ComparesSource();
  MapSpan(CompareOp{threshold.ToCompare()}, out, n, first ? source : averages,
          first ? averages : source);
}

constexpr LocalThresholdKernels kKernels = {&ThresholdRow<FewRows>, &ThresholdRow<NarrowRows>,
                                            &ThresholdRow<WideRows>, &KeptThresholdRow,
                                            &CompareRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(LocalThresholdKernels)
