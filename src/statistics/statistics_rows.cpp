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

uint32_t Sum(const KyBW8* row, size_t n) {
  return static_cast<uint32_t>(ReduceSpan<SumOfBytes, KyBW8>(n, row));
}
Moments MomentsOf(const KyBW8* row, size_t n) {
  Moments total{};
  for (size_t x = 0; x < n; x += kMostSquares) {
    const auto piece = ReduceSpan<SumAndSquares, KyBW8>(HWY_MIN(n - x, kMostSquares), row + x);
    total.sum += piece.sum;
    total.squares += piece.squares;
  }
  return total;
}
ExtremesAndSum ExtremesAndSumOf(const KyBW8* row, size_t n) {
  return ReduceSpan<ExtremesAndSumOfBytes, KyBW8>(n, row);
}

constexpr StatisticsKernels kKernels = {&Sum, &MomentsOf, &ExtremesAndSumOf};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(StatisticsKernels)
