#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/square_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/square_rows.h"

#include "foundation/dispatch.h"
#include "foundation/window-inl.h"
#include "morphology/extremes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

template <class Op>
struct Square : WindowOp<1> {
  using Lane = uint8_t;
  template <class At>
  HWY_INLINE V Row(D, const At& at) const {
    return ExtremeOf<Op>(at(-1), at(0), at(1));
  }
  HWY_INLINE V operator()(D, V a, V b, V c) const { return ExtremeOf<Op>(a, b, c); }
};

// The largest less the smallest.
struct Range : WindowOp<1> {
  using Lane = uint8_t;
  struct Extremes {
    V largest, smallest;
  };
  template <class At>
  HWY_INLINE Extremes Row(D, const At& at) const {
    const V left = at(-1), here = at(0), right = at(1);
    return {ExtremeOf<Maximum>(left, here, right), ExtremeOf<Minimum>(left, here, right)};
  }
  HWY_INLINE V operator()(D, const Extremes& a, const Extremes& b, const Extremes& c) const {
    return hn::Sub(ExtremeOf<Maximum>(a.largest, b.largest, c.largest),
                   ExtremeOf<Minimum>(a.smallest, b.smallest, c.smallest));
  }
};

constexpr SquareKernels kKernels = {RolledKernels<Square<Maximum>>(),
                                    RolledKernels<Square<Minimum>>(), RolledKernels<Range>()};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SquareKernels)
