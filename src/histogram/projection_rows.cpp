#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "histogram/projection_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "histogram/projection_rows.h"

#include "foundation/dispatch.h"
#include "foundation/reduce-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

uint64_t SumOfRow16(const KyBW16* row, size_t n) { return ReduceSpan<SumOfWords, KyBW16>(n, row); }

constexpr ProjectionKernels kKernels = {&SumOfRow, &SumOfRow16, &AddColumns<KyBW8>,
                                        &AddColumns<KyBW16>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ProjectionKernels)
