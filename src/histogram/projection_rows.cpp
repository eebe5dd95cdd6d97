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

uint32_t Sum(const KyBW8* row, size_t n) {
  return static_cast<uint32_t>(ReduceSpan<SumOfBytes>(row, n));
}
uint32_t Sum16(const KyBW16* row, size_t n) { return ReduceSpan<SumOfWords>(row, n); }

constexpr ProjectionKernels kKernels = {&Sum, &Sum16, &AddColumns<KyBW8>, &AddColumns<KyBW16>};

}  // namespace

const ProjectionKernels* TableOfProjectionKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfProjectionKernels);
const ProjectionKernels& ChooseProjectionKernels() noexcept {
  return *KY_DISPATCH(TableOfProjectionKernels)();
}
}  // namespace ky
#endif
