#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/planes_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/planes_rows.h"

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

template <int kComponent, class V>
HWY_INLINE V& Get(Planes3<V>& v) {
  return kComponent == 0 ? v.c0 : kComponent == 1 ? v.c1 : v.c2;
}
template <int kComponent>
struct TakeOp {
  using Lane = uint8_t;
  template <class D, class V>
  HWY_INLINE V operator()(D, Planes3<V> v) const {
    return Get<kComponent>(v);
  }
};
template <int kComponent>
struct PutOp {
  using Lane = uint8_t;
  static constexpr bool kKeeps = true;
  template <class D, class V>
  HWY_INLINE Planes3<V> operator()(D, Planes3<V> kept, V plane) const {
    Get<kComponent>(kept) = plane;
    return kept;
  }
};

void Split(KyBW8* planes, size_t pitch, size_t n, const KyC24* in) {
  MapSpan(SplitOp(), Several{planes, planes + pitch, planes + 2 * pitch}, n, in);
}
void Join(KyC24* out, size_t n, const KyBW8* planes, size_t pitch) {
  MapSpan(JoinOp(), out, n, planes, planes + pitch, planes + 2 * pitch);
}

template <int kComponent>
void Take(KyBW8* plane, size_t n, const KyC24* in) {
  MapSpan(TakeOp<kComponent>(), plane, n, in);
}
template <int kComponent>
void Put(KyC24* out, size_t n, const KyBW8* plane) {
  MapSpan(PutOp<kComponent>(), out, n, plane);
}

constexpr PlaneKernels kKernels = {
    &Split, &Join, {&Take<0>, &Take<1>, &Take<2>}, {&Put<0>, &Put<1>, &Put<2>}};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(PlaneKernels)
