// The vector loops that row kernels share. Included by row files like lanes-inl.h.
//
// A formula is a functor over vectors, `template <class D, class V> V operator()(D d, V a, V b)
// const`, with `using Lane = ...`, the lane type that it works in. The same text serves every
// instruction set, the tail of a row, and, on the one-lane scalar target, the plain path.
#if defined(KY_FOUNDATION_SPANS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_SPANS_INL_H_
#undef KY_FOUNDATION_SPANS_INL_H_
#else
#define KY_FOUNDATION_SPANS_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/lanes-inl.h"
#include "foundation/prefetch-inl.h"
#include "ky/pixels.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// An operation that keeps some of the destination's elements says so with
// `static constexpr bool kKeeps = true`, and is given them before the sources.
template <class Op>
concept Keeping = Op::kKeeps;

// out[i] = op(in[i]...) for n elements: the loop of every per-pixel kernel. The last vector
// overlaps the one before it; it is computed first, as in place the others overwrite its sources.
template <class Op, class Out, class... In>
HWY_INLINE void MapSpan(const Op& op, Out* out, size_t n, const In*... in) {
  const hn::ScalableTag<typename Op::Lane> d;
  const size_t lanes = hn::Lanes(d);
  const auto apply = [&](const auto& load) HWY_ATTR {
    if constexpr (Keeping<Op>)
      return op(d, load(out), load(in)...);
    else
      return op(d, load(in)...);
  };
  if (n < lanes) {
    if (n != 0)
      StorePart(d, apply([=](auto* from) HWY_ATTR { return LoadPart(d, from, n); }), out, n);
    return;
  }
  const auto at = [&](size_t i) HWY_ATTR {
    return apply([=](auto* from) HWY_ATTR { return LoadLanes(d, from + i); });
  };
  const auto last = at(n - lanes);
  for (size_t i = 0; i + lanes < n; i += lanes) {
    AskToStore<hn::MaxLanes(d) * sizeof(Out)>(out + i);
    StoreLanes(d, at(i), out + i);
  }
  StoreLanes(d, last, out + (n - lanes));
}

// out[i] = table[places[i]], one after the other: `out` may be `places`. The compiler is kept from
// collecting the results in vectors or words, which takes longer than their stores.
template <class T, class Place>
HWY_INLINE void LookUpEach(T* out, size_t n, const Place* places, const T* table) {
  const auto lookUp = [=](size_t i) HWY_ATTR {
    out[i] = table[places[i]];
    __asm__ volatile("" : : : "memory");
  };
  size_t i = 0;
  for (; i + 4 <= n; i += 4)
    for (size_t k = 0; k < 4; ++k) lookUp(i + k);
  for (; i < n; ++i) lookUp(i);
}

// Three bytes a pixel: op(d, c0, c1, c2 of every source...) changes the planes of the first source
// into those of the result.
template <class Op, class... In>
HWY_INLINE void MapColorSpan(const Op& op, KyC24* out, size_t n, const In*... in) {
  const hn::ScalableTag<uint8_t> d;
  using V = hn::Vec<decltype(d)>;
  const size_t lanes = hn::Lanes(d);
  struct Planes {
    V c0, c1, c2;
  };
  const auto load = [&](const KyC24* from) HWY_ATTR {
    Planes p;
    hn::LoadInterleaved3(d, reinterpret_cast<const uint8_t*>(from), p.c0, p.c1, p.c2);
    return p;
  };
  const auto store = [&](const Planes& p, KyC24* to) HWY_ATTR {
    hn::StoreInterleaved3(p.c0, p.c1, p.c2, d, reinterpret_cast<uint8_t*>(to));
  };
  if (n < lanes) {
    const auto loadPart = [&](const KyC24* from) HWY_ATTR {
      KyC24 part[hn::MaxLanes(d)];
      std::memset(part, 0, sizeof part);
      std::memcpy(part, from, n * sizeof(KyC24));
      return load(part);
    };
    KyC24 part[hn::MaxLanes(d)];
    store(op(d, loadPart(in)...), part);
    std::memcpy(out, part, n * sizeof(KyC24));
    return;
  }
  const Planes last = op(d, load(in + (n - lanes))...);  // see MapSpan
  for (size_t i = 0; i + lanes < n; i += lanes) {
    AskToStore<hn::MaxLanes(d) * sizeof(KyC24)>(out + i);
    store(op(d, load(in + i)...), out + i);
  }
  store(last, out + (n - lanes));
}

// out[i] = op(d, c0, c1, c2) of the components of in[i].
template <class Op>
HWY_INLINE void MapColorToGreySpan(const Op& op, KyBW8* out, size_t n, const KyC24* in) {
  const hn::ScalableTag<uint8_t> d;
  const size_t lanes = hn::Lanes(d);
  const auto at = [&](const KyC24* from) HWY_ATTR {
    hn::Vec<decltype(d)> c0, c1, c2;
    hn::LoadInterleaved3(d, &from->c0, c0, c1, c2);
    return op(d, c0, c1, c2);
  };
  if (n < lanes) {
    KyC24 part[hn::MaxLanes(d)];
    std::memset(part, 0, sizeof part);
    std::memcpy(part, in, n * sizeof(KyC24));
    StorePart(d, at(part), out, n);
    return;
  }
  for (size_t i = 0; i + lanes < n; i += lanes) {
    AskToStore<hn::MaxLanes(d)>(out + i);
    hn::StoreU(at(in + i), d, out + i);
  }
  hn::StoreU(at(in + (n - lanes)), d, out + (n - lanes));
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
