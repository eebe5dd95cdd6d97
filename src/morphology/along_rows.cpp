#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "morphology/along_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "morphology/along_rows.h"

#include <algorithm>
#include <bit>

#include "foundation/dispatch.h"
#include "foundation/prefetch-inl.h"
#include "foundation/shifts-inl.h"
#include "morphology/extremes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// out[x] = extreme of row[x + distance...] for n places, rounded up to whole vectors. `out` may be
// `row`.
template <class Op, class... Distance>
HWY_INLINE void Gather(KyBW8* out, ptrdiff_t n, const KyBW8* row, Distance... distance) {
  for (ptrdiff_t x = 0; x < n; x += Lanes())
    hn::StoreU(ExtremeAt<Op>(row + x, distance...), D(), out + x);
}

// How far ahead of its use a source is prefetched: the other work on a row keeps processors from
// seeing that it is read in order.
constexpr ptrdiff_t kAhead = 3840;

// Makes vectors of the extremes of kSpan pixels from each place on, going along a row, out of those
// of shorter spans. A pixel has kStep elements, and extremes are those of every kStep-th: shifting
// what is at hand is faster than loads across the lines of a cache. A result takes the elements up
// to kFurther vectors further on, and so Next is given the vector that comes so far after the one
// that it makes.
template <class Op, int kSpan, int kStep>
struct Spans {
  static constexpr int kShorter = std::bit_floor(kSpan - 1u);
  static constexpr int kFurther = Spans<Op, kShorter, kStep>::kFurther + 1;

  HWY_INLINE void Start(const KyBW8* at) {
    shorter.Start(at);
    here = shorter.Next(at + (kFurther - 1) * Lanes());
  }
  HWY_INLINE void StartAfterNothing() {
    shorter.StartAfterNothing();
    here = hn::Set(D(), Op::kNeutral);
  }
  HWY_INLINE V Next(const KyBW8* at) { return Join(shorter.Next(at)); }
  // The same of elements v, of which `following` stands a pixel further on.
  HWY_INLINE V Next(V v, V following) { return Join(shorter.Next(v, following)); }
  HWY_INLINE V Join(V next) {
    const V v = Op()(here, After<(kSpan - kShorter) * kStep>(D(), here, next));
    here = next;
    return v;
  }

  Spans<Op, kShorter, kStep> shorter;
  V here;
};
template <class Op, int kStep>
struct Spans<Op, 2, kStep> {
  static constexpr int kFurther = 0;
  HWY_INLINE void Start(const KyBW8*) {}
  HWY_INLINE void StartAfterNothing() {}
  HWY_INLINE V Next(const KyBW8* at) { return ExtremeAt<Op>(at, 0, kStep); }
  HWY_INLINE V Next(V v, V following) { return Op()(v, following); }
};

// out[x] = extreme(in[x], ..., in[x + (kSpan - 1) kStep]) for a vector of places.
template <class Op, int kSpan, int kStep>
HWY_INLINE void GatherDirect(KyBW8* out, const KyBW8* in) {
  V v = ExtremeAt<Op>(in, 0, kStep, 2 * kStep);
  for (int i = 3; i < kSpan; ++i) v = Op()(v, hn::LoadU(D(), in + i * kStep));
  hn::StoreU(v, D(), out);
}

// The same for n places, a vector or more. Of `in`, no more is read; it does not overlap `out`, so
// that the last vector may go over some places again.
template <class Op, int kSpan, int kStep>
HWY_INLINE void GatherInside(KyBW8* out, ptrdiff_t n, const KyBW8* in) {
  const D d;
  ptrdiff_t x = 0;
  if constexpr (hn::MaxLanes(D()) > kSpan * kStep) {
    Spans<Op, kSpan, kStep> spans;
    const ptrdiff_t further = spans.kFurther * Lanes();
    if (further + Lanes() <= n) spans.Start(in);
    for (; x + further + Lanes() <= n; x += Lanes()) {
      PrefetchAhead<hn::MaxLanes(D())>(in + x, kAhead);
      hn::StoreU(spans.Next(in + x + further), d, out + x);
    }
  }
  for (; x + Lanes() <= n; x += Lanes()) GatherDirect<Op, kSpan, kStep>(out + x, in + x);
  GatherDirect<Op, kSpan, kStep>(out + n - Lanes(), in + n - Lanes());
}

