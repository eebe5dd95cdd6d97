#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/distance_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/distance_rows.h"

#include <algorithm>
#include <limits>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"
#include "ky/distance.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

template <class T>
constexpr T kFar = std::numeric_limits<T>::max();

// The far stay far.
template <class D, class V>
HWY_INLINE V OneMore(D d, V v) {
  using T = hn::TFromD<D>;
  return hn::Add(hn::Min(v, hn::Set(d, kFar<T> - 1)), hn::Set(d, T{1}));
}

// The least of the one or the three neighbours in the next row.
template <int kMode, class D, class T>
HWY_INLINE hn::Vec<D> LeastOf(D d, const T* row) {
  const auto middle = hn::LoadU(d, row);
  if constexpr (kMode != IMG_DISTANCE_CHESSBOARD)
    return middle;
  else
    return hn::Min(hn::Min(hn::LoadU(d, row - 1), hn::LoadU(d, row + 1)), middle);
}

// Every distance is at most one more than its neighbour's to the left, or to the right. Within
// blocks of 16 bytes this is a scan by doubling, of 2^n - 1 less the distances, so that what is
// shifted in is far.
#if HWY_TARGET == HWY_SCALAR
template <bool kToLeft, class T>
HWY_INLINE void Spread(T* row, ptrdiff_t n) {
  T last = kFar<T>;
  for (ptrdiff_t i = 0; i < n; ++i) {
    T& at = row[kToLeft ? n - 1 - i : i];
    if (last < at) at = std::min<T>(at, last + 1);
    last = at;
  }
}
#else
// v - step, and 0 where that is negative.
template <class V>
HWY_INLINE V LessBy(V v, V step) {
  if constexpr (sizeof(hn::TFromV<V>) == 2)
    return hn::SaturatedSub(v, step);
  else
    return hn::Sub(hn::Max(v, step), step);
}
template <int kLanes, bool kToLeft, class D, class V>
HWY_INLINE V SpreadBy(D d, V v) {
  V moved;
  if constexpr (kToLeft)
    moved = hn::ShiftRightLanes<kLanes>(d, v);
  else
    moved = hn::ShiftLeftLanes<kLanes>(d, v);
  return hn::Max(v, LessBy(moved, hn::Set(d, kLanes)));
}
// The block of two that comes first on the way in the place of the other, after zeros, and the
// block that comes last in both places.
template <bool kToLeft, class D, class V>
HWY_INLINE V FirstBlockNext(D d, V v) {
  if constexpr (kToLeft)
    return hn::ConcatLowerUpper(d, hn::Zero(d), v);
  else
    return hn::ConcatLowerLower(d, v, hn::Zero(d));
}
template <bool kToLeft, class D, class V>
HWY_INLINE V LastBlockTwice(D d, V v) {
  if constexpr (kToLeft)
    return hn::ConcatLowerLower(d, v, v);
  else
    return hn::ConcatUpperUpper(d, v, v);
}
template <bool kToLeft, class T>
HWY_INLINE void Spread(T* row, ptrdiff_t n) {
  constexpr int kBlock = 16 / sizeof(T), kLast = kToLeft ? 0 : kBlock - 1;
  const hn::CappedTag<T, 2 * kBlock> d;
  constexpr int kLanes = hn::MaxLanes(d);
  T steps[kLanes], stepsOfBlocks[kLanes];
  for (int i = 0; i < kLanes; ++i) {
    const int step = kToLeft ? kLanes - 1 - i : i;
    steps[i] = static_cast<T>(step + 1);
    stepsOfBlocks[i] = static_cast<T>(step % kBlock + 1);
  }
  const auto ramp = hn::LoadU(d, steps), rampOfBlocks = hn::LoadU(d, stepsOfBlocks);
  auto last = hn::Zero(d);
  const ptrdiff_t count = (n + kLanes - 1) / kLanes;
  for (ptrdiff_t i = 0; i < count; ++i) {
    T* const at = row + kLanes * (kToLeft ? count - 1 - i : i);
    auto v = hn::Not(hn::LoadU(d, at));
    v = SpreadBy<1, kToLeft>(d, v);
    v = SpreadBy<2, kToLeft>(d, v);
    if constexpr (kBlock > 4) v = SpreadBy<4, kToLeft>(d, v);
    auto lastOfThese = hn::Broadcast<kLast>(v);
    if constexpr (kLanes > kBlock) {
      v = hn::Max(v, LessBy(FirstBlockNext<kToLeft>(d, lastOfThese), rampOfBlocks));
      lastOfThese = LastBlockTwice<kToLeft>(d, hn::Broadcast<kLast>(v));
    }
    hn::StoreU(hn::Not(hn::Max(v, LessBy(last, ramp))), d, at);
    // Not of what has been stored, or each vector would wait longer for the one before it.
    last = hn::Max(lastOfThese, LessBy(last, hn::Set(d, kLanes)));
  }
}
#endif

