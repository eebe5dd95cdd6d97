#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "convolution/fixed_color_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "convolution/fixed-inl.h"
#include "convolution/fixed_rows.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

constexpr FixedColorRowKernels kKernels = MakeFixedKernels<FixedColorRowKernels, 3>();

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(FixedColorRowKernels)
