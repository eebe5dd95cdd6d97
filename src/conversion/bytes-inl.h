// Pixels as vectors of their bytes: one vector for each byte of a pixel. Included by row files like
// lanes-inl.h.
#if defined(KY_CONVERSION_BYTES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVERSION_BYTES_INL_H_
#undef KY_CONVERSION_BYTES_INL_H_
#else
#define KY_CONVERSION_BYTES_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

template <class V>
struct Planes1 {
  V c0;
};
template <class V>
struct Planes2 {
  V c0, c1;
};

// Words are little-endian.
template <class D, class T, class V = hn::Vec<D>>
HWY_INLINE auto LoadPlanes(D d, const T* row) {
  const auto* const from = reinterpret_cast<const uint8_t*>(row);
  if constexpr (sizeof(T) == 1) {
    return Planes1<V>{hn::LoadU(d, from)};
  } else if constexpr (sizeof(T) == 2) {
    Planes2<V> planes;
    hn::LoadInterleaved2(d, from, planes.c0, planes.c1);
    return planes;
  } else if constexpr (sizeof(T) == 3) {
    Planes3<V> planes;
    hn::LoadInterleaved3(d, from, planes.c0, planes.c1, planes.c2);
    return planes;
  } else {
    Planes4<V> planes;
    hn::LoadInterleaved4(d, from, planes.c0, planes.c1, planes.c2, planes.c3);
    return planes;
  }
}
template <class D, class V>
HWY_INLINE void StorePlanes(D d, const Planes1<V>& v, uint8_t* to) {
  hn::StoreU(v.c0, d, to);
}
template <class D, class V>
HWY_INLINE void StorePlanes(D d, const Planes2<V>& v, uint8_t* to) {
  hn::StoreInterleaved2(v.c0, v.c1, d, to);
}
template <class D, class V>
HWY_INLINE void StorePlanes(D d, const Planes3<V>& v, uint8_t* to) {
  hn::StoreInterleaved3(v.c0, v.c1, v.c2, d, to);
}
template <class D, class V>
HWY_INLINE void StorePlanes(D, const SamePlanes3<V>& v, uint8_t* to) {
  StoreLanes(v, reinterpret_cast<KyC24*>(to));
}
template <class D, class V>
HWY_INLINE void StorePlanes(D d, const Planes4<V>& v, uint8_t* to) {
  hn::StoreInterleaved4(v.c0, v.c1, v.c2, v.c3, d, to);
}

// Has a kernel make less than a block of kBlock pixels, by way of a whole one.
template <size_t kBlock, class B, class A>
void MakePart(void (*kernel)(B*, size_t, const A*), B* out, size_t n, const A* in) {
  A from[kBlock];
  B to[kBlock];
  const size_t count = std::min(n, kBlock);
  std::memset(static_cast<void*>(from), 0, sizeof from);
  std::memcpy(static_cast<void*>(from), in, count * sizeof(A));
  kernel(to, kBlock, from);
  std::memcpy(static_cast<void*>(out), to, count * sizeof(B));
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
