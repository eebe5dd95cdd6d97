// Thresholds by averages. Included by row files like lanes-inl.h.
#if defined(KY_CONVOLUTION_LOCAL_THRESHOLDS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_CONVOLUTION_LOCAL_THRESHOLDS_INL_H_
#undef KY_CONVOLUTION_LOCAL_THRESHOLDS_INL_H_
#else
#define KY_CONVOLUTION_LOCAL_THRESHOLDS_INL_H_
#endif

#include "convolution/box_thresholds_rows.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

// Source and averages, or averages and source, as LocalThreshold::ComparesSource tells.
struct CompareOp {
  using Lane = uint8_t;
  Comparison comparison;

  template <class D, class V>
  HWY_INLINE V operator()(D d, V x, V y) const {
    const V least = hn::SaturatedAdd(y, hn::Set(d, comparison.offset));
    const auto isOther = hn::Eq(hn::SaturatedSub(x, least), hn::Zero(d));
    return hn::IfThenElse(isOther, hn::Set(d, comparison.other), hn::Set(d, comparison.above));
  }
};

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
