// The vector loops that row kernels share, and every operation that crosses lanes. Compiled once
// per instruction set: included by the row files after foreach_target.h, in the way of Highway's
// own headers.
//
// A formula is a functor over vectors, `template <class D, class V> V operator()(D d, V a, V b)
// const`, with `using Lane = ...`, the lane type that it works in. The same text serves every
// instruction set, the tail of a row, and, on the one-lane scalar target, the plain path.
#if defined(KY_FOUNDATION_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KY_FOUNDATION_ROWS_INL_H_
#undef KY_FOUNDATION_ROWS_INL_H_
#else
#define KY_FOUNDATION_ROWS_INL_H_
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ky/pixels.h"

HWY_BEFORE_NAMESPACE();
namespace ky {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Elements in memory to lanes of D, which may be wider, and back; wider lanes, taken as signed, are
// clamped to what an element can hold. (Named apart from Highway's Load and Store, which want
// aligned memory and would be found by argument-dependent lookup.)
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadLanes(D d, const T* from) {
  if constexpr (sizeof(T) == sizeof(hn::TFromD<D>)) {
    return hn::LoadU(d, from);
  } else {
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<T, D>(), from));
  }
}
template <class D, class T>
HWY_INLINE void StoreLanes(D d, hn::Vec<D> v, T* to) {
  if constexpr (sizeof(T) == sizeof(hn::TFromD<D>)) {
    hn::StoreU(v, d, to);
  } else {
    const hn::Rebind<hwy::MakeSigned<hn::TFromD<D>>, D> wide;
    const hn::Rebind<T, D> narrow;
    hn::StoreU(hn::DemoteTo(narrow, hn::BitCast(wide, v)), narrow, to);
  }
}

// The first n elements alone; lanes without an element are 0. No byte behind them is touched.
template <class D, class T>
HWY_INLINE hn::Vec<D> LoadPart(D d, const T* from, size_t n) {
  HWY_ALIGN T part[hn::MaxLanes(D())] = {};
  std::memcpy(part, from, n * sizeof(T));
  return LoadLanes(d, part);
}
template <class D, class T>
HWY_INLINE void StorePart(D d, hn::Vec<D> v, T* to, size_t n) {
  HWY_ALIGN T part[hn::MaxLanes(D())];
  StoreLanes(d, v, part);
  std::memcpy(to, part, n * sizeof(T));
}

// Asks for kBytes that stand `bytes` further on than a place in a row. They may lie beyond the
// pixels, where a pointer may not point. (Inlined always: g++ 12 drops calls of functions that
// only ask.)
template <size_t kBytes>
HWY_INLINE void AskFor([[maybe_unused]] const void* place, [[maybe_unused]] ptrdiff_t bytes) {
#if HWY_TARGET != HWY_SCALAR
  const uintptr_t from = reinterpret_cast<uintptr_t>(place) + static_cast<uintptr_t>(bytes);
  for (size_t i = 0; i < kBytes; i += 64) hwy::Prefetch(reinterpret_cast<const uint8_t*>(from + i));
#endif
}
// Asks for the places that stores will come to: a store waits for the line that it changes, and
// processors go ahead of loads, not of stores. Large images are written a quarter faster.
template <size_t kBytes>
HWY_INLINE void AskToStore(const void* place) {
  AskFor<kBytes>(place, 1024);
}

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

// What stands kLanes elements behind `here` in a row that goes on with `next`. Vectors of one lane
// have no such place for more than one.
template <size_t kLanes, class D>
HWY_INLINE hn::Vec<D> Behind([[maybe_unused]] D d, [[maybe_unused]] hn::Vec<D> here,
                             hn::Vec<D> next) {
#if HWY_TARGET == HWY_SCALAR
  static_assert(kLanes == 1);
  return next;
#elif HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  // Shifts go by 4 bytes, or by blocks of 16: what follows each block of `here` is brought into its
  // place.
  constexpr size_t kBytes = kLanes * sizeof(hn::TFromD<D>);
  static_assert(sizeof(hn::Vec<D>) == 64);
  if constexpr (kBytes % 4 == 0) {
    return hn::Vec<D>{_mm512_alignr_epi32(next.raw, here.raw, kBytes / 4)};
  } else {
    const hn::Vec<D> following{_mm512_alignr_epi32(next.raw, here.raw, 4)};
    return hn::CombineShiftRightBytes<kBytes>(d, following, here);
  }
#else
  constexpr size_t kBytes = kLanes * sizeof(hn::TFromD<D>);
  if constexpr (sizeof(hn::Vec<D>) == 16)
    return hn::CombineShiftRightBytes<kBytes>(d, next, here);
  else if constexpr (kBytes == 16)
    return hn::ConcatLowerUpper(d, next, here);
  else
    return hn::CombineShiftRightBytes<kBytes>(d, hn::ConcatLowerUpper(d, next, here), here);
#endif
}

