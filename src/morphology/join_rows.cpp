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

// A strip of some vectors, of which no more than `part` elements are stored when it is one vector.
template <class Op, int kVectors>
HWY_INLINE void JoinStrip(KyBW8* out, const KyBW8* const* rows, ptrdiff_t count, ptrdiff_t x,
                          ptrdiff_t part) {
  const D d;
  V extreme[kVectors];
  for (int k = 0; k < kVectors; ++k) extreme[k] = hn::LoadU(d, rows[0] + x + k * Lanes());
  for (ptrdiff_t i = 1; i < count; ++i) {
    const KyBW8* const row = rows[i] + x;
    for (int k = 0; k < kVectors; ++k)
      extreme[k] = Op()(extreme[k], hn::LoadU(d, row + k * Lanes()));
  }
  if (part < Lanes()) return StorePart(d, extreme[0], out + x, static_cast<size_t>(part));
  for (int k = 0; k < kVectors; ++k) hn::StoreU(extreme[k], d, out + x + k * Lanes());
}

template <class Op>
void Join(KyBW8* out, ptrdiff_t n, const KyBW8* const* rows, ptrdiff_t count) {
  constexpr int kMany = 8;
  ptrdiff_t x = 0;
  for (; x + kMany * Lanes() <= n; x += kMany * Lanes())
    JoinStrip<Op, kMany>(out, rows, count, x, Lanes());
  for (; x < n; x += Lanes()) JoinStrip<Op, 1>(out, rows, count, x, std::min(Lanes(), n - x));
}

constexpr JoinKernels kKernels = {&Join<Maximum>, &Join<Minimum>};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(JoinKernels)
