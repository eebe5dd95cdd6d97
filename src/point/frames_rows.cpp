#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "point/frames_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "point/frames_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Few enough pixels for the sums of squares in signed lanes.
constexpr size_t kBlock = 8192;

uint32_t SquaredDistanceOfBlock(const KyBW8* a, const KyBW8* b, size_t n) {
  const hn::ScalableTag<int16_t> d;
  const hn::ScalableTag<int32_t> d32;
  const size_t lanes = hn::Lanes(d);
  auto sum = hn::Zero(d32), otherSum = hn::Zero(d32);
  const auto add = [&](auto left, auto right) HWY_ATTR {
    const auto difference = hn::Sub(left, right);
    sum = hn::ReorderWidenMulAccumulate(d32, difference, difference, sum, otherSum);
  };
  size_t i = 0;
  for (; i + lanes <= n; i += lanes) add(LoadLanes(d, a + i), LoadLanes(d, b + i));
  add(LoadPart(d, a + i, n - i), LoadPart(d, b + i, n - i));
  return static_cast<uint32_t>(hn::GetLane(hn::SumOfLanes(d32, hn::Add(sum, otherSum))));
}

uint32_t SquaredDistance(const KyBW8* a, const KyBW8* b, size_t n) {
  uint32_t sum = 0;
  for (size_t i = 0; i < n; i += kBlock)
    sum += SquaredDistanceOfBlock(a + i, b + i, std::min(kBlock, n - i));
  return sum;
}

constexpr FrameKernels kKernels = {&SquaredDistance};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(FrameKernels)