template <class T>
constexpr ptrdiff_t kLanesOf = hn::MaxLanes(hn::ScalableTag<T>());

template <class T>
HWY_INLINE void MakeRestFar(T* row, ptrdiff_t n) {
  for (ptrdiff_t i = n; i < n + kDistanceSlack / 2; ++i) row[i] = kFar<T>;
}

template <int kMode, class T>
void Down(T* row, const T* above, const KyBW8* pixels, ptrdiff_t n) {
  const hn::ScalableTag<T> d;
  for (ptrdiff_t x = 0; x < n; x += kLanesOf<T>) {
    const auto isZero = hn::Eq(LoadLanes(d, pixels + x), hn::Zero(d));
    hn::StoreU(hn::IfThenZeroElse(isZero, OneMore(d, LeastOf<kMode>(d, above + x))), d, row + x);
  }
  if (kMode != IMG_DISTANCE_EUCLIDEAN) Spread<false>(row, n);
  MakeRestFar(row, n);
}

template <int kMode, class T>
void Up(T* row, const T* below, ptrdiff_t n) {
  const hn::ScalableTag<T> d;
  for (ptrdiff_t x = 0; x < n; x += kLanesOf<T>)
    hn::StoreU(hn::Min(hn::LoadU(d, row + x), OneMore(d, LeastOf<kMode>(d, below + x))), d,
               row + x);
  MakeRestFar(row, n);
  if (kMode != IMG_DISTANCE_EUCLIDEAN) Spread<true>(row, n);
}

// Beyond reach, while its square plus kReach^2 still fits 16 bits.
constexpr uint16_t kMostDown = 221, kBeyond = kMostDown * kMostDown;
static_assert(kMostDown > kReach && kBeyond + kReach * kReach <= kFar<uint16_t>);

void SquareOf(uint16_t* to, const uint16_t* down, ptrdiff_t n) {
  const hn::ScalableTag<uint16_t> d;
  std::fill_n(to - kReach, kReach, kBeyond);
  for (ptrdiff_t x = 0; x < n; x += kLanesOf<uint16_t>) {
    const auto v = hn::Min(hn::LoadU(d, down + x), hn::Set(d, kMostDown));
    hn::StoreU(hn::Mul(v, v), d, to + x);
  }
  std::fill_n(to + n, kReach + kLanesOf<uint16_t>, kBeyond);
}

// Long vectors that cross lines of a cache take twice as long to load.
using DNear = hn::CappedTag<uint16_t, 16>;

// Up to 2^20 the roots, in single precision, are right to a thirtieth of their distance from the
// next half.
template <class D>
HWY_INLINE void StoreRoundedRoots(D d, hn::Vec<D> squares, KyBW16* out) {
  const hn::RebindToFloat<D> df;
  const auto root = hn::Sqrt(hn::ConvertTo(df, squares));
  const auto rounded = hn::ConvertTo(d, hn::Add(root, hn::Set(df, 0.5f)));
  const hn::Rebind<uint16_t, D> narrow;
  hn::StoreU(hn::DemoteTo(narrow, rounded), narrow, out);
}

