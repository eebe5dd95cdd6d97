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
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Elements in memory to lanes of D, which may be wider, and back; wider lanes, taken as signed, are
// clamped to what an element can hold. (Named apart from Highway's Load and Store, which want
// aligned memory and would be found by argument-dependent lookup.)
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadLanes(D d, const T* from) {
  if constexpr (sizeof(T) == sizeof(hn::TFromD<D>)) {
    return hn::LoadU(d, from);
  } else {
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<T, D>(), from));
  }
}
template <class D, class T>
HWY_INLINE void StoreLanes(D d, hn::Vec<D> v, T* to) {
  if constexpr (sizeof(T) == sizeof(hn::TFromD<D>)) {
    hn::StoreU(v, d, to);
  } else {
    const hn::Rebind<hwy::MakeSigned<hn::TFromD<D>>, D> wide;
    const hn::Rebind<T, D> narrow;
    hn::StoreU(hn::DemoteTo(narrow, hn::BitCast(wide, v)), narrow, to);
  }
}

// The first n elements alone; lanes without an element are 0. No byte behind them is touched.
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadPart(D d, const T* from, size_t n) {
  HWY_ALIGN T part[hn::MaxLanes(D())] = {};
  std::memcpy(part, from, n * sizeof(T));
  return LoadLanes(d, part);
}
template <class D, class T>
HWY_INLINE void StorePart(D d, hn::Vec<D> v, T* to, size_t n) {
  HWY_ALIGN T part[hn::MaxLanes(D())];
  StoreLanes(d, v, part);
  std::memcpy(to, part, n * sizeof(T));
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
