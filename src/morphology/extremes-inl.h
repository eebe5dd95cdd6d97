// The two extremes as operations, on vectors of pixels. Included by row files like lanes-inl.h.
#if defined(KY_MORPHOLOGY_EXTREMES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_MORPHOLOGY_EXTREMES_INL_H_
#undef KY_MORPHOLOGY_EXTREMES_INL_H_
#else
#define KY_MORPHOLOGY_EXTREMES_INL_H_
#endif

#include <algorithm>
#include <cstddef>

#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

struct Maximum {
  static constexpr KyBW8 kNeutral = 0;
  static KyBW8 OfTwo(KyBW8 a, KyBW8 b) { return std::max(a, b); }
  template <class V>
  HWY_INLINE V operator()(V a, V b) const {
    return hn::Max(a, b);
  }
};
struct Minimum {
  static constexpr KyBW8 kNeutral = 255;
  static KyBW8 OfTwo(KyBW8 a, KyBW8 b) { return std::min(a, b); }
  template <class V>
  HWY_INLINE V operator()(V a, V b) const {
    return hn::Min(a, b);
  }
};

using D = hn::ScalableTag<uint8_t>;
using V = hn::Vec<D>;
HWY_INLINE ptrdiff_t Lanes() { return static_cast<ptrdiff_t>(hn::Lanes(D())); }

template <class Op, class Vector, class... More>
HWY_INLINE Vector ExtremeOf(Vector v, More... more) {
  ((v = Op()(v, more)), ...);
  return v;
}

// The extreme of the elements at some distances from one place.
template <class Op, class... Distance>
HWY_INLINE V ExtremeAt(const KyBW8* at, Distance... distance) {
  return ExtremeOf<Op>(hn::LoadU(D(), at + distance)...);
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
