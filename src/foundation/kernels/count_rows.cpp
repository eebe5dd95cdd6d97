#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/count_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/count_rows.h"

#include "foundation/dispatch.h"
#include "foundation/kernels/block_counter-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

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

constexpr CountKernels kKernels = {kCount};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(CountKernels)
