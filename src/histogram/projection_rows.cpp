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

template <template <class> class Sum, size_t kBytes = kAnyVector, class T>
void SumsOfRows(const Rows<const T>& source, uint32_t* sums) {
  const Rows<const T> rows = source;  // which no sum can change
  for (ptrdiff_t y = 0; y < rows.height; ++y)
    sums[y] = static_cast<uint32_t>(
        ReduceSpan<Sum, T, kBytes>(static_cast<size_t>(rows.width), rows.Row(y)));
}
void SumsOfByteRows(const Rows<const KyBW8>& rows, uint32_t* sums) {
  if (PaysShortVector(rows))
    SumsOfRows<SumOfBytes, kShortVector>(rows, sums);
  else
    SumsOfRows<SumOfBytes>(rows, sums);
}

constexpr ProjectionKernels kKernels = {&SumsOfByteRows,
                                        &SumsOfRows<SumOfWords, kAnyVector, KyBW16>,
                                        &AddColumns<KyBW8>, &AddColumns<KyBW16>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ProjectionKernels)
