#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "point/frames_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "point/frames_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// The sum of squared differences of at most kBlock levels: few enough for signed lanes.
constexpr size_t kBlock = 8192;
template <class D>
class SumOfSquaredDifferences {
 public:
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
  uint32_t sum = 0;
  for (size_t i = 0; i < n; i += kBlock)
    sum += ReduceSpan<SumOfSquaredDifferences, int16_t>(std::min(kBlock, n - i), a + i, b + i);
  return sum;
}

constexpr FrameKernels kKernels = {&SquaredDistance};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(FrameKernels)
