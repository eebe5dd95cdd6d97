#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/join_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/join_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/prefetch-inl.h"
#include "morphology/extremes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// The extremes of a strip of some vectors. The rows are kCount, or any number where that is 0.
template <class Op, int kVectors, int kCount>
HWY_INLINE void JoinStrip(V (&extreme)[kVectors], const KyBW8* const* rows, ptrdiff_t count,
                          ptrdiff_t x) {
  const D d;
  for (int k = 0; k < kVectors; ++k) extreme[k] = hn::LoadU(d, rows[0] + x + k * Lanes());
  for (ptrdiff_t i = 1; i < (kCount > 0 ? kCount : count); ++i) {
    const KyBW8* const row = rows[i] + x;
    for (int k = 0; k < kVectors; ++k)
      extreme[k] = Op()(extreme[k], hn::LoadU(d, row + k * Lanes()));
  }
}

// The last vector may overlap the one before it, and is made before that becomes the source of
// anything.
template <class Op, int kVectors, int kCount>
HWY_INLINE void JoinCount(KyBW8* out, ptrdiff_t n, const KyBW8* const* rows, ptrdiff_t count) {
  const D d;
  const ptrdiff_t end = std::max<ptrdiff_t>(n - Lanes(), 0);
  V last[1], extreme[kVectors];
  JoinStrip<Op, 1, 0>(last, rows, count, end);
  if (n < Lanes()) return StorePart(d, last[0], out, static_cast<size_t>(n));
  ptrdiff_t x = 0;
  for (; x + kVectors * Lanes() <= n; x += kVectors * Lanes()) {
    JoinStrip<Op, kVectors, kCount>(extreme, rows, count, x);
    for (int k = 0; k < kVectors; ++k) {
      if (k * Lanes() % 64 == 0) PrefetchAhead<64>(out + x, (kVectors + k) * Lanes());
      hn::StoreU(extreme[k], d, out + x + k * Lanes());
    }
  }
  for (; x < end; x += Lanes()) {
    V next[1];
    JoinStrip<Op, 1, 0>(next, rows, count, x);
    hn::StoreU(next[0], d, out + x);
  }
  hn::StoreU(last[0], d, out + end);
}

template <class Op>
void Join(KyBW8* out, ptrdiff_t n, const KyBW8* const* few, ptrdiff_t count) {
  // Copies, which no store to `out` can change, stay in registers.
  const KyBW8* rows[5];
  if (count <= 5) std::copy_n(few, count, rows);
  switch (count) {
    case 2: return JoinCount<Op, 4, 2>(out, n, rows, count);
    case 3: return JoinCount<Op, 4, 3>(out, n, rows, count);
    case 4: return JoinCount<Op, 4, 4>(out, n, rows, count);
    case 5: return JoinCount<Op, 4, 5>(out, n, rows, count);
    default: return JoinCount<Op, 8, 0>(out, n, few, count);
  }
}

constexpr JoinKernels kKernels = {&Join<Maximum>, &Join<Minimum>};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(JoinKernels)
