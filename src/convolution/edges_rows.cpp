#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/edges_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/filter_terms-inl.h"
#include "convolution/filters_rows.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Weights 1, kMiddle, 1.
template <int kMiddle>
HWY_INLINE V16 Weigh(V16 a, V16 b, V16 c) {
  return kMiddle == 2 ? BinomialSum(a, b, c) : SumOf3(a, b, c);
}

// Sobel's gradients with a middle of 2, Prewitt's with 1.
template <int kMiddle>
struct SmoothX : WindowOp<1> {
  HWY_INLINE V16 Row(D16, const V16* at) const { return hn::Sub(at[1], at[-1]); }
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c) const {
    return Magnitude(d, Weigh<kMiddle>(a, b, c));
  }
};
template <int kMiddle>
struct SmoothY : SymmetricRow<kMiddle, 1> {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16, V16 c) const { return Magnitude(d, hn::Sub(c, a)); }
};
template <int kMiddle>
struct Modulus : LongWindowOp<1> {
  struct Part {
    V16 difference, sum;
  };
  HWY_INLINE Part Row(D16, const V16* at) const {
    return {hn::Sub(at[1], at[-1]), Weigh<kMiddle>(at[-1], at[0], at[1])};
  }
  HWY_INLINE V16 operator()(D16 d, const Part& a, const Part& b, const Part& c) const {
    const V16 x = Weigh<kMiddle>(a.difference, b.difference, c.difference);
    const V16 y = hn::Sub(c.sum, a.sum);
    return hn::Min(hn::Add(hn::Abs(x), hn::Abs(y)), hn::Set(d, 255));
  }
};

// Differences of two pixels stay within 8 bits.
template <class V>
HWY_INLINE V AbsoluteDifference(V a, V b) {
  return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
}
struct DifferenceX : WindowOp<1> {
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    return AbsoluteDifference(at(1, 0), at(-1, 0));
  }
};
struct DifferenceY : WindowOp<1> {
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    return AbsoluteDifference(at(0, -1), at(0, 1));
  }
};
struct DifferencesXAndY : WindowOp<1> {
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D d, const At& at) const {
    return hn::SaturatedAdd(DifferenceX()(d, at), DifferenceY()(d, at));
  }
};
// The two diagonals of a pixel, its right and its lower neighbour.
struct Roberts : WindowOp<1> {
  template <class D, class At>
  HWY_INLINE hn::Vec<D> operator()(D, const At& at) const {
    return hn::SaturatedAdd(AbsoluteDifference(at(0, 0), at(1, 1)),
                            AbsoluteDifference(at(1, 0), at(0, 1)));
  }
};

constexpr EdgeKernels kKernels = {
    .sobelX = RolledKernels<SmoothX<2>>(),
    .sobelY = RolledKernels<SmoothY<2>>(),
    .sobel = RolledKernels<Modulus<2>>(),
    .prewittX = RolledKernels<SmoothX<1>>(),
    .prewittY = RolledKernels<SmoothY<1>>(),
    .prewitt = RolledKernels<Modulus<1>>(),
    .gradientX = MappedKernels<DifferenceX>(),
    .gradientY = MappedKernels<DifferenceY>(),
    .gradient = MappedKernels<DifferencesXAndY>(),
    .roberts = MappedKernels<Roberts>(),
};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(EdgeKernels)
