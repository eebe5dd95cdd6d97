// Moments take two passes over some rows at a time, which stay in a first cache. Rows give
// the sums of p and x p, and with y those moments that have no more than one x. Columns give the
// sums of p and y p, and at the end, with x, those that have two or three.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "statistics/moments_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "statistics/moments_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using D8 = hn::ScalableTag<uint8_t>;
using V8 = hn::Vec<D8>;

struct Weighed {
  explicit Weighed(KyBW8) {}
  HWY_INLINE V8 operator()(V8 v) const { return v; }
};
struct Binary {
  explicit Binary(KyBW8 threshold) : threshold_(hn::Set(D8(), threshold)) {}
  HWY_INLINE V8 operator()(V8 v) const {
    return hn::IfThenElseZero(hn::Eq(hn::Max(v, threshold_), v), hn::Set(D8(), 1));
  }

 private:
  V8 threshold_;
};

// Steps from the last vector of a row to the first, of which the last may have pixels for a part of
// its lanes: step(lanes as levels, the first one's x). Lanes without a pixel are 0.
template <class Level, class Step>
HWY_INLINE void FromLast(const Level& level, const KyBW8* row, size_t n, const Step& step) {
  const D8 d;
  const size_t lanes = hn::Lanes(d);
  size_t x = n / lanes * lanes;
  if (const size_t rest = n - x; rest > 0) {
    const auto present = hn::VecFromMask(d, hn::FirstN(d, rest));
    step(hn::And(present, level(LoadPart(d, row + x, rest))), x);
  }
  while (x != 0) {
    x -= lanes;
    step(level(hn::LoadU(d, row + x)), x);
  }
}

struct RowSums {
  uint64_t m0, m1;  // of p and x p
};
struct ColumnSums {
  // The sums of p and of y p, for each column. Vectors of pixels are stored in the order in which
  // their parts arise; PlaceOf says where.
  alignas(64) uint32_t level[kMomentSide + 64], rising[kMomentSide + 64];
};

#if HWY_TARGET == HWY_SCALAR

template <class Level>
RowSums SumRow(const Level& level, const KyBW8* row, size_t n) {
  RowSums sums{};
  FromLast(level, row, n, [&](V8 v, size_t x) {
    sums.m0 += hn::GetLane(v);
    sums.m1 += x * hn::GetLane(v);
  });
  return sums;
}
constexpr ptrdiff_t kBlockRows = 1;
template <class Level>
void AddRows(const Level& level, const Rows<const KyBW8>& rows, ColumnSums& columns) {
  FromLast(level, rows.first, static_cast<size_t>(rows.width), [&](V8 v, size_t x) {
    columns.rising[x] += columns.level[x];
    columns.level[x] += hn::GetLane(v);
  });
}
size_t PlaceOf(size_t x) { return x; }

#else

// With k counting vectors from 0 and i lanes, x = lanes k + i. Sums are added up to others in each
// step, from the last vector to the first, so that vector k is added k times.
template <class Level>
RowSums SumRow(const Level& level, const KyBW8* row, size_t n) {
  const D8 d;
  const hn::Repartition<int16_t, D8> d16;
  const hn::Repartition<int32_t, D8> d32;
  using V64 = decltype(hn::SumsOf8(V8()));
  V64 sum = hn::Zero(hn::DFromV<V64>()), rising = sum;
  auto within = hn::Zero(d32), more = within;
  const auto even = hn::ShiftLeft<1>(hn::Iota(d16, 0)), odd = hn::Add(even, hn::Set(d16, 1));
  FromLast(level, row, n, [&](V8 v, size_t) HWY_ATTR {
    rising = hn::Add(rising, sum);
    sum = hn::Add(sum, hn::SumsOf8(v));
    within =
        hn::ReorderWidenMulAccumulate(d32, hn::BitCast(d16, EvenBytes(d, v)), even, within, more);
    within =
        hn::ReorderWidenMulAccumulate(d32, hn::BitCast(d16, OddBytes(d, v)), odd, within, more);
  });
  const auto inLanes =
      SumOfAll(hn::BitCast(hn::RebindToUnsigned<decltype(d32)>(), hn::Add(within, more)));
  return {SumOfAll(sum), hn::Lanes(d) * SumOfAll(rising) + inLanes};
}

// 16 rows: the sums of j p, 0 <= j < 16, fit 16 bits.
constexpr ptrdiff_t kBlockRows = 16;

