#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/convert_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "conversion/convert_rows.h"

#include <type_traits>

#include "conversion/luma-inl.h"
#include "foundation/dispatch.h"
#include "foundation/spans-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Every conversion goes through a grey level of 8 bits or a colour of three bytes. A pixel type
// says how it becomes one of them, and how it is made of one; pixels are planes of their bytes.
template <class T>
struct Law;

struct OfGrey {
  static constexpr bool kIsGrey = true;
};
template <>
struct Law<KyBW8> : OfGrey {
  template <class D, class V>
  static HWY_INLINE V To(D, const Planes1<V>& pixel) {
    return pixel.c0;
  }
  template <class D, class V>
  static HWY_INLINE Planes1<V> From(D, V grey) {
    return {grey};
  }
};
// 257 v has v in both bytes.
template <>
struct Law<KyBW16> : OfGrey {
  template <class D, class V>
  static HWY_INLINE V To(D, const Planes2<V>& pixel) {
    return pixel.c1;
  }
  template <class D, class V>
  static HWY_INLINE Planes2<V> From(D, V grey) {
    return {grey, grey};
  }
};
template <>
struct Law<KyBW32> : OfGrey {
  template <class D, class V>
  static HWY_INLINE V To(D, const Planes4<V>& pixel) {
    return pixel.c3;
  }
  template <class D, class V>
  static HWY_INLINE Planes4<V> From(D, V grey) {
    return {grey, grey, grey, grey};
  }
};

struct OfColor {
  static constexpr bool kIsGrey = false;
};
template <>
struct Law<KyC24> : OfColor {
  template <class D, class V>
  static HWY_INLINE Planes3<V> To(D, const Planes3<V>& pixel) {
    return pixel;
  }
  template <class D, class V>
  static HWY_INLINE Planes3<V> From(D, const Planes3<V>& color) {
    return color;
  }
};
template <>
struct Law<KyC24A> : OfColor {
  template <class D, class V>
  static HWY_INLINE Planes3<V> To(D, const Planes4<V>& pixel) {
    return {pixel.c0, pixel.c1, pixel.c2};
  }
  template <class D, class V>
  static HWY_INLINE Planes4<V> From(D d, const Planes3<V>& color) {
    return {color.c0, color.c1, color.c2, hn::Set(d, 255)};
  }
};

// The bits of `mask` of v.
template <class D, class V>
HWY_INLINE V Bits(D d, V v, uint8_t mask) {
  return hn::And(v, hn::Set(d, mask));
}
// Components of 5 and 6 bits, given in the highest bits of a byte, repeat these in the lower ones.
template <int kBits, class V>
HWY_INLINE V Repeated(V top) {
  return hn::Or(top, hn::ShiftRight<kBits>(top));
}
// In the bytes: gggrrrrr xbbbbbgg.
template <>
struct Law<KyC15> : OfColor {
  template <class D, class V>
  static HWY_INLINE Planes3<V> To(D d, const Planes2<V>& pixel) {
    const V low = pixel.c0, high = pixel.c1;
    const V c1 = hn::Or(hn::ShiftLeft<6>(high), hn::ShiftRight<2>(Bits(d, low, 0xE0)));
    return {Repeated<5>(hn::ShiftLeft<3>(low)), Repeated<5>(c1),
            Repeated<5>(Bits(d, hn::ShiftLeft<1>(high), 0xF8))};
  }
  template <class D, class V>
  static HWY_INLINE Planes2<V> From(D d, const Planes3<V>& color) {
    return {hn::Or(hn::ShiftRight<3>(color.c0), Bits(d, hn::ShiftLeft<2>(color.c1), 0xE0)),
            hn::Or(hn::ShiftRight<6>(color.c1), Bits(d, hn::ShiftRight<1>(color.c2), 0x7C))};
  }
};
// In the bytes: gggrrrrr bbbbbggg.
template <>
struct Law<KyC16> : OfColor {
  template <class D, class V>
  static HWY_INLINE Planes3<V> To(D d, const Planes2<V>& pixel) {
    const V low = pixel.c0, high = pixel.c1;
    const V c1 = hn::Or(hn::ShiftLeft<5>(high), hn::ShiftRight<3>(Bits(d, low, 0xE0)));
    return {Repeated<5>(hn::ShiftLeft<3>(low)), Repeated<6>(c1), Repeated<5>(Bits(d, high, 0xF8))};
  }
  template <class D, class V>
  static HWY_INLINE Planes2<V> From(D d, const Planes3<V>& color) {
    return {hn::Or(hn::ShiftRight<3>(color.c0), Bits(d, hn::ShiftLeft<3>(color.c1), 0xE0)),
            hn::Or(hn::ShiftRight<5>(color.c1), Bits(d, color.c2, 0xF8))};
  }
};

