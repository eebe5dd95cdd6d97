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

// What stands for levels, in units of 1 / kUnit.
struct Weighed {
  static constexpr uint64_t kUnit = 1;
  explicit Weighed(KyBW8) {}
  HWY_INLINE V8 operator()(V8 v) const { return v; }
};
struct Binary {
  explicit Binary(KyBW8 threshold) : threshold_(hn::Set(D8(), threshold)) {}
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2  // whose masks take long to become lanes
  static constexpr uint64_t kUnit = 1;
  HWY_INLINE V8 operator()(V8 v) const {
    return hn::SaturatedSub(hn::Set(D8(), 1), hn::SaturatedSub(threshold_, v));
  }
#else
  static constexpr uint64_t kUnit = 255;
  HWY_INLINE V8 operator()(V8 v) const {
    return hn::VecFromMask(D8(), hn::Eq(hn::Max(v, threshold_), v));
  }
#endif

 private:
  V8 threshold_;
};

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
  for (size_t x = 0; x < n; ++x) {
    const uint64_t p = hn::GetLane(level(hn::Set(D8(), row[x])));
    sums.m0 += p;
    sums.m1 += x * p;
  }
  return sums;
}
constexpr ptrdiff_t kBlockRows = 1;
template <class Level>
void AddRows(const Level& level, const Rows<const KyBW8>& rows, ColumnSums& columns) {
  for (ptrdiff_t x = 0; x < rows.width; ++x) {
    columns.rising[x] += columns.level[x];
    columns.level[x] += hn::GetLane(level(hn::Set(D8(), rows.first[x])));
  }
}
size_t PlaceOf(size_t x) { return x; }

#else

// The sums of i p over lanes i.
class SumWithin {
 public:
  HWY_INLINE SumWithin() : sum_(hn::Zero(D32())), more_(hn::Zero(D32())) {}
  // Takes two vectors, whose lanes have the same numbers.
  HWY_INLINE void Step(V8 a, V8 b) {
#if KY_HAVE_MUL_ADD_BYTES
    const V8 lane = hn::Iota(D8(), 0);
    if constexpr (hn::MaxLanes(D8()) <= 32) {
      Add(hn::Add(MulAddBytes(a, lane), MulAddBytes(b, lane)), hn::Set(D16(), 1));
    } else {  // two sums would exceed 16 bits
      Add(MulAddBytes(a, lane), hn::Set(D16(), 1));
      Add(MulAddBytes(b, lane), hn::Set(D16(), 1));
    }
#else
    const auto even = hn::ShiftLeft<1>(hn::Iota(D16(), 0)), odd = hn::Add(even, hn::Set(D16(), 1));
    for (const V8 v : {a, b}) {
      Add(hn::BitCast(D16(), EvenBytes(D8(), v)), even);
      Add(hn::BitCast(D16(), OddBytes(D8(), v)), odd);
    }
#endif
  }
  HWY_INLINE uint64_t Done() const {
    return SumOfAll(hn::BitCast(hn::RebindToUnsigned<D32>(), hn::Add(sum_, more_)));
  }

 private:
  using D16 = hn::Repartition<int16_t, D8>;
  using D32 = hn::Repartition<int32_t, D8>;
  HWY_INLINE void Add(hn::Vec<D16> a, hn::Vec<D16> b) {
    sum_ = hn::ReorderWidenMulAccumulate(D32(), a, b, sum_, more_);
  }
  hn::Vec<D32> sum_, more_;
};

