#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "statistics/statistics_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "statistics/statistics_rows.h"

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

Moments MomentsOf(const KyBW8* row, size_t n) { return ReduceSpan<SumAndSquares, KyBW8>(n, row); }
ExtremesAndSum ExtremesAndSumOf(const KyBW8* row, size_t n) {
  return ReduceSpan<ExtremesAndSumOfBytes, KyBW8>(n, row);
}

constexpr StatisticsKernels kKernels = {&SumOfRow, &MomentsOf, &ExtremesAndSumOf};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(StatisticsKernels)
