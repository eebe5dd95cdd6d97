#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/bayer_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "conversion/bayer_rows.h"

#include <algorithm>
#include <cstring>

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

// Up to a vector of pixels from column x on, from copies of the rows that go on beyond their ends.
template <bool kHasRed>
void MakeEnd(KyC24* out, size_t x, size_t count, size_t n, const MosaicRow& row) {
  constexpr size_t kLanes = hn::MaxLanes(D8());
  KyBW8 copies[3][kLanes + 2] = {};
  const KyBW8* const rows[3] = {row.above, row.here, row.below};
  for (size_t k = 0; k < 3; ++k) {
    const size_t end = std::min(x + count + 1, n), start = x > 0 ? x - 1 : 0;
    std::memcpy(copies[k] + (x > 0 ? 0 : 1), rows[k] + start, end - start);
    if (x == 0) copies[k][0] = rows[k][1];
    if (x + count == n) copies[k][count + 1] = rows[k][n - 2];
  }
  KyC24 colors[kLanes];
  MakeColors<kHasRed>(colors, copies[0] + 1, copies[1] + 1, copies[2] + 1,
                      GreenLanes(row.startsOnGreen == (x % 2 == 0)));
  std::copy_n(colors, count, out + x);
}

template <bool kHasRed>
void DemosaicRow(KyC24* out, size_t n, const MosaicRow& row) {
  const size_t lanes = hn::Lanes(D8());
  const size_t first = std::min(lanes, n);
  MakeEnd<kHasRed>(out, 0, first, n, row);
  if (first == n) return;
  const V8 isGreen[2] = {GreenLanes(row.startsOnGreen), GreenLanes(!row.startsOnGreen)};
  size_t x = first;
  for (; x + lanes < n; x += lanes) {
    MakeColors<kHasRed>(out + x, row.above + x, row.here + x, row.below + x, isGreen[x % 2]);
  }
  MakeEnd<kHasRed>(out, x, n - x, n, row);
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
