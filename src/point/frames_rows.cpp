#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "point/frames_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "point/frames_rows.h"

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// The sum of squared differences of levels, modulo 2^32.
template <class D>
class SumOfSquaredDifferences {
 public:
  static constexpr size_t kMost = 8192;  // few enough for signed lanes

  HWY_INLINE SumOfSquaredDifferences() : sum_(hn::Zero(D32())), more_(hn::Zero(D32())) {}
  HWY_INLINE void Step(D, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D>) {
    const auto difference = hn::Sub(a, b);
    sum_ = hn::ReorderWidenMulAccumulate(D32(), difference, difference, sum_, more_);
  }
  HWY_INLINE uint32_t Done() const {
    return static_cast<uint32_t>(hn::GetLane(hn::SumOfLanes(D32(), hn::Add(sum_, more_))));
  }

 private:
  using D32 = hn::ScalableTag<int32_t>;
  hn::Vec<D32> sum_, more_;
};

uint32_t SquaredDistance(const KyBW8* a, const KyBW8* b, size_t n) {
  return ReduceSpan<SumOfSquaredDifferences, int16_t>(n, a, b);
}

constexpr InterlacedKernels kKernels = {&SquaredDistance};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(InterlacedKernels)
