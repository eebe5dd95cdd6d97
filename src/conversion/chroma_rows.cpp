#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "conversion/chroma_rows.cpp"
#include <hwy/foreach_target.h>  // keep first

#include "conversion/chroma_rows.h"

#include <algorithm>

#include "foundation/dispatch.h"
#include "foundation/lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {
namespace {

// Lanes stand for pairs of pixels. Everything fits signed lanes but the sum of Y.
using D16 = hn::ScalableTag<int16_t>;
using V16 = hn::Vec<D16>;
using Unsigned16 = hn::ScalableTag<uint16_t>;
using D8 = hn::ScalableTag<uint8_t>;
constexpr size_t kBlock = 2 * hn::MaxLanes(D16());

HWY_INLINE V16 Times(V16 v, int factor) {
  return hn::Mul(v, hn::Set(D16(), static_cast<int16_t>(factor)));
}
HWY_INLINE V16 Plus(V16 v, int summand) {
  return hn::Add(v, hn::Set(D16(), static_cast<int16_t>(summand)));
}

// The planes of the first and the second pixels of pairs.
struct Pairs {
  Planes3<V16> first, second;
};

#if HWY_TARGET == HWY_SCALAR
HWY_INLINE Pairs LoadPairs(const KyC24* from) {
  const auto planes = [](KyC24 c) HWY_ATTR -> Planes3<V16> {
    return {hn::Set(D16(), c.c0), hn::Set(D16(), c.c1), hn::Set(D16(), c.c2)};
  };
  return {planes(from[0]), planes(from[1])};
}
HWY_INLINE void StorePairs(const Pairs& v, KyC24* to) {
  const auto color = [](const Planes3<V16>& p) HWY_ATTR {
    const auto level = [](V16 c) HWY_ATTR { return static_cast<uint8_t>(hn::GetLane(c)); };
    return KyC24(level(p.c0), level(p.c1), level(p.c2));
  };
  to[0] = color(v.first);
  to[1] = color(v.second);
}
#else
HWY_INLINE Pairs LoadPairs(const KyC24* from) {
  const auto planes = LoadLanes(D8(), from);
  const auto first = [](auto v)
                         HWY_ATTR { return hn::And(hn::BitCast(D16(), v), hn::Set(D16(), 255)); };
  const auto second = [](auto v) HWY_ATTR {
    return hn::BitCast(D16(), hn::ShiftRight<8>(hn::BitCast(Unsigned16(), v)));
  };
  return {{first(planes.c0), first(planes.c1), first(planes.c2)},
          {second(planes.c0), second(planes.c1), second(planes.c2)}};
}
HWY_INLINE void StorePairs(const Pairs& v, KyC24* to) {
  const auto plane = [](V16 first, V16 second) HWY_ATTR {
    return hn::BitCast(D8(), hn::Or(first, hn::ShiftLeft<8>(second)));
  };
  const Planes3<hn::Vec<D8> > planes{plane(v.first.c0, v.second.c0), plane(v.first.c1, v.second.c1),
                                     plane(v.first.c2, v.second.c2)};
  StoreLanes(planes, to);
}
#endif

HWY_INLINE V16 LumaOf(const Planes3<V16>& rgb) {
  const V16 sum =
      Plus(hn::Add(hn::Add(Times(rgb.c0, 66), Times(rgb.c1, 129)), Times(rgb.c2, 25)), 128);
  return Plus(hn::BitCast(D16(), hn::ShiftRight<8>(hn::BitCast(Unsigned16(), sum))), 16);
}
HWY_INLINE V16 ChromaOf(const Planes3<V16>& rgb, int r, int g, int b) {
  const V16 sum = hn::Add(hn::Add(Times(rgb.c0, r), Times(rgb.c1, g)), Times(rgb.c2, b));
  return Plus(hn::ShiftRight<8>(Plus(sum, 128)), 128);
}
void MakePairs(const KyC24* in, KyBW16* out) {
  const Pairs pairs = LoadPairs(in);
  const auto mean = [](V16 a, V16 b) HWY_ATTR { return hn::ShiftRight<1>(Plus(hn::Add(a, b), 1)); };
  const Planes3<V16> means{mean(pairs.first.c0, pairs.second.c0),
                           mean(pairs.first.c1, pairs.second.c1),
                           mean(pairs.first.c2, pairs.second.c2)};
  const V16 cb = ChromaOf(means, -38, -74, 112), cr = ChromaOf(means, 112, -94, -18);
  const auto word = [](V16 y, V16 chroma) HWY_ATTR {
    return hn::BitCast(Unsigned16(), hn::Or(y, hn::ShiftLeft<8>(chroma)));
  };
  hn::StoreInterleaved2(word(LumaOf(pairs.first), cb), word(LumaOf(pairs.second), cr), Unsigned16(),
                        out);
}

// (298 C + ... + 128) >> 8 = whole + ((42 C + fraction + 128) >> 8), limited to 0..255, where the
// terms of `whole` are the multiples of 256 that keep the sum within 16 bits.
HWY_INLINE V16 LevelOf(V16 whole, V16 c42, V16 fraction) {
  const V16 level = hn::Add(whole, hn::ShiftRight<8>(Plus(hn::Add(c42, fraction), 128)));
  return hn::Max(hn::Min(level, hn::Set(D16(), 255)), hn::Zero(D16()));
}
void MakeColors(const KyBW16* in, KyC24* out) {
  hn::Vec<Unsigned16> first, second;
  hn::LoadInterleaved2(Unsigned16(), in, first, second);
  const auto low = [](auto v)
                       HWY_ATTR { return hn::And(hn::BitCast(D16(), v), hn::Set(D16(), 255)); };
  const auto high = [](auto v) HWY_ATTR { return hn::BitCast(D16(), hn::ShiftRight<8>(v)); };
  const V16 d = Plus(high(first), -128), e = Plus(high(second), -128);
  const V16 redPart = Times(e, 153), bluePart = hn::ShiftLeft<2>(d);
  const V16 greenPart = hn::Add(Times(d, -100), Times(e, 48));
  const auto color = [&](V16 y) HWY_ATTR -> Planes3<V16> {
    const V16 c = Plus(y, -16), c42 = Times(c, 42);
    return {LevelOf(hn::Add(c, e), c42, redPart), LevelOf(hn::Sub(c, e), c42, greenPart),
            LevelOf(hn::Add(c, hn::ShiftLeft<1>(d)), c42, bluePart)};
  };
  StorePairs({color(low(first)), color(low(second))}, out);
}

// Makes n pixels, block by block. `after` stands after the row's last pixel in its last block.
template <class Out, class In>
void MakeRow(void (*make)(const In*, Out*), Out* out, size_t n, const In* in, In after) {
  size_t i = 0;
  for (; i + kBlock <= n; i += kBlock) {
    make(in + i, out + i);
  }
  if (i == n) return;
  In from[kBlock];
  Out to[kBlock];
  const size_t rest = std::min(n - i, kBlock - 1);
  std::fill_n(from, kBlock, after);
  std::copy_n(in + i, rest, from);
  make(from, to);
  std::copy_n(to, rest, out + i);
}
void PairsRow(KyBW16* out, size_t n, const KyC24* in) { MakeRow(MakePairs, out, n, in, in[n - 1]); }
void ColorsRow(KyC24* out, size_t n, const KyBW16* in) {
  MakeRow(MakeColors, out, n, in, n > 1 ? in[n - 2] : KyBW16{0x8000});
}

constexpr ChromaKernels kKernels = {&PairsRow, &ColorsRow};

}  // namespace

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

KY_EXPORT_KERNELS(ChromaKernels)
