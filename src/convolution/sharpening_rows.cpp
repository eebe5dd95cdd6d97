#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/sharpening_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/filter_terms-inl.h"
#include "convolution/filters_rows.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// |kCentre * centre - the 4 neighbours at its edges|
template <int kCentre>
struct Cross : WindowOp<1> {
  struct Part {
    V16 middle, own;
  };
  HWY_INLINE Part Row(D16 d, const V16* at) const {
    return {at[0], hn::Sub(hn::Mul(at[0], hn::Set(d, kCentre)), hn::Add(at[-1], at[1]))};
  }
  HWY_INLINE V16 operator()(D16 d, const Part& a, const Part& b, const Part& c) const {
    return Magnitude(d, hn::Sub(b.own, hn::Add(a.middle, c.middle)));
  }
};

// kCentre * centre - the 8 neighbours, its magnitude or its positive part.
template <int kCentre, bool kMagnitude>
struct Square : LongWindowOp<1> {
  struct Part {
    V16 all, own;
  };
  HWY_INLINE Part Row(D16 d, const V16* at) const {
    const V16 ends = hn::Add(at[-1], at[1]);
    return {hn::Add(ends, at[0]), hn::Sub(hn::Mul(at[0], hn::Set(d, kCentre)), ends)};
  }
  HWY_INLINE V16 operator()(D16 d, const Part& a, const Part& b, const Part& c) const {
    const V16 response = hn::Sub(b.own, hn::Add(a.all, c.all));
    if (kMagnitude) return Magnitude(d, response);
    return hn::Min(hn::Max(response, hn::Zero(d)), hn::Set(d, 255));
  }
};

// min(255, |2 centre - two opposite neighbours|), the neighbours (kRight, kDown) away. What the
// centre exceeds its neighbours by and what it falls short of them each add up with saturation: one
// of the two is 0, unless neither saturates.
template <int kRight, int kDown>
struct SecondDifference : WindowOp<1> {
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    const auto centre = at(0, 0), a = at(-kRight, -kDown), b = at(kRight, kDown);
    const auto above = hn::SaturatedAdd(hn::SaturatedSub(centre, a), hn::SaturatedSub(centre, b));
    const auto below = hn::SaturatedAdd(hn::SaturatedSub(a, centre), hn::SaturatedSub(b, centre));
    return hn::Or(hn::SaturatedSub(above, below), hn::SaturatedSub(below, above));
  }
};

constexpr SharpeningKernels kKernels = {
    .highpass1 = RolledKernels<Cross<5>>(),
    .highpass2 = RolledKernels<Square<9, false>>(),
    .highpass2AtBorder = RolledKernels<Square<9, true>>(),
    .laplacian4 = RolledKernels<Cross<4>>(),
    .laplacian8 = RolledKernels<Square<8, true>>(),
    .laplacianX = MappedKernels<SecondDifference<1, 0>>(),
    .laplacianY = MappedKernels<SecondDifference<0, 1>>(),
};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SharpeningKernels)
