// Exchange networks on vectors of pixels. Included by row files like lanes-inl.h.
#if defined(KY_MORPHOLOGY_EXCHANGES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_MORPHOLOGY_EXCHANGES_INL_H_
#undef KY_MORPHOLOGY_EXCHANGES_INL_H_
#else
#define KY_MORPHOLOGY_EXCHANGES_INL_H_
#endif

#include "foundation/window_lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

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
HWY_INLINE V8 Median3(V8 a, V8 b, V8 c) {
  return hn::Max(hn::Min(a, b), hn::Min(hn::Max(a, b), c));
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
