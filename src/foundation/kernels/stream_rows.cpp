#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/stream_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/stream_rows.h"

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

#if HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
namespace hn = hwy::HWY_NAMESPACE;

// Lines are written whole, at once; what belongs to parts of lines is stored as usual.
void Write(KyBW8* to, size_t n, const KyBW8* from) {
  const hn::ScalableTag<uint8_t> d;
  constexpr size_t kLine = 64, kLanes = hn::MaxLanes(d);
  const size_t head = std::min(n, (kLine - reinterpret_cast<uintptr_t>(to) % kLine) % kLine);
  std::memcpy(to, from, head);
  size_t i = head;
  for (; i + kLine <= n; i += kLine) {
    hn::Vec<decltype(d)> line[kLine / kLanes];
    for (size_t k = 0; k < kLine / kLanes; ++k) line[k] = hn::LoadU(d, from + i + k * kLanes);
    for (size_t k = 0; k < kLine / kLanes; ++k) hn::Stream(line[k], d, to + i + k * kLanes);
  }
  std::memcpy(to + i, from + i, n - i);
}
constexpr StreamKernels kKernels = {&Write, &hwy::FlushStream};
#else
constexpr StreamKernels kKernels = {nullptr, nullptr};
#endif

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(StreamKernels)
