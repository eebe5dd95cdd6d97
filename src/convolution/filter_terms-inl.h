// What the formulas of several filters have in common. Included by row files like lanes-inl.h.
#if defined(KY_CONVOLUTION_FILTER_TERMS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVOLUTION_FILTER_TERMS_INL_H_
#undef KY_CONVOLUTION_FILTER_TERMS_INL_H_
#else
#define KY_CONVOLUTION_FILTER_TERMS_INL_H_
#endif

#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

HWY_INLINE V16 SumOf3(V16 a, V16 b, V16 c) { return hn::Add(hn::Add(a, c), b); }
// The magnitude, limited to 255.
HWY_INLINE V16 Magnitude(D16 d, V16 v) { return hn::Min(hn::Abs(v), hn::Set(d, 255)); }

// The sum under binomial weights, as sums of neighbours of sums of neighbours: those that the next
// row needs too are computed once.
template <class V>
HWY_INLINE V BinomialSum(V a, V b, V c) {
  return hn::Add(hn::Add(a, b), hn::Add(b, c));
}
template <class V>
HWY_INLINE V BinomialSum(V a, V b, V c, V d, V e) {
  const V ab = hn::Add(a, b), bc = hn::Add(b, c), cd = hn::Add(c, d), de = hn::Add(d, e);
  return BinomialSum(hn::Add(ab, bc), hn::Add(bc, cd), hn::Add(cd, de));
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
