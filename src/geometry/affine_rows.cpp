#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/affine_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/affine_rows.h"

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"
#include "foundation/widen-inl.h"
#include "geometry/gather-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// The pixels of places (u, v).
template <class T>
struct Nearest {
  using Lane = uint32_t;
  const Rows<const T>& source;

  template <class D, class V>
  HWY_INLINE LowBytes<V> operator()(D d, V u, V v) const {
    return {GatherPixels(d, source, hn::ShiftRight<16>(u), hn::ShiftRight<16>(v))};
  }
};

// 2^kBits a + f (b - a). The result may use all bits of the lanes: the difference wraps around.
template <int kBits, class V>
HWY_INLINE V Between(V a, V b, V f) {
  return hn::Add(hn::ShiftLeft<kBits>(a), hn::Mul(f, hn::Sub(b, a)));
}

// The bilinear formula on 16-bit lanes.
template <int kBits, class V>
struct Blend {
  V fx, fy;

  template <class D>
  HWY_INLINE V operator()(D, V p00, V p01, V p10, V p11) const {
    const V top = Between<kBits>(p00, p01, fx), bottom = Between<kBits>(p10, p11, fx);
    if constexpr (kBits == 4) {
      return hn::ShiftRight<8>(Between<4>(top, bottom, fy));
    } else {
      // (top + fy (bottom - top) / 2^8) / 2^8, each division truncating. Where bottom < top the
      // difference wraps around, which adds 2^16 to it and fy 2^8 to the quotient.
      const V scaled = hn::ShiftLeft<8>(fy);
      const V quotient = hn::MulHigh(scaled, hn::Sub(bottom, top));
      const auto rises = hn::Eq(hn::Max(bottom, top), bottom);
      const V added = hn::IfThenZeroElse(rises, scaled);
      return hn::ShiftRight<8>(hn::Sub(hn::Add(top, quotient), added));
    }
  }
};

template <int kBits, class T>
struct Bilinear {
  using Lane = uint32_t;
  const Rows<const T>& source;

  template <class D, class V>
  HWY_INLINE LowBytes<V> operator()(D d, V u, V v) const {
    const V x = hn::ShiftRight<16>(u), y = hn::ShiftRight<16>(v);
    Rows<const T> below = source;
    below.first = source.Row(1);
    return {Mix(d, source, GatherPairs(d, source, x, y), GatherPairs(d, below, x, y),
                Fraction(d, u), Fraction(d, v))};
  }

 private:
  template <class D, class V>
  static HWY_INLINE V Fraction(D d, V place) {
    return hn::And(hn::ShiftRight<16 - kBits>(place), hn::Set(d, (1u << kBits) - 1));
  }
  template <class D, class V>
  static HWY_INLINE V Mix(D, const Rows<const KyBW8>&, const Pairs<D>& above, const Pairs<D>& below,
                          V fx, V fy) {
    const V top = Between<kBits>(above.left, above.right, fx);
    const V bottom = Between<kBits>(below.left, below.right, fx);
    return hn::ShiftRight<2 * kBits>(Between<kBits>(top, bottom, fy));
  }
  template <class D, class V>
  static HWY_INLINE V Mix(D d, const Rows<const KyC24>&, const Pairs<D>& above,
                          const Pairs<D>& below, V fx, V fy) {
    const Blend<kBits, decltype(InHalves(d, fx))> blend = {InHalves(d, fx), InHalves(d, fy)};
    const auto onBytes = [&](auto d8, auto... bytes)
                             HWY_ATTR { return OnWide(d8, blend, bytes...); };
    return OnBytes(d, onBytes, above.left, above.right, below.left, below.right);
  }
};

// Not MapSpan: places advance from vector to vector by an addition, which is a tenth faster than
// making them anew.
template <class Op, class T>
void Sample(T* out, size_t n, const Rows<const T>& source, const SourceLine& line) {
  const Op op{source};
  const hn::ScalableTag<typename Op::Lane> d;
  const size_t lanes = hn::Lanes(d);
  const auto at = [&](uint32_t start, uint32_t step, auto column) HWY_ATTR {
    return hn::Add(hn::Set(d, start), hn::Mul(column, hn::Set(d, step)));
  };
  auto u = at(line.u, line.du, hn::Iota(d, 0)), v = at(line.v, line.dv, hn::Iota(d, 0));
  const auto stepU = hn::Set(d, static_cast<uint32_t>(lanes) * line.du);
  const auto stepV = hn::Set(d, static_cast<uint32_t>(lanes) * line.dv);
  size_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    StoreLanes(op(d, u, v), out + i);
    u = hn::Add(u, stepU);
    v = hn::Add(v, stepV);
  }
  const size_t rest = n - i;
  if (rest == 0) return;
  // Lanes that are not wanted repeat the last place.
  const auto column = hn::Min(hn::Iota(d, 0), hn::Set(d, static_cast<uint32_t>(rest - 1)));
  const SourceLine last = line.Advance(static_cast<ptrdiff_t>(i));
  StorePart(d, op(d, at(last.u, last.du, column), at(last.v, last.dv, column)), out + i, rest);
}

template <class T>
constexpr SampleKernels<T> kSample = {&Sample<Nearest<T>, T>, &Sample<Bilinear<4, T>, T>,
                                      &Sample<Bilinear<8, T>, T>};
constexpr AffineKernels kKernels = {kSample<KyBW8>, kSample<KyC24>};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS_IF(AffineKernels)
