#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "histogram/reduce_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "histogram/reduce_rows.h"

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"
#include "histogram/block_counter-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

uint32_t Sum(const KyBW8* row, size_t n) {
  return static_cast<uint32_t>(ReduceSpan<SumOfBytes, KyBW8>(n, row));
}
uint32_t Sum16(const KyBW16* row, size_t n) { return ReduceSpan<SumOfWords, KyBW16>(n, row); }

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

#if HWY_TARGET == HWY_AVX3_DL
void CountBlocks(uint32_t* counts, ptrdiff_t blocks, const KyBW8* first, ptrdiff_t pitch,
                 ptrdiff_t height) {
  BlockCounter counter;
  for (ptrdiff_t y = 0; y < height; ++y)
    for (ptrdiff_t i = 0; i < blocks; ++i) counter.Take(first + y * pitch + i * kCountBlock);
  counter.AddTo(counts);
}
constexpr CountKernel kCount = &CountBlocks;
#else
constexpr CountKernel kCount = nullptr;
#endif

constexpr ReduceKernels kKernels = {
    &Sum, &Sum16, &MomentsOf, &ExtremesAndSumOf, &AddColumns<KyBW8>, &AddColumns<KyBW16>, kCount};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ReduceKernels)
