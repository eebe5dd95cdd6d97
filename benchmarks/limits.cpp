// The memory limits: what the streams of an operation cost without the operation.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "benchmarks/limits.cpp"
#include <hwy/foreach_target.h>  // keep first

#include <hwy/highway.h>

#include <cstring>

#include "benchmarks/bench.h"
#include "foundation/dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace ky::bench {
namespace HWY_NAMESPACE {

// Two streams in and one out, with as little as can be done to them.
void CombineStreams(const KyBW8* a, const KyBW8* b, KyBW8* out, size_t bytes) {
  namespace hn = hwy::HWY_NAMESPACE;
  const hn::ScalableTag<KyBW8> d;
  const size_t lanes = hn::Lanes(d);
  const auto step = [&](size_t i) HWY_ATTR {
    hn::StoreU(hn::Xor(hn::LoadU(d, a + i), hn::LoadU(d, b + i)), d, out + i);
  };
  size_t i = 0;
  for (; i + 4 * lanes <= bytes; i += 4 * lanes) {
    step(i);
    step(i + lanes);
    step(i + 2 * lanes);
    step(i + 3 * lanes);
  }
  for (; i < bytes; ++i) out[i] = a[i] ^ b[i];
}

}  // namespace HWY_NAMESPACE
}  // namespace ky::bench
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky::bench {
namespace {

HWY_EXPORT(CombineStreams);

template <class T>
KyBW8* Bytes(const KyImage<T>& image) {
  return static_cast<KyBW8*>(image.GetPixelPtr(0, 0));
}

template <class T>
Contender::Work OnStreams(Limit limit, const KyImage<T>& a, const KyImage<T>& b,
                          const KyImage<T>& out) {
  const auto bytes = static_cast<size_t>(out.GetPitch()) * static_cast<size_t>(out.GetHeight());
  KyBW8* const to = Bytes(out);
  const KyBW8 *const from = Bytes(a), *const other = Bytes(b);
  switch (limit) {
    case Limit::kNone: break;
    case Limit::kFill: return [=] { std::memset(to, 1, bytes); };
    case Limit::kCopy: return [=] { std::memcpy(to, from, bytes); };
    case Limit::kTwoStreams: return [=] { KY_DISPATCH(CombineStreams)(from, other, to, bytes); };
  }
  return nullptr;
}

}  // namespace

Contender::Work MemoryLimit(Limit limit, Pixel pixel, Pictures& p) {
  switch (pixel) {
    case Pixel::kGrey: return OnStreams(limit, p.a, p.b, p.out);
    case Pixel::kDeep: return OnStreams(limit, p.deepA, p.deepB, p.deepOut);
    case Pixel::kColor: return OnStreams(limit, p.colorA, p.colorB, p.colorOut);
  }
  return nullptr;
}

}  // namespace ky::bench
#endif
