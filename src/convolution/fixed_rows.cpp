#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/fixed_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/fixed_rows.h"

#include "convolution/fixed-inl.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

constexpr FixedRowKernels kKernels = MakeFixedKernels<FixedRowKernels, 1>();

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(FixedRowKernels)
