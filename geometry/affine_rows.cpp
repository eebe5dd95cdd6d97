#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/affine_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "geometry/affine_rows.h"

#include "foundation/dispatch.h"
#include "geometry/gather-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

struct Nearest {
  template <class D, class V, class T>
  HWY_INLINE V operator()(D d, const Rows<const T>& source, V u, V v) const {
    return GatherPixels<sizeof(T)>(d, source, hn::ShiftRight<16>(u), hn::ShiftRight<16>(v));
  }
};

// The first kBits bits of the fraction of a place.
template <int kBits, class D, class V>
HWY_INLINE V Fraction(D d, V place) {
  return hn::And(hn::ShiftRight<16 - kBits>(place), hn::Set(d, (1u << kBits) - 1));
}

// 2^kBits a + f (b - a), modulo 2^32 like everything here.
template <int kBits, class V>
HWY_INLINE V Between(V a, V b, V f) {
  return hn::Add(hn::ShiftLeft<kBits>(a), hn::Mul(f, hn::Sub(b, a)));
}

template <int kBits>
struct Bilinear {
  template <class D, class V>
  HWY_INLINE V operator()(D d, const Rows<const KyBW8>& source, V u, V v) const {
    const V x = hn::ShiftRight<16>(u), y = hn::ShiftRight<16>(v);
    const V top = GatherPixels<2>(d, source, x, y);
    const V bottom = GatherPixels<2>(d, source, x, hn::Add(y, hn::Set(d, 1)));
    const V fx = Fraction<kBits>(d, u), fy = Fraction<kBits>(d, v);
    const V sum = Between<kBits>(Across(d, top, fx), Across(d, bottom, fx), fy);
    return hn::ShiftRight<2 * kBits>(sum);
  }
  template <class D, class V>
  HWY_INLINE V operator()(D d, const Rows<const KyC24>& source, V u, V v) const {
    const V one = hn::Set(d, 1);
    const V x = hn::ShiftRight<16>(u), y = hn::ShiftRight<16>(v);
    const V right = hn::Add(x, one), below = hn::Add(y, one);
    const V p00 = GatherPixels<3>(d, source, x, y), p01 = GatherPixels<3>(d, source, right, y);
    const V p10 = GatherPixels<3>(d, source, x, below);
    const V p11 = GatherPixels<3>(d, source, right, below);
    const V fx = Fraction<kBits>(d, u), fy = Fraction<kBits>(d, v);
    const auto component = [&](auto shift) HWY_ATTR {
      constexpr int kShift = decltype(shift)::value;
      const auto of = [&](V pixels) HWY_ATTR { return Byte<kShift>(d, pixels); };
      const V top = Between<kBits>(of(p00), of(p01), fx);
      const V bottom = Between<kBits>(of(p10), of(p11), fx);
      return hn::ShiftLeft<kShift>(hn::ShiftRight<2 * kBits>(Between<kBits>(top, bottom, fy)));
    };
    return hn::Or(component(std::integral_constant<int, 0>()),
                  hn::Or(component(std::integral_constant<int, 8>()),
                         component(std::integral_constant<int, 16>())));
  }

 private:
  template <int kShift, class D, class V>
  static HWY_INLINE V Byte(D d, V v) {
    return hn::And(hn::ShiftRight<kShift>(v), hn::Set(d, 255));
  }
  // Between the pixel in the lowest byte and its right neighbour in the byte above.
  template <class D, class V>
  static HWY_INLINE V Across(D d, V pixels, V fx) {
    return Between<kBits>(Byte<0>(d, pixels), Byte<8>(d, pixels), fx);
  }
};

template <class Op, class T>
void Sample(T* out, size_t n, const Rows<const T>& source, const SourceLine& line) {
  const hn::ScalableTag<uint32_t> d;
  const size_t lanes = hn::Lanes(d);
  const auto at = [&](uint32_t start, uint32_t step, auto column) HWY_ATTR {
    return hn::Add(hn::Set(d, start), hn::Mul(column, hn::Set(d, step)));
  };
  auto u = at(line.u, line.du, hn::Iota(d, 0)), v = at(line.v, line.dv, hn::Iota(d, 0));
  const auto stepU = hn::Set(d, static_cast<uint32_t>(lanes) * line.du);
  const auto stepV = hn::Set(d, static_cast<uint32_t>(lanes) * line.dv);
  size_t i = 0;
  for (; i + lanes <= n; i += lanes) {
    StorePixels(d, Op()(d, source, u, v), out + i);
    u = hn::Add(u, stepU);
    v = hn::Add(v, stepV);
  }
  const size_t rest = n - i;
  if (rest == 0) return;
  // Lanes that are not wanted repeat the last place.
  const auto column = hn::Min(hn::Iota(d, 0), hn::Set(d, static_cast<uint32_t>(rest - 1)));
  const SourceLine last = line.Advance(static_cast<ptrdiff_t>(i));
  T part[hn::MaxLanes(d)];
  StorePixels(d, Op()(d, source, at(last.u, last.du, column), at(last.v, last.dv, column)), part);
  std::memcpy(out + i, part, rest * sizeof(T));
}

template <class T>
constexpr SampleKernels<T> kSample = {&Sample<Nearest, T>, &Sample<Bilinear<4>, T>,
                                      &Sample<Bilinear<8>, T>};
constexpr AffineKernels kKernels = {kSample<KyBW8>, kSample<KyC24>};

}  // namespace

const AffineKernels* TableOfAffineKernels() { return &kKernels; }

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ky {
HWY_EXPORT(TableOfAffineKernels);

const AffineKernels& ChooseAffineKernels(bool gathers) noexcept {
  return *(gathers ? KY_DISPATCH(TableOfAffineKernels)() : KY_PLAIN(TableOfAffineKernels)());
}
}  // namespace ky
#endif