// out[x] = extreme(in[x - half kStep], ..., in[x + half kStep]) for n places, of the elements that
// there are, for a short window of 2 half + 1 = kSpan. Rows that are too short for a vector of
// whole windows are padded, and made in whole vectors.
template <class Op, int kSpan, int kStep>
HWY_INLINE void GatherPadded(KyBW8* out, ptrdiff_t n, const KyBW8* in) {
  constexpr ptrdiff_t outside = kSpan / 2 * kStep, lanes = hn::MaxLanes(D());
  if (n - 2 * outside < lanes) {
    HWY_ALIGN KyBW8 row[2 * lanes + 4 * outside];
    std::fill_n(row, outside, Op::kNeutral);
    std::fill_n(std::copy_n(in, n, row + outside), lanes + outside, Op::kNeutral);
    for (ptrdiff_t x = 0; x < n; x += lanes) GatherDirect<Op, kSpan, kStep>(out + x, row + x);
    return;
  }
  GatherInside<Op, kSpan, kStep>(out + outside, n - 2 * outside, in);
  // The windows at both ends grow from one pixel to the next.
  const KyBW8* const end = in + n - 1;
  for (ptrdiff_t first = 0; first < kStep; ++first) {
    KyBW8 left = in[first], right = end[-first];
    for (ptrdiff_t x = first + kStep; x < outside; x += kStep) {
      left = Op::OfTwo(left, in[x]);
      right = Op::OfTwo(right, end[-x]);
    }
    for (ptrdiff_t x = first; x < outside; x += kStep) {
      out[x] = left = Op::OfTwo(left, in[x + outside]);
      out[n - 1 - x] = right = Op::OfTwo(right, end[-x - outside]);
    }
  }
}

// row[x] = extreme of the kSpan pixels from x on, for the elements of all but the last kSpan - 1 of
// the half + n / kStep + half pixels: n elements that are given, between others that count for
// nothing. By whole vectors, the first of them in front of `row`; n is two or more of them.
template <class Op, int kSpan, int kStep>
HWY_INLINE void GatherBetween(KyBW8* row, ptrdiff_t n, const KyBW8* in, ptrdiff_t half,
                              const KyBW8* soon) {
  const D d;
  const ptrdiff_t lanes = Lanes();
  const ptrdiff_t outside = half * kStep;
  const V neutral = hn::Set(d, Op::kNeutral);
  Spans<Op, kSpan, kStep> spans;
  static_assert(kSpan * kStep <= hn::MaxLanes(D()));
  static_assert((spans.kFurther + 1) * hn::MaxLanes(D()) <= kRowFront);
  spans.StartAfterNothing();
  KyBW8* out = row + outside - (spans.kFurther + 1) * lanes;
  const auto neutralTo = [](KyBW8* from, ptrdiff_t count) {
    std::memset(from, Op::kNeutral, static_cast<size_t>(std::max<ptrdiff_t>(count, 0)));
  };
  neutralTo(row, outside - (spans.kFurther + 1) * lanes);
  const auto put = [&](V v) HWY_ATTR {
    hn::StoreU(v, d, out);
    out += lanes;
  };
  put(spans.Next(neutral, After<kStep>(d, neutral, hn::LoadU(d, in))));
  for (ptrdiff_t x = 0; x + lanes + kStep <= n; x += lanes) {
    PrefetchAhead<hn::MaxLanes(D())>(in + x, kAhead);
    // The work on shorter spans leaves the memory no time for more.
    if constexpr (kSpan * kStep > 8) PrefetchAhead<hn::MaxLanes(D())>(soon, x);
    put(spans.Next(in + x));
  }
  for (int i = 0; i < spans.kFurther; ++i) put(spans.Next(neutral, neutral));

  // The spans that reach the end, out of the last two vectors.
  out = row + outside + n - 2 * lanes;
  const V last = hn::LoadU(d, in + n - lanes);
  spans.StartAfterNothing();
  for (int i = 0; i < spans.kFurther + 2; ++i) {
    const V v = i == 0   ? spans.Next(in + n - 2 * lanes)
                : i == 1 ? spans.Next(last, After<kStep>(d, last, neutral))
                         : spans.Next(neutral, neutral);
    if (i >= spans.kFurther) put(v);
  }
  neutralTo(out, outside + (1 - kSpan) * kStep);
}

