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

// Every distance is at most one more than its neighbour's to the left, or to the right. Within 16
// bytes this is a scan by doubling, of 2^n - 1 less the distances, so that what is shifted in is
// far.
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
template <int kLanes, bool kToLeft, class D, class V>
HWY_INLINE V SpreadBy(D d, V v) {
  const V step = hn::Set(d, kLanes);
  V moved;
  if constexpr (kToLeft)
    moved = hn::ShiftRightLanes<kLanes>(d, v);
  else
    moved = hn::ShiftLeftLanes<kLanes>(d, v);
  return hn::Max(v, hn::Sub(hn::Max(moved, step), step));
}
template <bool kToLeft, class T>
HWY_INLINE void Spread(T* row, ptrdiff_t n) {
  constexpr int kLanes = 16 / sizeof(T);
  const hn::FixedTag<T, kLanes> d;
  T steps[kLanes];
  for (int i = 0; i < kLanes; ++i) steps[i] = static_cast<T>(kToLeft ? kLanes - i : i + 1);
  const auto ramp = hn::LoadU(d, steps);
  auto last = hn::Zero(d);
  const ptrdiff_t count = (n + kLanes - 1) / kLanes;
  for (ptrdiff_t i = 0; i < count; ++i) {
    T* const at = row + kLanes * (kToLeft ? count - 1 - i : i);
    auto v = hn::Not(hn::LoadU(d, at));
    v = SpreadBy<1, kToLeft>(d, v);
    v = SpreadBy<2, kToLeft>(d, v);
    if constexpr (kLanes > 4) v = SpreadBy<4, kToLeft>(d, v);
    v = hn::Max(v, hn::Sub(hn::Max(last, ramp), ramp));
    hn::StoreU(hn::Not(v), d, at);
    last = hn::Broadcast < kToLeft ? 0 : kLanes - 1 > (v);
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

// A product of 24 and 16 bits is exact in double precision, and so are its floor and the rest.
void Scale(KyBW16* out, const uint16_t* row, ptrdiff_t n, float scale) {
  const double factor = scale;
  for (ptrdiff_t x = 0; x < n; ++x) {
    const double product = std::min(65535.0, factor * row[x]);
    const int floor = static_cast<int>(product);
    out[x] = static_cast<KyBW16>(floor + (product - floor >= 0.5 ? 1 : 0));
  }
}

template <class T>
constexpr DistanceKernelsOf<T> kKernelsOf = {{&Down<0, T>, &Down<1, T>, &Down<2, T>},
                                             {&Up<0, T>, &Up<1, T>, &Up<2, T>}};
constexpr DistanceKernels kKernels = {kKernelsOf<uint16_t>, kKernelsOf<uint32_t>, &Scale};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(DistanceKernels)
