#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/median_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/median_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

using V8 = hn::Vec<D8>;

// Networks are written whole. What nobody takes of their results is not computed.
HWY_INLINE void Sort2(V8& a, V8& b) {
  const V8 least = hn::Min(a, b);
  b = hn::Max(a, b);
  a = least;
}
HWY_INLINE void Sort3(V8& a, V8& b, V8& c) {
  Sort2(a, b);
  Sort2(b, c);
  Sort2(a, b);
}
HWY_INLINE V8 Median3(V8 a, V8 b, V8 c) {
  return hn::Max(hn::Min(a, b), hn::Min(hn::Max(a, b), c));
}
HWY_INLINE void Sort5(V8& a, V8& b, V8& c, V8& d, V8& e) {
  Sort2(a, b);
  Sort2(d, e);
  Sort2(c, e);
  Sort2(c, d);
  Sort2(b, e);
  Sort2(a, d);
  Sort2(a, c);
  Sort2(b, d);
  Sort2(b, c);
}

// Puts one more, the first, into a sorted column.
template <int kSize>
HWY_INLINE void Insert(V8 (&v)[kSize]) {
  for (int i = 0; i + 1 < kSize; ++i) Sort2(v[i], v[i + 1]);
}

// The columns of two neighbouring rows of windows, whose rows are `row` and one more, each sorted.
// What the two have in common is sorted once.
HWY_INLINE void SortColumns(const V8 (&row)[4], V8 (&upper)[3], V8 (&lower)[3]) {
  V8 a = row[1], b = row[2];
  Sort2(a, b);
  upper[0] = row[0], lower[0] = row[3];
  upper[1] = lower[1] = a;
  upper[2] = lower[2] = b;
  Insert(upper);
  Insert(lower);
}
HWY_INLINE void SortColumns(const V8 (&row)[6], V8 (&upper)[5], V8 (&lower)[5]) {
  V8 a = row[1], b = row[2], c = row[3], d = row[4];
  Sort2(a, b);
  Sort2(c, d);
  Sort2(a, c);
  Sort2(b, d);
  Sort2(b, c);
  upper[0] = row[0], lower[0] = row[5];
  upper[1] = lower[1] = a;
  upper[2] = lower[2] = b;
  upper[3] = lower[3] = c;
  upper[4] = lower[4] = d;
  Insert(upper);
  Insert(lower);
}

// The median of sorted columns: at(i, k) is the i-th smallest of column k.
template <class At>
HWY_INLINE V8 MedianOfColumns(std::integral_constant<int, 1>, const At& at) {
  const V8 low = hn::Max(hn::Max(at(0, 0), at(0, 1)), at(0, 2));
  const V8 high = hn::Min(hn::Min(at(2, 0), at(2, 1)), at(2, 2));
  return Median3(low, Median3(at(1, 0), at(1, 1), at(1, 2)), high);
}
// Once the i-th smallest of all columns are sorted too, 6 of the 25 are too small for the median
// and 6 too large. The median of the other 13 is found by dropping the least and the greatest of
// so many that neither can be it, and taking in another one each time.
template <class At>
HWY_INLINE V8 MedianOfColumns(std::integral_constant<int, 2>, const At& at) {
  V8 v[5][5];
  for (int i = 0; i < 5; ++i) {
    for (int k = 0; k < 5; ++k) v[i][k] = at(i, k);
    Sort5(v[i][0], v[i][1], v[i][2], v[i][3], v[i][4]);
  }
  V8 left[13] = {v[0][3], v[1][2], v[2][1], v[3][0], v[4][1], v[3][2], v[2][3],
                 v[1][4], v[0][4], v[4][0], v[1][3], v[3][1], v[2][2]};
  for (int n = 8, first = 0; n > 2; --n, ++first) {
    V8* const some = left + first;  // the least goes first, the greatest last
    for (int i = 0, k = n - 1; i < k; ++i, --k) Sort2(some[i], some[k]);
    for (int i = 1; i < (n + 1) / 2; ++i) Sort2(some[0], some[i]);
    for (int i = n / 2; i < n - 1; ++i) Sort2(some[i], some[n - 1]);
    // The greatest is dropped for the next one.
    if (n > 3) some[n - 1] = left[8 + (8 - n)];
    if (n == 3) return some[1];
  }
  return left[0];
}

// Results of one or two rows, `rows` being the first of their windows. A chunk of columns is sorted
// first, so that neighbours share the work.
template <int kRadius, int kStep>
HWY_INLINE void MedianOfRows(Rows<uint8_t> out, const uint8_t* const* rows) {
  constexpr int kSize = 2 * kRadius + 1;
  constexpr ptrdiff_t kReach = ptrdiff_t{kRadius} * kStep, kChunk = 512;
  constexpr ptrdiff_t kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D8()));
  static_assert(kChunk % kLanes == 0);
  const D8 d;
  HWY_ALIGN uint8_t columns[2][kSize][kChunk + 2 * kReach + kLanes];
  const bool isPair = out.height > 1;
  for (ptrdiff_t first = 0; first < out.width; first += kChunk) {
    const ptrdiff_t n = std::min(kChunk, out.width - first), end = n + 2 * kReach;
    for (ptrdiff_t x = 0; x < end; x += kLanes) {
      const ptrdiff_t i = std::min(x, end - kLanes);  // no more is readable
      V8 row[kSize + 1], upper[kSize], lower[kSize];
      for (int k = 0; k <= kSize; ++k)
        row[k] = hn::LoadU(d, rows[isPair ? k : std::min(k, kSize - 1)] + first - kReach + i);
      SortColumns(row, upper, lower);
      for (int k = 0; k < kSize; ++k) {
        hn::StoreU(upper[k], d, columns[0][k] + i);
        hn::StoreU(lower[k], d, columns[1][k] + i);
      }
    }
    for (int y = 0; y < (isPair ? 2 : 1); ++y) {
      uint8_t* const to = out.Row(y) + first;
      for (ptrdiff_t x = 0; x < n; x += kLanes) {
        const auto at = [&](int i, int k)
                            HWY_ATTR { return hn::LoadU(d, columns[y][i] + x + k * kStep); };
        hn::StoreU(MedianOfColumns(std::integral_constant<int, kRadius>(), at), d, to + x);
      }
    }
  }
}

template <int kRadius, int kStep>
void MedianRun(Rows<uint8_t> out, const uint8_t* const* rows, bool) {
  for (; out.height > 0; out.height -= 2, rows += 2, out.first = out.Row(2))
    MedianOfRows<kRadius, kStep>(out, rows);
}

template <int kRadius>
constexpr MedianKernels::OfRadius kMedians = {
    {kRadius, hn::MaxLanes(D8()), &MedianRun<kRadius, 1>, 1},
    {kRadius, hn::MaxLanes(D8()), &MedianRun<kRadius, 3>, 3},
};
constexpr MedianKernels kKernels = {kMedians<1>, kMedians<2>};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(MedianKernels)
