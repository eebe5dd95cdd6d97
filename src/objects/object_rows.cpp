#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "objects/object_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "objects/object_rows.h"

#include "foundation/bits-inl.h"
#include "foundation/dispatch.h"
#include "foundation/prefetch-inl.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

constexpr size_t kBits = 64;

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

// The levels of n pixels, of which `room` can be read, in vectors of D. Reading on and masking
// costs less than a copy of what a run leaves for its last vector.
template <class D>
HWY_INLINE ExtremesAndSum MeasurePiece(D d, const KyBW8* at, size_t n, size_t room) {
  const size_t lanes = hn::Lanes(d);
  ExtremesAndSumOfBytes<D> fold;
  size_t i = 0;
  for (; i + lanes <= n; i += lanes) fold.Step(d, hn::LoadU(d, at + i), hn::Zero(d));
  if (const size_t rest = n - i; rest > 0) {
    const auto present = hn::VecFromMask(d, hn::FirstN(d, rest));
    const auto v =
        room - i >= lanes ? hn::And(hn::LoadU(d, at + i), present) : LoadPart(d, at + i, rest);
    fold.Step(d, v, hn::Not(present));
  }
  return fold.Done();
}

// The sum of a piece fits 32 bits.
constexpr size_t kLongestPiece = size_t{1} << 24;

void MeasureLevels(const KyBW8* row, size_t n, const int32_t* ends, size_t count,
                   RunLevels* levels) {
  const hn::ScalableTag<uint8_t> d;
  const hn::CappedTag<uint8_t, 16> dShort;
  for (size_t i = 0; i < count; ++i) {
    auto begin = static_cast<size_t>(ends[2 * i]);
    const auto end = static_cast<size_t>(ends[2 * i + 1]);
    if (end - begin <= hn::Lanes(dShort)) {
      const ExtremesAndSum of = MeasurePiece(dShort, row + begin, end - begin, n - begin);
      levels[i] = {of.sum, of.smallest, of.largest};
      continue;
    }
    RunLevels total{0, 255, 0};
    for (; begin < end; begin += kLongestPiece) {
      const size_t piece = HWY_MIN(end - begin, kLongestPiece);
      const ExtremesAndSum of = MeasurePiece(d, row + begin, piece, n - begin);
      total = {total.sum + of.sum, HWY_MIN(total.lowest, of.smallest),
               HWY_MAX(total.highest, of.largest)};
    }
    levels[i] = total;
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