// Runs `f(d16, v...)` on 8-bit lanes widened to 16 bits, without crossing lanes: first the even,
// then the odd ones. The results must be at most 255.
template <class D, class F, class... V>
HWY_INLINE hn::Vec<D> OnWide(D d, const F& f, V... v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<uint16_t, D> d16;
  const hn::Rebind<int16_t, D> signed16;
  return hn::DemoteTo(d, hn::BitCast(signed16, f(d16, hn::PromoteTo(d16, v)...)));
#else
  const hn::Repartition<uint16_t, D> d16;
  const auto low = hn::Set(d16, 0xFF);
  const auto even = f(d16, hn::And(hn::BitCast(d16, v), low)...);
  const auto odd = f(d16, hn::ShiftRight<8>(hn::BitCast(d16, v))...);
  return hn::BitCast(d, hn::Or(even, hn::ShiftLeft<8>(odd)));
#endif
}

// The formula of 8-bit lanes that computes in 16 bits, by one of 16-bit lanes.
template <class Formula>
struct OnWideLanes {
  using Lane = uint8_t;
  template <class D, class... V>
  HWY_INLINE hn::Vec<D> operator()(D d, V... v) const {
    return OnWide(d, Formula(), v...);
  }
};

// OnWide with f given 256 times the 8-bit lanes.
template <class D, class F>
HWY_INLINE hn::Vec<D> OnWideScaled(D d, const F& f, hn::Vec<D> v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<uint16_t, D> d16;
  const hn::Rebind<int16_t, D> signed16;
  const auto scaled = hn::ShiftLeft<8>(hn::PromoteTo(d16, v));
  return hn::DemoteTo(d, hn::BitCast(signed16, f(d16, scaled)));
#else
  const hn::Repartition<uint16_t, D> d16;
  const auto both = hn::BitCast(d16, v);
  const auto even = f(d16, hn::ShiftLeft<8>(both));
  const auto odd = f(d16, hn::And(both, hn::Set(d16, 0xFF00)));
  return hn::BitCast(d, hn::Or(even, hn::ShiftLeft<8>(odd)));
#endif
}

// 32-bit lanes whose values fit 16 bits, in both 16-bit halves.
template <class D>
HWY_INLINE auto InHalves(D, hn::Vec<D> v) {
#if HWY_TARGET == HWY_SCALAR
  return hn::TruncateTo(hn::Rebind<uint16_t, D>(), v);
#else
  return hn::BitCast(hn::Repartition<uint16_t, D>(), hn::Or(v, hn::ShiftLeft<16>(v)));
#endif
}

// Runs `f(d8, v...)` on the bytes of 32-bit lanes.
template <class D, class F, class... V>
HWY_INLINE hn::Vec<D> OnBytes(D d, const F& f, V... v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<uint8_t, D> d8;
  uint32_t all = 0;
  for (int shift = 0; shift < 32; shift += 8)
    all |= uint32_t{hn::GetLane(f(d8, hn::TruncateTo(d8, hn::ShiftRightSame(v, shift))...))}
           << shift;
  return hn::Set(d, all);
#else
  const hn::Repartition<uint8_t, D> d8;
  return hn::BitCast(d, f(d8, hn::BitCast(d8, v)...));
#endif
}

