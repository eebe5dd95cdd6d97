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
  return static_cast<uint32_t>(ReduceSpan<SumOfBytes>(row, n));
}
Moments MomentsOf(const KyBW8* row, size_t n) {
  Moments total{};
  for (size_t x = 0; x < n; x += kMostSquares) {
    const auto piece = ReduceSpan<SumAndSquares>(row + x, HWY_MIN(n - x, kMostSquares));
    total.sum += piece.sum;
    total.squares += piece.squares;
  }
  return total;
}
ExtremesAndSum ExtremesAndSumOf(const KyBW8* row, size_t n) {
  return ReduceSpan<ExtremesAndSumOfBytes>(row, n);
}

constexpr StatisticsKernels kKernels = {&Sum, &MomentsOf, &ExtremesAndSumOf};

}  // namespace

const StatisticsKernels* TableOfStatisticsKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfStatisticsKernels);
const StatisticsKernels& ChooseStatisticsKernels() noexcept {
  return *KY_DISPATCH(TableOfStatisticsKernels)();
}
}  // namespace ky
#endif
