#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/planes_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/planes_rows.h"

#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct SplitOp {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE Several<V, V, V> operator()(D, const Planes3<V>& v) const {
    return {v.c0, {v.c1, {v.c2}}};
  }
};
struct JoinOp {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE Planes3<V> operator()(D, V c0, V c1, V c2) const {
    return {c0, c1, c2};
  }
};

void Split(KyBW8* planes, size_t pitch, size_t n, const KyC24* in) {
  MapSpan(SplitOp(), Several{planes, planes + pitch, planes + 2 * pitch}, n, in);
}
void Join(KyC24* out, size_t n, const KyBW8* planes, size_t pitch) {
  MapSpan(JoinOp(), out, n, planes, planes + pitch, planes + 2 * pitch);
}

constexpr PlaneKernels kKernels = {&Split, &Join};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(PlaneKernels)
