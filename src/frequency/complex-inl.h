// Complex numbers as lanes, for the loops of spans-inl.h, which this header includes last because
// they have to know them. Included by row files like lanes-inl.h.
#if defined(KY_FREQUENCY_COMPLEX_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FREQUENCY_COMPLEX_INL_H_
#undef KY_FREQUENCY_COMPLEX_INL_H_
#else
#define KY_FREQUENCY_COMPLEX_INL_H_
#endif

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// Real and imaginary parts.
template <class V>
struct Numbers {
  V re, im;
};
template <class D>
HWY_INLINE Numbers<hn::Vec<D>> LoadLanes(D d, const KyComplex64* from) {
  Numbers<hn::Vec<D>> z;
  hn::LoadInterleaved2(d, &from->re, z.re, z.im);
  return z;
}
template <class V>
HWY_INLINE void StoreLanes(const Numbers<V>& z, KyComplex64* to) {
  hn::StoreInterleaved2(z.re, z.im, hn::DFromV<V>(), &to->re);
}
// Of n numbers, fewer than a vector has lanes. The rest is 0.
template <class D>
HWY_INLINE Numbers<hn::Vec<D>> LoadPart(D d, const KyComplex64* from, size_t n) {
  KyComplex64 numbers[hn::MaxLanes(d)] = {};
  for (size_t i = 0; i < n; ++i) numbers[i] = from[i];
  return LoadLanes(d, static_cast<const KyComplex64*>(numbers));
}
template <class D>
HWY_INLINE void StorePart(D d, const Numbers<hn::Vec<D>>& z, KyComplex64* to, size_t n) {
  KyComplex64 numbers[hn::MaxLanes(d)];
  StoreLanes(z, numbers);
  for (size_t i = 0; i < n; ++i) to[i] = numbers[i];
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#include "foundation/spans-inl.h"

#endif  // per-target include guard