// Runs `f(df, v...)` on 16-bit lanes converted to single precision. The results are the low 16 bits
// of the floats that it returns: adding 2^k to a smaller number of 0 or more, or 1.5 * 2^k to one
// that may be negative too, leaves it there as a multiple of 2^(k - 23), rounded to the nearest.
// That is cheaper than a conversion, which has to look for overflow.
template <class D16, class F, class... V>
HWY_INLINE hn::Vec<D16> InFloat(D16 d16, const F& f, V... v) {
#if HWY_TARGET == HWY_SCALAR
  const hn::Rebind<int32_t, D16> d32;
  const hn::Rebind<uint32_t, D16> unsigned32;
  const hn::Rebind<float, D16> df;
  const auto result = f(df, hn::ConvertTo(df, hn::PromoteTo(d32, v))...);
  return hn::TruncateTo(d16, hn::BitCast(unsigned32, result));
#else
  const hn::Repartition<uint32_t, D16> d32;
  const hn::Repartition<int32_t, D16> signed32;
  const hn::Repartition<float, D16> df;
  const auto toFloat = [&](auto wide)
                           HWY_ATTR { return hn::ConvertTo(df, hn::BitCast(signed32, wide)); };
  const auto mask = hn::Set(d32, 0xFFFF);
  const auto low = f(df, toFloat(hn::And(hn::BitCast(d32, v), mask))...);
  const auto high = f(df, toFloat(hn::ShiftRight<16>(hn::BitCast(d32, v)))...);
  return hn::OddEven(hn::ShiftLeftLanes<1>(d16, hn::BitCast(d16, high)), hn::BitCast(d16, low));
#endif
}

// Truncated, of numbers that 32-bit integers hold: Highway's conversion also limits the others,
// which takes as long again.
template <class DF>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> TruncateFitting(DF, hn::Vec<DF> v) {
  using DI = hn::RebindToSigned<DF>;
#if HWY_ARCH_X86 && HWY_TARGET < HWY_AVX2
  if constexpr (sizeof(v) == 64) return hn::Vec<DI>{_mm512_cvttps_epi32(v.raw)};
#elif HWY_TARGET == HWY_AVX2
  if constexpr (sizeof(v) == 32) return hn::Vec<DI>{_mm256_cvttps_epi32(v.raw)};
#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_SSSE3
  return hn::Vec<DI>{_mm_cvttps_epi32(v.raw)};
#endif
  return hn::ConvertTo(DI(), v);
}

// The bytes of a vector in reverse order.
template <class D>
HWY_INLINE hn::Vec<D> ReverseBytes(D d, hn::Vec<D> v) {
#if HWY_TARGET == HWY_SCALAR
  (void)d;
  return v;
#else
  alignas(16) static constexpr uint8_t kReversed[16] = {15, 14, 13, 12, 11, 10, 9, 8,
                                                        7,  6,  5,  4,  3,  2,  1, 0};
  return hn::ReverseBlocks(d, hn::TableLookupBytes(v, hn::LoadDup128(d, kReversed)));
#endif
}

