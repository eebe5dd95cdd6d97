#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/large_smoothing_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/filter_terms-inl.h"
#include "convolution/filters_rows.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// round(sum / count) of kSide x kSide levels, by a factor just above 2^(16 + kShift) / count.
template <int kSide, int kFactor, int kShift>
struct RoundedMean {
  static constexpr int kCount = kSide * kSide, kHalf = kCount / 2;
  static constexpr bool IsExact() {
    for (int sum = 0; sum <= 255 * kCount; ++sum)
      if ((sum + kHalf) / kCount != int64_t{sum + kHalf} * kFactor >> (16 + kShift)) return false;
    return true;
  }
  static_assert(IsExact());

  HWY_INLINE V16 operator()(D16 d, V16 sum) const {
    const V16 product = hn::MulHigh(hn::Add(sum, hn::Set(d, kHalf)), hn::Set(d, kFactor));
    return hn::ShiftRight<kShift>(product);
  }
};
struct Uniform5x5 : SymmetricRow<1, 1, 1> {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c, V16 e, V16 f) const {
    const V16 four = hn::Add(hn::Add(a, b), hn::Add(c, e));
    return RoundedMean<5, 20972, 3>()(d, hn::Add(four, f));
  }
};
struct Uniform7x7 : SymmetricRow<1, 1, 1, 1> {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c, V16 e, V16 f, V16 g, V16 h) const {
    const V16 four = hn::Add(hn::Add(a, b), hn::Add(c, e));
    return RoundedMean<7, 21400, 4>()(d, hn::Add(four, hn::Add(hn::Add(f, g), h)));
  }
};

// (sum + 128) >> 8. Sums need all 16 bits.
struct Binomial5x5 : SymmetricRow<6, 4, 1> {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c, V16 e, V16 f) const {
    const hn::Rebind<uint16_t, D16> unsigned16;
    const V16 sum = hn::Add(BinomialSum(a, b, c, e, f), hn::Set(d, 128));
    return hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(unsigned16, sum)));
  }
};

// (sum + 2048) >> 12. Rows give up to 16320, their sums need 32 bits.
struct Binomial7x7 : SymmetricRow<20, 15, 6, 1> {
  HWY_INLINE V16 operator()(D16 d, V16 a, V16 b, V16 c, V16 e, V16 f, V16 g, V16 h) const {
    const D32 d32;
    const V16 by1 = hn::Add(a, h), by6 = hn::Add(b, g), by15 = hn::Add(c, f);
    const auto level = [&](V32 sum) HWY_ATTR { return hn::ShiftRight<12>(sum); };
    const V32 half = hn::Set(d32, 2048);
#if HWY_TARGET == HWY_SCALAR
    const auto times = [&](V16 v, int32_t weight) HWY_ATTR {
      return hn::Mul(hn::PromoteTo(d32, v), hn::Set(d32, weight));
    };
    const V32 sum =
        hn::Add(hn::Add(times(by1, 1), times(by6, 6)), hn::Add(times(by15, 15), times(e, 20)));
    return hn::DemoteTo(d, level(hn::Add(sum, half)));
#else
    constexpr int32_t kOuter = 1 + (6 << 16), kInner = 15 + (20 << 16);
    const V32 lower = MulAddPairs(hn::InterleaveLower(d, by15, e), kInner,
                                  MulAddPairs(hn::InterleaveLower(d, by1, by6), kOuter, half));
    const V32 upper = MulAddPairs(hn::InterleaveUpper(d, by15, e), kInner,
                                  MulAddPairs(hn::InterleaveUpper(d, by1, by6), kOuter, half));
    return hn::ReorderDemote2To(d, level(lower), level(upper));
#endif
  }
};

constexpr LargeSmoothingKernels kKernels = {
    .uniform5x5 = RolledKernels<Uniform5x5>(),
    .uniform7x7 = RolledKernels<Uniform7x7>(),
    .binomial5x5 = RolledKernels<Binomial5x5>(),
    .binomial7x7 = RolledKernels<Binomial7x7>(),
};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(LargeSmoothingKernels)