// Adds to the sums of p those of the rows, and to the sums of y p those of j p and 16 times what
// the sums of p were before: rows come from the last to the first.
template <class Level>
void AddRows(const Level& level, const Rows<const KyBW8>& rows, ColumnSums& columns) {
  const D8 d;
  const hn::Repartition<uint16_t, D8> d16;
  const hn::Repartition<uint32_t, D8> d32;
  const size_t lanes = hn::Lanes(d), n = static_cast<size_t>(rows.width);
  const auto add = [&](const auto& load, size_t x) HWY_ATTR {
    auto both = hn::Zero(d16), odd = both, bothRising = both, oddRising = both;
    for (ptrdiff_t y = rows.height; y-- > 0;) {
      const auto v = hn::BitCast(d16, load(rows.Row(y) + x));
      bothRising = hn::Add(bothRising, both);
      oddRising = hn::Add(oddRising, odd);
      both = hn::Add(both, v);
      odd = hn::Add(odd, hn::ShiftRight<8>(v));
    }
    const auto store = [&](auto sums, auto risingSums, size_t place) HWY_ATTR {
      const auto put = [&](auto wide, auto wideRising, size_t at) HWY_ATTR {
        const auto old = hn::Load(d32, columns.level + at);
        const auto oldRising = hn::Load(d32, columns.rising + at);
        hn::Store(hn::Add(old, wide), d32, columns.level + at);
        hn::Store(hn::Add(oldRising, hn::Add(wideRising, hn::ShiftLeft<4>(old))), d32,
                  columns.rising + at);
      };
      const auto low = hn::Set(d32, 0xFFFF);
      const auto wide = hn::BitCast(d32, sums), wideRising = hn::BitCast(d32, risingSums);
      put(hn::And(wide, low), hn::And(wideRising, low), place);
      put(hn::ShiftRight<16>(wide), hn::ShiftRight<16>(wideRising), place + lanes / 2);
    };
    store(hn::Sub(both, hn::ShiftLeft<8>(odd)), hn::Sub(bothRising, hn::ShiftLeft<8>(oddRising)),
          x);
    store(odd, oddRising, x + lanes / 4);
  };
  size_t x = 0;
  for (; x + lanes <= n; x += lanes)
    add([&](const KyBW8* from) HWY_ATTR { return level(hn::LoadU(d, from)); }, x);
  if (const size_t rest = n - x; rest > 0) {
    const auto present = hn::VecFromMask(d, hn::FirstN(d, rest));
    add([&](const KyBW8* from)
            HWY_ATTR { return hn::And(present, level(LoadPart(d, from, rest))); },
        x);
  }
}
// Of each four neighbours, number i stands in the i-th quarter of the vector's places.
size_t PlaceOf(size_t x) {
  const size_t lanes = hn::Lanes(D8()), i = x % lanes;
  return x - i + i % 4 * (lanes / 4) + i / 4;
}

#endif

template <class Level>
TileMoments Moments(const Rows<const KyBW8>& tile, KyBW8 threshold) {
  const Level level(threshold);
  TileMoments m{};
  ColumnSums columns;
  const size_t n = static_cast<size_t>(tile.width);
  std::fill_n(columns.level, n + 64, 0u);
  std::fill_n(columns.rising, n + 64, 0u);
  for (ptrdiff_t top = (tile.height - 1) / kBlockRows * kBlockRows; top >= 0; top -= kBlockRows) {
    const ptrdiff_t height = std::min(kBlockRows, tile.height - top);
    AddRows(level, Rows<const KyBW8>{tile.Row(top), tile.pitch, tile.width, height}, columns);
    for (ptrdiff_t row = top; row < top + height; ++row) {
      const RowSums sums = SumRow(level, tile.Row(row), n);
      const auto y = static_cast<uint64_t>(row);
      m.m00 += sums.m0;
      m.m10 += sums.m1;
      m.m01 += y * sums.m0;
      m.m11 += y * sums.m1;
      m.m02 += y * y * sums.m0;
      m.m12 += y * y * sums.m1;
      m.m03 += y * y * y * sums.m0;
    }
  }
  for (uint64_t x = 0; x < n; ++x) {
    const uint64_t sum = columns.level[PlaceOf(x)];
    m.m20 += x * x * sum;
    m.m30 += x * x * x * sum;
    m.m21 += x * x * columns.rising[PlaceOf(x)];
  }
  return m;
}

constexpr MomentKernels kKernels = {&Moments<Weighed>, &Moments<Binary>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(MomentKernels)
