// Elements in memory as lanes of a vector, and back. Included by row files after foreach_target.h
// and compiled once per instruction set, like every header that ends in -inl.h.
#if defined(KY_FOUNDATION_LANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_LANES_INL_H_
#undef KY_FOUNDATION_LANES_INL_H_
#else
#define KY_FOUNDATION_LANES_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "foundation/parts-inl.h"
#include "foundation/planes-inl.h"
#include "ky/pixels.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Elements in memory to lanes of D, which may be wider, and back: wider lanes, which must be
// integers, are limited to what an element can hold. Unsigned lanes take one instruction more than
// signed ones: a formula whose unsigned results fit may return them AsSigned. (Named apart from
// Highway's Load and Store, which want aligned memory and would be found by argument-dependent
// lookup.)
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadLanes(D d, const T* from) {
  if constexpr (sizeof(T) == sizeof(hn::TFromD<D>)) {
    return hn::LoadU(d, from);
  } else {
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<T, D>(), from));
  }
}
template <class V>
HWY_INLINE auto AsSigned(V v) {
  return hn::BitCast(hn::RebindToSigned<hn::DFromV<V>>(), v);
}
// Lanes as a vector of elements.
template <class T, class V>
HWY_INLINE auto ToElements(V v) {
  const hn::DFromV<V> d;
  using Lane = hn::TFromV<V>;
  if constexpr (sizeof(T) == sizeof(Lane)) {
    return hn::BitCast(hn::Rebind<T, decltype(d)>(), v);
  } else {
    static_assert(!hwy::IsFloat<Lane>(), "the formula converts floats");
    // Highway 1.0.3 narrows 32-bit lanes above 32767 to 0 as unsigned bytes on AVX2 and AVX-512.
    constexpr bool kToBytes = sizeof(Lane) == 4 && sizeof(T) == 1 && !hwy::IsSigned<T>();
    using Most = hwy::MakeSigned<std::conditional_t<kToBytes, uint16_t, Lane>>;
    if constexpr (!hwy::IsSigned<Lane>() || kToBytes)
      v = hn::Min(v, hn::Set(d, static_cast<Lane>(hwy::LimitsMax<Most>())));
    return hn::DemoteTo(hn::Rebind<T, decltype(d)>(), AsSigned(v));
  }
}
template <class V, class T>
HWY_INLINE void StoreLanes(V v, T* to) {
  const hn::Rebind<T, hn::DFromV<V>> d;
  hn::StoreU(ToElements<T>(v), d, to);
}

template <class D>
HWY_INLINE Planes3<hn::Vec<D>> LoadLanes(D d, const KyC24* from) {
  return LoadPlanes(d, from);
}
template <class V, class T>
HWY_INLINE void StoreLanes(const Planes3<V>& v, T* to) {
  static_assert(sizeof(T) == 3);
  StorePlanes(v, reinterpret_cast<uint8_t*>(to));
}
template <class V, class T>
HWY_INLINE void StoreLanes(const Planes4<V>& v, T* to) {
  static_assert(sizeof(T) == 4);
  StorePlanes(v, reinterpret_cast<uint8_t*>(to));
}
template <class V, class T>
HWY_INLINE void StoreLanes(const SamePlanes3<V>& v, T* to) {
  static_assert(sizeof(T) == 3);
  StorePlanes(v, reinterpret_cast<uint8_t*>(to));
}

// The first n of the elements that the lanes of D stand for, up to all; lanes without an element
// are 0. No byte after them is touched.
template <class D, class T>
HWY_INLINE auto LoadPart(D d, const T* from, size_t n) {
  if constexpr (sizeof(T) == sizeof(hn::TFromD<D>))
    return LoadFirst(d, from, n);
  else
    return hn::PromoteTo(d, LoadFirst(hn::Rebind<T, D>(), from, n));
}
template <class D>
HWY_INLINE Planes3<hn::Vec<D>> LoadPart(D d, const KyC24* from, size_t n) {
  HWY_ALIGN KyC24 all[hn::MaxLanes(D())];
  ReadPart<hn::MaxLanes(D())>(all, from, n);
  return LoadPlanes(d, static_cast<const KyC24*>(all));
}
template <class D, class V, class T>
HWY_INLINE void StorePart(D, const V& v, T* to, size_t n) {
  if constexpr (requires { typename V::PrivateT; }) {
    StoreFirst(hn::Rebind<T, hn::DFromV<V>>(), ToElements<T>(v), to, n);
  } else {
    HWY_ALIGN T all[hn::MaxLanes(D())];
    StoreLanes(v, all);
    WritePart<hn::MaxLanes(D())>(to, all, n);
  }
}

#undef KY_HAVE_MUL_ADD_BYTES
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
#define KY_HAVE_MUL_ADD_BYTES 1
// The products of 8-bit lanes with signed 8-bit weights, the two products of each pair of lanes
// added up. The sums must fit 16 bits.
template <class V>
HWY_INLINE auto MulAddBytes(V lanes, V weights) {
  using Sums = hn::Vec<hn::Repartition<int16_t, hn::DFromV<V>>>;
#if HWY_TARGET < HWY_AVX2
  if constexpr (sizeof(V) == 64) return Sums{_mm512_maddubs_epi16(lanes.raw, weights.raw)};
#endif
#if HWY_TARGET <= HWY_AVX2
  if constexpr (sizeof(V) == 32) return Sums{_mm256_maddubs_epi16(lanes.raw, weights.raw)};
#endif
  if constexpr (sizeof(V) == 16) return Sums{_mm_maddubs_epi16(lanes.raw, weights.raw)};
}
#else
#define KY_HAVE_MUL_ADD_BYTES 0
#endif

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