// What becomes of squares that fit 16 bits: they are stored, or their rounded roots.
template <class D>
HWY_INLINE void Finish(D d, hn::Vec<D> squares, uint32_t* to) {
  constexpr ptrdiff_t kLanes = hn::MaxLanes(d);
  HWY_ALIGN uint16_t results[kLanes];
  hn::Store(squares, d, results);
  const hn::CappedTag<uint32_t, kLanes> wide;
  for (ptrdiff_t i = 0; i < kLanes; i += hn::MaxLanes(wide))
    hn::StoreU(LoadLanes(wide, results + i), wide, to + i);
}
// Of even and odd places by themselves. Added to 2^23, roots are rounded, and end the number.
template <class D>
HWY_INLINE void Finish(D d, hn::Vec<D> squares, KyBW16* to) {
  if constexpr (hn::MaxLanes(d) == 1) {
    const hn::Rebind<int32_t, D> wide;
    StoreRoundedRoots(wide, hn::PromoteTo(wide, squares), to);
  } else {
    const hn::Repartition<int32_t, D> wide;
    const hn::Repartition<uint32_t, D> bits;
    const hn::RebindToFloat<decltype(wide)> df;
    const auto rootOf = [=](auto v) HWY_ATTR {
      const auto root = hn::Sqrt(hn::ConvertTo(df, hn::BitCast(wide, v)));
      return hn::BitCast(bits, hn::Add(root, hn::Set(df, 8388608.0f)));
    };
    const auto pairs = hn::BitCast(bits, squares);
    const auto even = rootOf(hn::And(pairs, hn::Set(bits, 0xFFFF)));
    const auto odd = hn::ShiftLeft<16>(rootOf(hn::ShiftRight<16>(pairs)));
    hn::StoreU(hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, even)), d, to);
  }
}

// The least of k^2 + down2[x + k] for kCount vectors of places from x on; false where it may lie
// beyond reach. Columns k away are of no use once k^2 is not below the least that has been found.
template <int kCount, class To>
HWY_INLINE bool NearestOf(To* to, const uint16_t* down2) {
  const DNear d;
  constexpr ptrdiff_t kLanes = hn::MaxLanes(d), kAtOnce = 4;
  static_assert(kReach % kAtOnce == 0);
  hn::Vec<DNear> least[kCount];
  for (int j = 0; j < kCount; ++j) least[j] = hn::LoadU(d, down2 + j * kLanes);
  auto square = hn::Set(d, 1), more = hn::Set(d, 3);  // k^2, and what makes it the next one
  const auto isDone = [&]() HWY_ATTR {
    auto most = least[0];
    for (int j = 1; j < kCount; ++j) most = hn::Max(most, least[j]);
    return hn::AllTrue(d, hn::Eq(hn::Max(most, square), square));
  };
  if constexpr (sizeof(To) == sizeof(uint16_t))  // 0 and 1 are their own roots
    if (isDone()) {
      for (int j = 0; j < kCount; ++j) hn::StoreU(least[j], d, to + j * kLanes);
      return true;
    }
  for (ptrdiff_t k = 1; !isDone(); k += kAtOnce) {
    if (k > kReach) return false;
    for (ptrdiff_t i = k; i < k + kAtOnce; ++i) {
      for (int j = 0; j < kCount; ++j) {
        const uint16_t* const at = down2 + j * kLanes;
        const auto both = hn::Min(hn::LoadU(d, at - i), hn::LoadU(d, at + i));
        least[j] = hn::Min(least[j], hn::Add(both, square));
      }
      square = hn::Add(square, more);
      more = hn::Add(more, hn::Set(d, 2));
    }
  }
  for (int j = 0; j < kCount; ++j) Finish(d, least[j], to + j * kLanes);
  return true;
}
template <int kCount, class To>
HWY_INLINE bool NearestAlong(To* to, const uint16_t* down2, ptrdiff_t n) {
  constexpr ptrdiff_t kPlaces = kCount * hn::MaxLanes(DNear());
  for (ptrdiff_t next = 0; next < n; next += kPlaces) {
    const ptrdiff_t x = std::min(next, n - kPlaces);
    if (!NearestOf<kCount>(to + x, down2 + x)) return false;
  }
  return true;
}
template <class To>
bool Nearest(To* to, const uint16_t* down2, ptrdiff_t n) {
  constexpr ptrdiff_t kLanes = hn::MaxLanes(DNear());
  if (n >= 2 * kLanes) return NearestAlong<2>(to, down2, n);
  return n >= kLanes && NearestAlong<1>(to, down2, n);
}

