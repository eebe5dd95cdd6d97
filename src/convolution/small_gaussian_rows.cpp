#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/small_gaussian_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/gaussian_rows.h"
#include "foundation/dispatch.h"
#include "foundation/window-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// The weighted sum of a triple b0 b1 b2 is 32768 b1 + w (b0 - 2 b1 + b2), where w is the weight of
// its outer members.
//
// Along a row, (sum + 128) >> 8 is 128 b1 + (w (b0 - 2 b1 + b2) + 128) >> 8: products of 25 bits,
// of which a rounding multiplication of fixed-point numbers leaves those that count.
//
// Down the rows, (sum + 2^21) >> 22 is (b1 + 64 + (w (b0 - 2 b1 + b2) >> 15)) >> 7. The differences
// of neighbouring rows fit 16 bits, but not what is added up of them. Their products are therefore
// computed in two halves, and the halves subtracted with a borrow; the next row needs them too.
struct Gaussian3x3 : LongWindowOp<1> {
  ThreeTaps weights;

  HWY_INLINE explicit Gaussian3x3(const ThreeTaps& taps) : weights(taps) {}

  HWY_INLINE V16 Row(D16 d, const V16* at) const {
    const V16 centre = at[0];
    const V16 bend = hn::Sub(hn::Add(at[-1], at[1]), hn::Add(centre, centre));
    const V16 weight = hn::Set(d, static_cast<int16_t>(2 * weights.outerX));
    return hn::Add(hn::ShiftLeft<7>(centre), hn::MulFixedPoint15(hn::ShiftLeft<6>(bend), weight));
  }
  HWY_INLINE V16 operator()(D16 d, V16 above, V16 centre, V16 below) const {
    const hn::RebindToUnsigned<D16> du;
    const V16 weight = hn::Set(d, static_cast<int16_t>(2 * weights.outerY));
    const V16 first = hn::Sub(centre, above), second = hn::Sub(below, centre);
    const V16 high = hn::Sub(hn::MulHigh(second, weight), hn::MulHigh(first, weight));
    const auto low1 = hn::BitCast(du, hn::Mul(first, weight));
    const auto low2 = hn::BitCast(du, hn::Mul(second, weight));
    // -1 without a borrow.
    const V16 noBorrow = hn::VecFromMask(d, hn::RebindMask(d, hn::Eq(hn::Max(low1, low2), low2)));
    const V16 centred = hn::Add(centre, hn::Set(d, 63));
    return hn::ShiftRight<7>(hn::Sub(hn::Add(centred, high), noBorrow));
  }
};

template <int kStep>
void Run(const ThreeTaps& taps, Rows<KyBW8> out, const KyBW8* const* rows, const Layout& layout) {
  RollWindows<Gaussian3x3, kStep>(Gaussian3x3(taps), out, rows, layout);
}

constexpr SmallGaussianKernels kKernels = {hn::MaxLanes(D8()), kShortestRow<Gaussian3x3>, &Run<1>,
                                           &Run<3>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SmallGaussianKernels)