// With k counting vectors from 0 and i lanes, x = lanes k + i. Each step, from the last vector to
// the first, adds the sums so far to other sums, so that vector k is added k times to these.
template <class Level>
RowSums SumRow(const Level& level, const KyBW8* row, size_t n) {
  const D8 d;
  const size_t lanes = hn::Lanes(d);
  using V64 = decltype(hn::SumsOf8(V8()));
  V64 sum = hn::Zero(hn::DFromV<V64>()), rising = sum;
  SumWithin within;
  const auto one = [&](V8 v) HWY_ATTR {
    rising = hn::Add(rising, sum);
    sum = hn::Add(sum, hn::SumsOf8(v));
  };
  const auto alone = [&](V8 v) HWY_ATTR {
    one(v);
    within.Step(v, hn::Zero(d));
  };
  size_t x = n / lanes * lanes;
  if (const size_t rest = n - x; rest > 0)
    alone(hn::And(hn::VecFromMask(d, hn::FirstN(d, rest)), level(LoadPart(d, row + x, rest))));
  if (x / lanes % 2 != 0) {
    x -= lanes;
    alone(level(hn::LoadU(d, row + x)));
  }
  while (x != 0) {
    x -= 2 * lanes;
    const V8 right = level(hn::LoadU(d, row + x + lanes)), left = level(hn::LoadU(d, row + x));
    one(right);
    one(left);
    within.Step(left, right);
  }
  return {SumOfAll(sum), lanes * SumOfAll(rising) + within.Done()};
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
  using V16 = hn::Vec<hn::Repartition<uint16_t, D8> >;
  const size_t lanes = hn::Lanes(d), n = static_cast<size_t>(rows.width);
  struct Sums {
    V16 both, odd, bothRising, oddRising;
  };
  const auto row = [&](Sums& sums, V8 v) HWY_ATTR {
    const V16 pair = hn::BitCast(d16, v);
    sums.bothRising = hn::Add(sums.bothRising, sums.both);
    sums.oddRising = hn::Add(sums.oddRising, sums.odd);
    sums.both = hn::Add(sums.both, pair);
    sums.odd = hn::Add(sums.odd, hn::ShiftRight<8>(pair));
  };
  const auto store = [&](V16 sums, V16 rising, size_t place) HWY_ATTR {
    const auto put = [&](auto wide, auto wideRising, size_t at) HWY_ATTR {
      const auto old = hn::Load(d32, columns.level + at);
      const auto oldRising = hn::Load(d32, columns.rising + at);
      hn::Store(hn::Add(old, wide), d32, columns.level + at);
      hn::Store(hn::Add(oldRising, hn::Add(wideRising, hn::ShiftLeft<4>(old))), d32,
                columns.rising + at);
    };
    const auto low = hn::Set(d32, 0xFFFF);
    const auto wide = hn::BitCast(d32, sums), wideRising = hn::BitCast(d32, rising);
    put(hn::And(wide, low), hn::And(wideRising, low), place);
    put(hn::ShiftRight<16>(wide), hn::ShiftRight<16>(wideRising), place + lanes / 2);
  };
  const auto storeAll = [&](const Sums& s, size_t x) HWY_ATTR {
    store(hn::Sub(s.both, hn::ShiftLeft<8>(s.odd)),
          hn::Sub(s.bothRising, hn::ShiftLeft<8>(s.oddRising)), x);
    store(s.odd, s.oddRising, x + lanes / 4);
  };
  const V16 zero = hn::Zero(d16);
  size_t x = 0;
  // Two vectors at once: each addition waits for the one before.
  for (; x + 2 * lanes <= n; x += 2 * lanes) {
    Sums left{zero, zero, zero, zero}, right = left;
    for (ptrdiff_t y = rows.height; y-- > 0;) {
      row(left, level(hn::LoadU(d, rows.Row(y) + x)));
      row(right, level(hn::LoadU(d, rows.Row(y) + x + lanes)));
    }
    storeAll(left, x);
    storeAll(right, x + lanes);
  }
  for (; x < n; x += lanes) {
    const size_t count = HWY_MIN(n - x, lanes);
    const V8 present = hn::VecFromMask(d, hn::FirstN(d, count));
    Sums sums{zero, zero, zero, zero};
    for (ptrdiff_t y = rows.height; y-- > 0;)
      row(sums, hn::And(present, level(LoadPart(d, rows.Row(y) + x, count))));
    storeAll(sums, x);
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
  for (uint64_t* const each :
       {&m.m00, &m.m10, &m.m01, &m.m20, &m.m11, &m.m02, &m.m30, &m.m21, &m.m12, &m.m03})
    *each /= Level::kUnit;
  return m;
}

constexpr MomentKernels kKernels = {&Moments<Weighed>, &Moments<Binary>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(MomentKernels)