void RoundRoots(KyBW16* out, const uint32_t* squares, ptrdiff_t n) {
  const hn::ScalableTag<int32_t> d;
  for (ptrdiff_t x = 0; x < n; x += kLanesOf<int32_t>) {
    const auto square = hn::BitCast(d, hn::LoadU(hn::ScalableTag<uint32_t>(), squares + x));
    // What lies beyond the end of the row may be negative.
    StoreRoundedRoots(d, hn::Max(square, hn::Zero(d)), out + x);
  }
}

// min(65535, floor(product + 1/2)). Returns what the product is above its floor.
template <class DF>
HWY_INLINE hn::Vec<DF> StoreRounded(DF df, hn::Vec<DF> product, KyBW16* out) {
  const hn::Rebind<int32_t, DF> d;
  const hn::Rebind<uint16_t, DF> narrow;
  product = hn::Min(product, hn::Set(df, 65535.0));
  const auto floor = hn::Floor(product), rest = hn::Sub(product, floor);
  const auto isUp = hn::Ge(rest, hn::Set(df, 0.5));
  const auto rounded = hn::Add(floor, hn::IfThenElseZero(isUp, hn::Set(df, 1.0)));
  hn::StoreU(hn::DemoteTo(narrow, hn::DemoteTo(d, rounded)), narrow, out);
  return rest;
}

ptrdiff_t Root(KyBW16* out, const uint32_t* squares, ptrdiff_t n, float scale, int32_t* unsure) {
  const hn::ScalableTag<double> df;
  const hn::Rebind<int32_t, decltype(df)> d;
  constexpr ptrdiff_t kLanes = kLanesOf<double>;
  if (scale == 1 && *std::max_element(squares, squares + n) < 1u << 20) {
    RoundRoots(out, squares, n);
    return 0;
  }
  ptrdiff_t count = 0;
  const auto half = hn::Set(df, 0.5);
  for (ptrdiff_t x = 0; x < n; x += kLanes) {
    const auto square =
        hn::BitCast(d, hn::LoadU(hn::Rebind<uint32_t, decltype(df)>(), squares + x));
    const auto root = hn::Sqrt(hn::PromoteTo(df, square));
    const auto rest = StoreRounded(df, hn::Mul(hn::Set(df, scale), root), out + x);
    const auto isNear = hn::Lt(hn::Abs(hn::Sub(rest, half)), hn::Set(df, 1e-9));
    const auto isExact = hn::Eq(root, hn::Floor(root));
    if (!hn::AllFalse(df, hn::AndNot(isExact, isNear)))
      for (ptrdiff_t i = x; i < std::min(x + kLanes, n); ++i)
        unsure[count++] = static_cast<int32_t>(i);
  }
  return count;
}

// A product of 24 and 16 bits is exact in double precision, and so are its floor and the rest.
void Scale(KyBW16* out, const uint16_t* row, ptrdiff_t n, float scale) {
  const hn::ScalableTag<double> df;
  for (ptrdiff_t x = 0; x < n; x += kLanesOf<double>) {
    const auto distance = LoadLanes(hn::Rebind<int32_t, decltype(df)>(), row + x);
    StoreRounded(df, hn::Mul(hn::Set(df, scale), hn::PromoteTo(df, distance)), out + x);
  }
}

template <class T>
constexpr DistanceKernelsOf<T> kKernelsOf = {{&Down<0, T>, &Down<1, T>, &Down<2, T>},
                                             {&Up<0, T>, &Up<1, T>, &Up<2, T>}};
constexpr DistanceKernels kKernels = {kKernelsOf<uint16_t>,
                                      kKernelsOf<uint32_t>,
                                      &SquareOf,
                                      &Nearest<uint32_t>,
                                      &Nearest<KyBW16>,
                                      &Root,
                                      &Scale};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(DistanceKernels)
