#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/smoothing_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/filter_terms-inl.h"
#include "convolution/filters_rows.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// (14 * sum) >> 7
struct Uniform : SymmetricRow<1, 1> {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c) const {
    return hn::MulHigh(SumOf3(a, b, c), hn::Set(d, 14 << 9));
  }
};
// (932067 * sum) >> 23, which for all sums but 0 is (sum - 1) / 9: the factor is just below 2^23 /
// 9. So is 7282 just above 2^16 / 9.
struct UniformPlain : SymmetricRow<1, 1> {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c) const {
    const V16 less1 = hn::Max(hn::Sub(SumOf3(a, b, c), hn::Set(d, 1)), hn::Zero(d));
    return hn::MulHigh(less1, hn::Set(d, 7282));
  }
};

struct Binomial : SymmetricRow<2, 1> {
  HWY_INLINE V16 operator()(D16, V16 a, V16 b, V16 c) const {
    return hn::ShiftRight<4>(BinomialSum(a, b, c));
  }
};

// The mean of the 8 neighbours.
struct MeanOfNeighbours : WindowOp<1> {
  struct Part {
    V16 all, ends;
  };
  HWY_INLINE Part Row(D16, const V16* at) const {
    const V16 ends = hn::Add(at[-1], at[1]);
    return {hn::Add(ends, at[0]), ends};
  }
  HWY_INLINE V16 operator()(D16, const Part& a, const Part& b, const Part& c) const {
    return hn::ShiftRight<3>(SumOf3(a.all, b.ends, c.all));
  }
};

constexpr SmoothingKernels kKernels = {RolledKernels<Uniform>(), RolledKernels<UniformPlain>(),
                                       RolledKernels<Binomial>(),
                                       RolledKernels<MeanOfNeighbours>()};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(SmoothingKernels)