// Three vectors of up to 16 bytes that hold as many triples as one of them bytes: the triples in
// reverse order.
template <class D>
HWY_INLINE void ReverseTriples(D d, hn::Vec<D>& a, hn::Vec<D>& b, hn::Vec<D>& c) {
#if HWY_TARGET == HWY_SCALAR
  (void)d, (void)a, (void)b, (void)c;
#else
  // Byte i of the result comes from byte 45 - i + 2 * (i % 3): row o, column s, of this table says
  // which bytes of vector s vector o of the result takes.
  struct Tables {
    uint8_t bytes[3][3][16];
  };
  alignas(16) static constexpr Tables kTables = [] {
    Tables tables{};
    for (int i = 0; i < 48; ++i) {
      const int from = 45 - i + 2 * (i % 3);
      for (int s = 0; s < 3; ++s)
        tables.bytes[i / 16][s][i % 16] = static_cast<uint8_t>(from / 16 == s ? from % 16 : 0x80);
    }
    return tables;
  }();
  const auto take = [&](int to, int from, hn::Vec<D> v) HWY_ATTR {
    return hn::TableLookupBytesOr0(v, hn::LoadU(d, kTables.bytes[to][from]));
  };
  const auto first = hn::Or(take(0, 1, b), take(0, 2, c));
  const auto second = hn::Or(hn::Or(take(1, 0, a), take(1, 1, b)), take(1, 2, c));
  c = hn::Or(take(2, 0, a), take(2, 1, b));
  a = first;
  b = second;
#endif
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

// Bit i is set where op(d, in[i]...), a mask, is true; of 64 elements.
template <class Op, class... In>
HWY_INLINE uint64_t TruthBits(const Op& op, const In*... in) {
  const hn::ScalableTag<typename Op::Lane> d;
  using Part = hwy::UnsignedFromSize<(hn::MaxLanes(d) + 7) / 8>;
  uint64_t bits = 0;
  for (size_t i = 0; i < 64; i += hn::MaxLanes(d)) {
    Part part;
    hn::StoreMaskBits(d, op(d, LoadLanes(d, in + i)...), reinterpret_cast<uint8_t*>(&part));
    bits |= uint64_t{part} << i;
  }
  return bits;
}

// Bits of a byte, the most significant first: bit i of the `n` / 8 bytes is set where op(d, in[i])
// is 255 and clear where it is 0; n is a multiple of 8.
template <class Op>
HWY_INLINE void PackBits(const Op& op, uint8_t* bits, size_t n, const uint8_t* in) {
#if HWY_TARGET == HWY_SCALAR
  const hn::ScalableTag<uint8_t> d;
  for (size_t i = 0; i < n; i += 8) {
    unsigned byte = 0;
    for (size_t bit = 0; bit < 8; ++bit)
      byte = byte << 1 | (hn::GetLane(op(d, hn::LoadU(d, in + i + bit))) & 1u);
    bits[i / 8] = static_cast<uint8_t>(byte);
  }
#else
  const auto pack = [&](auto d, size_t i) HWY_ATTR {
    // Masks are stored from the least significant bit on.
    alignas(16) static constexpr uint8_t kMirrored[] = {7,  6,  5,  4,  3,  2,  1, 0,
                                                        15, 14, 13, 12, 11, 10, 9, 8};
    const auto mirrored = hn::LoadDup128(d, kMirrored);
    const auto truth = hn::TableLookupBytes(op(d, hn::LoadU(d, in + i)), mirrored);
    hn::StoreMaskBits(d, hn::MaskFromVec(truth), bits + i / 8);
  };
  const hn::ScalableTag<uint8_t> d;
  const hn::CappedTag<uint8_t, 8> eight;
  size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) pack(d, i);
  for (; i < n; i += 8) pack(eight, i);
#endif
}

// The reverse: out[i] = op(d, truth), where truth is 255 where bit i is set and 0 where it is
// clear.
template <class Op>
HWY_INLINE void UnpackBits(const Op& op, uint8_t* out, size_t n, const uint8_t* bits) {
#if HWY_TARGET == HWY_SCALAR
  const hn::ScalableTag<uint8_t> d;
  for (size_t i = 0; i < n; ++i) {
    const bool set = (bits[i / 8] >> (7 - i % 8) & 1) != 0;
    hn::StoreU(op(d, hn::Set(d, static_cast<uint8_t>(set ? 255 : 0))), d, out + i);
  }
#else
  const auto unpack = [&](auto d, size_t i) HWY_ATTR {
    const size_t bytes = hn::Lanes(d) / 8;
    HWY_ALIGN uint8_t places[hn::MaxLanes(d)], masks[hn::MaxLanes(d)];
    for (size_t k = 0; k < hn::Lanes(d); ++k) {
      places[k] = static_cast<uint8_t>(k / 8);
      masks[k] = static_cast<uint8_t>(0x80 >> k % 8);
    }
    uint64_t word = 0;
    std::memcpy(&word, bits + i / 8, bytes);
    const hn::Repartition<uint64_t, decltype(d)> d64;
    const auto all = hn::BitCast(d, hn::Set(d64, word));
    const auto spread = hn::TableLookupBytes(all, hn::Load(d, places));
    hn::StoreU(op(d, hn::VecFromMask(d, hn::TestBit(spread, hn::Load(d, masks)))), d, out + i);
  };
  const hn::ScalableTag<uint8_t> d;
  const hn::CappedTag<uint8_t, 8> eight;
  size_t i = 0;
  for (; i + hn::Lanes(d) <= n; i += hn::Lanes(d)) unpack(d, i);
  for (; i < n; i += 8) unpack(eight, i);
#endif
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
}  // namespace HWY_NAMESPACE
}  // namespace ky
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
