// Colours as rows of their components, for formulas that need no component by itself: vectors need
// not be taken apart and joined again. Included by row files like lanes-inl.h.
#if defined(KY_FOUNDATION_COMPONENTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_COMPONENTS_INL_H_
#undef KY_FOUNDATION_COMPONENTS_INL_H_
#else
#define KY_FOUNDATION_COMPONENTS_INL_H_
#endif

#include <cstddef>

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// What each component takes with it, as a source of MapSpan: three of them, for vectors that begin
// with the first, the second and the third component.
template <class At>
struct ComponentsFrom {
  const At* of;
  size_t place = 0;

  friend HWY_INLINE ComponentsFrom operator+(ComponentsFrom from, size_t i) {
    return {from.of, from.place + i};
  }
  template <class D>
  friend HWY_INLINE const At* LoadLanes(D, const ComponentsFrom& from) {
    return from.of + from.place % 3;
  }
  template <class D>
  friend HWY_INLINE const At* LoadPart(D d, const ComponentsFrom& from, size_t) {
    return LoadLanes(d, from);
  }
};

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