template <class B, class A>
struct Convert {
  template <class D, class Pixel>
  HWY_INLINE auto operator()(D d, const Pixel& pixel) const {
    if constexpr (std::is_same_v<A, KyBW16> && std::is_same_v<B, KyBW32>) {
      return Planes4<hn::Vec<D>>{pixel.c0, pixel.c1, pixel.c0, pixel.c1};
    } else if constexpr (std::is_same_v<A, KyBW32> && std::is_same_v<B, KyBW16>) {
      return Planes2<hn::Vec<D>>{pixel.c2, pixel.c3};
    } else {
      const auto value = Law<A>::To(d, pixel);
      if constexpr (Law<A>::kIsGrey == Law<B>::kIsGrey)
        return Law<B>::From(d, value);
      else if constexpr (Law<A>::kIsGrey && std::is_same_v<B, KyC24>)
        return SamePlanes3<hn::Vec<D>>{value};
      else if constexpr (Law<A>::kIsGrey)
        return Law<B>::From(d, Planes3<hn::Vec<D>>{value, value, value});
      else
        return Law<B>::From(d, Luma(d, value));
    }
  }
};
// The law of a pair is compiled once: rows end in a vector that overlaps the one before it, or,
// where pixels of the same size may be in place, in a whole vector of their own.
template <class B, class A>
void ConvertRow(B* out, size_t n, const A* in) {
  // Of what memory holds, Zen 5 takes twice as long to load two vectors of 64 bytes for one.
  constexpr bool kNarrows = Law<A>::kIsGrey && Law<B>::kIsGrey && sizeof(A) > sizeof(B);
  const hn::CappedTag<uint8_t, kNarrows ? 32 : 64> d;
  constexpr size_t kLanes = hn::MaxLanes(d);
  constexpr bool kOverlaps = sizeof(A) != sizeof(B);
  size_t i = 0;
  for (; i + kLanes <= n; i += kLanes) {
    auto* const to = reinterpret_cast<uint8_t*>(out + i);
    if constexpr (std::is_same_v<A, KyC24> && Law<B>::kIsGrey)
      StorePlanes(Law<B>::From(d, LumaOf(d, in + i)), to);
    else
      StorePlanes(Convert<B, A>()(d, LoadPlanes(d, in + i)), to);
  }
  if (i == n) return;
  if (kOverlaps && n >= kLanes) return ConvertRow(out + n - kLanes, kLanes, in + n - kLanes);
  HWY_ALIGN A from[kLanes];
  HWY_ALIGN B to[kLanes];
  ReadPart<kLanes>(from, in + i, n - i);
  ConvertRow(to, kLanes, static_cast<const A*>(from));
  WritePart<kLanes>(out + i, to, n - i);
}

struct ShiftRightBy {
  using Lane = uint16_t;
  int shift;
  template <class D, class V>
  HWY_INLINE auto operator()(D d, V v) const {
    return AsSigned(hn::Min(hn::ShiftRightSame(v, shift), hn::Set(d, 255)));
  }
};
struct ShiftLeftBy {
  using Lane = uint16_t;
  int shift;
  template <class D, class V>
  HWY_INLINE V operator()(D, V v) const {
    return hn::ShiftLeftSame(v, shift);
  }
};
void ShiftRightRow(KyBW8* out, size_t n, const KyBW16* in, const int* shift) {
  MapSpan(ShiftRightBy{*shift}, out, n, in);
}
void ShiftLeftRow(KyBW16* out, size_t n, const KyBW8* in, const int* shift) {
  MapSpan(ShiftLeftBy{*shift}, out, n, in);
}

template <class B, class... A>
constexpr void AddTo(ConvertKernels& kernels, Types<A...>) {
  const auto add = [&]<class From>(Conversion<B, From>& conversion) {
    if constexpr (!std::is_same_v<B, From>) conversion.kernel = kEachRow<&ConvertRow<B, From>>;
  };
  (add(static_cast<Conversion<B, A>&>(kernels)), ...);
}
template <class... B>
constexpr void AddAll(ConvertKernels& kernels, Types<B...> all) {
  (AddTo<B>(kernels, all), ...);
}
constexpr ConvertKernels kKernels = [] {
  ConvertKernels kernels{};
  AddAll(kernels, ConvertedTypes());
  kernels.shiftRight = kEachRow<&ShiftRightRow>;
  kernels.shiftLeft = kEachRow<&ShiftLeftRow>;
  return kernels;
}();

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ConvertKernels)
