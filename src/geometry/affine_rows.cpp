#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/affine_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/affine_rows.h"

#include <algorithm>
#include <cstdlib>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"
#include "foundation/widen-inl.h"
#include "geometry/gather-inl.h"
#include "geometry/pixel_windows-inl.h"

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
  // Of grey pixels in 16-bit lanes, and the fractions of their places in 256ths.
  static constexpr bool kBelow = false;
  template <class Pixels, class V>
  static HWY_INLINE V Mix16(const Pixels& pixels, V, V) {
    return hn::And(pixels.above, hn::Set(hn::DFromV<V>(), 0xFF));
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
  static constexpr bool kBelow = true;
  template <class Pixels, class V>
  static HWY_INLINE V Mix16(const Pixels& pixels, V fx, V fy) {
    const hn::DFromV<V> d;
    const auto left = [=](V pair) HWY_ATTR { return hn::And(pair, hn::Set(d, 0xFF)); };
    const auto right = [](V pair) HWY_ATTR { return hn::ShiftRight<8>(pair); };
    const Blend<kBits, V> blend = {hn::ShiftRight<8 - kBits>(fx), hn::ShiftRight<8 - kBits>(fy)};
    return blend(d, left(pixels.above), right(pixels.above), left(pixels.below),
                 right(pixels.below));
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

#if HWY_TARGET != HWY_SCALAR
// The pixels of a grey line whose places lie close together, as many as fill whole vectors; gives
// their number, or 0 where the places are too far apart.
template <class Op>
HWY_INLINE size_t SampleWindows(KyBW8* out, size_t n, const Rows<const KyBW8>& source,
                                const SourceLine& line) {
  constexpr ptrdiff_t kMostRows = 9, kFarthest = kWindowPlaces - 1;
  // How many pixels the places of a window span, at most.
  const auto spanOf = [](uint32_t step) {
    const int64_t size = std::abs(int64_t{static_cast<int32_t>(step)});
    return static_cast<ptrdiff_t>((kFarthest * size + kOnePixel - 1) / kOnePixel) + 1;
  };
  const ptrdiff_t rows = spanOf(line.dv);
  if (spanOf(line.du) + Op::kBelow > kWindowWidth || rows > kMostRows ||
      source.width < kWindowWidth || source.height < rows + Op::kBelow)
    return 0;

  const PixelWindows::D32 d;
  const PixelWindows::D16 d16;
  const hn::RebindToSigned<decltype(d)> signed32;
  const hn::RebindToSigned<decltype(d16)> signed16;
  constexpr size_t kPlaces = PixelWindows::kWindows * kWindowPlaces;
  // Windows start at the least place, or where they end with the source.
  const auto lowestOf = [](uint32_t step) {
    return static_cast<int32_t>(step) < 0 ? uint32_t{kFarthest} * step : 0u;
  };
  const auto lastOf = [](ptrdiff_t size, ptrdiff_t window) {
    return static_cast<uint32_t>(std::min<ptrdiff_t>(size - window, INT16_MAX));
  };
  const uint32_t lastX = lastOf(source.width, kWindowWidth);
  const uint32_t lastY = lastOf(source.height, rows + Op::kBelow);

  // Along one axis, the places of each window's first half and second half.
  struct Axis {
    hn::Vec<PixelWindows::D32> first, second, next, lowest, last;
  };
  const auto axisOf = [=](uint32_t start, uint32_t step, uint32_t last) HWY_ATTR {
    const auto i = hn::Iota(d, 0);
    const auto column = hn::Add(i, hn::And(i, hn::Set(d, 4u)));
    const auto first = hn::Add(hn::Set(d, start), hn::Mul(column, hn::Set(d, step)));
    return Axis{first, hn::Add(first, hn::Set(d, 4 * step)),
                hn::Set(d, static_cast<uint32_t>(kPlaces) * step), hn::Set(d, lowestOf(step)),
                hn::Set(d, last * kOnePixel)};
  };
  // The places in the window, in 256ths.
  const auto advance = [=](Axis& axis) HWY_ATTR {
    const auto lowest = hn::Add(hn::Broadcast<0>(axis.first), axis.lowest);
    const auto start = hn::Min(hn::And(lowest, hn::Set(d, 0xFFFF0000)), axis.last);
    const auto inWindow = [=](auto place) HWY_ATTR {
      return hn::BitCast(signed32, hn::ShiftRight<8>(hn::Sub(place, start)));
    };
    const auto places = hn::ReorderDemote2To(signed16, inWindow(axis.first), inWindow(axis.second));
    axis.first = hn::Add(axis.first, axis.next);
    axis.second = hn::Add(axis.second, axis.next);
    return hn::BitCast(d16, places);
  };
  Axis across = axisOf(line.u, line.du, lastX), down = axisOf(line.v, line.dv, lastY);
  uint32_t u = line.u + lowestOf(line.du), v = line.v + lowestOf(line.dv);
  const auto fraction = hn::Set(d16, 0xFF);
  PixelWindows windows(source.pitch);
  size_t i = 0;
  for (; i + kPlaces <= n; i += kPlaces) {
    for (size_t k = 0; k < PixelWindows::kWindows; ++k) {
      windows.Start(k, source.Row(std::min(v / kOnePixel, lastY)) + std::min(u / kOnePixel, lastX));
      u += uint32_t{kWindowPlaces} * line.du;
      v += uint32_t{kWindowPlaces} * line.dv;
    }
    const auto x = advance(across), y = advance(down);
    const auto pixels = windows.At<Op::kBelow>(x, y, rows);
    StoreLanes(AsSigned(Op::Mix16(pixels, hn::And(x, fraction), hn::And(y, fraction))), out + i);
  }
  return i;
}
#endif

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
  size_t i = 0;
#if HWY_TARGET != HWY_SCALAR
  if constexpr (sizeof(T) == 1) i = SampleWindows<Op>(out, n, source, line);
#endif
  const SourceLine others = line.Advance(static_cast<ptrdiff_t>(i));
  auto u = at(others.u, others.du, hn::Iota(d, 0)), v = at(others.v, others.dv, hn::Iota(d, 0));
  const auto stepU = hn::Set(d, static_cast<uint32_t>(lanes) * line.du);
  const auto stepV = hn::Set(d, static_cast<uint32_t>(lanes) * line.dv);
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