// The same for the longest span of a power of two that is longer than neither a vector nor the
// window, which is 9 pixels or more. The span is returned.
template <class Op, int kStep, int kSpan = kStep == 1 ? 8 : 4>
HWY_INLINE ptrdiff_t GatherLongest(KyBW8* row, ptrdiff_t n, const KyBW8* in, ptrdiff_t half,
                                   const KyBW8* soon) {
  if constexpr (hn::MaxLanes(D()) == 1) {
    std::fill_n(row, half * kStep, Op::kNeutral);
    std::fill_n(std::copy_n(in, n, row + half * kStep), half * kStep, Op::kNeutral);
    return 1;
  } else {
    if constexpr (2 * kSpan * kStep <= hn::MaxLanes(D())) {
      if (2 * kSpan <= 2 * half + 1)
        return GatherLongest<Op, kStep, 2 * kSpan>(row, n, in, half, soon);
    }
    const ptrdiff_t least = 2 * Lanes();
    static_assert(2 * hn::MaxLanes(D()) <= kLeastRow);
    HWY_ALIGN KyBW8 few[2 * hn::MaxLanes(D())];
    if (n < least) {
      std::fill(std::copy_n(in, n, few), few + least, Op::kNeutral);
      in = few;
    }
    GatherBetween<Op, kSpan, kStep>(row, std::max(n, least), in, half, soon);
    return kSpan;
  }
}

// row[x] = extreme of the `count` elements row[x], row[x + lanes], row[x + 2 lanes], ... for n
// places, rounded up to whole vectors: running extremes of vectors, in blocks of `count`.
template <class Op>
HWY_INLINE void GatherVectors(KyBW8* row, ptrdiff_t n, KyBW8* spare, ptrdiff_t count) {
  const ptrdiff_t lanes = Lanes(), vectors = (n + lanes - 1) / lanes;
  const auto neutral = hn::Set(D(), Op::kNeutral);
  for (ptrdiff_t first = 0; first < vectors; first += count) {
    // From each vector to the end of the block, and from the start of the next block on.
    V suffix = neutral;
    for (ptrdiff_t i = count - 1; i >= 0; --i) {
      suffix = Op()(suffix, hn::LoadU(D(), row + (first + i) * lanes));
      hn::StoreU(suffix, D(), spare + i * lanes);
    }
    V prefix = neutral;
    const ptrdiff_t end = std::min(count, vectors - first);
    for (ptrdiff_t i = 0; i < end; ++i) {
      hn::StoreU(Op()(prefix, hn::LoadU(D(), spare + i * lanes)), D(), row + (first + i) * lanes);
      prefix = Op()(prefix, hn::LoadU(D(), row + (first + count + i) * lanes));
    }
  }
}

// Two spans of a power of two cover the window where that is shorter than two vectors. For longer
// ones, those of a vector are joined by a doubling or by running extremes of whole vectors, until
// four do. Vectors hold no whole number of colours, whose spans are joined by fours.
template <class Op, int kStep>
void Along(KyBW8* out, ptrdiff_t n, const KyBW8* in, KyBW8* row, KyBW8* spare, ptrdiff_t half,
           const KyBW8* soon) {
  const ptrdiff_t window = 2 * half + 1;
  if (half == 1) return GatherPadded<Op, 3, kStep>(out, n, in);
  if (half == 2) return GatherPadded<Op, 5, kStep>(out, n, in);
  if (half == 3) return GatherPadded<Op, 7, kStep>(out, n, in);
  ptrdiff_t span = GatherLongest<Op, kStep>(row, n, in, half, soon);
  if constexpr (kStep > 1) {
    for (; window > 4 * span; span *= 4)
      Gather<Op>(row, n + (window - 4 * span) * kStep, row, 0, span * kStep, 2 * span * kStep,
                 3 * span * kStep);
  } else if (window > 4 * span && window <= 8 * span) {
    Gather<Op>(row, n + window - 2 * span, row, 0, span);
    span *= 2;
  } else if (window > 4 * span) {
    const ptrdiff_t steps = (window - span) / Lanes();
    GatherVectors<Op>(row, n + window - span - steps * Lanes(), spare, steps + 1);
    span += steps * Lanes();
  }
  const ptrdiff_t next = span * kStep, last = (window - span) * kStep;
  if (window <= 2 * span)
    Gather<Op>(out, n, row, 0, last);
  else if (window <= 3 * span)
    Gather<Op>(out, n, row, 0, next, last);
  else
    Gather<Op>(out, n, row, 0, next, 2 * next, last);
}

constexpr AlongKernels kKernels = {{&Along<Maximum, 1>, &Along<Minimum, 1>},
                                   {&Along<Maximum, 3>, &Along<Minimum, 3>}};

}  // namespace
// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(AlongKernels)
