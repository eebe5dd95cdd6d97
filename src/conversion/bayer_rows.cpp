#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/bayer_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "conversion/bayer_rows.h"

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using D8 = hn::ScalableTag<uint8_t>;
using V8 = hn::Vec<D8>;

// (a + b + c + d + 2) >> 2, by ab = (a + b + 1) >> 1 and cd = (c + d + 1) >> 1: their rounded mean
// is one too many where it is rounded up and one of them was, too.
HWY_INLINE V8 MeanOf4(V8 ab, V8 cd, V8 oddAb, V8 oddCd) {
  const V8 excess = hn::And(hn::And(hn::Or(oddAb, oddCd), hn::Xor(ab, cd)), hn::Set(D8(), 1));
  return hn::Sub(hn::AverageRound(ab, cd), excess);
}

// 255 in the lanes of green pixels, where those are the even or the odd ones.
HWY_INLINE V8 GreenLanes(bool startsOnGreen) {
#if HWY_TARGET == HWY_SCALAR
  return hn::Set(D8(), startsOnGreen ? 255 : 0);
#else
  const hn::Repartition<uint16_t, D8> d16;
  return hn::BitCast(D8(), hn::Set(d16, startsOnGreen ? 0x00FF : 0xFF00));
#endif
}

// A vector of pixels, whose neighbours on both sides are read, too.
template <bool kHasRed>
HWY_INLINE void MakeColors(KyC24* out, const KyBW8* above, const KyBW8* here, const KyBW8* below,
                           V8 isGreen) {
  const D8 d;
  const auto at = [=](const KyBW8* place) HWY_ATTR { return hn::LoadU(d, place); };
  const V8 left = at(here - 1), own = at(here), right = at(here + 1);
  const V8 up = at(above), down = at(below);
  const V8 upLeft = at(above - 1), upRight = at(above + 1);
  const V8 downLeft = at(below - 1), downRight = at(below + 1);
  const V8 across = hn::AverageRound(left, right), along = hn::AverageRound(up, down);
  const V8 cross = MeanOf4(across, along, hn::Xor(left, right), hn::Xor(up, down));
  const V8 diagonal =
      MeanOf4(hn::AverageRound(upLeft, upRight), hn::AverageRound(downLeft, downRight),
              hn::Xor(upLeft, upRight), hn::Xor(downLeft, downRight));
  const auto isGreenLane = hn::MaskFromVec(isGreen);
  const V8 ofRow = hn::IfThenElse(isGreenLane, across, own);
  const V8 green = hn::IfThenElse(isGreenLane, own, cross);
  const V8 ofOthers = hn::IfThenElse(isGreenLane, along, diagonal);
  StoreLanes(Planes3<V8>{kHasRed ? ofRow : ofOthers, green, kHasRed ? ofOthers : ofRow}, out);
}

// The same of one pixel, beside which those at both ends of the row stand mirrored.
template <bool kHasRed>
KyC24 ColorAt(size_t x, size_t n, const MosaicRow& row) {
  const size_t left = x > 0 ? x - 1 : 1, right = x + 1 < n ? x + 1 : n - 2;
  const auto mean = [](int a, int b) { return static_cast<KyBW8>((a + b + 1) >> 1); };
  const auto meanOf4 = [](int a, int b, int c, int d) {
    return static_cast<KyBW8>((a + b + c + d + 2) >> 2);
  };
  const KyBW8 *const above = row.above, *const here = row.here, *const below = row.below;
  KyBW8 ofRow = here[x], ofOthers, green = here[x];
  if (row.startsOnGreen == (x % 2 == 0)) {
    ofRow = mean(here[left], here[right]);
    ofOthers = mean(above[x], below[x]);
  } else {
    ofOthers = meanOf4(above[left], above[right], below[left], below[right]);
    green = meanOf4(here[left], here[right], above[x], below[x]);
  }
  return {kHasRed ? ofRow : ofOthers, green, kHasRed ? ofOthers : ofRow};
}

// Both ends by themselves, and between them whole vectors, of which the last one overlaps the one
// before it.
template <bool kHasRed>
void DemosaicRow(KyC24* out, size_t n, const MosaicRow& row) {
  const size_t lanes = hn::Lanes(D8());
  const auto makeEach = [&](size_t x, size_t end) {
    for (; x < end; ++x) out[x] = ColorAt<kHasRed>(x, n, row);
  };
  if (n < lanes + 2) return makeEach(0, n);
  makeEach(0, 1);
  const V8 isGreen[2] = {GreenLanes(row.startsOnGreen), GreenLanes(!row.startsOnGreen)};
  const auto make = [&](size_t x) HWY_ATTR {
    MakeColors<kHasRed>(out + x, row.above + x, row.here + x, row.below + x, isGreen[x % 2]);
  };
  const size_t last = n - 1 - lanes;
  for (size_t x = 1; x < last; x += lanes) make(x);
  make(last);
  makeEach(n - 1, n);
}

void Demosaic(KyC24* out, size_t n, const MosaicRow& row) {
  if (row.hasRed)
    DemosaicRow<true>(out, n, row);
  else
    DemosaicRow<false>(out, n, row);
}

constexpr BayerKernels kKernels = {&Demosaic};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(BayerKernels)
