#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "objects/object_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "objects/object_rows.h"

#include "foundation/bits-inl.h"
#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

constexpr size_t kBits = 64, kShort = 16;

struct IsBetween {
  using Lane = uint8_t;
  KyBW8 low, high;

  template <class D, class V>
  HWY_INLINE auto operator()(D d, V v) const {
    return hn::Eq(hn::Min(hn::Max(v, hn::Set(d, low)), hn::Set(d, high)), v);
  }
};

struct Differ {
  using Lane = uint32_t;

  template <class D, class V>
  HWY_INLINE auto operator()(D, V a, V b) const {
    return hn::Ne(a, b);
  }
};

size_t FindRuns(const KyBW8* row, size_t n, KyBW8 low, KyBW8 high, int32_t* ends) {
  const IsBetween op{low, high};
  RunEnds runEnds(ends);
  size_t x = 0;
  for (; x + kBits <= n; x += kBits) runEnds.Add(TruthBits(op, row + x), static_cast<int32_t>(x));
  if (const size_t rest = n - x; rest > 0) {
    KyBW8 padded[kBits] = {};
    std::memcpy(padded, row + x, rest);
    const uint64_t present = (uint64_t{1} << rest) - 1;
    runEnds.Add(TruthBits(op, padded) & present, static_cast<int32_t>(x));
  }
  return static_cast<size_t>(runEnds.Finish(static_cast<int32_t>(n)) - ends) / 2;
}

// Short runs, of which noise has many: without branches that depend on their lengths, but one.
// `room` pixels can be read.
HWY_INLINE ExtremesAndSum MeasureShort(const KyBW8* at, size_t n, size_t room) {
#if HWY_TARGET == HWY_SCALAR
  (void)room;
  return ReduceSpan<ExtremesAndSumOfBytes, KyBW8>(n, at);
#else
  using D = hn::FixedTag<uint8_t, kShort>;
  const D d;
  const auto present = hn::VecFromMask(d, hn::FirstN(d, n));
  const auto v = room >= kShort ? hn::And(hn::LoadU(d, at), present) : LoadPart(d, at, n);
  ExtremesAndSumOfBytes<D> fold;
  fold.Step(d, v, hn::Not(present));
  return fold.Done();
#endif
}

// The sum of a piece fits 32 bits.
constexpr size_t kLongestPiece = size_t{1} << 24;

RunLevels MeasureLong(const KyBW8* at, size_t n) {
  RunLevels total{0, 255, 0};
  for (size_t i = 0; i < n; i += kLongestPiece) {
    const ExtremesAndSum of =
        ReduceSpan<ExtremesAndSumOfBytes, KyBW8>(HWY_MIN(n - i, kLongestPiece), at + i);
    total = {total.sum + of.sum, HWY_MIN(total.lowest, of.smallest),
             HWY_MAX(total.highest, of.largest)};
  }
  return total;
}

void MeasureLevels(const KyBW8* row, size_t n, const int32_t* ends, size_t count,
                   RunLevels* levels) {
  for (size_t i = 0; i < count; ++i) {
    const auto begin = static_cast<size_t>(ends[2 * i]), end = static_cast<size_t>(ends[2 * i + 1]);
    if (end - begin <= kShort) {
      const ExtremesAndSum of = MeasureShort(row + begin, end - begin, n - begin);
      levels[i] = {of.sum, of.smallest, of.largest};
    } else {
      levels[i] = MeasureLong(row + begin, end - begin);
    }
  }
}

// Writes `value` from x to end, and perhaps some elements after it that are in the row.
HWY_INLINE void Spread(KyBW32* row, size_t n, size_t x, size_t end, KyBW32 value) {
  const hn::ScalableTag<uint32_t> d;
  const size_t lanes = hn::Lanes(d);
  const auto v = hn::Set(d, value);
  for (; x < end && x + lanes <= n; x += lanes) {
    PrefetchAhead<hn::MaxLanes(d) * sizeof(KyBW32)>(row + x, 1024);
    hn::StoreU(v, d, row + x);
  }
  for (; x < end; ++x) row[x] = value;
}

void PaintRuns(KyBW32* row, size_t n, const Run* runs, size_t count, const KyBW32* table) {
  size_t x = 0;
  for (size_t i = 0; i < count; ++i) {
    const auto begin = static_cast<size_t>(runs[i].begin), end = static_cast<size_t>(runs[i].end);
    Spread(row, n, x, begin, 0);
    Spread(row, n, begin, end, table[runs[i].label]);
    x = end;
  }
  Spread(row, n, x, n, 0);
}

size_t FindChanges(const KyBW32* row, size_t n, int32_t* places) {
  if (n < 2) return 0;
  int32_t* next = places;
  const auto take = [&](uint64_t bits, size_t x) HWY_ATTR {
    for (; bits != 0; bits &= bits - 1)
      *next++ = static_cast<int32_t>(x + 1) + std::countr_zero(bits);
  };
  size_t x = 0;
  for (; x + kBits < n; x += kBits) take(TruthBits(Differ(), row + x, row + x + 1), x);
  for (; x + 1 < n; ++x) take(row[x] != row[x + 1], x);
  return static_cast<size_t>(next - places);
}

constexpr ObjectKernels kKernels = {&FindRuns, &MeasureLevels, &PaintRuns, &FindChanges};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ObjectKernels)
