// The vector loops that row kernels share. Included by row files like lanes-inl.h.
//
// A formula is a functor over vectors, `template <class D, class V> V operator()(D d, V a, V b)
// const`, with `using Lane = ...`, the lane type that it works in. Elements narrower than that are
// widened for it; elements of three bytes are given to it as Planes3. What it returns may have
// lanes of another type than Lane, and is stored as elements of that size or narrower; it may also
// be planes, or Several. The same text serves every instruction set, the tail of a row, and, on the
// one-lane scalar target, the plain path.
#if defined(KY_FOUNDATION_SPANS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_SPANS_INL_H_
#undef KY_FOUNDATION_SPANS_INL_H_
#else
#define KY_FOUNDATION_SPANS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "foundation/lanes-inl.h"
#include "foundation/rows.h"
#include "foundation/several.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Several results go to Several places; those without a place are dropped.
template <class T, class... More>
HWY_INLINE Several<T*, More...> operator+(const Several<T*, More...>& out, size_t i) {
  if constexpr (sizeof...(More) > 0)
    return {out.first + i, out.more + i};
  else
    return {out.first + i};
}
template <class D, class A, class B>
HWY_INLINE Several<hn::Vec<D>, hn::Vec<D>> LoadLanes(D d, const Several<A*, B*>& from) {
  return {LoadLanes(d, from.first), {LoadLanes(d, from.more.first)}};
}
template <class D, class A, class B>
HWY_INLINE Several<hn::Vec<D>, hn::Vec<D>> LoadPart(D d, const Several<A*, B*>& from, size_t n) {
  return {LoadPart(d, from.first, n), {LoadPart(d, from.more.first, n)}};
}
template <class V, class... Vs, class T, class... More>
HWY_INLINE void StoreLanes(const Several<V, Vs...>& v, const Several<T*, More...>& to) {
  StoreLanes(v.first, to.first);
  if constexpr (sizeof...(More) > 0) StoreLanes(v.more, to.more);
}
template <class D, class V, class... Vs, class T, class... More>
HWY_INLINE void StorePart(D d, const Several<V, Vs...>& v, const Several<T*, More...>& to,
                          size_t n) {
  StorePart(d, v.first, to.first, n);
  if constexpr (sizeof...(More) > 0) StorePart(d, v.more, to.more, n);
}

// An operation that keeps some of the destination's elements says so with
// `static constexpr bool kKeeps = true`, and is given them before the sources.
template <class Op>
concept Keeping = Op::kKeeps;

// True when elements of both may be the same ones.
template <class Out, class In>
inline constexpr bool kMayBeSame = true;
template <class Out, class In>
inline constexpr bool kMayBeSame<Out*, In*> = sizeof(Out) == sizeof(In);

// True of results wider than the lanes they are made of: they are bound by their stores, which are
// therefore aligned, all but those of the first and the last vector. (Three bytes do not align.)
// Vectors have 32 bytes at most then: Zen 4 takes a tenth to a quarter longer to write 64 at a
// time.
template <class Lane, class Out>
inline constexpr bool kWaitsForStores = false;
template <class Lane, class T>
inline constexpr bool kWaitsForStores<Lane, T*> = sizeof(T) > sizeof(Lane) && sizeof(T) != 3;

// out[i] = op(in[i]...) for n elements: the loop of every per-pixel kernel. `out` is a pointer, or
// Several; sources may be destinations, but may not overlap them otherwise. The last vector
// overlaps the one before it; in place, each overwrites sources of the other, so that both are
// computed before they are stored. (Not before all others: where rows are far apart, processors
// take a long time for what lies ahead of what is read in order.)
template <class Op, class Out, class... In>
HWY_INLINE void MapSpan(const Op& op, Out out, size_t n, In... in) {
  using Lane = typename Op::Lane;
  const hn::CappedTag<Lane, (kWaitsForStores<Lane, Out> ? 32 : 64) / sizeof(Lane)> d;
  const size_t lanes = hn::Lanes(d);
  const auto apply = [&](const auto& load) HWY_ATTR {
    if constexpr (Keeping<Op>)
      return op(d, load(out), load(in)...);
    else
      return op(d, load(in)...);
  };
  if (n < lanes) {
    if (n != 0)
      StorePart(d, apply([=](auto from) HWY_ATTR { return LoadPart(d, from, n); }), out, n);
    return;
  }
  const auto at = [&](size_t i) HWY_ATTR {
    return apply([=](auto from) HWY_ATTR { return LoadLanes(d, from + i); });
  };
  const size_t end = n - lanes;
  size_t i = 0;
  if constexpr (!Keeping<Op> && !(kMayBeSame<Out, In> || ...) &&
                kWaitsForStores<typename Op::Lane, Out>) {
    StoreLanes(at(0), out);
    i = HWY_MIN(end, lanes - reinterpret_cast<uintptr_t>(out) / sizeof(*out) % lanes);
  }
  HWY_UNROLL(2)
  for (; i + lanes <= end; i += lanes) StoreLanes(at(i), out + i);
  const auto nextToLast = at(i), last = at(end);
  StoreLanes(nextToLast, out + i);
  StoreLanes(last, out + end);
}

// row(out, n, in...) for each row. The copies of the arguments stay in registers.
template <class Row, class Out, class... In>
HWY_INLINE void ForEachRow(const Row& row, Rows<Out> out, Rows<const In>... in) {
  for (ptrdiff_t y = 0; y < out.height; ++y)
    row(out.Row(y), static_cast<size_t>(out.width), in.Row(y)...);
}
// The kernel of all rows that does with each what the kernel of one row does.
template <auto kRow>
struct RowByRow;
template <class Out, class... In, void (*kRow)(Out*, size_t, const In*...)>
struct RowByRow<kRow> {
  static void Map(const Rows<Out>& out, const Rows<const In>&... in) {
    ForEachRow(kRow, out, in...);
  }
};
template <auto kRow>
inline constexpr auto kEachRow = &RowByRow<kRow>::Map;
// That of a formula without parameters.
template <class Op, class Out, class... In>
void MapFormula(const Rows<Out>& out, const Rows<const In>&... in) {
  const auto row = [](Out* to, size_t n, const In*... from)
                       HWY_ATTR { MapSpan(Op(), to, n, from...); };
  ForEachRow(row, out, in...);
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

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
