#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "foundation/kernels/stream_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "foundation/kernels/stream_rows.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "foundation/dispatch.h"
#include "foundation/stream-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

#if KY_STREAMS

struct Same {
  template <class D, class V>
  HWY_INLINE V operator()(D, V v) const {
    return v;
  }
};
// Lines are written whole, at once; what belongs to parts of lines is stored as usual.
void Write(KyBW8* to, size_t n, const KyBW8* from) {
  const size_t head = std::min<size_t>(n, -reinterpret_cast<uintptr_t>(to) % kCacheLine);
  const size_t lines = (n - head) / kCacheLine * kCacheLine;
  std::memcpy(to, from, head);
  StreamSpan(Same(), to + head, lines, from + head);
  std::memcpy(to + head + lines, from + head + lines, n - head - lines);
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
