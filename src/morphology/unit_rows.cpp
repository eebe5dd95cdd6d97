#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/unit_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/unit_rows.h"

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
  HWY_INLINE V8 Row(D8, const At& at) const {
    return ExtremeOf<Op>(at(-1), at(0), at(1));
  }
  HWY_INLINE V8 operator()(D8, V8 above, V8 here, V8 below) const {
    return ExtremeOf<Op>(above, here, below);
  }
};

template <class Op>
struct Cross : WindowOp<1> {
  using Lane = uint8_t;
  struct Pixels {
    V8 one, three;  // the extreme of the three in a row
  };
  template <class At>
  HWY_INLINE Pixels Row(D8, const At& at) const {
    const V8 here = at(0);
    return {here, ExtremeOf<Op>(at(-1), here, at(1))};
  }
  HWY_INLINE V8 operator()(D8, const Pixels& above, const Pixels& here, const Pixels& below) const {
    return ExtremeOf<Op>(above.one, here.three, below.one);
  }
};

// The largest pixel of an element less the smallest.
template <template <class> class Element>
struct Range : WindowOp<1> {
  using Lane = uint8_t;
  template <class At>
  HWY_INLINE auto Row(D8 d, const At& at) const {
    return PairOf(Element<Maximum>().Row(d, at), Element<Minimum>().Row(d, at));
  }
  template <class Rows>
  HWY_INLINE V8 operator()(D8 d, const Rows& above, const Rows& here, const Rows& below) const {
    return hn::Sub(Element<Maximum>()(d, above.largest, here.largest, below.largest),
                   Element<Minimum>()(d, above.smallest, here.smallest, below.smallest));
  }

 private:
  template <class Largest, class Smallest>
  struct Pair {
    Largest largest;
    Smallest smallest;
  };
  template <class Largest, class Smallest>
  static HWY_INLINE Pair<Largest, Smallest> PairOf(Largest largest, Smallest smallest) {
    return {largest, smallest};
  }
};

template <template <class> class Element>
constexpr ExtremeWindows WindowsOf() {
  return {RolledKernels<Element<Maximum>>(), RolledKernels<Element<Minimum>>(),
          RolledKernels<Range<Element>>()};
}

constexpr UnitKernels kKernels = {WindowsOf<Square>(), WindowsOf<Cross>()};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(UnitKernels)
